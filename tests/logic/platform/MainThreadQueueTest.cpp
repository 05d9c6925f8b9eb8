#include <platform/MainThreadQueue.h>

#include <platform/Exception.h>

#include <doubles/Barrier.h>

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kiv {
namespace {

using namespace std::chrono_literals;
using TProcedure = TMainThreadQueue::TProcedure;

// A queue whose clock stands still unless the test moves it, and whose wake-ups are counted.
struct TBench {
  std::chrono::steady_clock::time_point now{};
  std::atomic<int> wakes{0};
  std::atomic<int> yields{0};
  std::atomic<bool> reachable{true};
  std::vector<std::string> raised;
  TMainThreadQueue queue{{
      .wake =
          [this] {
            ++wakes;
            return reachable.load();
          },
      .yield =
          [this] {
            ++yields;
            return true;
          },
      .onException =
          [this](std::exception_ptr e) {
            try {
              std::rethrow_exception(e);
            } catch (const std::exception& x) {
              raised.emplace_back(x.what());
              if (raised.back() == "handler fails") throw;
            }
          },
      .now = [this] { return now; },
  }};

  TBench() { queue.Attach(); }
};

TEST(MainThreadQueue, WakesOnlyWhenIdleAndKeepsTheOrder) {
  TBench bench;
  std::string trace;
  for (const char c : std::string("abc")) bench.queue.Queue([&trace, c] { trace += c; });
  EXPECT_EQ(bench.wakes, 1);
  EXPECT_EQ(trace, "") << "queued on the main thread too, never run at once";
  bench.queue.RunPosted();
  EXPECT_EQ(trace, "abc");
  // What a closure queues while the road runs needs no wake-up.
  bench.queue.Queue([&] { bench.queue.Queue([&] { trace += 'e'; }); });
  EXPECT_EQ(bench.wakes, 2);
  bench.queue.RunPosted();
  EXPECT_EQ(trace, "abce");
  EXPECT_EQ(bench.wakes, 2);
  // A drain by hand leaves the wake-up under way: no second one is sent, and it finds nothing.
  bench.queue.Queue([] {});
  EXPECT_TRUE(bench.queue.CheckSynchronize());
  bench.queue.Queue([&] { trace += 'f'; });
  EXPECT_EQ(bench.wakes, 3);
  bench.queue.RunPosted();
  bench.queue.RunPosted();
  EXPECT_EQ(trace, "abcef");
}

TEST(MainThreadQueue, AWakeUpThatReachesNobodyIsTriedAgain) {
  TBench bench;
  bench.reachable = false;
  bench.queue.Queue([] {});
  bench.reachable = true;
  bench.queue.Queue([] {});
  EXPECT_EQ(bench.wakes, 2);
  bench.queue.Queue([] {});
  EXPECT_EQ(bench.wakes, 2);
  // What was queued before anybody could be woken is announced when the main thread attaches.
  bench.queue.Attach();
  EXPECT_EQ(bench.wakes, 3);
  // One that was under way to a main thread of old, with nothing queued any more, holds up nobody.
  EXPECT_TRUE(bench.queue.CheckSynchronize());
  bench.queue.Attach();
  bench.queue.Queue([] {});
  EXPECT_EQ(bench.wakes, 4);
}

TEST(MainThreadQueue, YieldsBehindItsSliceAndGoesOnWhereItWas) {
  TBench bench;
  std::string trace;
  for (const char c : std::string("abcd")) {
    bench.queue.Queue([&, c] {
      trace += c;
      bench.now += 4ms;
    });
  }
  bench.queue.RunPosted();
  EXPECT_EQ(trace, "abc");
  EXPECT_EQ(bench.yields, 1);
  bench.queue.Queue([&] { trace += 'e'; });
  EXPECT_EQ(bench.wakes, 1) << "the turn asked for serves these too";
  bench.queue.RunPosted();
  EXPECT_EQ(trace, "abcde");
  // A slice that ends with the last closure asks for nothing.
  bench.queue.Queue([&] { bench.now += 20ms; });
  bench.queue.RunPosted();
  EXPECT_EQ(bench.yields, 1);
  bench.queue.Queue([] {});
  EXPECT_EQ(bench.wakes, 3);
}

TEST(MainThreadQueue, ExceptionsOnThePostedRoadAreReportedAndTheRestRuns) {
  TBench bench;
  std::string trace;
  bench.queue.Queue([] { throw std::runtime_error("first"); });
  bench.queue.Queue([] { throw std::runtime_error("handler fails"); });
  bench.queue.Queue([&] { trace += 'c'; });
  bench.queue.RunPosted();
  EXPECT_EQ(bench.raised, (std::vector<std::string>{"first", "handler fails"}));
  EXPECT_EQ(trace, "c");
  // By hand they pass out, and the rest stays.
  bench.queue.Queue([] { throw std::runtime_error("passes"); });
  bench.queue.Queue([&] { trace += 'd'; });
  EXPECT_THROW(bench.queue.CheckSynchronize(), std::runtime_error);
  EXPECT_EQ(trace, "c");
  bench.queue.RunPosted();
  EXPECT_EQ(trace, "cd");
}

TEST(MainThreadQueue, NestsByHandAndInModalLoopsOnly) {
  TBench bench;
  std::string trace;
  const auto put = [&](char c) { bench.queue.Queue([&trace, c] { trace += c; }); };
  bench.queue.Queue([&] {
    put('a');
    bench.queue.RunPosted();
    trace += '|';
    bench.queue.CheckSynchronize();
    trace += '|';
    put('b');
    const int before = bench.wakes;
    {
      const TMainThreadQueue::ScopedModalLoop loop(bench.queue);
      EXPECT_EQ(bench.wakes, before + 1) << "what waits is announced to the modal loop";
      put('c');
      bench.queue.RunPosted();
    }
    trace += '|';
    put('d');
    EXPECT_EQ(bench.wakes, before + 1);
    bench.queue.RunPosted();
    trace += '|';
  });
  bench.queue.RunPosted();
  EXPECT_EQ(trace, "|a|bc||d");
}

TEST(MainThreadQueue, RemovesWhatAnOwnerQueuedAndNothingElse) {
  TBench bench;
  std::string trace;
  int owners[2] = {};
  auto witness = std::make_shared<int>(0);
  bench.queue.Queue([&] { trace += 'a'; }, &owners[0]);
  bench.queue.Queue([&] { trace += 'b'; }, &owners[1]);
  bench.queue.Queue([&, witness] { trace += 'c'; }, &owners[0]);
  bench.queue.Queue([&] { trace += 'd'; });
  bench.queue.RemoveQueuedEvents(&owners[0]);
  EXPECT_EQ(witness.use_count(), 1) << "what a withdrawn closure held is let go";
  bench.queue.RemoveQueuedEvents(nullptr);
  bench.queue.RunPosted();
  EXPECT_EQ(trace, "bd");
}

TEST(MainThreadQueue, SynchronizeRunsThereAndRaisesHere) {
  TBench bench;
  bool at_once = false;
  bench.queue.Synchronize([&] { at_once = true; });
  EXPECT_TRUE(at_once) << "on the main thread";

  const auto main_thread = std::this_thread::get_id();
  std::thread::id ran_on;
  std::string caught;
  std::atomic<bool> done{false};
  std::thread worker([&] {
    bench.queue.Synchronize([&] { ran_on = std::this_thread::get_id(); });
    try {
      bench.queue.Synchronize([] { throw std::runtime_error("from the main thread"); });
    } catch (const std::exception& e) {
      caught = e.what();
    }
    EXPECT_FALSE(bench.queue.CheckSynchronize(1h)) << "not the main thread: returns at once";
    bench.queue.Queue([&] { done = true; });
  });
  while (!done) bench.queue.CheckSynchronize(1h);
  worker.join();
  EXPECT_EQ(ran_on, main_thread);
  EXPECT_EQ(caught, "from the main thread");
  EXPECT_TRUE(bench.raised.empty());
}

TEST(MainThreadQueue, ClosingFailsThoseWhoWaitAndDropsTheRest) {
  TBench bench;
  std::wstring message;
  std::thread worker([&] {
    try {
      bench.queue.Synchronize([] {});
    } catch (const EException& e) {
      message = e.Message();
    }
  });
  while (bench.queue.IsEmpty()) std::this_thread::yield();
  auto held = std::make_shared<int>(0);
  bench.queue.Queue([held] {});
  bench.queue.Close();
  worker.join();
  EXPECT_EQ(message, L"The main thread ended before it took this call.");
  EXPECT_EQ(held.use_count(), 1);
  bench.queue.Queue([] { ADD_FAILURE() << "a closed queue takes nothing"; });
  EXPECT_FALSE(bench.queue.CheckSynchronize());
  bench.queue.Attach();
  bool ran = false;
  bench.queue.Queue([&] { ran = true; });
  bench.queue.RunPosted();
  EXPECT_TRUE(ran);
}

// Producers, withdrawals and synchronous calls at once; every closure that isn't withdrawn runs, in its producer's
// order.
TEST(MainThreadQueue, LosesNothingUnderLoad) {
  constexpr int producers = 4;
  constexpr int each = 5000;
  TBench bench;
  std::vector<int> last(producers, -1);
  std::vector<int> count(producers, 0);
  std::atomic<int> running{producers};
  test::TBarrier start(producers + 1);
  std::vector<std::thread> threads;
  for (int p = 0; p < producers; ++p) {
    threads.emplace_back([&, p] {
      std::mt19937 random(static_cast<unsigned>(p));
      start.ArriveAndWait();
      int owner = 0;
      for (int i = 0; i < each; ++i) {
        const TProcedure note = [&, p, i] {
          EXPECT_GT(i, last[static_cast<std::size_t>(p)]);
          last[static_cast<std::size_t>(p)] = i;
          ++count[static_cast<std::size_t>(p)];
        };
        if (random() % 64 == 0) {
          bench.queue.Synchronize(note);
        } else {
          bench.queue.Queue(note);
        }
        if (random() % 32 == 0) {
          bench.queue.Queue([] {}, &owner);
          bench.queue.RemoveQueuedEvents(&owner);
        }
      }
      --running;
      bench.queue.Queue([] {});
    });
  }
  start.ArriveAndWait();
  while (running > 0 || !bench.queue.IsEmpty()) bench.queue.CheckSynchronize(1h);
  for (auto& thread : threads) thread.join();
  bench.queue.CheckSynchronize();
  EXPECT_EQ(count, std::vector<int>(producers, each));
}

} // namespace
} // namespace kiv
