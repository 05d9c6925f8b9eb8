#include <platform/LetterCase.h>

#include <platform/Types.h>

namespace kiv {

wchar_t ToUpperCaseBeyondAscii(wchar_t c) noexcept {
  // A single character travels in place of the pointer.
  const auto upper =
      static_cast<wchar_t>(reinterpret_cast<ULONG_PTR>(CharUpperW(reinterpret_cast<wchar_t*>(ULONG_PTR{c}))));
  return upper < 0x80 ? c : upper;
}

} // namespace kiv
