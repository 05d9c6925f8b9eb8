#pragma once

#include <atomic>
#include <cstdint>

namespace kiv {

/// Atomic operations that the language lacks.
class TKivInterlocked {
public:
  TKivInterlocked() = delete;

  /// Raises a shared number to at least `pNewValue`. True if it wrote, false if the number was as high already.
  static bool SetEqualOrHigher(std::atomic<std::uint64_t>& pVar, std::uint64_t pNewValue) noexcept {
    std::uint64_t found = pVar.load();
    while (found < pNewValue) {
      if (pVar.compare_exchange_weak(found, pNewValue)) return true;
    }
    return false;
  }
};

} // namespace kiv
