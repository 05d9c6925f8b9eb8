#include <platform/MainThread.h>

#include <platform/Lifecycle.h>
#include <platform/Signal.h>
#include <platform/Types.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kiv {
namespace {

// Dispatches messages until the condition holds; the watchdog ends a wait for ever.
template <typename F>
void PumpUntil(F&& condition) {
  MSG message;
  while (!condition() && GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
}

// Dispatches what waits now.
void PumpOnce() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

class MainThreadWindow : public testing::Test {
protected:
  void SetUp() override { MainThread::Attach(); }
  void TearDown() override { Shutdown(); }
};

TEST_F(MainThreadWindow, TenThousandClosuresWakeTheLoopOnceForEachTimeItWasIdle) {
  constexpr int count = 10000;
  std::vector<int> order;
  const auto before = MainThread::Statistics();
  std::thread worker([&] {
    for (int i = 0; i < count; ++i) MainThread::Queue([&order, i] { order.push_back(i); });
  });
  PumpUntil([&] { return order.size() == count; });
  worker.join();
  for (int i = 0; i < count; ++i) ASSERT_EQ(order[static_cast<std::size_t>(i)], i);
  const auto after = MainThread::Statistics();
  // Idle once before the first closure, and each time the queue ran dry behind that.
  EXPECT_LE(after.wakes - before.wakes, 1 + after.idles - before.idles);
  EXPECT_GE(after.wakes - before.wakes, 1U);
}

TEST_F(MainThreadWindow, AMessageLoopInsideAClosureDoesNotNestTheRoadButAModalLoopOfOursDoes) {
  std::string trace;
  MainThread::Queue([&] {
    trace += "a(";
    MainThread::Queue([&] { trace += "b"; });
    PumpOnce();
    trace += "|";
    {
      const MainThread::ScopedModalLoop loop;
      PumpOnce();
    }
    MainThread::Queue([&] { trace += "c"; });
    PumpOnce();
    trace += ")";
  });
  PumpUntil([&] { return trace.size() >= 6; });
  EXPECT_EQ(trace, "a(|b)c");
}

TEST_F(MainThreadWindow, InputIsServedWhileClosuresStreamIn) {
  // Each closure queues the next: the road must yield, or the posted message of the test would never be seen.
  const auto end = GetTickCount64() + 200;
  bool done = false;
  std::function<void()> again = [&] {
    if (GetTickCount64() < end) {
      MainThread::Queue(again);
    } else {
      done = true;
    }
  };
  MainThread::Queue(again);
  int turns = 0;
  PumpUntil([&] {
    ++turns;
    return done;
  });
  EXPECT_GT(turns, 2);
  EXPECT_GE(MainThread::Statistics().yields, 1U);
}

TEST_F(MainThreadWindow, AWorkerThatWaitsInSynchronizeAnswersSentMessages) {
  HWND window = nullptr;
  bool ran = false;
  TSignal ready;
  std::thread worker([&] {
    window = CreateWindowExW(0, L"STATIC", L"text", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ready.Set();
    MainThread::Synchronize([&] { ran = true; });
    DestroyWindow(window);
  });
  ready.Wait();
  ASSERT_TRUE(window);
  // The worker is on its way into Synchronize or waits there: a sent message must come back either way.
  EXPECT_EQ(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0), 4);
  PumpUntil([&] { return ran; });
  worker.join();
  EXPECT_TRUE(ran);
}

} // namespace
} // namespace kiv
