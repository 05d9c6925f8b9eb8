#pragma once

#include <platform/Threads.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace kiv {

/// A lock for a handful of instructions that call nothing foreign: copying a pointer and counting it. Costs a byte and
/// a few nanoseconds. Not recursive. Use it with std::lock_guard or std::unique_lock.
class TSpinLock {
public:
  void lock() noexcept {
    for (unsigned turn = 1; !try_lock(); ++turn) {
      // The owner may have lost its processor: give it ours. An owner of a lower priority gets it only while we sleep.
      if (turn % 2048 == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      } else if (turn % 64 == 0) {
        std::this_thread::yield();
      } else {
        RelaxProcessor();
      }
    }
  }
  // Looking first leaves the owner's cache line alone.
  bool try_lock() noexcept {
    return !fTaken.load(std::memory_order_relaxed) && !fTaken.exchange(true, std::memory_order_acquire);
  }
  void unlock() noexcept { fTaken.store(false, std::memory_order_release); }

private:
  std::atomic<bool> fTaken{false};
};

} // namespace kiv
