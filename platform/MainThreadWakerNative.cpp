#include <platform/MainThreadWaker.h>

// Without Windows there is no message loop to post to: the host drains the queue with CheckSynchronize, whose wait ends
// when something is queued.
namespace kiv::MainThreadWaker {

void Start() {}

void Stop() noexcept {}

bool Wake() noexcept {
  return true;
}

bool TakeTurnLater() noexcept {
  return true;
}

} // namespace kiv::MainThreadWaker
