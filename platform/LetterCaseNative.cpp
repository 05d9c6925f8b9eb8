#include <platform/LetterCase.h>

#include <cwctype>

#include <locale.h>
#include <wctype.h>

namespace kiv {

wchar_t ToUpperCaseBeyondAscii(wchar_t c) noexcept {
  // The process's own locale may know ASCII only. Never freed: needed until the last thread ends.
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  const auto unit = static_cast<std::wint_t>(c);
  const auto upper = static_cast<wchar_t>(locale ? towupper_l(unit, locale) : std::towupper(unit));
  return static_cast<unsigned>(upper) < 0x80 ? c : upper;
}

} // namespace kiv
