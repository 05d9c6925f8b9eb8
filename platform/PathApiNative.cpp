#include <platform/PathApi.h>

#include <platform/Text.h>
#include <platform/fill/PathText.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

// Text is treated as the platform's documentation says; files are this system's own, under its own paths.
namespace kiv::PathApi {

namespace {

static_assert(LongestText == PathText::Longest);

namespace fs = std::filesystem;

fs::path ToNative(std::wstring path) {
  std::replace(path.begin(), path.end(), L'\\', L'/');
  return ToUtf8(path);
}

DWORD AttributesOf(const fs::file_status& status) {
  if (!fs::exists(status)) return INVALID_FILE_ATTRIBUTES;
  DWORD attributes = 0;
  if (fs::is_directory(status)) attributes |= FILE_ATTRIBUTE_DIRECTORY;
  if (fs::is_symlink(status)) attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
  const fs::perms writers = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  if ((status.permissions() & writers) == fs::perms::none) attributes |= FILE_ATTRIBUTE_READONLY;
  return attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes;
}

} // namespace

bool Canonicalize(std::wstring_view pPath, std::wstring& pResult) {
  wchar_t buffer[PathText::Longest];
  const std::size_t length = HoldsNul(pPath) ? 0 : PathText::Canonicalize(pPath, buffer);
  if (length > 0) pResult.assign(buffer, length);
  return length > 0;
}

bool Combine(std::wstring_view pDirectory, std::wstring_view pFile, std::wstring& pResult) {
  wchar_t buffer[PathText::Longest];
  const bool refused = HoldsNul(pDirectory) || HoldsNul(pFile);
  const std::size_t length = refused ? 0 : PathText::Combine(pDirectory, pFile, buffer);
  if (length > 0) pResult.assign(buffer, length);
  return length > 0;
}

bool MatchSpec(const wchar_t* pName, const wchar_t* pSpec) noexcept {
  return PathText::MatchSpec(pName, pSpec);
}

std::wstring LongPathName(const std::wstring&) {
  return {}; // there are no short names
}

std::wstring CurrentDirectoryPath() {
  std::error_code error;
  return FromUtf8(fs::current_path(error).string());
}

DWORD FileAttributes(const std::wstring& pPath) {
  std::error_code error;
  if (HoldsNul(pPath)) return INVALID_FILE_ATTRIBUTES;
  return AttributesOf(fs::status(ToNative(pPath), error));
}

DWORD ListedAttributes(const std::wstring& pPath) {
  std::error_code error;
  if (HoldsNul(pPath)) return INVALID_FILE_ATTRIBUTES;
  return AttributesOf(fs::symlink_status(ToNative(pPath), error));
}

bool IsNetworkDrive(wchar_t) {
  return false; // there are no drives
}

} // namespace kiv::PathApi
