#include <listview/ControlMirror.h>

#include <listview/ListItems.h>

#include <algorithm>
#include <utility>

namespace kiv {

void TControlMirror::Reset() noexcept {
  fSelected.Resize(0);
  fFocused = -1;
  fAnchor = -1;
}

void TControlMirror::TakeSelected(int pFirst, int pLast, bool pSelected) noexcept {
  pFirst = std::max(pFirst, 0);
  pLast = std::min(pLast, GetCount() - 1);
  if (pFirst <= pLast) fSelected.PutRange(pFirst, pLast, pSelected);
}

bool TControlMirror::Write(const TListItems& pItems, IRowControl& pControl) {
  bool wrote = false;
  if (const int count = pItems.GetCount(); count != GetCount()) {
    // Controls differ in what becomes of marks on rows that they lose: they get none to lose.
    for (int i = fSelected.FindSet(count); i >= 0; i = fSelected.FindSet(i + 1)) pControl.PutSelected(i, false);
    if (fFocused >= count) pControl.PutFocused(std::exchange(fFocused, -1), -1);
    if (fAnchor >= count) pControl.PutAnchor(fAnchor = -1);
    pControl.PutCount(count);
    fSelected.Resize(count);
    wrote = true;
  }
  wrote = WriteSelection(pItems.GetSelection(), pControl) || wrote;
  if (const int focused = pItems.IndexOf(pItems.GetFocused()); focused != fFocused) {
    pControl.PutFocused(std::exchange(fFocused, focused), focused);
    wrote = true;
  }
  if (const int anchor = pItems.IndexOf(pItems.GetAnchor()); anchor != fAnchor) {
    pControl.PutAnchor(fAnchor = anchor);
    wrote = true;
  }
  return wrote;
}

bool TControlMirror::WriteSelection(const TRowBits& pWanted, IRowControl& pControl) {
  const int differences = fSelected.CountDifferences(pWanted);
  if (differences == 0) return false;
  // Marking all rows at once costs about what four to a hundred single marks do, by platform and number of rows.
  const int count = GetCount();
  const int wanted = pWanted.CountSet();
  const int allAtOnce = count / 4;
  if (differences > allAtOnce + std::min(wanted, count - wanted)) {
    const bool all = wanted > count - wanted;
    pControl.PutAllSelected(all);
    fSelected.Fill(all);
  }
  for (int i = fSelected.FindDifference(pWanted, 0); i >= 0; i = fSelected.FindDifference(pWanted, i + 1)) {
    pControl.PutSelected(i, pWanted.Test(i));
  }
  fSelected = pWanted;
  return true;
}

} // namespace kiv
