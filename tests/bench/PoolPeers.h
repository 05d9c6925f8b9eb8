#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kiv::bench {

/// Another pool, for the same work: 1,000,000 empty tasks from one producer on two threads.
struct TPoolPeer {
  std::string name;
  /// Microseconds a task.
  std::function<double()> run;
  /// What ours may cost beside it, item by item and in batches; 0 for no limit.
  double singleBudget = 0;
  double batchedBudget = 0;
};

/// The bare pool below, and those whose packages were found when this was built.
std::vector<TPoolPeer> PoolPeers();

std::int64_t NowInNanoseconds();

/// A quantile of the microseconds between `pAdd`, which makes an idle pool store the time of its start, and that time.
double Latency(double pQuantile, const std::function<void(std::atomic<std::int64_t>&)>& pAdd);
/// The same for a pool of two threads, one mutex and one condition variable.
double BareLatency(double pQuantile);

/// Lets the main thread do what is queued for it, as its platform does that, until something is so.
void PumpMainThread(const std::function<bool()>& pReached);

} // namespace kiv::bench
