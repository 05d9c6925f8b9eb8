#include <platform/Signal.h>

#include <platform/Exception.h>
#include <platform/Handles.h>
#include <platform/PumpingWait.h>
#include <platform/Types.h>

namespace kiv {

struct TSignal::TImpl {
  TUniqueHandle event{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
};

TSignal::TSignal() : fImpl(std::make_shared<TImpl>()) {
  if (!fImpl->event) throw EException(L"No event could be made: the process is out of handles.");
}
TSignal::~TSignal() = default;

void TSignal::Set() noexcept {
  const std::shared_ptr<TImpl> impl = fImpl;
  SetEvent(impl->event.Get());
}

void TSignal::Wait() noexcept {
  AwaitAnsweringMessages(fImpl->event.Get(), 0, true);
}

bool TSignal::WaitFor(std::chrono::milliseconds pTimeout) noexcept {
  const auto count = pTimeout.count();
  return AwaitAnsweringMessages(fImpl->event.Get(), count > 0 ? static_cast<std::uint64_t>(count) : 0, false);
}

} // namespace kiv
