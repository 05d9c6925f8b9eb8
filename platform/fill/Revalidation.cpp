#include <platform/fill/Revalidation.h>

#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>
#include <platform/ShellApi.h>

#include <string>
#include <string_view>

namespace kiv {

namespace {

HRESULT GetName(IShellItem* item, SIGDN kind, TUniqueTaskText& name) {
  wchar_t* text = nullptr;
  const HRESULT hr = GuardedCall([&] { return item->GetDisplayName(kind, &text); });
  name.Reset(text);
  if (FAILED(hr)) return hr;
  return name ? S_OK : E_UNEXPECTED;
}

// A path that is too long for plain file calls, in the form that they take.
std::wstring FileCallForm(const std::wstring& path) {
  if (path.size() < MAX_PATH - 12 || path.starts_with(LR"(\\?\)")) return path;
  return path.starts_with(LR"(\\)") ? LR"(\\?\UNC\)" + path.substr(2) : LR"(\\?\)" + path;
}

HRESULT CheckDisk(const std::wstring& path) {
  const ScopedErrorMode mode;
  if (GetFileAttributesW(FileCallForm(path).c_str()) != INVALID_FILE_ATTRIBUTES) return S_OK;
  return HRESULT_FROM_WIN32(GetLastError());
}

} // namespace

HRESULT Revalidate(IShellItem* pItem, TUniqueItemIdList& pList) {
  pList.Reset();
  TUniqueTaskText path;
  // Before the shell: some parse what isn't there. Others give a class identifier where there is no path.
  if (SUCCEEDED(GetName(pItem, SIGDN_FILESYSPATH, path)) && !std::wstring_view(path.Get()).starts_with(L"::")) {
    const HRESULT there = CheckDisk(path.Get());
    if (FAILED(there)) return there;
  }
  TUniqueTaskText name;
  const HRESULT named = GetName(pItem, SIGDN_DESKTOPABSOLUTEPARSING, name);
  if (FAILED(named)) return named;
  PIDLIST_ABSOLUTE raw = nullptr;
  const HRESULT hr = GuardedExport(ShellApi().SHParseDisplayName, name.Get(), nullptr, &raw, SFGAOF{0}, nullptr);
  pList.Reset(raw);
  if (FAILED(hr)) return hr;
  return pList ? S_OK : E_UNEXPECTED;
}

} // namespace kiv
