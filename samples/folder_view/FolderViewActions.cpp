#include <folder_view/FolderView.h>

#include <core/PathFunctions.h>
#include <framework/FileNames.h>
#include <platform/MainThread.h>
#include <threading/WorkProcedures.h>

#include <utility>

// What the user does with the objects of the folder.

namespace kiv::sample {

namespace {

std::wstring PathIn(const std::wstring& folder, const std::wstring& name) {
  return folder + (folder.ends_with(L'\\') ? L"" : L"\\") + name;
}

} // namespace

// What a user wants done is done, and told of, wherever the view goes meanwhile. `pDone` learns whether it still shows
// the same folder. Behind Fail, which may let the view go: nothing of it is used behind a call.
void TFolderView::Act(std::function<TFailure()> pAction, TActed pDone) {
  const ComPtr<ICancellationIndicator> left = fNavigation;
  const auto failure = std::make_shared<TFailure>(TFailure{L"That can't be done.", E_FAIL});
  const auto done = [this, failure, left, done = std::move(pDone)] {
    const TAliveWatch alive(GetAliveToken());
    if (*failure) Fail(failure->Text());
    if (alive.IsAlive()) done(!*failure, !left->IsCancellationRequested());
  };
  Run(
      fActions, [failure, action = std::move(pAction)] { *failure = action(); }, done);
  Fail({});
}

std::wstring TFolderView::PathOf(const TFolderEntry& pEntry) const {
  if (!pEntry.IsOnDisk()) return {};
  if (!pEntry.path.empty()) return pEntry.path;
  if (IsDrive(pEntry.name)) return pEntry.name;
  return fFolder.diskPath.empty() ? std::wstring() : PathIn(fFolder.diskPath, pEntry.name);
}

std::vector<ComPtr<IItemIdList>> TFolderView::GetSelectedItemIdLists() const {
  std::vector<ComPtr<IItemIdList>> lists;
  for (int i = 0; i < GetItems().GetCount(); ++i) {
    const TFolderRow& row = *GetRow(i);
    if (row.GetSelected() && !row.IsLeaving()) lists.push_back(fFolder.list->Concat(row.Entry()->item.Get()));
  }
  return lists;
}

void TFolderView::OpenFocused() {
  TFolderRow* const row = FocusedRow();
  if (!row) return;
  const ComPtr<IItemIdList> object = fFolder.list->Concat(row->Entry()->item.Get());
  if (row->Entry()->flags.Contains(TObjectFlag::Folder)) {
    GoTo(object);
    return;
  }
  // A shortcut to a folder leads there.
  const auto folder = std::make_shared<ComPtr<IItemIdList>>();
  const auto open = [folder, object, name = row->Entry()->name,
                     is_link = row->Entry()->flags.Contains(TObjectFlag::Link)] {
    const ComPtr<IItemIdList> target = is_link ? object->LinkTarget() : nullptr;
    if (!target || !target->IsFolder()) return OpenObject(object, name);
    *folder = target;
    return TFailure();
  };
  Act(open, [this, folder](bool, bool is_here) {
    if (is_here) GoTo(*folder);
  });
}

// --- names -----------------------------------------------------------------------------------------------------------

bool TFolderView::CanEdit(TListItem* pItem) {
  const auto& row = static_cast<const TFolderRow&>(*pItem);
  return !fFolder.diskPath.empty() && row.Entry()->IsOnDisk() && TCustomListView::CanEdit(pItem);
}

void TFolderView::RenameFocused() {
  TFolderRow* const row = FocusedRow();
  if (!row || !row->EditCaption()) return;
  // The extension is rarely what shall change.
  const std::wstring& name = row->Entry()->name;
  const std::size_t point = row->Entry()->IsFolder() ? std::wstring::npos : name.find_last_of(L'.');
  const bool cut = point != std::wstring::npos && point > 0;
  if (const HWND edit = GetEditControl()) {
    SendMessageW(edit, EM_SETSEL, 0, static_cast<LPARAM>(cut ? point : name.size()));
  }
}

void TFolderView::Edit(TListItem* pItem, const std::wstring& pText) {
  const auto& row = static_cast<const TFolderRow&>(*pItem);
  const std::wstring name = row.Entry()->name;
  RunWhatWasHeldUp();
  if (pText.empty() || pText == name) return;
  const auto rename = [folder = fFolder, name, pText] { return RenameObject(folder, name, pText); };
  const std::wstring path = PathOf(*row.Entry());
  ++fRenaming;
  Act(rename, [this, name, pText, path, new_path = PathIn(ExtractFileDir(path), pText)](bool succeeded, bool is_here) {
    if (is_here) --fRenaming;
    if (!succeeded) {
      if (is_here) RunWhatWasHeldUp();
      return;
    }
    const TAliveWatch alive(GetAliveToken());
    if (Selection()) Selection()->PathWasRenamed(path, new_path);
    if (!alive.IsAlive() || !is_here) return;
    fNameCame = fReading || (fListing && fAgain);
    NoteRename(name, pText); // the notification may take its time
    RunChanges();
    if (alive.IsAlive() && fFolder.names == TNameUse::Merged) SetAwaited(pText, false);
  });
}

void TFolderView::DoCancelEdit() {
  RunWhatWasHeldUp();
  TCustomListView::DoCancelEdit();
}

void TFolderView::MakeNewFolder() {
  if (!CanMakeFolder()) return;
  const auto name = std::make_shared<std::wstring>();
  Act([name, folder = fFolder] { return MakeFolder(folder, *name); },
      [this, name](bool succeeded, bool is_here) {
        if (!succeeded || !is_here) return;
        const TAliveWatch alive(GetAliveToken());
        fNames.insert(*name);
        RunChanges();
        if (alive.IsAlive()) SetAwaited(*name, true);
      });
}

// --- deleting --------------------------------------------------------------------------------------------------------

void TFolderView::DeleteSelectedObjects() {
  std::vector<std::wstring> paths;
  std::vector<std::wstring> names;
  for (int i = 0; i < GetItems().GetCount(); ++i) {
    const TFolderRow& row = *GetRow(i);
    if (!row.GetSelected() || row.IsLeaving()) continue;
    if (!row.Entry()->IsOnDisk() || fFolder.diskPath.empty()) continue;
    paths.push_back(PathOf(*row.Entry()));
    names.push_back(row.Entry()->name);
  }
  if (paths.empty()) return;
  const std::wstring question = paths.size() == 1 ? L"Delete \u201C" + names.front() + L"\u201D?"
                                                  : L"Delete these " + std::to_wstring(paths.size()) + L" objects?";
  const TAliveWatch alive(GetAliveToken());
  int answer = 0;
  {
    const MainThread::ScopedModalLoop loop;
    answer = MessageBoxW(Root().GetHandle(), question.c_str(), L"Delete", MB_YESNO | MB_ICONQUESTION);
  }
  if (!alive.IsAlive() || answer != IDYES) return;
  Act([paths] { return DeleteObjects(paths); },
      [this, names](bool, bool is_here) {
        if (!is_here) return;
        fNames.insert(names.begin(), names.end()); // some may have gone although it failed
        RunChanges();
      });
}

} // namespace kiv::sample
