#include <core/FolderEnumerator.h>

#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>

#include <utility>

namespace kiv {

static_assert(TFolderEnumerator::AllObjects ==
              (SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN | SHCONTF_INCLUDESUPERHIDDEN));
static_assert(TFolderEnumerator::ForNavigation == SHCONTF_NAVIGATION_ENUM);

TFolderEnumerator::TFolderEnumerator(ComPtr<IShellFolder> pFolder) noexcept
    : TFolderEnumerator(std::move(pFolder), TOptions{}) {}

TFolderEnumerator::TFolderEnumerator(ComPtr<IShellFolder> pFolder, const TOptions& pOptions) noexcept
    : fFolder(std::move(pFolder)), fOptions(pOptions) {}

TFolderEnumerator& TFolderEnumerator::operator=(TFolderEnumerator&& pOther) noexcept {
  Restart();
  fFolder = std::move(pOther.fFolder);
  fOptions = pOther.fOptions;
  fObjects = std::move(pOther.fObjects);
  fStatus = pOther.fStatus;
  fCrashedTwice = pOther.fCrashedTwice;
  return *this;
}

TFolderEnumerator::~TFolderEnumerator() {
  Restart();
}

void TFolderEnumerator::Restart() noexcept {
  // The enumerator may be in any state after a crash: letting it go is foreign code too.
  if (IEnumIDList* const objects = fObjects.Detach()) GuardedCall([=] { objects->Release(); });
}

TFolderStep TFolderEnumerator::Leave(TFolderStep pStep, HRESULT pStatus) noexcept {
  Restart();
  fStatus = pStatus;
  return pStep;
}

// Object: an enumerator is at hand.
TFolderStep TFolderEnumerator::Begin() {
  if (!fFolder) return Leave(TFolderStep::End, S_FALSE);
  IEnumIDList* objects = nullptr;
  const HRESULT hr = GuardedCall([&] { return fFolder->EnumObjects(fOptions.window, fOptions.flags, &objects); });
  fObjects.Attach(objects);
  if (FAILED(hr)) return Leave(TFolderStep::Failed, hr);
  if (!fObjects) return Leave(TFolderStep::End, S_FALSE);
  return TFolderStep::Object;
}

TFolderStep TFolderEnumerator::Next(TUniqueItemIdList& pItem) {
  const ScopedErrorMode mode(fOptions.showErrorMessages ? 0 : SEM_FAILCRITICALERRORS);
  fCrashedTwice = false;
  if (!fObjects) {
    const TFolderStep begun = Begin();
    if (begun != TFolderStep::Object) return begun;
  }
  PITEMID_CHILD item = nullptr;
  ULONG fetched = 0;
  const auto step = [&] { return fObjects->Next(1, &item, &fetched); };
  TFault fault;
  HRESULT hr = GuardedCall(step, &fault);
  TFolderStep outcome = TFolderStep::Object;
  if (fault) {
    item = nullptr;
    hr = GuardedCall(step, &fault);
    fCrashedTwice = static_cast<bool>(fault);
    if (fault || hr != S_OK) return Leave(TFolderStep::End, E_FAIL);
    outcome = TFolderStep::ObjectAfterFault;
  }
  if (FAILED(hr)) return Leave(TFolderStep::Failed, hr);
  if (hr != S_OK) {
    CoTaskMemFree(item);
    return Leave(TFolderStep::End, S_FALSE);
  }
  if (!item) return Leave(TFolderStep::End, E_UNEXPECTED);
  pItem.Reset(item);
  fStatus = S_OK;
  return outcome;
}

} // namespace kiv
