#pragma once

#include <framework/Application.h>
#include <platform/Export.h>
#include <platform/Signal.h>

#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace kiv {

/// Lets many threads read, or one write, and knows who: a thread may read while it writes, and take what it holds once
/// more. Who comes first is served first, so that neither side starves; only a thread that reads already passes those
/// who wait. A wait answers messages that are sent to the thread, as TSignal does.
///
/// Closures that a writer leaves by AfterWrite run when its outermost write has ended and the lock is free: the place
/// for events, whose handlers may come back, from any thread.
class KIV_EXPORT TMultiReadExclusiveWriteSynchronizer {
public:
  TMultiReadExclusiveWriteSynchronizer();
  ~TMultiReadExclusiveWriteSynchronizer();
  TMultiReadExclusiveWriteSynchronizer(const TMultiReadExclusiveWriteSynchronizer&) = delete;
  TMultiReadExclusiveWriteSynchronizer& operator=(const TMultiReadExclusiveWriteSynchronizer&) = delete;

  void BeginRead();
  void EndRead() noexcept;
  /// Raises EInvalidOperation on a thread that reads and doesn't write: two such would wait for each other.
  void BeginWrite();
  /// At the outermost end runs what AfterWrite was given, in order. A closure that raises doesn't keep the others from
  /// running; the first exception then passes. One of them may destroy the lock.
  void EndWrite();

  /// By the thread that writes. While closures run, those that are added behind them wait for their turn in the same
  /// row, and so does what another thread adds.
  void AfterWrite(std::function<void()> pProcedure);

  template <typename F>
  decltype(auto) Read(F&& pProcedure) {
    const TReader reader(*this);
    return pProcedure();
  }

  template <typename F>
  void Write(F&& pProcedure) {
    BeginWrite();
    try {
      pProcedure();
    } catch (...) {
      try {
        EndWrite();
      } catch (...) {
        ReportException(std::current_exception()); // the procedure's own is the one to pass
      }
      throw;
    }
    EndWrite();
  }

private:
  struct TReader {
    explicit TReader(TMultiReadExclusiveWriteSynchronizer& pLock) : lock(pLock) { lock.BeginRead(); }
    ~TReader() { lock.EndRead(); }
    TReader(const TReader&) = delete;
    TReader& operator=(const TReader&) = delete;
    TMultiReadExclusiveWriteSynchronizer& lock;
  };
  struct THolder {
    std::thread::id thread;
    int depth;
  };
  struct TWaiter {
    std::thread::id thread;
    bool writes;
    TSignal granted;
  };
  struct TRow;

  std::vector<THolder>::iterator FindReader(std::thread::id pThread);
  bool IsFree(bool pForWriting) const noexcept;
  void Take(std::thread::id pThread, bool pForWriting);
  void TakeOrWait(bool pForWriting, std::unique_lock<std::mutex>& pGuard);
  void ServeWaiters();

  std::mutex fLock; // guards all but the row; held for moments
  THolder fWriter{{}, 0};
  std::vector<THolder> fReaders;
  std::deque<TWaiter*> fWaiters;
  const std::shared_ptr<TRow> fRow;
};

} // namespace kiv
