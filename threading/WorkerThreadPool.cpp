#include <threading/WorkerThreadPool.h>

#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <platform/Lifecycle.h>
#include <platform/Threads.h>
#include <platform/TypeName.h>
#include <threading/CpuUsage.h>

#include <algorithm>
#include <utility>

namespace kiv {

namespace {

constexpr std::uint64_t CheckInterval = 400; // ms
constexpr std::chrono::milliseconds LongestWait{500};
constexpr int SpinsBeforeSleep = 200; // some microseconds
// For a host that is a library.
constexpr std::uint32_t LibraryHardTerminate = 40; // ms
constexpr std::chrono::milliseconds LibraryPause{200};

std::atomic<TWorkerThreadPool*> gGlobalPool{nullptr};
std::mutex gGlobalLock;

void FreeGlobalPool() {
  TWorkerThreadPool* const pool = gGlobalPool.load();
  if (IsHostLibrary()) {
    pool->SetMaxTimeUntilHardTerminate(LibraryHardTerminate);
    ThreadApi().sleep(LibraryPause);
  }
  delete pool;
  gGlobalPool = nullptr; // behind the end: its last threads may ask
}

// Null for a thread that somebody else made and added.
TWorkerThread* AsWorker(TKivThread& thread) noexcept {
  return dynamic_cast<TWorkerThread*>(&thread);
}

ComPtr<IWorkItem> ItemOf(TKivThread& thread) {
  const TWorkerThread* const worker = AsWorker(thread);
  return worker ? worker->GetWorkItem() : nullptr;
}

} // namespace

void detail::CallAllWorkItemsFinished(const TAllWorkItemsFinished& event, bool terminated) noexcept {
  try {
    event(terminated);
  } catch (...) {
    ReportException(std::current_exception());
  }
}

TWorkerThreadPool::TWorkerThreadPool(bool pInitializeCOM) : fInitializeCOM(pInitializeCOM) {}

TWorkerThreadPool::~TWorkerThreadPool() {
  EndAllThreads();
  SetOnAllWorkItemsDone(nullptr);
}

TWorkerThreadPool& TWorkerThreadPool::Instance() {
  if (TWorkerThreadPool* const standing = gGlobalPool.load(std::memory_order_acquire)) return *standing;
  const std::lock_guard guard(gGlobalLock);
  if (TWorkerThreadPool* const standing = gGlobalPool.load()) return *standing;
  auto pool = std::make_unique<TWorkerThreadPool>(true);
  const int count = std::max(4, GetCPUCount());
  pool->SetMaxRunningThreads(4 * count);
  pool->SetMinWorkerThreads(IsHostLibrary() ? count : 2 * count);
  AtShutdown(&FreeGlobalPool);
  gGlobalPool.store(pool.get(), std::memory_order_release);
  return *pool.release();
}

bool TWorkerThreadPool::IsGlobal() const noexcept {
  return gGlobalPool.load(std::memory_order_relaxed) == this;
}

HRESULT STDMETHODCALLTYPE TWorkerThreadPool::QueryInterface(REFIID pIid, void** pObject) {
  if (!pObject || !(pIid == IidOf<IWorkerThreadPool>())) return TCustomThreadPool::QueryInterface(pIid, pObject);
  *pObject = static_cast<IWorkerThreadPool*>(this);
  AddRef();
  return S_OK;
}

int TWorkerThreadPool::GetCPUUsage() {
  return TCpuMeter::Instance().Usage();
}

void TWorkerThreadPool::SetOnAllWorkItemsDone(TAllWorkItemsFinished pEvent) {
  auto event = pEvent ? std::make_shared<const TAllWorkItemsFinished>(std::move(pEvent)) : nullptr;
  const std::lock_guard guard(fEventLock);
  fOnAllWorkItemsDone.swap(event); // the old one goes behind the lock: what it holds is foreign
}

// --- items -----------------------------------------------------------------------------------------------------------

void TWorkerThreadPool::RefuseIfDestroying() const {
  if (fDestroying.load(std::memory_order_relaxed)) {
    throw EInvalidOperation(L"New workitems cannot be added to a threadpool that is destroying.");
  }
}

void TWorkerThreadPool::AddWorkItem(ComPtr<IWorkItem> pWorkItem) {
  AddWorkItem(std::move(pWorkItem), GetUseLIFO() ? TPriority::Highest : TPriority::Normal);
}

void TWorkerThreadPool::AddWorkItem(ComPtr<IWorkItem> pWorkItem, TPriority pPriority) {
  RefuseIfDestroying();
  if (!pWorkItem) throw EInvalidArgument(L"There is no work item to add.");
  if (fIsTerminatingAllWorkitems.load(std::memory_order_relaxed)) return;
  fWorkerItemsQueue.Add(std::move(pWorkItem), pPriority == TPriority::Highest);
  CheckAddNewWorkerThread();
}

void TWorkerThreadPool::AddWorkItems(IWorkItems pWorkItems, TPriority pPriority) {
  RefuseIfDestroying();
  for (const auto& item : pWorkItems) {
    if (!item) throw EInvalidArgument(L"There is no work item to add.");
  }
  fWorkerItemsQueue.Add(std::move(pWorkItems), pPriority == TPriority::Highest);
  CheckAddNewWorkerThread();
}

bool TWorkerThreadPool::ContainsWorkItem(REFIID pInterfaceID) {
  if (fWorkerItemsQueue.ContainsWorkItem(pInterfaceID)) return true;
  bool found = false;
  ForEachThread([&](TKivThread& thread) {
    const ComPtr<IWorkItem> item = ItemOf(thread);
    found = found || (item && Supports(*item.Get(), pInterfaceID));
  });
  return found;
}

bool TWorkerThreadPool::ContainsWorkItem(int pTag) {
  if (fWorkerItemsQueue.ContainsWorkItem(pTag)) return true;
  bool found = false;
  ForEachThread([&](TKivThread& thread) {
    const ComPtr<IWorkItem> item = ItemOf(thread);
    found = found || (item && item->GetTag() == pTag);
  });
  return found;
}

int TWorkerThreadPool::GetActiveThreadCount() const {
  int count = 0;
  ForEachThread([&count](TKivThread& thread) { count += ItemOf(thread) ? 1 : 0; });
  return count;
}

bool TWorkerThreadPool::GetWorkItemsActive() const {
  const bool active = fWorkerItemsQueue.NotDone() > 0;
  if (active && Count() == 0) {
    throw EInvalidOperation(UnqualifiedTypeName(typeid(*this)) +
                            L" should have worker threads in case it has worker items.");
  }
  return active;
}

std::size_t TWorkerThreadPool::TerminateWorkItems() {
  if (fWorkerItemsQueue.NotDone() == 0) return 0;
  fIsTerminatingAllWorkitems = true;
  struct TEnd {
    std::atomic<bool>& terminating;
    ~TEnd() { terminating = false; }
  } const end{fIsTerminatingAllWorkitems}; // an item's clean-up may raise
  const std::size_t dropped = fWorkerItemsQueue.Clear();
  std::size_t reached = dropped;
  if (dropped > 0 && fWorkerItemsQueue.Done(dropped)) {
    TriggerAllWorkItemsDoneEvent(fTerminated);
  } else {
    ForEachThread([&reached](TKivThread& thread) {
      TWorkerThread* const worker = AsWorker(thread);
      reached += worker && worker->TerminateWorkItem() ? 1U : 0U;
    });
  }
  return reached;
}

// The closure, if the event is to be raised now; EndAllDone of the queue follows then. The counter in the queue keeps
// it from running twice at once, and workers from taking items the while.
std::shared_ptr<const TAllWorkItemsFinished> TWorkerThreadPool::BeginAllWorkItemsDone() {
  std::shared_ptr<const TAllWorkItemsFinished> event;
  {
    const std::lock_guard guard(fEventLock);
    event = fOnAllWorkItemsDone;
  }
  if (event && !fWorkerItemsQueue.BeginAllDone()) event = nullptr;
  return event;
}

void TWorkerThreadPool::TriggerAllWorkItemsDoneEvent(bool pTerminated) noexcept {
  const auto event = BeginAllWorkItemsDone();
  if (!event) return;
  detail::CallAllWorkItemsFinished(*event, pTerminated);
  fWorkerItemsQueue.EndAllDone();
}

// --- threads ---------------------------------------------------------------------------------------------------------

// On a worker: counts the item that it carries as done and waits for the next one. False if none came, or the last one
// was counted, and the worker is to look whether it shall end.
bool TWorkerThreadPool::TakeWorkItem(TWorkerThread& pThread) {
  using TFound = TWorkItemsQueue::TFound;
  ComPtr<IWorkItem> item;
  std::uint64_t start = 0;
  TFound found = TFound::Item;
  while ((found = fWorkerItemsQueue.TakeOrList(item, pThread.fWaker, found,
                                               std::exchange(pThread.fCarriesItem, false))) != TFound::Item) {
    if (found == TFound::LastDone) {
      pThread.RunAllDone();
      return false;
    }
    if (found == TFound::Search) {
      // The next item is often about to come: a sleep and a wake-up cost more than a look around.
      for (int spins = 0; spins < SpinsBeforeSleep && QueueLength() == 0; ++spins) RelaxProcessor();
      continue;
    }
    const std::uint64_t now = ThreadApi().tickCount();
    if (start == 0) start = now;
    const bool idle = now < start || now - start > GetMaxIdleTime();
    if (idle) pThread.Terminate();
    // A wait serves the thread's apartment, and with it foreign code.
    const bool mine = idle || pThread.CallOutside([&] { ThreadApi().waitFor(*pThread.fWaker, LongestWait); });
    if (!mine) return false;
    if (idle || pThread.GetTerminated()) {
      if (!pThread.IsLeftBehind()) fWorkerItemsQueue.Leave(pThread.fWaker);
      return false;
    }
  }
  pThread.fWorkItem.store(item.Detach(), std::memory_order_release);
  pThread.fCarriesItem = true;
  try {
    CheckAddNewWorkerThread();
  } catch (...) {
    ReportException(std::current_exception()); // this thread does what there is
  }
  return true;
}

// Under the lock, so that the end of a pause can't fall between the look and the change.
void TWorkerThreadPool::PauseIfPaused(TWorkerThread& pThread) {
  const std::lock_guard guard(fThreads->lock);
  if (GetPaused()) pThread.SetPaused(true);
}

// Adds at most one thread. What is looked at without the lock is looked at again with it.
void TWorkerThreadPool::CheckAddNewWorkerThread() {
  const std::uint64_t now = ThreadApi().tickCount();
  const std::uint64_t last = fLastCheckAddNewWorkerThread.load(std::memory_order_relaxed);
  const int count = Count();
  if (count > GetMinWorkerThreads() && now - last < CheckInterval) return;
  if (!WantsThread(count)) {
    if (now != last) fLastCheckAddNewWorkerThread.store(now, std::memory_order_relaxed);
    return;
  }
  const std::lock_guard guard(fThreads->lock);
  const bool looked_meanwhile = fLastCheckAddNewWorkerThread.load(std::memory_order_relaxed) != last;
  if (looked_meanwhile && Count() > GetMinWorkerThreads()) return;
  fLastCheckAddNewWorkerThread.store(now, std::memory_order_relaxed); // before the new thread looks itself
  if (WantsThread(Count())) AddThread();
}

bool TWorkerThreadPool::WantsThread(int pCount) const {
  if (pCount >= GetMaxRunningThreads() || QueueLength() == 0 || fTerminated.load(std::memory_order_relaxed)) {
    return false;
  }
  return pCount < GetMinWorkerThreads() || GetCPUUsage() < GetMaxCpuUsage();
}

void TWorkerThreadPool::AddThread() {
  auto thread = std::make_unique<TWorkerThread>(*this);
  try {
    Add(thread.get());
    static_cast<void>(thread.release()); // its own now
  } catch (const EThread&) {
    if (Count() == 0) throw;
  }
}

void TWorkerThreadPool::ThreadRemoved() {
  if (QueueLength() > 0) CheckAddNewWorkerThread();
}

void TWorkerThreadPool::ThreadKilled(TKivThread& pThread) {
  const TWorkerThread* const worker = AsWorker(pThread);
  if (!worker) return;
  fWorkerItemsQueue.Leave(worker->fWaker);
  if (worker->fCarriesItem && fWorkerItemsQueue.Done()) fLastItemKilled = true;
  if (worker->fRunsEvent) fWorkerItemsQueue.EndAllDone();
}

bool TWorkerThreadPool::Kill(TKivThread& pThread) {
  const auto still = fWorkerItemsQueue.Lock();
  return TCustomThreadPool::Kill(pThread);
}

std::wstring TWorkerThreadPool::DescribeForcedEnd(TKivThread& pThread) {
  const ComPtr<IWorkItem> item = ItemOf(pThread);
  if (!item) return TCustomThreadPool::DescribeForcedEnd(pThread);
  return L"Terminating worker Thread with work item" + UnqualifiedTypeName(item->ClassType()) + L" the hard way.";
}

void TWorkerThreadPool::DoNewThread(TWorkerThread& pThread) {
  const auto event = fOnNewThread; // which may destroy the pool
  if (!event) return;
  try {
    event(*this, pThread);
  } catch (...) {
    ReportException(std::current_exception());
  }
}

void TWorkerThreadPool::TerminateThreads(bool pForce) {
  TerminateAllThreads(pForce);
}

void TWorkerThreadPool::Dispose() {
  TerminateAllThreads(false);
}

void TWorkerThreadPool::TerminateAllThreads(bool pForce) {
  const TStay stay(*this);
  EndThreads(false);
  TerminateWorkItems();
  EndThreads(pForce);
  if (pForce) {
    const std::size_t dropped = fWorkerItemsQueue.Clear();
    const bool last = dropped > 0 && fWorkerItemsQueue.Done(dropped);
    if (fLastItemKilled.exchange(false) || last) TriggerAllWorkItemsDoneEvent(true);
  }
  CheckSynchronize(true);
}

void TWorkerThreadPool::SetMaxCpuUsage(int pPercent) noexcept {
  fMaxCpuUsage = std::clamp(pPercent, 0, 100);
}

void TWorkerThreadPool::SetMaxRunningThreads(int pValue) {
  const int old = GetMaxRunningThreads();
  if (old < GetMinWorkerThreads()) fMinWorkerThreads = std::max(old - 1, 1);
  TCustomThreadPool::SetMaxRunningThreads(pValue);
}

void TWorkerThreadPool::SetMinWorkerThreads(int pValue) {
  fMinWorkerThreads = pValue;
  // Not by the setter above, which would take the minimum back.
  if (pValue > GetMaxRunningThreads()) TCustomThreadPool::SetMaxRunningThreads(pValue);
  CheckAddNewWorkerThread();
}

// --- counted pools ---------------------------------------------------------------------------------------------------

TWorkerThreadPoolRefCounted::~TWorkerThreadPoolRefCounted() {
  EndAllThreads(); // while the object is still whole: its threads call its virtual operations
}

ComPtr<TWorkerThreadPoolRefCounted> TWorkerThreadPoolRefCounted::Construct(bool pInitializeCOM) {
  ComPtr<TWorkerThreadPoolRefCounted> pool;
  pool.Attach(new TWorkerThreadPoolRefCounted(pInitializeCOM));
  return pool;
}

ULONG STDMETHODCALLTYPE TWorkerThreadPoolRefCounted::AddRef() {
  return fRefCount.fetch_add(1, std::memory_order_relaxed) + 1;
}

ULONG STDMETHODCALLTYPE TWorkerThreadPoolRefCounted::Release() {
  const ULONG left = fRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (left == 0) {
    fRefCount.store(0x40000000, std::memory_order_relaxed); // references that come and go at the end don't end it again
    delete this;
  }
  return left;
}

} // namespace kiv
