#pragma once

namespace kiv {

/// Simple upper-casing of one code unit to one, for comparisons: the same for every user's language, and without the
/// few letters beyond ASCII that have an ASCII capital (dotless i, long s), which stay themselves. The table is the
/// platform's ("CharUpper") or, elsewhere, the C library's for Unicode. Any thread.
wchar_t ToUpperCaseBeyondAscii(wchar_t c) noexcept;

inline wchar_t ToUpperCase(wchar_t c) noexcept {
  if (static_cast<unsigned>(c) >= 0x80) return ToUpperCaseBeyondAscii(c);
  return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - (L'a' - L'A')) : c;
}

} // namespace kiv
