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

/// A thread of the caller's that hangs until the test lets go.
class TGatedThread : public TKivThread {
public:
  explicit TGatedThread(TGate& pGate) : fGate(pGate) {}

protected:
  void Execute() override { fGate.Pass(); }

private:
  TGate& fGate;
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
