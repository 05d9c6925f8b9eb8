#include "ListFixture.h"

#include <forms/ExtControls.h>
#include <threading/Cancellation.h>
#include <threading/WorkProcedures.h>
#include <threading/WorkerPool.h>

#include <functional>
#include <random>
#include <set>

namespace kiv {
namespace {

using test::ClickMouse;
using test::PressKey;
using test::PumpMessages;
using test::PumpUntil;
using test::TListFixture;

using TEnd = std::function<void()>;

struct TEndsFixture : TListFixture {
  TEndsFixture() : TListFixture(TViewStyle::vsReport, 2) {
    around->SetBounds(0, 0, 410, 320);
    list->SetCheckBoxes(true);
    list->SetFullDrag(true);
    Show(0, around.get());
  }
  std::unique_ptr<TPanel> around = std::make_unique<TPanel>();
};

/// Where foreign code is called, and what the user does to get there.
struct TPlace {
  const char* name;
  std::function<void(TListView&, const TEnd&)> listen;
  std::function<void(TEndsFixture&)> act;
  bool isByMouse = false; // takes its time
};

const std::vector<TPlace>& Places() {
  static const std::vector<TPlace> places{
      {"select", [](auto& l, const TEnd& end) { l.SetOnSelectItem([end](auto&&...) { end(); }); },
       [](auto& f) { ClickMouse(f.PointOfRow(4)); }, true},
      {"change", [](auto& l, const TEnd& end) { l.SetOnChange([end](auto&&...) { end(); }); },
       [](auto&) { PressKey(VK_END, {TShiftStateFlag::ssShift}); }},
      {"select all", [](auto& l, const TEnd& end) { l.SetOnSelectItem([end](auto&&...) { end(); }); },
       [](auto& f) { f.list->SelectAll(); }},
      {"paint a row", [](auto& l, const TEnd& end) { l.SetOnAdvancedCustomDrawItem([end](auto&&...) { end(); }); },
       [](auto& f) { RedrawWindow(f.Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW); }},
      {"paint a cell", [](auto& l, const TEnd& end) { l.SetOnAdvancedCustomDrawSubItem([end](auto&&...) { end(); }); },
       [](auto& f) { RedrawWindow(f.Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW); }},
      {"details", [](auto& l, const TEnd& end) { l.SetOnGetImageIndex([end](auto&&...) { end(); }); },
       [](auto& f) { f.list->UpdateItems(0, 99); }},
      {"begin an edit", [](auto& l, const TEnd& end) { l.SetOnEditing([end](auto&&...) { end(); }); },
       [](auto& f) { f.Row(2).EditCaption(); }},
      {"end an edit", [](auto& l, const TEnd& end) { l.SetOnEdited([end](auto&&...) { end(); }); },
       [](auto& f) {
         f.Row(2).EditCaption();
         SetWindowTextW(f.list->GetEditControl(), L"new");
         PressKey(VK_RETURN);
       }},
      {"cancel an edit", [](auto& l, const TEnd& end) { l.SetOnCancelEdit([end](auto&&...) { end(); }); },
       [](auto& f) {
         f.Row(2).EditCaption();
         PressKey(VK_ESCAPE);
       }},
      {"delete", [](auto& l, const TEnd& end) { l.SetOnDeletion([end](auto&&...) { end(); }); },
       [](auto& f) { f.Rows().Delete(1); }},
      {"insert", [](auto& l, const TEnd& end) { l.SetOnInsert([end](auto&&...) { end(); }); },
       [](auto& f) { f.Rows().Add(); }},
      {"click on a header", [](auto& l, const TEnd& end) { l.SetOnColumnClick([end](auto&&...) { end(); }); },
       [](auto& f) { ClickMouse(test::PointOf(f.list->GetHeaderHandle(), 30, 8)); }, true},
      {"right click on a header",
       [](auto& l, const TEnd& end) { l.SetOnColumnRightClick([end](auto&&...) { end(); }); },
       [](auto& f) { ClickMouse(test::PointOf(f.list->GetHeaderHandle(), 30, 8), TShiftStateFlag::ssRight); }, true},
      {"drag of a column", [](auto& l, const TEnd& end) { l.SetOnColumnDragged([end](auto&&...) { end(); }); },
       [](auto& f) { f.DragHeader(40, 230); }, true},
      {"tick", [](auto& l, const TEnd& end) { l.SetOnItemChecked([end](auto&&...) { end(); }); },
       [](auto& f) {
         f.Row(2).SetFocused(true);
         PressKey(VK_SPACE);
       }},
      {"hint", [](auto& l, const TEnd& end) { l.SetOnInfoTip([end](auto&&...) { end(); }); },
       [](auto& f) {
         test::MoveMouse(f.PointOfRow(3));
         THintInfo hint;
         f.list->Perform(CM_HINTSHOW, 0, reinterpret_cast<LPARAM>(&hint));
       },
       true},
      {"tilt of the wheel", [](auto& l, const TEnd& end) { l.SetOnMouseWheelHorz([end](auto&&...) { end(); }); },
       [](auto& f) { f.Send(WM_MOUSEHWHEEL, MAKEWPARAM(0, WHEEL_DELTA)); }},
      {"double click", [](auto& l, const TEnd& end) { l.SetOnDblClick([end](auto&&...) { end(); }); },
       [](auto& f) {
         const POINT point = f.PointOfRow(3);
         ClickMouse(point);
         ClickMouse(point);
       },
       true},
      {"drag", [](auto& l, const TEnd& end) { l.SetOnBeginDrag([end](auto&&...) { end(); }); },
       [](auto& f) {
         const POINT point = f.PointOfRow(3);
         test::MoveMouse(point);
         test::PressMouse();
         for (int i = 1; i < 6; ++i) test::MoveMouse({point.x + 6 * i, point.y + 4 * i});
         test::ReleaseMouse();
       },
       true},
      {"key", [](auto& l, const TEnd& end) { l.SetOnKeyDown([end](auto&&...) { end(); }); },
       [](auto&) { PressKey(VK_DOWN); }},
  };
  return places;
}

// No handler is left.
void Forget(TListView& pList) {
  pList.SetOnSelectItem({});
  pList.SetOnChange({});
  pList.SetOnAdvancedCustomDrawItem({});
  pList.SetOnAdvancedCustomDrawSubItem({});
  pList.SetOnGetImageIndex({});
  pList.SetOnEditing({});
  pList.SetOnEdited({});
  pList.SetOnCancelEdit({});
  pList.SetOnDeletion({});
  pList.SetOnInsert({});
  pList.SetOnColumnClick({});
  pList.SetOnColumnRightClick({});
  pList.SetOnColumnDragged({});
  pList.SetOnItemChecked({});
  pList.SetOnInfoTip({});
  pList.SetOnMouseWheelHorz({});
  pList.SetOnDblClick({});
  pList.SetOnBeginDrag({});
  pList.SetOnKeyDown({});
}

struct TKind {
  const char* name;
  std::function<void(TEndsFixture&)> end;
};

const std::vector<TKind>& Kinds() {
  static const std::vector<TKind> kinds{
      {"rows", [](auto& f) { f.Rows().Clear(); }},
      {"first row",
       [](auto& f) {
         if (f.Rows().GetCount() > 0) f.Rows().Delete(0);
       }},
      {"columns", [](auto& f) { f.list->GetColumns().Clear(); }},
      {"window", [](auto& f) { f.list->RecreateWnd(); }},
      {"control", [](auto& f) { f.list.reset(); }},
      {"all that it stands in",
       [](auto& f) {
         f.around.reset();
         f.list.reset();
       }},
  };
  return kinds;
}

// What a handler does to the list must not be felt by the code that called it, ours or the platform's. Each end in
// each place, at the first call of the handler or a later one, in a list that has been through the ends before.
class ListViewEndsRounds : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Parts, ListViewEndsRounds, testing::Range(0, 5));

TEST_P(ListViewEndsRounds, HandlersMayEndRowsColumnsAndTheControl) {
  constexpr int rounds = 150; // about 450 in all without those that are passed over
  const auto combinations = static_cast<int>(Places().size() * Kinds().size());
  std::unique_ptr<TEndsFixture> fixture;
  std::mt19937 random(static_cast<unsigned>(GetParam()));
  for (int round = GetParam() * rounds; round < (GetParam() + 1) * rounds; ++round) {
    const int combination = round % combinations;
    const TPlace& place = Places()[static_cast<std::size_t>(combination) % Places().size()];
    const TKind& kind = Kinds()[static_cast<std::size_t>(combination) / Places().size()];
    const bool isFirst = round < combinations;
    if (!isFirst && place.isByMouse) continue;
    const int wanted = isFirst ? 1 : 1 + static_cast<int>(random() % 4);
    SCOPED_TRACE(std::string(kind.name) + " in " + place.name + ", call " + std::to_string(wanted) + ", round " +
                 std::to_string(round));
    if (!fixture || !fixture->list) fixture = std::make_unique<TEndsFixture>();
    if (fixture->list->GetColumns().GetCount() == 0) {
      for (int i = 0; i < 2; ++i) fixture->list->GetColumns().Add()->SetWidth(120);
    }
    if (fixture->Rows().GetCount() < 20) fixture->Fill(30);
    if (TListItem* const edited = fixture->Rows().GetEditing()) edited->CancelEdit();
    fixture->list->ClearSelection();
    fixture->list->SetFocus();
    fixture->Row(0).MakeVisible(false);
    PumpMessages();
    int calls = 0;
    place.listen(*fixture->list, [&] {
      if (++calls == wanted) kind.end(*fixture);
    });
    place.act(*fixture);
    PumpMessages();
    EXPECT_GE(calls, isFirst ? 1 : 0);
    if (fixture->list) {
      ASSERT_EQ(fixture->list->DescribeInconsistency(), L"");
      Forget(*fixture->list);
    }
    ASSERT_TRUE(round % 25 > 0 || HeapValidate(GetProcessHeap(), 0, nullptr));
  }
}

/// A row that withdraws its work when it goes.
class TWorkingRow : public TListItem {
public:
  TWorkingRow(TListItems* pOwner, std::set<const TListItem*>& pLiving) : TListItem(pOwner), fLiving(pLiving) {
    fLiving.insert(this);
  }
  ~TWorkingRow() override {
    token.Reset();
    fLiving.erase(this);
  }
  CancellationToken token;

private:
  std::set<const TListItem*>& fLiving;
};

TEST(ListViewEnds, WorkReportsToNoRowThatHasGone) {
  std::set<const TListItem*> living;
  TListFixture fixture;
  fixture.list->SetOnCreateItemClass([&](TPersistent*, TListItemClass& itemClass) {
    itemClass = [&](TListItems& rows) { return std::make_unique<TWorkingRow>(&rows, living); };
  });
  fixture.Show();
  int delivered = 0;
  int stale = 0;
  std::mt19937 random(5);
  for (int round = 0; round < 1000; ++round) {
    for (int i = 0; i < 4; ++i) {
      auto* const row = static_cast<TWorkingRow*>(fixture.Rows().Add());
      TAsyncProcedure::CreateAndQueue([] {}, row->token,
                                      [&, row] {
                                        ++delivered;
                                        if (living.count(row) == 0)
                                          ++stale;
                                        else
                                          row->SetCaption(L"done");
                                      });
    }
    for (int i = 0; i < 3; ++i) {
      const int count = fixture.Rows().GetCount();
      if (count > 0) fixture.Rows().Delete(static_cast<int>(random() % static_cast<unsigned>(count)));
    }
    if (round % 10 == 0) PumpMessages();
    if (round % 100 == 99) {
      fixture.Rows().Clear();
      ASSERT_EQ(fixture.list->DescribeInconsistency(), L"");
      ASSERT_TRUE(HeapValidate(GetProcessHeap(), 0, nullptr));
    }
  }
  fixture.list.reset();
  PumpMessages();
  EXPECT_EQ(stale, 0);
  EXPECT_GT(delivered, 0);
  EXPECT_TRUE(living.empty());
}

} // namespace
} // namespace kiv
