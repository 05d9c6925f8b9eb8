#include "PoolCommand.h"

#include "ObjectText.h"
#include "TextTable.h"

#include <platform/Signal.h>
#include <threading/WorkerThreadPool.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kivtool {

namespace {

using TClock = std::chrono::steady_clock;
using namespace std::chrono_literals;

double Microseconds(TClock::duration time) {
  return std::chrono::duration<double, std::micro>(time).count();
}

// What the items write into; each has a place of its own.
struct TLoad {
  explicit TLoad(const TPoolOptions& pOptions)
      : options(pOptions), latencies(static_cast<std::size_t>(pOptions.items), -1) {}

  const TPoolOptions& options;
  std::vector<float> latencies; // microseconds; below 0: it never ran
};

class TLoadItem : public kiv::TBasicWorkItem {
public:
  TLoadItem(TLoad& pLoad, std::size_t pIndex) : fLoad(pLoad), fIndex(pIndex) { fFireOnWorkDoneSynchronized = false; }
  void DoWork() override {
    const auto start = TClock::now();
    fLoad.latencies[fIndex] = static_cast<float>(Microseconds(start - fAdded));
    const auto end = start + std::chrono::microseconds(fLoad.options.workMicroseconds);
    while (TClock::now() < end) {
    }
  }

private:
  TLoad& fLoad;
  const std::size_t fIndex;
  const TClock::time_point fAdded = TClock::now();
};

void AddItems(TLoad& load, kiv::TWorkerThreadPool& pool) {
  std::minstd_rand random(1); // the same load each time
  const auto chosen = [&random](int percent) { return static_cast<int>(random() % 100) < percent; };
  const auto items = static_cast<std::size_t>(load.options.items);
  for (std::size_t next = 0; next < items;) {
    kiv::IWorkItems batch;
    const std::size_t end = std::min(items, next + static_cast<std::size_t>(load.options.batch));
    while (next < end) batch.push_back(kiv::Make<TLoadItem>(load, next++));
    const auto priority = chosen(load.options.highestPercent) ? kiv::TPriority::Highest : kiv::TPriority::Normal;
    pool.AddWorkItems(batch, priority);
    for (const auto& item : batch) {
      if (chosen(load.options.cancelPercent)) item->Cancel();
    }
  }
}

struct TOutcome {
  double seconds = 0;
  std::size_t ran = 0;
  std::vector<float> latencies;                // sorted
  std::vector<std::pair<double, int>> threads; // milliseconds since the start, and how many from then on
  float Quantile(double pPart) const {
    return latencies.empty() ? 0
                             : latencies[static_cast<std::size_t>(pPart * static_cast<double>(latencies.size() - 1))];
  }
};

TOutcome Load(const TPoolOptions& options) {
  TLoad load(options);
  TOutcome outcome;
  kiv::TSignal done;
  {
    kiv::TWorkerThreadPool pool;
    if (options.threads > 0) pool.SetMaxRunningThreads(options.threads);
    pool.SetMinWorkerThreads(std::min(options.minimum, pool.GetMaxRunningThreads()));
    pool.SetOnAllWorkItemsDone([&done](bool) { done.Set(); });
    std::atomic<bool> added{false};
    std::exception_ptr raised;
    const auto start = TClock::now();
    std::thread producer([&] {
      try {
        AddItems(load, pool);
      } catch (...) {
        raised = std::current_exception(); // no thread to be had
      }
      added = true;
      done.Set();
    });
    for (bool active = true; active;) {
      const int count = pool.Count();
      if (outcome.threads.empty() || outcome.threads.back().second != count) {
        outcome.threads.emplace_back(Microseconds(TClock::now() - start) / 1000, count);
      }
      done.WaitFor(5ms);
      active = !added || (pool.ThreadsActive() && pool.GetWorkItemsActive());
    }
    outcome.seconds = Microseconds(TClock::now() - start) / 1e6;
    producer.join();
    if (raised) std::rethrow_exception(raised);
  }
  outcome.latencies = std::move(load.latencies);
  std::erase_if(outcome.latencies, [](float latency) { return latency < 0; });
  std::sort(outcome.latencies.begin(), outcome.latencies.end());
  outcome.ran = outcome.latencies.size();
  return outcome;
}

std::string Fixed(double value, int digits) {
  char text[40];
  std::snprintf(text, sizeof(text), "%.*f", digits, value);
  return text;
}

constexpr std::pair<const char*, double> Quantiles[] = {
    {"median", 0.5}, {"p90", 0.9}, {"p99", 0.99}, {"p999", 0.999}, {"max", 1.0}};

std::string TextOf(const TPoolOptions& options, const TOutcome& outcome) {
  const auto rate = static_cast<std::uint64_t>(static_cast<double>(options.items) / outcome.seconds);
  const auto items = static_cast<std::size_t>(options.items);
  std::string text = Grouped(items) + " items in " + Fixed(outcome.seconds, 3) + " s, " + Grouped(rate) +
                     " a second; " + Grouped(outcome.ran) + " ran, " + Grouped(items - outcome.ran) +
                     " were cancelled before\nTo start, in microseconds:";
  for (const auto& [name, part] : Quantiles) text += std::string(" ") + name + " " + Fixed(outcome.Quantile(part), 1);
  text += "\nThreads:";
  for (const auto& [at, count] : outcome.threads) text += " " + std::to_string(count) + " from " + Fixed(at, 0) + " ms";
  return text + "\n";
}

std::string JsonOf(const TPoolOptions& options, const TOutcome& outcome) {
  nlohmann::ordered_json json;
  json["items"] = options.items;
  json["ran"] = outcome.ran;
  json["seconds"] = outcome.seconds;
  json["itemsPerSecond"] = static_cast<double>(options.items) / outcome.seconds;
  for (const auto& [name, part] : Quantiles) json["latencyMicroseconds"][name] = outcome.Quantile(part);
  json["threads"] = nlohmann::json::array();
  for (const auto& [at, count] : outcome.threads) json["threads"].push_back({{"milliseconds", at}, {"count", count}});
  return json.dump() + "\n";
}

} // namespace

int RunPool(const TPoolOptions& pOptions, TEnvironment& pEnvironment) {
  const TOutcome outcome = Load(pOptions);
  const std::string text = pOptions.json ? JsonOf(pOptions, outcome) : TextOf(pOptions, outcome);
  return pEnvironment.out(text) ? Succeeded : Interrupted;
}

} // namespace kivtool
