#include "PoolFixture.h"

#include <doubles/ManualTime.h>

#include <thread>
#include <vector>

namespace kiv::test {
namespace {

using WorkItem = PoolTest;
using enum TTaskStatus;

TEST_F(WorkItem, AStatusOfThePoolsNeverReplacesAFinalOne) {
  for (const TTaskStatus before : {Created, WaitingToRun, Running, Paused, Completed, Canceled}) {
    for (const TTaskStatus after : {Running, Paused, Completed}) {
      const auto item = Make<TProbe>();
      item->SetStatus(before);
      EXPECT_EQ(item->TryChangeStatus(after), !IsFinal(before));
      EXPECT_EQ(item->GetStatus(), IsFinal(before) ? before : after);
    }
  }
}

TEST_F(WorkItem, CleansUpOnceHoweverItIsCancelled) {
  using TStep = std::function<void(TProbe&, CancellationToken&)>;
  const TStep cancel = [](TProbe& item, CancellationToken&) { item.Cancel(); };
  const TStep status = [](TProbe& item, CancellationToken&) { item.SetStatus(Canceled); };
  const TStep token = [](TProbe& item, CancellationToken& record) {
    record.Cancel();
    item.GetStatus();
  };
  for (const auto& steps : {std::vector<TStep>{cancel},
                            {status},
                            {token},
                            {status, status},
                            {cancel, cancel},
                            {token, cancel, status},
                            {cancel, token}}) {
    CancellationToken record;
    const auto item = Make<TProbe>(nullptr, record);
    for (const auto& step : steps) step(*item.Get(), record);
    EXPECT_EQ(item->GetStatus(), Canceled);
    EXPECT_EQ(item->terminates, 1);
    EXPECT_TRUE(item->IsCancellationRequested());
  }
}

TEST_F(WorkItem, CleansUpOnceWhenManyCancelAndTheWorkerChangesTheStatus) {
  for (int round = 0; round < 500; ++round) {
    CancellationToken record;
    const auto item = Make<TProbe>(nullptr, record);
    item->SetStatus(WaitingToRun);
    test::TBarrier start(3);
    std::jthread a([&] {
      start.ArriveAndWait();
      item->Cancel();
    });
    std::jthread b([&] {
      start.ArriveAndWait();
      record.Cancel();
      item->GetStatus();
    });
    start.ArriveAndWait();
    item->TryChangeStatus(Running);
    item->TryChangeStatus(Completed);
    a.join();
    b.join();
    ASSERT_EQ(item->GetStatus(), Canceled);
    ASSERT_EQ(item->terminates, 1);
  }
}

TEST_F(WorkItem, IsCancelledWhenCancelReturnsThoughAnotherThreadStillCleansUp) {
  class TSlow : public TBasicWorkItem {
  public:
    void DoWork() override {}
    TGate gate;

  protected:
    void Terminate() override {
      gate.Pass();
      TBasicWorkItem::Terminate();
    }
  };
  const auto item = Make<TSlow>();
  std::jthread other([&] { item->Cancel(); });
  item->gate.AwaitArrivals();
  item->Cancel();
  EXPECT_EQ(item->GetStatus(), Canceled);
  item->gate.Open();
}

TEST_F(WorkItem, IsFinalThoughItsCleanUpRaises) {
  class TRaising : public TBasicWorkItem {
  public:
    void DoWork() override {}

  protected:
    void Terminate() override { throw std::runtime_error("clean-up"); }
  };
  const auto cancelled = Make<TRaising>();
  EXPECT_THROW(cancelled->Cancel(), std::runtime_error);
  cancelled->Wait();
  const auto set = Make<TRaising>();
  EXPECT_THROW(set->SetStatus(Canceled), std::runtime_error);
  set->Wait();
}

TEST_F(WorkItem, LookingAtTheStatusIsWhatNoticesTheToken) {
  CancellationToken record;
  const auto item = Make<TProbe>(nullptr, record);
  item->SetStatus(Completed);
  record.Cancel();
  EXPECT_TRUE(item->IsCancellationRequested());
  EXPECT_EQ(item->terminates, 0);
  EXPECT_EQ(item->GetStatus(), Canceled) << "even when the work was done";
  EXPECT_EQ(item->terminates, 1);
}

TEST_F(WorkItem, TheCheckpointWaitsOutAPause) {
  const auto item = Make<TProbe>();
  int sleeps = 0;
  TThreadApi api;
  api.sleep = [&](std::chrono::milliseconds time) {
    EXPECT_EQ(time.count(), 100);
    if (++sleeps == 3) item->SetStatus(Running);
    if (sleeps == 5) item->Cancel();
  };
  const ScopedThreadApi scope(api);
  item->SetStatus(Paused);
  EXPECT_FALSE(item->Terminated());
  EXPECT_EQ(sleeps, 3);
  item->SetStatus(Paused);
  EXPECT_TRUE(item->Terminated()) << "a cancellation ends the pause";
  EXPECT_EQ(sleeps, 5);
}

TEST_F(WorkItem, TheResultIsDeliveredOnceOnTheMainThreadUnlessItIsWithdrawnBefore) {
  const auto item = Make<TProbe>(nullptr, nullptr, 0, true);
  std::thread::id done_on;
  int events = 0;
  item->onDone = [&] { done_on = std::this_thread::get_id(); };
  item->SetOnWorkDone([&](const ComPtr<IWorkItem>& told) {
    ++events;
    EXPECT_EQ(told.Get(), item.Get());
    EXPECT_EQ(item->dones, 1) << "the event comes last";
  });
  item->SetStatus(Completed);
  std::thread([&] { item->Finished(); }).join();
  EXPECT_EQ(item->dones, 0) << "the worker doesn't wait";
  MainThread::CheckSynchronize();
  EXPECT_EQ(item->dones, 1);
  EXPECT_EQ(events, 1);
  EXPECT_EQ(done_on, std::this_thread::get_id());

  const auto withdrawn = Make<TProbe>(nullptr, nullptr, 0, true);
  withdrawn->SetStatus(Completed);
  std::thread([&] { withdrawn->Finished(); }).join();
  withdrawn->Cancel();
  MainThread::CheckSynchronize();
  EXPECT_EQ(withdrawn->dones, 0);
  // On the worker, for a class that wants it so.
  const auto direct = Make<TProbe>();
  std::thread([&] { direct->Finished(); }).join();
  EXPECT_EQ(direct->dones, 1);
}

TEST_F(WorkItem, OffersItsInterfacesAndTellsItsClass) {
  const ComPtr<IWorkItem> item = TAsyncProcedure::Create([] {});
  EXPECT_TRUE(item.MaybeAs<ITerminatable>());
  EXPECT_TRUE(item.MaybeAs<ICancellationIndicator>());
  EXPECT_FALSE(item.MaybeAs<INonInterruptable>());
  EXPECT_EQ(item->ClassType(), typeid(TAsyncProcedure));
}

TEST_F(WorkItem, WaitForAllReturnsWhenTheLastIsFinal) {
  const auto first = Make<TProbe>();
  const auto second = Make<TProbe>();
  std::jthread worker([&] {
    second->SetStatus(Canceled);
    first->SetStatus(Completed);
  });
  IWorkItemsHelper::WaitForAll({first, second});
  EXPECT_EQ(first->GetStatus(), Completed);
  EXPECT_EQ(second->GetStatus(), Canceled);
}

} // namespace
} // namespace kiv::test
