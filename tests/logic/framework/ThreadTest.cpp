#include <framework/Thread.h>

#include <doubles/Gate.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <platform/TypeName.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace kiv::test {
namespace {

class TClosureThread : public TThread {
public:
  explicit TClosureThread(std::function<void(TClosureThread&)> pBody) : fBody(std::move(pBody)) {}
  ~TClosureThread() override { Finish(); }
  using TThread::CheckSuspended;

protected:
  void Execute() override { fBody(*this); }

private:
  std::function<void(TClosureThread&)> fBody;
};

class Thread : public testing::Test {
protected:
  void SetUp() override { MainThread::Attach(); }
  void TearDown() override {
    EXPECT_TRUE(TThread::AwaitAllEnded(std::chrono::seconds(60)));
    Shutdown();
  }
};

TEST_F(Thread, RunsFromStartToItsEventAndKeepsWhatItRaised) {
  std::string trace;
  TClosureThread thread([&](TClosureThread& self) {
    EXPECT_TRUE(self.IsCurrent());
    TThread::Synchronize([&] { trace += 's'; });
    throw std::runtime_error("fatal");
  });
  thread.SetOnTerminate([&](TThread& ended) {
    EXPECT_TRUE(MainThread::IsCurrent());
    trace += ended.GetFatalException() ? "!t" : "t";
  });
  EXPECT_TRUE(thread.IsSuspended());
  EXPECT_EQ(thread.GetThreadId(), 0U);
  thread.Start();
  thread.WaitFor(); // runs what the thread waits for
  EXPECT_EQ(trace, "s!t");
  EXPECT_TRUE(thread.IsFinished());
  EXPECT_NE(thread.GetThreadId(), 0U);
  EXPECT_EQ(DescribeException(thread.GetFatalException()), L"fatal");
  thread.WaitFor();
}

TEST_F(Thread, OneThatIsTerminatedBeforeItStartsNeverExecutes) {
  bool ran = false;
  bool told = false;
  TClosureThread thread([&](TClosureThread&) { ran = true; });
  thread.SetOnTerminate([&](TThread&) { told = true; });
  thread.Terminate();
  thread.Start();
  thread.WaitFor();
  EXPECT_FALSE(ran);
  EXPECT_TRUE(told);
}

TEST_F(Thread, IsHeldWhereItLooksAndGoesOnWhenStartedAgain) {
  TGate gate;
  std::atomic<int> passed{0};
  TClosureThread thread([&](TClosureThread& self) {
    gate.Pass();
    self.CheckSuspended();
    ++passed;
  });
  thread.Start();
  gate.AwaitArrivals();
  thread.Suspend();
  EXPECT_TRUE(thread.IsSuspended());
  gate.Open();
  EXPECT_EQ(passed, 0);
  thread.Start();
  thread.WaitFor();
  EXPECT_EQ(passed, 1);
}

TEST_F(Thread, OneThatFreesItselfReportsWhatItRaisedAndTakesItsQueuedCallsAlong) {
  std::wstring reported;
  Application().SetOnException([&](std::exception_ptr e) { reported = DescribeException(e); });
  auto* const thread = new TClosureThread([&](TClosureThread& self) {
    TThread::Queue(&self, [] { FAIL() << "its object is gone"; });
    throw std::runtime_error("nobody asks");
  });
  thread->SetFreeOnTerminate(true);
  thread->Start();
  while (TThread::RunningCount() > 0) std::this_thread::yield(); // without running what is queued
  MainThread::CheckSynchronize();
  EXPECT_EQ(reported, L"nobody asks");
}

TEST_F(Thread, StartRaisesWhenThePlatformHasNoMoreThreadsAndMayBeTriedAgain) {
  bool ran = false;
  TClosureThread thread([&](TClosureThread&) { ran = true; });
  {
    TThreadApi api;
    api.beginThread = [](std::function<void()>) { return nullptr; };
    const ScopedThreadApi scope(api);
    EXPECT_THROW(thread.Start(), EThread);
    EXPECT_TRUE(thread.IsSuspended());
  }
  thread.Start();
  thread.WaitFor();
  EXPECT_TRUE(ran);
}

class TLocal {};

TEST(TypeName, IsTheNameInTheSource) {
  EXPECT_EQ(UnqualifiedTypeName(typeid(TThread)), L"TThread");
  EXPECT_EQ(UnqualifiedTypeName(typeid(TLocal)), L"TLocal") << "without the unnamed namespace";
  struct TInner {};
  EXPECT_EQ(UnqualifiedTypeName(typeid(TInner)), L"TInner");
  EXPECT_TRUE(UnqualifiedTypeName(typeid(std::function<TLocal()>)).starts_with(L"function<"));
}

} // namespace
} // namespace kiv::test
