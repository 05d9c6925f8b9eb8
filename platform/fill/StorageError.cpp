#include <platform/fill/StorageError.h>

#include <platform/Handles.h>

#include <objbase.h>

namespace kiv {

namespace {

constexpr std::size_t LongestPath = 32767;

} // namespace

HRESULT StorageError(DWORD pError) noexcept {
  switch (pError) {
  case ERROR_FILE_NOT_FOUND:
    return STG_E_FILENOTFOUND;
  case ERROR_PATH_NOT_FOUND:
  case ERROR_BAD_NETPATH:
  case ERROR_BAD_NET_NAME:
  case ERROR_DIRECTORY:
    return STG_E_PATHNOTFOUND;
  case ERROR_TOO_MANY_OPEN_FILES:
    return STG_E_TOOMANYOPENFILES;
  case ERROR_ACCESS_DENIED:
  case ERROR_DIR_NOT_EMPTY:
    return STG_E_ACCESSDENIED;
  case ERROR_NOT_ENOUGH_MEMORY:
  case ERROR_OUTOFMEMORY:
    return STG_E_INSUFFICIENTMEMORY;
  case ERROR_WRITE_PROTECT:
    return STG_E_DISKISWRITEPROTECTED;
  case ERROR_WRITE_FAULT:
    return STG_E_WRITEFAULT;
  case ERROR_READ_FAULT:
    return STG_E_READFAULT;
  case ERROR_SHARING_VIOLATION:
    return STG_E_SHAREVIOLATION;
  case ERROR_LOCK_VIOLATION:
  case ERROR_USER_MAPPED_FILE:
    return STG_E_LOCKVIOLATION;
  case ERROR_FILE_EXISTS:
  case ERROR_ALREADY_EXISTS:
    return STG_E_FILEALREADYEXISTS;
  case ERROR_DISK_FULL:
  case ERROR_HANDLE_DISK_FULL:
    return STG_E_MEDIUMFULL;
  case ERROR_INVALID_NAME:
  case ERROR_BAD_PATHNAME:
  case ERROR_FILENAME_EXCED_RANGE:
    return STG_E_INVALIDNAME;
  case ERROR_SUCCESS:
    return STG_E_UNKNOWN;
  default:
    return HRESULT_FROM_WIN32(pError);
  }
}

HRESULT LastStorageError() noexcept {
  return StorageError(GetLastError());
}

std::wstring ToStoragePath(const std::wstring& pPath) {
  if (pPath.empty() || pPath.size() > LongestPath || pPath.find(L'\0') != std::wstring::npos) return {};
  if (pPath.starts_with(LR"(\\?\)")) return pPath;
  std::wstring full(LongestPath + 1, L'\0');
  full.resize(GetFullPathNameW(pPath.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  if (full.empty() || full.size() > LongestPath || full.starts_with(LR"(\\.\)")) return {};
  if (full.starts_with(LR"(\\)")) return LR"(\\?\UNC\)" + full.substr(2);
  return LR"(\\?\)" + full;
}

std::wstring ResolvedPath(const std::wstring& pFolder) {
  const TUniqueHandle folder(CreateFileW(pFolder.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                         nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!folder) return pFolder;
  std::wstring path(LongestPath + 1, L'\0');
  const DWORD length = GetFinalPathNameByHandleW(folder.Get(), path.data(), static_cast<DWORD>(path.size()), 0);
  if (length == 0 || length >= path.size()) return pFolder;
  path.resize(length);
  return path;
}

std::wstring PathInFolder(const std::wstring& pFolder, const std::wstring& pName) {
  return pFolder.ends_with(L'\\') ? pFolder + pName : pFolder + L'\\' + pName;
}

std::wstring NameOfPath(const std::wstring& pPath) {
  constexpr std::size_t prefix = 4;
  std::wstring path = pPath.starts_with(LR"(\\?\)") ? pPath.substr(prefix) : pPath;
  if (path.ends_with(L":\\")) return path;
  while (path.ends_with(L'\\')) path.pop_back();
  return path.substr(path.find_last_of(L'\\') + 1);
}

} // namespace kiv
