#include "Allocations.h"
#include "Benches.h"

#include "PoolPeers.h"

#include <platform/MainThread.h>
#include <platform/Signal.h>
#include <threading/WorkProcedures.h>
#include <threading/WorkerPool.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace kiv::bench {

namespace {

constexpr int Count = 1'000'000;
constexpr int Threads = 2;
constexpr std::size_t BatchSize = 1000;

class TEmptyItem : public TBasicWorkItem {
public:
  explicit TEmptyItem(ComPtr<ICancellationIndicator> pToken = nullptr, bool pOnMainThread = false)
      : TBasicWorkItem(std::move(pToken)) {
    fFireOnWorkDoneSynchronized = pOnMainThread;
  }
  void DoWork() override {}
};

// A pool of ours with all its threads up.
class TWarmPool {
public:
  explicit TWarmPool(int pThreads) {
    pool.SetMaxRunningThreads(pThreads);
    pool.SetMinWorkerThreads(pThreads);
    pool.SetOnAllWorkItemsDone([this](bool) { fDone.Set(); });
    while (pool.Count() < pThreads) {
      pool.AddWorkItem(Make<TEmptyItem>());
      std::this_thread::yield();
    }
    AwaitIdle();
  }
  void AwaitIdle() {
    while (pool.GetWorkItemsActive()) fDone.WaitFor(std::chrono::milliseconds(1));
  }

private:
  TSignal fDone;

public:
  TWorkerThreadPool pool; // ends first: its event sets the signal
};

double RunSingle() {
  TWarmPool warm(Threads);
  const double seconds = Seconds([&] {
    for (int i = 0; i < Count; ++i) warm.pool.AddWorkItem(Make<TEmptyItem>(), TPriority::Normal);
    warm.AwaitIdle();
  });
  return seconds * 1e6 / Count;
}

double RunBatched() {
  TWarmPool warm(Threads);
  const double seconds = Seconds([&] {
    for (int left = Count; left > 0; left -= static_cast<int>(BatchSize)) {
      IWorkItems batch;
      batch.reserve(BatchSize);
      for (std::size_t i = 0; i < BatchSize; ++i) batch.push_back(Make<TEmptyItem>());
      warm.pool.AddWorkItems(std::move(batch), TPriority::Normal);
    }
    warm.AwaitIdle();
  });
  return seconds * 1e6 / Count;
}

// From adding an item to its start on an idle, warm pool: one item at a time, with a breath between them.
class TStampItem : public TBasicWorkItem {
public:
  explicit TStampItem(std::atomic<std::int64_t>& pStarted) : fStarted(pStarted) { fFireOnWorkDoneSynchronized = false; }
  void DoWork() override { fStarted = NowInNanoseconds(); }

private:
  std::atomic<std::int64_t>& fStarted;
};

double OurLatency(double quantile) {
  TWarmPool warm(Threads);
  return Latency(quantile, [&](std::atomic<std::int64_t>& started) {
    warm.pool.AddWorkItem(Make<TStampItem>(started), TPriority::Normal);
  });
}

// The least of many short runs: one that was interrupted says nothing.
double AskTerminated() {
  static constexpr int Chunk = 10'000;
  class TAsker : public TBasicWorkItem {
  public:
    explicit TAsker(ComPtr<ICancellationIndicator> pToken) : TBasicWorkItem(std::move(pToken)) {}
    void DoWork() override {
      for (int i = 0; i < Chunk; ++i) fFound = fFound || Terminated();
    }

  private:
    bool fFound = false;
  };
  CancellationToken token;
  const auto asker = Make<TAsker>(token);
  double least = 1;
  for (int i = 0; i < 100; ++i) least = std::min(least, Seconds([&] { asker->DoWork(); }));
  return least * 1e9 / Chunk;
}

// 100,000 items of one token behind one that holds the only worker.
double DrainCancelled() {
  constexpr int items = 100'000;
  TWarmPool warm(1);
  TSignal hold;
  warm.pool.AddWorkItem(TAsyncProcedure::Create([&hold] { hold.Wait(); }));
  CancellationToken token;
  IWorkItems all;
  for (int i = 0; i < items; ++i) all.push_back(Make<TEmptyItem>(token));
  warm.pool.AddWorkItems(std::move(all), TPriority::Normal);
  return Seconds([&] {
           token.Cancel();
           hold.Set();
           warm.AwaitIdle();
         }) *
         1e3;
}

// A token that nobody asked for: its pointers and what it took from the heap.
double UnusedToken() {
  const long before = AllocationCount();
  const CancellationToken token;
  return static_cast<double>(sizeof(token)) / sizeof(void*) + static_cast<double>(AllocationCount() - before);
}

#if defined(__GLIBC__)
double BytesPerQueuedItem() {
  constexpr std::size_t items = 100'000;
  TWorkerThreadPool pool;
  pool.SetMaxRunningThreads(0);
  IWorkItems all;
  for (std::size_t i = 0; i < items; ++i) all.push_back(Make<TEmptyItem>());
  const std::size_t before = mallinfo2().uordblks;
  for (const auto& item : all) pool.AddWorkItem(item);
  const std::size_t after = mallinfo2().uordblks;
  pool.TerminateWorkItems();
  // What the allocator adds to the object itself counts too.
  const double overhead = static_cast<double>(malloc_usable_size(all[0].Get())) + 8 - sizeof(TEmptyItem);
  return static_cast<double>(after - before) / items + overhead;
}
#endif

// 10,000 results, from items on one worker to the main thread.
double DeliverResults(double& wakes) {
  constexpr int items = 10'000;
  MainThread::Attach();
  std::atomic<int> delivered{0};
  IWorkItems all;
  for (int i = 0; i < items; ++i) {
    all.push_back(Make<TEmptyItem>(nullptr, true));
    all.back()->SetOnWorkDone([&](const ComPtr<IWorkItem>&) { ++delivered; });
  }
  TWarmPool warm(1);
  const auto before = MainThread::Statistics();
  const double seconds = Seconds([&] {
    warm.pool.AddWorkItems(all, TPriority::Normal);
    PumpMainThread([&] { return delivered == items; });
  });
  const auto after = MainThread::Statistics();
  // Posts beside the times that the main thread had gone idle.
  wakes = static_cast<double>(after.wakes - before.wakes) /
          static_cast<double>(std::max<std::size_t>(1, after.idles - before.idles));
  return seconds * 1e6 / items;
}

std::function<double()> Limit(double value) {
  return [value] { return value; };
}

} // namespace

std::vector<TFigure> PoolFigures() {
  const auto wakes = std::make_shared<double>(0);
  std::vector<TFigure> figures;
  for (const TPoolPeer& peer : PoolPeers()) {
    figures.push_back({"pools", "single_to_" + peer.name, "us/item", &RunSingle, peer.run, peer.singleBudget});
    figures.push_back({"pools", "batched_to_" + peer.name, "us/item", &RunBatched, peer.run, peer.batchedBudget});
  }
  const std::vector<TFigure> others = {
    {"pools", "start_median", "us", [] { return OurLatency(0.5); }, [] { return BareLatency(0.5); }, 1.2},
    {"pools", "start_p99", "us", [] { return OurLatency(0.99); }, [] { return BareLatency(0.99); }, 1.2},
    {"pools", "terminated", "ns", &AskTerminated, Limit(5), 1},
    {"pools", "unused_token", "pointers and allocations", &UnusedToken, Limit(1), 1},
    {"pools", "drain_cancelled", "ms", &DrainCancelled, Limit(20), 1},
#if defined(__GLIBC__)
    {"pools", "queued_item", "bytes", &BytesPerQueuedItem, Limit(96), 1},
#endif
    {"pools", "deliver_result", "us", [wakes] { return DeliverResults(*wakes); }, Limit(2), 1},
    {"pools", "deliver_posts_to_idles", "times", [wakes] { return *wakes; }, Limit(1), 1},
  };
  figures.insert(figures.end(), others.begin(), others.end());
  return figures;
}

} // namespace kiv::bench
