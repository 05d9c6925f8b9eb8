#include <listview/ListItems.h>

#include <listview/ListItemsHost.h>

#include <algorithm>

namespace kiv {

void TListItems::SetMultiSelect(bool pMultiSelect) {
  if (fMultiSelect == pMultiSelect) return;
  fMultiSelect = pMultiSelect;
  const int first = fSelected.FindSet(0);
  if (pMultiSelect || first < 0 || fSelected.FindSet(first + 1) < 0) return;
  fSelected.Fill(false);
  fSelected.Put(first, true);
  StateChanged();
}

bool TListItems::IsSelected(int pIndex) const noexcept {
  return pIndex >= 0 && pIndex < GetCount() && fSelected.Test(pIndex);
}

void TListItems::SetSelected(int pIndex, bool pSelected) {
  CheckIndex(pIndex);
  if (fSelected.Test(pIndex) == pSelected) return;
  if (!fMultiSelect) fSelected.Fill(false);
  fSelected.Put(pIndex, pSelected);
  StateChanged();
}

void TListItems::SelectRange(int pFirst, int pLast, bool pSelected) {
  CheckIndex(pFirst);
  CheckIndex(pLast);
  if (pFirst > pLast) std::swap(pFirst, pLast);
  if (!fMultiSelect && pSelected) {
    SetSelected(pLast, true);
    return;
  }
  fSelected.PutRange(pFirst, pLast, pSelected);
  StateChanged();
}

void TListItems::SelectAll() {
  if (!fMultiSelect || fRows.empty()) return;
  fSelected.Fill(true);
  StateChanged();
}

void TListItems::ClearSelection() {
  if (fSelected.FindSet(0) < 0) return;
  fSelected.Fill(false);
  StateChanged();
}

void TListItems::InvertSelection() {
  if (!fMultiSelect || fRows.empty()) return;
  fSelected.Flip();
  StateChanged();
}

TListItem* TListItems::GetFirstSelected() const noexcept {
  const int first = fSelected.FindSet(0);
  return first < 0 ? nullptr : fRows[static_cast<std::size_t>(first)].get();
}

void TListItems::SetFocused(TListItem* pItem) {
  if (pItem != nullptr && IndexOf(pItem) < 0) throw EInvalidArgument(L"The row is not in this list.");
  if (fFocused == pItem) return;
  fFocused = pItem;
  StateChanged();
}

void TListItems::SetAnchor(TListItem* pItem) {
  if (pItem != nullptr && IndexOf(pItem) < 0) throw EInvalidArgument(L"The row is not in this list.");
  if (fAnchor == pItem) return;
  fAnchor = pItem;
  StateChanged();
}

void TListItems::TakeSelection(int pFirst, int pLast, bool pSelected) noexcept {
  pFirst = std::max(pFirst, 0);
  pLast = std::min(pLast, GetCount() - 1);
  if (pFirst > pLast) return;
  if (!fMultiSelect && pSelected) fSelected.Fill(false);
  fSelected.PutRange(pFirst, pLast, pSelected);
}

bool TListItems::TakeDetailsWish(TListItem& pItem) noexcept {
  pItem.fPainted = true;
  if (pItem.fDetailsAsked) return false;
  pItem.fDetailsAsked = true;
  return true;
}

void TListItems::WishDetails(int pFirst, int pLast) noexcept {
  for (int i = std::max(pFirst, 0); i <= pLast && i < GetCount(); ++i) {
    fRows[static_cast<std::size_t>(i)]->fDetailsAsked = false;
  }
}

// --- reports ---------------------------------------------------------------------------------------------------------

bool TListItems::HasPending() const noexcept {
  return fHasLostMark || fFocused != fReportedFocus || fSelected.FindDifference(fReported, 0) >= 0;
}

void TListItems::StateChanged() {
  fHost.StateChanged();
  if (fUpdateCount == 0 && !fHost.IsReportingDeferred()) ReportChanges();
}

bool TListItems::ReportChanges() {
  // A handler that changes more is served by the loop that called it.
  if (fReporting) return true;
  const TAliveWatch watch(fAlive);
  struct TScope {
    TListItems& items;
    const TAliveWatch& watch;
    ~TScope() {
      if (watch.IsAlive()) items.fReporting = false;
    }
  };
  const TScope scope{*this, watch};
  fReporting = true;
  while (HasPending()) {
    const int first = fSelected.FindDifference(fReported, 0);
    const int focused = IndexOf(fFocused);
    const bool isFocusNamed =
        first < 0 ? fFocused != fReportedFocus : focused >= 0 && fSelected.Test(focused) != fReported.Test(focused);
    fReportRow = nullptr; // what changed may have gone
    if (isFocusNamed) {
      fReportRow = fFocused != nullptr ? fFocused : fReportedFocus; // that has it, or lost it
    } else if (first >= 0) {
      fReportRow = fRows[static_cast<std::size_t>(first)].get();
    }
    fReportedFocus = fFocused;
    fHasLostMark = false;
    unsigned structure = fStructure;
    for (int at = first; at >= 0; at = fSelected.FindDifference(fReported, at)) {
      const bool isSelected = fSelected.Test(at);
      fReported.Put(at, isSelected);
      fHost.DoSelectItem(fRows[static_cast<std::size_t>(at)].get(), isSelected);
      if (!watch.IsAlive()) return false;
      if (structure != fStructure) at = 0;
      structure = fStructure;
    }
    fHost.Change(fReportRow, TItemChange::ctState);
    if (!watch.IsAlive()) return false;
  }
  return true;
}

bool TListItems::IsConsistent() const {
  const int count = GetCount();
  if (fSelected.GetSize() != count || fReported.GetSize() != count || fExact > count) return false;
  bool hasFocused = fFocused == nullptr;
  bool hasAnchor = fAnchor == nullptr;
  bool hasEditing = fEditing == nullptr;
  for (int i = 0; i < count; ++i) {
    const TListItem* const row = fRows[static_cast<std::size_t>(i)].get();
    if (row == nullptr || !row->fInList || row->fOwner != this || IndexOf(row) != i) return false;
    hasFocused = hasFocused || row == fFocused;
    hasAnchor = hasAnchor || row == fAnchor;
    hasEditing = hasEditing || row == fEditing;
  }
  return hasFocused && hasAnchor && hasEditing && (fMultiSelect || GetSelectedCount() <= 1);
}

} // namespace kiv
