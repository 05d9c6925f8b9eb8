#include <core/PathUtils.h>

#include <core/PathFunctions.h>
#include <core/ReparsePoint.h>
#include <framework/Exceptions.h>
#include <framework/TextCompare.h>
#include <platform/Characters.h>
#include <platform/PathApi.h>

#include <algorithm>
#include <atomic>

namespace kiv {

namespace {

constexpr std::size_t None = std::wstring_view::npos;
constexpr std::wstring_view LongPrefix = LR"(\\?\)";
constexpr std::wstring_view LongUncPrefix = LR"(\\?\UNC\)";
constexpr std::wstring_view DevicePrefix = LR"(\\.\)";

// What a UNC host that stands for an IPv6 address ends in ("WNetAddConnection2", IPv6 literals in UNC names).
constexpr std::wstring_view Ipv6HostSuffix = L".ipv6-literal.net";

// "Volume{" and a GUID: its closing brace.
constexpr std::wstring_view VolumePrefix = L"Volume{";
constexpr std::size_t VolumeBrace = 43;

std::atomic<std::wstring (*)()> gDrivesFolderName{nullptr};

constexpr bool IsDelimiter(wchar_t c) {
  return c == L'\\' || c == L'/';
}

std::size_t LengthWithDelimiter(std::wstring_view path) {
  return path.empty() || !IsDelimiter(path.back()) ? path.size() + 1 : path.size();
}

bool StartsWithOneBackslash(std::wstring_view path) {
  return path.size() >= 2 && path[0] == L'\\' && path[1] != L'\\';
}

// A drive path that is canonical as it stands. Most are, and one look at each character tells.
bool IsPlainDrivePath(std::wstring_view path) {
  if (path.size() < 3 || !TPathUtils::StartsWithDriveLetter(path) || path[2] != L'\\') return false;
  wchar_t before = L'\\';
  for (const wchar_t c : path.substr(3)) {
    const bool part_starts = before == L'\\';
    if (c == L'\\' && (part_starts || before == L'.')) return false;
    if ((c == L'.' && part_starts) || c == L'~' || c == L'\0') return false;
    before = c;
  }
  return before != L'.' && !path.ends_with(LR"(\*)");
}

// A UNC name can't hold the ":" of an IPv6 address: it is written in another form.
void ConvertIpv6Host(std::wstring& path) {
  const std::size_t end = std::min(path.find(L'\\', 2), path.size());
  if (!TPathUtils::IsValidIPv6(std::wstring_view(path).substr(2, end - 2))) return;
  std::replace(path.begin() + 2, path.begin() + static_cast<std::ptrdiff_t>(end), L':', L'-');
  path.insert(end, Ipv6HostSuffix);
}

void CollapseBackslashes(std::wstring& path) {
  if (path.find(LR"(\\)") == None) return;
  const auto both = [](wchar_t a, wchar_t b) { return a == L'\\' && b == L'\\'; };
  path.erase(std::unique(path.begin(), path.end(), both), path.end());
  if (path.front() != L'\\') return;
  path.insert(path.begin(), L'\\');
  ConvertIpv6Host(path);
}

std::wstring JoinPaths(std::wstring_view base, std::wstring_view relative) {
  if (relative.starts_with(LR"(.\)")) relative.remove_prefix(2);
  if (relative.starts_with(L'\\')) relative.remove_prefix(1);
  std::wstring joined;
  joined.reserve(base.size() + 1 + relative.size());
  joined = base;
  if (joined.back() != L'\\') joined += L'\\';
  return joined += relative;
}

// The parts of a path that are left, joined.
class TPartStack {
public:
  TPartStack(std::size_t pRoom, wchar_t pDelimiter) : fDelimiter(pDelimiter) { fText.reserve(pRoom + 1); }

  void Push(std::wstring_view part) {
    if (fCount++ > 0) fText += fDelimiter;
    fText += part;
  }
  void Pop() {
    const bool drive = fCount == 1 && fText.size() == 2 && fText[1] == L':';
    if (fCount == 0 || drive) return;
    fText.resize(--fCount == 0 ? 0 : fText.rfind(fDelimiter));
  }
  std::wstring& Text() { return fText; }

private:
  std::wstring fText;
  std::size_t fCount = 0;
  wchar_t fDelimiter;
};

} // namespace

std::wstring TPathUtils::MakeCanonic(std::wstring_view pPath) {
  if (pPath.empty() || IsPlainDrivePath(pPath)) return std::wstring(pPath);
  std::wstring path(pPath);
  if (path.size() >= 3 && StartsWithDriveLetter(path) && path[2] != L'\\') path.insert(2, 1, L'\\');
  if (path.find(L'~') != None) {
    std::wstring long_name = PathApi::LongPathName(path);
    if (!long_name.empty()) path = std::move(long_name);
  }
  if (!IsRooted(path) && GetSpecialFolderRoot(path).empty()) {
    path = Combine(StartsWithOneBackslash(path) ? GetCurrentDrive() : GetCurrentDir(), path);
  }
  path = RemoveRelativeParts(path);
  CollapseBackslashes(path);
  if (path.ends_with(LR"(\*)") && path != LR"(\\*)") path.pop_back();
  return path;
}

std::wstring TPathUtils::Combine(std::wstring_view pBasePath, std::wstring_view pRelativePath) {
  if (pBasePath.empty() && pRelativePath.empty()) {
    throw EArgumentException(L"Both parameters (BasePath and RelativePath) are empty.");
  }
  if (pBasePath.size() + pRelativePath.size() <= PathApi::LongestText && IsRooted(pBasePath)) {
    const bool below = StartsWithOneBackslash(pRelativePath);
    std::wstring path;
    if (PathApi::Combine(pBasePath, pRelativePath.substr(below ? 1 : 0), path)) {
      // The platform takes the prefix of a long path away.
      return IsUnicodeAPICallPath(pBasePath) ? GetUnicodeAPICallPath(path, true, true) : path;
    }
  }
  if (pBasePath.empty()) return std::wstring(pRelativePath);
  if (pRelativePath.empty()) return std::wstring(pBasePath);
  return IsRooted(pRelativePath) ? std::wstring(pRelativePath) : JoinPaths(pBasePath, pRelativePath);
}

std::wstring TPathUtils::RemoveRelativeParts(std::wstring_view pPath) {
  if (pPath.size() > PathApi::LongestText) return RemoveRelativeParts(pPath, L'\\');
  std::wstring path;
  return PathApi::Canonicalize(pPath, path) ? path : std::wstring(pPath);
}

std::wstring TPathUtils::RemoveRelativeParts(std::wstring_view pPath, wchar_t pPathDelimiter) {
  TPartStack parts(pPath.size(), pPathDelimiter);
  for (std::size_t start = 0; start <= pPath.size() && !pPath.empty();) {
    const std::size_t end = std::min(pPath.find(pPathDelimiter, start), pPath.size());
    const std::wstring_view part = pPath.substr(start, end - start);
    if (part == L"..") {
      parts.Pop();
    } else if (part != L".") {
      parts.Push(part);
    }
    start = end + 1;
  }
  std::wstring& path = parts.Text();
  if (path.size() == 2 && path[1] == L':') path += pPathDelimiter;
  if (!path.empty() && path.front() != pPathDelimiter && pPath.front() == pPathDelimiter) {
    path.insert(path.begin(), pPathDelimiter);
  }
  return std::move(path);
}

std::wstring TPathUtils::UnifyPath(std::wstring_view pPath) {
  if (pPath == LR"(\\*)") return std::wstring(pPath);
  // Blanks and control characters are trimmed.
  const auto last =
      std::find_if(pPath.rbegin(), pPath.rend(), [](wchar_t c) { return static_cast<unsigned>(c) > 0x20; });
  if (pPath.substr(0, static_cast<std::size_t>(pPath.rend() - last)).ends_with(L"://")) return std::wstring(pPath);
  if (IsDrive(pPath)) return std::wstring(pPath.substr(0, 2)) + L'\\';
  return ExcludeTrailingPathDelimiter(pPath);
}

std::wstring TPathUtils::ExcludeTrailingPathDelimiter(std::wstring_view pPath) {
  if (!pPath.empty() && IsDelimiter(pPath.back())) pPath.remove_suffix(1);
  return std::wstring(pPath);
}

bool TPathUtils::IsPathDelimiter(std::wstring_view pPath, int pIndex) noexcept {
  return pIndex >= 1 && static_cast<std::size_t>(pIndex) <= pPath.size() &&
         IsDelimiter(pPath[static_cast<std::size_t>(pIndex) - 1]);
}

bool TPathUtils::IsRooted(std::wstring_view pPath) noexcept {
  if (pPath.starts_with(LR"(\\)") || IsURL(pPath)) return true;
  const std::size_t length = LengthWithDelimiter(pPath);
  if (length >= 3 && StartsWithDriveLetter(pPath)) return true;
  return length > VolumeBrace + 1 && pPath.starts_with(VolumePrefix) && pPath[VolumeBrace] == L'}';
}

bool TPathUtils::StartsWithDriveLetter(std::wstring_view pPath) noexcept {
  return pPath.size() >= 2 && pPath[1] == L':' && IsAsciiLetter(pPath[0]);
}

std::wstring TPathUtils::GetCurrentDir() {
  return PathApi::CurrentDirectoryPath();
}

std::wstring TPathUtils::GetCurrentDrive() {
  return GetCurrentDir().substr(0, 2);
}

std::wstring TPathUtils::GetSpecialFolderRoot(std::wstring_view pPath) {
  const auto source = gDrivesFolderName.load();
  std::wstring name = source ? source() : std::wstring();
  return StartsText(name, pPath) ? name : std::wstring();
}

void SetDrivesFolderNameSource(std::wstring (*pSource)()) noexcept {
  gDrivesFolderName = pSource;
}

std::wstring TPathUtils::GetUnicodeAPICallPath(std::wstring_view pPath, bool pPathIsCanonic, bool pForce) {
  const bool plain_does = !pForce && pPath.size() < PlainPathLimit;
  if (plain_does || pPath.starts_with(DevicePrefix)) return std::wstring(pPath);
  std::wstring path = pPathIsCanonic ? std::wstring(pPath) : MakeCanonic(pPath);
  if (path.starts_with(LongPrefix)) return path;
  if (path.size() < 4 || !path.starts_with(LR"(\\)")) return path.insert(0, LongPrefix);
  return path.replace(0, 2, LongUncPrefix);
}

std::wstring TPathUtils::RevertUnicodeAPICallPath(std::wstring_view pPath) {
  if (!IsUnicodeAPICallPath(pPath)) return std::wstring(pPath);
  if (!StartsText(LongUncPrefix, pPath)) return std::wstring(pPath.substr(LongPrefix.size()));
  std::wstring path(LR"(\\)");
  return path += pPath.substr(LongUncPrefix.size());
}

bool TPathUtils::IsUnicodeAPICallPath(std::wstring_view pPath) noexcept {
  return pPath.starts_with(LongPrefix);
}

bool TPathUtils::IsReparsePoint(std::wstring_view pPath) {
  // With a delimiter behind it the path leads through the link.
  const std::wstring_view path = pPath.substr(0, pPath.find_last_not_of(L"\\/") + 1);
  // The root of a drive stands in no folder, and without its delimiter it is the current folder there.
  if (IsDrive(path) || HasWildcards(path)) return false;
  return kiv::IsReparsePoint(PathApi::ListedAttributes(GetUnicodeAPICallPath(path)));
}

bool TPathUtils::HasFileAttribute(std::wstring_view pPath, DWORD pFileAttribute) {
  if (pPath.empty()) return false;
  const DWORD attributes = PathApi::FileAttributes(GetUnicodeAPICallPath(pPath));
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & pFileAttribute) != 0;
}

bool TPathUtils::IsValidIP(std::wstring_view pAddress) noexcept {
  return IsValidIPv4(pAddress) || IsValidIPv6(pAddress);
}

} // namespace kiv
