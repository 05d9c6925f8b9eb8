#include <platform/fill/Revalidation.h>

#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>
#include <platform/ShellApi.h>
#include <platform/TakeResult.h>
#include <platform/fill/LiteralPath.h>

#include <string>
#include <string_view>

namespace kiv {

namespace {

HRESULT GetName(IShellItem* item, SIGDN kind, TUniqueTaskText& name) {
  wchar_t* text = nullptr;
  const HRESULT hr = GuardedCall([&] { return item->GetDisplayName(kind, &text); });
  name = TakeText(hr, text);
  if (FAILED(hr)) return hr;
  return name ? S_OK : E_UNEXPECTED;
}

HRESULT CheckDisk(const std::wstring& path) {
  const ScopedErrorMode mode;
  if (GetFileAttributesW(LiteralPath(path).c_str()) != INVALID_FILE_ATTRIBUTES) return S_OK;
  return HRESULT_FROM_WIN32(GetLastError());
}

HRESULT Give(HRESULT hr, PIDLIST_ABSOLUTE raw, TUniqueItemIdList& list) {
  list = TakeItemIdList(hr, raw);
  if (FAILED(hr)) return hr;
  return list ? S_OK : E_UNEXPECTED;
}

HRESULT Parse(IShellItem* item, TUniqueItemIdList& list) {
  TUniqueTaskText name;
  const HRESULT named = GetName(item, SIGDN_DESKTOPABSOLUTEPARSING, name);
  if (FAILED(named)) return named;
  PIDLIST_ABSOLUTE raw = nullptr;
  const HRESULT hr = GuardedExport(ShellApi().SHParseDisplayName, name.Get(), nullptr, &raw, SFGAOF{0}, nullptr);
  return Give(hr, raw, list);
}

HRESULT TakeOwn(IShellItem* item, TUniqueItemIdList& list) {
  PIDLIST_ABSOLUTE raw = nullptr;
  const HRESULT hr = GuardedExport(ShellApi().SHGetIDListFromObject, item, &raw);
  return Give(hr, raw, list);
}

} // namespace

HRESULT Revalidate(IShellItem* pItem, TUniqueItemIdList& pList) {
  pList.Reset();
  TUniqueTaskText path;
  // Some systems give a class identifier where there is no path.
  const bool on_disk =
      SUCCEEDED(GetName(pItem, SIGDN_FILESYSPATH, path)) && !std::wstring_view(path.Get()).starts_with(L"::");
  // Before the shell: some parse what isn't there.
  if (on_disk) {
    const HRESULT there = CheckDisk(path.Get());
    if (FAILED(there)) return there;
  }
  const HRESULT parsed = Parse(pItem, pList);
  // Nor does each parse all that is there: a name that ends with a dot.
  return FAILED(parsed) && on_disk ? TakeOwn(pItem, pList) : parsed;
}

} // namespace kiv
