#include "PoolFixture.h"

#include <doubles/ManualTime.h>

#include <string>
#include <thread>

namespace kiv::test {
namespace {

using Procedures = PoolTest;

TEST_F(Procedures, ADelayIsSleptInSlicesAndOneMore) {
  const struct {
    int delay;
    std::uint64_t slept;
  } cases[] = {{-5, 0}, {0, 0}, {1, 51}, {49, 99}, {50, 100}, {51, 101}, {500, 550}};
  for (const auto& c : cases) {
    ManualTime time;
    const ScopedThreadApi scope(time.Api());
    int ran = 0;
    TDelayedProcedure::Create([&] { ++ran; }, c.delay, true)->DoWork();
    EXPECT_EQ(time.Slept(), c.slept) << c.delay;
    EXPECT_EQ(ran, 1);
  }
}

TEST_F(Procedures, ADelayNoticesAWithdrawalWithinASlice) {
  CancellationToken token;
  ManualTime time;
  TThreadApi api = time.Api();
  api.sleep = [&, sleep = api.sleep](std::chrono::milliseconds span) {
    sleep(span);
    if (time.Slept() >= 200) token.Cancel();
  };
  const ScopedThreadApi scope(api);
  TDelayedProcedure::Create([] { FAIL() << "it was withdrawn"; }, 1000, true, token)->DoWork();
  EXPECT_EQ(time.Slept(), 200U);
}

TEST_F(Procedures, ADelayedCallOnTheMainThreadCanBeWithdrawnUntilItsTurn) {
  for (const bool withdraw : {false, true}) {
    CancellationToken token;
    int ran = 0;
    const auto item = TDelayedProcedure::Create([&] { ++ran; }, 0, false, token);
    std::thread([&] { item->DoWork(); }).join();
    EXPECT_EQ(ran, 0);
    if (withdraw) token.Reset();
    MainThread::CheckSynchronize();
    EXPECT_EQ(ran, withdraw ? 0 : 1);
  }
}

TEST_F(Procedures, ClosuresRunInTheGlobalPoolAndReportOnTheMainThread) {
  std::string trace;
  bool delivered = false;
  const auto item = TAsyncProcedure::CreateAndQueue([&] { trace += 'w'; }, nullptr,
                                                    [&] {
                                                      trace += 'd';
                                                      delivered = MainThread::IsCurrent();
                                                    });
  PumpUntil([&] { return delivered; });
  EXPECT_EQ(trace, "wd");
  EXPECT_EQ(item->GetStatus(), TTaskStatus::Completed);

  const auto delayed = TDelayedProcedure::CreateAndQueue([&] { trace += 'l'; });
  delayed->Wait();
  EXPECT_EQ(trace, "wdl");

  CancellationToken token;
  token.Reset();
  const auto tagged =
      TAsyncProcedure::CreateNoAdd([&] { trace += 'x'; }, token,
                                   [&](const ComPtr<IWorkItem>& told) { trace += told->GetTag() == 7 ? 't' : '?'; }, 7);
  EXPECT_EQ(tagged->GetStatus(), TTaskStatus::Created);
  token.Cancel();
  tagged->DoWork();
  EXPECT_EQ(trace, "wdl") << "withdrawn before it ran";
}

} // namespace
} // namespace kiv::test
