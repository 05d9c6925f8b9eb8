#include "ListFixture.h"

#include <functional>

namespace kiv {
namespace {

using test::ClickMouse;
using test::MoveMouse;
using test::PressKey;
using test::PressMouse;
using test::PumpMessages;
using test::PumpUntil;
using test::ReleaseMouse;
using test::TListFixture;

void SetState(TListFixture& pList, int pRow, bool pSelected) {
  LVITEMW item{};
  item.state = pSelected ? LVIS_SELECTED : 0U;
  item.stateMask = LVIS_SELECTED;
  pList.Send(LVM_SETITEMSTATE, static_cast<WPARAM>(pRow), reinterpret_cast<LPARAM>(&item));
}

struct TAction {
  const char* name;
  std::function<void(TListFixture&)> act;
  std::vector<int> selected;
  int changedRows;
  /// More than one only where one action of the user is several messages.
  int mostChanges = 1;
};

// Each on what the one before left.
TEST(ListViewReports, EveryWayToSelectGivesOneReport) {
  using enum TShiftStateFlag;
  const std::vector<TAction> actions{
      {"click", [](auto& l) { ClickMouse(l.PointOfRow(2)); }, {2}, 1},
      {"shift and down, twice",
       [](auto&) {
         PressKey(VK_DOWN, {ssShift});
         PressKey(VK_DOWN, {ssShift});
       },
       {2, 3, 4},
       2,
       2},
      {"shift and end", [](auto&) { PressKey(VK_END, {ssShift}); }, {2, 3, 4, 5, 6, 7, 8, 9}, 5},
      {"shift and home", [](auto&) { PressKey(VK_HOME, {ssShift}); }, {0, 1, 2}, 9},
      {"key alone", [](auto&) { PressKey(VK_DOWN); }, {1}, 2},
      {"all, by another program", [](auto& l) { SetState(l, -1, true); }, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 9},
      {"none, by another program", [](auto& l) { SetState(l, -1, false); }, {}, 10},
      {"one, by another program", [](auto& l) { SetState(l, 7, true); }, {7}, 1},
      {"control and space", [](auto&) { PressKey(VK_SPACE, {ssCtrl}); }, {1, 7}, 1},
      {"select all", [](auto& l) { l.list->SelectAll(); }, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 8},
      {"invert", [](auto& l) { l.list->InvertSelection(); }, {}, 10},
      {"set one", [](auto& l) { l.list->SetSelected(&l.Row(4)); }, {4}, 1},
      {"set another", [](auto& l) { l.list->SetSelected(&l.Row(5)); }, {5}, 2},
      {"click beside", [](auto& l) { ClickMouse(test::PointOf(l.Window(), 350, 280)); }, {}, 1},
  };
  TListFixture list;
  list.Show(10);
  for (const TAction& action : actions) {
    SCOPED_TRACE(action.name);
    list.selects = list.changes = 0;
    action.act(list);
    PumpMessages();
    EXPECT_EQ(list.Selected(), action.selected);
    EXPECT_EQ(list.selects, action.changedRows) << "each row that changed, once";
    EXPECT_GE(list.changes, 1);
    EXPECT_LE(list.changes, action.mostChanges);
    EXPECT_TRUE(list.HeardAll());
    EXPECT_EQ(list.list->DescribeInconsistency(), L"");
  }
}

TEST(ListViewReports, AMarqueeSelectsWhatItTouches) {
  TListFixture list;
  list.Show(10);
  const TRowRect third = list.Row(3).DisplayRect(TDisplayCode::drBounds);
  const TRowRect sixth = list.Row(6).DisplayRect(TDisplayCode::drBounds);
  const POINT from = test::PointOf(list.Window(), 350, sixth.bottom - 3);
  MoveMouse(from);
  PressMouse();
  for (int step = 1; step <= 8; ++step) {
    MoveMouse(test::PointOf(list.Window(), 350 - step * 40, sixth.bottom - 3 - step * (sixth.bottom - third.top) / 9));
  }
  ReleaseMouse();
  ASSERT_TRUE(PumpUntil([&] { return list.list->IsConsistent() && list.HeardAll(); }));
  EXPECT_EQ(list.Selected(), (std::vector<int>{3, 4, 5, 6}));
}

TEST(ListViewReports, TypingFindsARow) {
  struct TCase {
    const wchar_t* typed;
    int from;
    int found;
  };
  for (const TCase& test : {TCase{L"g", 5, 17}, {L"go", 5, 3}, {L"gam", 0, 17}, {L"g", 20, 3}, {L"zz", 5, 5}}) {
    SCOPED_TRACE(testing::Message() << std::string(test.typed, test.typed + std::wcslen(test.typed)) << test.from);
    TListFixture list;
    list.Show(30);
    list.Row(17).SetCaption(L"Gamma");
    list.Row(3).SetCaption(L"golf");
    list.Row(test.from).SetFocused(true);
    list.Row(test.from).SetSelected(true);
    test::TypeText(test.typed);
    EXPECT_EQ(list.Selected(), std::vector<int>{test.found});
    EXPECT_EQ(list.list->GetItemFocused(), &list.Row(test.found));
    EXPECT_EQ(list.list->DescribeInconsistency(), L"");
  }
}

/// What a list view may tell of a single action, by numbers; the first of -1 is all rows.
struct TTold {
  int first;
  int last;
  bool selected;
};

TEST(ListViewReports, ManyReportsOfOneActionAreOne) {
  struct TCase {
    std::vector<TTold> told;
    std::vector<int> selected;
    int changedRows;
  };
  const std::vector<TCase> cases{
      {{{-1, -1, false}, {3, 3, true}}, {3}, 4}, // none but one, as a click is told
      {{{-1, -1, true}, {3, 3, false}}, {0, 1, 2, 4, 5, 6, 7}, 8},
      {{{-1, -1, false}, {2, 2, true}}, {2}, 6},         // that was selected before
      {{{3, 5, true}}, {2, 3, 4, 5}, 3},                 // a range
      {{{4, 99, false}, {0, 1, true}}, {0, 1, 2, 3}, 4}, // beyond the end
  };
  MoveMouse({5, 5}); // the control isn't asked for the marks that it hasn't got
  TListFixture list;
  list.Show(8);
  list.Rows().SelectRange(0, 2, true);
  for (const TCase& test : cases) {
    list.selects = list.changes = 0;
    for (const TTold& told : test.told) {
      NMHDR header{list.Window(), static_cast<UINT_PTR>(GetDlgCtrlID(list.Window())), LVN_ITEMCHANGED};
      const UINT before = told.selected ? 0U : LVIS_SELECTED;
      NMLISTVIEW row{header, told.first, 0, LVIS_SELECTED - before, before, LVIF_STATE, {}, 0};
      NMLVODSTATECHANGE range{header, told.first, told.last, LVIS_SELECTED - before, before};
      range.hdr.code = static_cast<UINT>(LVN_ODSTATECHANGED);
      const bool isRange = told.first != told.last;
      SendMessageW(test::Host().Get(), WM_NOTIFY, header.idFrom,
                   isRange ? reinterpret_cast<LPARAM>(&range) : reinterpret_cast<LPARAM>(&row));
    }
    EXPECT_EQ(list.changes, 0) << "from inside of the control's code";
    PumpMessages();
    EXPECT_EQ(list.Selected(), test.selected);
    EXPECT_EQ(list.selects, test.changedRows);
    EXPECT_EQ(list.changes, 1);
  }
}

/// A platform that waits for the release of the button in its own code and keeps it.
class TSwallowingList : public TListView {
protected:
  void DefaultHandler(TMessage& pMessage) override {
    TListView::DefaultHandler(pMessage);
    if (pMessage.Msg != WM_LBUTTONDOWN) return;
    INPUT release{};
    release.type = INPUT_MOUSE;
    release.mi.dwFlags = MOUSEEVENTF_LEFTUP;
    SendInput(1, &release, sizeof(release));
    MSG message;
    GetMessageW(&message, nullptr, WM_LBUTTONUP, WM_LBUTTONUP);
  }
};

TEST(ListViewReports, AClickIsWholeThoughThePlatformKeepsTheRelease) {
  for (const bool isSwallowed : {false, true}) {
    TListFixture list(TViewStyle::vsIcon, 0,
                      isSwallowed ? std::make_unique<TSwallowingList>() : std::make_unique<TListView>());
    list.Show(5);
    std::string heard;
    list.list->SetOnMouseDown([&](auto&&...) { heard += "down "; });
    list.list->SetOnMouseUp([&](auto&&...) { heard += "up "; });
    list.list->SetOnClick([&](auto&&...) { heard += "click "; });
    MoveMouse(list.PointOfRow(2));
    PressMouse();
    if (!isSwallowed) ReleaseMouse();
    EXPECT_EQ(heard, "down click up ") << isSwallowed;
  }
}

} // namespace
} // namespace kiv
