#pragma once

#include <core/HasDebugInfo.h>
#include <core/ItemIdListTypes.h>
#include <core/ShellFolderKind.h>
#include <platform/ComPtr.h>
#include <platform/InterfaceId.h>

#include <string>

namespace kiv {

/// An object of the Shell namespace: a folder, a file, a drive, a virtual object; the currency of the library.
///
/// It stands for an absolute item identifier list, the object's road from the desktop down. It is resolved late: one
/// that was made from a path asks neither disk nor shell before somebody asks it. An object that can't be reached is an
/// *invalid* list: its queries answer empty texts, 0, False and nil.
///
/// Lists don't change in the eyes of their users, except by Reload. Any thread may hold and query them; a query that
/// goes to the shell needs COM on its thread, and can be slow. Queries don't raise unless it says so.
struct IItemIdList : IUnknown {
  /// This list with the items of another, relative one behind its own; the list itself for nil. An invalid list adds no
  /// items.
  virtual ComPtr<IItemIdList> Concat(IItemIdList* pItemIdList2) = 0;
  /// The first items of the list: 0 gives the desktop, Depth and more the whole. Raises EInvalidArgument for a negative
  /// number.
  virtual ComPtr<IItemIdList> GetStartItemIdList(int pFragments) = 0;
  /// The folder that the object lies in. Raises EPathmereError for an invalid list and for the desktop.
  virtual ComPtr<IItemIdList> GetParent() = 0;
  /// The last item alone: a list that is relative to the parent.
  virtual ComPtr<IItemIdList> GetLastPart() = 0;

  /// False for nil.
  virtual bool Equals(IItemIdList* pItemIdList2, TItemIdListComparison pComparison) = 0;
  /// 0 if the lists are equal; otherwise the shell's own answer, of which only the sign of a valid comparison orders.
  /// -1 for nil; `E_INVALIDARG` where one of them is invalid and nothing but the shell could tell.
  virtual HRESULT CompareTo(IItemIdList* pItemIdList2, TItemIdListComparison pComparison) = 0;

  /// The raw list, resolved if it wasn't; null if the list is invalid. Borrowed: valid while the object lives.
  virtual PCIDLIST_ABSOLUTE WindowsPointer() = 0;
  /// The object's place in the file system; for a library, that of its default save location; for a server in the
  /// network its UNC name. Empty if it has none.
  virtual std::wstring Path() = 0;
  /// How many levels below the desktop the object lies; 0 for the desktop and for an invalid list.
  virtual int Depth() = 0;
  /// Resolves the list.
  virtual bool IsInvalid() = 0;
  virtual TKivShellFolder SpecialFolder() = 0;
  /// SF_DESKTOP is recognised without resolving the list: one that isn't resolved isn't it.
  virtual bool IsSpecialFolder(TKivShellFolder pSpecialFolderToCheck) = 0;
  /// Raises EPathmereError if the shell's part of it faults.
  virtual std::wstring DisplayName(TItemIdListDisplayNameFormat pDisplayFormat) = 0;
  /// The file's name; for a drive its path; empty for a virtual object.
  virtual std::wstring Name() = 0;
  /// What to show as the object's path; for an invalid list that knows where it was meant to point, that. Raises as
  /// DisplayName does.
  virtual std::wstring DisplayPath() = 0;
  /// Where a shell link or an item of Quick Access leads; otherwise, and for a link that leads nowhere, the list
  /// itself.
  virtual ComPtr<IItemIdList> LinkTarget() = 0;
  /// The platform's object for the same; nil if the list is invalid. On the main thread always the same one; on others
  /// a new one for each call, since such objects belong to the apartment that made them.
  virtual ComPtr<IShellItem> ShellItem() = 0;

  /// Whether another object lies in this folder or below. With ilcDisplay also if only the paths tell so.
  virtual bool IsParentOf(IItemIdList* pChildItemIdList, bool pAcceptsEquals,
                          TItemIdListComparison pComparisonType) = 0;
  virtual bool IsFolder() = 0;
  /// False for what is one level deep and no special folder: that is likely a list relative to some folder.
  virtual bool IsAbsolute() = 0;
  /// Whether reaching it can take long: a network place.
  virtual bool IsSlow() = 0;
  /// Whether the list has been resolved, successfully or not. Doesn't resolve it.
  virtual bool IsResolved() = 0;
  /// Whether the object has any of the attributes ("SFGAO" in the platform's documentation).
  virtual bool HasAttributes(SFGAOF pAttributes) = 0;

  /// Asks the platform anew: True if the object is there still, and then the list may have changed with it. False for
  /// an invalid list, which stays invalid.
  virtual bool Reload() = 0;
};
KIV_INTERFACE_ID(IItemIdList, "{8036C5E5-DFE2-48EA-A7C9-2E66BE5B2CD8}");

} // namespace kiv
