#pragma once

#include <platform/Threads.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace kiv::test {

/// A clock for thread code that only the test moves, with the sleeps and bounded waits that go by it. Stands in for the
/// platform's through a ScopedThreadApi made with `Api()`; must outlive that.
///
/// A sleep returns at once. It lets its time pass first, so that whoever waits by sleeping gets there; with
/// `SetSleepsMoveTime(false)` it doesn't, for tests in which somebody sleeps all the time. A wait for a signal is a
/// real one, and ends when the test has moved the clock to its limit.
class ManualTime {
public:
  /// Takes no lock: a thread that is ended by force may be asking for the time.
  std::uint64_t Now() const noexcept { return fNow.load(); }
  void Advance(std::uint64_t pMilliseconds) {
    const std::lock_guard guard(fLock);
    fNow += pMilliseconds;
    for (const auto& [signal, limit] : fWaits) {
      if (limit <= fNow) signal->Set();
    }
  }
  void SetSleepsMoveTime(bool pMove) {
    const std::lock_guard guard(fLock);
    fSleepsMoveTime = pMove;
  }
  /// All sleeps together, in milliseconds.
  std::uint64_t Slept() const {
    const std::lock_guard guard(fLock);
    return fSlept;
  }
  /// How many waits for a signal are under way.
  std::size_t Waits() const {
    const std::lock_guard guard(fLock);
    return fWaits.size();
  }
  /// Until so many threads wait for a signal.
  void AwaitWaits(std::size_t pCount) const {
    while (Waits() != pCount) std::this_thread::yield();
  }

  TThreadApi Api() {
    TThreadApi api;
    api.tickCount = [this] { return Now(); };
    api.sleep = [this](std::chrono::milliseconds time) { Sleep(time); };
    api.waitFor = [this](TSignal& signal, std::chrono::milliseconds limit) { return WaitFor(signal, limit); };
    return api;
  }

private:
  void Sleep(std::chrono::milliseconds time) {
    bool move = false;
    {
      const std::lock_guard guard(fLock);
      fSlept += static_cast<std::uint64_t>(time.count());
      move = fSleepsMoveTime;
    }
    if (move) Advance(static_cast<std::uint64_t>(time.count()));
    std::this_thread::yield();
  }

  bool WaitFor(TSignal& signal, std::chrono::milliseconds limit) {
    std::uint64_t end = 0;
    {
      const std::lock_guard guard(fLock);
      end = fNow + static_cast<std::uint64_t>(limit.count());
      fWaits.emplace_back(&signal, end);
    }
    signal.Wait();
    const std::lock_guard guard(fLock);
    std::erase(fWaits, std::pair(&signal, end));
    return fNow < end;
  }

  mutable std::mutex fLock;
  std::atomic<std::uint64_t> fNow{1'000'000}; // away from zero, so that "never" lies in the past; written under fLock
  std::uint64_t fSlept = 0;
  bool fSleepsMoveTime = true;
  std::vector<std::pair<TSignal*, std::uint64_t>> fWaits;
};

} // namespace kiv::test
