#include <platform/PathApi.h>

#include <platform/ErrorMode.h>
#include <platform/Handles.h>
#include <platform/ShellApi.h>
#include <platform/Wow64.h>
#include <platform/fill/PathText.h>

#include <shlwapi.h>

#include <algorithm>
#include <memory>

namespace kiv::PathApi {

namespace {

static_assert(LongestText == MAX_PATH - 1);
static_assert(LongestText == PathText::Longest);

// A text as the platform takes it.
class TTerminated {
public:
  explicit TTerminated(std::wstring_view pText) : fValid(pText.size() <= LongestText && !HoldsNul(pText)) {
    if (!fValid) return;
    std::copy(pText.begin(), pText.end(), fText);
    fText[pText.size()] = L'\0';
  }
  explicit operator bool() const { return fValid; }
  const wchar_t* Get() const { return fText; }

private:
  wchar_t fText[MAX_PATH];
  bool fValid;
};

// Some platforms (Wine 8) take a name that begins with two dots for "..", keep a "." at the end, and read beyond the
// text when there is nothing left to go back to.
bool CanonicalizesSoundly() {
  static const bool sound = [] {
    wchar_t buffer[MAX_PATH];
    return PathCanonicalizeW(buffer, L"C:\\..a\\b\\.") && std::wstring_view(buffer) == L"C:\\..a\\b";
  }();
  return sound;
}

} // namespace

bool Canonicalize(std::wstring_view pPath, std::wstring& pResult) {
  wchar_t buffer[MAX_PATH];
  const TTerminated path(pPath);
  if (!path) return false;
  if (CanonicalizesSoundly()) {
    if (!PathCanonicalizeW(buffer, path.Get())) return false;
    pResult.assign(buffer);
    return true;
  }
  pResult.assign(buffer, PathText::Canonicalize(pPath, buffer));
  return true;
}

bool Combine(std::wstring_view pDirectory, std::wstring_view pFile, std::wstring& pResult) {
  wchar_t buffer[MAX_PATH];
  const TTerminated directory(pDirectory);
  const TTerminated file(pFile);
  if (!directory || !file) return false;
  if (CanonicalizesSoundly()) {
    if (!PathCombineW(buffer, directory.Get(), file.Get())) return false;
    pResult.assign(buffer);
    return true;
  }
  const std::size_t length = PathText::Combine(pDirectory, pFile, buffer);
  if (length > 0) pResult.assign(buffer, length);
  return length > 0;
}

bool MatchSpec(const wchar_t* pName, const wchar_t* pSpec) noexcept {
  return PathMatchSpecW(pName, pSpec) != FALSE;
}

std::wstring LongPathName(const std::wstring& pPath) {
  if (HoldsNul(pPath)) return {};
  constexpr DWORD room = 32767;
  const auto buffer = std::make_unique_for_overwrite<wchar_t[]>(room);
  const ScopedErrorMode mode;
  const DWORD length = GetLongPathNameW(pPath.c_str(), buffer.get(), room);
  return length < room ? std::wstring(buffer.get(), length) : std::wstring();
}

std::wstring CurrentDirectoryPath() {
  const ScopedWow64FsRedirectionOff redirection_off;
  std::wstring path;
  DWORD needed = GetCurrentDirectoryW(0, nullptr);
  // Another thread may change it between the calls.
  while (needed > path.size()) {
    path.resize(needed);
    needed = GetCurrentDirectoryW(static_cast<DWORD>(path.size()), path.data());
  }
  path.resize(needed);
  return path;
}

DWORD FileAttributes(const std::wstring& pPath) {
  if (HoldsNul(pPath)) return INVALID_FILE_ATTRIBUTES;
  const ScopedErrorMode mode;
  return GetFileAttributesW(pPath.c_str());
}

DWORD ListedAttributes(const std::wstring& pPath) {
  if (HoldsNul(pPath)) return INVALID_FILE_ATTRIBUTES;
  const ScopedErrorMode mode;
  WIN32_FIND_DATAW data;
  const TUniqueFind find(FindFirstFileW(pPath.c_str(), &data));
  return find ? data.dwFileAttributes : INVALID_FILE_ATTRIBUTES;
}

bool IsNetworkDrive(wchar_t pLetter) {
  const wchar_t root[] = {pLetter, L':', L'\\', L'\0'};
  const auto get_type = ShellApi().GetDriveTypeW;
  return get_type && get_type(root) == DRIVE_REMOTE;
}

} // namespace kiv::PathApi
