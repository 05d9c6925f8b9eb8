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
  RECT first;
  RECT second;
  SendMessageW(list.list->GetHeaderHandle(), HDM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&first));
  SendMessageW(list.list->GetHeaderHandle(), HDM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&second));
  columns[1]->SetWidth(120);
  PumpMessages();
  const HWND header = list.list->GetHeaderHandle();
  test::MoveMouse(test::PointOf(header, 40, first.bottom / 2));
  test::PressMouse();
  for (int x = 40; x <= 250; x += 15) test::MoveMouse(test::PointOf(header, x, first.bottom / 2));
  test::ReleaseMouse();
  PumpMessages();
  EXPECT_EQ(dragged, 1);
  EXPECT_EQ(columns.GetOrder(), NativeOrder(list));
  EXPECT_EQ(columns.GetOrder(), (std::vector<int>{1, 0, 2}));
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
  columns[0]->SetAutoSize(true);
  list.list->SetBounds(0, 0, 380, 300);
  PumpMessages();
  EXPECT_EQ(NativeWidth(list, 0) + NativeWidth(list, 1), list.list->GetClientWidth());
}

} // namespace
} // namespace kiv
