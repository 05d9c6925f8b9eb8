#pragma once

#include <platform/Threads.h>

#include <atomic>
#include <thread>

namespace kiv {

/// A lock for a handful of instructions that call nothing foreign: copying a pointer and counting it. Costs a byte and
/// a few nanoseconds. Not recursive. Use it with std::lock_guard.
class TSpinLock {
public:
  void lock() noexcept {
    for (unsigned turn = 1; fTaken.exchange(true, std::memory_order_acquire); ++turn) {
      // The owner may have lost its processor: give it ours.
      if (turn % 64 == 0) {
        std::this_thread::yield();
      } else {
        RelaxProcessor();
      }
    }
  }
  void unlock() noexcept { fTaken.store(false, std::memory_order_release); }

private:
  std::atomic<bool> fTaken{false};
};

} // namespace kiv
