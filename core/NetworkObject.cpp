#include <core/NetworkObject.h>

#include <core/NameInFolder.h>
#include <core/NetworkDomain.h>
#include <platform/FaultGuard.h>
#include <platform/ShellApi.h>

#include <winnetwk.h>

#include <algorithm>
#include <functional>
#include <iterator>

namespace kiv {

namespace {

// The record, and behind it the texts that it points to ("SHGetDataFromIDListW").
union TNetworkData {
  NETRESOURCEW resource;
  wchar_t text[2048];
};

struct TNetworkResource {
  DWORD displayType = 0;
  std::wstring remoteName;
};

TNetworkResource ReadNetworkResource(IShellFolder* folder, PCUITEMID_CHILD item) {
  TNetworkData data{};
  const HRESULT hr = GuardedExport(ShellApi().SHGetDataFromIDListW, folder, item, SHGDFIL_NETRESOURCE, &data,
                                   static_cast<int>(sizeof(data)));
  if (FAILED(hr)) return {};
  TNetworkResource result;
  result.displayType = data.resource.dwDisplayType;
  // A text that isn't in the buffer, or has no end there, is none.
  const auto* const name = reinterpret_cast<const wchar_t*>(data.resource.lpRemoteName);
  const auto* const last = std::end(data.text);
  if (std::less<>()(name, std::begin(data.text)) || !std::less<>()(name, last)) return result;
  const auto* const end = std::find(name, last, L'\0');
  if (end != last) result.remoteName.assign(name, end);
  return result;
}

} // namespace

std::wstring GetDomainFromIdList(IShellFolder* pFolder, PCUITEMID_CHILD pItem) {
  if (!pFolder || !pItem) return {};
  const TNetworkResource resource = ReadNetworkResource(pFolder, pItem);
  std::wstring name = resource.remoteName;
  if (resource.displayType == RESOURCEDISPLAYTYPE_DOMAIN) return name;
  if (name.empty()) GetNameInFolder(pFolder, pItem, SHGDN_FORPARSING, name);
  return DomainOfNetworkName(name);
}

} // namespace kiv
