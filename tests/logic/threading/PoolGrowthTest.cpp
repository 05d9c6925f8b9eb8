#include "PoolFixture.h"

#include <doubles/ManualTime.h>
#include <framework/Exceptions.h>
#include <threading/CpuUsage.h>

#include <memory>
#include <optional>
#include <vector>

namespace kiv::test {
namespace {

// A pool on a clock, and processors, that only the test moves. All its threads hang in items until the test lets go.
class PoolGrowth : public PoolTest {
protected:
  void SetUp() override {
    PoolTest::SetUp();
    fTime.SetSleepsMoveTime(false);
    TThreadApi api = fTime.Api();
    api.readSystemTimes = [this](TSystemTimes& times) {
      // 1000 units between any two readings, of which the idle ones are what the test wants.
      fIdle += 10 * static_cast<std::uint64_t>(100 - fUsage);
      fTotal += 1000;
      times = {fIdle, fTotal, 0};
      return true;
    };
    api.beginThread = [this, begin = ThreadApi().beginThread](std::function<void()> body) {
      return fThreadsLeft-- > 0 ? begin(std::move(body)) : nullptr;
    };
    fScope.emplace(std::move(api));
    TCpuMeter::Instance().Forget();
    fPool = std::make_unique<TWorkerThreadPool>();
  }
  void TearDown() override {
    fGate.Open();
    fPool.reset();
    PoolTest::TearDown();
    TCpuMeter::Instance().Forget();
    fScope.reset();
  }

  // Adds an item that hangs, and gives the pool the time to look around once.
  void AddHanging() {
    fPool->AddWorkItem(Make<TProbe>([this] { fGate.Pass(); }));
  }
  void AddHanging(int count) {
    for (int i = 0; i < count; ++i) AddHanging();
  }
  // Moves the clock over the throttle and the life of a reading, and sets the usage that is read then.
  void NextReading(int usage) {
    fUsage = usage;
    fTime.Advance(400);
  }

  ManualTime fTime;
  std::atomic<int> fUsage{0};
  std::uint64_t fIdle = 0;
  std::uint64_t fTotal = 0;
  std::atomic<int> fThreadsLeft{1000};
  TGate fGate;
  std::optional<ScopedThreadApi> fScope;
  std::unique_ptr<TWorkerThreadPool> fPool;
};

TEST_F(PoolGrowth, ComesUpAtOnceToTheMinimumAndThenOneAThrottle) {
  fPool->SetMaxRunningThreads(6);
  fPool->SetMinWorkerThreads(3);
  IWorkItems items;
  for (int i = 0; i < 100; ++i) items.push_back(Make<TProbe>([this] { fGate.Pass(); }));
  fPool->AddWorkItems(items, TPriority::Normal);
  // The first thread brings up the next while work remains. The fourth needs an occasion: the third's look is throttled
  // no more than its own start, since three isn't above the minimum.
  fGate.AwaitArrivals(4);
  EXPECT_EQ(fPool->Count(), 4);
  AddHanging(50);
  EXPECT_EQ(fPool->Count(), 4) << "no time has passed";
  fTime.Advance(399);
  AddHanging();
  EXPECT_EQ(fPool->Count(), 4);
  fTime.Advance(1);
  AddHanging();
  fGate.AwaitArrivals(5);
  EXPECT_EQ(fPool->Count(), 5);
  for (int i = 0; i < 5; ++i) {
    fTime.Advance(400);
    AddHanging();
  }
  fGate.AwaitArrivals(6);
  EXPECT_EQ(fPool->Count(), 6) << "the limit";
}

TEST_F(PoolGrowth, AsksTheProcessorsAboveTheMinimumOnly) {
  fPool->SetMaxRunningThreads(10);
  fPool->SetMinWorkerThreads(2);
  NextReading(100);
  AddHanging(20);
  fGate.AwaitArrivals(2);
  EXPECT_EQ(fPool->Count(), 2) << "up to the minimum nobody asks";
  const struct {
    int limit, usage, threads;
  } steps[] = {{80, 80, 2}, {80, 79, 3}, {100, 100, 3}, {100, 99, 4}, {0, 0, 4}};
  for (const auto& step : steps) {
    fPool->SetMaxCpuUsage(step.limit);
    NextReading(step.usage);
    AddHanging();
    fGate.AwaitArrivals(static_cast<std::size_t>(step.threads));
    EXPECT_EQ(fPool->Count(), step.threads) << step.limit << " " << step.usage;
  }
}

TEST_F(PoolGrowth, AMinuteWithoutWorkEndsEveryThreadAndTheNextItemBringsOneUp) {
  fPool->SetMaxRunningThreads(2);
  fPool->SetMinWorkerThreads(2);
  AddHanging(2);
  fGate.AwaitArrivals(2);
  fGate.Open();
  fTime.AwaitWaits(2);
  for (int i = 0; i < 120; ++i) {
    fTime.Advance(500);
    fTime.AwaitWaits(2);
  }
  EXPECT_EQ(fPool->Count(), 2) << "after exactly a minute they still wait";
  fTime.Advance(500);
  PumpUntil([this] { return !fPool->ThreadsActive(); });
  const auto item = Make<TProbe>();
  fPool->AddWorkItem(item);
  item->Wait();
  EXPECT_EQ(fPool->Count(), 1);
}

TEST_F(PoolGrowth, AnItemThatComesWhileTheLastThreadLeavesBringsANewOneUp) {
  fPool->SetMaxRunningThreads(1); // the leaving thread still counts when the item comes
  fPool->SetMaxIdleTime(0);
  TGate leaving;
  ComPtr<TProbe> late;
  fPool->SetOnThreadTerminated([&](TKivThread&) {
    if (late) return;
    late = Make<TProbe>();
    fPool->AddWorkItem(late);
  });
  fPool->AddWorkItem(Make<TProbe>());
  fTime.AwaitWaits(1);
  fTime.Advance(500);
  PumpUntil([&] { return late && late->GetStatus() == TTaskStatus::Completed; });
  // The thread that did it goes the same way.
  fTime.AwaitWaits(1);
  fTime.Advance(500);
  PumpUntil([this] { return !fPool->ThreadsActive(); });
}

TEST_F(PoolGrowth, ThreadsThatCantBeMadeMatterOnlyIfThereAreNone) {
  fThreadsLeft = 0;
  EXPECT_THROW(AddHanging(), EThread);
  EXPECT_EQ(fPool->QueueLength(), 1U) << "the item stays";
  EXPECT_EQ(fPool->Count(), 0);
  fThreadsLeft = 1;
  fPool->SetMinWorkerThreads(3);
  AddHanging(5);
  fGate.AwaitArrivals(1);
  EXPECT_EQ(fPool->Count(), 1);
}

TEST_F(PoolGrowth, TheGlobalPoolIsSizedForItsHost) {
  const int count = std::max(4, TCustomThreadPool::GetCPUCount());
  for (const bool library : {false, true}) {
    SetHostIsLibrary(library);
    const TWorkerThreadPool& pool = TWorkerPool::GlobalInstance();
    EXPECT_TRUE(pool.IsGlobal());
    EXPECT_EQ(pool.GetMinWorkerThreads(), library ? count : 2 * count);
    EXPECT_EQ(pool.GetMaxRunningThreads(), 4 * count);
    EXPECT_TRUE(pool.GetInitializeCOM());
    EXPECT_EQ(pool.GetMaxCpuUsage(), 80);
    EXPECT_EQ(pool.GetMaxTimeUntilHardTerminate(), 3000U);
    const std::uint64_t slept = fTime.Slept();
    Shutdown();
    EXPECT_EQ(fTime.Slept() - slept, library ? 200U : 0U) << "a library's threads get time before they are asked";
    MainThread::Attach();
  }
  SetHostIsLibrary(false);
}

TEST_F(PoolGrowth, PrivatePoolsTakeTheirConfiguration) {
  TWorkerPoolConfig config = TWorkerPoolConfig::Create();
  EXPECT_EQ(config.MaxCpuUsage, 80);
  EXPECT_EQ(config.MinRunningThreads, 1);
  EXPECT_EQ(config.MaxRunningThreads, TCustomThreadPool::DefaultMaxRunningThreads());
  config = {50, 6, 3, TThreadPriority::tpLower, {}};
  const ComPtr<IWorkerThreadPool> made = TWorkerPool::CreateInstance(config);
  const auto& pool = static_cast<const TWorkerThreadPool&>(*made);
  EXPECT_EQ(pool.GetMaxCpuUsage(), 50);
  EXPECT_EQ(pool.GetMaxRunningThreads(), 6);
  EXPECT_EQ(pool.GetMinWorkerThreads(), 3);
  EXPECT_EQ(pool.GetPriority(), TThreadPriority::tpLower);
  EXPECT_TRUE(made.MaybeAs<IPausable>());
}

} // namespace
} // namespace kiv::test
