#pragma once

#include <platform/Export.h>

#include <chrono>
#include <memory>

namespace kiv {

/// A wake-up that stays until it is taken: one Set releases one Wait, several Sets before that count once.
///
/// On Windows a Wait answers messages that other threads send to windows of the waiting thread: without that it would
/// hang every broadcast. Posted messages stay where they are, and with them calls that COM brings into the waiting
/// thread's apartment; but a thread that entered its apartment by EnterApartment (platform/Threads.h) lets those in.
class KIV_EXPORT TSignal {
public:
  TSignal();
  ~TSignal();
  TSignal(const TSignal&) = delete;
  TSignal& operator=(const TSignal&) = delete;

  void Set() noexcept;
  void Wait() noexcept;
  /// False if the time passed first.
  bool WaitFor(std::chrono::milliseconds pTimeout) noexcept;

private:
  struct TImpl;
  std::shared_ptr<TImpl> fImpl; // a Set may still be at its end when the waiter destroys the signal
};

} // namespace kiv
