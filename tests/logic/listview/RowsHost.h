#pragma once
#include <gtest/gtest.h>

#include <listview/ControlMirror.h>
#include <listview/ListItems.h>
#include <listview/ListItemsHost.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kiv::test {

/// A control that keeps its marks by number, as the platform's do, and shifts nothing.
class TRowControlFake : public IRowControl {
public:
  void PutCount(int pCount) override {
    EXPECT_EQ(CountMarksFrom(pCount), 0) << "rows with marks were cut off";
    selected.resize(static_cast<std::size_t>(pCount));
  }
  void PutSelected(int pIndex, bool pSelected) override {
    selected.at(static_cast<std::size_t>(pIndex)) = pSelected;
    ++messages;
  }
  void PutAllSelected(bool pSelected) override {
    selected.assign(selected.size(), pSelected);
    ++messages;
  }
  void PutFocused(int pFormer, int pIndex) override {
    EXPECT_EQ(pFormer, focused);
    focused = pIndex;
  }
  void PutAnchor(int pIndex) override { anchor = pIndex; }

  int CountMarksFrom(int pIndex) const {
    int count = focused >= pIndex || anchor >= pIndex ? 1 : 0;
    for (auto i = static_cast<std::size_t>(pIndex); i < selected.size(); ++i) count += selected[i] ? 1 : 0;
    return count;
  }

  std::vector<bool> selected;
  int focused = -1;
  int anchor = -1;
  int messages = 0;
};

/// Rows without a window. Keeps what was reported; what a test wants to happen in a handler it puts into `onSelect`,
/// `onChange` and `onDelete`.
class TRowsHost : public IListItemsHost {
public:
  TRowsHost() : rows(std::make_unique<TListItems>(*this)) { rows->SetMultiSelect(true); }

  TCustomListView* GetListView() noexcept override { return nullptr; }
  std::unique_ptr<TListItem> CreateListItem(TListItems& pItems) override {
    return make ? make(pItems) : std::make_unique<TListItem>(&pItems);
  }
  void RowsChanging() noexcept override {}
  void RowsChanged() noexcept override {}
  void RowLeaving(TListItem& pItem) noexcept override { heard.erase(&pItem); }
  void RowsLeaving(const TRowBits& pRows) noexcept override {
    for (int i = pRows.FindSet(0); i >= 0; i = pRows.FindSet(i + 1)) heard.erase(rows->GetItem(i));
  }
  void RowLookChanged(TListItem&) noexcept override { ++looks; }
  void StateChanged() noexcept override {}
  void SetUpdateState(bool) noexcept override {}
  bool IsReportingDeferred() const noexcept override { return deferred; }
  void DoSelectItem(TListItem* pItem, bool pSelected) override {
    heard[pItem] = pSelected;
    log += (pSelected ? L"+" : L"-") + pItem->GetCaption() + L" ";
    if (onSelect) onSelect(pItem);
  }
  void Change(TListItem* pItem, TItemChange) override {
    log += L"=" + (pItem ? pItem->GetCaption() : L"none") + L" ";
    if (onChange) onChange(pItem);
  }
  void DeleteItem(TListItem* pItem) override {
    if (onDelete) onDelete(pItem);
  }
  void InsertItem(TListItem* pItem) override {
    if (onInsert) onInsert(pItem);
  }
  void CancelEditOf(TListItem& pItem) override {
    rows->SetEditing(nullptr);
    log += L"cancel:" + pItem.GetCaption() + L" ";
    if (onCancelEdit) onCancelEdit(&pItem);
  }
  bool EditCaptionOf(TListItem&) override { return false; }
  void MakeItemVisible(TListItem&, bool) override {}
  TRowRect DisplayRectOf(TListItem&, TDisplayCode) override { return {}; }
  int NeighbourOf(int pIndex, TSearchDirection pDirection) override {
    return pDirection == TSearchDirection::sdAbove ? pIndex - 1 : pIndex + 1;
  }

  /// Rows with these captions.
  void Fill(const std::vector<std::wstring>& pCaptions) {
    for (const auto& caption : pCaptions) rows->Add()->SetCaption(caption);
  }
  std::wstring Captions() const {
    std::wstring text;
    for (int i = 0; i < rows->GetCount(); ++i) text += rows->GetItem(i)->GetCaption();
    return text;
  }
  std::wstring TakeLog() { return std::exchange(log, {}); }

  using THandler = std::function<void(TListItem*)>;
  THandler onSelect, onChange, onDelete, onInsert, onCancelEdit;
  std::function<std::unique_ptr<TListItem>(TListItems&)> make;
  bool deferred = false;
  int looks = 0;
  std::wstring log;
  std::map<TListItem*, bool> heard;
  std::unique_ptr<TListItems> rows;
};

} // namespace kiv::test
