#pragma once

#include <platform/Types.h>

#include <string>

namespace kiv::test {

/// Dispatches messages until the condition holds; the watchdog ends a wait for ever.
template <typename F>
void PumpUntil(F&& condition) {
  constexpr UINT slice = 20; // ms
  MSG message;
  while (!condition()) {
    MsgWaitForMultipleObjectsEx(0, nullptr, slice, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    while (!condition() && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
  }
}

} // namespace kiv::test
