#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace kiv::test {

/// Where threads wait for one another, again and again. In the place of std::barrier, whose wake-ups get lost in some
/// libraries for Windows when it is used for more than one phase.
class TBarrier {
public:
  explicit TBarrier(std::size_t pCount) : fCount(pCount) {}

  /// Returns when all have arrived.
  void ArriveAndWait() {
    std::unique_lock guard(fLock);
    const std::size_t phase = fPhase;
    if (++fArrived == fCount) {
      fArrived = 0;
      ++fPhase;
      fNext.notify_all();
      return;
    }
    fNext.wait(guard, [&] { return fPhase != phase; });
  }

private:
  const std::size_t fCount;
  std::mutex fLock;
  std::condition_variable fNext;
  std::size_t fArrived = 0;
  std::size_t fPhase = 0;
};

} // namespace kiv::test
