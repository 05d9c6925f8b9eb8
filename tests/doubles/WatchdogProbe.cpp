// A program that fails on purpose, to prove that the watchdog sees it. Run by WatchdogProbe.cmake.

#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdint>
#include <latch>
#include <mutex>
#include <thread>

namespace {

std::mutex gHeld;
std::latch gIsHeld(1);
int gWork = 0;

// Not inlined and no tail calls, so that each has a frame of its own.
[[gnu::noinline]] void HoldTheMutexForEver() {
  std::mutex own;
  std::condition_variable never;
  const std::lock_guard guard(gHeld);
  gIsHeld.count_down();
  std::unique_lock wait(own);
  never.wait(wait, [] { return gWork == 1; });
  ++gWork;
}

[[gnu::noinline]] void WaitForTheHeldMutex() {
  gIsHeld.wait();
  const std::lock_guard guard(gHeld);
  ++gWork;
}

TEST(WatchdogProbe, EndsInTime) {
  std::thread worker([] { ++gWork; });
  worker.join();
  EXPECT_EQ(gWork, 1);
}

TEST(WatchdogProbe, Hangs) {
  std::thread holder(HoldTheMutexForEver);
  std::thread waiter(WaitForTheHeldMutex);
  holder.join();
  waiter.join();
  FAIL() << "This must not be reached.";
}

TEST(WatchdogProbe, Crashes) {
  // Not null itself: checks for undefined behaviour would trap before the access.
  auto* volatile nowhere = reinterpret_cast<volatile int*>(std::uintptr_t{0x10});
  *nowhere = 1;
}

} // namespace
