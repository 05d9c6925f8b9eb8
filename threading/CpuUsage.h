#pragma once

#include <platform/Export.h>
#include <platform/Threads.h>

#include <atomic>
#include <cstdint>
#include <mutex>

namespace kiv {

/// How busy the processors are, in percent, from the platform's counters (ThreadApi). One reading serves all that ask
/// within 200 ms. Any thread.
class KIV_EXPORT TCpuMeter {
public:
  /// The one of the process.
  static TCpuMeter& Instance();

  /// The mean since the reading before this one; since the system started, if this is the first. Counters that stand
  /// still count as 100, counters that can't be had as 0.
  int Usage();
  /// Forgets all readings. For tests that change the counters.
  void Forget();

private:
  double Measure();
  double MeasureTimes(const TSystemTimes& pTimes) noexcept;
  double MeasureCounters();

  std::mutex fLock;
  std::atomic<std::uint64_t> fReadAt{0};
  std::atomic<int> fUsage{0};
  TSystemTimes fTimes; // of the last reading; guarded by fLock, as the next
  TIdleCounters fCounters;
};

} // namespace kiv
