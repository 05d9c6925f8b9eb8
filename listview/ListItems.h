#pragma once

#include <framework/Event.h>
#include <framework/Exceptions.h>
#include <framework/Persistent.h>
#include <listview/ListItem.h>
#include <listview/ListTypes.h>
#include <listview/RowBits.h>
#include <platform/Export.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kiv {

class IListItemsHost;

/// Compares two rows: below 0, 0 or above 0. The number is the one that was given to the sort.
using TListCompare = std::function<int(TListItem& pFirst, TListItem& pSecond, std::intptr_t pData)>;

/// The rows of a list view, and the owner of what is known of them: their order, which are selected, which has the
/// focus, where a range starts, whose label is edited. The control is told how many there are and is written to where
/// it differs; it is never the one that knows.
///
/// What an application hears: DoSelectItem once for each row whose selection differs from what was last reported, then
/// one Change. That is done at the end of each change made by the program, at the end of the outermost update bracket,
/// or once the control has done with what the user did, however many messages the control made of it. A row that was
/// selected and deselected in between isn't reported; of rows that have gone only Change tells.
///
/// Handlers may do anything: change rows and selection (which is reported in the same run), or destroy the list. While
/// rows are compared, inserting, deleting and moving raise EInvalidOperation. Main thread only.
class KIV_EXPORT TListItems : public TPersistent {
public:
  /// The host outlives the rows.
  explicit TListItems(IListItemsHost& pHost);
  TListItems(const TListItems&) = delete;
  TListItems& operator=(const TListItems&) = delete;
  /// Destroys the rows. Nothing is reported.
  ~TListItems() override;

  std::wstring ClassName() const override;
  /// Replaces all rows by copies.
  void Assign(const TPersistent* pSource) override;

  IListItemsHost& GetHost() const noexcept { return fHost; }
  TCustomListView* GetListView() const noexcept;

  int GetCount() const noexcept { return static_cast<int>(fRows.size()); }
  /// Raises EListError for an index out of range.
  TListItem* GetItem(int pIndex) const;
  TListItem* operator[](int pIndex) const { return GetItem(pIndex); }
  /// -1 for null and for a row that isn't in this list. Nothing to search, as a rule: rows know where they stand, and
  /// only those behind the last change are numbered anew, up to the one that is asked for.
  int IndexOf(const TListItem* pItem) const noexcept;

  /// A new row of the list's class at the end. Null if a handler took it out at once.
  TListItem* Add() { return Insert(GetCount()); }
  /// Raises EListError unless `pIndex` is from 0 to the count.
  TListItem* Insert(int pIndex);
  /// Takes over a row that was made for this list; -1 or beyond the end means the end.
  TListItem* AddItem(std::unique_ptr<TListItem> pItem, int pIndex = -1);
  /// Memory for that many rows.
  void Reserve(int pCount);
  /// Takes out a row and destroys it. A label that is edited is let go first. The focus goes to the row that takes the
  /// place, else to the one before.
  void Delete(int pIndex);
  /// Takes out all selected rows at once, then destroys them. The focus goes as with Delete. What a handler raises is
  /// reported, as in Clear.
  void DeleteSelected();
  void Clear();
  /// Takes the row at `pFrom` out and puts it in at `pTo` of the list without it. Its state comes along.
  void Move(int pFrom, int pTo);

  /// Between the two the control isn't written to and nothing is reported. May be nested.
  void BeginUpdate() noexcept;
  /// Raises EInvalidOperation without a BeginUpdate.
  void EndUpdate();
  bool IsUpdating() const noexcept { return fUpdateCount > 0; }

  bool IsMultiSelect() const noexcept { return fMultiSelect; }
  /// At first off: then at most one row is selected, the one that came last. Turning it off keeps the first.
  void SetMultiSelect(bool pMultiSelect);
  /// False for an index out of range.
  bool IsSelected(int pIndex) const noexcept;
  void SetSelected(int pIndex, bool pSelected);
  /// Both ends included. Without multi-selection only the last row of the range is selected.
  void SelectRange(int pFirst, int pLast, bool pSelected);
  /// SelectAll and InvertSelection do nothing without multi-selection.
  void SelectAll();
  void ClearSelection();
  void InvertSelection();
  int GetSelectedCount() const noexcept { return fSelected.CountSet(); }
  /// The first selected row; null if there is none.
  TListItem* GetFirstSelected() const noexcept;
  const TRowBits& GetSelection() const noexcept { return fSelected; }

  TListItem* GetFocused() const noexcept { return fFocused; }
  /// Null takes the focus from all rows. Raises EInvalidArgument for a row of another list.
  void SetFocused(TListItem* pItem);
  /// Where a range that the user extends starts; null if nowhere.
  TListItem* GetAnchor() const noexcept { return fAnchor; }
  void SetAnchor(TListItem* pItem);

  /// The row whose label is edited. Set by whoever shows the rows.
  TListItem* GetEditing() const noexcept { return fEditing; }
  void SetEditing(TListItem* pItem) noexcept { fEditing = pItem; }

  /// The next row behind `pStart` (null: from the first on) in a direction that has all of the states. Null if there
  /// is none.
  TListItem* GetNextItem(const TListItem* pStart, TSearchDirection pDirection, TItemStates pStates) const;
  /// Looks for a caption, ignoring case, from the row behind `pStartIndex` (with `pInclusive`: from that row) to the
  /// end, and with `pWrap` from the first to the one before it. `pPartial`: the caption only has to begin so. Null if
  /// none is found.
  TListItem* FindCaption(int pStartIndex, std::wstring_view pText, bool pPartial, bool pInclusive, bool pWrap) const;
  /// The same for a row's Data.
  TListItem* FindData(int pStartIndex, std::intptr_t pData, bool pInclusive, bool pWrap) const;

  /// Equals keep their order. A comparison that contradicts itself gives some order; one that raises leaves the rows
  /// as they were, and passes out.
  void CustomSort(const TListCompare& pCompare, std::intptr_t pData = 0);
  /// The same by a key that `pKeyOf(const TListItem&)` answers, which is asked once for each row. Keys have "<". A key
  /// that is answered by reference isn't copied: it stays as it is until the sort is done. What raises leaves the rows
  /// as they were.
  template <typename F>
  void SortByKey(F&& pKeyOf, bool pDescending = false);

  /// Whether a row was ever asked what it looks like: one that wasn't need not be painted anew.
  bool WasPainted(const TListItem& pItem) const noexcept { return pItem.fPainted; }
  /// A row is painted. True once after each Update of it: its details are to be asked for.
  bool TakeDetailsWish(TListItem& pItem) noexcept;
  void WishDetails(int pFirst, int pLast) noexcept;

  /// What a control reports that the user did. Neither writes back nor reports to the application: see ReportChanges.
  void TakeSelection(int pFirst, int pLast, bool pSelected) noexcept;
  void TakeFocus(TListItem* pItem) noexcept { fFocused = pItem; }
  void TakeAnchor(TListItem* pItem) noexcept { fAnchor = pItem; }

  /// Tells the application what has changed since the last time. False if that destroyed the list. What a handler
  /// raises passes out; the rest is told the next time.
  bool ReportChanges();

  /// Grows with each change of the rows and their order.
  unsigned GetStructureVersion() const noexcept { return fStructure; }
  /// For tests: whether all parts agree with each other.
  bool IsConsistent() const;

private:
  friend class ScopedRowUpdate;
  class TSortLock;

  void CheckIndex(int pIndex) const;
  void CheckUnlocked() const;
  TListItem* PutIn(std::unique_ptr<TListItem> pItem, int pIndex);
  std::unique_ptr<TListItem> TakeOut(int pIndex) noexcept;
  void LetGoOfEdit(TListItem* pItem);
  void DeleteRows(const TRowBits& pRows);
  std::vector<std::unique_ptr<TListItem>> TakeOutRows(const TRowBits& pRows);
  void MoveMarksOff(const TRowBits& pRows) noexcept;
  /// The rows by their present places, in the order that they are to have.
  void PutOrder(const std::vector<std::uint32_t>& pPlaces);
  void StateChanged();
  bool HasPending() const noexcept;
  template <typename F>
  TListItem* Find(int pStartIndex, bool pInclusive, bool pWrap, F&& pMatches) const;

  IListItemsHost& fHost;
  std::vector<std::unique_ptr<TListItem>> fRows;
  mutable int fExact = 0; // rows below it have their exact index
  unsigned fStructure = 0;
  TRowBits fSelected;
  TRowBits fReported; // the selection as the application was told
  TListItem* fFocused = nullptr;
  TListItem* fReportedFocus = nullptr;
  TListItem* fAnchor = nullptr;
  TListItem* fEditing = nullptr;
  TListItem* fReportRow = nullptr; // whom the next Change names
  bool fHasLostMark = false;       // a row has gone that was reported as selected or focused
  int fUpdateCount = 0;
  int fSortLocks = 0;
  bool fMultiSelect = false;
  bool fReporting = false;
  TAliveToken fAlive;
};

/// An update bracket for a scope. The rows may go before it ends.
class KIV_EXPORT ScopedRowUpdate {
public:
  explicit ScopedRowUpdate(TListItems& pItems) : fItems(pItems), fWatch(pItems.fAlive) { fItems.BeginUpdate(); }
  ScopedRowUpdate(const ScopedRowUpdate&) = delete;
  ScopedRowUpdate& operator=(const ScopedRowUpdate&) = delete;
  ~ScopedRowUpdate();

private:
  TListItems& fItems;
  TAliveWatch fWatch;
};

class TListItems::TSortLock {
public:
  explicit TSortLock(TListItems& pItems) : fItems(pItems), fWatch(pItems.fAlive) { ++fItems.fSortLocks; }
  TSortLock(const TSortLock&) = delete;
  TSortLock& operator=(const TSortLock&) = delete;
  ~TSortLock() {
    if (fWatch.IsAlive()) --fItems.fSortLocks;
  }
  /// Ends the sort if foreign code destroyed the rows.
  void Check() const {
    if (!fWatch.IsAlive()) throw EAbort();
  }

private:
  TListItems& fItems;
  TAliveWatch fWatch;
};

template <typename F>
void TListItems::SortByKey(F&& pKeyOf, bool pDescending) {
  using TAnswer = std::invoke_result_t<F, const TListItem&>;
  using TKey = std::remove_cvref_t<TAnswer>;
  // What is dear to move stays where it is: texts are sorted by views of them, other keys by pointers to them.
  constexpr bool isText = std::is_same_v<TKey, std::wstring>;
  constexpr bool isLight = !isText && std::is_trivially_copyable_v<TKey> && sizeof(TKey) <= 2 * sizeof(void*);
  constexpr bool isCopied = !isLight && !std::is_lvalue_reference_v<TAnswer>;
  using TSorted = std::conditional_t<isLight, TKey, std::conditional_t<isText, std::wstring_view, const TKey*>>;
  std::vector<TKey> keys;
  std::vector<std::pair<TSorted, std::uint32_t>> sorted;
  sorted.reserve(fRows.size());
  if constexpr (isCopied) keys.reserve(fRows.size());
  const auto add = [&](auto&& key) {
    const auto place = static_cast<std::uint32_t>(sorted.size());
    if constexpr (isLight || isText) {
      sorted.emplace_back(key, place);
    } else {
      sorted.emplace_back(&key, place);
    }
  };
  {
    const TSortLock lock(*this);
    for (std::size_t i = 0; i < fRows.size(); ++i) {
      const TListItem& row = *fRows[i];
      if constexpr (isCopied) {
        add(keys.emplace_back(pKeyOf(row)));
      } else {
        add(pKeyOf(row));
      }
      lock.Check();
    }
  }
  const auto isBelow = [](const auto& first, const auto& second) {
    if constexpr (isLight || isText) {
      return first.first < second.first;
    } else {
      return *first.first < *second.first;
    }
  };
  if (pDescending) {
    std::stable_sort(sorted.begin(), sorted.end(), [&](const auto& a, const auto& b) { return isBelow(b, a); });
  } else {
    std::stable_sort(sorted.begin(), sorted.end(), isBelow);
  }
  std::vector<std::uint32_t> places;
  places.reserve(sorted.size());
  for (const auto& entry : sorted) places.push_back(entry.second);
  PutOrder(places);
}

} // namespace kiv
