#include <core/NetworkDomain.h>

#include <framework/TextCompare.h>
#include <platform/Characters.h>

#include <algorithm>

namespace kiv {

namespace {

// What stands for a domain behind an IPv6 address in a UNC name.
constexpr std::wstring_view AddressDomain = L"ipv6-literal.net";

bool IsIpv4Address(std::wstring_view host) {
  return std::all_of(host.begin(), host.end(), [](wchar_t c) { return c == L'.' || IsAsciiDigit(c); });
}

} // namespace

std::wstring DomainOfNetworkName(std::wstring_view pName) {
  if (!pName.starts_with(LR"(\\)") || pName.starts_with(LR"(\\?\)") || pName.starts_with(LR"(\\.\)")) return {};
  std::wstring_view host = pName.substr(2);
  host = host.substr(0, host.find_first_of(LR"(\/)"));
  // "\\server@SSL@8443\share" is a name with a port.
  host = host.substr(0, host.find(L'@'));
  const std::size_t dot = host.find(L'.');
  if (dot == std::wstring_view::npos || IsIpv4Address(host)) return {};
  const std::wstring_view domain = host.substr(dot + 1);
  return SameText(domain, AddressDomain) ? std::wstring() : std::wstring(domain);
}

} // namespace kiv
