#include <threading/KivThread.h>

#include <framework/Application.h>
#include <platform/Threads.h>
#include <threading/ThreadPool.h>

#include <memory>
#include <thread>
#include <utility>

namespace kiv {

namespace {
constexpr std::chrono::milliseconds PauseSlice{100};
constexpr std::uint64_t DelayStep = 5; // ms
} // namespace

TKivThread::TKivThread() {
  SetFreeOnTerminate(true);
}

TKivThread::~TKivThread() {
  Finish();
}

void TKivThread::Start() {
  // Said before: a short thread may be at its end, and gone, when the platform's call returns.
  const TTaskStatus before = GetStatus();
  TTaskStatus found = before;
  while (!IsFinal(found) && !fStatus.compare_exchange_weak(found, TTaskStatus::Running)) {
  }
  try {
    TThread::Start();
  } catch (...) {
    fStatus = before; // there is no thread that could have changed it
    throw;
  }
}

void TKivThread::SetPaused(bool pPaused) {
  if (pPaused) {
    TTaskStatus found = TTaskStatus::WaitingToRun;
    if (fStatus.compare_exchange_strong(found, TTaskStatus::Paused)) return;
    found = TTaskStatus::Running;
    fStatus.compare_exchange_strong(found, TTaskStatus::Paused);
  } else {
    TTaskStatus found = TTaskStatus::Paused;
    fStatus.compare_exchange_strong(found, TTaskStatus::Running);
  }
}

void TKivThread::SetBackgroundMode(bool pBackground) {
  if (pBackground == fBackgroundMode) return;
  fBackgroundMode = pBackground;
  SetCurrentThreadBackground(pBackground);
}

void TKivThread::SetCancellationIndicator(ComPtr<ICancellationIndicator> pIndicator) {
  fCancellationIndicator = std::move(pIndicator);
}

void TKivThread::Pause() {
  // A sleep serves the thread's apartment, and with it foreign code.
  while (GetStatus() == TTaskStatus::Paused && !IsTerminated()) {
    if (!CallOutside([] { ThreadApi().sleep(PauseSlice); })) return;
  }
}

bool TKivThread::GetTerminated() {
  CheckSuspended();
  Pause();
  return IsEndRequested();
}

bool TKivThread::IsEndRequested() {
  if (IsTerminated() || IsLeftBehind()) return true;
  return fCancellationIndicator && fCancellationIndicator->IsCancellationRequested();
}

void TKivThread::Delay(std::uint64_t pMilliseconds) {
  const std::uint64_t start = ThreadApi().tickCount();
  while (!GetTerminated() && ThreadApi().tickCount() - start < pMilliseconds) {
    ThreadApi().sleep(std::chrono::milliseconds(DelayStep));
  }
}

void TKivThread::CallExecute() {
  std::exception_ptr raised;
  CallOutside([&] {
    try {
      Execute();
    } catch (...) {
      raised = std::current_exception();
    }
  });
  if (raised) std::rethrow_exception(std::exchange(raised, nullptr));
}

void TKivThread::DoTerminate() {
  fStatus = TTaskStatus::Completed;
  const bool wanted = CallOutside([this] {
    try {
      TThread::DoTerminate();
    } catch (...) {
      ReportException(std::current_exception());
    }
  });
  if (wanted && fThreadPool.load()) NotifyThreadPool();
}

void TKivThread::NotifyThreadPool() {
  fThreadPool.load()->ThreadHasTerminated(*this);
}

bool TKivThread::IsLeftBehind() const noexcept {
  return fPlace.load(std::memory_order_acquire) == TPlace::LeftBehind;
}

// False if the thread is outside already.
bool TKivThread::EnterOutside() noexcept {
  if (fOutside) return false;
  fOutside = true;
  fPlace.store(TPlace::Outside, std::memory_order_release);
  return true;
}

bool TKivThread::ReturnInside() noexcept {
  TPlace found = TPlace::Outside;
  if (fPlace.compare_exchange_strong(found, TPlace::Inside, std::memory_order_acq_rel)) {
    fOutside = false;
    return true;
  }
  // The pool has this thread in hand: it is ended here, or told to go by itself. It stays outside.
  while (!IsLeftBehind()) std::this_thread::yield();
  return false;
}

TCOMThread::TCOMThread(std::function<void()> pExecute, ComPtr<IUnknown> pComObjectToKeepAlive, bool pFreeThreaded)
    : fExecute(std::move(pExecute)), fComObjectToKeepAlive(std::move(pComObjectToKeepAlive)),
      fFreeThreaded(pFreeThreaded) {
  SetFreeOnTerminate(true);
}

void TCOMThread::Run(std::function<void()> pExecute, ComPtr<IUnknown> pComObjectToKeepAlive, bool pFreeThreaded) {
  std::unique_ptr<TCOMThread> thread(
      new TCOMThread(std::move(pExecute), std::move(pComObjectToKeepAlive), pFreeThreaded));
  thread->Start();
  static_cast<void>(thread.release()); // its own now
}

void TCOMThread::Execute() {
  const bool entered = EnterApartment(fFreeThreaded);
  try {
    fExecute();
  } catch (...) {
    ReportException(std::current_exception());
  }
  fExecute = nullptr;
  fComObjectToKeepAlive.Reset();
  if (entered) LeaveApartment();
}

} // namespace kiv
