#include <platform/Lifecycle.h>

#include <platform/DebugOutput.h>
#include <platform/Exception.h>
#include <platform/MainThread.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace kiv {
namespace {

TEST(Lifecycle, FinalizersRunOnceLatestFirstWhateverTheyDo) {
  Shutdown();
  std::string trace;
  std::vector<std::wstring> log;
  const ScopedDebugSink sink([&](const std::wstring& line) { log.push_back(line); });
  AtShutdown([&] { trace += 'a'; });
  AtShutdown([&] {
    trace += 'b';
    AtShutdown([&] { trace += 'x'; }); // registered while the library ends: runs next
  });
  AtShutdown([] { throw EException(L"the finalizer's complaint"); });
  AtShutdown([&] { trace += 'd'; });
  Shutdown();
  EXPECT_EQ(trace, "dbxa");
  ASSERT_EQ(log.size(), 1U);
  EXPECT_NE(log[0].find(L"the finalizer's complaint"), std::wstring::npos);
  Shutdown();
  EXPECT_EQ(trace, "dbxa");
}

TEST(Lifecycle, DebugSinksNestAndGetLinesOfAllThreads) {
  std::vector<std::wstring> outer;
  std::vector<std::wstring> inner;
  const ScopedDebugSink outerSink([&](const std::wstring& line) { outer.push_back(line); });
  {
    const ScopedDebugSink innerSink([&](const std::wstring& line) {
      inner.push_back(line);
      if (inner.size() == 1) WriteDebugLine(L"from the sink");
    });
    std::thread([] { WriteDebugLine(L"thread"); }).join();
  }
  WriteDebugLine(L"after");
  EXPECT_EQ(inner, (std::vector<std::wstring>{L"thread", L"from the sink"}));
  EXPECT_EQ(outer, (std::vector<std::wstring>{L"after"}));
}

TEST(Lifecycle, TheMainThreadEndsWithTheLibraryAndComesUpAgain) {
  for (int round = 0; round < 2; ++round) {
    MainThread::Attach();
    EXPECT_TRUE(MainThread::IsCurrent());
    int owner = 0;
    int ran = 0;
    std::thread([&] {
      EXPECT_FALSE(MainThread::IsCurrent());
      MainThread::Queue([&] { ++ran; });
      MainThread::Queue([&] { ++ran; }, &owner);
      MainThread::RemoveQueuedEvents(&owner);
    }).join();
    EXPECT_TRUE(MainThread::CheckSynchronize());
    EXPECT_EQ(ran, 1);
    std::vector<std::string> raised;
    MainThread::SetExceptionHandler([&](std::exception_ptr e) {
      try {
        std::rethrow_exception(e);
      } catch (const std::exception& x) {
        raised.emplace_back(x.what());
      }
    });
    MainThread::Queue([] { throw EException(L"queued"); });
    MainThread::RunPosted();
    EXPECT_EQ(raised, std::vector<std::string>{"queued"});
    Shutdown();
    MainThread::Queue([&] { ++ran; });
    EXPECT_FALSE(MainThread::CheckSynchronize());
    std::thread([] { EXPECT_THROW(MainThread::Synchronize([] {}), EException); }).join();
  }
}

} // namespace
} // namespace kiv
