#include <framework/Thread.h>

#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <platform/DebugOutput.h>
#include <platform/MainThread.h>

#include <condition_variable>
#include <mutex>
#include <utility>

namespace kiv {

namespace {

std::atomic<int> gRunning{0};

constexpr std::chrono::milliseconds WaitSlice{10};

} // namespace

struct TThread::TCore {
  std::mutex lock;
  std::unique_ptr<IPlatformThread> thread; // guarded by lock; null until Start
  std::atomic<bool> held{false};           // written under lock
  std::condition_variable released;
  std::atomic<std::thread::id> id{}; // who runs it
  std::atomic<bool> ended{false};
  TSignal end; // set behind `ended`; who takes it sets it again for the next one
};

TThread::TThread() : fCore(std::make_shared<TCore>()) {}

TThread::~TThread() {
  Finish();
  RemoveQueuedEvents(this);
}

void TThread::Start() {
  const std::shared_ptr<TCore> core = fCore; // the thread may free this object before we are done
  const std::lock_guard guard(core->lock);
  if (core->thread) {
    core->held = false;
    core->released.notify_all();
    return;
  }
  struct TCount {
    ~TCount() {
      if (!begun) gRunning.fetch_sub(1);
    }
    bool begun = false;
  } count;
  gRunning.fetch_add(1); // before the thread can count itself out
  core->thread = ThreadApi().beginThread([this, core] { Run(this, core); });
  if (!core->thread) throw EThread(L"The platform makes no more threads.");
  count.begun = true;
  if (GetPriority() != TThreadPriority::tpNormal) core->thread->SetPriority(GetPriority());
}

void TThread::Run(TThread* pThread, const std::shared_ptr<TCore>& pCore) noexcept {
  {
    const std::lock_guard guard(pCore->lock); // the starter's last word on the object is said
    pCore->id = std::this_thread::get_id();
  }
  pThread->fThreadId = CurrentThreadNumber();
  pThread->RunBody();
  if (pThread->GetFreeOnTerminate() || pThread->IsLeftBehind()) delete pThread;
  gRunning.fetch_sub(1);
  pCore->ended = true;
  pCore->end.Set();
}

void TThread::RunBody() noexcept {
  try {
    if (!IsTerminated()) CallExecute();
  } catch (...) {
    fFatalException = std::current_exception();
  }
  if (IsLeftBehind()) return;
  try {
    DoTerminate();
  } catch (...) {
    ReportException(std::current_exception());
  }
  if (fFatalException && GetFreeOnTerminate()) ReportException(std::exchange(fFatalException, nullptr));
}

void TThread::CallExecute() {
  Execute();
}

void TThread::DoTerminate() {
  if (!fOnTerminate) return;
  Synchronize([this] {
    const TEvent<TThread&> event = fOnTerminate;
    event(*this);
  });
}

void TThread::TerminatedSet() {}

bool TThread::IsLeftBehind() const noexcept {
  return false;
}

void TThread::Terminate() {
  fTerminated.store(true, std::memory_order_release);
  TerminatedSet();
}

void TThread::WaitFor() {
  const std::shared_ptr<TCore> core = fCore;
  {
    const std::lock_guard guard(core->lock);
    if (!core->thread) return;
  }
  const bool main = MainThread::IsCurrent();
  while (!core->ended) {
    if (!main) {
      core->end.Wait();
    } else if (!core->end.WaitFor(WaitSlice)) {
      CheckSynchronize(); // the thread may be waiting for us
    }
  }
  core->end.Set();
}

bool TThread::IsFinished() const noexcept {
  return fCore->ended;
}

bool TThread::IsCurrent() const noexcept {
  return fCore->id.load() == std::this_thread::get_id();
}

void TThread::Finish() noexcept {
  {
    const std::lock_guard guard(fCore->lock);
    if (!fCore->thread || fCore->ended) return;
    if (IsCurrent()) return;
  }
  for (;;) {
    try {
      Terminate();
      Start(); // it may be held
      WaitFor();
      return;
    } catch (...) {
      ReportException(std::current_exception()); // of a closure that was queued to the main thread; it is used up
    }
  }
}

bool TThread::ForceEnd() noexcept {
  const std::lock_guard guard(fCore->lock);
  if (!fCore->thread || !fCore->thread->ForceEnd()) return false;
  MainThread::DropCallsOf(fCore->id);
  gRunning.fetch_sub(1);
  fCore->ended = true;
  return true;
}

bool TThread::IsSuspended() const noexcept {
  const std::lock_guard guard(fCore->lock);
  return !fCore->thread || fCore->held.load();
}

void TThread::Suspend() noexcept {
  const std::lock_guard guard(fCore->lock);
  if (fCore->thread) fCore->held = true;
}

bool TThread::IsHeld() const noexcept {
  return fCore->held.load(std::memory_order_relaxed);
}

void TThread::CheckSuspended() {
  if (!IsHeld()) return;
  std::unique_lock guard(fCore->lock);
  fCore->released.wait(guard, [this] { return !fCore->held.load(); });
}

void TThread::SetPriority(TThreadPriority pPriority) noexcept {
  fPriority = pPriority;
  const std::lock_guard guard(fCore->lock);
  if (fCore->thread) fCore->thread->SetPriority(pPriority);
}

void TThread::Synchronize(const std::function<void()>& pProcedure) {
  MainThread::Synchronize(pProcedure);
}

void TThread::Queue(const TThread* pThread, std::function<void()> pProcedure) {
  MainThread::Queue(std::move(pProcedure), pThread);
}

void TThread::RemoveQueuedEvents(const TThread* pThread) {
  MainThread::RemoveQueuedEvents(pThread);
}

bool TThread::CheckSynchronize(std::chrono::milliseconds pTimeout) {
  return MainThread::CheckSynchronize(pTimeout);
}

int TThread::RunningCount() noexcept {
  return gRunning.load();
}

bool TThread::AwaitAllEnded(std::chrono::milliseconds pLimit) {
  const auto end = std::chrono::steady_clock::now() + pLimit;
  while (gRunning.load() > 0) {
    if (std::chrono::steady_clock::now() >= end) return false;
    CheckSynchronize();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

} // namespace kiv
