// What the user wants done with the objects of a folder, on a worker.
#include <folder_view/FolderWork.h>

#include <core/ItemIdListFunctions.h>
#include <platform/FaultGuard.h>
#include <platform/ShellApi.h>
#include <platform/Types.h>

#include <objidl.h>
#include <shellapi.h>

namespace kiv::sample {

namespace {

constexpr int MostNames = 10'000;

std::wstring Quoted(const std::wstring& name) {
  return L"\u201C" + name + L"\u201D";
}

// What the shell's file operations answer are codes of the system's, but for some of their own ("SHFileOperation").
HRESULT CodeOfOperation(int answer) {
  switch (answer) {
  case 0x78: // DE_ACCESSDENIEDSRC
    return E_ACCESSDENIED;
  case 0x7C: // DE_INVALIDFILES
    return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  default:
    return answer == 0 ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(answer));
  }
}

} // namespace

TFailure RenameObject(const TOpenedFolder& pFolder, const std::wstring& pName, const std::wstring& pNewName) {
  ComPtr<IStorage> storage;
  HRESULT hr = GetFolderStorage(pFolder.list.Get(), storage);
  if (SUCCEEDED(hr)) hr = GuardedCall([&] { return storage->RenameElement(pName.c_str(), pNewName.c_str()); });
  return {Quoted(pName) + L" can't be renamed to " + Quoted(pNewName) + L".", hr};
}

TFailure MakeFolder(const TOpenedFolder& pFolder, std::wstring& pName) {
  constexpr DWORD mode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_FAILIFTHERE;
  ComPtr<IStorage> storage;
  HRESULT hr = GetFolderStorage(pFolder.list.Get(), storage);
  for (int i = 1; SUCCEEDED(hr) && i < MostNames; ++i) {
    pName = i == 1 ? L"New folder" : L"New folder (" + std::to_wstring(i) + L")";
    ComPtr<IStorage> made;
    hr = GuardedCall([&] { return storage->CreateStorage(pName.c_str(), mode, 0, 0, &made); });
    if (SUCCEEDED(hr)) break;
    if (hr == STG_E_FILEALREADYEXISTS) hr = S_OK;
  }
  return {L"A new folder can't be made here.", hr};
}

TFailure DeleteObjects(const std::vector<std::wstring>& pPaths) {
  std::wstring list;
  for (const std::wstring& path : pPaths) (list += path) += L'\0';
  SHFILEOPSTRUCTW operation{};
  operation.wFunc = FO_DELETE;
  operation.pFrom = list.c_str(); // with a second zero at its end
  operation.fFlags = FOF_ALLOWUNDO | FOF_NOCONFIRMATION | FOF_NOERRORUI | FOF_SILENT;
  int answer = 0;
  HRESULT hr = GuardedCall([&] { answer = SHFileOperationW(&operation); });
  if (SUCCEEDED(hr)) hr = operation.fAnyOperationsAborted ? E_ABORT : CodeOfOperation(answer);
  const std::wstring what = pPaths.size() == 1 ? Quoted(pPaths.front()) : std::to_wstring(pPaths.size()) + L" objects";
  return {what + L" can't be deleted.", hr};
}

TFailure OpenObject(const ComPtr<IItemIdList>& pObject, const std::wstring& pName) {
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof(info);
  info.fMask = SEE_MASK_IDLIST | SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
  info.lpIDList = const_cast<ITEMIDLIST_ABSOLUTE*>(pObject->WindowsPointer());
  info.nShow = SW_SHOWNORMAL;
  const auto execute = ShellApi().ShellExecuteExW;
  const HRESULT hr =
      !execute ? E_NOTIMPL : GuardedCall([&] { return execute(&info) ? S_OK : HRESULT_FROM_WIN32(GetLastError()); });
  return {Quoted(pName) + L" can't be opened.", hr};
}

} // namespace kiv::sample
