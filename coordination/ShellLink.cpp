#include <coordination/ShellLink.h>

#include <coordination/ShellQuestions.h>
#include <framework/PropertyRegistry.h>

#include <algorithm>
#include <utility>

namespace kiv {

namespace {

bool Publish() {
  TKivBaseComponent::PublishProperties();
  PublishClass<TKivShellLink, TKivBaseComponent>(L"TKivShellLink", L"Keeps the controls of a group in step.")
      .Property(L"ShowParentFolderItem", &TKivShellLink::GetShowParentFolderItem,
                &TKivShellLink::SetShowParentFolderItem, true, L"Lists show an item for the folder above.")
      .Object(L"SelectionList", &TKivShellLink::GetSelectionList, L"What the check boxes select.");
  return true;
}
[[maybe_unused]] const bool gPublished = Publish();

} // namespace

TKivShellLink::TKivShellLink(TComponent* pOwner) : TKivBaseComponent(pOwner), fHistory(Make<TPidlHistory>()) {
  SetSelectionList(new TKivSelectionList);
}

TKivShellLink::~TKivShellLink() {
  BeginDestruction();
  // From the end, since each takes itself out; one that doesn't mustn't hold the link up.
  while (!fKivShellControlList.empty()) {
    IKivShellControl* const control = fKivShellControlList.back().control;
    try {
      control->SetShellLink(nullptr);
    } catch (...) {
      ReportException(std::current_exception());
    }
    UnregisterShellControl(control);
  }
  delete std::exchange(fSelectionList, nullptr);
}

std::wstring TKivShellLink::ClassName() const {
  return L"TKivShellLink";
}

void TKivShellLink::RegisterShellControl(IKivShellControl* pShellControl) {
  const bool registered = std::any_of(fKivShellControlList.begin(), fKivShellControlList.end(),
                                      [&](const TRegistered& entry) { return entry.control == pShellControl; });
  if (pShellControl && !registered) fKivShellControlList.push_back({pShellControl, ++fRegistrations});
}

void TKivShellLink::UnregisterShellControl(IKivShellControl* pShellControl) {
  std::erase_if(fKivShellControlList, [&](const TRegistered& entry) { return entry.control == pShellControl; });
}

// False if the link is gone. Controls may come and go meanwhile: who left isn't told, nor who comes.
bool TKivShellLink::TellOthers(const IKivShellControl* pSender, const std::function<void(IKivShellControl&)>& pTell) {
  const TAliveWatch watch(GetAliveToken());
  const std::vector<TRegistered> all = fKivShellControlList;
  for (const TRegistered& entry : all) {
    const std::vector<TRegistered>& now = fKivShellControlList;
    if (entry.control == pSender || std::find(now.begin(), now.end(), entry) == now.end()) continue;
    pTell(*entry.control);
    if (!watch.IsAlive()) return false;
  }
  return true;
}

bool TKivShellLink::CanNavigate(TPersistent* pSender, IItemIdList* pItemIdList) {
  if (!fOnNavigating) return true;
  const ComPtr<IItemIdList> folder(pItemIdList);
  if (fLastCheckedFolder && IsSameInTime(fLastCheckedFolder, folder, ilcDisplay)) return fLastAccessCheckResult;
  bool cancel = false;
  if (!FireEvent(GetAliveToken(), fOnNavigating, pSender, pItemIdList, cancel)) return false;
  fLastCheckedFolder = folder;
  fLastAccessCheckResult = !cancel;
  return fLastAccessCheckResult;
}

void TKivShellLink::PathChanged(IKivShellControl* pSender, IItemIdList* pFolder) {
  if (!GetEnabled()) return;
  const TAliveWatch watch(GetAliveToken());
  const ComPtr<IItemIdList> folder(pFolder);
  if (!CanNavigate(dynamic_cast<TPersistent*>(pSender), pFolder) || !watch.IsAlive()) return;
  const bool enabled = GetEnabled();
  SetEnabled(false);
  const bool changed = !IsSameInTime(fCurrentFolderItemIdList, folder, ilcExact);
  if (changed) {
    fCurrentFolderItemIdList = folder;
    fCurrentFileItemIdList = nullptr;
    Add(pFolder);
    if (!TellOthers(pSender, [&](IKivShellControl& control) { control.PathChanged(pFolder); })) return;
  }
  SetEnabled(enabled);
  const ComPtr<IItemIdList> current = fCurrentFolderItemIdList;
  static_cast<void>(FireEvent(GetAliveToken(), fOnChange, this, current.Get()));
}

void TKivShellLink::FileChanged(IKivShellControl* pSender, IItemIdList* pFolder, IItemIdList* pFile) {
  if (!GetEnabled()) return;
  const ComPtr<IItemIdList> absolute = pFolder && pFile ? pFolder->Concat(pFile) : nullptr;
  const bool enabled = GetEnabled();
  SetEnabled(false);
  const bool changed = !IsSameInTime(fCurrentFileItemIdList, absolute, ilcDisplay);
  if (changed) {
    fCurrentFileItemIdList = absolute;
    if (!TellOthers(pSender, [&](IKivShellControl& control) { control.FileChanged(pFolder, pFile); })) return;
    const ComPtr<IItemIdList> current = fCurrentFileItemIdList;
    if (!FireEvent(GetAliveToken(), fOnSelectionChange, this, current.Get())) return;
  }
  SetEnabled(enabled);
}

void TKivShellLink::FilterChanged(IKivShellControl* pSender, const std::wstring& pFilter) {
  const bool enabled = GetEnabled();
  SetEnabled(false);
  const bool alive = TellOthers(pSender, [&](IKivShellControl& control) {
    void* object = nullptr;
    if (FAILED(control.QueryInterface(IidOf<IKivSupportsFilter>(), &object))) return;
    auto* const filtered = static_cast<IKivSupportsFilter*>(object);
    filtered->Release(); // nothing is held over the call, in which the control may go
    filtered->FilterChanged(pFilter);
  });
  if (alive) SetEnabled(enabled);
}

void TKivShellLink::SelectAll(IKivShellControl* pSender) {
  if (!GetEnabled()) return;
  static_cast<void>(TellOthers(pSender, [](IKivShellControl& control) { control.SelectAll(); }));
}

void TKivShellLink::Refresh(IKivShellControl* pSender, TRefreshLevel pRefreshLevel, IItemIdList* pItemIdList) {
  if (!GetEnabled()) return;
  const ComPtr<IItemIdList> held(pItemIdList); // the first control may make the link let go of it
  static_cast<void>(
      TellOthers(pSender, [&](IKivShellControl& control) { control.Refresh(pRefreshLevel, pItemIdList); }));
}

void TKivShellLink::GoUp(IKivShellControl* pSender) {
  if (!GetEnabled()) return;
  bool done = false;
  const bool alive = TellOthers(pSender, [&](IKivShellControl& control) { done = done || control.GoUp(); });
  if (alive && !done) pSender->GoUp();
}

void TKivShellLink::SetPosition(int pPosition) {
  if (pPosition >= 0) fHistory->SetPosition(pPosition);
}

void TKivShellLink::Add(IItemIdList* pItemIdList) {
  if (!fIsMoving) fHistory->Add(pItemIdList);
}

void TKivShellLink::Clear() {
  const ComPtr<IItemIdList> current = fHistory->GetCurrentFolderItemIDList();
  fHistory->Clear();
  fHistory->Add(current.Get());
}

bool TKivShellLink::IsMovePossible(int pDelta) {
  return (pDelta >= 0 || GetPosition() >= 1) && fHistory->IsMovePossible(pDelta);
}

void TKivShellLink::Move(int pDelta, void (IKivShellHistory::*pMove)(std::uint8_t), std::uint8_t pSteps) {
  if (!IsMovePossible(pDelta)) return;
  const TAliveWatch watch(GetAliveToken());
  fIsMoving = true;
  (fHistory.Get()->*pMove)(pSteps);
  PathChanged(nullptr, fHistory->GetCurrentFolderItemIDList().Get());
  if (watch.IsAlive()) fIsMoving = false;
}

void TKivShellLink::SetSelectionList(TKivSelectionList* pSelectionList) {
  if (pSelectionList == fSelectionList) return;
  delete std::exchange(fSelectionList, nullptr);
  if (!pSelectionList) return;
  pSelectionList->SetSubComponent(true);
  InsertComponent(pSelectionList);
  fSelectionList = pSelectionList;
}

void TKivShellLink::Notification(TComponent* pComponent, TOperation pOperation) {
  if (pOperation == TOperation::opRemove && pComponent == fSelectionList) fSelectionList = nullptr;
  TKivBaseComponent::Notification(pComponent, pOperation);
}

HRESULT TKivShellLink::QueryInterface(REFIID pIid, void** pObject) {
  if (!pObject) return E_POINTER;
  const bool known = pIid == IidOf<IKivShellHistory>() || pIid == IidOf<IUnknown>();
  *pObject = known ? static_cast<IKivShellHistory*>(this) : nullptr;
  return known ? S_OK : E_NOINTERFACE;
}

} // namespace kiv
