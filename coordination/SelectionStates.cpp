#include <coordination/SelectionStates.h>

#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <framework/FileNames.h>
#include <framework/TextCompare.h>

#include <algorithm>
#include <utility>

namespace kiv {

namespace detail {

std::wstring_view WithoutStar(std::wstring_view pPath) noexcept {
  if (pPath.ends_with(L'*')) pPath.remove_suffix(1);
  return pPath;
}

std::wstring_view WithoutStarAndDelimiter(std::wstring_view pPath) noexcept {
  pPath = WithoutStar(pPath);
  if (pPath.ends_with(L'\\') || pPath.ends_with(L'/')) pPath.remove_suffix(1);
  return pPath;
}

std::wstring WithDelimiter(std::wstring_view pPath) {
  std::wstring path(pPath);
  if (!path.ends_with(L'\\')) path += L'\\';
  return path;
}

} // namespace detail

namespace {

std::wstring LinkFile(std::wstring_view path) {
  return detail::WithDelimiter(detail::WithoutStar(path)) + L"target.lnk";
}

// The folder in which a path lies, with its delimiter. A root is its own.
std::wstring_view FolderOf(std::wstring_view path) {
  path = detail::WithoutStarAndDelimiter(path);
  return path.substr(0, path.find_last_of(L"\\/:") + 1);
}

} // namespace

TKivSelectionState TSelectionStates::IsPIDLSelected(IItemIdList* pItemIdList, bool& pIsSubItemOf) {
  pIsSubItemOf = false;
  if (!pItemIdList) return ssDisabled;
  if (pItemIdList->IsSpecialFolder(SF_NETWORK)) return GetIsUNCPathSelected() ? ssGrayed : ssDisabled;
  if (pItemIdList->IsSpecialFolder(SF_DRIVES)) return GetIsLocalPathSelected() ? ssGrayed : ssDisabled;
  return PathSelected(pItemIdList->Path(), pIsSubItemOf);
}

TKivSelectionState TSelectionStates::PathSelected(std::wstring pPath, bool& pIsSubItemOf) {
  pIsSubItemOf = false;
  if (pPath.empty() || !fDisk.IsDriveReady(pPath)) return ssDisabled;
  if (IsLinkedPath(pPath)) {
    if (!GetHandleShellLinks()) return ssDisabled;
    pPath = LinkTargetOf(pPath);
  }
  return FormatSelectionPath(pPath) ? IsItemSelected(pPath, pIsSubItemOf) : ssDisabled;
}

bool TSelectionStates::FormatSelectionPath(std::wstring& pPath) const {
  if (pPath.empty() || IsFolderToIgnore(pPath)) return false;
  if (pPath.ends_with(L'*')) pPath.pop_back();
  const TDiskObject object = fDisk.ObjectAt(pPath);
  if (object != TDiskObject::Nothing) std::replace(pPath.begin(), pPath.end(), L'/', L'\\');
  if (object == TDiskObject::Folder) pPath = detail::WithDelimiter(pPath) + L'*';
  return object != TDiskObject::Nothing;
}

bool TSelectionStates::IsLinkedPath(const std::wstring& pPath) const {
  return fDisk.ObjectAt(LinkFile(pPath)) == TDiskObject::File;
}

std::wstring TSelectionStates::LinkTargetOf(const std::wstring& pPath) const {
  return fDisk.LinkTarget(LinkFile(pPath));
}

// No entry lies below another one's folder, so that the entry that covers a path stands beside the path's own place.
bool TSelectionStates::CoversByNeighbour(std::wstring_view pEntry, std::size_t pIndex) const {
  const auto covers = [&](std::size_t index) {
    if (index >= fList.Count()) return false;
    const std::wstring_view folder = detail::WithoutStar(fList.At(index));
    return folder.size() < fList.At(index).size() && folder.size() < pEntry.size() && StartsText(folder, pEntry);
  };
  return covers(pIndex) || (pIndex > 0 && covers(pIndex - 1));
}

bool TSelectionStates::IsItemFullSelected(std::wstring_view pEntry) {
  return fLockObj.Read([&] {
    std::size_t index = 0;
    if (fList.Find(pEntry, index) || CoversByNeighbour(pEntry, index)) return true;
    if (!fList.MayNest()) return false;
    // Entries of what isn't there may lie anywhere, also between the two.
    std::wstring entry;
    for (std::wstring_view folder = FolderOf(pEntry); !folder.empty(); folder = FolderOf(folder)) {
      entry.assign(folder) += L'*';
      if (!SameText(entry, pEntry) && fList.Contains(entry)) return true;
      if (FolderOf(folder).size() == folder.size()) break;
    }
    return false;
  });
}

TKivSelectionState TSelectionStates::IsItemSelected(std::wstring_view pEntry, bool& pIsSubItemOf) {
  return fLockObj.Read([&] {
    const bool full = IsItemFullSelected(pEntry);
    pIsSubItemOf = full && !fList.Contains(pEntry);
    if (full) return ssChecked;
    const std::wstring prefix =
        pEntry.ends_with(L'*') ? std::wstring(detail::WithoutStar(pEntry)) : detail::WithDelimiter(pEntry);
    return fList.AnyHolds(prefix) ? ssGrayed : ssUnChecked;
  });
}

bool TSelectionStates::GetIsUNCPathSelected() {
  return fLockObj.Read([this] {
    return std::any_of(fList.All().begin(), fList.All().end(),
                       [](const std::wstring& entry) { return TKivPathList::IsUNCPath(entry); });
  });
}

bool TSelectionStates::GetIsLocalPathSelected() {
  return fLockObj.Read([this] {
    return std::any_of(fList.All().begin(), fList.All().end(),
                       [](const std::wstring& entry) { return entry.size() > 1 && entry[1] == L':'; });
  });
}

bool TSelectionStates::GetDifferentDrivesSelected() {
  return fLockObj.Read([this] {
    return std::any_of(fList.All().begin(), fList.All().end(), [this](const std::wstring& entry) {
      return !SameText(ExtractFileDrive(entry), ExtractFileDrive(fList.At(0)));
    });
  });
}

} // namespace kiv
