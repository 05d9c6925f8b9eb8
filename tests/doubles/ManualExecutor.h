#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace kiv::test {

/// Stands in for "the main thread" or "a worker": closures wait until the test runs them, on the test's own thread.
///
/// Queue may be called from any thread, also by a closure that runs. No lock is held while a closure runs. What a
/// closure raises passes out of the call that ran it; that closure is used up, those behind it stay queued.
class ManualExecutor {
public:
  using TClosure = std::function<void()>;

  void Queue(TClosure pClosure) {
    const std::lock_guard guard(fLock);
    fClosures.push_back(std::move(pClosure));
  }

  std::size_t PendingCount() const {
    const std::lock_guard guard(fLock);
    return fClosures.size();
  }

  /// Runs the first closure. False if there is none.
  bool RunOne() {
    TClosure closure;
    {
      const std::lock_guard guard(fLock);
      if (fClosures.empty()) return false;
      closure = std::move(fClosures.front());
      fClosures.pop_front();
    }
    closure();
    return true;
  }

  /// Runs what is queued now; what those closures queue waits for the next call. Returns how many ran.
  std::size_t RunAll() {
    const std::size_t count = PendingCount();
    std::size_t ran = 0;
    while (ran < count && RunOne()) ++ran;
    return ran;
  }

  /// Runs until nothing is left and returns how many ran. Raises std::runtime_error if there is still work after
  /// `pLimit` closures: they queue each other for ever.
  std::size_t RunUntilIdle(std::size_t pLimit = 10'000) {
    std::size_t ran = 0;
    while (ran < pLimit && RunOne()) ++ran;
    if (PendingCount() != 0) throw std::runtime_error("The executor doesn't become idle.");
    return ran;
  }

  /// Drops what is queued without running it, as a pool does that is freed. Returns how many were dropped.
  std::size_t DropAll() {
    std::deque<TClosure> dropped;
    {
      const std::lock_guard guard(fLock);
      dropped.swap(fClosures);
    }
    return dropped.size();
  }

private:
  mutable std::mutex fLock;
  std::deque<TClosure> fClosures;
};

} // namespace kiv::test
