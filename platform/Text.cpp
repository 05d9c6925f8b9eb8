#include <platform/Text.h>

#include <platform/Characters.h>

#include <cstdint>

namespace kiv {

namespace {

constexpr char32_t ReplacementCharacter = 0xFFFD;

// The code point at `at`, which moves behind it; a lone surrogate as it stands. Serves 16- and 32-bit wchar_t.
char32_t NextCodePoint(std::wstring_view text, std::size_t& at) {
  const auto unit = static_cast<char32_t>(text[at++]);
  if (IsHighSurrogate(unit) && at < text.size()) {
    const auto low = static_cast<char32_t>(text[at]);
    if (IsLowSurrogate(low)) {
      ++at;
      return 0x10000 + ((unit - 0xD800) << 10U) + (low - 0xDC00);
    }
  }
  return unit;
}

constexpr bool IsScalarValue(char32_t c) {
  return c <= 0x10FFFF && !(c >= 0xD800 && c <= 0xDFFF);
}

void AppendUtf8(std::string& out, char32_t c) {
  const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | c >> 6U);
    put(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    put(0xE0 | c >> 12U);
    put(0x80 | (c >> 6U & 0x3F));
    put(0x80 | (c & 0x3F));
  } else {
    put(0xF0 | c >> 18U);
    put(0x80 | (c >> 12U & 0x3F));
    put(0x80 | (c >> 6U & 0x3F));
    put(0x80 | (c & 0x3F));
  }
}

void AppendWide(std::wstring& out, char32_t c) {
  if constexpr (sizeof(wchar_t) == 2) {
    if (c >= 0x10000) {
      out.push_back(static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10U)));
      out.push_back(static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
      return;
    }
  }
  out.push_back(static_cast<wchar_t>(c));
}

// Length of the sequence that a lead byte announces, and the least code point that may need it; 0: no lead byte.
struct TLead {
  std::size_t length;
  char32_t least;
  char32_t bits;
};

TLead LeadOf(unsigned char byte) {
  if (byte < 0x80) return {1, 0, byte};
  if (byte >= 0xC2 && byte <= 0xDF) return {2, 0x80, static_cast<char32_t>(byte & 0x1F)};
  if (byte >= 0xE0 && byte <= 0xEF) return {3, 0x800, static_cast<char32_t>(byte & 0x0F)};
  if (byte >= 0xF0 && byte <= 0xF4) return {4, 0x10000, static_cast<char32_t>(byte & 0x07)};
  return {0, 0, 0};
}

} // namespace

std::string ToUtf8(std::wstring_view pText) {
  std::string out;
  out.reserve(pText.size());
  for (std::size_t at = 0; at < pText.size();) {
    const char32_t c = NextCodePoint(pText, at);
    AppendUtf8(out, IsScalarValue(c) ? c : ReplacementCharacter);
  }
  return out;
}

std::wstring FromUtf8(std::string_view pText) {
  std::wstring out;
  out.reserve(pText.size());
  for (std::size_t at = 0; at < pText.size();) {
    const TLead lead = LeadOf(static_cast<unsigned char>(pText[at]));
    char32_t c = lead.bits;
    std::size_t taken = lead.length == 0 ? 0 : 1;
    while (taken != 0 && taken < lead.length) {
      const auto byte = at + taken < pText.size() ? static_cast<unsigned char>(pText[at + taken]) : 0U;
      taken = (byte & 0xC0U) == 0x80U ? taken + 1 : 0;
      c = c << 6U | (byte & 0x3FU);
    }
    const bool valid = taken != 0 && IsScalarValue(c) && c >= lead.least;
    AppendWide(out, valid ? c : ReplacementCharacter);
    at += valid ? taken : 1;
  }
  return out;
}

bool IsWellFormed(std::wstring_view pText) {
  for (std::size_t at = 0; at < pText.size();) {
    if (!IsScalarValue(NextCodePoint(pText, at))) return false;
  }
  return true;
}

} // namespace kiv
