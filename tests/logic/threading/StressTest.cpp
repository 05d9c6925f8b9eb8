#include "PoolFixture.h"

#include <platform/DebugOutput.h>
#include <platform/Text.h>
#include <platform/Threads.h>

#include <array>
#include <chrono>
#include <memory>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

namespace kiv::test {
namespace {

// Everything at once: items that count, raise, cancel themselves, queue others and drop their pool; tokens that are
// reset, pauses, changes of the limits, terminations, and pools that come and go. Each item that was made is destroyed
// and none runs twice. KIV_STRESS_ITEMS says how many items; KIV_STRESS_SEED repeats a run.
class Stress : public PoolTest {
protected:
  static unsigned long long Number(const wchar_t* name, unsigned long long otherwise) {
    const auto text = EnvironmentVariable(name);
    return text ? std::stoull(ToUtf8(*text)) : otherwise;
  }
};

struct TCounts {
  std::atomic<long> made{0};
  std::atomic<long> gone{0};
  std::atomic<long> ran{0};
  std::atomic<long> twice{0};
};

enum class TAct { Nothing, Raise, CancelSelf, QueueAnother };

class TStressItem : public TBasicWorkItem {
public:
  TStressItem(TCounts& pCounts, TAct pAct, std::weak_ptr<ComPtr<IWorkerThreadPool>> pPool,
              ComPtr<ICancellationIndicator> pToken)
      : TBasicWorkItem(std::move(pToken)), fCounts(pCounts), fAct(pAct), fPool(std::move(pPool)) {
    fFireOnWorkDoneSynchronized = false;
    ++fCounts.made;
  }

  void DoWork() override {
    ++fCounts.ran;
    if (fRan.exchange(true)) ++fCounts.twice;
    switch (fAct) {
    case TAct::Raise:
      throw std::runtime_error("stress");
    case TAct::CancelSelf:
      Cancel();
      break;
    case TAct::QueueAnother:
      if (const auto pool = fPool.lock()) {
        (*pool)->AddWorkItem(Make<TStressItem>(fCounts, TAct::Nothing, fPool, nullptr), TPriority::Highest);
      } // if that was the last reference, the pool ends here, on its own worker
      break;
    default:
      break;
    }
  }

protected:
  ~TStressItem() override { ++fCounts.gone; }

private:
  TCounts& fCounts;
  const TAct fAct;
  const std::weak_ptr<ComPtr<IWorkerThreadPool>> fPool;
  std::atomic<bool> fRan{false};
};

// What producers and the troublemaker share of one pool's life.
struct TRound {
  std::shared_ptr<ComPtr<IWorkerThreadPool>> pool;
  std::array<CancellationToken, 4> tokens;
};

void Produce(TRound& round, TCounts& counts, long items, unsigned seed) {
  std::mt19937 random(seed);
  const auto make = [&] {
    const auto draw = random() % 1000;
    const TAct act = draw < 2     ? TAct::Raise
                     : draw < 50  ? TAct::CancelSelf
                     : draw < 150 ? TAct::QueueAnother
                                  : TAct::Nothing;
    ComPtr<ICancellationIndicator> token;
    if (random() % 2 == 0) token = round.tokens[random() % round.tokens.size()];
    return Make<TStressItem>(counts, act, round.pool, token);
  };
  IWorkerThreadPool& pool = *round.pool->Get();
  for (long left = items; left > 0;) {
    const TPriority priority = random() % 8 == 0 ? TPriority::Highest : TPriority::Normal;
    if (random() % 4 == 0) {
      IWorkItems batch;
      for (auto i = 1 + random() % 64; i > 0; --i) batch.push_back(make());
      left -= static_cast<long>(batch.size());
      pool.AddWorkItems(batch, priority);
    } else {
      const auto item = make();
      pool.AddWorkItem(item, priority);
      if (random() % 16 == 0) item->Cancel();
      --left;
    }
  }
}

void Disturb(TRound& round, const std::atomic<bool>& stop, unsigned seed) {
  std::mt19937 random(seed);
  auto& pool = static_cast<TWorkerThreadPool&>(*round.pool->Get());
  while (!stop) {
    switch (random() % 8) {
    case 0:
      pool.SetPaused(true);
      std::this_thread::yield();
      pool.SetPaused(false);
      break;
    case 1:
      pool.SetMaxRunningThreads(1 + static_cast<int>(random() % 5));
      break;
    case 2:
      pool.SetMinWorkerThreads(1 + static_cast<int>(random() % 3));
      break;
    case 3:
      if (random() % 16 == 0) pool.TerminateWorkItems();
      break;
    case 4:
      if (random() % 64 == 0) pool.Dispose();
      break;
    case 5:
      pool.ContainsWorkItem(1);
      pool.GetActiveThreadCount();
      break;
    default:
      round.tokens[random() % round.tokens.size()].Reset();
      break;
    }
    std::this_thread::yield();
  }
}

TEST_F(Stress, NothingIsLostOrDoneTwice) {
  const auto items = static_cast<long>(Number(L"KIV_STRESS_ITEMS", 60'000));
  const auto seed = static_cast<unsigned>(Number(L"KIV_STRESS_SEED", std::random_device{}()));
  SCOPED_TRACE("KIV_STRESS_SEED=" + std::to_string(seed));
  MainThread::SetExceptionHandler([](std::exception_ptr) {});
  const ScopedDebugSink quiet([](const std::wstring&) {}); // of what items raise
  TThreadApi api;
  api.sleep = [](std::chrono::milliseconds) { std::this_thread::sleep_for(std::chrono::microseconds(50)); };
  const ScopedThreadApi scope(api);
  TCounts counts;
  for (unsigned number = 0; counts.made < items; ++number) {
    TRound round;
    round.pool = std::make_shared<ComPtr<IWorkerThreadPool>>(TWorkerPool::CreateInstance(nullptr));
    std::atomic<bool> stop{false};
    std::thread trouble([&] { Disturb(round, stop, seed + number); });
    {
      std::vector<std::jthread> producers;
      for (unsigned i = 0; i < 2; ++i) {
        producers.emplace_back([&, i] { Produce(round, counts, items / 20, seed + 7919 * (number * 2 + i)); });
      }
      for (int i = 0; i < 20; ++i) MainThread::CheckSynchronize(std::chrono::milliseconds(1));
    }
    stop = true;
    trouble.join();
    if (number % 2 == 0) { // else the pool goes with all that waits
      auto& pool = static_cast<TWorkerThreadPool&>(*round.pool->Get());
      PumpUntil([&] { return !pool.ThreadsActive() || !pool.GetWorkItemsActive(); });
    }
    round.pool.reset();
  }
  EXPECT_TRUE(TThread::AwaitAllEnded(std::chrono::seconds(60)));
  EXPECT_EQ(counts.gone, counts.made);
  EXPECT_EQ(counts.twice, 0);
  EXPECT_GT(counts.ran, 0);
}

// Two producers add one item each to an idle pool, over and over: each time both must be done, which a lost wake-up
// would keep from happening until its bound of half a second has passed. Here that bound is for ever.
TEST_F(Stress, NoWakeUpIsLost) {
  TThreadApi api;
  api.waitFor = [](TSignal& signal, std::chrono::milliseconds) {
    signal.Wait();
    return true;
  };
  const ScopedThreadApi scope(api);
  TWorkerThreadPool pool;
  pool.SetMaxRunningThreads(2);
  pool.SetMinWorkerThreads(2);
  std::atomic<int> done{0};
  const auto add = [&](int count) {
    IWorkItems items;
    for (int i = 0; i < count; ++i) items.push_back(Make<TProbe>([&] { ++done; }));
    if (count == 1) {
      pool.AddWorkItem(items.front());
    } else {
      pool.AddWorkItems(items, TPriority::Normal);
    }
  };
  constexpr int rounds = 2000;
  for (int round = 0; round < rounds; ++round) {
    done = 0;
    std::jthread other([&] { add(round % 4 == 0 ? 3 : 1); });
    add(1);
    other.join();
    const int all = round % 4 == 0 ? 4 : 2;
    while (done != all) std::this_thread::yield();
  }
}

} // namespace
} // namespace kiv::test
