#pragma once

#include <framework/Thread.h>
#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <threading/Cancellation.h>
#include <threading/WorkItem.h>

#include <atomic>
#include <functional>

namespace kiv {

class TCustomThreadPool;

/// A thread that a pool can hold, pause, and at last end by force. Frees itself when it ends, unless told otherwise.
///
/// The forced end. Each such thread is at any time either inside (in the library's own code, which takes locks and
/// comes to an end by itself) or outside (in foreign code: Execute of an application's class, the work of an item, an
/// event). Only a thread that is outside is ended by force, so none dies with a lock of the pool's. Where the platform
/// can't end a thread, it is left behind: it keeps its object, and when the foreign code returns, if ever, it goes
/// without touching the pool, and takes the object along.
class KIV_EXPORT TKivThread : public TThread {
public:
  TKivThread();
  ~TKivThread() override;

  /// Also says Running.
  void Start();
  TTaskStatus GetStatus() const noexcept { return fStatus.load(std::memory_order_acquire); }
  bool GetIsFinished() const noexcept { return GetStatus() == TTaskStatus::Completed; }

  bool GetPaused() const noexcept { return GetStatus() == TTaskStatus::Paused; }
  /// A paused thread stops in its next GetTerminated, and nowhere else.
  virtual void SetPaused(bool pPaused);

  bool GetBackgroundMode() const noexcept { return fBackgroundMode; }
  /// On the thread itself: see SetCurrentThreadBackground.
  void SetBackgroundMode(bool pBackground);

  /// May be null. Before Start.
  void SetCancellationIndicator(ComPtr<ICancellationIndicator> pIndicator);

  /// The checkpoint, on the thread itself: waits out a pause, then says whether the thread is to end.
  bool GetTerminated();
  /// Whether GetTerminated would say so, without waiting. Any thread that knows this one to live.
  bool IsEndRequested();
  /// Sleeps in steps of 5 ms, on the thread itself, until the time has passed or GetTerminated is true.
  void Delay(std::uint64_t pMilliseconds);

protected:
  void DoTerminate() override;
  void CallExecute() override;
  bool IsLeftBehind() const noexcept override;
  /// Tells the pool that this thread ends.
  virtual void NotifyThreadPool();

  /// Runs foreign code, which must not raise. False: the pool has given this thread up meanwhile; go, and don't touch
  /// the pool.
  template <typename F>
  bool CallOutside(F&& pForeign) {
    const bool first = EnterOutside();
    pForeign();
    return !first || ReturnInside();
  }

  std::atomic<TTaskStatus> fStatus{TTaskStatus::WaitingToRun};

private:
  friend class TCustomThreadPool;

  enum class TPlace : std::uint8_t {
    Inside,
    Outside,
    Doomed,    ///< a pool is about to end it by force
    LeftBehind ///< to go by itself
  };

  bool EnterOutside() noexcept;
  bool ReturnInside() noexcept;
  void Pause();

  bool fBackgroundMode = false;
  ComPtr<ICancellationIndicator> fCancellationIndicator;
  std::atomic<TCustomThreadPool*> fThreadPool{nullptr}; // while the pool's list has this thread
  bool fCountedOut = false;                             // guarded by the pool's lock: ended, but still using the pool
  std::atomic<TPlace> fPlace{TPlace::Inside};
  bool fOutside = false; // the thread's own idea of it
};

/// Runs a closure on a new thread that has entered COM.
class KIV_EXPORT TCOMThread : public TThread {
public:
  /// `pComObjectToKeepAlive` is held while the thread runs, and released there. `pFreeThreaded`: in the multi-threaded
  /// apartment, else in one of its own. The thread frees itself. Raises EThread if there are no more threads.
  static void Run(std::function<void()> pExecute, ComPtr<IUnknown> pComObjectToKeepAlive = nullptr,
                  bool pFreeThreaded = false);

protected:
  void Execute() override;

private:
  TCOMThread(std::function<void()> pExecute, ComPtr<IUnknown> pComObjectToKeepAlive, bool pFreeThreaded);

  std::function<void()> fExecute;
  ComPtr<IUnknown> fComObjectToKeepAlive;
  bool fFreeThreaded;
};

} // namespace kiv
