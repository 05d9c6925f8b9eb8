#pragma once

#include <core/FolderEnumerator.h>
#include <core/IItemIdList.h>
#include <framework/Component.h>
#include <framework/WindowHandle.h>
#include <platform/ComPtr.h>
#include <platform/Types.h>
#include <walker/NameFilter.h>
#include <walker/UnlockVolumeHook.h>
#include <walker/WalkerEvents.h>

#include <shobjidl.h>

#include <optional>
#include <string>
#include <string_view>

namespace kiv {

/// Walks one folder of the Shell namespace: a cursor that stands on a folder and, after each step, on an object in it.
///
/// The cursor has three states: no folder; a folder and no object (the object is EmptyIdList); walking. A change of the
/// folder and the end of a walk end the walking; the next step begins with the first object. Behind the end the last
/// object that was seen stays the active one, whether it was let through or not.
///
/// What would surprise you:
/// - It is made for short use and cheap to make: nothing is asked of the shell before a folder is set.
/// - The folder is bound as soon as it is set; one that can't be bound is kept all the same, and tried again when it is
///   needed.
/// - Objects are relative to the folder, and attributes and names are asked of the folder, which is held open. Whatever
/// is to be known of one by itself is asked of AbsoluteItemIdList.
/// - A step runs foreign code. If that comes back to the walker and sets it to something else, or destroys it, the step
///   answers false and leaves it alone.
///
/// Used by one thread at a time, main thread or not, with COM; what it has bound belongs to that thread's apartment.
/// Operations raise EPathmereError where the shell refuses; a query for which there is no object answers 0, false or
/// an empty text unless it says otherwise. The walker stays usable after each of them.
class KIV_EXPORT TPathmere : public TComponent {
public:
  explicit TPathmere(TComponent* pOwner = nullptr);
  /// With another walker's settings, filter, events and folder, but not its object or its walk. Nil copies nothing.
  explicit TPathmere(const TPathmere* pCopyFrom);
  /// Stands on an object, by anything that the shell parses. Raises as SetAbsoluteItemIdList.
  explicit TPathmere(std::wstring_view pObjectPath);
  explicit TPathmere(IItemIdList* pAbsoluteItemIdList);
  ~TPathmere() override;

  std::wstring ClassName() const override { return L"TPathmere"; }

  // --- the folder ---

  const ComPtr<IItemIdList>& GetFolderIdList() const noexcept { return fFolderIdList; }
  /// The very list that is held starts the walk over and binds nothing anew; nil leaves no folder. Raises
  /// EPathmereError with ERROR_PATH_NOT_FOUND for an invalid list, and for a search folder unless those are accepted.
  void SetFolderIdList(ComPtr<IItemIdList> pFolder);
  /// The folder bound; nil without one. A folder that can't be bound is exchanged for what it links to. Raises
  /// EPathmereError if that doesn't do either.
  ComPtr<IShellFolder> GetShellFolder();
  /// A bound folder; without a folder's list the walker asks it for its own ("IPersistFolder2").
  void SetShellfolder(ComPtr<IShellFolder> pFolder);
  /// Property Folder: the folder's path with a delimiter at its end; empty if it has none.
  std::wstring GetDirectory() const;
  /// The text that is there already changes nothing. Empty, it is the folder of the drives. Raises as SetFolderIdList.
  void SetDirectory(const std::wstring& pFolder);
  /// SF_INVALID without a folder.
  TKivShellFolder GetSpecialFolder() const;
  /// The folder that is there already only loses its object.
  void SetSpecialFolder(TKivShellFolder pFolder);
  /// The folder above becomes the active one, and the folder its active object. Nothing happens without a folder, and
  /// on the desktop.
  void SelectParent();

  // --- the object ---

  /// Relative to the folder; nil or EmptyIdList if there is none.
  const ComPtr<IItemIdList>& GetItemIdList() const noexcept { return fItemIDList; }
  void SetItemIdList(ComPtr<IItemIdList> pItem);
  /// The object, or the folder if there is none; nil without a folder.
  ComPtr<IItemIdList> GetAbsoluteItemIdList();
  /// Stands on the object in its folder; on the desktop as a folder. One whose folder can't be bound changes nothing.
  /// Raises EInvalidArgument for nil, EPathmereError with ERROR_PATH_NOT_FOUND for an invalid list.
  void SetAbsoluteItemIdList(ComPtr<IItemIdList> pObject);
  /// The object's name as a file; for a drive its path; for a place in the network its domain.
  std::wstring GetObjectName();
  /// Finds the object in the folder by its name, or by the name that is shown; with a "\" in it the name is a path.
  /// Raises EPathmereError for an empty name, without a folder, and if there is no such object.
  void SetObjectName(const std::wstring& pName);
  /// The path of the object, or of the folder if there is none; empty if it has none.
  std::wstring GetFullPath();
  void SetFullPath(const std::wstring& pPath) { SetObjectName(pPath); }
  /// Which special folder the object is; that of the folder if there is no object.
  TKivShellFolder IsSpecialObject();
  void SetSpecialObject(TKivShellFolder pFolder);

  // --- stepping ---

  /// Goes to the next object that is let through. False at the end, and then the next call begins anew. Raises
  /// EPathmereError if the folder refuses with a code of the system's (3 to 12175 in its low 16 bits); any other
  /// refusal is an end. A crash of the folder's code is tried once more, and what comes then is let through untested.
  bool Next();
  /// Whether the filter lets the object through. Folders always pass. In the folder of recent files a shortcut is
  /// judged by what it leads to.
  bool FilterMatch();
  /// Goes into the object. False if it isn't a folder or can't be opened.
  bool BrowseObject();
  /// Whether there are a folder and an object to work with, or several; the desktop does without. With `pFolderOnly`
  /// whether there is a folder.
  bool CheckIfValid(bool pFolderOnly);
  /// The window for dialogs of the platform's: the owner's, else the application's. Unless forced, and while error
  /// messages are off, null but on the main thread and for the upper levels of the network (a logon may be needed).
  TWindowHandle GetWindowHandle(bool pForce);

  // --- what the object is ---

  /// Those of the attributes ("SFGAO") that the object has. Asked of the folder, which is quick.
  SFGAOF GetAttributes(SFGAOF pAttributes);
  /// With FileSystemOnly a file that can be opened like a folder, such as an archive, isn't one.
  bool IsFolder();
  /// Whether a tree shows the object as one that can be expanded; asked of the folder once an object. On the desktop,
  /// without an object, true. With FileSystemOnly it must belong to the file system or lead there, and what is called
  /// ".zip" has none; otherwise that has. Raises EInvalidOperation without an object elsewhere.
  bool HasSubFolders();
  /// The folder's columns ("IShellFolder2"), asked for once; nil without a folder, and if it has none. Raises as
  /// GetShellFolder.
  ComPtr<IShellFolder2> GetIShellDetails();
  /// The name that is shown, in the folder or anywhere. Raises EInvalidOperation without an object.
  std::wstring GetShellObjectName(bool pInFolderName);
  /// Of an object in the network; else empty.
  std::wstring GetDomain();

  // --- settings ---

  /// Patterns with ";" between them; "*" for none.
  std::wstring GetFilter() const { return fFilter.GetText(); }
  void SetFilter(const std::wstring& pFilter) { fFilter.SetText(pFilter); }
  bool GetFileSystemOnly() const noexcept { return fFileSystemOnly; }
  /// Lets only objects of the file system through, and what leads to them.
  void SetFileSystemOnly(bool pValue) noexcept { fFileSystemOnly = pValue; }
  bool GetShowErrorMessages() const noexcept { return fShowErrorMessages; }
  /// Whether the platform may show dialogs (logon, no disk in the drive).
  void SetShowErrorMessages(bool pValue) noexcept { fShowErrorMessages = pValue; }
  bool GetShowContextMenuOnTop() const noexcept { return fShowContextMenuOnTop; }
  void SetShowContextMenuOnTop(bool pValue) noexcept { fShowContextMenuOnTop = pValue; }
  bool GetForNavigation() const noexcept { return fForNavigation; }
  /// Lists as for a navigation pane ("SHCONTF_NAVIGATION_ENUM"), from the next walk on.
  void SetForNavigation(bool pValue) noexcept { fForNavigation = pValue; }
  bool GetReadOnly() const noexcept { return fReadOnly; }
  void SetReadOnly(bool pValue) noexcept { fReadOnly = pValue; }
  bool GetAsyncContextMenuOperations() const noexcept { return fAsyncContextMenuOperations; }
  void SetAsyncContextMenuOperations(bool pValue) noexcept { fAsyncContextMenuOperations = pValue; }
  bool GetAcceptSearchFolderPaths() const noexcept { return fAcceptSearchFolderPaths; }
  /// Whether results of a search may be the active folder.
  void SetAcceptSearchFolderPaths(bool pValue) noexcept { fAcceptSearchFolderPaths = pValue; }

  /// The user wants to rename the object.
  const TNotifyEvent& GetOnRename() const noexcept { return fOnRename; }
  void SetOnRename(TNotifyEvent pEvent) { fOnRename = std::move(pEvent); }
  const TOnContextMenuSelectEvent& GetOnContextMenuSelect() const noexcept { return fOnContextMenuSelect; }
  void SetOnContextMenuSelect(TOnContextMenuSelectEvent pEvent) { fOnContextMenuSelect = std::move(pEvent); }
  const TOnBeforeShellCommand& GetOnBeforeShellCommand() const noexcept { return fOnBeforeShellCommand; }
  void SetOnBeforeShellCommand(TOnBeforeShellCommand pEvent) { fOnBeforeShellCommand = std::move(pEvent); }
  const TOnBeforeCommand& GetOnBeforeCommand() const noexcept { return fOnBeforeCommand; }
  void SetOnBeforeCommand(TOnBeforeCommand pEvent) { fOnBeforeCommand = std::move(pEvent); }

protected:
  /// Whether objects of the folder are selected besides the one that is stood on. A walker that knows of none has none.
  virtual bool HasMultiObjects() const { return false; }

private:
  void InvalidateCaches() noexcept { fHasSubFolders.reset(); }
  bool AskForSubFolders();
  bool HasItem();
  PCUITEMID_CHILD RawItem();
  ComPtr<IShellFolder> MaybeShellFolder();
  bool BeginWalk();
  void EndWalk() noexcept;
  bool RepeatsItself(const ITEMIDLIST& pItem);
  bool CheckResult(HRESULT pResult) const;
  bool PassesFileSystemOnly();
  bool HasFolderAttributes(SFGAOF pAttributes) const noexcept;
  std::wstring NameToFilter(bool pIsFile);
  bool IsBrowsable();
  std::wstring NameInBoundFolder(TItemIdListDisplayNameFormat pFormat);
  std::wstring NameOf(TItemIdListDisplayNameFormat pFormat);

  ComPtr<IItemIdList> fFolderIdList;
  ComPtr<IShellFolder> fShellFolder; // bound on demand
  ComPtr<IShellFolder2> fShellFolder2;
  bool fTriedIshd = false; // asked for fShellFolder2
  ComPtr<IItemIdList> fItemIDList;
  ComPtr<IItemIdList> fAbsoluteIdList; // of the object; made on demand
  std::optional<bool> fHasSubFolders;  // the object; asked on demand
  TFolderEnumerator fObjects;
  unsigned fWalk = 0;    // changes when a walk ends
  unsigned fRepeats = 0; // of one object by the folder
  TNameFilter fFilter;
  bool fFileSystemOnly = false;
  bool fReadOnly = false;
  bool fShowErrorMessages = true;
  bool fShowContextMenuOnTop = false;
  bool fForNavigation = false;
  bool fAsyncContextMenuOperations = true;
  bool fAcceptSearchFolderPaths = false;
  TNotifyEvent fOnRename;
  TOnContextMenuSelectEvent fOnContextMenuSelect;
  TOnBeforeShellCommand fOnBeforeShellCommand;
  TOnBeforeCommand fOnBeforeCommand;
};

} // namespace kiv
