#pragma once

#include <framework/Event.h>
#include <platform/Export.h>
#include <threading/KivThread.h>
#include <threading/WorkItem.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kiv {

/// A list of threads with an upper limit, a common priority and pause, and an orderly end.
///
/// Threads are added suspended and leave the list by themselves when they end. The end of the pool asks all of them to
/// terminate, and ends those by force that haven't left in time (see TKivThread for what that means). The wait is
/// bounded: `MaxTimeUntilHardTerminate` for each, one after the other.
///
/// A pool may be destroyed by any thread, also by one of its own from foreign code: that thread is left behind, and
/// goes when it comes back. Derived classes call `EndAllThreads` in their destructors, since their threads use them.
///
/// Its lifetime isn't counted: AddRef and Release do nothing.
class KIV_EXPORT TCustomThreadPool : public IPausable {
public:
  TCustomThreadPool();
  virtual ~TCustomThreadPool();
  TCustomThreadPool(const TCustomThreadPool&) = delete;
  TCustomThreadPool& operator=(const TCustomThreadPool&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID pIid, void** pObject) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(-1); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(-1); }

  /// Takes a suspended thread in and starts it if the limit allows; it then belongs to the pool until it ends by
  /// itself. Raises EThread if it can't be started; it stays the caller's then.
  virtual void Add(TKivThread* pThread);
  /// Takes a thread out that has ended; ends any other by force. The end of a thread calls it.
  virtual void Remove(TKivThread* pThread);
  /// Asks all threads to end. With `pForce` waits, and ends by force those that don't. Main thread: runs what is queued
  /// there meanwhile, so that a thread that waits for it can leave.
  virtual void TerminateAllThreads(bool pForce);

  bool ThreadsActive() const noexcept { return Count() > 0; }
  int Count() const noexcept { return fCount.load(std::memory_order_relaxed); }
  bool ThreadExists(const TKivThread* pThread) const;
  /// Threads that nobody has asked to end.
  int ThreadsNotTerminated() const;
  /// Threads that are neither suspended nor at their end.
  int RunningThreadCount() const;

  /// Three for each processor, and two.
  static int DefaultMaxRunningThreads();
  /// What NUMBER_OF_PROCESSORS in the environment says, or the platform if that is missing or no number. Asked once.
  static int GetCPUCount();
  /// The same from what was found there. Negative numbers and those over 32 bits count as none.
  static int CPUCountFrom(const std::wstring& pVariable, int pPlatformCount) noexcept;

  int GetMaxRunningThreads() const noexcept { return fMaxRunningThreads.load(std::memory_order_relaxed); }
  /// Threads over the new limit are asked to end; suspended ones are started while the limit allows, and one more.
  virtual void SetMaxRunningThreads(int pValue);
  bool GetPaused() override { return fPaused.load(std::memory_order_relaxed); }
  void SetPaused(bool pPaused) override;
  TThreadPriority GetPriority() const noexcept { return fPriority.load(std::memory_order_relaxed); }
  void SetPriority(TThreadPriority pPriority);
  /// How many milliseconds a thread gets to end by itself; 3000 at first.
  std::uint32_t GetMaxTimeUntilHardTerminate() const noexcept { return fMaxTimeUntilHardTerminate; }
  void SetMaxTimeUntilHardTerminate(std::uint32_t pMilliseconds) noexcept {
    fMaxTimeUntilHardTerminate = pMilliseconds;
  }
  /// The pool, which must be on the heap then, deletes itself when its last thread has gone.
  bool GetFreeOnLastThreadTermination() const noexcept { return fFreeOnLastThreadTermination; }
  void SetFreeOnLastThreadTermination(bool pFree) noexcept { fFreeOnLastThreadTermination = pFree; }

  /// On the main thread, for each thread that ends, which waits for it. Before threads are added.
  void SetOnThreadTerminated(TEvent<TKivThread&> pEvent) { fOnThreadTerminated = std::move(pEvent); }
  /// On the last thread, when it has left. Before threads are added.
  void SetOnAllThreadsTerminated(TEvent<TCustomThreadPool&> pEvent) { fOnAllThreadsTerminated = std::move(pEvent); }

  /// On the main thread runs what is queued there; False at once on any other, or if nothing ran. What that raises
  /// passes, or with `pSwallow` is dropped and gives False.
  static bool CheckSynchronize(bool pSwallow);

protected:
  /// The list and its lock: a thread that leaves may hold them longer than the pool lives.
  struct TThreads {
    std::recursive_mutex lock;
    std::vector<TKivThread*> list; // guarded by lock, as the next
    int stays = 0;                 // see TStay
    bool freeWhenLeft = false;
  };

  virtual void DoAllThreadsTerminated();
  /// Behind the removal of a thread, before the pool looks whether it was the last one. On that thread.
  virtual void ThreadRemoved() {}
  /// A thread has been killed; called with the lock held.
  virtual void ThreadKilled(TKivThread&) {}
  /// Ends a thread by force; called with the lock held. False if the platform can't.
  virtual bool Kill(TKivThread& pThread);
  /// What to say of a thread that is about to be ended by force.
  virtual std::wstring DescribeForcedEnd(TKivThread& pThread);
  /// A thread has been added; called with the lock held.
  virtual void ThreadAdded(TKivThread& pThread);

  /// Stands in a call that ends the threads: a pool that frees itself with the last of them waits for the call's end.
  class KIV_EXPORT TStay {
  public:
    explicit TStay(TCustomThreadPool& pPool);
    ~TStay();
    TStay(const TStay&) = delete;
    TStay& operator=(const TStay&) = delete;

  private:
    TCustomThreadPool* const fPool; // may be gone: what runs on the main thread meanwhile is foreign
    const std::shared_ptr<TThreads> fThreads;
  };

  /// What TerminateAllThreads does, with a TStay around it.
  void EndThreads(bool pForce);
  /// For destructors: TerminateAllThreads with force, until it has got through.
  void EndAllThreads() noexcept;
  void TerminateThreadSecure(TKivThread* pThread);
  bool StartFirstSuspendedThread();
  /// Calls `pVisit` for each thread that counts, from the last to the first, under the lock.
  void ForEachThread(const std::function<void(TKivThread&)>& pVisit) const;
  template <typename F>
  static bool CallOutside(TKivThread& pThread, F&& pForeign) {
    return pThread.CallOutside(std::forward<F>(pForeign));
  }

  const std::shared_ptr<TThreads> fThreads;
  std::atomic<bool> fTerminated{false}; // an end is under way; cleared when the last thread leaves
  std::atomic<bool> fDestroying{false};
  std::atomic<bool> fPaused{false};

private:
  friend class TKivThread;
  struct TForcedEnd;

  void FreeOnce();
  void ThreadHasTerminated(TKivThread& pThread);
  bool DoThreadTerminated(TKivThread& pThread);
  bool AskAllThreadsToEnd();
  void ForceAllThreadsToEnd();
  bool IsListed(const TKivThread* pThread) const;
  void Erase(const TKivThread* pThread);
  bool TryEndByForce(TKivThread* pThread);

  std::atomic<int> fCount{0}; // of those in the list that aren't counted out
  std::atomic<int> fMaxRunningThreads;
  std::atomic<TThreadPriority> fPriority{TThreadPriority::tpNormal};
  std::atomic<std::uint32_t> fMaxTimeUntilHardTerminate{3000};
  std::atomic<bool> fFreeOnLastThreadTermination{false};
  std::atomic<int> fForcedEnds{0}; // how many are under way
  TEvent<TKivThread&> fOnThreadTerminated;
  TEvent<TCustomThreadPool&> fOnAllThreadsTerminated;
};

/// The plain form, for threads that the caller makes: those over the limit wait suspended until another one ends.
class KIV_EXPORT TThreadPool : public TCustomThreadPool {
public:
  TThreadPool() = default;
  ~TThreadPool() override;

  /// While the pool ends, a new thread is asked to end at once.
  void Add(TKivThread* pThread) override;

protected:
  void ThreadRemoved() override;
  void ThreadAdded(TKivThread& pThread) override;
};

} // namespace kiv
