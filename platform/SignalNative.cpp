#include <platform/Signal.h>

#include <condition_variable>
#include <mutex>

namespace kiv {

struct TSignal::TImpl {
  std::mutex lock;
  std::condition_variable changed;
  bool set = false;
};

TSignal::TSignal() : fImpl(std::make_unique<TImpl>()) {}
TSignal::~TSignal() = default;

void TSignal::Set() noexcept {
  // Notified under the lock: the waiter may destroy the signal as soon as it has the lock.
  const std::lock_guard guard(fImpl->lock);
  fImpl->set = true;
  fImpl->changed.notify_one();
}

void TSignal::Wait() noexcept {
  std::unique_lock guard(fImpl->lock);
  fImpl->changed.wait(guard, [this] { return fImpl->set; });
  fImpl->set = false;
}

bool TSignal::WaitFor(std::chrono::milliseconds pTimeout) noexcept {
  std::unique_lock guard(fImpl->lock);
  if (!fImpl->changed.wait_for(guard, pTimeout, [this] { return fImpl->set; })) return false;
  fImpl->set = false;
  return true;
}

} // namespace kiv
