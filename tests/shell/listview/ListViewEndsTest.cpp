#include "ListFixture.h"

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

/// Where foreign code is called, and what the user does to get there.
struct TPlace {
  const char* name;
  std::function<void(TListView&, const TEnd&)> listen;
  std::function<void(TListFixture&)> act;
};

const std::vector<TPlace>& Places() {
  static const std::vector<TPlace> places{
      {"select", [](auto& l, const TEnd& end) { l.SetOnSelectItem([end](auto&&...) { end(); }); },
       [](auto& f) { ClickMouse(f.PointOfRow(4)); }},
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
       [](auto& f) { ClickMouse(test::PointOf(f.list->GetHeaderHandle(), 30, 8)); }},
      {"double click", [](auto& l, const TEnd& end) { l.SetOnDblClick([end](auto&&...) { end(); }); },
       [](auto& f) {
         const POINT point = f.PointOfRow(3);
         ClickMouse(point);
         ClickMouse(point);
       }},
      {"drag", [](auto& l, const TEnd& end) { l.SetOnBeginDrag([end](auto&&...) { end(); }); },
       [](auto& f) {
         const POINT point = f.PointOfRow(3);
         test::MoveMouse(point);
         test::PressMouse();
         for (int i = 1; i < 6; ++i) test::MoveMouse({point.x + 6 * i, point.y + 4 * i});
         test::ReleaseMouse();
       }},
      {"key", [](auto& l, const TEnd& end) { l.SetOnKeyDown([end](auto&&...) { end(); }); },
       [](auto&) { PressKey(VK_DOWN); }},
  };
  return places;
}

// What a handler does to the list must not be felt by the code that called it, ours or the platform's.
TEST(ListViewEnds, HandlersMayEndRowsColumnsAndTheControl) {
  struct TKind {
    const char* name;
    std::function<void(TListFixture&)> end;
  };
  const std::vector<TKind> kinds{
      {"rows", [](auto& f) { f.Rows().Clear(); }},
      {"first row",
       [](auto& f) {
         if (f.Rows().GetCount() > 0) f.Rows().Delete(0);
       }},
      {"columns", [](auto& f) { f.list->GetColumns().Clear(); }},
      {"window", [](auto& f) { f.list->RecreateWnd(); }},
      {"control", [](auto& f) { f.list.reset(); }},
  };
  for (const TPlace& place : Places()) {
    for (const TKind& kind : kinds) {
      SCOPED_TRACE(std::string(kind.name) + " in " + place.name);
      TListFixture fixture(TViewStyle::vsReport, 2);
      fixture.Show(100);
      int calls = 0;
      place.listen(*fixture.list, [&] {
        if (++calls == 1) kind.end(fixture);
      });
      place.act(fixture);
      PumpMessages();
      EXPECT_GE(calls, 1);
      EXPECT_EQ(fixture.list ? fixture.list->DescribeInconsistency() : L"", L"");
      EXPECT_TRUE(HeapValidate(GetProcessHeap(), 0, nullptr));
    }
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
