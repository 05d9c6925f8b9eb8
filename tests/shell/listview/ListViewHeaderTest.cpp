#include "ListFixture.h"

namespace kiv {
namespace {

using test::PumpMessages;
using test::TListFixture;

int NativeWidth(TListFixture& pList, int pColumn) {
  return static_cast<int>(pList.Send(LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(pColumn)));
}

std::vector<int> NativeOrder(TListFixture& pList) {
  std::vector<int> order(static_cast<std::size_t>(pList.list->GetColumns().GetCount()));
  pList.Send(LVM_GETCOLUMNORDERARRAY, order.size(), reinterpret_cast<LPARAM>(order.data()));
  return order;
}

HDITEMW NativeItem(TListFixture& pList, int pColumn) {
  HDITEMW item{};
  item.mask = HDI_FORMAT | HDI_WIDTH;
  SendMessageW(pList.list->GetHeaderHandle(), HDM_GETITEMW, static_cast<WPARAM>(pColumn),
               reinterpret_cast<LPARAM>(&item));
  return item;
}

TEST(ListViewHeader, ShowsTheColumns) {
  TListFixture list(TViewStyle::vsReport, 4);
  list.Show(3);
  TListColumns& columns = list.list->GetColumns();
  columns[1]->SetSortMark(TSortMark::Down);
  columns[2]->SetVisible(false);
  columns[3]->SetPosition(0);
  columns[3]->SetAlignment(TColumnAlignment::taRightJustify);
  EXPECT_EQ(NativeOrder(list), (std::vector<int>{3, 0, 1, 2}));
  EXPECT_EQ(NativeItem(list, 1).fmt & (HDF_SORTUP | HDF_SORTDOWN), HDF_SORTDOWN);
  EXPECT_EQ(NativeItem(list, 3).fmt & HDF_JUSTIFYMASK, HDF_RIGHT);
  EXPECT_EQ(NativeWidth(list, 2), 0);
  columns[1]->SetSortMark(TSortMark::None);
  columns[2]->SetVisible(true);
  EXPECT_EQ(NativeItem(list, 1).fmt & (HDF_SORTUP | HDF_SORTDOWN), 0);
  EXPECT_EQ(NativeWidth(list, 2), 120) << "the former width";
  list.Row(0).GetSubItems().SetStrings({L"one", L"two", L"three"});
  columns.Delete(1);
  EXPECT_EQ(NativeOrder(list), (std::vector<int>{2, 0, 1}));
  EXPECT_EQ(list.TextOf(0, 1), L"one") << "columns show sub-items by their index";
  list.list->RecreateWnd();
  EXPECT_EQ(NativeOrder(list), (std::vector<int>{2, 0, 1}));
}

TEST(ListViewHeader, TheUsersWidthsAndOrderAreTakenOverWithinLimits) {
  TListFixture list(TViewStyle::vsReport, 3);
  list.list->SetFullDrag(true);
  list.Show(1);
  TListColumns& columns = list.list->GetColumns();
  columns[0]->SetMinWidth(60);
  columns[0]->SetMaxWidth(200);
  columns[2]->SetVisible(false);
  PumpMessages();
  const auto drag = [&](int column, int width) {
    HDITEMW item{};
    item.mask = HDI_WIDTH;
    item.cxy = width;
    SendMessageW(list.list->GetHeaderHandle(), HDM_SETITEMW, static_cast<WPARAM>(column),
                 reinterpret_cast<LPARAM>(&item));
    PumpMessages();
    return columns[column]->GetWidth();
  };
  EXPECT_EQ(drag(0, 150), 150);
  EXPECT_EQ(drag(0, 10), 60);
  EXPECT_EQ(drag(0, 300), 200);
  EXPECT_EQ(NativeWidth(list, 0), 200);
  columns[0]->SetWidth(150);
  EXPECT_EQ(drag(1, 10), 10);
  EXPECT_EQ(drag(2, 80), 120) << "a column that is not shown";
  EXPECT_EQ(NativeWidth(list, 2), 0);

  int dragged = 0;
  list.list->SetOnColumnDragged([&](TPersistent*) { ++dragged; });
  columns[1]->SetWidth(120);
  PumpMessages();
  list.DragHeader(40, 250);
  EXPECT_EQ(dragged, 1);
  EXPECT_EQ(columns.GetOrder(), NativeOrder(list));
  EXPECT_EQ(columns.GetOrder(), (std::vector<int>{1, 0, 2}));
}

/// The first place stays the first column's.
class TFixedList : public TListView {
protected:
  bool CanDragColumn(TListColumn* pColumn, int pPosition) override { return pColumn->GetIndex() > 0 && pPosition > 0; }
};

TEST(ListViewHeader, AColumnStaysWhereItMayNotBeDraggedFrom) {
  TListFixture list(TViewStyle::vsReport, 3, std::make_unique<TFixedList>());
  list.list->SetFullDrag(true);
  list.Show(1);
  int dragged = 0;
  list.list->SetOnColumnDragged([&](TPersistent*) { ++dragged; });
  const std::vector<int> former{0, 1, 2};
  for (const auto& [from, to] : {std::pair(40, 200), std::pair(160, 20)}) {
    list.DragHeader(from, to);
    EXPECT_EQ(NativeOrder(list), former) << from;
    EXPECT_EQ(list.list->GetColumns().GetOrder(), former);
  }
  EXPECT_EQ(dragged, 0);
  list.DragHeader(220, 350); // no double click
  EXPECT_EQ(list.list->GetColumns().GetOrder(), (std::vector<int>{0, 2, 1}));
  EXPECT_EQ(dragged, 1);
}

TEST(ListViewHeader, WidthsAndLimitsAreScaled) {
  TListFixture list(TViewStyle::vsReport, 3);
  list.Show(1);
  TListColumns& columns = list.list->GetColumns();
  columns[0]->SetMaxWidth(130);
  columns[1]->SetMinWidth(100);
  columns[2]->SetVisible(false);
  const int dpi = list.list->GetCurrentPPI();
  list.list->ScaleForPPI(2 * dpi);
  for (const int column : {0, 1}) EXPECT_EQ(NativeWidth(list, column), 240) << column;
  EXPECT_EQ(NativeWidth(list, 2), 0);
  EXPECT_EQ(columns[0]->GetMaxWidth(), 260);
  EXPECT_EQ(columns[1]->GetMinWidth(), 200);
  list.list->ScaleForPPI(dpi);
  columns[2]->SetVisible(true);
  for (const int column : {0, 1, 2}) EXPECT_EQ(NativeWidth(list, column), 120) << column;
}

TEST(ListViewHeader, FromRightToLeftAllIsMirrored) {
  TListFixture list(TViewStyle::vsReport, 3);
  list.list->SetBiDiMode(TBiDiMode::bdRightToLeft);
  list.list->GetColumn(2)->SetWidth(400);
  list.Show(5);
  RECT window;
  GetWindowRect(list.Window(), &window);
  const auto fromRight = [&](int distance, int top) { return POINT{window.right - distance, window.top + top}; };
  std::wstring clicked;
  list.list->SetOnColumnClick([&](TPersistent*, TListColumn* column) { clicked += column->GetCaption() + L";"; });
  test::ClickMouse(fromRight(40, 10));
  test::ClickMouse(fromRight(160, 10));
  EXPECT_EQ(clicked, L"column 0;column 1;");
  const TRowRect row = list.Row(2).DisplayRect(TDisplayCode::drLabel);
  test::ClickMouse(fromRight(row.left + 12, (row.top + row.bottom) / 2));
  EXPECT_EQ(list.Selected(), std::vector<int>{2});
  const auto scrolled = [&] { return GetScrollPos(list.Window(), SB_HORZ); };
  test::TurnWheel(WHEEL_DELTA, true);
  EXPECT_EQ(scrolled(), 0) << "it begins on the right";
  test::TurnWheel(-WHEEL_DELTA, true);
  const int distance = scrolled();
  EXPECT_GT(distance, 0);
  EXPECT_EQ(list.Row(2).DisplayRect(TDisplayCode::drBounds).left, -distance);
  test::ClickMouse(fromRight(40 + 120 - distance, 10));
  EXPECT_EQ(clicked, L"column 0;column 1;column 1;");
  test::MoveMouse(fromRight(30, (row.top + row.bottom) / 2));
  test::TurnWheel(WHEEL_DELTA, true);
  EXPECT_EQ(scrolled(), 0);
}

TEST(ListViewHeader, ClicksNameTheColumnAndAutoSizeFills) {
  TListFixture list(TViewStyle::vsReport, 2);
  list.Show(1);
  TListColumns& columns = list.list->GetColumns();
  columns[1]->SetPosition(0);
  PumpMessages();
  TListColumn* clicked = nullptr;
  list.list->SetOnColumnClick([&](TPersistent*, TListColumn* column) { clicked = column; });
  test::ClickMouse(test::PointOf(list.list->GetHeaderHandle(), 30, 8));
  EXPECT_EQ(clicked, columns[1]);
  POINT place{};
  list.list->SetOnColumnRightClick([&](TPersistent*, TListColumn* column, POINT point) {
    clicked = column;
    place = point;
  });
  test::ClickMouse(test::PointOf(list.list->GetHeaderHandle(), 130, 8), TShiftStateFlag::ssRight);
  EXPECT_EQ(clicked, columns[0]);
  EXPECT_EQ(place.x, 130);
  test::ClickMouse(test::PointOf(list.list->GetHeaderHandle(), 350, 8), TShiftStateFlag::ssRight);
  EXPECT_EQ(clicked, nullptr) << "beside all columns";

  const auto isFilled = [&] {
    PumpMessages();
    return NativeWidth(list, 0) + NativeWidth(list, 1) == list.list->GetClientWidth();
  };
  columns[0]->SetAutoSize(true);
  EXPECT_TRUE(isFilled());
  list.list->SetBounds(0, 0, 380, 300);
  EXPECT_TRUE(isFilled());
  columns[1]->SetWidth(70);
  EXPECT_TRUE(isFilled());
  list.Fill(100);
  EXPECT_TRUE(isFilled()) << "with a scroll bar";
  EXPECT_EQ(NativeWidth(list, 1), 70);
}

} // namespace
} // namespace kiv
