#include <core/PathUtils.h>

#include <platform/Characters.h>

#include <algorithm>

// The tests of addresses accept what these patterns match somewhere from the text's start on, with "\s" and "\d" for
// ASCII and a "$" that also stands in front of one line feed at the end; case is ignored in the first and the last:
//
// URL   ^(([a-zA-Z0-9]{2,}:[^\\{}|^~\[\]`<>#%"])|(file:\\))
// IPv4  ^OCTET\.OCTET\.OCTET\.OCTET$             with OCTET 25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?
// IPv6  ^\s*(ADDRESS)(%.+)?\s*$                  with H for [0-9A-Fa-f]{1,4} and V4 for four numbers up to 255 without
//                                                leading zeros:
//       (H:){7}(H|:)
//       (H:){n}((:H){1,7-n}|(:H){0,5-n}:V4|:)    n from 1 to 5
//       (H:){6}(:H|V4|:)
//       :((:H){1,7}|(:H){0,5}:V4|:)

namespace kiv {

namespace {

constexpr std::size_t None = std::wstring_view::npos;

bool IsSchemeCharacter(wchar_t c) {
  return IsAsciiLetter(c) || IsAsciiDigit(c);
}

bool IsSpace(wchar_t c) {
  return c == L' ' || (c >= L'\t' && c <= L'\r');
}

// Reads a text from its start on. What isn't there isn't taken.
class TReader {
public:
  explicit TReader(std::wstring_view pText) : fRest(pText) {}

  std::wstring_view Rest() const { return fRest; }
  bool Take(wchar_t c) {
    if (!fRest.starts_with(c)) return false;
    fRest.remove_prefix(1);
    return true;
  }
  void SkipSpaces() {
    while (!fRest.empty() && IsSpace(fRest.front())) fRest.remove_prefix(1);
  }

  // All digits that stand here, if they make up a number from 0 to 255. The number has three digits at most.
  bool TakeOctet(bool leading_zeros) {
    std::size_t digits = 0;
    int value = 0;
    for (; digits < fRest.size() && IsAsciiDigit(fRest[digits]); ++digits) {
      if (digits == 3) return false;
      value = value * 10 + (fRest[digits] - L'0');
    }
    if (digits == 0 || value > 255 || (!leading_zeros && digits > 1 && fRest[0] == L'0')) return false;
    fRest.remove_prefix(digits);
    return true;
  }
  bool TakeIpv4(bool leading_zeros) {
    for (int octet = 0; octet < 4; ++octet) {
      if ((octet > 0 && !Take(L'.')) || !TakeOctet(leading_zeros)) return false;
    }
    return true;
  }
  // One to four hexadecimal digits. More aren't a group.
  bool TakeGroup() {
    std::size_t digits = 0;
    while (digits < fRest.size() && HexDigitValue(fRest[digits]) >= 0) ++digits;
    if (digits == 0 || digits > 4) return false;
    fRest.remove_prefix(digits);
    return true;
  }

private:
  std::wstring_view fRest;
};

// What may follow an IPv6 address: a zone, then white space.
bool IsIpv6End(std::wstring_view rest) {
  if (rest.starts_with(L'%')) {
    const std::size_t zone_end = std::min(rest.find(L'\n'), rest.size());
    if (zone_end == 1) return false;
    rest.remove_prefix(zone_end);
  }
  return std::all_of(rest.begin(), rest.end(), &IsSpace);
}

bool IsIpv4End(TReader reader) {
  return reader.TakeIpv4(false) && IsIpv6End(reader.Rest());
}

// Behind "::": more groups with ":" between, the last of them perhaps an IPv4 address. `groups` stand in front of it.
bool IsCompressedEnd(TReader reader, int groups) {
  for (int more = 0;;) {
    if (more <= 5 - groups && IsIpv4End(reader)) return true;
    if (!reader.TakeGroup()) return more == 0 && IsIpv6End(reader.Rest());
    if (++more > 7 - groups) return false;
    if (!reader.Take(L':')) return IsIpv6End(reader.Rest());
  }
}

} // namespace

bool TPathUtils::IsURL(std::wstring_view pUrl) noexcept {
  if (pUrl.size() < 4 || pUrl[1] == L':' || pUrl[1] == L'\\') return false;
  const auto scheme_end = std::find_if_not(pUrl.begin(), pUrl.end(), &IsSchemeCharacter);
  const auto length = static_cast<std::size_t>(scheme_end - pUrl.begin());
  if (length < 2 || length + 1 >= pUrl.size() || pUrl[length] != L':') return false;
  if (std::wstring_view(L"\\{}|^~[]`<>#%\"").find(pUrl[length + 1]) == None) return true;
  constexpr std::wstring_view file = L"file";
  const auto same = [](wchar_t a, wchar_t b) { return a == (b >= L'A' && b <= L'Z' ? b + (L'a' - L'A') : b); };
  return pUrl[length + 1] == L'\\' && std::equal(file.begin(), file.end(), pUrl.begin(), scheme_end, same);
}

bool TPathUtils::IsValidIPv4(std::wstring_view pAddress) noexcept {
  TReader reader(pAddress);
  return reader.TakeIpv4(true) && (reader.Rest().empty() || reader.Rest() == L"\n");
}

bool TPathUtils::IsValidIPv6(std::wstring_view pAddress) noexcept {
  TReader reader(pAddress);
  reader.SkipSpaces();
  int groups = 0;
  if (!reader.Take(L':')) {
    for (;; ++groups) {
      if (groups == 6 && IsIpv4End(reader)) return true;
      if (!reader.TakeGroup()) break;
      if (groups == 7) return IsIpv6End(reader.Rest());
      if (!reader.Take(L':')) return false;
    }
    if (groups == 0) return false;
  }
  return reader.Take(L':') && IsCompressedEnd(reader, groups);
}

} // namespace kiv
