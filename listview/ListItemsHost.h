#pragma once

#include <listview/ListTypes.h>
#include <listview/RowBits.h>

#include <memory>

namespace kiv {

class TCustomListView;
class TListItem;
class TListItems;

/// What the rows of a list need of whoever shows them: the control, or a test. The rows know no window.
///
/// "Tell" operations only note and may not raise. The events are those an application can listen to: they may raise,
/// change the rows and destroy the whole list.
class IListItemsHost {
public:
  /// The control; null in tests.
  virtual TCustomListView* GetListView() noexcept = 0;

  /// A new row; null or what raises ends the insertion with nothing inserted.
  virtual std::unique_ptr<TListItem> CreateListItem(TListItems& pItems) = 0;

  /// Tells that rows are about to be inserted, taken out or moved; the rows stand as they did.
  virtual void RowsChanging() noexcept = 0;
  /// Tells that rows were inserted, taken out or moved.
  virtual void RowsChanged() noexcept = 0;
  /// Tells that a row, which is still in its place, is about to leave.
  virtual void RowLeaving(TListItem& pItem) noexcept = 0;
  /// The same for all rows whose bits are set.
  virtual void RowsLeaving(const TRowBits& pRows) noexcept = 0;
  /// Tells that a row looks different.
  virtual void RowLookChanged(TListItem& pItem) noexcept = 0;
  /// Tells that selection, focus or anchor changed.
  virtual void StateChanged() noexcept = 0;
  /// Tells that the outermost update bracket was opened or closed.
  virtual void SetUpdateState(bool pUpdating) noexcept = 0;
  /// True while reports of changes wait for a better moment than the change itself.
  virtual bool IsReportingDeferred() const noexcept = 0;

  /// Event: a row was selected or deselected.
  virtual void DoSelectItem(TListItem* pItem, bool pSelected) = 0;
  /// Event: the state of rows changed; see TListItems::ReportChanges.
  virtual void Change(TListItem* pItem, TItemChange pChange) = 0;
  /// Event: a row has left the list and is about to be destroyed.
  virtual void DeleteItem(TListItem* pItem) = 0;
  /// Event: a row was inserted.
  virtual void InsertItem(TListItem* pItem) = 0;

  /// Ends the editing of this row's label, if it is edited, without a new text. May raise what the application does.
  virtual void CancelEditOf(TListItem& pItem) = 0;
  virtual bool EditCaptionOf(TListItem& pItem) = 0;
  virtual void MakeItemVisible(TListItem& pItem, bool pPartialOk) = 0;
  virtual TRowRect DisplayRectOf(TListItem& pItem, TDisplayCode pCode) = 0;
  /// The row's neighbour on the screen; -1 if there is none. Not asked for sdAll.
  virtual int NeighbourOf(int pIndex, TSearchDirection pDirection) = 0;

protected:
  ~IListItemsHost() = default;
};

} // namespace kiv
