#pragma once

#include <cstdint>

namespace kiv::test {

/// A real access violation, as foreign code has it.
inline void Crash() {
  // Not null itself: checks for undefined behaviour would trap before the access.
  auto* volatile nowhere = reinterpret_cast<volatile int*>(std::uintptr_t{0x10});
  *nowhere = 1;
}

} // namespace kiv::test
