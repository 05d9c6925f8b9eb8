#include <core/PathList.h>

#include <core/PathFunctions.h>
#include <core/PathUtils.h>
#include <framework/FileNames.h>
#include <framework/TextCompare.h>
#include <platform/PathApi.h>

#include <algorithm>

namespace kiv {

namespace {

constexpr std::wstring_view LongPrefix = LR"(\\?\)";
constexpr std::wstring_view LongUncPrefix = LR"(\\?\UNC\)";

constexpr bool IsDelimiter(wchar_t c) {
  return c == L'\\' || c == L'/';
}

constexpr std::wstring_view Exclusion = L"-";

bool Exists(const std::wstring& path) {
  return PathApi::FileAttributes(TPathUtils::GetUnicodeAPICallPath(path)) != INVALID_FILE_ATTRIBUTES;
}

} // namespace

// --- the list -------------------------------------------------------------------------------------------------------

TKivPathList::TKivPathList() {
  SetSorted(true);
  SetDelimiter(L';');
  SetStrictDelimiter(true);
}

TKivPathList::~TKivPathList() = default;

std::wstring TKivPathList::ClassName() const {
  return L"TKivPathList";
}

std::wstring TKivPathList::UnifyPath(std::wstring_view pPath) {
  if (!pPath.starts_with(Exclusion)) return TPathUtils::UnifyPath(pPath);
  return std::wstring(Exclusion) + TPathUtils::UnifyPath(pPath.substr(Exclusion.size()));
}

bool TKivPathList::AllowAdd(const std::wstring& pPath) {
  return !fCheckIfExists || Exists(pPath);
}

// The platform takes milliseconds to tell what a drive is.
bool TKivPathList::IsOnNetwork(std::wstring_view pPath) {
  if (pPath.starts_with(Exclusion)) pPath.remove_prefix(Exclusion.size());
  const std::wstring path = TPathUtils::RevertUnicodeAPICallPath(pPath);
  if (!StartsWithDriveLetter(path)) return IsUNCPath(path);
  const std::uint32_t letter = std::uint32_t{1} << ((path[0] | 0x20) - L'a');
  if ((fLocalDrives & letter) != 0) return false;
  if (PathApi::IsNetworkDrive(path[0])) return true;
  fLocalDrives |= letter;
  return false;
}

void TKivPathList::Assign(const TPersistent* pSource) {
  const auto* const source = dynamic_cast<const TStrings*>(pSource);
  if (!source) return TStringList::Assign(pSource);
  if (source == this) return;
  Update([this, source] {
    Clear();
    AddStrings(*source);
  });
}

int TKivPathList::AddObject(const std::wstring& pText, std::intptr_t pObject) {
  const std::wstring path = UnifyPath(pText);
  if (!AllowAdd(path)) return -1;
  fContainsNetworkPath = fContainsNetworkPath || IsOnNetwork(path);
  const int before = GetCount();
  const TAliveWatch watch(fAlivePaths);
  const int index = TStringList::AddObject(path, pObject);
  if (watch.IsAlive() && GetCount() > before && fSkipEvents == 0) {
    static_cast<void>(FireEvent(fAlivePaths, fOnAdd, path, index));
  }
  return index;
}

void TKivPathList::Delete(int pIndex) {
  const std::wstring path = Get(pIndex);
  const TAliveWatch watch(fAlivePaths);
  TStringList::Delete(pIndex);
  if (watch.IsAlive() && fSkipEvents == 0) static_cast<void>(FireEvent(fAlivePaths, fOnRemove, path, pIndex));
}

void TKivPathList::Clear() {
  std::vector<std::wstring> paths;
  if (fOnRemove && fSkipEvents == 0) {
    for (int i = 0; i < GetCount(); ++i) paths.push_back(Get(i));
  }
  const TAliveWatch watch(fAlivePaths);
  TStringList::Clear();
  if (!watch.IsAlive()) return;
  for (auto index = static_cast<int>(paths.size()); index-- > 0;) {
    if (!FireEvent(fAlivePaths, fOnRemove, paths[static_cast<std::size_t>(index)], index)) return;
  }
}

int TKivPathList::IndexOfPath(std::wstring_view pPath) const {
  return IndexOf(UnifyPath(pPath));
}

const wchar_t* TKivPathList::GetStringPointer() {
  fWideStringBuilder.Clear();
  fWideStringBuilder.Append(*this);
  return fWideStringBuilder.GetString();
}

// --- paths by their text --------------------------------------------------------------------------------------------

bool TKivPathList::IsSubPathOf(std::wstring_view p_SuperiorPath, std::wstring_view p_PossibleSubPath) noexcept {
  if (p_PossibleSubPath.empty() || !StartsText(p_SuperiorPath, p_PossibleSubPath)) return false;
  const bool has_delimiter = !p_SuperiorPath.empty() && IsDelimiter(p_SuperiorPath.back());
  if (!has_delimiter && !p_PossibleSubPath.substr(p_SuperiorPath.size()).starts_with(L'\\')) return false;
  return !SamePath(p_SuperiorPath, p_PossibleSubPath);
}

bool TKivPathList::IsUNCPath(std::wstring_view pFullPath) noexcept {
  if (pFullPath.size() < 3 || !kiv::IsUNCPath(pFullPath)) return false;
  if (pFullPath.starts_with(LongPrefix)) return StartsText(LongUncPrefix, pFullPath);
  return pFullPath.size() > 3 || pFullPath[2] == L'\\';
}

bool TKivPathList::IsUncServer(std::wstring_view pPath) noexcept {
  if (!kiv::IsUNCPath(pPath)) return false;
  std::wstring_view server = pPath.substr(2);
  if (!server.empty() && IsDelimiter(server.back())) server.remove_suffix(1);
  return server.find_first_of(L"\\/*?") == std::wstring_view::npos;
}

bool TKivPathList::IsFolderClassId(std::wstring_view pPath) noexcept {
  return pPath.starts_with(L"::{");
}

bool TKivPathList::IsUSBDevicePath(std::wstring_view pPath) noexcept {
  return StartsText(LR"(\\?\usb#vid)", pPath);
}

bool TKivPathList::StartsWithDriveLetter(std::wstring_view pPath) noexcept {
  return TPathUtils::StartsWithDriveLetter(pPath);
}

bool TKivPathList::ShareSameRoot(const TStrings& pPaths) {
  std::wstring common;
  for (int i = 0; i < pPaths.GetCount(); ++i) {
    const std::wstring root = ExtractFileDrive(TPathUtils::RevertUnicodeAPICallPath(pPaths.Get(i)));
    if (root.empty() || (i > 0 && !SameText(root, common))) return false;
    common = root;
  }
  return true;
}

std::vector<std::wstring> TKivPathList::SplitPath(std::wstring_view pPath) {
  const std::wstring path = TPathUtils::RevertUnicodeAPICallPath(pPath);
  std::vector<std::wstring> parts = SplitPathByDelimiter(path, L'\\');
  if (!parts.empty() && kiv::IsUNCPath(path)) parts[0].insert(0, LR"(\\)");
  return parts;
}

std::vector<std::wstring> TKivPathList::SplitPathByDelimiter(std::wstring_view pPath, wchar_t pDelimiter) {
  std::vector<std::wstring> parts;
  while (!pPath.empty()) {
    const std::wstring_view part = pPath.substr(0, pPath.find(pDelimiter));
    if (!part.empty()) parts.emplace_back(part);
    pPath.remove_prefix(std::min(part.size() + 1, pPath.size()));
  }
  return parts;
}

} // namespace kiv
