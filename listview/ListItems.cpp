#include <listview/ListItems.h>

#include <framework/Application.h>
#include <framework/MergeSort.h>
#include <framework/TextCompare.h>
#include <listview/ListItemsHost.h>

#include <limits>
#include <string>

namespace kiv {

TListItems::TListItems(IListItemsHost& pHost) : fHost(pHost) {}

TListItems::~TListItems() {
  // A row's destructor may lead to foreign code, which must find an empty list and not one that is half gone.
  fAlive.Expire();
  fFocused = fReportedFocus = fAnchor = fEditing = fReportRow = nullptr;
  fSelected.Resize(0);
  fReported.Resize(0);
  std::vector<std::unique_ptr<TListItem>> going;
  going.swap(fRows);
  for (const auto& row : going) row->fInList = false;
}

std::wstring TListItems::ClassName() const {
  return L"TListItems";
}

void TListItems::Assign(const TPersistent* pSource) {
  const auto* source = dynamic_cast<const TListItems*>(pSource);
  if (source == nullptr) {
    TPersistent::Assign(pSource);
    return;
  }
  if (source == this) return;
  const ScopedRowUpdate update(*this);
  const TAliveWatch watch(fAlive);
  Clear();
  for (int i = 0; watch.IsAlive() && i < source->GetCount(); ++i) {
    if (TListItem* item = Add()) item->Assign(source->GetItem(i));
  }
}

TCustomListView* TListItems::GetListView() const noexcept {
  return fHost.GetListView();
}

void TListItems::CheckIndex(int pIndex) const {
  if (pIndex >= 0 && pIndex < GetCount()) return;
  throw EListError(L"Row " + std::to_wstring(pIndex) + L" doesn't exist; the list has " + std::to_wstring(GetCount()) +
                   L".");
}

void TListItems::CheckUnlocked() const {
  if (fSortLocks > 0) throw EInvalidOperation(L"Rows can't be inserted, deleted or moved while they are compared.");
}

TListItem* TListItems::GetItem(int pIndex) const {
  CheckIndex(pIndex);
  return fRows[static_cast<std::size_t>(pIndex)].get();
}

int TListItems::IndexOf(const TListItem* pItem) const noexcept {
  if (pItem == nullptr || !pItem->fInList || pItem->fOwner != this) return -1;
  const int known = pItem->fIndex;
  if (known < fExact && fRows[static_cast<std::size_t>(known)].get() == pItem) return known;
  while (fExact < GetCount()) {
    TListItem* const row = fRows[static_cast<std::size_t>(fExact)].get();
    row->fIndex = fExact++;
    if (row == pItem) return row->fIndex;
  }
  return -1;
}

// --- structure -------------------------------------------------------------------------------------------------------

TListItem* TListItems::Insert(int pIndex) {
  if (pIndex != GetCount()) CheckIndex(pIndex);
  CheckUnlocked();
  return AddItem(fHost.CreateListItem(*this), pIndex);
}

TListItem* TListItems::AddItem(std::unique_ptr<TListItem> pItem, int pIndex) {
  CheckUnlocked();
  if (!pItem || pItem->fOwner != this || pItem->fInList) {
    throw EInvalidArgument(L"A row must be there and be made for the list that it is inserted into.");
  }
  return PutIn(std::move(pItem), pIndex < 0 || pIndex > GetCount() ? GetCount() : pIndex);
}

void TListItems::Reserve(int pCount) {
  fRows.reserve(static_cast<std::size_t>(pCount));
}

TListItem* TListItems::PutIn(std::unique_ptr<TListItem> pItem, int pIndex) {
  if (fRows.size() >= static_cast<std::size_t>(std::numeric_limits<int>::max())) throw EListError(L"Too many rows.");
  if (fRows.size() == fRows.capacity()) fRows.reserve(std::max<std::size_t>(32, fRows.size() * 2));
  fSelected.ReserveOne();
  fReported.ReserveOne();
  TListItem* const item = pItem.get();
  fHost.RowsChanging();
  fRows.insert(fRows.begin() + pIndex, std::move(pItem));
  fSelected.Insert(pIndex, false);
  fReported.Insert(pIndex, false);
  item->fInList = true;
  item->fIndex = pIndex;
  if (fExact >= pIndex) fExact = pIndex + 1;
  const unsigned structure = ++fStructure;
  fHost.RowsChanged();
  const TAliveWatch watch(fAlive);
  fHost.InsertItem(item);
  if (!watch.IsAlive()) return nullptr;
  if (structure == fStructure) return item;
  const auto holds = [item](const auto& row) { return row.get() == item; };
  return std::any_of(fRows.begin(), fRows.end(), holds) ? item : nullptr;
}

std::unique_ptr<TListItem> TListItems::TakeOut(int pIndex) noexcept {
  TListItem* const row = fRows[static_cast<std::size_t>(pIndex)].get();
  fHost.RowsChanging();
  fHost.RowLeaving(*row);
  fHasLostMark = fHasLostMark || fReportedFocus == row || fReported.Test(pIndex);
  std::unique_ptr<TListItem> taken = std::move(fRows[static_cast<std::size_t>(pIndex)]);
  fRows.erase(fRows.begin() + pIndex);
  fSelected.Erase(pIndex);
  fReported.Erase(pIndex);
  fExact = std::min(fExact, pIndex);
  ++fStructure;
  row->fInList = false;
  row->fIndex = -1;
  const int next = std::min(pIndex, GetCount() - 1);
  TListItem* const heir = next < 0 ? nullptr : fRows[static_cast<std::size_t>(next)].get();
  if (fFocused == row) fFocused = heir;
  if (fAnchor == row) fAnchor = heir;
  if (fEditing == row) fEditing = nullptr;
  if (fReportedFocus == row) fReportedFocus = nullptr;
  if (fReportRow == row) fReportRow = nullptr;
  fHost.RowsChanged();
  if (fHasLostMark || fFocused == heir) fHost.StateChanged(); // a handler may raise before it is reported
  return taken;
}

void TListItems::LetGoOfEdit(TListItem* pItem) {
  if (fEditing != nullptr && (pItem == nullptr || fEditing == pItem)) fHost.CancelEditOf(*fEditing);
}

void TListItems::Delete(int pIndex) {
  CheckIndex(pIndex);
  CheckUnlocked();
  if (fEditing == fRows[static_cast<std::size_t>(pIndex)].get()) {
    const TAliveWatch list(fAlive);
    const TAliveWatch row(fEditing->fAlive);
    const TListItem* const item = fEditing;
    LetGoOfEdit(fEditing);
    if (!list.IsAlive() || !row.IsAlive()) return;
    pIndex = IndexOf(item);
    CheckUnlocked();
  }
  const TListItem* const focused = fFocused;
  const TAliveWatch watch(fAlive);
  {
    const std::unique_ptr<TListItem> going = TakeOut(pIndex);
    fHost.DeleteItem(going.get());
  }
  if (watch.IsAlive() && (fHasLostMark || focused != fFocused)) StateChanged();
}

void TListItems::DeleteSelected() {
  CheckUnlocked();
  const TAliveWatch watch(fAlive);
  if (fEditing != nullptr && fEditing->GetSelected()) LetGoOfEdit(fEditing);
  if (watch.IsAlive() && fSelected.FindSet(0) >= 0) DeleteRows(TRowBits(fSelected));
}

void TListItems::Clear() {
  CheckUnlocked();
  const TAliveWatch watch(fAlive);
  LetGoOfEdit(nullptr);
  if (!watch.IsAlive() || fRows.empty()) return;
  TRowBits all;
  all.Resize(GetCount());
  all.Fill(true);
  DeleteRows(all);
}

void TListItems::DeleteRows(const TRowBits& pRows) {
  CheckUnlocked();
  const TListItem* const focused = fFocused;
  auto going = TakeOutRows(pRows);
  const TAliveWatch watch(fAlive);
  for (auto& row : going) {
    // All rows go, whatever is raised for one of them.
    try {
      if (watch.IsAlive()) fHost.DeleteItem(row.get());
    } catch (...) {
      ReportException(std::current_exception());
    }
    row.reset();
  }
  if (watch.IsAlive() && (fHasLostMark || focused != fFocused)) StateChanged();
}

std::vector<std::unique_ptr<TListItem>> TListItems::TakeOutRows(const TRowBits& pRows) {
  std::vector<std::unique_ptr<TListItem>> staying;
  std::vector<std::unique_ptr<TListItem>> going;
  const int left = GetCount() - pRows.CountSet();
  staying.reserve(static_cast<std::size_t>(left));
  going.reserve(fRows.size() - static_cast<std::size_t>(left));
  TRowBits selected;
  TRowBits reported;
  selected.Resize(left);
  reported.Resize(left);
  fHost.RowsChanging();
  fHost.RowsLeaving(pRows);
  MoveMarksOff(pRows);
  for (int i = 0; i < GetCount(); ++i) {
    auto& row = fRows[static_cast<std::size_t>(i)];
    if (pRows.Test(i)) {
      fHasLostMark = fHasLostMark || fReported.Test(i);
      row->fInList = false;
      row->fIndex = -1;
      going.push_back(std::move(row));
    } else {
      const auto place = static_cast<int>(staying.size());
      selected.Put(place, fSelected.Test(i));
      reported.Put(place, fReported.Test(i));
      staying.push_back(std::move(row));
    }
  }
  fRows = std::move(staying);
  fSelected = std::move(selected);
  fReported = std::move(reported);
  fExact = 0;
  ++fStructure;
  fHost.RowsChanged();
  return going;
}

// Focus and anchor go to the next row that stays, else to the one before; what else these rows have is over.
void TListItems::MoveMarksOff(const TRowBits& pRows) noexcept {
  const auto leaves = [&](const TListItem* row) { return row != nullptr && pRows.Test(IndexOf(row)); };
  for (TListItem** mark : {&fFocused, &fAnchor}) {
    if (!leaves(*mark)) continue;
    const int heir = pRows.FindClearNear(IndexOf(*mark));
    *mark = heir < 0 ? nullptr : fRows[static_cast<std::size_t>(heir)].get();
  }
  if (leaves(fEditing)) fEditing = nullptr;
  if (leaves(fReportRow)) fReportRow = nullptr;
  if (!leaves(fReportedFocus)) return;
  fReportedFocus = nullptr;
  fHasLostMark = true;
}

void TListItems::Move(int pFrom, int pTo) {
  CheckIndex(pFrom);
  CheckIndex(pTo);
  CheckUnlocked();
  if (pFrom == pTo) return;
  fHost.RowsChanging();
  const auto first = fRows.begin() + std::min(pFrom, pTo);
  const auto last = fRows.begin() + std::max(pFrom, pTo) + 1;
  pFrom < pTo ? std::rotate(first, first + 1, last) : std::rotate(first, last - 1, last);
  for (TRowBits* bits : {&fSelected, &fReported}) {
    const bool value = bits->Test(pFrom);
    bits->Erase(pFrom);
    bits->ReserveOne();
    bits->Insert(pTo, value);
  }
  fExact = std::min(fExact, std::min(pFrom, pTo));
  ++fStructure;
  fHost.RowsChanged();
}

void TListItems::BeginUpdate() noexcept {
  if (++fUpdateCount == 1) fHost.SetUpdateState(true);
}

void TListItems::EndUpdate() {
  if (fUpdateCount == 0) throw EInvalidOperation(L"An update of rows ended that had not begun.");
  if (--fUpdateCount > 0) return;
  fHost.SetUpdateState(false);
  if (!fHost.IsReportingDeferred()) ReportChanges();
}

ScopedRowUpdate::~ScopedRowUpdate() {
  try {
    if (fWatch.IsAlive()) fItems.EndUpdate();
  } catch (...) {
    // Out of a destructor nothing can pass.
    ReportException(std::current_exception());
  }
}

// --- order -----------------------------------------------------------------------------------------------------------

void TListItems::CustomSort(const TListCompare& pCompare, std::intptr_t pData) {
  if (!pCompare) throw EInvalidArgument(L"A sort needs a comparison.");
  CheckUnlocked();
  struct TPlaced {
    TListItem* row;
    std::uint32_t place;
  };
  std::vector<TPlaced> order;
  order.reserve(fRows.size());
  for (const auto& row : fRows) order.push_back({row.get(), static_cast<std::uint32_t>(order.size())});
  {
    const TSortLock lock(*this);
    const TListCompare compare = pCompare;
    MergeSort(order, [&](const TPlaced& first, const TPlaced& second) {
      const int result = compare(*first.row, *second.row, pData);
      lock.Check();
      return result < 0;
    });
  }
  std::vector<std::uint32_t> places;
  places.reserve(order.size());
  for (const TPlaced& placed : order) places.push_back(placed.place);
  PutOrder(places);
}

void TListItems::PutOrder(const std::vector<std::uint32_t>& pPlaces) {
  if (std::is_sorted(pPlaces.begin(), pPlaces.end())) return;
  std::vector<std::unique_ptr<TListItem>> rows(fRows.size());
  TRowBits selected;
  TRowBits reported;
  selected.Resize(GetCount());
  reported.Resize(GetCount());
  fHost.RowsChanging();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto former = static_cast<int>(pPlaces[i]);
    rows[i] = std::move(fRows[pPlaces[i]]);
    if (fSelected.Test(former)) selected.Put(static_cast<int>(i), true);
    if (fReported.Test(former)) reported.Put(static_cast<int>(i), true);
  }
  fRows = std::move(rows);
  fSelected = std::move(selected);
  fReported = std::move(reported);
  fExact = 0;
  ++fStructure;
  fHost.RowsChanged();
}

// --- search ----------------------------------------------------------------------------------------------------------

TListItem* TListItems::GetNextItem(const TListItem* pStart, TSearchDirection pDirection, TItemStates pStates) const {
  pStates.Exclude(TItemStateFlag::isNone);
  int at = IndexOf(pStart);
  for (int steps = 0; steps < GetCount(); ++steps) {
    if (pDirection != TSearchDirection::sdAll) {
      at = fHost.NeighbourOf(at, pDirection);
    } else if (pStates.Contains(TItemStateFlag::isSelected)) {
      at = fSelected.FindSet(at + 1);
    } else {
      ++at;
    }
    if (at < 0 || at >= GetCount()) return nullptr;
    TListItem* const row = fRows[static_cast<std::size_t>(at)].get();
    if (row->GetStates().ContainsAll(pStates)) return row;
  }
  return nullptr;
}

template <typename F>
TListItem* TListItems::Find(int pStartIndex, bool pInclusive, bool pWrap, F&& pMatches) const {
  const int start = std::max(pStartIndex - (pInclusive ? 1 : 0), -1);
  const auto among = [&](int first, int last) -> TListItem* {
    for (int i = first; i <= last && i < GetCount(); ++i) {
      TListItem* const row = fRows[static_cast<std::size_t>(i)].get();
      if (pMatches(*row)) return row;
    }
    return nullptr;
  };
  TListItem* found = start < GetCount() ? among(start + 1, GetCount() - 1) : nullptr;
  if (found == nullptr && pWrap && start >= 0) found = among(0, start - 1);
  return found;
}

TListItem* TListItems::FindCaption(int pStartIndex, std::wstring_view pText, bool pPartial, bool pInclusive,
                                   bool pWrap) const {
  return Find(pStartIndex, pInclusive, pWrap, [&](const TListItem& row) {
    const std::wstring caption = row.GetCaption();
    return pPartial ? StartsText(pText, caption) : SameText(pText, caption);
  });
}

TListItem* TListItems::FindData(int pStartIndex, std::intptr_t pData, bool pInclusive, bool pWrap) const {
  return Find(pStartIndex, pInclusive, pWrap, [&](const TListItem& row) { return row.GetData() == pData; });
}

} // namespace kiv
