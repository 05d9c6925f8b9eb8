#include <folder_view/FolderView.h>

#include <core/PathFunctions.h>
#include <platform/MainThread.h>
#include <threading/WorkProcedures.h>

#include <utility>

// What the user does with the objects of the folder.

namespace kiv::sample {

std::wstring TFolderView::PathOf(const TFolderEntry& pEntry) const {
  if (!pEntry.IsOnDisk()) return {};
  if (IsDrive(pEntry.name)) return pEntry.name;
  return fFolder.diskPath.empty() ? std::wstring() : PathOfName(pEntry.name);
}

std::wstring TFolderView::PathOfName(const std::wstring& pName) const {
  return fFolder.diskPath + (fFolder.diskPath.ends_with(L'\\') ? L"" : L"\\") + pName;
}

std::vector<ComPtr<IItemIdList>> TFolderView::GetSelectedItemIdLists() const {
  std::vector<ComPtr<IItemIdList>> lists;
  for (int i = 0; i < GetItems().GetCount(); ++i) {
    if (GetRow(i)->GetSelected()) lists.push_back(fFolder.list->Concat(GetRow(i)->Entry()->item.Get()));
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
  struct TAnswer {
    ComPtr<IItemIdList> folder;
    TFailure failure;
  };
  const auto answer = std::make_shared<TAnswer>();
  const auto open = [answer, object, name = row->Entry()->name,
                     is_link = row->Entry()->flags.Contains(TObjectFlag::Link)] {
    const ComPtr<IItemIdList> target = is_link ? object->LinkTarget() : nullptr;
    if (target && target->IsFolder())
      answer->folder = target;
    else
      answer->failure = OpenObject(object, name);
  };
  Run(open, [this, answer] {
    if (answer->folder)
      GoTo(answer->folder);
    else
      Fail(answer->failure.Text());
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
  RunWhatTheEditHeldUp();
  if (pText.empty() || pText == name) return;
  Fail({});
  const auto failure = std::make_shared<TFailure>();
  Run([failure, folder = fFolder, name, pText] { *failure = RenameObject(folder, name, pText); },
      [this, failure, name, pText] {
        if (*failure) {
          Fail(failure->Text());
          return;
        }
        // The notification may take its time.
        if (Selection()) Selection()->PathWasRenamed(PathOfName(name), PathOfName(pText));
        NoteRename(name, pText);
        RunChanges();
      });
}

void TFolderView::DoCancelEdit() {
  RunWhatTheEditHeldUp();
  TCustomListView::DoCancelEdit();
}

void TFolderView::MakeNewFolder() {
  if (!fOpened) return;
  Fail({});
  struct TAnswer {
    std::wstring name;
    TFailure failure;
  };
  const auto answer = std::make_shared<TAnswer>();
  Run([answer, folder = fFolder] { answer->failure = MakeFolder(folder, answer->name); },
      [this, answer] {
        if (answer->failure) {
          Fail(answer->failure.Text());
          return;
        }
        fNames.insert(answer->name);
        SetAwaited(answer->name, true);
        RunChanges();
      });
}

// --- deleting --------------------------------------------------------------------------------------------------------

void TFolderView::DeleteSelectedObjects() {
  std::vector<std::wstring> paths;
  std::vector<std::wstring> names;
  for (int i = 0; i < GetItems().GetCount(); ++i) {
    const TFolderRow& row = *GetRow(i);
    if (!row.GetSelected() || !row.Entry()->IsOnDisk() || fFolder.diskPath.empty()) continue;
    paths.push_back(PathOf(*row.Entry()));
    names.push_back(row.Entry()->name);
  }
  if (paths.empty()) return;
  const std::wstring question = paths.size() == 1 ? L"Delete \u201C" + names.front() + L"\u201D?"
                                                  : L"Delete these " + std::to_wstring(paths.size()) + L" objects?";
  const TAliveWatch alive(GetAliveToken());
  const ComPtr<ICancellationIndicator> indicator = fNavigation;
  int answer = 0;
  {
    const MainThread::ScopedModalLoop loop;
    answer = MessageBoxW(Root().GetHandle(), question.c_str(), L"Delete", MB_YESNO | MB_ICONQUESTION);
  }
  if (!alive.IsAlive() || indicator->IsCancellationRequested() || answer != IDYES) return;
  Fail({});
  const auto failure = std::make_shared<TFailure>();
  Run([failure, paths] { *failure = DeleteObjects(paths); },
      [this, failure, names] {
        Fail(failure->Text());
        fNames.insert(names.begin(), names.end());
        RunChanges();
      });
}

} // namespace kiv::sample
