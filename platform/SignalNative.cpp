#include <platform/Signal.h>

#include <algorithm>
#include <atomic>
#include <cerrno>

#include <semaphore.h>
#include <time.h>

namespace kiv {

// A semaphore wakes its waiter in one step of the kernel's, where a condition variable has its lock taken once more.
struct TSignal::TImpl {
  TImpl() noexcept { sem_init(&semaphore, 0, 0); }
  ~TImpl() { sem_destroy(&semaphore); }
  TImpl(const TImpl&) = delete;
  TImpl& operator=(const TImpl&) = delete;

  // By the waiter that got through: what was set up to here has been seen by it.
  void Take() noexcept { isSet.exchange(false); }

  sem_t semaphore{};
  std::atomic<bool> isSet{false}; // posted, and nobody got through since
};

TSignal::TSignal() : fImpl(std::make_shared<TImpl>()) {}
TSignal::~TSignal() = default;

void TSignal::Set() noexcept {
  const std::shared_ptr<TImpl> impl = fImpl; // the waiter may destroy the signal as soon as it is posted
  if (!impl->isSet.exchange(true)) sem_post(&impl->semaphore);
}

void TSignal::Wait() noexcept {
  while (sem_wait(&fImpl->semaphore) != 0) { // interrupted
  }
  fImpl->Take();
}

bool TSignal::WaitFor(std::chrono::milliseconds pTimeout) noexcept {
  constexpr std::chrono::milliseconds longest = std::chrono::hours(24 * 365); // more would overflow
  timespec until{};
  clock_gettime(CLOCK_MONOTONIC, &until);
  const auto now = std::chrono::seconds(until.tv_sec) + std::chrono::nanoseconds(until.tv_nsec);
  const auto end = now + std::min(pTimeout, longest);
  const auto seconds = std::chrono::floor<std::chrono::seconds>(end);
  until.tv_sec = seconds.count();
  until.tv_nsec = (end - seconds).count();
  while (sem_clockwait(&fImpl->semaphore, CLOCK_MONOTONIC, &until) != 0) {
    if (errno != EINTR) return false;
  }
  fImpl->Take();
  return true;
}

} // namespace kiv
