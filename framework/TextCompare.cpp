#include <framework/TextCompare.h>

#include <platform/LetterCase.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(_WIN32)
#include <platform/Types.h>
#endif

namespace kiv {

namespace {

constexpr bool IsAscii(wchar_t c) {
  return static_cast<std::uint32_t>(c) < 0x80;
}

// How many units at the start are the same, case and all, in whole blocks: paths of one folder differ at their end
// only.
std::size_t SameBlocks(std::wstring_view a, std::wstring_view b, std::size_t common) noexcept {
  constexpr std::size_t block = 16 / sizeof(wchar_t);
  std::size_t at = 0;
  while (at + block <= common && std::memcmp(a.data() + at, b.data() + at, 16) == 0) at += block;
  return at;
}

#if defined(_WIN32)

int CompareRest(std::wstring_view a, std::wstring_view b) noexcept {
  // Answers 1, 2, 3 for less, equal, greater.
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) - 2;
}

#else

int CompareRest(std::wstring_view a, std::wstring_view b) noexcept {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (a[i] == b[i]) continue;
    const wchar_t x = ToUpperCase(a[i]);
    const wchar_t y = ToUpperCase(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

#endif

} // namespace

int CompareText(std::wstring_view pFirst, std::wstring_view pSecond) noexcept {
  const std::size_t common = std::min(pFirst.size(), pSecond.size());
  for (std::size_t i = SameBlocks(pFirst, pSecond, common); i < common; ++i) {
    const wchar_t a = pFirst[i];
    const wchar_t b = pSecond[i];
    if (!IsAscii(a) || !IsAscii(b)) return CompareRest(pFirst.substr(i), pSecond.substr(i));
    const wchar_t x = ToUpperCase(a);
    const wchar_t y = ToUpperCase(b);
    if (x != y) return x < y ? -1 : 1;
  }
  return pFirst.size() == pSecond.size() ? 0 : pFirst.size() < pSecond.size() ? -1 : 1;
}

bool SameText(std::wstring_view pFirst, std::wstring_view pSecond) noexcept {
  return pFirst.size() == pSecond.size() && CompareText(pFirst, pSecond) == 0;
}

bool StartsText(std::wstring_view pPrefix, std::wstring_view pText) noexcept {
  return SameText(pPrefix, pText.substr(0, pPrefix.size()));
}

} // namespace kiv
