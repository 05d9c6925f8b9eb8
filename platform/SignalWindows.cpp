#include <platform/Signal.h>

#include <platform/ApartmentWait.h>
#include <platform/Exception.h>
#include <platform/Handles.h>
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

namespace {

// Waits for the event, answering sent messages the while, and calls into the apartment on a thread that serves one.
bool WaitPumping(HANDLE event, std::uint64_t limit, bool endless) {
  const std::uint64_t start = GetTickCount64();
  for (;;) {
    const std::uint64_t passed = GetTickCount64() - start;
    if (!endless && passed > limit) return WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
    const std::uint64_t left = endless ? 0 : limit - passed;
    const DWORD wait = endless ? INFINITE : static_cast<DWORD>(left < INFINITE ? left : INFINITE - 1);
    if (ServesApartment()) {
      if (const auto signalled = WaitServingApartment(event, wait)) return *signalled;
    }
    switch (MsgWaitForMultipleObjectsEx(1, &event, wait, QS_SENDMESSAGE, 0)) {
    case WAIT_OBJECT_0:
      return true;
    case WAIT_OBJECT_0 + 1: {
      MSG message;
      // Delivers what was sent; takes nothing that was posted.
      PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
      break;
    }
    case WAIT_TIMEOUT:
      return false;
    default:
      // No message queue to be had: a plain wait is the next best thing.
      return WaitForSingleObject(event, wait) == WAIT_OBJECT_0;
    }
  }
}

} // namespace

void TSignal::Wait() noexcept {
  WaitPumping(fImpl->event.Get(), 0, true);
}

bool TSignal::WaitFor(std::chrono::milliseconds pTimeout) noexcept {
  const auto count = pTimeout.count();
  return WaitPumping(fImpl->event.Get(), count > 0 ? static_cast<std::uint64_t>(count) : 0, false);
}

} // namespace kiv
