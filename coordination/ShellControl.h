#pragma once

#include <core/IItemIdList.h>
#include <framework/Event.h>
#include <platform/ComPtr.h>
#include <platform/InterfaceId.h>

#include <cstdint>
#include <string>

namespace kiv {

class TKivShellLink;
struct IItemIdListCollection;

/// How much a control reads anew.
enum class TRefreshLevel {
  rfFull,      ///< everything
  rfSmart,     ///< what has changed
  rfCheckboxes ///< the states of check boxes only
};

/// What TKivShellTree::GotoFolderIdList does with the folder it goes to.
enum class TGotoFolderIdAction {
  gaSelect,
  gaRefresh,
  gaRefreshCheckboxes,
  gaRefreshParent,
  gaDelete,
  gaCheck,
  gaAdd,
  gaLookup
};

using TItemIdListEvent = TEvent<TPersistent*, IItemIdList*>;
/// A folder is about to be shown; the handler may set the last argument to refuse it.
using TNavigationPendingEvent = TEvent<TPersistent*, IItemIdList*, bool&>;

/// What a link knows of a control. The link counts no references: a control unregisters before it goes.
///
/// What a link tells a control it does not report back; the link would ignore it. Main thread.
struct IKivShellControl : IUnknown {
  /// Joins a link, or with nil leaves the one it has: the control registers and unregisters itself.
  virtual void SetShellLink(TKivShellLink* pShellLink) = 0;
  virtual TKivShellLink* GetShellLink() = 0;
  virtual void PathChanged(IItemIdList* pFolder) = 0;
  /// The file is relative to the folder; nil if none is current.
  virtual void FileChanged(IItemIdList* pFolder, IItemIdList* pFile) = 0;
  virtual void SelectAll() = 0;
  /// Of the object, or of all for nil.
  virtual void Refresh(TRefreshLevel pLevel, IItemIdList* pItemIdList) = 0;
  /// Goes to the folder above. False for a control that doesn't lead.
  virtual bool GoUp() = 0;
};
KIV_INTERFACE_ID(IKivShellControl, "{C211C2D9-827E-4D46-B07B-FEB3F473DD7F}");

struct IKivMultiSelectShellControl : IKivShellControl {
  virtual ComPtr<IItemIdListCollection> GetSelectedElements() = 0;
};
KIV_INTERFACE_ID(IKivMultiSelectShellControl, "{43AABD98-FB53-4B8D-8AEA-873EB7606388}");

struct IKivSupportsFilter : IUnknown {
  virtual void FilterChanged(const std::wstring& pFilter) = 0;
};
KIV_INTERFACE_ID(IKivSupportsFilter, "{6F439778-0135-41B4-B993-2BB06B9B3F4E}");

/// The folders that were shown, in order, and which of them is shown. Main thread.
struct IKivShellHistory : IUnknown {
  /// Nil if there is none.
  virtual ComPtr<IItemIdList> GetCurrentFolderItemIDList() = 0;
  virtual int GetCount() = 0;
  virtual int GetPosition() = 0;
  /// A position that there isn't is ignored.
  virtual void SetPosition(int pPosition) = 0;
  virtual void Add(IItemIdList* pItemIdList) = 0;
  virtual void Clear() = 0;
  virtual bool IsMovePossible(int pDelta) = 0;
  virtual void MoveBack(std::uint8_t pSteps) = 0;
  virtual void MoveForward(std::uint8_t pSteps) = 0;
};
KIV_INTERFACE_ID(IKivShellHistory, "{0F89EB85-A5DD-4AA4-9658-87043AC85E4D}");

} // namespace kiv
