#include <core/ShellLinkHelper.h>

#include <core/FileFunctions.h>
#include <core/ItemIdList.h>
#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <core/SpecialFolders.h>
#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>

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

ComPtr<IItemIdList> TargetOf(const ComPtr<IShellLinkW>& link) {
  if (!link) return nullptr;
  PIDLIST_ABSOLUTE raw = nullptr;
  const HRESULT hr = GuardedCall([&] { return link->GetIDList(&raw); });
  TUniqueItemIdList list(raw);
  if (FAILED(hr) || !list) return nullptr;
  return TKivItemIdList::Create(std::move(list));
}

} // namespace

ComPtr<IShellLinkW> TShellLinkHelper::GetIShellLink(std::wstring_view pPath) {
  const std::wstring file = LinkFile(pPath);
  if (file.empty()) return nullptr;
  const ScopedErrorMode mode;
  void* made = nullptr;
  if (FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IidOf<IShellLinkW>(), &made))) {
    return nullptr;
  }
  ComPtr<IShellLinkW> link;
  link.Attach(static_cast<IShellLinkW*>(made));
  const auto persistent = link.MaybeAs<IPersistFile>();
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

} // namespace kiv
