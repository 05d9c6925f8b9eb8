#include <folder_view/FolderView.h>

#include <core/ItemIdList.h>
#include <framework/TextCompare.h>
#include <platform/MainThread.h>
#include <threading/WorkProcedures.h>

#include <algorithm>
#include <chrono>
#include <utility>

// Entries become rows, and rows get what is seen of them.

namespace kiv::sample {

namespace {

/// What a row asks a worker.
struct TLook {
  int image = -1;
  std::wstring type;
  TKivSelectionState state = ssUnused;
};

} // namespace

/// What may be done at once: some rows, or as many as a short time allows. Asked for each.
class TFolderView::TTurn {
public:
  bool IsOver() const noexcept { return fAsked++ > AtOnce && fAsked % Step == 0 && TClock::now() > fEnd; }

private:
  using TClock = std::chrono::steady_clock;
  static constexpr int AtOnce = 1000;
  static constexpr int Step = 128; // rows between two looks at the clock
  static constexpr std::chrono::milliseconds Longest{20};

  const TClock::time_point fEnd = TClock::now() + Longest;
  mutable int fAsked = 0;
};

bool TFolderView::IsWanted(const TFolderEntry& pEntry) const {
  return fFilter.IsEmpty() || fFilter.Matches(pEntry.name);
}

// Gives each row the place that it is to have, and makes those that are missing, while there is time. How many there
// are then.
int TFolderView::RankRows(const TEntries& pWanted, const TTurn& pTurn) {
  TListItems& rows = GetItems();
  for (int i = 0; i < rows.GetCount(); ++i) GetRow(i)->rank = TFolderRow::LeavingRank;
  const bool checks = Selection() != nullptr;
  const bool nothing_checked = checks && Selection()->IsEmpty();
  int rank = 0;
  for (const TEntry& entry : pWanted) {
    if (!entry->row) {
      fUnfinished = fUnfinished || pTurn.IsOver();
      if (fUnfinished) continue;
      auto row = std::make_unique<TFolderRow>(&rows, entry);
      if (nothing_checked) row->SetState(PathOf(*entry).empty() ? ssDisabled : ssUnChecked);
      rows.AddItem(std::move(row));
    }
    entry->row->rank = rank++;
  }
  return rank;
}

// The focus goes to the next row that stays.
void TFolderView::KeepFocusNear() {
  TFolderRow* const focused = FocusedRow();
  if (!focused || !focused->IsLeaving()) return;
  const int count = GetItems().GetCount();
  TFolderRow* next = nullptr;
  for (int i = focused->GetIndex(); i < count && !next; ++i) next = GetRow(i)->IsLeaving() ? nullptr : GetRow(i);
  for (int i = focused->GetIndex(); i >= 0 && !next; --i) next = GetRow(i)->IsLeaving() ? nullptr : GetRow(i);
  if (next) SetItemFocused(next);
}

// Rows that leave are brought to the end first, where taking them out moves no others. Of very many, the next turns
// make and delete what is left.
void TFolderView::ShowRows() {
  TEntries filtered;
  if (!fFilter.IsEmpty()) {
    std::copy_if(fEntries.begin(), fEntries.end(), std::back_inserter(filtered),
                 [this](const TEntry& entry) { return IsWanted(*entry); });
  }
  const TEntries& wanted = fFilter.IsEmpty() ? fEntries : filtered;
  TListItems& rows = GetItems();
  const TAliveWatch alive(GetAliveToken());
  {
    const ScopedRowUpdate update(rows);
    rows.Reserve(static_cast<int>(wanted.size()));
    const TTurn turn;
    fUnfinished = false;
    const int ranked = RankRows(wanted, turn);
    KeepFocusNear();
    bool moves = false;
    for (int i = 1; i < rows.GetCount() && !moves; ++i) moves = GetRow(i)->rank < GetRow(i - 1)->rank;
    if (moves) rows.SortByKey([](const TListItem& row) { return static_cast<const TFolderRow&>(row).rank; });
    while (rows.GetCount() > ranked && !turn.IsOver()) rows.Delete(rows.GetCount() - 1);
    if (rows.GetCount() > ranked) {
      fUnfinished = true;
      rows.SelectRange(ranked, rows.GetCount() - 1, false);
    }
    if (rows.GetCount() > 0 && !GetItemFocused()) SetItemFocused(GetRow(0));
  }
  if (!alive.IsAlive()) return;
  if (fUnfinished && !std::exchange(fTurnQueued, true)) {
    MainThread::Queue([this, indicator = ComPtr<ICancellationIndicator>(fNavigation)] {
      if (indicator->IsCancellationRequested()) return;
      fTurnQueued = false;
      const TAliveWatch watch(GetAliveToken());
      if (fUnfinished) ShowRows();
      if (watch.IsAlive()) EndAwaitingWhatWontCome();
    });
  }
  if (rows.GetCount() == 0) Invalidate(); // the message
  GoToAwaited();
  if (alive.IsAlive()) StatusChanged();
}

TFolderRow* TFolderView::FindRow(std::wstring_view pName) const {
  const std::wstring key = KeyOfName(pName);
  for (const TEntry& entry : fEntries) {
    const bool found = fFolder.names == TNameUse::Unique ? entry->key == key : SameText(entry->name, pName);
    if (found) return entry->row;
  }
  return nullptr;
}

void TFolderView::SetAwaited(const std::wstring& pName, bool pEdit) {
  fAwaited = KeyOfName(pName);
  fEditAwaited = pEdit;
  GoToAwaited();
}

void TFolderView::GoToAwaited() {
  if (fAwaited.empty()) return;
  TFolderRow* const row = FindRow(fAwaited);
  if (!row) return;
  fAwaited.clear();
  const bool edit = std::exchange(fEditAwaited, false);
  if (SelectOnly(row) && edit) PostAction([this] { RenameFocused(); });
}

// What was waited for isn't there: that it comes some day is no reason to take the focus then.
void TFolderView::EndAwaiting() {
  fAwaited.clear();
  fEditAwaited = false;
}

void TFolderView::EndAwaitingWhatWontCome() {
  if (!IsListing() && !fReading && !fRelist && fNames.empty()) EndAwaiting();
}

// False if a handler has let the row go.
bool TFolderView::SelectOnly(TFolderRow* pRow) {
  const TAliveWatch alive(pRow->GetAliveToken());
  SetSelected(pRow);
  if (alive.IsAlive()) SetItemFocused(pRow);
  if (alive.IsAlive()) pRow->MakeVisible(false);
  return alive.IsAlive();
}

// --- order -----------------------------------------------------------------------------------------------------------

void TFolderView::ShowSortMarks() {
  for (int i = 0; i < GetColumns().GetCount(); ++i) {
    const bool marked = i == static_cast<int>(fOrder.column);
    GetColumn(i)->SetSortMark(!marked ? TSortMark::None : fOrder.descending ? TSortMark::Down : TSortMark::Up);
  }
}

void TFolderView::ColClick(TListColumn* pColumn) {
  const auto column = static_cast<TFolderColumn>(pColumn->GetIndex());
  SetOrder({column, fOrder.column == column && !fOrder.descending});
}

void TFolderView::SetOrder(const TFolderOrder& pOrder) {
  if (pOrder == fOrder) return;
  fOrder = pOrder;
  ShowSortMarks();
  SortLater();
}

// By a worker: a hundred thousand names take their time.
void TFolderView::SortLater() {
  if (fSorting || fEntries.empty()) return;
  fSorting = true;
  struct TSort {
    TEntries entries;
    TFolderOrder order;
    unsigned version;
    bool done = false;
  };
  const auto sort = std::make_shared<TSort>(TSort{fEntries, fOrder, fVersion});
  const auto work = [sort] {
    SortEntries(sort->entries, sort->order);
    sort->done = true;
  };
  Run(fNavigation, work, [this, sort] {
    fSorting = false;
    if (sort->done && (sort->version != fVersion || sort->order != fOrder)) {
      SortLater();
      return;
    }
    RunWhatWasHeldUp();
    if (!sort->done) return;
    fEntries = std::move(sort->entries);
    ++fVersion;
    ShowRows();
  });
}

// --- what is seen ----------------------------------------------------------------------------------------------------

void TFolderView::GetImageIndex(TListItem* pItem) {
  auto* const row = static_cast<TFolderRow*>(pItem);
  const bool wants_state = Selection() && !row->IsStateKnown();
  if (row->HasLook() && !wants_state) return;
  const std::shared_ptr<ISelectionStateSource> states = wants_state ? Selection()->GetStateSource() : nullptr;
  const auto look = std::make_shared<TLook>();
  const auto ask = [look, states, entry = row->Entry(), folder = fFolder.list, path = PathOf(*row->Entry()),
                    known = row->HasLook()] {
    if (!known) {
      look->image = ImageOf(*entry, folder.Get());
      look->type = TypeOf(*entry);
    }
    bool below = false;
    if (!states) return;
    // What has no path can't be selected. A list of a path knows it without asking.
    look->state = path.empty() ? ssDisabled : states->IsPIDLSelected(TKivItemIdList::Create(path).Get(), below);
  };
  const auto show = [row, look, known = row->HasLook(), wants_state] {
    if (!known) row->TakeLook(look->image, std::move(look->type));
    if (wants_state) row->SetState(look->state);
    row->Update();
  };
  row->Token().Reset(); // what was asked before
  FolderWorkers().AddWorkItem(TAsyncProcedure::Create(ask, row->Token(), show), TPriority::Normal);
}

} // namespace kiv::sample
