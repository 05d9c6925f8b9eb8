#include <platform/MainThread.h>

#include <platform/DebugOutput.h>
#include <platform/Lifecycle.h>
#include <platform/MainThreadWaker.h>
#include <platform/Text.h>

#include <mutex>
#include <utility>

namespace kiv::MainThread {

namespace {

struct TState {
  std::mutex lock;
  std::function<void(std::exception_ptr)> handler; // guarded by lock
  bool attached = false;                           // guarded by lock
};

// Never destroyed: threads may still queue while statics go.
TState& State() {
  static auto* const state = new TState;
  return *state;
}

void ReportException(std::exception_ptr pException) {
  std::function<void(std::exception_ptr)> handler;
  {
    const std::lock_guard guard(State().lock);
    handler = State().handler;
  }
  if (handler) {
    handler(std::move(pException));
    return;
  }
  try {
    std::rethrow_exception(pException);
  } catch (const std::exception& e) {
    WriteDebugLine(L"Queued call: " + FromUtf8(e.what()));
  } catch (...) {
    WriteDebugLine(L"Queued call: unknown exception");
  }
}

TMainThreadQueue& Instance() {
  static auto* const queue = new TMainThreadQueue({
      .wake = &MainThreadWaker::Wake,
      .yield = &MainThreadWaker::TakeTurnLater,
      .onException = &ReportException,
      .now = &std::chrono::steady_clock::now,
  });
  return *queue;
}

void Detach() {
  MainThreadWaker::Stop();
  Instance().Close();
  const std::lock_guard guard(State().lock);
  State().attached = false;
  State().handler = nullptr;
}

} // namespace

void Attach() {
  {
    const std::lock_guard guard(State().lock);
    if (State().attached && Instance().IsMainThread()) return;
  }
  MainThreadWaker::Start(); // may raise: nothing is attached then, and the next call tries again
  Instance().Attach();
  bool first = false;
  {
    const std::lock_guard guard(State().lock);
    first = !std::exchange(State().attached, true);
  }
  if (first) AtShutdown(&Detach);
}

bool IsCurrent() noexcept {
  return Instance().IsMainThread();
}

void Queue(std::function<void()> pProcedure, const void* pOwner) {
  Instance().Queue(std::move(pProcedure), pOwner);
}

void Synchronize(const std::function<void()>& pProcedure) {
  Instance().Synchronize(pProcedure);
}

void RemoveQueuedEvents(const void* pOwner) {
  Instance().RemoveQueuedEvents(pOwner);
}

void DropCallsOf(std::thread::id pCaller) {
  Instance().DropCallsOf(pCaller);
}

bool CheckSynchronize(std::chrono::milliseconds pTimeout) {
  return Instance().CheckSynchronize(pTimeout);
}

void SetExceptionHandler(std::function<void(std::exception_ptr)> pHandler) {
  const std::lock_guard guard(State().lock);
  State().handler = std::move(pHandler);
}

TMainThreadQueue::TStatistics Statistics() {
  return Instance().Statistics();
}

void RunPosted() noexcept {
  Instance().RunPosted();
}

ScopedModalLoop::ScopedModalLoop() : fScope(Instance()) {}

} // namespace kiv::MainThread
