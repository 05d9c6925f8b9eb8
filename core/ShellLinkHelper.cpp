#include <core/ShellLinkHelper.h>

#include <core/FileFunctions.h>
#include <core/ItemIdList.h>
#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <core/PathUtils.h>
#include <core/SpecialFolders.h>
#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>
#include <platform/ShellApi.h>
#include <platform/TakeResult.h>
#include <platform/fill/ElementName.h>

namespace kiv {

namespace {

// A network place is a folder with its link inside.
std::wstring LinkFile(std::wstring_view path) {
  if (HasFileExtension(path, L".LNK")) return std::wstring(path);
  const std::wstring places = TKivShellFolderHelper::ToPath(SF_NETHOOD);
  if (places.empty() || !TKivPathList::IsSubPathOf(places, path)) return {};
  std::wstring inner = ExcludeTrailingDelimiter(path) + LR"(\target.lnk)";
  return FileOrFolderExists(inner) ? inner : std::wstring(path);
}

ComPtr<IShellLinkW> MakeLink() {
  void* made = nullptr;
  ComPtr<IShellLinkW> link;
  if (SUCCEEDED(GuardedExport(ShellApi().CoCreateInstance, CLSID_ShellLink, nullptr, DWORD{CLSCTX_INPROC_SERVER},
                              IidOf<IShellLinkW>(), &made))) {
    link.Attach(static_cast<IShellLinkW*>(made));
  }
  return link;
}

ComPtr<IItemIdList> TargetOf(const ComPtr<IShellLinkW>& link) {
  if (!link) return nullptr;
  PIDLIST_ABSOLUTE raw = nullptr;
  const HRESULT hr = GuardedCall([&] { return link->GetIDList(&raw); });
  TUniqueItemIdList list = TakeItemIdList(hr, raw);
  if (!list) return nullptr;
  return TKivItemIdList::Create(std::move(list));
}

} // namespace

ComPtr<IShellLinkW> TShellLinkHelper::GetIShellLink(std::wstring_view pPath) {
  const std::wstring file = LinkFile(pPath);
  if (file.empty()) return nullptr;
  const ScopedErrorMode mode;
  const ComPtr<IShellLinkW> link = MakeLink();
  const auto persistent = link ? link.MaybeAs<IPersistFile>() : nullptr;
  if (!persistent) return nullptr;
  const HRESULT hr = GuardedCall([&] { return persistent->Load(file.c_str(), STGM_READ); });
  return SUCCEEDED(hr) ? link : nullptr;
}

ComPtr<IShellLinkW> TShellLinkHelper::GetIShellLink(IItemIdList* pItemIdList) {
  return pItemIdList && pItemIdList->ShellItem() ? GetIShellLink(pItemIdList->Path()) : nullptr;
}

ComPtr<IItemIdList> TShellLinkHelper::Resolve(std::wstring_view pPath) {
  return TargetOf(GetIShellLink(pPath));
}

ComPtr<IItemIdList> TShellLinkHelper::Resolve(IItemIdList* pSourceItemIdList) {
  return TargetOf(GetIShellLink(pSourceItemIdList));
}

ComPtr<IItemIdList> TShellLinkHelper::AddLinkTo(IItemIdList* pSourceItemIdList, IItemIdList* pDestination,
                                                std::wstring_view pLinkName) {
  const PCIDLIST_ABSOLUTE source = pSourceItemIdList ? pSourceItemIdList->WindowsPointer() : nullptr;
  const std::wstring folder = pDestination ? pDestination->Path() : std::wstring();
  const std::wstring name = std::wstring(pLinkName) + (HasFileExtension(pLinkName, L".LNK") ? L"" : L".lnk");
  if (!source || folder.empty() || pLinkName.empty() || !IsNewElementName(name)) return nullptr;
  const ScopedErrorMode mode;
  const std::wstring file = TPathUtils::Combine(folder, name);
  const ComPtr<IShellLinkW> link = MakeLink();
  const auto persistent = link ? link.MaybeAs<IPersistFile>() : nullptr;
  if (!persistent || FileOrFolderExists(file)) return nullptr;
  if (FAILED(GuardedCall([&] { return link->SetIDList(source); }))) return nullptr;
  // Success alone counts: S_FALSE says that nothing was written.
  if (GuardedCall([&] { return persistent->Save(file.c_str(), TRUE); }) != S_OK) return nullptr;
  return TKivItemIdList::Create(file);
}

} // namespace kiv
