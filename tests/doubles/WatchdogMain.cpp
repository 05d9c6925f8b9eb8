#include <doubles/StackReport.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <thread>

namespace kiv::test {

namespace {

using std::chrono::seconds;

constexpr seconds DefaultLimit{120};
// What the report itself may take before the process ends without the rest of it.
constexpr seconds ReportLimit{25};

/// Remembers which test runs. GoogleTest's own answer takes a lock that a hanging thread may hold.
class TCurrentTest : public testing::EmptyTestEventListener {
public:
  static const testing::TestInfo* Get() { return fCurrent.load(); }

private:
  void OnTestStart(const testing::TestInfo& pInfo) override { fCurrent.store(&pInfo); }
  void OnTestEnd(const testing::TestInfo&) override { fCurrent.store(nullptr); }

  static inline std::atomic<const testing::TestInfo*> fCurrent{nullptr};
};

/// Ends a run that hangs, with a report, before whoever started it gives up without one.
///
/// Two threads wait for the limit. The first writes the stacks of all others. The second only ends the process if the
/// first got stuck over that, for example on a lock of the loader that a hanging thread holds. Both are made while
/// nothing hangs yet. A run that ends in time ends both.
class TWatchdog {
public:
  explicit TWatchdog(seconds pLimit) : fLimit(pLimit) {
    fReporter = std::thread([this] {
      if (EndsWithin(fLimit)) return;
      Report();
      EndProcess(HungExitCode);
    });
    fBackstop = std::thread([this] {
      if (EndsWithin(fLimit + ReportLimit)) return;
      WriteError("Watchdog: the report hangs too.\n");
      EndProcess(HungExitCode);
    });
  }
  ~TWatchdog() {
    {
      const std::lock_guard guard(fLock);
      fEnded = true;
    }
    fChanged.notify_all();
    fReporter.join();
    fBackstop.join();
  }
  TWatchdog(const TWatchdog&) = delete;
  TWatchdog& operator=(const TWatchdog&) = delete;

private:
  bool EndsWithin(seconds pTime) {
    std::unique_lock guard(fLock);
    return fChanged.wait_for(guard, pTime, [this] { return fEnded; });
  }

  void Report() const {
    const testing::TestInfo* test = TCurrentTest::Get();
    char line[512];
    std::snprintf(line, sizeof line, "Watchdog: the run hangs after %lld s in %s.%s\n",
                  static_cast<long long>(fLimit.count()), test ? test->test_suite_name() : "no test",
                  test ? test->name() : "");
    WriteError(line);
    WriteAllStacks();
  }

  const seconds fLimit;
  std::mutex fLock;
  std::condition_variable fChanged;
  bool fEnded = false;
  std::thread fReporter;
  std::thread fBackstop;
};

// From the environment; 0 switches the watchdog off, for work in a debugger.
seconds Limit() {
  const char* text = std::getenv("KIV_WATCHDOG_SECONDS");
  if (!text) return DefaultLimit;
  char* end = nullptr;
  const long value = std::strtol(text, &end, 10);
  return end == text || *end != 0 || value < 0 ? DefaultLimit : seconds(value);
}

int Run() {
  testing::UnitTest::GetInstance()->listeners().Append(new TCurrentTest); // GoogleTest frees it
  const seconds limit = Limit();
  std::optional<TWatchdog> watchdog;
  if (limit.count() != 0 && !testing::GTEST_FLAG(list_tests)) watchdog.emplace(limit);
  return RUN_ALL_TESTS();
}

} // namespace

} // namespace kiv::test

int main(int argc, char** argv) {
  // The watchdog is a second thread, and a forked child has only one: death tests start their program anew.
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  testing::InitGoogleTest(&argc, argv);
  kiv::test::PrepareReports();
  const int result = kiv::test::Run();
  // A filter that fits nothing is a mistake in the list of tests, not a success.
  if (testing::UnitTest::GetInstance()->test_to_run_count() == 0 && !testing::GTEST_FLAG(list_tests)) {
    std::fputs("No test was run.\n", stderr);
    return kiv::test::NothingRanExitCode;
  }
  return result;
}
