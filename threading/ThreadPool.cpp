#include <threading/ThreadPool.h>

#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <platform/DebugOutput.h>
#include <platform/MainThread.h>
#include <platform/Threads.h>
#include <platform/TypeName.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

namespace kiv {

namespace {

constexpr std::chrono::milliseconds ForcePause{20};
constexpr std::chrono::milliseconds EndPause{1};
constexpr std::chrono::milliseconds WaitSlice{10};

} // namespace

// --- what the pool is asked ------------------------------------------------------------------------------------------

TCustomThreadPool::TCustomThreadPool()
    : fThreads(std::make_shared<TThreads>()), fMaxRunningThreads(DefaultMaxRunningThreads()) {}

TCustomThreadPool::~TCustomThreadPool() {
  EndAllThreads();
}

HRESULT STDMETHODCALLTYPE TCustomThreadPool::QueryInterface(REFIID pIid, void** pObject) {
  if (!pObject) return E_POINTER;
  const bool known = pIid == IidOf<IUnknown>() || pIid == IidOf<IPausable>();
  *pObject = known ? static_cast<IPausable*>(this) : nullptr;
  if (!known) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

int TCustomThreadPool::CPUCountFrom(const std::wstring& pVariable, int pPlatformCount) noexcept {
  std::int64_t value = 0;
  for (const wchar_t c : pVariable) {
    if (c < L'0' || c > L'9') return pPlatformCount;
    value = value * 10 + (c - L'0');
    if (value > std::numeric_limits<std::int32_t>::max()) return pPlatformCount;
  }
  return pVariable.empty() ? pPlatformCount : static_cast<int>(value);
}

int TCustomThreadPool::GetCPUCount() {
  static std::atomic<int> cached{0}; // 0 counts as not yet asked
  int count = cached.load(std::memory_order_relaxed);
  if (count == 0) {
    count = CPUCountFrom(EnvironmentVariable(L"NUMBER_OF_PROCESSORS").value_or(L""), ProcessorCount());
    cached.store(count, std::memory_order_relaxed);
  }
  return count;
}

int TCustomThreadPool::DefaultMaxRunningThreads() {
  constexpr std::int64_t most = std::numeric_limits<int>::max();
  return static_cast<int>(std::min<std::int64_t>(std::int64_t{GetCPUCount()} * 3 + 2, most));
}

void TCustomThreadPool::ForEachThread(const std::function<void(TKivThread&)>& pVisit) const {
  const std::lock_guard guard(fThreads->lock);
  for (std::size_t i = fThreads->list.size(); i-- > 0;) {
    if (!fThreads->list[i]->fCountedOut) pVisit(*fThreads->list[i]);
  }
}

bool TCustomThreadPool::ThreadExists(const TKivThread* pThread) const {
  const std::lock_guard guard(fThreads->lock);
  return IsListed(pThread) && !pThread->fCountedOut;
}

int TCustomThreadPool::ThreadsNotTerminated() const {
  int count = 0;
  // Without waiting out a pause: it could only end when the lock is free again.
  ForEachThread([&count](TKivThread& thread) { count += thread.IsEndRequested() ? 0 : 1; });
  return count;
}

int TCustomThreadPool::RunningThreadCount() const {
  int count = 0;
  ForEachThread([&count](TKivThread& thread) {
    count += thread.IsSuspended() || thread.GetStatus() == TTaskStatus::Completed ? 0 : 1;
  });
  return count;
}

bool TCustomThreadPool::CheckSynchronize(bool pSwallow) {
  if (!MainThread::IsCurrent()) return false;
  try {
    return MainThread::CheckSynchronize();
  } catch (...) {
    if (!pSwallow) throw;
    return false;
  }
}

void TCustomThreadPool::SetPaused(bool pPaused) {
  const std::lock_guard guard(fThreads->lock);
  if (GetPaused() == pPaused) return;
  ForEachThread([pPaused](TKivThread& thread) { thread.SetPaused(pPaused); });
  fPaused = pPaused;
}

void TCustomThreadPool::SetPriority(TThreadPriority pPriority) {
  const std::lock_guard guard(fThreads->lock);
  if (GetPriority() == pPriority) return;
  ForEachThread([pPriority](TKivThread& thread) { thread.SetPriority(pPriority); });
  fPriority = pPriority;
}

void TCustomThreadPool::SetMaxRunningThreads(int pValue) {
  if (GetMaxRunningThreads() == pValue) return;
  fMaxRunningThreads = pValue;
  const std::lock_guard guard(fThreads->lock);
  int running = 0;
  for (std::size_t i = 0; i < fThreads->list.size(); ++i) { // Terminate calls foreign code, which may add a thread
    TKivThread* const thread = fThreads->list[i];
    if (thread->fCountedOut || thread->IsSuspended()) continue;
    if (++running > pValue) thread->Terminate();
  }
  while (running <= pValue && StartFirstSuspendedThread()) ++running;
}

bool TCustomThreadPool::StartFirstSuspendedThread() {
  const std::lock_guard guard(fThreads->lock);
  for (TKivThread* const thread : fThreads->list) {
    if (thread->fCountedOut || !thread->IsSuspended()) continue;
    thread->Start();
    return true;
  }
  return false;
}

// --- coming and going ------------------------------------------------------------------------------------------------

void TCustomThreadPool::Add(TKivThread* pThread) {
  const std::lock_guard guard(fThreads->lock);
  fThreads->list.push_back(pThread);
  ++fCount;
  try {
    ThreadAdded(*pThread);
  } catch (...) {
    Erase(pThread);
    --fCount;
    pThread->fThreadPool = nullptr;
    throw;
  }
}

void TCustomThreadPool::ThreadAdded(TKivThread& pThread) {
  pThread.fThreadPool = this;
  if (GetPriority() != TThreadPriority::tpNormal) pThread.SetPriority(GetPriority());
  if (Count() <= GetMaxRunningThreads() && pThread.IsSuspended()) pThread.Start();
}

bool TCustomThreadPool::IsListed(const TKivThread* pThread) const {
  return std::find(fThreads->list.begin(), fThreads->list.end(), pThread) != fThreads->list.end();
}

void TCustomThreadPool::Erase(const TKivThread* pThread) {
  std::erase(fThreads->list, pThread);
}

// On the thread that ends. It stays in the list until it has left the pool's code, but doesn't count any more: so the
// pool can't be destroyed under it.
void TCustomThreadPool::ThreadHasTerminated(TKivThread& pThread) {
  if (!DoThreadTerminated(pThread)) return;
  const std::shared_ptr<TThreads> threads = fThreads;
  try {
    Remove(&pThread);
  } catch (...) {
    ReportException(std::current_exception());
  }
  if (pThread.fPlace != TKivThread::TPlace::Inside) return; // the pool is gone, freed by this very thread or another
  const std::lock_guard guard(threads->lock);
  std::erase(threads->list, &pThread);
}

bool TCustomThreadPool::DoThreadTerminated(TKivThread& pThread) {
  if (!fOnThreadTerminated) return true;
  return pThread.CallOutside([&] {
    try {
      const auto event = fOnThreadTerminated;
      TThread::Synchronize([&] { event(pThread); });
    } catch (...) {
      ReportException(std::current_exception());
    }
  });
}

void TCustomThreadPool::Remove(TKivThread* pThread) {
  bool ended = false;
  bool last = false;
  {
    const std::lock_guard guard(fThreads->lock);
    if (!ThreadExists(pThread)) return;
    ended = pThread->GetStatus() == TTaskStatus::Completed;
    if (ended) {
      pThread->fCountedOut = true;
      last = --fCount == 0;
    }
  }
  if (!ended) {
    TerminateThreadSecure(pThread);
    return;
  }
  try {
    ThreadRemoved();
  } catch (...) {
    ReportException(std::current_exception()); // there are no more threads; the end goes on
  }
  if (!last || Count() > 0) return;
  // Foreign code from here to the end, and perhaps the end of the pool.
  if (!pThread->CallOutside([this] {
        try {
          DoAllThreadsTerminated();
        } catch (...) {
          ReportException(std::current_exception());
        }
      })) {
    return;
  }
  if (fForcedEnds > 0) return;                      // which also ends what would come up now, for ever
  if (fTerminated.exchange(false)) ThreadRemoved(); // what was added meanwhile had to wait
}

void TCustomThreadPool::DoAllThreadsTerminated() {
  const bool free = fFreeOnLastThreadTermination;
  if (const TEvent<TCustomThreadPool&> event = fOnAllThreadsTerminated) event(*this);
  if (free) FreeOnce();
}

void TCustomThreadPool::FreeOnce() {
  {
    const std::lock_guard guard(fThreads->lock);
    if (!fFreeOnLastThreadTermination.exchange(false)) return;
    fThreads->freeWhenLeft = fThreads->stays > 0;
    if (fThreads->freeWhenLeft) return;
  }
  delete this;
}

TCustomThreadPool::TStay::TStay(TCustomThreadPool& pPool) : fPool(&pPool), fThreads(pPool.fThreads) {
  const std::lock_guard guard(fThreads->lock);
  ++fThreads->stays;
}

TCustomThreadPool::TStay::~TStay() {
  bool free = false;
  {
    const std::lock_guard guard(fThreads->lock);
    free = --fThreads->stays == 0 && std::exchange(fThreads->freeWhenLeft, false);
  }
  if (free) delete fPool;
}

// --- the end ---------------------------------------------------------------------------------------------------------

bool TCustomThreadPool::AskAllThreadsToEnd() {
  const std::lock_guard guard(fThreads->lock);
  if (Count() > 0) fTerminated = true;
  for (std::size_t i = fThreads->list.size(); i-- > 0;) {
    TKivThread* const thread = fThreads->list[i];
    if (thread->fCountedOut) continue;
    thread->Terminate();
    try {
      if (thread->IsSuspended()) thread->Start();
    } catch (const EThread&) {
      // It never ran, and never will.
      Erase(thread);
      --fCount;
      delete thread;
    }
  }
  return !fThreads->list.empty();
}

void TCustomThreadPool::ForceAllThreadsToEnd() {
  ThreadApi().sleep(ForcePause);
  CheckSynchronize(true);
  for (;;) {
    TKivThread* first = nullptr;
    {
      const std::lock_guard guard(fThreads->lock);
      if (fThreads->list.empty()) return;
      first = fThreads->list.front();
    }
    TerminateThreadSecure(first);
  }
}

struct TCustomThreadPool::TForcedEnd {
  explicit TForcedEnd(TCustomThreadPool& pPool) : pool(pPool) { ++pool.fForcedEnds; }
  ~TForcedEnd() {
    --pool.fForcedEnds;
    if (pool.Count() == 0) pool.fTerminated = false; // the last thread hasn't said so, or couldn't
  }
  TCustomThreadPool& pool;
};

void TCustomThreadPool::EndThreads(bool pForce) {
  {
    std::optional<TForcedEnd> forced;
    if (pForce) forced.emplace(*this);
    if (!AskAllThreadsToEnd()) {
      FreeOnce();
      return;
    }
    if (pForce) ForceAllThreadsToEnd();
  }
  ThreadApi().sleep(EndPause);
  CheckSynchronize(true);
}

void TCustomThreadPool::TerminateAllThreads(bool pForce) {
  const TStay stay(*this);
  EndThreads(pForce);
}

void TCustomThreadPool::EndAllThreads() noexcept {
  {
    const std::lock_guard guard(fThreads->lock);
    fFreeOnLastThreadTermination = false;
    fThreads->freeWhenLeft = false;
  }
  for (;;) {
    try {
      TerminateAllThreads(true);
      break;
    } catch (...) {
      ReportException(std::current_exception()); // of a closure that was queued to the main thread; it is used up
    }
  }
  fDestroying = true;
}

// The hard way: asks the thread to end, waits until it has left the list, and ends it by force after its time.
void TCustomThreadPool::TerminateThreadSecure(TKivThread* pThread) {
  if (!pThread) return;
  bool ending = false;
  {
    const std::lock_guard guard(fThreads->lock);
    if (!IsListed(pThread)) return;
    ending = pThread->GetStatus() == TTaskStatus::Completed;
  }
  if (ending) CheckSynchronize(false);
  {
    const std::lock_guard guard(fThreads->lock);
    if (!IsListed(pThread)) return;
    pThread->Terminate();
    if (pThread->IsSuspended()) pThread->Start();
    if (pThread->IsCurrent()) {
      static_cast<void>(TryEndByForce(pThread)); // nobody waits for oneself
      return;
    }
  }
  const std::uint64_t start = ThreadApi().tickCount();
  for (;;) {
    {
      const std::lock_guard guard(fThreads->lock);
      if (!IsListed(pThread)) return;
      if (ThreadApi().tickCount() - start > fMaxTimeUntilHardTerminate && TryEndByForce(pThread)) return;
    }
    ThreadApi().sleep(WaitSlice);
    CheckSynchronize(false);
  }
}

std::wstring TCustomThreadPool::DescribeForcedEnd(TKivThread& pThread) {
  return L"Terminating Thread " + UnqualifiedTypeName(typeid(pThread)) + L" the hard way. Thread ID: " +
         std::to_wstring(pThread.GetThreadId());
}

// With the lock held. False if the thread is inside, and so about to leave or to go outside.
bool TCustomThreadPool::TryEndByForce(TKivThread* pThread) {
  // Formatted before: no memory is asked for once the thread is gone, whose heap lock may have gone with it.
  const std::wstring message = DescribeForcedEnd(*pThread);
  TKivThread::TPlace found = TKivThread::TPlace::Outside;
  if (!pThread->fPlace.compare_exchange_strong(found, TKivThread::TPlace::Doomed)) return false;
  Erase(pThread);
  if (!pThread->fCountedOut) --fCount;
  pThread->fThreadPool = nullptr;
  const bool own = pThread->IsCurrent();
  if (!own) WriteDebugLine(message);
  pThread->fStatus = TTaskStatus::Canceled;
  ThreadKilled(*pThread);
  if (!own && Kill(*pThread)) {
    delete pThread;
  } else {
    pThread->fPlace.store(TKivThread::TPlace::LeftBehind, std::memory_order_release); // the last touch
  }
  return true;
}

bool TCustomThreadPool::Kill(TKivThread& pThread) {
  return pThread.ForceEnd();
}

// --- the plain form --------------------------------------------------------------------------------------------------

TThreadPool::~TThreadPool() {
  EndAllThreads();
}

void TThreadPool::Add(TKivThread* pThread) {
  const std::lock_guard guard(fThreads->lock);
  TCustomThreadPool::Add(pThread);
  if (fTerminated) pThread->Terminate();
}

void TThreadPool::ThreadAdded(TKivThread& pThread) {
  TCustomThreadPool::ThreadAdded(pThread);
  if (Count() > GetMaxRunningThreads() && !pThread.IsSuspended()) pThread.Suspend();
}

void TThreadPool::ThreadRemoved() {
  if (RunningThreadCount() < GetMaxRunningThreads()) StartFirstSuspendedThread();
}

} // namespace kiv
