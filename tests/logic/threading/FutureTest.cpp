#include "PoolFixture.h"

#include <doubles/ManualTime.h>
#include <threading/Future.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace kiv::test {
namespace {

using Future = PoolTest;
using enum TTaskStatus;

TEST_F(Future, GivesItsValueToAllWhoAskOrToTheFirstIfItCanOnlyBeMoved) {
  const auto pool = TWorkerPool::CreateInstance(nullptr);
  ComPtr<IFuture<std::string>> text;
  TFuture<std::string>::CreateAndQueue([] { return std::string(100, 'x'); }, nullptr, text, pool.Get());
  EXPECT_EQ(text->GetValue(), std::string(100, 'x'));
  EXPECT_EQ(text->GetValue(), std::string(100, 'x'));
  EXPECT_EQ(text->GetStatus(), Completed);

  ComPtr<IFuture<std::unique_ptr<int>>> moved;
  TFuture<std::unique_ptr<int>>::CreateAndQueue([] { return std::make_unique<int>(7); }, nullptr, moved, pool.Get());
  std::unique_ptr<int> value;
  EXPECT_EQ(moved->TryGetValue(UINT64_MAX, value), Completed);
  ASSERT_TRUE(value);
  EXPECT_EQ(*value, 7);
  EXPECT_FALSE(moved->GetValue()) << "it has gone to the first";

  ComPtr<IFuture<bool>> in_global_pool;
  TFuture<bool>::CreateAndQueue([] { return true; }, nullptr, in_global_pool);
  EXPECT_TRUE(in_global_pool->GetValue());
}

TEST_F(Future, GivesTheDefaultWhenTheWorkFailedOrWasWithdrawn) {
  const auto pool = TWorkerPool::CreateInstance(nullptr);
  ComPtr<IFuture<int>> failed;
  TFuture<int>::CreateAndQueue([]() -> int { throw std::runtime_error("no value"); }, nullptr, failed, pool.Get());
  int value = 5;
  EXPECT_EQ(failed->TryGetValue(UINT64_MAX, value), Canceled);
  EXPECT_EQ(value, 0);
  CancellationToken token;
  static_cast<void>(static_cast<ComPtr<ICancellationToken>>(token));
  token.Cancel();
  ComPtr<IFuture<int>> withdrawn;
  TFuture<int>::CreateAndQueue([] { return 3; }, token, withdrawn, pool.Get());
  EXPECT_EQ(withdrawn->GetValue(), 0);
  MainThread::CheckSynchronize(); // reports the failure
}

TEST_F(Future, ALimitThatPassesGivesRunningAndTheValueAsItStands) {
  ManualTime time;
  const ScopedThreadApi scope(time.Api());
  const auto future = TFuture<int>::Construct([] { return 3; });
  for (const std::uint64_t limit : {0U, 500U}) {
    const std::uint64_t before = time.Now();
    int value = 9;
    EXPECT_EQ(future->TryGetValue(limit, value), Running) << "though it is only created";
    EXPECT_EQ(value, 0);
    EXPECT_EQ(time.Now() - before, limit);
  }
  future->DoWork();
  future->SetStatus(Completed);
  int value = 0;
  EXPECT_EQ(future->TryGetValue(0, value), Completed) << "a limit of 0 asks once";
  EXPECT_EQ(value, 3);
}

TEST_F(Future, IsOneObjectWithItsWorkItem) {
  const ComPtr<TFuture<int>> future = TFuture<int>::Construct([] { return 1; });
  const ComPtr<IFuture<int>> face(future);
  const auto item = face.MaybeAs<IWorkItem>();
  ASSERT_TRUE(item);
  EXPECT_EQ(item.MaybeAs<IFuture<int>>().Get(), face.Get());
  EXPECT_EQ(item.MaybeAs<IUnknown>().Get(), face.MaybeAs<IUnknown>().Get());
}

} // namespace
} // namespace kiv::test
