#include <core/FolderFunctions.h>

#include <core/PathFunctions.h>
#include <core/PathUtils.h>
#include <framework/Exceptions.h>
#include <platform/ErrorMode.h>
#include <platform/PathApi.h>
#include <platform/Wow64.h>

#include <algorithm>

namespace kiv {

namespace {

// What file calls take, whatever the length.
std::wstring CallForm(std::wstring_view path) {
  return TPathUtils::GetUnicodeAPICallPath(path);
}

DWORD AttributesOf(std::wstring_view path) {
  return path.empty() ? INVALID_FILE_ATTRIBUTES : PathApi::FileAttributes(CallForm(path));
}

} // namespace

TUniqueFind FindFirst(std::wstring_view pPath, WIN32_FIND_DATAW& pFindData) {
  // Literal: it may be a pattern, and names that end with a dot are found too. A relative path has no such form.
  std::wstring path = TPathUtils::ExcludeTrailingPathDelimiter(pPath);
  if (IsAbsolutePath(path)) path = TPathUtils::GetUnicodeAPICallPath(path, true, true);
  if (path.empty() || PathApi::HoldsNul(path)) {
    SetLastError(ERROR_INVALID_NAME);
    return {};
  }
  DWORD error = GetLastError();
  TUniqueFind find;
  {
    const ScopedWow64FsRedirectionOff redirection_off;
    const ScopedErrorMode mode;
    find.Reset(FindFirstFileW(path.c_str(), &pFindData));
    if (!find) error = GetLastError();
  }
  SetLastError(error);
  return find;
}

bool IsFile(std::wstring_view pPath) {
  const DWORD attributes = AttributesOf(pPath);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool IsFolder(std::wstring_view pPath) {
  const DWORD attributes = AttributesOf(pPath);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool ForceDirectories(std::wstring_view pFullPath) {
  if (pFullPath.empty()) throw EArgumentException(L"KivForceDirectories() cannot be called with an empty path.");
  const ScopedErrorMode mode;
  const std::wstring path = TPathUtils::ExcludeTrailingPathDelimiter(TPathUtils::RevertUnicodeAPICallPath(pFullPath));
  if (PathApi::HoldsNul(path)) return false;
  // Up to what is there, then down again.
  std::size_t end = path.size();
  while (end > 0 && !IsFolder(std::wstring_view(path).substr(0, end))) {
    const std::size_t delimiter = path.find_last_of(L"\\/", end - 1);
    if (delimiter == std::wstring::npos || delimiter == 0) return false;
    end = delimiter;
  }
  while (end < path.size()) {
    end = std::min(path.find_first_of(L"\\/", end + 1), path.size());
    const std::wstring folder = path.substr(0, end);
    // Somebody else may make it at the same time.
    if (!CreateDirectoryW(CallForm(folder).c_str(), nullptr) && !IsFolder(folder)) return false;
  }
  return true;
}

bool CreateEmptyFile(std::wstring_view pFullPath) {
  if (PathApi::HoldsNul(pFullPath)) return false;
  const std::wstring path = CallForm(pFullPath);
  const ScopedErrorMode mode;
  return static_cast<bool>(
      TUniqueHandle(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr)));
}

} // namespace kiv
