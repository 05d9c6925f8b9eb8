#include <core/ItemIdListFunctions.h>

#include <core/PathFunctions.h>
#include <core/PathmereError.h>
#include <core/ShellLinkHelper.h>
#include <core/SpecialFolders.h>
#include <platform/FaultGuard.h>
#include <platform/fill/FileStorage.h>

#include <shobjidl.h>

namespace kiv {

namespace {

bool IsSearchFolder(IItemIdList* list) {
  if (list->IsInvalid()) return IsSearchFolderPath(list->DisplayPath());
  try {
    return IsSearchFolderPath(list->Path()) || IsSearchFolderPath(list->DisplayName(dnfAbsoluteParsing));
  } catch (const EPathmereError&) {
    return false; // a folder that faults is none
  }
}

} // namespace

std::wstring GetPathFromSpecialFolder(TKivShellFolder pFolder) {
  return TKivShellFolderHelper::ToPath(pFolder);
}

bool IsInSearchFolder(IItemIdList* pItemIdList, bool pAcceptSearchFolder) {
  if (!pItemIdList) return false;
  if (pAcceptSearchFolder && IsSearchFolder(pItemIdList)) return true;
  return pItemIdList->Depth() > 0 && IsSearchFolder(pItemIdList->GetParent().Get());
}

std::wstring GetLinkTarget(std::wstring_view pPath) {
  const auto target = TShellLinkHelper::Resolve(pPath);
  return target ? target->Path() : std::wstring();
}

HRESULT GetFolderStorage(IItemIdList* pFolder, ComPtr<IStorage>& pStorage) {
  pStorage.Reset();
  ComPtr<IShellFolder> folder;
  if (const HRESULT hr = ComPtr<IItemIdList>(pFolder).As(folder); FAILED(hr)) return hr;
  void* found = nullptr;
  const HRESULT hr = GuardedCall([&] { return folder->QueryInterface(IidOf<IStorage>(), &found); });
  pStorage.Attach(static_cast<IStorage*>(found));
  if (hr != E_NOINTERFACE || !pFolder->HasAttributes(SFGAO_FILESYSTEM)) return hr;
  return CreateFileStorage(pFolder->Path(), pStorage);
}

} // namespace kiv
