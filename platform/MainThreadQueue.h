#pragma once

#include <platform/Export.h>
#include <platform/Signal.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace kiv {

/// Closures on their way to the main thread, in the order in which they were queued.
///
/// This is the whole algorithm; kiv::MainThread is the one instance an application uses. What would surprise you:
///
/// - Two roads lead out. The *posted road*, `RunPosted`, runs when the wake-up arrives in the main thread's message
///   loop. It doesn't nest in itself: while a closure runs that pumps messages, further closures wait. A modal loop
///   that the library enters itself opens the road again with a ScopedModalLoop. `CheckSynchronize` always drains,
///   nested or not.
/// - A wake-up is sent only when the queue had gone idle: nothing queued, no wake-up under way, the posted road not
///   running. A worker that queues 10,000 closures wakes the main thread about once.
/// - The posted road yields after `TConfig::slice`, so that a steady producer doesn't starve input and painting, and
///   asks for its next turn by `TConfig::yield`.
class KIV_EXPORT TMainThreadQueue {
public:
  using TProcedure = std::function<void()>;

  struct TConfig {
    /// Wakes the main thread, from any thread. False: it could not be reached, and the next Queue tries again.
    std::function<bool()> wake;
    /// Asks for another turn of the posted road when other work of the main thread has had its chance. As `wake`.
    std::function<bool()> yield;
    /// Gets what a closure on the posted road raised.
    std::function<void(std::exception_ptr)> onException;
    std::function<std::chrono::steady_clock::time_point()> now;
    /// How long the posted road may run before it yields.
    std::chrono::milliseconds slice{10};
  };

  /// Counts for tests and benchmarks.
  struct TStatistics {
    std::size_t wakes = 0;
    std::size_t yields = 0;
    /// How often the posted road ended with an empty queue.
    std::size_t idles = 0;
  };

  explicit TMainThreadQueue(TConfig pConfig);
  ~TMainThreadQueue();
  TMainThreadQueue(const TMainThreadQueue&) = delete;
  TMainThreadQueue& operator=(const TMainThreadQueue&) = delete;

  /// Declares the calling thread the main thread, and wakes it if something waits already.
  void Attach();
  bool IsMainThread() const noexcept;

  /// Appends a closure; always, also on the main thread. `pOwner`, if given, is what RemoveQueuedEvents goes by.
  void Queue(TProcedure pProcedure, const void* pOwner = nullptr);
  /// Runs a closure on the main thread and waits for its end; on the main thread runs it at once. What it raises is
  /// raised here. Raises EException if the queue closes first.
  void Synchronize(const TProcedure& pProcedure);
  /// Withdraws what an owner has queued and what hasn't begun. Synchronize calls stay.
  void RemoveQueuedEvents(const void* pOwner);
  /// For a thread that is ended by force: withdraws its Synchronize call if that hasn't begun. Nobody waits for it any
  /// more, and what the closure refers to may be gone with the thread.
  void DropCallsOf(std::thread::id pCaller);

  /// On the main thread: runs all that is queued, waiting up to `pTimeout` for something to come, and says whether it
  /// ran anything. What a queued closure raises passes out; the rest stays queued. On another thread: False.
  bool CheckSynchronize(std::chrono::milliseconds pTimeout = {});
  /// The posted road: called on the main thread when a wake-up arrives.
  void RunPosted() noexcept;

  /// Drops what is queued, fails waiting Synchronize calls, and refuses new ones; Attach opens the queue again.
  void Close() noexcept;

  bool IsEmpty() const;
  TStatistics Statistics() const;

  /// Lets the posted road run while the library is in a modal loop of its own (dialog, menu, drag), even if that loop
  /// was entered from a queued closure. Main thread only; scopes nest.
  class KIV_EXPORT ScopedModalLoop {
  public:
    explicit ScopedModalLoop(TMainThreadQueue& pQueue);
    ~ScopedModalLoop();
    ScopedModalLoop(const ScopedModalLoop&) = delete;
    ScopedModalLoop& operator=(const ScopedModalLoop&) = delete;

  private:
    TMainThreadQueue& fQueue;
    bool fWasClosed;
  };

private:
  struct TCall;
  struct TEntry {
    TProcedure procedure;
    const void* owner = nullptr;
    std::shared_ptr<TCall> call; // set for Synchronize
    std::thread::id caller{};    // with `call`
  };

  void Append(TEntry pEntry);
  bool TakeNext(TEntry& pEntry, bool pLeaveRoadWhenEmpty);
  void WaitForArrival(std::chrono::milliseconds pTimeout);
  void RequestTurn(const std::function<bool()>& pHow);
  static void Run(TEntry& pEntry);

  const TConfig fConfig;
  mutable std::mutex fLock;
  std::deque<TEntry> fEntries;
  std::atomic<std::thread::id> fMainThread{};
  bool fClosed = false;
  bool fTurnRequested = false; // a wake-up is under way
  bool fRoadTaken = false;     // the posted road runs, and no modal loop has opened it again
  std::size_t fWaiters = 0;    // CheckSynchronize calls that wait for something to come
  TSignal fArrived;
  TStatistics fStatistics;
};

} // namespace kiv
