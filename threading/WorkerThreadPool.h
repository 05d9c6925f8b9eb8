#pragma once

#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <platform/InterfaceId.h>
#include <threading/ThreadPool.h>
#include <threading/WorkItem.h>
#include <threading/WorkItemsQueue.h>
#include <threading/WorkerThread.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

namespace kiv {

/// Called when all items of a pool are done, on the worker that did the last one or on the thread that withdrew it. The
/// argument says whether the pool is ending its threads. No item starts until it returns.
using TAllWorkItemsFinished = std::function<void(bool pTerminated)>;

namespace detail {
/// What it raises goes to ReportException.
void CallAllWorkItemsFinished(const TAllWorkItemsFinished& event, bool terminated) noexcept;
} // namespace detail

/// What users of a pool need of it.
struct IWorkerThreadPool : IUnknown {
  virtual void AddWorkItem(ComPtr<IWorkItem> pWorkItem, TPriority pPriority) = 0;
  /// All in order, with one wake-up. A vector that is moved in costs no reference.
  virtual void AddWorkItems(IWorkItems pWorkItems, TPriority pPriority) = 0;
  /// Whether an item that waits or runs offers an interface.
  virtual bool ContainsWorkItem(REFIID pInterfaceID) = 0;
  /// Asks all threads to end, and doesn't wait.
  virtual void Dispose() = 0;
};
KIV_INTERFACE_ID(IWorkerThreadPool, "{10A44FA0-1A3E-4CDB-A1C2-07725C8D6919}");

/// Runs work items on threads that come when there is work and go when there is none.
///
/// Up to `MinWorkerThreads` threads are started as soon as items wait; above that one at a time, at most every 400 ms,
/// and only while the processors are less busy than `MaxCpuUsage`; never more than `MaxRunningThreads`. Nothing is
/// started by a timer: each added item, each item that is taken and each thread that leaves is an occasion to look.
/// After a minute without work a thread ends, also the last one.
///
/// Operations may be called on any thread unless they say otherwise.
class KIV_EXPORT TWorkerThreadPool : public TCustomThreadPool, public IWorkerThreadPool {
public:
  /// `pInitializeCOM`: each thread enters a single-threaded apartment of its own.
  explicit TWorkerThreadPool(bool pInitializeCOM = false);
  ~TWorkerThreadPool() override;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID pIid, void** pObject) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return TCustomThreadPool::AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return TCustomThreadPool::Release(); }

  /// The global pool, made at first use and ended by Shutdown. Its threads are in apartments. With n the greater of 4
  /// and the number of processors it has up to 4 n threads, 2 n of them at once (n, if the host is a library).
  static TWorkerThreadPool& Instance();
  bool IsGlobal() const noexcept;

  /// With Highest if UseLIFO is set, else with Normal.
  void AddWorkItem(ComPtr<IWorkItem> pWorkItem);
  /// Dropped without a word while TerminateWorkItems runs. Raises EInvalidOperation when the pool is being destroyed,
  /// EThread if the first thread can't be started (the item stays queued), EArgumentException for no item.
  void AddWorkItem(ComPtr<IWorkItem> pWorkItem, TPriority pPriority) override;
  void AddWorkItems(IWorkItems pWorkItems, TPriority pPriority) override;
  bool ContainsWorkItem(REFIID pInterfaceID) override;
  /// An item that waits, if its tag is `pTag` or `pTag` is 0, or one that runs, if its tag is `pTag`.
  bool ContainsWorkItem(int pTag);
  void Dispose() override;

  std::size_t QueueLength() const noexcept { return fWorkerItemsQueue.Length(); }
  /// Threads with an item in hand.
  int GetActiveThreadCount() const;
  /// Whether items wait or run. Raises EInvalidOperation if they do and there is no thread.
  bool GetWorkItemsActive() const;
  void TerminateThreads(bool pForce);
  /// Drops what waits, without telling the items; only if more remains, cancels what runs. Returns how many it reached.
  virtual std::size_t TerminateWorkItems();
  void TerminateAllThreads(bool pForce) override;

  int GetMinWorkerThreads() const noexcept { return fMinWorkerThreads.load(std::memory_order_relaxed); }
  /// Raises the upper limit if it must.
  void SetMinWorkerThreads(int pValue);
  /// If the old limit was below MinWorkerThreads, that becomes one less than the old limit, but at least 1.
  void SetMaxRunningThreads(int pValue) override;
  int GetMaxCpuUsage() const noexcept { return fMaxCpuUsage.load(std::memory_order_relaxed); }
  /// Percent, brought into 0 to 100. At a usage of as much no thread is added.
  void SetMaxCpuUsage(int pPercent) noexcept;
  /// Milliseconds that a thread waits for work before it ends.
  std::uint32_t GetMaxIdleTime() const noexcept { return fMaxIdleTime.load(std::memory_order_relaxed); }
  void SetMaxIdleTime(std::uint32_t pMilliseconds) noexcept { fMaxIdleTime = pMilliseconds; }
  bool GetUseLIFO() const noexcept { return fUseLIFO.load(std::memory_order_relaxed); }
  void SetUseLIFO(bool pUse) noexcept { fUseLIFO = pUse; }
  bool GetInitializeCOM() const noexcept { return fInitializeCOM; }
  void SetOnAllWorkItemsDone(TAllWorkItemsFinished pEvent);
  /// On each new thread, before its first item. Before items are added.
  void SetOnNewThread(TEvent<TWorkerThreadPool&, TWorkerThread&> pEvent) { fOnNewThread = std::move(pEvent); }

  /// How busy the processors are, in percent: see TCpuMeter.
  static int GetCPUUsage();

protected:
  /// On each new thread, in its apartment. Fires OnNewThread.
  virtual void DoNewThread(TWorkerThread& pThread);
  void ThreadRemoved() override;
  void ThreadKilled(TKivThread& pThread) override;
  bool Kill(TKivThread& pThread) override;
  std::wstring DescribeForcedEnd(TKivThread& pThread) override;

private:
  friend class TWorkerThread;

  bool TakeWorkItem(TWorkerThread& pThread);
  void RefuseIfDestroying() const;
  void CheckAddNewWorkerThread();
  bool WantsThread(int pCount) const;
  void AddThread();
  void PauseIfPaused(TWorkerThread& pThread);
  std::shared_ptr<const TAllWorkItemsFinished> BeginAllWorkItemsDone();
  void TriggerAllWorkItemsDoneEvent(bool pTerminated) noexcept;

  TWorkItemsQueue fWorkerItemsQueue;
  std::atomic<int> fMinWorkerThreads{1};
  std::atomic<int> fMaxCpuUsage{80};
  std::atomic<std::uint32_t> fMaxIdleTime{60'000};
  std::atomic<std::uint64_t> fLastCheckAddNewWorkerThread{0};
  std::atomic<bool> fUseLIFO{false};
  std::atomic<bool> fIsTerminatingAllWorkitems{false};
  std::atomic<bool> fLastItemKilled{false}; // its worker can't say so any more
  const bool fInitializeCOM;
  std::mutex fEventLock;
  std::shared_ptr<const TAllWorkItemsFinished> fOnAllWorkItemsDone; // guarded by fEventLock
  TEvent<TWorkerThreadPool&, TWorkerThread&> fOnNewThread;
};

/// A pool that lives as long as it is referred to. The last reference may go anywhere, on its own workers too.
class KIV_EXPORT TWorkerThreadPoolRefCounted final : public TWorkerThreadPool {
public:
  /// With one reference, the caller's.
  static ComPtr<TWorkerThreadPoolRefCounted> Construct(bool pInitializeCOM = true);

  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

private:
  explicit TWorkerThreadPoolRefCounted(bool pInitializeCOM) : TWorkerThreadPool(pInitializeCOM) {}
  ~TWorkerThreadPoolRefCounted() override;

  std::atomic<ULONG> fRefCount{1};
};

} // namespace kiv
