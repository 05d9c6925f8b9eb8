#include <core/FileFunctions.h>

#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <core/PathUtils.h>
#include <framework/FileNames.h>
#include <framework/TextCompare.h>
#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>
#include <platform/Handles.h>
#include <platform/PathApi.h>
#include <platform/ShellApi.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>

namespace kiv {

namespace {

// Find data of one file; false if there is none. A name for many files has none.
bool FindFile(std::wstring_view path, WIN32_FIND_DATAW& data) {
  if (HasWildcards(path) || PathApi::HoldsNul(path)) return false;
  const ScopedErrorMode mode;
  return static_cast<bool>(TUniqueFind(FindFirstFileW(TPathUtils::GetUnicodeAPICallPath(path).c_str(), &data)));
}

// The drive, share or volume of a path, with the delimiter that calls about drives ask for. A volume is known to them
// in the long-path form only.
std::wstring DriveRoot(std::wstring_view path) {
  const std::wstring plain = TPathUtils::RevertUnicodeAPICallPath(path);
  std::wstring root = ExtractFileDrive(plain);
  if (root.empty() && StartsText(L"Volume{", plain)) root = LR"(\\?\)" + plain.substr(0, plain.find(L'\\'));
  if (!root.empty()) root += L'\\';
  return root;
}

bool AskFreeSpace(const std::wstring& folder, std::int64_t& free, std::int64_t& total) {
  free = total = 0;
  ULARGE_INTEGER free_bytes{};
  ULARGE_INTEGER total_bytes{};
  if (folder.empty() || PathApi::HoldsNul(folder) ||
      !GetDiskFreeSpaceExW(folder.c_str(), &free_bytes, &total_bytes, nullptr))
    return false;
  free = static_cast<std::int64_t>(free_bytes.QuadPart);
  total = static_cast<std::int64_t>(total_bytes.QuadPart);
  return true;
}

std::int32_t Narrow(std::int64_t size) noexcept {
  return static_cast<std::int32_t>(std::min<std::int64_t>(size, std::numeric_limits<std::int32_t>::max()));
}

void ReplaceText(std::wstring& text, std::wstring_view old, std::wstring_view with) {
  for (int at = 1; (at = KivPosEx(old, text, at)) > 0; at += static_cast<int>(with.size())) {
    text.replace(static_cast<std::size_t>(at) - 1, old.size(), with);
  }
}

} // namespace

bool FileOrFolderExists(std::wstring_view pPath) {
  if (pPath.empty()) return false;
  return PathApi::FileAttributes(TPathUtils::GetUnicodeAPICallPath(pPath)) != INVALID_FILE_ATTRIBUTES;
}

std::int64_t GetFileSize64(const WIN32_FIND_DATAW& pData) noexcept {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(pData.nFileSizeHigh) << 32U | pData.nFileSizeLow);
}

std::int64_t GetFileSize64(std::wstring_view pPath) {
  WIN32_FIND_DATAW data;
  return FindFile(pPath, data) ? GetFileSize64(data) : -1;
}

std::int32_t GetFileSize(std::wstring_view pPath) {
  return Narrow(GetFileSize64(pPath));
}

std::int32_t GetFileSize(const WIN32_FIND_DATAW& pData) noexcept {
  return Narrow(GetFileSize64(pData));
}

bool IsDriveReady(std::wstring_view pPath, bool pShowErrors) {
  const ScopedErrorMode mode(pShowErrors ? 0 : SEM_FAILCRITICALERRORS);
  std::int64_t free = 0;
  std::int64_t total = 0;
  return AskFreeSpace(DriveRoot(pPath), free, total);
}

bool IsNetworkPath(std::wstring_view pPath) {
  const std::wstring root = DriveRoot(pPath);
  if (TKivPathList::IsUNCPath(root)) return true;
  const auto get_type = ShellApi().GetDriveTypeW;
  return get_type && !root.empty() && get_type(root.c_str()) == DRIVE_REMOTE;
}

bool KivGetDiskFreeSpace(std::wstring_view pPath, std::int64_t& pFree, std::int64_t& pTotal) {
  const ScopedErrorMode mode;
  // A folder may be another volume's place. What isn't a folder lies on its drive.
  const std::wstring folder = TPathUtils::GetUnicodeAPICallPath(TPathUtils::ExcludeTrailingPathDelimiter(pPath));
  return (!pPath.empty() && AskFreeSpace(folder + L'\\', pFree, pTotal)) ||
         AskFreeSpace(DriveRoot(pPath), pFree, pTotal);
}

std::wstring KIVExpandEnvironmentStrings(const std::wstring& pText) {
  if (PathApi::HoldsNul(pText)) return pText;
  std::wstring text = pText;
  if (IsWOW64()) {
    ReplaceText(text, L"%ProgramFiles%", L"%ProgramW6432%");
    ReplaceText(text, L"%CommonProgramFiles%", L"%CommonProgramW6432%");
  }
  std::wstring expanded;
  DWORD needed = ExpandEnvironmentStringsW(text.c_str(), nullptr, 0);
  // Another thread may change the environment between the calls.
  while (needed > expanded.size()) {
    expanded.resize(needed);
    needed = ExpandEnvironmentStringsW(text.c_str(), expanded.data(), needed);
  }
  if (needed == 0) return pText;
  expanded.resize(needed - 1); // it counts the NUL
  return expanded;
}

std::wstring GetUserProfilePath() {
  wchar_t* path = nullptr;
  const HRESULT hr = GuardedExport(ShellApi().SHGetKnownFolderPath, FOLDERID_Profile, KF_FLAG_DEFAULT, nullptr, &path);
  const TUniqueTaskText owner(path);
  return SUCCEEDED(hr) && path ? std::wstring(path) : std::wstring();
}

std::wstring KivGetWindowsPath() {
  wchar_t path[MAX_PATH];
  const UINT length = GetSystemWindowsDirectoryW(path, MAX_PATH);
  return length < MAX_PATH ? std::wstring(path, length) : std::wstring();
}

std::wstring GetFriendlyName(const std::wstring& pPath) {
  if (PathApi::HoldsNul(pPath)) return pPath;
  const ScopedErrorMode mode;
  SHFILEINFOW info{};
  const HRESULT hr = GuardedCall(
      [&] { return SHGetFileInfoW(pPath.c_str(), 0, &info, sizeof(info), SHGFI_DISPLAYNAME) != 0 ? S_OK : E_FAIL; });
  return SUCCEEDED(hr) && info.szDisplayName[0] != L'\0' ? std::wstring(info.szDisplayName) : pPath;
}

std::wstring FormatByteSize(std::int64_t pValue, bool pKilobytes) {
  wchar_t text[64] = L"";
  const auto format = pKilobytes ? ShellApi().StrFormatKBSizeW : ShellApi().StrFormatByteSizeW;
  return format && format(pValue, text, static_cast<UINT>(std::size(text))) ? text : std::wstring();
}

int CompareFilenames(const std::wstring& pFirst, const std::wstring& pSecond) noexcept {
  return StrCmpLogicalW(pFirst.c_str(), pSecond.c_str());
}

bool IsWOW64() {
  const auto ask = ShellApi().IsWow64Process;
  BOOL wow = FALSE;
  return ask && ask(GetCurrentProcess(), &wow) && wow;
}

bool SendDropFiles(HWND pWindow, const std::vector<std::wstring>& pFiles) {
  std::wstring names;
  for (const std::wstring& file : pFiles) {
    if (!file.empty() && !PathApi::HoldsNul(file)) names.append(file).push_back(L'\0');
  }
  if (names.empty()) return false;
  names.push_back(L'\0');
  const std::size_t size = names.size() * sizeof(wchar_t);
  const HGLOBAL block = GlobalAlloc(GHND, sizeof(DROPFILES) + size);
  if (!block) return false;
  auto* const drop = static_cast<DROPFILES*>(GlobalLock(block));
  *drop = DROPFILES{.pFiles = sizeof(DROPFILES), .pt = {}, .fNC = FALSE, .fWide = TRUE};
  std::memcpy(drop + 1, names.data(), size);
  GlobalUnlock(block);
  // From here on the block is the receiver's.
  if (PostMessageW(pWindow, WM_DROPFILES, reinterpret_cast<WPARAM>(block), 0)) return true;
  GlobalFree(block);
  return false;
}

} // namespace kiv
