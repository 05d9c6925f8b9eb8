// Questions to a selection, the walk over all selected files, and the totals.
#include <coordination/SelectionList.h>

#include <core/PathFunctions.h>
#include <core/PathUtils.h>

#include <utility>

namespace kiv {

using detail::WithoutStarAndDelimiter;

TKivSelectionState TKivSelectionList::PathSelected(const std::wstring& sFQPath, bool& pIsSubItemOf) {
  return fStates->PathSelected(sFQPath, pIsSubItemOf);
}

TKivSelectionState TKivSelectionList::IsPathSelected(const std::wstring& pPath) {
  bool is_sub_item = false;
  return PathSelected(pPath, is_sub_item);
}

TKivSelectionState TKivSelectionList::IsPIDLSelected(IItemIdList* PIDL, bool& bIsSubItemOf) {
  return fStates->IsPIDLSelected(PIDL, bIsSubItemOf);
}

void TKivSelectionList::AddPIDLToSelection(IItemIdList* PIDL) {
  if (PIDL) AddPathToSelection(PIDL->Path());
}

void TKivSelectionList::RemovePIDLFromSelection(IItemIdList* PIDL) {
  if (PIDL) RemovePathFromSelection(PIDL->Path());
}

ComPtr<IItemIdList> TKivSelectionList::CompletePIDLSelected(IItemIdList* PIDL) {
  const std::wstring path = PIDL ? PIDL->Path() : std::wstring();
  if (path.empty()) return {};
  return fStates->Disk().MakeItemIdList(CompletePathSelected(path));
}

std::wstring TKivSelectionList::ToString() const {
  std::wstring text;
  for (const std::wstring& entry : List().All()) text.append(entry).append(L"\r\n");
  return text;
}

std::wstring TKivSelectionList::GetUnicodeAPICallPath(std::wstring_view pPath) {
  return TPathUtils::GetUnicodeAPICallPath(pPath, true, true);
}

std::wstring TKivSelectionList::GetParentPathFromPath(std::wstring_view pPath) {
  return kiv::GetParentPathFromPath(pPath);
}

bool TKivSelectionList::IsFolderToIgnore(std::wstring_view pName) noexcept {
  return kiv::IsFolderToIgnore(pName);
}

void TKivSelectionList::ResetFindNext() {
  fWalk = {};
}

// The files of a folder by one search, then its sub-folders by another, so that a large folder isn't kept in memory.
void TKivSelectionList::EnterFolder(const std::wstring& pName) {
  const std::wstring path = fWalk.folders.GetCurrentPath() + pName;
  std::unique_ptr<IDiskSearch> folders = fStates->Disk().Search(path);
  if (!folders) return;
  fWalk.folders.Push(std::move(folders), pName);
  fWalk.files = fStates->Disk().Search(path);
}

std::wstring TKivSelectionList::FindNext() {
  const TSelectionEntries& entries = List();
  while (fWalk.fSelectedFilesCounter < entries.Count()) {
    const std::wstring& entry = entries.At(fWalk.fSelectedFilesCounter++);
    if (!entry.ends_with(L'*')) return entry;
  }
  TKivStack& stack = fWalk.folders;
  for (;;) {
    if (stack.IsEmpty()) {
      while (fWalk.fi < entries.Count() && !entries.At(fWalk.fi).ends_with(L'*')) ++fWalk.fi;
      if (fWalk.fi == entries.Count()) return {};
      EnterFolder(std::wstring(WithoutStarAndDelimiter(entries.At(fWalk.fi++))));
      continue;
    }
    TDiskEntry& found = stack.FindData;
    while (fWalk.files && fWalk.files->Next(found)) {
      if (!found.isFolder) return stack.GetCurrentPath() + found.name;
    }
    fWalk.files.reset();
    const IDiskSearch* const top = stack.Top();
    while (stack.Top() == top && stack.Top()->Next(found)) {
      if (found.isFolder && (fFollowReparsePoint || !found.isLink)) EnterFolder(std::wstring(found.name));
    }
    if (stack.Top() == top) stack.Pop();
  }
}

std::unique_ptr<TKivPathList> TKivSelectionList::GetListOfAllFiles() {
  TWalk standing = std::exchange(fWalk, {});
  std::vector<std::wstring> paths;
  for (std::wstring path = FindNext(); !path.empty(); path = FindNext()) paths.push_back(std::move(path));
  fWalk = std::move(standing);
  auto list = std::make_unique<TKivPathList>();
  list->SetStrings(std::move(paths));
  return list;
}

void TKivSelectionList::PerformSizeCalculation(std::wstring_view pPath, bool pSubtract) {
  if (!fCalculateSelectedFiles) return;
  std::wstring path(WithoutStarAndDelimiter(pPath));
  (pSubtract ? fToSubtract : fToAdd).push_back(std::move(path));
}

void TKivSelectionList::StartCalculations() {
  IFolderSizeSource* const source = FolderSizeSource();
  const TAliveWatch watch(GetAliveToken());
  const auto measure = [&](std::vector<std::wstring>& paths, int factor) {
    std::vector<std::wstring> wanted = std::exchange(paths, {});
    if (!source || wanted.empty()) return;
    const ComPtr<ICancellationIndicator> token = fCancellationToken;
    source->Measure(std::move(wanted), fFollowReparsePoint, token,
                    [this, watch, token, factor](const TFolderSize& size) {
                      if (watch.IsAlive() && !token->IsCancellationRequested()) CompletedFolderSize(size, factor);
                    });
  };
  measure(fToAdd, 1);
  if (watch.IsAlive()) measure(fToSubtract, -1);
}

void TKivSelectionList::CompletedFolderSize(const TFolderSize& pSize, int pFactor) {
  FSize += pFactor * pSize.size;
  FFileCount += pFactor * pSize.fileCount;
  FFolderCount += pFactor * pSize.folderCount;
  if (IsEmpty()) {
    FSize = 0;
    FFileCount = FFolderCount = 0;
  }
  DoCompletedCalculateFiles();
}

void TKivSelectionList::AbortSizeCalculation() {
  fCancellationToken.Reset();
  fToAdd.clear();
  fToSubtract.clear();
  FSize = 0;
  FFileCount = FFolderCount = 0;
  DoCompletedCalculateFiles();
}

void TKivSelectionList::DoCompletedCalculateFiles() {
  if (!fOnCompletedCalculateFiles) return;
  Tell([this] { static_cast<void>(FireEvent(GetAliveToken(), fOnCompletedCalculateFiles, this)); });
}

} // namespace kiv
