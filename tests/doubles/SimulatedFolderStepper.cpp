#include <doubles/SimulatedNode.h>

#include <utility>

namespace kiv::test {

using TKind = TStepFault::TKind;

SimulatedFileSystem::TStepper::TStepper(SimulatedFileSystem& pFileSystem, TNodePtr pFolder)
    : fFileSystem(pFileSystem), fFolder(std::move(pFolder)) {}

TFolderStep SimulatedFileSystem::TStepper::Next(TFolderObject& pObject) {
  const auto end_with = [this](TFolderStep step, HRESULT status) {
    fUnderWay = false;
    fStatus = status;
    return step;
  };
  if (!fUnderWay) {
    if (const HRESULT hr = TakeNames(); FAILED(hr)) return end_with(TFolderStep::Failed, hr);
  }
  ++fStep;
  WaitAsScripted();
  bool crashed = false;
  HRESULT hr = S_OK;
  {
    const std::lock_guard guard(fFileSystem.fLock);
    ChangeAsScripted();
    crashed = CrashesAsScripted();
    hr = crashed && CrashesAsScripted() ? E_FAIL : Attempt(pObject);
  }
  fFileSystem.fNotices.Deliver();
  fStatus = hr;
  if (hr == S_OK) return crashed ? TFolderStep::ObjectAfterFault : TFolderStep::Object;
  // Whatever a crashed folder says after that isn't the true end.
  if (crashed) return end_with(TFolderStep::End, E_FAIL);
  return end_with(FAILED(hr) ? TFolderStep::Failed : TFolderStep::End, hr);
}

HRESULT SimulatedFileSystem::TStepper::TakeNames() {
  const std::lock_guard guard(fFileSystem.fLock);
  if (const HRESULT hr = fFileSystem.CheckListable(*fFolder); FAILED(hr)) return hr;
  fNames.clear();
  for (const auto& [folded, child] : fFolder->children) fNames.push_back(child->object.name);
  fStep = 0;
  fAt = 0;
  fUnderWay = true;
  return S_OK;
}

// Without the lock: others go on while this folder is slow.
void SimulatedFileSystem::TStepper::WaitAsScripted() {
  std::function<void()> action;
  std::shared_ptr<TGate> gate;
  {
    const std::lock_guard guard(fFileSystem.fLock);
    if (const TStepFault* fault = Faults(TKind::Slow)) action = fault->action;
    if (const TStepFault* fault = Faults(TKind::Hang)) gate = fault->gate;
  }
  if (action) action();
  if (gate) gate->Pass();
}

void SimulatedFileSystem::TStepper::ChangeAsScripted() {
  if (HasFault(TKind::FolderVanishes) && !fFolder->deleted && !fFolder->IsDriveOrComputer()) {
    fFileSystem.Unlink(fFolder);
  }
  const TNodePtr child = fAt < fNames.size() && !fFolder->deleted ? fFolder->Child(fNames[fAt]) : nullptr;
  if (!child) return;
  if (HasFault(TKind::ObjectVanishes)) {
    fFileSystem.Unlink(child);
  } else if (const TStepFault* fault = Faults(TKind::ObjectRenamed)) {
    fFileSystem.MoveNode(child, fFolder, fault->newName);
  }
}

bool SimulatedFileSystem::TStepper::CrashesAsScripted() {
  TStepFault* fault = Faults(TKind::Crash);
  if (!fault || fault->times == 0) return false;
  --fault->times;
  return true;
}

HRESULT SimulatedFileSystem::TStepper::Attempt(TFolderObject& pObject) {
  if (fFolder->deleted) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  if (fFolder->Drive().noMedium) return HRESULT_FROM_WIN32(ERROR_NOT_READY);
  if (const TStepFault* fault = Faults(TKind::Fail)) return fault->result;
  if (fAt == fNames.size()) return S_FALSE;
  const TNodePtr child = fFolder->Child(fNames[fAt]);
  // By the listed name: a change of case alone is still another name.
  if (child && child->object.name == fNames[fAt]) {
    pObject = child->object;
  } else {
    pObject = {};
    pObject.name = fNames[fAt];
  }
  fObjectPath = Combine(fFileSystem.PathOf(*fFolder), fNames[fAt]);
  bool stays = false;
  for (const auto& [step, fault] : fFolder->faults) stays |= fault.kind == TKind::SameObject && step <= fStep;
  if (!stays) ++fAt;
  return S_OK;
}

TStepFault* SimulatedFileSystem::TStepper::Faults(TKind pKind) const {
  const auto [first, last] = fFolder->faults.equal_range(fStep);
  for (auto at = first; at != last; ++at) {
    if (at->second.kind == pKind) return &at->second;
  }
  return nullptr;
}

} // namespace kiv::test
