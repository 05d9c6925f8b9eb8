#include <platform/PumpingWait.h>

#include <platform/ApartmentWait.h>

namespace kiv {

bool AwaitAnsweringMessages(HANDLE pObject, std::uint64_t pLimit, bool pEndless) {
  const std::uint64_t start = GetTickCount64();
  for (;;) {
    const std::uint64_t passed = GetTickCount64() - start;
    if (!pEndless && passed > pLimit) return WaitForSingleObject(pObject, 0) == WAIT_OBJECT_0;
    const std::uint64_t left = pEndless ? 0 : pLimit - passed;
    const DWORD wait = pEndless ? INFINITE : static_cast<DWORD>(left < INFINITE ? left : INFINITE - 1);
    if (ServesApartment()) {
      if (const auto signalled = WaitServingApartment(pObject, wait)) return *signalled;
    }
    // What the thread has heard of already, by GetQueueStatus, wants its answer no less than what is new.
    switch (MsgWaitForMultipleObjectsEx(1, &pObject, wait, QS_SENDMESSAGE, MWMO_INPUTAVAILABLE)) {
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
      return WaitForSingleObject(pObject, wait) == WAIT_OBJECT_0;
    }
  }
}

} // namespace kiv
