// Selecting and unselecting.
#include <coordination/SelectionList.h>

#include <coordination/ShellLink.h>
#include <core/PathFunctions.h>
#include <core/PathUtils.h>
#include <framework/FileNames.h>
#include <framework/PropertyRegistry.h>
#include <framework/TextCompare.h>

#include <algorithm>
#include <utility>

namespace kiv {

using detail::WithDelimiter;
using detail::WithoutStar;
using detail::WithoutStarAndDelimiter;

namespace {

bool Publish() {
  PublishClass<TKivSelectionList>(L"TKivSelectionList", L"Files and folders that are selected by check boxes.")
      .Property(L"HandleShellLinks", &TKivSelectionList::GetHandleShellLinks, &TKivSelectionList::SetHandleShellLinks,
                true, L"A folder with a file \"target.lnk\" stands for where that leads.")
      .Property(L"CalculateSelectedFiles", &TKivSelectionList::GetCalculateSelectedFiles,
                &TKivSelectionList::SetCalculateSelectedFiles, true, L"Keeps size and counts of what is selected.")
      .Property(L"FollowReparsePoint", &TKivSelectionList::GetFollowReparsePoint,
                &TKivSelectionList::SetFollowReparsePoint, false, L"Enters junctions and links.")
      .Property(L"RemoveInvalidPaths", &TKivSelectionList::GetRemoveInvalidPaths,
                &TKivSelectionList::SetRemoveInvalidPaths, true, L"Drops a path that isn't there.")
      .Object(
          L"Paths", [](TKivSelectionList& list) -> TStrings& { return list.GetPaths(); },
          L"The entries: files, and folders with \"\\*\" at their end.");
  return true;
}
[[maybe_unused]] const bool gPublished = Publish();

std::wstring ParentOf(const std::wstring& folder) {
  return std::wstring(WithoutStarAndDelimiter(GetParentPathFromPath(folder)));
}

void SortPaths(std::vector<std::wstring>& paths) {
  const auto precedes = [](const std::wstring& a, const std::wstring& b) { return CompareText(a, b) < 0; };
  if (!std::is_sorted(paths.begin(), paths.end(), precedes)) std::sort(paths.begin(), paths.end(), precedes);
}

bool IsRoot(const std::wstring& folder) {
  return SameText(ExtractFileDrive(folder), folder);
}

} // namespace

TKivSelectionList::TKivSelectionList(TComponent* pOwner) : TKivBaseSelectionList(pOwner) {}

TKivSelectionList::~TKivSelectionList() {
  fCancellationToken.Cancel();
}

std::unique_ptr<TKivSelectionList> TKivSelectionList::CreateCopy(const TKivSelectionList& aSelectionList) {
  auto copy = std::make_unique<TKivSelectionList>();
  copy->SetHandleShellLinks(aSelectionList.GetHandleShellLinks());
  copy->fCalculateSelectedFiles = aSelectionList.fCalculateSelectedFiles;
  copy->fFollowReparsePoint = aSelectionList.fFollowReparsePoint;
  copy->fRemoveInvalidPaths = aSelectionList.fRemoveInvalidPaths;
  copy->Assign(&aSelectionList);
  return copy;
}

std::wstring TKivSelectionList::ClassName() const {
  return L"TKivSelectionList";
}

// What the change has to tell and to measure waits for its end. The handlers may destroy this object: nothing of it is
// touched behind the write.
void TKivSelectionList::Edit(const std::function<void()>& pChange) {
  const std::shared_ptr<TSelectionStates> states = fStates;
  states->Lock().Write([&] {
    ++fEditing;
    try {
      pChange();
    } catch (...) {
      --fEditing;
      throw;
    }
    if (fEditing == 1 && !(fToAdd.empty() && fToSubtract.empty())) Tell([this] { StartCalculations(); });
    --fEditing;
  });
}

void TKivSelectionList::Tell(std::function<void()> pEvent) {
  if (fEditing == 0) {
    pEvent();
    return;
  }
  fStates->Lock().AfterWrite([watch = TAliveWatch(GetAliveToken()), event = std::move(pEvent)] {
    if (watch.IsAlive()) event();
  });
}

void TKivSelectionList::AddPathToSelection(const std::wstring& sFQPath) {
  if (sFQPath.empty()) return;
  Edit([&] {
    std::wstring entry;
    if (AddEntry(sFQPath, entry)) Complete(entry);
  });
}

// In order, so that each entry comes behind the last one. Whether a folder is complete is asked once for all of its
// children.
void TKivSelectionList::AddPaths(std::vector<std::wstring> pPaths) {
  Edit([&] {
    SortPaths(pPaths);
    std::vector<std::wstring> added;
    for (std::wstring& path : pPaths) {
      std::wstring entry;
      if (!path.empty() && AddEntry(std::move(path), entry)) added.push_back(std::move(entry));
    }
    std::wstring last;
    for (const std::wstring& entry : added) {
      std::wstring parent = ParentOf(std::wstring(WithoutStarAndDelimiter(entry)));
      if (SameText(parent, last) || !List().Contains(entry)) continue;
      last = std::move(parent);
      Complete(entry);
    }
  });
}

// The entry alone, without a look at what it completes. False if it can complete nothing: it hasn't come in, or isn't
// there, and then a folder that shows nothing else isn't complete by it.
bool TKivSelectionList::AddEntry(std::wstring pPath, std::wstring& pEntry) {
  pEntry = GetHandleShellLinks() && fStates->IsLinkedPath(pPath) ? fStates->LinkTargetOf(pPath) : pPath;
  const bool exists = FormatSelectionPath(pEntry);
  if (exists) {
    bool is_sub_item = false;
    const TKivSelectionState state = IsItemSelected(pEntry, is_sub_item);
    if (state == ssChecked) return false;
    if (state == ssGrayed) RemoveSubFolders(pEntry);
  } else {
    DoInvalidPath(pPath);
    if (fRemoveInvalidPaths) return false;
    List().SetMayNest();
  }
  if (pEntry.empty() || !List().Insert(pEntry)) return false;
  if (exists && pEntry.ends_with(L'*')) {
    PerformSizeCalculation(pEntry, false);
  } else if (exists && fCalculateSelectedFiles) {
    FSize += std::max<std::int64_t>(fStates->Disk().FileSize(pEntry), 0);
    ++FFileCount;
    DoCompletedCalculateFiles();
  }
  Changed(pEntry);
  return exists;
}

void TKivSelectionList::Complete(const std::wstring& pEntry) {
  if (!IsItemFullSelected(pEntry)) return;
  const std::wstring path(WithoutStarAndDelimiter(pEntry));
  const std::wstring answer = CompletePathSelected(path);
  std::wstring entry;
  if (!SameText(answer, path)) AddEntry(answer, entry); // which completes nothing: it is the highest
}

std::wstring TKivSelectionList::CompletePathSelected(const std::wstring& sFQPath) {
  return CompletePathSelectedExclude(GetParentPathFromPath(sFQPath), sFQPath);
}

std::wstring TKivSelectionList::CompletePathSelectedExclude(const std::wstring& pParent, const std::wstring& pExclude) {
  const auto all_others_selected = [this](const std::wstring& folder, const std::wstring& exclude) {
    const std::unique_ptr<IDiskSearch> search = fStates->Disk().Search(folder);
    if (!search) return false;
    std::size_t hint = 0;
    std::wstring child = WithDelimiter(folder);
    const std::size_t prefix = child.size();
    for (TDiskEntry object; search->Next(object); child.resize(prefix)) {
      child += object.name;
      if (SameText(child, exclude)) continue;
      if (!object.isFolder) {
        if (!List().ContainsNear(child, hint)) return false;
      } else if (!List().ContainsNear(child + L"\\*", hint) && !CompleteChildPathSelected(child)) {
        return false;
      }
    }
    return true;
  };
  std::wstring folder(WithoutStarAndDelimiter(pParent));
  std::wstring complete = pExclude;
  while (!SameText(folder, complete) && all_others_selected(folder, complete)) {
    if (IsRoot(folder)) return WithDelimiter(folder);
    complete = std::exchange(folder, ParentOf(folder));
  }
  return complete;
}

bool TKivSelectionList::CompleteChildPathSelected(const std::wstring& pPath) {
  // From the path down, each with whether it has shown a child yet. A folder with no entry below isn't asked for.
  struct TLevel {
    std::unique_ptr<IDiskSearch> search;
    std::wstring prefix;
    bool hasChildren = false;
  };
  std::vector<TLevel> levels;
  const auto enter = [&](std::wstring_view path) {
    std::wstring prefix = WithDelimiter(path);
    const auto [first, last] = List().StartingWith(prefix);
    if (first == last) return false;
    levels.push_back({fStates->Disk().Search(std::wstring(path)), std::move(prefix)});
    return levels.back().search != nullptr;
  };
  const std::wstring top(WithoutStarAndDelimiter(pPath));
  if (List().Contains(top) || List().Contains(top + L"\\*")) return true;
  if (!enter(top)) return false;
  while (!levels.empty()) {
    TLevel& level = levels.back();
    TDiskEntry object;
    if (!level.search->Next(object)) {
      if (!level.hasChildren) return false;
      levels.pop_back();
      continue;
    }
    level.hasChildren = true;
    const std::wstring child = level.prefix + object.name;
    if (List().Contains(object.isFolder ? child + L"\\*" : child)) continue;
    if (!object.isFolder || !enter(child)) return false;
  }
  return true;
}

void TKivSelectionList::RemovePathFromSelection(const std::wstring& sFQPath) {
  RemovePaths({sFQPath});
}

// Entries that stand side by side leave together, so that each of the others moves up once and not for each of them.
void TKivSelectionList::RemovePaths(std::vector<std::wstring> pPaths) {
  Edit([&] {
    SortPaths(pPaths);
    TSelectionEntries::TRange leaving{0, 0};
    const auto let_go = [&] { EraseEntries(std::exchange(leaving, {}), true); };
    bool any = false;
    for (std::wstring& path : pPaths) {
      if (path.empty()) continue;
      if (GetHandleShellLinks() && fStates->IsLinkedPath(path)) path = fStates->LinkTargetOf(path);
      std::replace(path.begin(), path.end(), L'/', L'\\');
      bool is_sub_item = false;
      TKivSelectionState state = PathSelected(path, is_sub_item);
      any = any || state != ssUnChecked;
      std::size_t index = 0;
      if (state == ssChecked && !is_sub_item) {
        FormatSelectionPath(path);
        if (!List().Find(path, index) || (index >= leaving.first && index < leaving.second)) continue;
        if (index != leaving.second) {
          let_go();
          List().Find(path, index);
          leaving = {index, index};
        }
        ++leaving.second;
        continue;
      }
      if (leaving.first != leaving.second) {
        let_go(); // which may have been what it was selected by
        state = PathSelected(path, is_sub_item);
      }
      if (state == ssGrayed) RemoveSubFolders(path);
      if (state != ssChecked) continue;
      const std::wstring bare(WithoutStarAndDelimiter(path));
      DissolveAncestor(bare, GetParentPathFromPath(bare));
    }
    let_go();
    if (IsEmpty() && any) AbortSizeCalculation();
  });
}

// The entry that covers a path gives way to entries for all else that it covers.
void TKivSelectionList::DissolveAncestor(const std::wstring& pPath, const std::wstring& pParent) {
  std::wstring top;
  AddAllExclude(pParent, pPath, top);
  if (fCalculateSelectedFiles) --FFolderCount;
  PerformSizeCalculation(pPath, true);
  std::size_t index = 0;
  if (List().Find(WithDelimiter(top) + L'*', index)) DeleteEntry(static_cast<int>(index), false);
}

// Each level comes in order and goes in as a whole, the highest first: the lowest, which may be large, then finds its
// place between two entries. None goes in before all are asked for, since the entry on top covers until then.
void TKivSelectionList::AddAllExclude(const std::wstring& pParent, const std::wstring& pExclude, std::wstring& pTop) {
  std::vector<std::vector<std::wstring>> levels;
  std::wstring exclude = pExclude;
  pTop = WithoutStarAndDelimiter(pParent);
  while (!SameText(pTop, exclude)) {
    std::vector<std::wstring>& added = levels.emplace_back();
    std::wstring child = WithDelimiter(pTop);
    const std::size_t prefix = child.size();
    const std::unique_ptr<IDiskSearch> search = fStates->Disk().Search(pTop);
    for (TDiskEntry object; search && search->Next(object); child.resize(prefix)) {
      child += object.name;
      if (SameText(child, exclude)) continue;
      if (object.isFolder) child += L"\\*";
      added.push_back(child);
    }
    std::wstring above = ParentOf(pTop);
    if (!IsItemFullSelected(WithDelimiter(above) + L'*')) break;
    exclude = std::exchange(pTop, std::move(above));
  }
  for (const auto& level : levels) {
    for (const std::wstring& entry : level) Changed(entry);
  }
  for (auto level = levels.rbegin(); level != levels.rend(); ++level) List().InsertAll(std::move(*level));
}

void TKivSelectionList::RemoveSubFolders(const std::wstring& pPath) {
  EraseEntries(List().StartingWith(WithDelimiter(WithoutStar(pPath))), true);
}

void TKivSelectionList::DeleteEntry(int pIndex, bool pUpdateSize) {
  if (pIndex < 0 || pIndex >= GetCount()) return;
  const auto index = static_cast<std::size_t>(pIndex);
  Edit([&] { EraseEntries({index, index + 1}, pUpdateSize); });
}

void TKivSelectionList::EraseEntries(TSelectionEntries::TRange pRange, bool pUpdateSize) {
  for (std::size_t i = pRange.second; i-- > pRange.first;) {
    if (pUpdateSize) PerformSizeCalculation(List().At(i), true);
    Changed(List().At(i));
  }
  List().Erase(pRange);
}

void TKivSelectionList::Clear() {
  Edit([this] {
    AbortSizeCalculation();
    EraseEntries({0, List().Count()}, false);
    List().Clear();
  });
}

void TKivSelectionList::PathWasRenamed(const std::wstring& pOldPath, const std::wstring& pNewPath) {
  const std::wstring old_path(WithoutStarAndDelimiter(pOldPath));
  const std::wstring new_path(WithoutStarAndDelimiter(pNewPath));
  if (old_path.empty() || new_path.empty()) return;
  Edit([&] {
    std::vector<std::wstring> moved;
    const auto take = [&](TSelectionEntries::TRange range) {
      for (std::size_t i = range.first; i < range.second; ++i) {
        moved.push_back(new_path + List().At(i).substr(old_path.size()));
      }
      List().Erase(range);
    };
    std::size_t index = 0;
    if (List().Find(old_path, index)) take({index, index + 1});
    take(List().StartingWith(WithDelimiter(old_path)));
    std::erase_if(moved, [this](const std::wstring& entry) { return IsItemFullSelected(entry); });
    for (const std::wstring& entry : moved) {
      if (entry.ends_with(L'*')) List().Erase(List().StartingWith(WithoutStar(entry)));
      Changed(entry);
    }
    List().InsertAll(std::move(moved));
  });
}

void TKivSelectionList::DoInvalidPath(const std::wstring& pPath) {
  if (!fOnInvalidPath) return;
  Tell([this, pPath] { static_cast<void>(FireEvent(GetAliveToken(), fOnInvalidPath, this, pPath)); });
}

void TKivSelectionList::Changed(const std::wstring& pPath) {
  ResetFindNext();
  const bool refreshes = fIsUpdating == 0 && dynamic_cast<TKivShellLink*>(GetOwner());
  if (!fOnChange && !refreshes) return;
  Tell([this, refreshes, path = pPath] {
    if (!FireEvent(GetAliveToken(), fOnChange, this)) return;
    auto* const link = dynamic_cast<TKivShellLink*>(GetOwner());
    if (!refreshes || !link) return;
    const std::wstring bare(WithoutStarAndDelimiter(path));
    const auto list = fStates->Disk().MakeItemIdList(IsDrive(bare) ? WithDelimiter(bare) : bare);
    link->Refresh(nullptr, TRefreshLevel::rfCheckboxes, list.Get());
  });
}

} // namespace kiv
