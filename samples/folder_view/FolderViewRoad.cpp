#include <folder_view/FolderView.h>

#include <framework/Application.h>
#include <platform/ErrorText.h>
#include <platform/MainThread.h>
#include <threading/WorkProcedures.h>

#include <utility>

// The road of a navigation.

namespace kiv::sample {

// Done by a worker for whoever the token stands for. Unless that is withdrawn, `pDone` comes, whatever the work raised:
// what waits for it would wait for ever.
void TFolderView::Run(CancellationToken& pToken, std::function<void()> pWork, std::function<void()> pDone) {
  const auto work = [raised = std::move(pWork)] {
    try {
      raised();
    } catch (...) {
      ReportException(std::current_exception());
    }
  };
  FolderWorkers().AddWorkItem(TAsyncProcedure::Create(work, pToken, std::move(pDone)), TPriority::Highest);
  MakeRoomForOne(); // all others may ask for icons that never come
}

void TFolderView::GoTo(const ComPtr<IItemIdList>& pFolder) {
  if (!pFolder) return;
  const TAliveWatch alive(GetAliveToken());
  if (fLink && !fLink->CanNavigate(this, pFolder.Get())) return;
  if (!alive.IsAlive()) return;
  Show(pFolder);
  // Who heard of it may have gone on elsewhere, and told the link of that.
  if (alive.IsAlive() && fLink && fFolder.list == pFolder) fLink->PathChanged(this, pFolder.Get());
}

void TFolderView::GoToText(const std::wstring& pText) {
  fTyped.Reset();
  MakeRoom();
  fFinding = true;
  const auto opened = std::make_shared<TOpenedFolder>();
  const auto done = [this, opened, indicator = ComPtr<ICancellationIndicator>(fTyped)] {
    fFinding = false;
    const TAliveWatch alive(GetAliveToken());
    if (opened->failure) Fail(opened->failure.Text());
    if (alive.IsAlive()) StatusChanged();
    // Who heard of it may have gone on elsewhere, or let the view go.
    if (!opened->failure && !indicator->IsCancellationRequested()) GoTo(opened->list);
  };
  Run(
      fTyped, [opened, pText] { *opened = OpenFolder(pText); }, done);
  StatusChanged();
}

void TFolderView::WithdrawText() {
  fTyped.Reset();
  if (std::exchange(fFinding, false)) StatusChanged();
}

void TFolderView::Leave() {
  fNavigation.Reset();
  fNotifier.reset();
  fHints.reset();
  fChangeTimer.SetEnabled(false);
  fNames.clear();
  fRenamed.clear();
  fMoved.clear();
  fRelist = fReading = fSorting = fListing = false;
  fRenaming = 0;
  EndAwaiting();
  fUnfinished = fTurnQueued = fNameCame = false;
  fOpened = false;
  fListedSince = 0;
}

void TFolderView::Show(const ComPtr<IItemIdList>& pFolder) {
  const TAliveWatch alive(GetAliveToken());
  if (!IsInsideNative()) RunActions(); // a name that was typed is no less wanted
  if (!alive.IsAlive()) return;
  fTyped.Reset();
  fFinding = false;
  Leave();
  GetItems().Clear();
  if (!alive.IsAlive()) return;
  Leave(); // a handler may have gone elsewhere when the rows went
  MakeRoom();
  LetGo(std::exchange(fEntries, {}));
  ++fVersion;
  fMessage.clear();
  fFolder = {};
  fFolder.list = pFolder;
  fListing = true;
  fAgain = false;
  if (!FireEvent(GetAliveToken(), fOnFolder, this)) return;
  Fail({});
  if (!alive.IsAlive() || fFolder.list != pFolder) return;
  const auto answer = std::make_shared<TListAnswer>();
  const ComPtr<ICancellationIndicator> indicator = fNavigation;
  // A folder of a disk is listed at once.
  const auto open = [this, indicator, pFolder, answer, list = MakeLister(answer)] {
    const TOpenedFolder opened = OpenFolder(pFolder);
    answer->listed = !opened.failure && !opened.diskPath.empty();
    MainThread::Queue([this, indicator, opened, listed = answer->listed] {
      if (!indicator->IsCancellationRequested()) TakeOpened(opened, listed);
    });
    if (answer->listed) list(opened);
  };
  Run(fNavigation, open, [this, answer] {
    if (answer->listed) TakeListed(*answer);
  });
}

void TFolderView::TakeOpened(const TOpenedFolder& pFolder, bool pIsBeingListed) {
  fFolder = pFolder;
  const ComPtr<IItemIdList> list = fFolder.list;
  fOpened = !fFolder.failure;
  if (!FireEvent(GetAliveToken(), fOnFolder, this) || fFolder.list != list) return;
  if (fFolder.failure) {
    EndListing(fFolder.failure);
    return;
  }
  if (pIsBeingListed) return;
  Watch();
  StartListing(false);
}

// What a worker does to list a folder in the order that is wanted now. Its closures refer to the view only where they
// run on the main thread and haven't been withdrawn.
std::function<void(const TOpenedFolder&)> TFolderView::MakeLister(const std::shared_ptr<TListAnswer>& pAnswer) {
  const ComPtr<ICancellationIndicator> indicator = fNavigation;
  // Nothing but the order changes of the entries while a folder is listed again.
  const auto known = std::make_shared<const TEntries>(fAgain ? fEntries : TEntries());
  const auto deliver = [this, indicator, order = fOrder, again = fAgain, known, moved = fMoved](TEntries entries,
                                                                                                bool complete) {
    if (again && !complete) return;
    TMerged merged{std::move(entries), {}};
    if (again) merged = MergeEntries(*known, moved, std::move(merged.entries));
    MainThread::Queue([this, indicator, order, merged = std::move(merged)]() mutable {
      if (!indicator->IsCancellationRequested()) TakeEntries(std::move(merged), order);
    });
  };
  const int page = HandleAllocated() ? GetVisibleRowCount() : 0;
  return [pAnswer, indicator, deliver, order = fOrder, page](const TOpenedFolder& folder) {
    pAnswer->since = LastChange(folder.diskPath);
    pAnswer->failure = ListFolder({folder, order, page}, *indicator.Get(), deliver);
  };
}

void TFolderView::StartListing(bool pAgain) {
  fListing = true;
  fAgain = pAgain;
  fRelist = false;
  fNames.clear();
  fMoved = std::exchange(fRenamed, {});
  fNameCame = false;
  const auto answer = std::make_shared<TListAnswer>();
  Run(
      fNavigation, [list = MakeLister(answer), folder = fFolder] { list(folder); },
      [this, answer] { TakeListed(*answer); });
  StatusChanged();
}

void TFolderView::TakeListed(const TListAnswer& pAnswer) {
  if (!fAgain) fListedSince = pAnswer.since;
  EndListing(pAnswer.failure);
}

void TFolderView::TakeEntries(TMerged pMerged, const TFolderOrder& pOrder) {
  if (std::exchange(fNameCame, false) || (fAgain && IsNameOpen())) {
    ListBehindTheEdit();
    return;
  }
  for (const auto& [old, entry] : pMerged.changed) {
    if (old->row) old->row->SetEntry(entry);
  }
  LetGo(std::exchange(fEntries, std::move(pMerged.entries)));
  ++fVersion;
  if (pOrder == fOrder)
    ShowRows();
  else
    SortLater();
}

// Entries of a huge folder take their time to go.
void TFolderView::LetGo(TEntries pEntries) {
  constexpr std::size_t many = 1000;
  if (pEntries.size() < many) return;
  const auto going = std::make_shared<TEntries>(std::move(pEntries));
  FolderWorkers().AddWorkItem(TAsyncProcedure::Create([going] { going->clear(); }), TPriority::Normal);
}

void TFolderView::EndListing(const TFailure& pFailure) {
  fListing = false;
  if (pFailure && IsEditing()) {
    ListBehindTheEdit();
  } else if (pFailure) {
    fEntries.clear();
    ++fVersion;
  }
  fMessage = pFailure ? pFailure.what + L"\n" + DescribeError(pFailure.code) : L"This folder is empty.";
  const TAliveWatch alive(GetAliveToken());
  ShowRows();
  if (!alive.IsAlive() || fListing) return;
  if (fRelist || !fNames.empty() || !fNotifier) fChangeTimer.SetEnabled(true);
  EndAwaitingWhatWontCome();
}

// What has come or gone since the listing began and before the folder was watched.
void TFolderView::LookForMissedChanges() {
  if (fListedSince == 0) return;
  const auto now = std::make_shared<TFileTime>(0);
  Run(
      fNavigation, [now, path = fFolder.diskPath] { *now = LastChange(path); },
      [this, now] {
        if (*now == fListedSince) return;
        fRelist = true;
        RunChanges();
      });
}

void TFolderView::Reload() {
  const TAliveWatch alive(GetAliveToken());
  Fail({});
  if (!alive.IsAlive() || !fFolder.list) return;
  if (fFolder.failure && !fFolder.path.empty()) {
    GoToText(fFolder.path); // a list that was invalid once stays so
    return;
  }
  if (!fOpened) {
    Show(ComPtr<IItemIdList>(fFolder.list));
    return;
  }
  fRelist = true;
  RunChanges();
}

} // namespace kiv::sample
