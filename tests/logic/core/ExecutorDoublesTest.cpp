#include <doubles/Barrier.h>
#include <doubles/ManualClock.h>
#include <doubles/ManualExecutor.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kiv::test {
namespace {

using namespace std::chrono_literals;

TEST(ManualClock, MovesOnlyForwardAndOnlyByTheTest) {
  ManualClock clock;
  const auto start = clock.Now();
  EXPECT_GT(start, ManualClock::TTimePoint{});
  clock.Advance(5ms);
  clock.Advance(-3ms);
  EXPECT_EQ(clock.Now() - start, 5ms);
}

TEST(ManualExecutor, RunsInOrderAndOnlyWhatEachCallCovers) {
  ManualExecutor executor;
  std::string ran;
  executor.Queue([&] {
    ran += 'a';
    executor.Queue([&] { ran += 'c'; });
  });
  executor.Queue([&] { ran += 'b'; });
  EXPECT_EQ(ran, "");
  EXPECT_EQ(executor.RunAll(), 2U);
  EXPECT_EQ(ran, "ab"); // what was queued meanwhile waits
  EXPECT_TRUE(executor.RunOne());
  EXPECT_EQ(ran, "abc");
  EXPECT_FALSE(executor.RunOne());
}

TEST(ManualExecutor, BecomesIdleOrSaysThatItNeverDoes) {
  ManualExecutor executor;
  int left = 9;
  std::function<void()> again = [&] {
    if (left-- > 0) executor.Queue(again);
  };
  executor.Queue(again);
  EXPECT_EQ(executor.RunUntilIdle(10), 10U); // the limit itself is still in order
  left = 1000;
  executor.Queue(again);
  EXPECT_THROW(executor.RunUntilIdle(10), std::runtime_error);
  EXPECT_EQ(executor.PendingCount(), 1U);
}

TEST(ManualExecutor, AnExceptionPassesOutAndLeavesTheRest) {
  ManualExecutor executor;
  int ran = 0;
  executor.Queue([&] { ++ran; });
  executor.Queue([] { throw std::logic_error("scripted"); });
  executor.Queue([&] { ++ran; });
  EXPECT_THROW(executor.RunAll(), std::logic_error);
  EXPECT_EQ(ran, 1);
  EXPECT_EQ(executor.RunUntilIdle(), 1U);
  EXPECT_EQ(ran, 2);
}

TEST(ManualExecutor, DroppedClosuresMayComeBackToItAsTheyEnd) {
  ManualExecutor executor;
  int ended = 0;
  std::shared_ptr<int> held(new int(0), [&](int* number) {
    delete number;
    ++ended;
    executor.Queue([] {}); // as a work item does whose end is announced
  });
  executor.Queue([copy = std::move(held)] {});
  executor.Queue([] {});
  EXPECT_EQ(executor.DropAll(), 2U);
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(executor.PendingCount(), 1U);
}

TEST(ManualExecutor, TakesClosuresFromManyThreadsWhileItRuns) {
  constexpr int Threads = 4;
  constexpr int Each = 500;
  ManualExecutor executor;
  std::vector<std::vector<int>> ran(Threads);
  TBarrier start(Threads + 1);
  std::vector<std::jthread> threads;
  for (int t = 0; t < Threads; ++t) {
    threads.emplace_back([&, t] {
      start.ArriveAndWait();
      for (int i = 0; i < Each; ++i) {
        executor.Queue([&ran, t, i] { ran[static_cast<std::size_t>(t)].push_back(i); });
      }
    });
  }
  start.ArriveAndWait();
  for (std::size_t done = 0; done < Threads * Each;) done += executor.RunAll();
  for (const auto& order : ran) {
    ASSERT_EQ(order.size(), static_cast<std::size_t>(Each));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
  }
}

} // namespace
} // namespace kiv::test
