#include "PoolFixture.h"

#include <framework/Application.h>
#include <framework/Exceptions.h>

#include <set>
#include <stdexcept>
#include <string>

namespace kiv::test {
namespace {

using PoolEvents = PoolTest;

TEST_F(PoolEvents, ItemsRunAndTheLastOneIsAnnounced) {
  std::atomic<int> all_done{0};
  TGate told;
  const auto pool = TWorkerPool::CreateInstance([&](bool terminated) {
    EXPECT_FALSE(terminated);
    ++all_done;
    told.Pass();
  });
  IWorkItems items;
  for (int i = 0; i < 100; ++i) items.push_back(Make<TProbe>());
  pool->AddWorkItems(items, TPriority::Normal);
  told.AwaitArrivals();
  told.Open();
  IWorkItemsHelper::WaitForAll(items);
  for (const auto& item : items) EXPECT_EQ(static_cast<TProbe&>(*item).works, 1);
  EXPECT_EQ(all_done, 1);
}

TEST_F(PoolEvents, AnItemThatRaisesIsCancelledAndReportedAndTheWorkerLivesOn) {
  std::string reported;
  Application().SetOnException([&](std::exception_ptr e) {
    try {
      std::rethrow_exception(e);
    } catch (const std::exception& x) {
      reported = x.what();
    }
  });
  TWorkerThreadPool pool;
  const auto bad = Make<TProbe>([] { throw std::runtime_error("bad item"); });
  const auto good = Make<TProbe>();
  pool.AddWorkItems({bad, good}, TPriority::Normal);
  good->Wait();
  EXPECT_EQ(bad->GetStatus(), TTaskStatus::Canceled);
  EXPECT_EQ(bad->terminates, 1);
  EXPECT_EQ(bad->dones, 0);
  PumpUntil([&] { return !reported.empty(); });
  EXPECT_EQ(reported, "bad item");
  // What the delivery raises on a worker is reported too.
  reported.clear();
  const auto loud = Make<TProbe>();
  loud->onDone = [] { throw std::runtime_error("bad delivery"); };
  pool.AddWorkItem(loud);
  PumpUntil([&] { return !reported.empty(); });
  EXPECT_EQ(reported, "bad delivery");
}

TEST_F(PoolEvents, ACancelledItemIsNeitherRunNorDelivered) {
  CancellationToken token;
  TWorkerThreadPool pool;
  TGate gate;
  Occupy(pool, gate);
  const auto withdrawn = Make<TProbe>(nullptr, token);
  const auto cancelled = Make<TProbe>();
  const auto last = Make<TProbe>();
  pool.AddWorkItems({withdrawn, cancelled, last}, TPriority::Normal);
  token.Reset();
  cancelled->Cancel();
  gate.Open();
  last->Wait();
  for (const auto& item : {withdrawn, cancelled}) {
    EXPECT_EQ(item->works, 0);
    EXPECT_EQ(item->dones, 0);
    EXPECT_EQ(item->terminates, 1);
  }
  // One that is cancelled while it runs isn't delivered.
  ComPtr<TProbe> itself;
  itself = Make<TProbe>([&] { itself->Cancel(); });
  pool.AddWorkItem(itself);
  PumpUntil([&] { return !pool.GetWorkItemsActive(); });
  EXPECT_EQ(itself->GetStatus(), TTaskStatus::Canceled);
  EXPECT_EQ(itself->works, 1);
  EXPECT_EQ(itself->dones, 0);
}

TEST_F(PoolEvents, ItemsQueueFurtherItems) {
  TWorkerThreadPool pool;
  pool.SetMinWorkerThreads(2);
  std::atomic<int> ran{0};
  std::function<void(int)> add = [&](int depth) {
    pool.AddWorkItem(Make<TProbe>([&, depth] {
      ++ran;
      if (depth > 0) {
        add(depth - 1);
        add(depth - 1);
      }
    }));
  };
  add(9);
  PumpUntil([&] { return ran == 1023; });
}

TEST_F(PoolEvents, NothingStartsWhileTheLastItemsEventRuns) {
  TWorkerThreadPool pool;
  pool.SetMinWorkerThreads(3);
  TGate gate;
  std::atomic<int> events{0};
  pool.SetOnAllWorkItemsDone([&](bool) {
    if (++events == 1) gate.Pass();
  });
  pool.AddWorkItem(Make<TProbe>());
  gate.AwaitArrivals();
  const auto held = Make<TProbe>();
  pool.AddWorkItem(held);
  EXPECT_EQ(pool.QueueLength(), 1U);
  EXPECT_EQ(held->GetStatus(), TTaskStatus::WaitingToRun);
  gate.Open();
  held->Wait();
  PumpUntil([&] { return events == 2; });
}

TEST_F(PoolEvents, EachThreadIsAnnouncedOnItselfBeforeItsFirstItem) {
  std::set<std::thread::id> threads;
  TWorkerThreadPool pool;
  pool.SetMaxRunningThreads(1);
  pool.SetOnNewThread([&](TWorkerThreadPool&, TWorkerThread& thread) {
    EXPECT_TRUE(thread.IsCurrent());
    threads.insert(std::this_thread::get_id());
  });
  for (int i = 0; i < 3; ++i) {
    const auto item = Make<TProbe>([&] { EXPECT_TRUE(threads.contains(std::this_thread::get_id())); });
    pool.AddWorkItem(item);
    item->Wait();
  }
  EXPECT_EQ(threads.size(), 1U);
}

TEST_F(PoolEvents, TerminateWorkItemsDropsWhatWaitsAndCancelsWhatRuns) {
  TWorkerThreadPool pool;
  EXPECT_EQ(pool.TerminateWorkItems(), 0U);
  TGate gate;
  const auto running = Occupy(pool, gate);
  const auto waiting = Make<TProbe>();
  pool.AddWorkItems({waiting, Make<TProbe>()}, TPriority::Normal);
  EXPECT_TRUE(pool.GetWorkItemsActive());
  EXPECT_EQ(pool.GetActiveThreadCount(), 1);
  EXPECT_EQ(pool.TerminateWorkItems(), 3U);
  EXPECT_EQ(running->GetStatus(), TTaskStatus::Canceled);
  EXPECT_EQ(waiting->GetStatus(), TTaskStatus::WaitingToRun) << "dropped items aren't told";
  gate.Open();
  PumpUntil([&] { return !pool.GetWorkItemsActive(); });
  EXPECT_EQ(running->dones, 0);
  EXPECT_EQ(waiting->works, 0);
}

TEST_F(PoolEvents, ACleanUpThatRaisesDoesntCloseThePoolToNewItems) {
  class TRaiser : public TProbe {
  public:
    using TProbe::TProbe;

  protected:
    void Terminate() override {
      TProbe::Terminate();
      throw std::runtime_error("bad clean-up");
    }
  };
  TWorkerThreadPool pool;
  TGate gate;
  pool.AddWorkItem(Make<TRaiser>([&] { gate.Pass(); }));
  gate.AwaitArrivals();
  EXPECT_THROW(pool.TerminateWorkItems(), std::runtime_error);
  gate.Open();
  const auto next = Make<TProbe>();
  pool.AddWorkItem(next);
  next->Wait();
}

TEST_F(PoolEvents, AnItemRunsAsOftenAsItIsAdded) {
  TWorkerThreadPool pool;
  pool.SetMaxRunningThreads(1);
  ComPtr<TProbe> item;
  item = Make<TProbe>([&] {
    if (item->works == 1) pool.AddWorkItem(item);
  });
  pool.AddWorkItem(item);
  PumpUntil([&] { return !pool.GetWorkItemsActive(); });
  EXPECT_EQ(item->works, 2) << "added anew by its own work";
  pool.SetMaxRunningThreads(0);
  PumpUntil([&] { return !pool.ThreadsActive(); });
  pool.AddWorkItems({item, item}, TPriority::Normal);
  pool.SetMaxRunningThreads(1);
  pool.SetMinWorkerThreads(1);
  PumpUntil([&] { return pool.QueueLength() == 0 && !pool.GetWorkItemsActive(); });
  EXPECT_EQ(item->works, 4);
  EXPECT_EQ(item->dones, 4);
}

TEST_F(PoolEvents, ADroppedItemOfAPausedPoolIsTheLastOneToo) {
  TWorkerThreadPool pool;
  pool.SetMaxRunningThreads(0); // nothing ever runs
  std::atomic<int> events{0};
  pool.SetOnAllWorkItemsDone([&](bool) { ++events; });
  pool.AddWorkItems({Make<TProbe>(), Make<TProbe>()}, TPriority::Normal);
  EXPECT_THROW(pool.GetWorkItemsActive(), EInvalidOperation);
  EXPECT_EQ(pool.TerminateWorkItems(), 2U);
  EXPECT_EQ(events, 1);
  EXPECT_FALSE(pool.GetWorkItemsActive());
}

TEST_F(PoolEvents, AnItemThatEndsInAPauseIsCountedAndNoOtherIsTaken) {
  TWorkerThreadPool pool;
  std::atomic<int> events{0};
  pool.SetOnAllWorkItemsDone([&](bool) { ++events; });
  TGate gate;
  const auto item = Occupy(pool, gate);
  const auto next = Make<TProbe>();
  pool.AddWorkItem(next);
  pool.SetPaused(true);
  gate.Open();
  item->Wait();
  static_cast<void>(pool.TerminateWorkItems());
  PumpUntil([&] { return events == 1; });
  EXPECT_FALSE(pool.GetWorkItemsActive());
  EXPECT_EQ(next->works, 0);
}

TEST_F(PoolEvents, APausedPoolHoldsItsItemsAtTheirCheckpoints) {
  TWorkerThreadPool pool;
  pool.SetMaxRunningThreads(1);
  TGate gate;
  std::atomic<bool> passed{false};
  ComPtr<TProbe> item = Make<TProbe>([&] {
    gate.Pass();
    passed = !item->Terminated();
  });
  pool.AddWorkItem(item);
  gate.AwaitArrivals();
  pool.SetPaused(true);
  EXPECT_EQ(item->GetStatus(), TTaskStatus::Paused);
  gate.Open();
  const auto next = Make<TProbe>();
  pool.AddWorkItem(next);
  EXPECT_FALSE(passed);
  pool.SetPaused(false);
  next->Wait();
  EXPECT_TRUE(passed);
  EXPECT_EQ(item->GetStatus(), TTaskStatus::Completed);
}

TEST_F(PoolEvents, FindsItemsThatWaitOrRun) {
  TWorkerThreadPool pool;
  EXPECT_FALSE(pool.ContainsWorkItem(0));
  TGate gate;
  Occupy(pool, gate, 1, 4);
  EXPECT_TRUE(pool.ContainsWorkItem(4));
  EXPECT_TRUE(pool.ContainsWorkItem(IidOf<IWorkItem>()));
  EXPECT_FALSE(pool.ContainsWorkItem(IidOf<INonInterruptable>()));
  pool.AddWorkItem(Make<TProbe>(nullptr, nullptr, 5));
  EXPECT_TRUE(pool.ContainsWorkItem(5));
  EXPECT_FALSE(pool.ContainsWorkItem(6));
  gate.Open();
}

} // namespace
} // namespace kiv::test
