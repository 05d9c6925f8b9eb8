#pragma once

#include <framework/Event.h>
#include <platform/Export.h>
#include <platform/Threads.h>

#include <atomic>
#include <chrono>
#include <exception>
#include <functional>
#include <memory>

namespace kiv {

/// Base of the objects that run a thread of their own. A derived class says in Execute what the thread does.
///
/// Life: an object is made suspended, that is, without a thread; Start gives it one. `Execute` runs on it, unless
/// Terminate came before, then DoTerminate, and then, with FreeOnTerminate, the object deletes itself there. Without it
/// the object is the maker's: the destructor of the most derived class calls `Finish()`, because the thread uses
/// members of that class up to its end. A thread that frees itself is touched by others only while they know that it
/// lives.
///
/// What Execute raises ends the thread: FatalException keeps it; a thread that frees itself reports it as well
/// (ReportException), because nobody may be there to ask.
class KIV_EXPORT TThread {
public:
  TThread();
  virtual ~TThread();
  TThread(const TThread&) = delete;
  TThread& operator=(const TThread&) = delete;

  /// Gives the object its thread, or wakes one that is held in Suspend. Raises EThread if the platform makes no more
  /// threads; the object is then as it was.
  void Start();
  /// Any thread that knows the object to live: asks the thread to end, by a flag that Execute is to look at.
  void Terminate();
  bool IsTerminated() const noexcept { return fTerminated.load(std::memory_order_acquire); }
  /// Waits for the end of the thread; on the main thread what is queued there runs meanwhile. Returns at once if there
  /// never was a thread. Not for threads that free themselves.
  void WaitFor();
  /// Whether the thread has left Execute and DoTerminate.
  bool IsFinished() const noexcept;
  /// Whether the caller is this thread.
  bool IsCurrent() const noexcept;

  /// True until Start, and while the thread is held.
  bool IsSuspended() const noexcept;
  /// Holds the thread at its next CheckSuspended. It isn't stopped where it stands: it might hold a lock of the
  /// process.
  void Suspend() noexcept;

  bool GetFreeOnTerminate() const noexcept { return fFreeOnTerminate.load(std::memory_order_relaxed); }
  /// Before Start, or on the thread itself.
  void SetFreeOnTerminate(bool pFree) noexcept { fFreeOnTerminate.store(pFree, std::memory_order_relaxed); }
  TThreadPriority GetPriority() const noexcept { return fPriority.load(std::memory_order_relaxed); }
  void SetPriority(TThreadPriority pPriority) noexcept;
  /// The thread's number as the platform counts threads; 0 until it runs.
  unsigned long GetThreadId() const noexcept { return fThreadId.load(std::memory_order_relaxed); }

  /// Runs on the main thread behind Execute; the thread waits for it.
  void SetOnTerminate(TEvent<TThread&> pEvent) { fOnTerminate = std::move(pEvent); }
  /// What Execute raised; null if nothing. In OnTerminate, or behind WaitFor.
  const std::exception_ptr& GetFatalException() const noexcept { return fFatalException; }

  /// Runs a closure on the main thread and waits; raises what it raises. Any thread.
  static void Synchronize(const std::function<void()>& pProcedure);
  /// Queues a closure for the main thread. `pThread`, which may be null, is what RemoveQueuedEvents goes by; a thread
  /// object takes along what is still queued for it when it is destroyed. Any thread.
  static void Queue(const TThread* pThread, std::function<void()> pProcedure);
  static void RemoveQueuedEvents(const TThread* pThread);
  /// Main thread: runs what is queued. False on any other thread, or if nothing ran.
  static bool CheckSynchronize(std::chrono::milliseconds pTimeout = {});

  /// How many threads of such objects haven't ended yet, those included that were left behind by a forced end. Any
  /// thread.
  static int RunningCount() noexcept;
  /// Waits until all have ended, at most so long, with queued closures running on the main thread. False if some run
  /// on.
  static bool AwaitAllEnded(std::chrono::milliseconds pLimit);

protected:
  virtual void Execute() = 0;
  /// Behind Execute, on the thread: fires OnTerminate.
  virtual void DoTerminate();
  /// Called by Terminate behind the flag, on the caller's thread.
  virtual void TerminatedSet();
  /// What stands around Execute.
  virtual void CallExecute();
  /// True for a thread that was left behind: it must leave without DoTerminate and then free its object.
  virtual bool IsLeftBehind() const noexcept;

  /// For Execute and what it calls: waits here while the thread is held.
  void CheckSuspended();
  /// Whether CheckSuspended would hold it.
  bool IsHeld() const noexcept;
  /// For destructors of derived classes: Terminate, and wait for the end. Nothing on the thread itself.
  void Finish() noexcept;
  /// Ends the thread by force. True: it is dead, and the object may be deleted; the destructor won't wait. False: the
  /// platform can't, and the thread runs on.
  bool ForceEnd() noexcept;

private:
  struct TCore;

  static void Run(TThread* pThread, const std::shared_ptr<TCore>& pCore) noexcept;
  void RunBody() noexcept;

  // Outlives the object for as long as the thread or somebody who waits for it needs it.
  std::shared_ptr<TCore> fCore;
  std::atomic<bool> fTerminated{false};
  std::atomic<bool> fFreeOnTerminate{false};
  std::atomic<TThreadPriority> fPriority{TThreadPriority::tpNormal};
  std::atomic<unsigned long> fThreadId{0};
  TEvent<TThread&> fOnTerminate;
  std::exception_ptr fFatalException;
};

} // namespace kiv
