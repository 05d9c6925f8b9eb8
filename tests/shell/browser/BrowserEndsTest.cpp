// Leaving a folder and closing windows while work is under way, and what that leaves behind.
#include "BrowserFixture.h"

#include <doubles/GdiCount.h>
#include <framework/Thread.h>
#include <platform/Threads.h>

#include <psapi.h>

#include <chrono>
#include <cstdio>
#include <random>

namespace kiv::test {
namespace {

struct TResources {
  std::size_t memory = 0;
  DWORD handles = 0;
  int gdi = 0;
  int threads = 0;
};

class BrowserEnds : public TBrowserTest {
protected:
  // With all that runs for no one let go.
  TResources Count() {
    EXPECT_TRUE(PumpUntil([] { return sample::FolderWorkers().GetActiveThreadCount() == 0; }));
    TResources now;
    PROCESS_MEMORY_COUNTERS memory{};
    memory.cb = sizeof(memory);
    K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory));
    now.memory = memory.PagefileUsage;
    GetProcessHandleCount(GetCurrentProcess(), &now.handles);
    now.gdi = CountGdiObjects();
    now.threads = TThread::RunningCount();
    return now;
  }
  void Leave(std::mt19937& random, const std::wstring& other) {
    switch (random() % 4) {
    case 0: // the window goes
      fExplorer->OpenWindow().ShowForm();
      fWindow->Close();
      PumpMessages();
      fWindow = fExplorer->Windows().back();
      break;
    case 1:
      View().GoToText(other);
      break;
    case 2:
      View().GoUp();
      break;
    default:
      View().SetFilter(random() % 2 == 0 ? L"1" : L"");
      View().Reload();
    }
  }

  ScopedTempFolder fTemp; // outlives the browser
};

// A thousand rounds with KIV_BROWSER_ROUNDS=1000 (and KIV_WATCHDOG_SECONDS=0).
TEST_F(BrowserEnds, NothingIsTouchedOrKept) {
  const int rounds = std::stoi(EnvironmentVariable(L"KIV_BROWSER_ROUNDS").value_or(L"20"));
  const int files = rounds >= 100 ? 10'000 : 3'000; // making them takes longer than twenty rounds
  for (int i = 0; i < files; ++i) {
    const std::wstring name = fTemp.PathOf(L"large\\file " + std::to_wstring(i) + (i % 3 == 0 ? L".exe" : L".txt"));
    if (i == 0) CreateDirectoryW(fTemp.PathOf(L"large").c_str(), nullptr);
    CloseHandle(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
  }
  const std::wstring large = fTemp.PathOf(L"large");
  const std::wstring other = fTemp.PathOf(L"other");
  CreateDirectoryW(other.c_str(), nullptr);
  std::mt19937 random(20261121);
  TResources before;
  double longest = 0;
  for (int round = 0; round < rounds; ++round) {
    View().GoToText(large);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(random() % 250);
    const bool arrives = random() % 4 == 0;
    if (round == rounds / 4) before = Count();
    ASSERT_TRUE(PumpUntil([&] {
      const bool shows = View().GetObjectCount() >= files;
      return arrives ? shows && !View().IsListing() : shows || std::chrono::steady_clock::now() > end;
    }));
    if (random() % 3 == 0) {
      const std::wstring change = fTemp.PathOf(L"large\\change " + std::to_wstring(round));
      CloseHandle(
          CreateFileW(change.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
      if (View().GetItems().GetCount() > 0) View().GetItems().SetSelected(0, true);
    }
    const TExplorerForm* const window = fWindow;
    const auto start = std::chrono::steady_clock::now();
    Leave(random, other);
    if (fWindow != window) continue; // making another takes the platform its time
    longest = std::max(longest, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  const TResources after = Count();
  std::printf("%d rounds; longest leaving %.0f ms; memory %+.1f MB, handles %+ld, gdi %+d, threads %+d\n", rounds,
              longest * 1000, (static_cast<double>(after.memory) - static_cast<double>(before.memory)) / 1e6,
              static_cast<long>(after.handles) - static_cast<long>(before.handles), after.gdi - before.gdi,
              after.threads - before.threads);
  // Two rounds differ by what happens to be shown; what is lost in each round would add up.
  EXPECT_LT(after.memory, before.memory + 40'000'000U);
  EXPECT_LT(after.handles, before.handles + 30U);
  EXPECT_LT(after.gdi, before.gdi + 10);
  EXPECT_LE(after.threads, before.threads + 12); // the pools fill as far as they may
}

} // namespace
} // namespace kiv::test
