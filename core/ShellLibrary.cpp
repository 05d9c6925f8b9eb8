#include <core/ShellLibrary.h>

#include <platform/ComPtr.h>
#include <platform/FaultGuard.h>
#include <platform/Handles.h>
#include <platform/ShellApi.h>
#include <platform/TakeResult.h>

#include <shobjidl.h>

namespace kiv {

namespace {

constexpr CLSID ShellLibraryClass = ParseGuid("{D9B3211D-E57F-4426-AAEF-30A806ADD397}"); // CLSID_ShellLibrary

ComPtr<IShellItem> ItemOf(PCIDLIST_ABSOLUTE list) {
  void* found = nullptr;
  ComPtr<IShellItem> item;
  if (SUCCEEDED(GuardedExport(ShellApi().SHCreateItemFromIDList, list, IidOf<IShellItem>(), &found))) {
    item.Attach(static_cast<IShellItem*>(found));
  }
  return item;
}

ComPtr<IShellLibrary> LibraryOf(IShellItem* item) {
  void* found = nullptr;
  ComPtr<IShellLibrary> library;
  const HRESULT hr = GuardedExport(ShellApi().CoCreateInstance, ShellLibraryClass, nullptr, DWORD{CLSCTX_INPROC_SERVER},
                                   IidOf<IShellLibrary>(), &found);
  if (FAILED(hr) || !found) return library;
  library.Attach(static_cast<IShellLibrary*>(found));
  if (FAILED(GuardedCall([&] { return library->LoadLibraryFromItem(item, STGM_READ); }))) library.Reset();
  return library;
}

} // namespace

std::wstring GetDefaultSavePathFromLibrary(PCIDLIST_ABSOLUTE pItemIdList) {
  if (!pItemIdList) return {};
  const ComPtr<IShellItem> item = ItemOf(pItemIdList);
  const ComPtr<IShellLibrary> library = item ? LibraryOf(item.Get()) : nullptr;
  if (!library) return {};
  void* found = nullptr;
  if (FAILED(GuardedCall([&] { return library->GetDefaultSaveFolder(DSFT_DETECT, IidOf<IShellItem>(), &found); }))) {
    return {};
  }
  ComPtr<IShellItem> folder;
  folder.Attach(static_cast<IShellItem*>(found));
  if (!folder) return {};
  wchar_t* raw = nullptr;
  const HRESULT hr = GuardedCall([&] { return folder->GetDisplayName(SIGDN_FILESYSPATH, &raw); });
  const TUniqueTaskText path = TakeText(hr, raw);
  return path ? path.Get() : std::wstring();
}

} // namespace kiv
