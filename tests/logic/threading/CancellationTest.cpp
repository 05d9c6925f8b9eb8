#include "PoolFixture.h"

#include <threading/Cancellation.h>
#include <threading/Interlocked.h>

#include <thread>
#include <vector>

namespace kiv::test {
namespace {

using Cancellation = PoolTest;

TEST_F(Cancellation, AnEmptyRecordMakesNothingUntilItIsConverted) {
  CancellationToken record;
  record.Cancel();
  record.Reset();
  EXPECT_TRUE(record.IsEmpty());
  const ComPtr<ICancellationToken> token = record;
  EXPECT_FALSE(record.IsEmpty());
  EXPECT_FALSE(token->IsCancellationRequested()) << "a cancellation before the first conversion is nobody's";
  EXPECT_EQ(static_cast<ComPtr<ICancellationToken>>(record), token);
}

TEST_F(Cancellation, CancelStaysAndResetStartsAnew) {
  CancellationToken record;
  const ComPtr<ICancellationIndicator> first = record;
  record.Cancel();
  EXPECT_TRUE(first->IsCancellationRequested());
  EXPECT_EQ(static_cast<ComPtr<ICancellationIndicator>>(record), first) << "cancelled for good";
  record.Reset();
  const ComPtr<ICancellationIndicator> second = record;
  EXPECT_FALSE(second->IsCancellationRequested());
  EXPECT_TRUE(first->IsCancellationRequested());
  record.Reset();
  EXPECT_TRUE(second->IsCancellationRequested()) << "Reset cancels what it forgets";
}

TEST_F(Cancellation, ThreadsThatConvertAtOnceGetTheSameToken) {
  for (int round = 0; round < 200; ++round) {
    CancellationToken record;
    ComPtr<ICancellationToken> got[4];
    test::TBarrier start(4);
    {
      std::vector<std::jthread> threads;
      for (auto& mine : got) {
        threads.emplace_back([&] {
          start.ArriveAndWait();
          mine = record;
        });
      }
    }
    for (const auto& token : got) ASSERT_EQ(token, got[0]);
  }
}

TEST_F(Cancellation, ATokenThatIsGotWhileTheRecordIsResetIsWholeAndNeverMissesTheReset) {
  CancellationToken record;
  std::atomic<bool> stop{false};
  std::vector<std::jthread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] {
      while (!stop) {
        const ComPtr<ICancellationToken> token = record;
        token->IsCancellationRequested();
        record.Cancel();
      }
    });
  }
  for (int i = 0; i < 20'000; ++i) {
    const ComPtr<ICancellationToken> before = record;
    record.Reset();
    ASSERT_TRUE(before->IsCancellationRequested());
  }
  stop = true;
}

TEST(Interlocked, RaisesAndNeverLowers) {
  std::atomic<std::uint64_t> value{5};
  EXPECT_FALSE(TKivInterlocked::SetEqualOrHigher(value, 5));
  EXPECT_FALSE(TKivInterlocked::SetEqualOrHigher(value, 4));
  EXPECT_TRUE(TKivInterlocked::SetEqualOrHigher(value, UINT64_MAX));
  EXPECT_EQ(value, UINT64_MAX);
  // Of many writers the highest wins.
  value = 0;
  {
    std::vector<std::jthread> threads;
    for (std::uint64_t first = 0; first < 4; ++first) {
      threads.emplace_back([&value, first] {
        for (std::uint64_t i = first; i < 40'000; i += 4) TKivInterlocked::SetEqualOrHigher(value, i);
      });
    }
  }
  EXPECT_EQ(value, 39'999U);
}

} // namespace
} // namespace kiv::test
