#include <doubles/ScopedTempFolder.h>

#include <platform/Handles.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <stdexcept>

namespace kiv::test {

namespace {

// Past the limit of 260 characters, and past the rules for names: dots and spaces at the end, reserved names.
std::wstring Verbatim(const std::wstring& path) {
  return L"\\\\?\\" + path;
}

[[noreturn]] void RaiseLastError(const char* what) {
  throw std::runtime_error(std::string(what) + ", error " + std::to_string(GetLastError()));
}

void MakeFolders(const std::wstring& path, std::size_t known) {
  for (std::size_t end = path.find(L'\\', known + 1);; end = path.find(L'\\', end + 1)) {
    if (!CreateDirectoryW(Verbatim(path.substr(0, end)).c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS) {
      RaiseLastError("A folder can't be made");
    }
    if (end == std::wstring::npos) return;
  }
}

// The first error, or 0.
DWORD RemoveAll(const std::wstring& verbatim, DWORD attributes) {
  DWORD error = 0;
  if (attributes & FILE_ATTRIBUTE_READONLY) SetFileAttributesW(verbatim.c_str(), FILE_ATTRIBUTE_NORMAL);
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) return DeleteFileW(verbatim.c_str()) ? 0 : GetLastError();
  if (!(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
    WIN32_FIND_DATAW found;
    const TUniqueFind search(FindFirstFileW((verbatim + L"\\*").c_str(), &found));
    for (BOOL more = search ? TRUE : FALSE; more; more = FindNextFileW(search.Get(), &found)) {
      const std::wstring name = found.cFileName;
      if (name == L"." || name == L"..") continue;
      const DWORD result = RemoveAll(verbatim + L'\\' + name, found.dwFileAttributes);
      if (error == 0) error = result;
    }
  }
  if (!RemoveDirectoryW(verbatim.c_str()) && error == 0) error = GetLastError();
  return error;
}

} // namespace

ScopedTempFolder::ScopedTempFolder() {
  static std::atomic<unsigned> gLast{0};
  wchar_t base[MAX_PATH + 1];
  const DWORD length = GetTempPathW(MAX_PATH + 1, base);
  if (length == 0 || length > MAX_PATH) RaiseLastError("No temporary folder is known");
  for (;;) {
    fPath = std::wstring(base, length) + L"kiv-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
            std::to_wstring(++gLast);
    if (CreateDirectoryW(Verbatim(fPath).c_str(), nullptr)) return;
    // Left behind by a run that was ended, under a process number that came again.
    if (GetLastError() != ERROR_ALREADY_EXISTS) RaiseLastError("No temporary folder can be made");
  }
}

ScopedTempFolder::~ScopedTempFolder() {
  const DWORD error = RemoveAll(Verbatim(fPath), FILE_ATTRIBUTE_DIRECTORY);
  if (error != 0) ADD_FAILURE() << "A temporary folder can't be removed: error " << error;
}

std::wstring ScopedTempFolder::PathOf(const std::wstring& pRelative) const {
  return fPath + L'\\' + pRelative;
}

std::wstring ScopedTempFolder::MakeFile(const std::wstring& pRelative, std::uint64_t pSize) {
  const std::wstring path = PathOf(pRelative);
  MakeFolders(path.substr(0, path.rfind(L'\\')), fPath.size());
  const TUniqueHandle file(
      CreateFileW(Verbatim(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  LARGE_INTEGER size;
  size.QuadPart = static_cast<LONGLONG>(pSize);
  if (!file || !SetFilePointerEx(file.Get(), size, nullptr, FILE_BEGIN) || !SetEndOfFile(file.Get())) {
    RaiseLastError("A file can't be made");
  }
  return path;
}

std::wstring ScopedTempFolder::MakeFolder(const std::wstring& pRelative) {
  const std::wstring path = PathOf(pRelative);
  MakeFolders(path, fPath.size());
  return path;
}

} // namespace kiv::test
