#pragma once

#include <coordination/PidlHistory.h>
#include <coordination/SelectionList.h>
#include <coordination/ShellControl.h>
#include <core/BaseComponent.h>
#include <platform/Export.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kiv {

/// The hub that makes a tree, a list, a combo, an address bar and a preview behave as one file manager: what one
/// control is changed to by user or application, it tells the link, and the link tells all others, in the order in
/// which they registered. It keeps the history and the shared selection, and knows no window.
///
/// `Enabled` is its guard: while controls are told of a folder, a file or a filter it is False, and what they report
/// then is ignored. An application that sets it False silences the link.
///
/// What would surprise you:
/// - What a control raises passes through: the controls behind it aren't told, and the guard stays down. Whoever
/// catches
///   it calls SetEnabled(true). A move in the history that ends so keeps further folders out of the history.
/// - A control may leave, join or be destroyed while controls are told; one that joins is not told of that change. A
///   handler may destroy the link.
/// - OnNavigating is asked once for the same folder until another one is asked for; its answer is kept.
class KIV_EXPORT TKivShellLink : public TKivBaseComponent, public IKivShellHistory {
public:
  explicit TKivShellLink(TComponent* pOwner = nullptr);
  ~TKivShellLink() override;

  std::wstring ClassName() const override;

  /// Nothing for one that is registered.
  void RegisterShellControl(IKivShellControl* pShellControl);
  void UnregisterShellControl(IKivShellControl* pShellControl);

  /// Whether a control may go to a folder: it asks before it does.
  bool CanNavigate(TPersistent* pSender, IItemIdList* pItemIdList);
  /// A control shows another folder. Nil tells of a folder that has gone.
  void PathChanged(IKivShellControl* pSender, IItemIdList* pFolder);
  /// Another file is current; the second list is relative to the first. Without either no file is.
  void FileChanged(IKivShellControl* pSender, IItemIdList* pFolder, IItemIdList* pFile);
  void FilterChanged(IKivShellControl* pSender, const std::wstring& pFilter);
  void SelectAll(IKivShellControl* pSender = nullptr);
  void Refresh(IKivShellControl* pSender, TRefreshLevel pRefreshLevel, IItemIdList* pItemIdList);
  void Refresh(TRefreshLevel pRefreshLevel) { Refresh(nullptr, pRefreshLevel, nullptr); }
  /// The first other control that can goes up, or else the sender. Without a sender there must be one that can.
  void GoUp(IKivShellControl* pSender = nullptr);

  // The history.
  ComPtr<IItemIdList> GetCurrentFolderItemIDList() override { return fHistory->GetCurrentFolderItemIDList(); }
  int GetCount() override { return fHistory->GetCount(); }
  int GetPosition() override { return fHistory->GetPosition(); }
  void SetPosition(int pPosition) override;
  /// Nothing while the link moves in the history.
  void Add(IItemIdList* pItemIdList) override;
  /// The current folder stays, as the only one.
  void Clear() override;
  bool IsMovePossible(int pDelta) override;
  /// Tells all controls. Possible is asked for one step only: with more steps than there are nothing moves.
  void MoveBack(std::uint8_t pSteps) override { Move(-1, &IKivShellHistory::MoveBack, pSteps); }
  void MoveForward(std::uint8_t pSteps) override { Move(1, &IKivShellHistory::MoveForward, pSteps); }

  const ComPtr<IItemIdList>& GetCurrentFolder() const noexcept { return fCurrentFolderItemIdList; }
  /// Absolute; nil if no file is current.
  const ComPtr<IItemIdList>& GetCurrentFile() const noexcept { return fCurrentFileItemIdList; }

  /// What the check boxes of all controls show. Null only if somebody destroyed it.
  TKivSelectionList* GetSelectionList() const noexcept { return fSelectionList; }
  /// Destroys the one that it has and becomes the owner of another.
  void SetSelectionList(TKivSelectionList* pSelectionList);
  /// Whether lists show an item for the folder above. At first True.
  bool GetShowParentFolderItem() const noexcept { return fShowParentFolderItem; }
  void SetShowParentFolderItem(bool pShow) noexcept { fShowParentFolderItem = pShow; }

  const TItemIdListEvent& GetOnChange() const noexcept { return fOnChange; }
  /// A folder was reported, whether it is another one or not. The guard is up again.
  void SetOnChange(TItemIdListEvent pEvent) { fOnChange = std::move(pEvent); }
  const TItemIdListEvent& GetOnSelectionChanged() const noexcept { return fOnSelectionChange; }
  /// Another file is current. The guard is still down.
  void SetOnSelectionChanged(TItemIdListEvent pEvent) { fOnSelectionChange = std::move(pEvent); }
  const TNavigationPendingEvent& GetOnNavigating() const noexcept { return fOnNavigating; }
  void SetOnNavigating(TNavigationPendingEvent pEvent) { fOnNavigating = std::move(pEvent); }

  // The life of a component isn't counted.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID pIid, void** pObject) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(-1); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(-1); }

protected:
  void Notification(TComponent* pComponent, TOperation pOperation) override;

private:
  bool TellOthers(const IKivShellControl* pSender, const std::function<void(IKivShellControl&)>& pTell);
  struct TRegistered {
    IKivShellControl* control;
    std::uint64_t number; // a new control may stand where one was that has gone
    friend bool operator==(const TRegistered&, const TRegistered&) = default;
  };
  void Move(int pDelta, void (IKivShellHistory::*pMove)(std::uint8_t), std::uint8_t pSteps);

  std::vector<TRegistered> fKivShellControlList;
  std::uint64_t fRegistrations = 0;
  TItemIdListEvent fOnChange;
  TItemIdListEvent fOnSelectionChange;
  TNavigationPendingEvent fOnNavigating;
  TKivSelectionList* fSelectionList = nullptr;
  bool fShowParentFolderItem = true;
  ComPtr<IItemIdList> fCurrentFileItemIdList;
  ComPtr<IItemIdList> fCurrentFolderItemIdList;
  ComPtr<IItemIdList> fLastCheckedFolder;
  bool fLastAccessCheckResult = false;
  ComPtr<IKivShellHistory> fHistory;
  bool fIsMoving = false;
};

} // namespace kiv
