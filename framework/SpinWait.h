#pragma once

#include <platform/Threads.h>

#include <thread>

namespace kiv {

/// For loops that wait for something that comes soon: each cycle waits a little longer than the one before, first on
/// the processor, then by giving it to others, now and then by a sleep of 1 ms.
class TSpinWait {
public:
  void SpinCycle() {
    ++fCount;
    if (fCount <= SpinsOnly) {
      for (unsigned i = 1U << fCount; i > 0; --i) RelaxProcessor();
    } else if (fCount % SleepEvery == 0) {
      ThreadApi().sleep(std::chrono::milliseconds(1));
    } else {
      std::this_thread::yield();
    }
  }

private:
  static constexpr unsigned SpinsOnly = 10;
  static constexpr unsigned SleepEvery = 20;

  unsigned fCount = 0;
};

} // namespace kiv
