#include "PoolFixture.h"

#include <doubles/ManualTime.h>
#include <framework/Exceptions.h>
#include <platform/DebugOutput.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kiv::test {
namespace {

using PoolEnd = PoolTest;

// What a worker is stuck in. Shared with it: it may come out after everything else is gone.
struct TTrap {
  TGate gate;
  std::atomic<bool> spin{true};

  void Enter() {
    gate.Open();
    gate.Pass();
    while (spin) {
    }
  }
};

// Lines written to the debugger's output.
class TLines {
public:
  std::vector<std::wstring> Get() const {
    const std::lock_guard guard(fLock);
    return fLines;
  }

private:
  mutable std::mutex fLock;
  std::vector<std::wstring> fLines;
  ScopedDebugSink fSink{[this](const std::wstring& line) {
    const std::lock_guard guard(fLock);
    fLines.push_back(line);
  }};
};

TEST_F(PoolEnd, AWorkerThatIsStuckIsEndedByForceAfterItsTime) {
  const long before = LiveObjects();
  const auto trap = std::make_shared<TTrap>();
  const TLines lines;
  std::optional<bool> all_done;
  ComPtr<TProbe> item = Make<TProbe>([trap] { trap->Enter(); }); // which holds no reference of its frame's own
  {
    TWorkerThreadPool pool;
    pool.SetMaxRunningThreads(1);
    pool.SetOnAllWorkItemsDone([&](bool terminated) { all_done = terminated; });
    pool.AddWorkItem(item);
    const auto waiting = Make<TProbe>();
    pool.AddWorkItem(waiting);
    trap->gate.AwaitArrivals();
    {
      ManualTime time; // for this end only: by it a thread that leaves properly would be too slow
      const ScopedThreadApi scope(time.Api());
      const std::uint64_t start = time.Now();
      pool.TerminateThreads(true);
      EXPECT_GE(time.Now() - start, 3000U);
      EXPECT_LE(time.Now() - start, 3100U);
    }
    EXPECT_EQ(pool.Count(), 0);
    EXPECT_EQ(all_done, true) << "the event says that the pool was ended";
    EXPECT_EQ(waiting->works, 0);
    // The pool itself is as good as new.
    const auto next = Make<TProbe>();
    pool.AddWorkItem(next);
    next->Wait();
    EXPECT_EQ(next->works, 1);
  }
  EXPECT_EQ(item->GetStatus(), TTaskStatus::Canceled);
  EXPECT_EQ(lines.Get(), std::vector<std::wstring>{L"Terminating worker Thread with work itemTProbe the hard way."})
      << "applications look for the text as it is, without a blank";
  trap->spin = false;
  // Where the thread was left behind, it goes when it comes out, and takes its reference along.
  EXPECT_TRUE(TThread::AwaitAllEnded(std::chrono::seconds(60)));
  item.Reset();
  EXPECT_EQ(LiveObjects(), before) << "the item loses the pool's references";
}

// Where threads can be killed: not with the lock of the queue, which the pool would wait for in vain.
TEST_F(PoolEnd, AWorkerThatIsEndedInThePoolsOwnCodeLeavesItUsable) {
  const TLines lines;
  ManualTime time;
  const ScopedThreadApi scope(time.Api());
  for (int round = 0; round < 4; ++round) {
    const auto trap = std::make_shared<TTrap>();
    TWorkerThreadPool pool;
    pool.SetMaxRunningThreads(1);
    pool.SetMaxTimeUntilHardTerminate(50); // few steps: each gives the processor to the one that spins
    pool.AddWorkItem(Make<TProbe>([&pool, &trap = *trap] {
      trap.gate.Open();
      trap.gate.Pass();
      const IWorkItems none; // what asks for no memory: the lock of the heap isn't the pool's to keep
      while (trap.spin) pool.AddWorkItems(none, TPriority::Normal);
    }));
    trap->gate.AwaitArrivals();
    pool.TerminateThreads(true);
    const auto next = Make<TProbe>();
    pool.AddWorkItem(next);
    next->Wait();
    trap->spin = false;
    pool.TerminateThreads(true);
    EXPECT_TRUE(TThread::AwaitAllEnded(std::chrono::seconds(60)));
  }
  EXPECT_GE(lines.Get().size(), 4U);
}

TEST_F(PoolEnd, AThreadOfTheCallersIsEndedByForceToo) {
  const auto trap = std::make_shared<TTrap>();
  const TLines lines;
  ManualTime time;
  const ScopedThreadApi scope(time.Api());
  unsigned long id = 0;
  {
    TThreadPool pool;
    pool.SetMaxTimeUntilHardTerminate(50);
    auto* const thread = new TProbeThread([trap](TKivThread&) { trap->Enter(); });
    pool.Add(thread);
    trap->gate.AwaitArrivals();
    id = thread->GetThreadId();
  }
  trap->spin = false;
  EXPECT_TRUE(TThread::AwaitAllEnded(std::chrono::seconds(60)));
  EXPECT_EQ(lines.Get(), std::vector<std::wstring>{L"Terminating Thread TProbeThread the hard way. Thread ID: " +
                                                   std::to_wstring(id)});
}

TEST_F(PoolEnd, WorkersThatWaitForTheMainThreadOrSleepLeaveByThemselves) {
  const TLines lines;
  TGate gate;
  int calls = 0;
  {
    TWorkerThreadPool pool;
    pool.SetMaxRunningThreads(3);
    pool.SetMinWorkerThreads(3);
    pool.AddWorkItem(Make<TProbe>([&] {
      gate.Pass();
      TThread::Synchronize([&] { ++calls; });
    }));
    pool.AddWorkItem(TDelayedProcedure::Create([] { FAIL() << "it was withdrawn"; }, 3'600'000, true));
    pool.AddWorkItem(Make<TProbe>([&] { gate.Pass(); }));
    gate.AwaitArrivals(2);
    gate.Open();
  }
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(lines.Get().empty()) << "nobody had to be forced";
}

TEST_F(PoolEnd, AThreadSleepsInStepsAndEndsInItsDelay) {
  const TLines lines;
  {
    TThreadPool pool;
    pool.Add(new TProbeThread([](TKivThread& thread) { thread.Delay(3'600'000); }));
    EXPECT_EQ(pool.RunningThreadCount(), 1);
    EXPECT_EQ(pool.ThreadsNotTerminated(), 1);
  }
  EXPECT_TRUE(lines.Get().empty());
}

TEST_F(PoolEnd, APoolThatItsOwnWorkerFreesLeavesThatWorkerBehind) {
  // The last reference goes in the work, in the delivery, in the event of the last item.
  for (const int where : {0, 1, 2}) {
    ComPtr<TWorkerThreadPoolRefCounted> pool = TWorkerThreadPoolRefCounted::Construct();
    std::atomic<bool> gone{false};
    const auto free = [&] {
      pool.Reset();
      gone = true;
    };
    const auto item = Make<TProbe>([&] {
      if (where == 0) free();
    });
    item->onDone = [&] {
      if (where == 1) free();
    };
    pool->SetOnAllWorkItemsDone([&, where](bool terminated) {
      if (where == 2 && !terminated) free();
    });
    {
      const auto keep = pool;
      keep->AddWorkItem(item, TPriority::Normal);
    }
    PumpUntil([&] { return gone.load(); });
    EXPECT_TRUE(TThread::AwaitAllEnded(std::chrono::seconds(60)));
  }
}

TEST_F(PoolEnd, APoolThatFreesItselfWithItsLastThreadOutlivesTheCallThatEndsIt) {
  for (const bool threads_are_quicker : {false, true}) {
    TThreadApi api;
    api.sleep = [threads_are_quicker, sleep = ThreadApi().sleep](std::chrono::milliseconds time) {
      if (threads_are_quicker && MainThread::IsCurrent()) TThread::AwaitAllEnded(std::chrono::seconds(60));
      sleep(time);
    };
    const ScopedThreadApi scope(api);
    std::atomic<int> left{0};
    const auto token = std::make_shared<int>();
    auto* const pool = new TWorkerThreadPool;
    pool->SetFreeOnLastThreadTermination(true);
    pool->SetOnAllWorkItemsDone([token](bool) {});
    pool->SetOnAllThreadsTerminated([&](TCustomThreadPool&) { ++left; });
    TGate gate;
    Occupy(*pool, gate, 3);
    gate.Open();
    pool->Dispose();
    EXPECT_TRUE(TThread::AwaitAllEnded(std::chrono::seconds(60)));
    EXPECT_EQ(left, 1);
    EXPECT_EQ(token.use_count(), 1) << "it is gone";
  }
}

TEST_F(PoolEnd, APoolEndsThoughItsItemsQueueOthersForEver) {
  for (const bool destroy : {false, true}) {
    class TFollowed : public TBasicWorkItem {
    public:
      explicit TFollowed(TWorkerThreadPool& pPool) : fPool(pPool) {}
      void DoWork() override {
        while (!Terminated()) std::this_thread::yield();
        fPool.AddWorkItems({Make<TFollowed>(fPool)}, TPriority::Normal);
      }

    private:
      TWorkerThreadPool& fPool;
    };
    TWorkerThreadPool pool;
    pool.AddWorkItem(Make<TFollowed>(pool));
    while (pool.GetActiveThreadCount() == 0) std::this_thread::yield();
    if (destroy) continue;
    pool.TerminateThreads(true);
    EXPECT_EQ(pool.Count(), 0);
    EXPECT_EQ(pool.QueueLength(), 0U);
  }
}

TEST_F(PoolEnd, EachThreadsEndIsToldOnTheMainThread) {
  int told = 0;
  {
    TWorkerThreadPool pool;
    pool.SetOnThreadTerminated([&](TKivThread& thread) {
      EXPECT_TRUE(MainThread::IsCurrent());
      EXPECT_TRUE(thread.GetIsFinished());
      ++told;
    });
    TGate gate;
    Occupy(pool, gate, 2);
    gate.Open();
  }
  EXPECT_EQ(told, 2);
}

TEST_F(PoolEnd, WhatIsAddedDuringASoftEndStartsBehindIt) {
  TWorkerThreadPool pool;
  TGate gate;
  Occupy(pool, gate);
  pool.Dispose();
  const auto late = Make<TProbe>();
  pool.AddWorkItem(late);
  gate.Open();
  late->Wait();
  EXPECT_EQ(late->works, 1);
}

TEST_F(PoolEnd, AnItemIsRefusedOnceTheThreadsAreGone) {
  // Somebody who comes as late as that: the destructor of what the pool's own event held.
  struct TLate {
    TWorkerThreadPool* pool = nullptr;
    std::wstring* message = nullptr;
    ~TLate() {
      try {
        pool->AddWorkItem(Make<TProbe>());
      } catch (const EInvalidOperation& e) {
        *message = e.Message();
      }
    }
  };
  std::wstring message;
  {
    TWorkerThreadPool pool;
    auto late = std::make_shared<TLate>();
    late->pool = &pool;
    late->message = &message;
    pool.SetOnAllWorkItemsDone([late](bool) {});
    EXPECT_THROW(pool.AddWorkItem(nullptr), EInvalidArgument);
  }
  EXPECT_EQ(message, L"New workitems cannot be added to a threadpool that is destroying.");
}

TEST_F(PoolEnd, AQueuedCallThatRaisesDoesntKeepAPoolFromEnding) {
  int reports = 0;
  MainThread::SetExceptionHandler([&](std::exception_ptr) { ++reports; });
  TGate gate;
  {
    TWorkerThreadPool pool;
    for (int i = 0; i < 2; ++i) {
      pool.AddWorkItem(Make<TProbe>([&] {
        MainThread::Queue([] { throw std::runtime_error("queued"); });
        gate.Pass();
      }));
    }
    gate.AwaitArrivals(1);
    gate.Open();
  }
  EXPECT_FALSE(MainThread::CheckSynchronize()) << "all that was queued has run";
}

TEST_F(PoolEnd, ExcessThreadsOfThePlainPoolWaitForTheirTurn) {
  TGate gates[3];
  TThreadPool pool;
  pool.SetMaxRunningThreads(1);
  for (auto& gate : gates) pool.Add(new TProbeThread([&gate](TKivThread&) { gate.Pass(); }));
  gates[0].AwaitArrivals();
  EXPECT_EQ(pool.Count(), 3);
  EXPECT_EQ(pool.RunningThreadCount(), 1);
  for (auto& gate : gates) {
    gate.AwaitArrivals();
    gate.Open();
  }
  PumpUntil([&] { return !pool.ThreadsActive(); });
}

} // namespace
} // namespace kiv::test
