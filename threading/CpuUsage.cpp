#include <threading/CpuUsage.h>

#include <threading/ThreadPool.h>

#include <algorithm>
#include <cmath>

namespace kiv {

namespace {
constexpr std::uint64_t ReadingServes = 200; // ms
} // namespace

TCpuMeter& TCpuMeter::Instance() {
  // Never destroyed: workers may still ask while statics go.
  static auto* const meter = new TCpuMeter;
  return *meter;
}

int TCpuMeter::Usage() {
  const std::uint64_t now = ThreadApi().tickCount();
  const std::uint64_t read_at = fReadAt.load(std::memory_order_acquire);
  if (read_at != 0 && now - read_at <= ReadingServes) return fUsage.load(std::memory_order_relaxed);
  const std::lock_guard guard(fLock);
  if (fReadAt.load(std::memory_order_relaxed) == read_at) { // nobody was quicker
    fUsage.store(std::max(0, static_cast<int>(std::lround(Measure()))), std::memory_order_relaxed);
    fReadAt.store(now, std::memory_order_release);
  }
  return fUsage.load(std::memory_order_relaxed);
}

void TCpuMeter::Forget() {
  const std::lock_guard guard(fLock);
  fReadAt = 0;
  fUsage = 0;
  fTimes = {};
  fCounters = {};
}

double TCpuMeter::Measure() {
  TSystemTimes times;
  if (ThreadApi().readSystemTimes(times)) return MeasureTimes(times);
  return MeasureCounters();
}

double TCpuMeter::MeasureTimes(const TSystemTimes& pTimes) noexcept {
  const double total = static_cast<double>(pTimes.kernel) + static_cast<double>(pTimes.user);
  const double last_total = static_cast<double>(fTimes.kernel) + static_cast<double>(fTimes.user);
  const double idle = static_cast<double>(pTimes.idle) - static_cast<double>(fTimes.idle);
  fTimes = pTimes;
  if (total == last_total) return 100;
  return std::round((1 - idle / (total - last_total)) * 100);
}

double TCpuMeter::MeasureCounters() {
  TIdleCounters counters;
  if (!ThreadApi().readIdleCounters(counters)) return -1;
  if (fCounters.idle == 0) {
    // Nothing to compare with: this one is the ground for another at once.
    fCounters = counters;
    if (!ThreadApi().readIdleCounters(counters)) return -1;
  }
  const double idle = counters.idle - fCounters.idle;
  const double time = counters.time - fCounters.time;
  fCounters = counters;
  if (time == 0) return 100;
  return 100 - idle / time * 100 / std::max(1, TCustomThreadPool::GetCPUCount()) + 0.5;
}

} // namespace kiv
