#include <threading/WorkItem.h>

#include <framework/SpinWait.h>
#include <platform/MainThread.h>
#include <platform/Threads.h>

#include <utility>

namespace kiv {

namespace {
constexpr std::chrono::milliseconds PauseSlice{100};
} // namespace

void IWorkItemsHelper::WaitForAll(IWorkItems pItems) {
  for (const auto& item : pItems) item->Wait();
}

TBasicWorkItem::TBasicWorkItem(ComPtr<ICancellationIndicator> pCancellationToken, TWorkDoneEvent pOnWorkDone)
    : fCancellationToken(std::move(pCancellationToken)), fOnWorkDone(std::move(pOnWorkDone)) {}

TBasicWorkItem::~TBasicWorkItem() = default;

TWorkDoneEvent TBasicWorkItem::GetOnWorkDone() {
  return fOnWorkDone;
}

void TBasicWorkItem::SetOnWorkDone(TWorkDoneEvent pEvent) {
  fOnWorkDone = std::move(pEvent);
}

void TBasicWorkItem::WorkDone() {}

void TBasicWorkItem::Terminate() {
  fStatus.store(TTaskStatus::Canceled, std::memory_order_release);
}

// True for the one who is to call Terminate: several threads may notice the cancellation at once.
bool TBasicWorkItem::ClaimTermination() noexcept {
  return fStatus.load(std::memory_order_acquire) != TTaskStatus::Canceled &&
         !fTerminationClaimed.exchange(true, std::memory_order_acq_rel);
}

// What a clean-up raises passes on, but no item stays unfinished for it, for which somebody may wait.
void TBasicWorkItem::CleanUp() {
  try {
    Terminate();
  } catch (...) {
    fStatus.store(TTaskStatus::Canceled, std::memory_order_release);
    throw;
  }
}

void TBasicWorkItem::Cancel() {
  if (ClaimTermination()) {
    CleanUp();
  } else {
    fStatus.store(TTaskStatus::Canceled, std::memory_order_release); // who cleans up may not have got there yet
  }
}

void TBasicWorkItem::SetStatus(TTaskStatus pStatus) {
  if (pStatus == TTaskStatus::Canceled) {
    if (ClaimTermination()) CleanUp();
  } else if (fTerminationClaimed.load(std::memory_order_relaxed)) {
    fTerminationClaimed.store(false, std::memory_order_relaxed);
  }
  fStatus.store(pStatus, std::memory_order_release);
}

bool TBasicWorkItem::TryChangeStatus(TTaskStatus pStatus) {
  TTaskStatus found = fStatus.load(std::memory_order_acquire);
  while (!IsFinal(found) || (found == TTaskStatus::Completed && pStatus == TTaskStatus::WaitingToRun)) {
    if (fStatus.compare_exchange_weak(found, pStatus, std::memory_order_acq_rel)) return true;
  }
  return false;
}

TTaskStatus TBasicWorkItem::GetStatus() {
  if (fCancellationToken && fCancellationToken->IsCancellationRequested()) SetStatus(TTaskStatus::Canceled);
  return fStatus.load(std::memory_order_acquire);
}

bool TBasicWorkItem::IsCancellationRequested() {
  return fStatus.load(std::memory_order_acquire) == TTaskStatus::Canceled ||
         fCancellationToken->IsCancellationRequested();
}

// Apart from the rare pause, since DoWork may ask all the time.
bool TBasicWorkItem::Terminated() {
  const TTaskStatus status = TBasicWorkItem::GetStatus();
  return (status == TTaskStatus::Paused ? StatusBehindPause() : status) == TTaskStatus::Canceled;
}

TTaskStatus TBasicWorkItem::StatusBehindPause() {
  TTaskStatus status = TTaskStatus::Paused;
  while (status == TTaskStatus::Paused) {
    ThreadApi().sleep(PauseSlice);
    status = TBasicWorkItem::GetStatus();
  }
  return status;
}

void TBasicWorkItem::Wait() {
  for (TSpinWait wait; !IsFinal(TBasicWorkItem::GetStatus());) wait.SpinCycle();
}

void TBasicWorkItem::Finished() {
  if (TBasicWorkItem::GetStatus() == TTaskStatus::Canceled) return;
  if (fFireOnWorkDoneSynchronized && !MainThread::IsCurrent()) {
    MainThread::Queue([self = ComPtr<TBasicWorkItem>(this)] { self->Finished(); });
    return;
  }
  WorkDone();
  if (const TWorkDoneEvent event = fOnWorkDone) event(ComPtr<IWorkItem>(this));
}

} // namespace kiv
