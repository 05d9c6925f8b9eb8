#include <threading/WorkerThread.h>

#include <framework/Application.h>
#include <platform/Threads.h>
#include <platform/TypeName.h>
#include <threading/WorkerThreadPool.h>

#include <mutex>
#include <utility>

namespace kiv {

TWorkerThread::TWorkerThread(TWorkerThreadPool& pPool) : fPool(pPool) {}

TWorkerThread::~TWorkerThread() {
  Finish();
  DropWorkItem(); // of a thread that was ended by force
}

ComPtr<IWorkItem> TWorkerThread::GetWorkItem() const {
  const std::lock_guard guard(fWorkItemLock);
  return fWorkItem.load(std::memory_order_acquire);
}

void TWorkerThread::DropWorkItem() noexcept {
  ComPtr<IWorkItem> dropped; // let go behind the lock: that is foreign code
  const std::lock_guard guard(fWorkItemLock);
  dropped.Attach(fWorkItem.load(std::memory_order_relaxed));
  fWorkItem.store(nullptr, std::memory_order_relaxed);
}

bool TWorkerThread::TerminateWorkItem() {
  const ComPtr<IWorkItem> item = GetWorkItem();
  if (!item) return false;
  item->Cancel();
  if (IsSuspended()) Start();
  return true;
}

void TWorkerThread::TerminatedSet() {
  TKivThread::TerminatedSet();
  static_cast<void>(TerminateWorkItem());
  fWaker->Set();
}

void TWorkerThread::SetPaused(bool pPaused) {
  TKivThread::SetPaused(pPaused);
  if (const ComPtr<IWorkItem> item = GetWorkItem()) {
    item->TryChangeStatus(pPaused ? TTaskStatus::Paused : TTaskStatus::Running);
  }
}

// Execute is the library's own code and says itself where it goes outside.
void TWorkerThread::CallExecute() {
  Execute();
}

void TWorkerThread::Execute() {
  if (GetTerminated()) return;
  fPool.PauseIfPaused(*this);
  SetCurrentThreadName(fPool.IsGlobal() ? L"TWorkerThread in GlobalThreadPool" : UnqualifiedTypeName(typeid(*this)));
  const bool in_apartment = fPool.GetInitializeCOM() && EnterApartment(false);
  if (CallOutside([this] { fPool.DoNewThread(*this); })) {
    while (CarryOn()) {
    }
  }
  if (in_apartment) LeaveApartment();
}

// False when the thread is to end.
bool TWorkerThread::CarryOn() {
  // The item that was run is counted by the same step that takes the next one, unless this thread takes none.
  if (fCarriesItem && (IsEndRequested() || IsHeld() || GetStatus() == TTaskStatus::Paused)) {
    CountWorkItem();
    return !IsLeftBehind();
  }
  if (!fCarriesItem && GetTerminated()) return false;
  if (!fPool.TakeWorkItem(*this)) return !IsLeftBehind();
  return CallOutside([this] { RunWorkItem(); });
}

void TWorkerThread::CountWorkItem() {
  fCarriesItem = false;
  if (fPool.fWorkerItemsQueue.Done()) RunAllDone();
}

// The event of the last item, if there is one. This thread may be left behind in it.
void TWorkerThread::RunAllDone() {
  const auto event = fPool.BeginAllWorkItemsDone();
  if (!event) return;
  fRunsEvent = true;
  const bool terminated = fPool.fTerminated;
  if (!CallOutside([&] { detail::CallAllWorkItemsFinished(*event, terminated); })) return;
  fRunsEvent = false;
  fPool.fWorkerItemsQueue.EndAllDone();
}

void TWorkerThread::RunWorkItem() noexcept {
  // Nothing but fWorkItem holds the item here: a thread that is ended by force takes no reference along.
  IWorkItem& item = *fWorkItem.load(std::memory_order_relaxed);
  std::exception_ptr raised;
  try {
    const TTaskStatus found = item.GetStatus();
    if (found == TTaskStatus::Completed) item.TryChangeStatus(TTaskStatus::WaitingToRun);
    if (found != TTaskStatus::Canceled && item.TryChangeStatus(TTaskStatus::Running)) {
      try {
        item.DoWork();
      } catch (...) {
        raised = std::current_exception();
      }
      if (raised) {
        item.SetStatus(TTaskStatus::Canceled);
      } else {
        if (item.GetStatus() != TTaskStatus::Canceled) item.TryChangeStatus(TTaskStatus::Completed);
        item.Finished(); // which looks at the status again
      }
    }
  } catch (...) {
    if (raised) ReportException(std::exchange(raised, nullptr));
    raised = std::current_exception();
  }
  if (raised) ReportException(std::move(raised));
  DropWorkItem();
}

} // namespace kiv
