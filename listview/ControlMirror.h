#pragma once

#include <listview/ListTypes.h>
#include <listview/RowBits.h>
#include <platform/Export.h>

namespace kiv {

class TListItems;

/// What TControlMirror writes to: the platform's control. A write isn't to be reported back.
class IRowControl {
public:
  /// The rows from 0 to the count minus 1 stay as they are, selection by number included.
  virtual void PutCount(int pCount) = 0;
  virtual void PutSelected(int pIndex, bool pSelected) = 0;
  /// All rows at once.
  virtual void PutAllSelected(bool pSelected) = 0;
  /// From one row to another; -1 is no row.
  virtual void PutFocused(int pFormer, int pIndex) = 0;
  virtual void PutAnchor(int pIndex) = 0;

protected:
  ~IRowControl() = default;
};

/// What a control that keeps selection and focus by row numbers believes at the moment, so that it can be brought in
/// step with the rows by writing the differences only: it is never told of insertions, deletions or a sort, which
/// platforms answer by shifting their marks in different ways.
class KIV_EXPORT TControlMirror {
public:
  int GetCount() const noexcept { return fSelected.GetSize(); }
  int GetSelectedCount() const noexcept { return fSelected.CountSet(); }
  bool IsSelected(int pIndex) const noexcept { return pIndex >= 0 && pIndex < GetCount() && fSelected.Test(pIndex); }
  int GetFocused() const noexcept { return fFocused; }

  /// A new control: no rows.
  void Reset() noexcept;
  /// The control says so. Ends out of range are cut off.
  void TakeSelected(int pFirst, int pLast, bool pSelected) noexcept;
  void TakeFocused(int pIndex) noexcept { fFocused = pIndex; }
  void TakeAnchor(int pIndex) noexcept { fAnchor = pIndex; }

  /// Writes whatever differs, with the fewest messages that will do. True if anything was written.
  bool Write(const TListItems& pItems, IRowControl& pControl);

private:
  bool WriteSelection(const TRowBits& pWanted, IRowControl& pControl);

  TRowBits fSelected;
  int fFocused = -1;
  int fAnchor = -1;
};

} // namespace kiv
