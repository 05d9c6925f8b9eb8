#pragma once

#include <platform/Export.h>

#include <cstdint>

namespace kiv {

/// Dots per inch that lengths in code are meant for.
inline constexpr int DefaultDpi = 96;

/// `pValue` * `pNumerator` / `pDenominator`, halves rounded away from zero. The result must fit.
constexpr int MulDivRounded(int pValue, int pNumerator, int pDenominator) noexcept {
  const std::int64_t product = std::int64_t{pValue} * pNumerator;
  const std::int64_t magnitude = product < 0 ? -product : product;
  const std::int64_t divisor = pDenominator < 0 ? -std::int64_t{pDenominator} : pDenominator;
  const std::int64_t quotient = (magnitude + divisor / 2) / divisor;
  return static_cast<int>((product < 0) != (pDenominator < 0) ? -quotient : quotient);
}

/// A length that was written down for 96 dots per inch, in the pixels of `pDpi` dots per inch.
constexpr int ScaledPixels(int pPixels, int pDpi) noexcept {
  return MulDivRounded(pPixels, pDpi, DefaultDpi);
}

/// The same at the system's dots per inch: for what belongs to no window, or before there is one. Any thread.
KIV_EXPORT int ScaledPixels(int pPixels);

} // namespace kiv
