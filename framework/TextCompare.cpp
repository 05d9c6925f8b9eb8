#include <framework/TextCompare.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#include <platform/Types.h>
#else
#include <cwctype>
#include <locale.h>
#include <wctype.h>
#endif

namespace kiv {

namespace {

constexpr bool IsAscii(wchar_t c) {
  return static_cast<std::uint32_t>(c) < 0x80;
}

constexpr wchar_t AsciiUpper(wchar_t c) {
  return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - (L'a' - L'A')) : c;
}

#if defined(_WIN32)

int CompareRest(std::wstring_view a, std::wstring_view b) noexcept {
  // Answers 1, 2, 3 for less, equal, greater.
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) - 2;
}

#else

wchar_t Upper(wchar_t c) noexcept {
  if (IsAscii(c)) return AsciiUpper(c);
  // The process's own locale may know ASCII only. Never freed: needed until the last thread ends.
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  const auto unit = static_cast<std::wint_t>(c);
  const auto upper = static_cast<wchar_t>(locale ? towupper_l(unit, locale) : std::towupper(unit));
  // The few letters with an ASCII capital (dotless i, long s) stay themselves, as on Windows.
  return IsAscii(upper) ? c : upper;
}

int CompareRest(std::wstring_view a, std::wstring_view b) noexcept {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (a[i] == b[i]) continue;
    const wchar_t x = Upper(a[i]);
    const wchar_t y = Upper(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

#endif

} // namespace

int CompareText(std::wstring_view pFirst, std::wstring_view pSecond) noexcept {
  const std::size_t common = std::min(pFirst.size(), pSecond.size());
  for (std::size_t i = 0; i < common; ++i) {
    const wchar_t a = pFirst[i];
    const wchar_t b = pSecond[i];
    if (!IsAscii(a) || !IsAscii(b)) return CompareRest(pFirst.substr(i), pSecond.substr(i));
    const wchar_t x = AsciiUpper(a);
    const wchar_t y = AsciiUpper(b);
    if (x != y) return x < y ? -1 : 1;
  }
  return pFirst.size() == pSecond.size() ? 0 : pFirst.size() < pSecond.size() ? -1 : 1;
}

bool SameText(std::wstring_view pFirst, std::wstring_view pSecond) noexcept {
  return pFirst.size() == pSecond.size() && CompareText(pFirst, pSecond) == 0;
}

} // namespace kiv
