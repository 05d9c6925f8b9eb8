#include <gtest/gtest.h>

#include <framework/Exceptions.h>
#include <listview/ListColumns.h>

#include <memory>

namespace kiv {
namespace {

class TColumnsHost : public IListColumnsHost {
public:
  std::unique_ptr<TListColumn> CreateListColumn(TListColumns& pColumns) override {
    return std::make_unique<TListColumn>(&pColumns);
  }
  void ColumnsChanged() noexcept override { ++changes; }
  void ColumnLookChanged(TListColumn&, bool pWidth) noexcept override { (pWidth ? widths : looks) += 1; }
  void ColumnLeaving(TListColumn&) noexcept override { ++gone; }

  int changes = 0;
  int looks = 0;
  int widths = 0;
  int gone = 0;
  TListColumns columns{*this};
};

TEST(ListColumns, KeepTheirOrderOnTheScreenAsColumnsComeAndGo) {
  TColumnsHost host;
  TListColumns& columns = host.columns;
  for (int i = 0; i < 4; ++i) columns.Add();
  using TOrder = std::vector<int>;
  TListColumn* const last = columns[3];
  last->SetPosition(0);
  EXPECT_EQ(columns.GetOrder(), (TOrder{3, 0, 1, 2}));
  TListColumn* const inserted = columns.Insert(1);
  EXPECT_EQ(columns.GetOrder(), (TOrder{4, 0, 1, 2, 3})) << "on the screen where the one was that stood there";
  EXPECT_EQ(last->GetIndex(), 4);
  columns.Delete(0);
  EXPECT_EQ(columns.GetOrder(), (TOrder{3, 0, 1, 2}));
  EXPECT_EQ(inserted->GetPosition(), 1);
  EXPECT_EQ(columns.FindItemID(last->GetID()), last);
  EXPECT_EQ(host.gone, 1);
  EXPECT_THROW(columns.SetOrder({0, 1, 2, 2}), EInvalidArgument);
  EXPECT_THROW(inserted->SetPosition(4), EArgumentOutOfRange);
  columns.TakeOrder({0, 1});
  EXPECT_EQ(columns.GetOrder(), (TOrder{3, 0, 1, 2})) << "what isn't an order is ignored";
  columns.TakeOrder({2, 1, 0, 3});
  EXPECT_EQ(last->GetPosition(), 3);

  TColumnsHost copy;
  copy.columns.Assign(&columns);
  EXPECT_EQ(copy.columns.GetOrder(), columns.GetOrder());
  columns.Clear();
  EXPECT_TRUE(columns.GetOrder().empty());
}

TEST(ListColumns, WidthsStayWithinTheirLimits) {
  TColumnsHost host;
  TListColumn& column = *host.columns.Add();
  column.SetMinWidth(30);
  column.SetMaxWidth(90);
  for (const auto& [width, expected] : {std::pair(10, 30), {60, 60}, {100, 90}, {-5, 30}}) {
    column.SetWidth(width);
    EXPECT_EQ(column.GetWidth(), expected);
  }
  column.SetMinWidth(40);
  EXPECT_EQ(column.GetWidth(), 40);
  column.SetMaxWidth(0);
  column.SetWidth(1000);
  EXPECT_EQ(column.GetWidth(), 1000);
  host.looks = host.widths = 0;
  column.SetWidth(1000);
  column.SetSortMark(TSortMark::Down);
  column.SetSortMark(TSortMark::Down);
  column.SetVisible(false);
  EXPECT_EQ(host.looks, 1);
  EXPECT_EQ(host.widths, 1);
}

} // namespace
} // namespace kiv
