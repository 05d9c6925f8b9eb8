#pragma once

#include <chrono>
#include <mutex>

namespace kiv::test {

/// A clock that only the test moves, for code that takes `now` as a function: `[&clock] { return clock.Now(); }`.
/// Any thread. It starts away from the epoch, so that a forgotten "never" (a zero time point) lies in the past.
class ManualClock {
public:
  using TTimePoint = std::chrono::steady_clock::time_point;
  using TDuration = std::chrono::steady_clock::duration;

  TTimePoint Now() const {
    const std::lock_guard guard(fLock);
    return fNow;
  }
  /// Never backwards: a steady clock doesn't.
  void Advance(TDuration pBy) {
    const std::lock_guard guard(fLock);
    if (pBy > TDuration::zero()) fNow += pBy;
  }

private:
  mutable std::mutex fLock;
  TTimePoint fNow = TTimePoint(std::chrono::hours(1000));
};

} // namespace kiv::test
