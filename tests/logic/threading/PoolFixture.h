#pragma once

#include <doubles/Barrier.h>
#include <doubles/Gate.h>
#include <framework/Thread.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <threading/WorkProcedures.h>
#include <threading/WorkerPool.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

namespace kiv::test {

/// A work item that does what the test says, and counts what is done to it.
class TProbe : public TBasicWorkItem {
public:
  explicit TProbe(TProcedure pWork = nullptr, ComPtr<ICancellationIndicator> pToken = nullptr, int pTag = 0,
                  bool pOnMainThread = false)
      : TBasicWorkItem(std::move(pToken)), fWork(std::move(pWork)) {
    fTag = pTag;
    fFireOnWorkDoneSynchronized = pOnMainThread;
  }

  void DoWork() override {
    ++works;
    if (fWork) fWork();
  }

  std::atomic<int> works{0};
  std::atomic<int> dones{0};
  std::atomic<int> terminates{0};
  TProcedure onDone;

protected:
  ~TProbe() override = default;
  void WorkDone() override {
    ++dones;
    if (onDone) onDone();
  }
  void Terminate() override {
    ++terminates;
    TBasicWorkItem::Terminate();
  }

private:
  TProcedure fWork;
};

/// Holds so many threads of a pool, all that it may have, behind a gate. Returns the last of the items that do it.
inline ComPtr<TProbe> Occupy(TWorkerThreadPool& pPool, TGate& pGate, int pThreads = 1, int pTag = 0) {
  pPool.SetMaxRunningThreads(pThreads);
  pPool.SetMinWorkerThreads(pThreads);
  ComPtr<TProbe> item;
  for (int i = 0; i < pThreads; ++i) {
    item = Make<TProbe>([&pGate] { pGate.Pass(); }, nullptr, pTag);
    pPool.AddWorkItem(item);
  }
  pGate.AwaitArrivals(static_cast<std::size_t>(pThreads));
  return item;
}

/// A thread of the caller's that does what the test says.
class TProbeThread : public TKivThread {
public:
  explicit TProbeThread(std::function<void(TKivThread&)> pWork) : fWork(std::move(pWork)) {}

protected:
  void Execute() override { fWork(*this); }

private:
  const std::function<void(TKivThread&)> fWork;
};

/// Runs what is queued to the main thread until something is so.
inline void PumpUntil(const std::function<bool()>& pReached) {
  while (!pReached()) MainThread::CheckSynchronize(std::chrono::milliseconds(1));
}

/// The test's thread is the main thread, and when the test is over no thread and no object of it is left.
class PoolTest : public testing::Test {
protected:
  void SetUp() override { MainThread::Attach(); }
  void TearDown() override {
    Shutdown(); // ends the global pool
    EXPECT_TRUE(TThread::AwaitAllEnded(std::chrono::seconds(60))) << TThread::RunningCount();
    EXPECT_EQ(LiveObjects(), fObjects);
  }

private:
  const long fObjects = LiveObjects();
};

} // namespace kiv::test
