#include "Benches.h"

#include <doubles/Barrier.h>
#include <viewstate/SystemImageList.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace kiv::bench {

namespace {

using enum TKivImageListSize;

const std::wstring Extensions[] = {L".txt", L".exe", L".jpg", L".a rather long one", L".zip"};

// Nanoseconds that one question for the icon of an extension takes a thread.
double PerExtension() {
  constexpr int rounds = 100'000;
  int sum = 0;
  const double seconds = Seconds([&] {
    for (int round = 0; round < rounds; ++round) {
      for (const std::wstring& extension : Extensions) {
        sum += TKivSystemImageList::GetIndexFromExtension(extension, si_Small, false) + 1;
      }
    }
  });
  if (sum == 0) std::abort(); // and the calls can't be left out
  return seconds * 1e9 / rounds / static_cast<double>(std::size(Extensions));
}

// The same with more threads than processors, as time of all processors together.
double PerExtensionOfMany() {
  constexpr unsigned threads = 8;
  PerExtension(); // known from here on, so the threads need no COM
  test::TBarrier start(threads + 1);
  std::vector<std::thread> workers;
  for (unsigned i = 0; i < threads; ++i) {
    workers.emplace_back([&start] {
      start.ArriveAndWait();
      PerExtension();
    });
  }
  start.ArriveAndWait();
  const double seconds = Seconds([&workers] {
    for (std::thread& worker : workers) worker.join();
  });
  const unsigned processors = std::min(threads, std::max(std::thread::hardware_concurrency(), 1U));
  return seconds * 1e9 * processors / threads / 100'000 / static_cast<double>(std::size(Extensions));
}

// Microseconds for an icon in a size that has to be scaled.
double PerScaledIcon() {
  constexpr int rounds = 50;
  const int folder = TKivSystemImageList::GetFolderIconNumber(false);
  std::size_t sum = 0;
  const double seconds = Seconds([&] {
    for (int round = 0; round < rounds; ++round) sum += SystemImage(folder, 40).Pixels().size();
  });
  if (sum == 0) std::abort();
  return seconds * 1e6 / rounds;
}

double Limit() {
  return 150;
}

} // namespace

std::vector<TFigure> IconFigures() {
  return {
      {"icons", "by_extension", "ns", &PerExtension, &Limit, 1},
      {"icons", "by_extension_8_threads", "ns", &PerExtensionOfMany, &Limit, 1},
      {"icons", "scaled_icon", "us", &PerScaledIcon, nullptr, 0},
  };
}

} // namespace kiv::bench
