#include <platform/fill/ElementName.h>

#include <algorithm>
#include <string>

namespace kiv {

namespace {

constexpr std::size_t LongestName = 255;

bool IsDeviceName(std::wstring_view name) {
  // An extension doesn't help, nor do blanks before it.
  name = name.substr(0, name.find(L'.'));
  while (!name.empty() && name.back() == L' ') name.remove_suffix(1);
  std::wstring upper(name);
  for (wchar_t& c : upper) {
    if (c >= L'a' && c <= L'z') c = static_cast<wchar_t>(c - L'a' + L'A');
  }
  for (const std::wstring_view device : {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"}) {
    if (upper == device) return true;
  }
  if (upper.size() != 4 || (!upper.starts_with(L"COM") && !upper.starts_with(L"LPT"))) return false;
  const wchar_t port = upper[3];
  // The superscript digits of Latin-1 count as well.
  return (port >= L'1' && port <= L'9') || port == L'\u00B9' || port == L'\u00B2' || port == L'\u00B3';
}

} // namespace

bool IsElementName(std::wstring_view pName) {
  if (pName.empty() || pName == L"." || pName == L"..") return false;
  return std::none_of(pName.begin(), pName.end(), [](wchar_t c) {
    return c < L' ' || std::wstring_view(LR"(\/:*?"<>|)").find(c) != std::wstring_view::npos;
  });
}

bool IsNewElementName(std::wstring_view pName) {
  return IsElementName(pName) && pName.size() <= LongestName && pName.back() != L' ' && pName.back() != L'.' &&
         !IsDeviceName(pName);
}

} // namespace kiv
