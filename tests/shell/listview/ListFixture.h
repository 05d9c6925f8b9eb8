#pragma once

#include <doubles/GuiDriver.h>
#include <listview/CustomListView.h>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kiv::test {

/// The window of a host's that all lists stand in, one after the other: bringing one up takes seconds under Wine.
inline THostWindow& Host() {
  static auto& host = *new THostWindow(420, 340); // goes with the process
  return host;
}

/// Says whether code of the platform's is at work.
class TPaintingList : public TListView {
public:
  using TListView::IsInsideNative;
};

/// A list, with what it reported.
class TListFixture {
public:
  explicit TListFixture(TViewStyle pStyle = TViewStyle::vsReport, int pColumns = 1,
                        std::unique_ptr<TListView> pList = std::make_unique<TListView>())
      : list(std::move(pList)) {
    list->SetMultiSelect(true);
    list->SetHideSelection(false);
    list->SetViewStyle(pStyle);
    for (int i = 0; i < pColumns; ++i) {
      TListColumn* const column = list->GetColumns().Add();
      column->SetCaption(L"column " + std::to_wstring(i));
      column->SetWidth(120);
    }
    list->SetBounds(0, 0, 400, 300);
    list->SetOnSelectItem([this](TPersistent*, TListItem* item, bool selected) {
      heard[item] = selected;
      ++selects;
    });
    list->SetOnChange([this](TPersistent*, TListItem*, TItemChange) { ++changes; });
    list->SetOnDeletion([this](TPersistent*, TListItem* item) { heard.erase(item); });
  }

  /// Makes the window, with rows "row 0" and so on; in a control of its own, if one is given.
  void Show(int pRows = 0, TWinControl* pAround = nullptr) {
    Fill(pRows);
    if (pAround) list->SetParent(pAround);
    (pAround ? pAround : list.get())->CreateParented(Host().Get());
    PumpMessages();
    list->SetFocus();
    PumpMessages();
  }
  void Fill(int pRows) {
    const ScopedRowUpdate update(Rows());
    for (int i = 0; i < pRows; ++i) Rows().Add()->SetCaption(L"row " + std::to_wstring(i));
  }

  TListItems& Rows() { return list->GetItems(); }
  TListItem& Row(int pIndex) { return *Rows().GetItem(pIndex); }
  HWND Window() { return list->GetHandle(); }
  LRESULT Send(UINT pMessage, WPARAM pWParam = 0, LPARAM pLParam = 0) {
    return SendMessageW(Window(), pMessage, pWParam, pLParam);
  }
  /// The middle of a row's text on the screen.
  POINT PointOfRow(int pIndex) {
    const TRowRect rect = Row(pIndex).DisplayRect(TDisplayCode::drLabel);
    return PointOf(Window(), rect.left + 12, (rect.top + rect.bottom) / 2);
  }
  /// Drags a column's header from one place of the header to another.
  void DragHeader(int pFrom, int pTo) {
    const HWND header = list->GetHeaderHandle();
    MoveMouse(PointOf(header, pFrom, 8));
    PressMouse();
    for (int step = 1; step <= 8; ++step) MoveMouse(PointOf(header, pFrom + (pTo - pFrom) * step / 8, 8));
    ReleaseMouse();
    PumpMessages();
  }
  /// The numbers of the selected rows.
  std::vector<int> Selected() {
    std::vector<int> rows;
    for (int i = 0; i < Rows().GetCount(); ++i) {
      if (Rows().IsSelected(i)) rows.push_back(i);
    }
    return rows;
  }
  /// A text as the control itself would show it.
  std::wstring TextOf(int pRow, int pColumn) {
    std::vector<wchar_t> buffer(8192);
    LVITEMW item{};
    item.iSubItem = pColumn;
    item.pszText = buffer.data();
    item.cchTextMax = static_cast<int>(buffer.size());
    Send(LVM_GETITEMTEXTW, static_cast<WPARAM>(pRow), reinterpret_cast<LPARAM>(&item));
    return item.pszText;
  }
  /// What was reported is what is.
  bool HeardAll() {
    for (int i = 0; i < Rows().GetCount(); ++i) {
      const auto told = heard.find(&Row(i));
      if ((told != heard.end() && told->second) != Rows().IsSelected(i)) return false;
    }
    return true;
  }

  std::unique_ptr<TListView> list;
  std::map<TListItem*, bool> heard;
  int selects = 0;
  int changes = 0;
};

} // namespace kiv::test
