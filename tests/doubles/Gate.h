#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace kiv::test {

/// Where a worker hangs until the test lets it go: how a test brings threads to a known point without sleeping. A
/// worker that is forgotten behind a gate is the watchdog's to report.
class TGate {
public:
  /// Waits until the gate is open. It stays open.
  void Pass() {
    std::unique_lock guard(fLock);
    ++fArrived;
    fChanged.notify_all();
    fChanged.wait(guard, [this] { return fOpen; });
  }

  void Open() {
    const std::lock_guard guard(fLock);
    fOpen = true;
    fChanged.notify_all();
  }

  /// For the test: waits until so many have come to the gate, whether it held them or not.
  void AwaitArrivals(std::size_t pCount = 1) {
    std::unique_lock guard(fLock);
    fChanged.wait(guard, [this, pCount] { return fArrived >= pCount; });
  }

private:
  std::mutex fLock;
  std::condition_variable fChanged;
  std::size_t fArrived = 0;
  bool fOpen = false;
};

} // namespace kiv::test
