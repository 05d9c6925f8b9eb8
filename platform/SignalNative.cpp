#include <platform/Signal.h>

#include <condition_variable>
#include <mutex>

namespace kiv {

struct TSignal::TImpl {
  std::mutex lock;
  std::condition_variable changed;
  bool set = false;
};

TSignal::TSignal() : fImpl(std::make_shared<TImpl>()) {}
TSignal::~TSignal() = default;

void TSignal::Set() noexcept {
  const std::shared_ptr<TImpl> impl = fImpl; // the waiter may destroy the signal as soon as it has the lock
  {
    const std::lock_guard guard(impl->lock);
    impl->set = true;
  }
  impl->changed.notify_one(); // not under the lock, for which the woken thread would wait at once
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
