#pragma once

namespace kiv {

// Tests that don't depend on a locale. They take char, wchar_t and char32_t.

template <typename T>
constexpr bool IsAsciiDigit(T c) noexcept {
  return c >= T{'0'} && c <= T{'9'};
}
template <typename T>
constexpr bool IsAsciiLetter(T c) noexcept {
  return (c >= T{'a'} && c <= T{'z'}) || (c >= T{'A'} && c <= T{'Z'});
}
/// The value of a hexadecimal digit, -1 for anything else.
template <typename T>
constexpr int HexDigitValue(T c) noexcept {
  if (IsAsciiDigit(c)) return static_cast<int>(c - T{'0'});
  if (c >= T{'a'} && c <= T{'f'}) return static_cast<int>(c - T{'a'}) + 10;
  if (c >= T{'A'} && c <= T{'F'}) return static_cast<int>(c - T{'A'}) + 10;
  return -1;
}

/// The first and the second half of a character beyond 16 bits in UTF-16.
template <typename T>
constexpr bool IsHighSurrogate(T c) noexcept {
  return c >= T{0xD800} && c <= T{0xDBFF};
}
template <typename T>
constexpr bool IsLowSurrogate(T c) noexcept {
  return c >= T{0xDC00} && c <= T{0xDFFF};
}

} // namespace kiv
