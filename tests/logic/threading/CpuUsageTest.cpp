#include <doubles/ManualTime.h>
#include <threading/CpuUsage.h>
#include <threading/ThreadPool.h>

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace kiv::test {
namespace {

// A meter whose counters the test sets.
class CpuUsage : public testing::Test {
protected:
  CpuUsage() : fScope(Api()) {}

  TThreadApi Api() {
    TThreadApi api = fTime.Api();
    api.readSystemTimes = [this](TSystemTimes& times) {
      ++fReadings;
      if (fTimes) times = *fTimes;
      return fTimes.has_value();
    };
    api.readIdleCounters = [this](TIdleCounters& counters) {
      if (fCounters.empty()) return false;
      counters = fCounters.front();
      fCounters.erase(fCounters.begin());
      return true;
    };
    return api;
  }

  ManualTime fTime;
  std::optional<TSystemTimes> fTimes;
  std::vector<TIdleCounters> fCounters;
  int fReadings = 0;
  TCpuMeter fMeter;
  ScopedThreadApi fScope;
};

TEST_F(CpuUsage, ComparesWithTheReadingBefore) {
  const struct {
    TSystemTimes times;
    int usage;
  } steps[] = {
      {{600, 700, 300}, 40}, // since the start: 600 of 1000 idle; kernel time includes idle time
      {{600, 750, 350}, 100}, {{600, 750, 350}, 100}, // the counters stand still
      {{700, 850, 350}, 0},   {{733, 900, 400}, 67},
      {{990, 1000, 400}, 0}, // more idle time than time: counters of several processors are read one after the other
  };
  for (const auto& step : steps) {
    fTimes = step.times;
    fTime.Advance(201);
    EXPECT_EQ(fMeter.Usage(), step.usage) << step.times.idle;
  }
}

TEST_F(CpuUsage, OneReadingServes200Milliseconds) {
  fTimes = {600, 700, 300};
  EXPECT_EQ(fMeter.Usage(), 40);
  fTimes = {600, 750, 350};
  fTime.Advance(200);
  EXPECT_EQ(fMeter.Usage(), 40);
  EXPECT_EQ(fReadings, 1);
  fTime.Advance(1);
  EXPECT_EQ(fMeter.Usage(), 100);
}

TEST_F(CpuUsage, FallsBackToTheOlderCounters) {
  EXPECT_EQ(fMeter.Usage(), 0) << "nothing can be had";
  const double processors = TCustomThreadPool::GetCPUCount();
  // The first reading has nothing to compare with, and measures again at once.
  fCounters = {{1000 * processors, 5000}, {1050 * processors, 5100}};
  fTime.Advance(201);
  EXPECT_EQ(fMeter.Usage(), 51) << "50.5, rounded";
  EXPECT_TRUE(fCounters.empty());
  fCounters = {{1075 * processors, 5200}};
  fTime.Advance(201);
  EXPECT_EQ(fMeter.Usage(), 76);
  fCounters = {{1075 * processors, 5200}};
  fTime.Advance(201);
  EXPECT_EQ(fMeter.Usage(), 100) << "no time has passed";
}

TEST(CpuCount, IsWhatTheEnvironmentSaysIfThatIsANumber) {
  const struct {
    const wchar_t* variable;
    int count;
  } cases[] = {{L"16", 16}, {L"0", 0}, {L"abc", 3}, {L"", 3}, {L"12x", 3}, {L"-4", 3}, {L"99999999999", 3}};
  for (const auto& c : cases) EXPECT_EQ(TCustomThreadPool::CPUCountFrom(c.variable, 3), c.count) << c.variable;
  EXPECT_EQ(TCustomThreadPool::DefaultMaxRunningThreads(), TCustomThreadPool::GetCPUCount() * 3 + 2);
}

} // namespace
} // namespace kiv::test
