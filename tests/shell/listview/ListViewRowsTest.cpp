#include "ListFixture.h"

#include <forms/PopupMenu.h>
#include <forms/PreTranslate.h>
#include <forms/ShortCut.h>

#include <functional>
#include <set>

namespace kiv {
namespace {

using test::PressKey;
using test::PumpMessages;
using test::PumpUntil;
using test::TListFixture;

TEST(ListViewRows, PlaceSelectionAndFocusGoWithTheRows) {
  struct TCase {
    const char* name;
    std::function<void(TListFixture&)> change;
    /// What then stands first, of the former numbers.
    int top;
  };
  const auto descending = [](TListItem& a, TListItem& b, std::intptr_t) {
    return static_cast<int>(b.GetData() - a.GetData());
  };
  const std::vector<TCase> cases{
      {"insert before",
       [](auto& l) {
         for (int i = 0; i < 10; ++i) l.Rows().Insert(0);
       },
       50},
      {"delete before",
       [](auto& l) {
         for (int i = 0; i < 10; ++i) l.Rows().Delete(5);
       },
       50},
      {"delete the first on the screen", [](auto& l) { l.Rows().Delete(50); }, 51},
      {"delete some around the first on the screen",
       [](auto& l) {
         TListItem* const chosen = l.list->GetSelected();
         l.list->ClearSelection();
         l.Rows().SelectRange(40, 51, true);
         l.list->DeleteSelected();
         chosen->SetSelected(true);
       },
       52},
      {"sort", [&](auto& l) { l.list->CustomSort(descending); }, 50},
      {"append", [](auto& l) { l.Fill(100); }, 50},
      {"another window", [](auto& l) { l.list->RecreateWnd(); }, 50},
  };
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.name);
    TListFixture list;
    list.Show(200);
    for (int i = 0; i < 200; ++i) list.Row(i).SetData(i);
    TListItem& chosen = list.Row(53);
    list.list->SetSelected(&chosen);
    chosen.SetFocused(true);
    list.Row(199).MakeVisible(false);
    list.Row(50).MakeVisible(false);
    PumpMessages();
    ASSERT_EQ(list.list->GetTopItem()->GetData(), 50);
    test.change(list);
    PumpMessages();
    ASSERT_NE(list.list->GetTopItem(), nullptr);
    EXPECT_EQ(list.list->GetTopItem()->GetData(), test.top);
    EXPECT_EQ(list.list->GetSelected(), &chosen);
    EXPECT_EQ(list.list->GetItemFocused(), &chosen);
    EXPECT_EQ(list.list->DescribeInconsistency(), L"");
  }
  TListFixture list;
  list.Show(200);
  list.Rows().Insert(0)->SetCaption(L"new");
  EXPECT_EQ(list.list->GetTopItem()->GetCaption(), L"new") << "a list at its beginning stays there";
}

TEST(ListViewRows, AnEditStaysWithItsRow) {
  struct TCase {
    const char* name;
    std::function<void(TListFixture&, TListItem&)> change;
    bool survives;
  };
  const std::vector<TCase> cases{
      {"insert", [](auto& l, TListItem&) { l.Rows().Insert(0)->SetCaption(L"new"); }, true},
      {"delete another", [](auto& l, TListItem&) { l.Rows().Delete(0); }, true},
      {"sort",
       [](auto& l, TListItem&) {
         l.list->CustomSort(
             [](TListItem& a, TListItem& b, std::intptr_t) { return -a.GetCaption().compare(b.GetCaption()); });
       },
       true},
      {"another window", [](auto& l, TListItem&) { l.list->RecreateWnd(); }, true},
      {"delete it", [](auto&, TListItem& row) { row.Delete(); }, false},
      {"clear and fill",
       [](auto& l, TListItem&) {
         l.Rows().Clear();
         l.Fill(8);
       },
       false},
  };
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.name);
    TListFixture list;
    list.Show(8);
    std::wstring edited;
    list.list->SetOnEdited(
        [&](TPersistent*, TListItem* item, std::wstring& text) { edited += item->GetCaption() + L"=" + text; });
    TListItem& row = list.Row(3);
    ASSERT_TRUE(row.EditCaption());
    SetWindowTextW(list.list->GetEditControl(), L"typed");
    test.change(list, row);
    PumpMessages();
    EXPECT_EQ(list.list->IsEditing(), test.survives);
    EXPECT_EQ(list.list->DescribeInconsistency(), L"");
    if (!test.survives) continue;
    EXPECT_EQ(list.Rows().GetEditing(), &row);
    PressKey(VK_RETURN);
    EXPECT_EQ(edited, L"row 3=typed");
    EXPECT_EQ(row.GetCaption(), L"typed");
    EXPECT_FALSE(list.list->IsEditing());
  }
}

/// A platform that closes an edit when it is told of the rows' number.
WNDPROC gListProc = nullptr;
LRESULT CALLBACK ClosesEdits(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == LVM_SETITEMCOUNT) CallWindowProcW(gListProc, window, LVM_CANCELEDITLABEL, 0, 0);
  return CallWindowProcW(gListProc, window, message, wParam, lParam);
}

TEST(ListViewRows, AnEditThatThePlatformClosesComesBack) {
  TListFixture list;
  list.Show(5);
  int cancels = 0;
  list.list->SetOnCancelEdit([&](TPersistent*) { ++cancels; });
  int asked = 0;
  list.list->SetOnEditing([&](TPersistent*, TListItem*, bool& allow) { allow = ++asked == 1; });
  TListItem& row = list.Row(2);
  ASSERT_TRUE(row.EditCaption());
  SetWindowTextW(list.list->GetEditControl(), L"typed");
  SendMessageW(list.list->GetEditControl(), EM_SETSEL, 2, 4);
  list.list->SetSelected(&list.Row(4));
  const TListItem* const selected = &list.Row(4);
  const auto closes = reinterpret_cast<LONG_PTR>(&ClosesEdits);
  gListProc = reinterpret_cast<WNDPROC>(SetClassLongPtrW(list.Window(), GCLP_WNDPROC, closes));
  list.Rows().Insert(0)->SetCaption(L"new");
  PumpMessages();
  SetClassLongPtrW(list.Window(), GCLP_WNDPROC, reinterpret_cast<LONG_PTR>(gListProc));
  ASSERT_EQ(list.Rows().GetEditing(), &row);
  EXPECT_EQ(cancels, 0);
  EXPECT_EQ(list.list->GetSelected(), selected);
  EXPECT_EQ(list.list->GetSelCount(), 1);
  EXPECT_EQ(list.list->DescribeInconsistency(), L"");
  EXPECT_EQ(SendMessageW(list.list->GetEditControl(), EM_GETSEL, 0, 0), MAKELONG(2, 4));
  list.list->RecreateWnd();
  PumpMessages();
  EXPECT_EQ(cancels, 0);
  PressKey(VK_RETURN);
  EXPECT_EQ(row.GetCaption(), L"typed");
  EXPECT_EQ(asked, 1) << "it was allowed when it began";
}

TEST(ListViewRows, WhatAnEditHeldUpFollowsIt) {
  TListFixture list;
  list.Show(200);
  const TRowRect row = list.Row(0).DisplayRect(TDisplayCode::drBounds);
  list.Send(LVM_SCROLL, 0, 20 * (row.bottom - row.top));
  PumpMessages();
  TListItem* const top = list.list->GetTopItem();
  ASSERT_GT(top->GetIndex(), 0);
  ASSERT_TRUE(list.Row(top->GetIndex() + 2).EditCaption());
  for (int i = 0; i < 5; ++i) list.Rows().Insert(0)->SetCaption(L"new");
  PumpMessages();
  PressKey(VK_ESCAPE);
  EXPECT_EQ(list.list->GetTopItem(), top);
}

TEST(ListViewRows, AnEditsKeysAreItsOwn) {
  TListFixture list;
  TPopupMenu menu;
  int clicks = 0;
  auto* const item = new TMenuItem(&menu);
  item->SetShortCut(MakeShortCut('D', {TShiftStateFlag::ssCtrl}));
  item->SetOnClick([&](TPersistent*) { ++clicks; });
  menu.GetItems().Add(item);
  list.list->SetPopupMenu(&menu);
  list.Show(1);
  test::SetPreTranslate([](MSG& message) { return PreTranslateMessage(message); });
  ASSERT_TRUE(list.Row(0).EditCaption());
  PressKey('D', {TShiftStateFlag::ssCtrl});
  EXPECT_EQ(clicks, 0);
  PressKey(VK_RETURN);
  PressKey('D', {TShiftStateFlag::ssCtrl});
  EXPECT_EQ(clicks, 1);
  test::SetPreTranslate(nullptr);
}

TEST(ListViewRows, AHostMayPutTheListIntoAnotherWindow) {
  TListFixture list;
  list.Show(3);
  test::THostWindow other;
  ::SetParent(list.Window(), other.Get());
  SetWindowPos(list.Window(), nullptr, 5, 6, 300, 200, SWP_NOZORDER);
  PumpMessages();
  EXPECT_EQ(list.TextOf(1, 0), L"row 1");
  LVITEMW item{};
  item.state = item.stateMask = LVIS_SELECTED;
  list.Send(LVM_SETITEMSTATE, 2, reinterpret_cast<LPARAM>(&item));
  PumpMessages();
  EXPECT_EQ(list.Selected(), std::vector<int>{2});
}

TEST(ListViewRows, EditingCanBeRefusedCancelledAndChanged) {
  TListFixture list;
  list.Show(3);
  int cancels = 0;
  list.list->SetOnCancelEdit([&](TPersistent*) { ++cancels; });
  list.list->SetOnEditing([](TPersistent*, TListItem* item, bool& allow) { allow = item->GetIndex() != 0; });
  EXPECT_FALSE(list.Row(0).EditCaption());
  EXPECT_TRUE(list.Row(1).EditCaption());
  PressKey(VK_ESCAPE);
  EXPECT_EQ(cancels, 1);
  EXPECT_EQ(list.Row(1).GetCaption(), L"row 1");
  list.list->SetOnEdited([](TPersistent*, TListItem*, std::wstring& text) { text += L"!"; });
  EXPECT_TRUE(list.Row(2).EditCaption());
  SetWindowTextW(list.list->GetEditControl(), L"new");
  PressKey(VK_RETURN);
  EXPECT_EQ(list.Row(2).GetCaption(), L"new!");
  list.list->SetReadOnly(true);
  EXPECT_FALSE(list.Row(1).EditCaption());
}

/// Fills its sub-items when it is asked for them, and says if that was while it was painted.
class TLazyRow : public TListItem {
public:
  TLazyRow(TListItems* pOwner, const std::function<void(TListItem&)>& pAsked) : TListItem(pOwner), fAsked(pAsked) {}
  TStrings& GetSubItems() override {
    TStrings& texts = TListItem::GetSubItems();
    if (texts.GetCount() > 0) return texts;
    fAsked(*this);
    texts.Add(L"detail of " + GetCaption());
    return texts;
  }

private:
  const std::function<void(TListItem&)>& fAsked;
};

TEST(ListViewRows, DetailsAreFetchedForRowsThatShowAndNeverWhilePainting) {
  std::set<int> asked;
  int whilePainting = 0;
  TListFixture list(TViewStyle::vsReport, 2, std::make_unique<test::TPaintingList>());
  auto* const painting = static_cast<test::TPaintingList*>(list.list.get());
  const std::function<void(TListItem&)> ask = [&](TListItem& row) {
    asked.insert(row.GetIndex());
    whilePainting += painting->IsInsideNative() ? 1 : 0;
  };
  std::set<int> images;
  painting->SetOnGetImageIndex([&](TPersistent*, TListItem* item) {
    images.insert(item->GetIndex());
    whilePainting += painting->IsInsideNative() ? 1 : 0;
  });
  painting->SetOnCreateItemClass([&](TPersistent*, TListItemClass& itemClass) {
    itemClass = [&](TListItems& rows) { return std::make_unique<TLazyRow>(&rows, ask); };
  });
  list.Show(5000);
  const int page = painting->GetVisibleRowCount();
  const auto upTo = [](int first, int last) {
    std::set<int> rows;
    for (int i = first; i <= last; ++i) rows.insert(i);
    return rows;
  };
  ASSERT_TRUE(PumpUntil([&] { return static_cast<int>(asked.size()) >= page; }));
  EXPECT_LE(*asked.rbegin(), page + 1);
  EXPECT_EQ(asked, images);
  EXPECT_EQ(list.TextOf(0, 1), L"detail of row 0");
  asked.clear();
  images.clear();
  list.Row(4999).MakeVisible(false);
  ASSERT_TRUE(PumpUntil([&] { return asked.count(4999) == 1; }));
  EXPECT_GE(*asked.begin(), 4999 - page - 1);
  EXPECT_EQ(whilePainting, 0);
  images.clear();
  painting->UpdateItems(0, 4999);
  ASSERT_TRUE(PumpUntil([&] { return images.count(4999) == 1; }));
  EXPECT_EQ(images, upTo(*images.begin(), 4999));
}

TEST(ListViewRows, TextsOfAllLengthsReachTheControl) {
  TListFixture list(TViewStyle::vsReport, 3);
  list.Show(3);
  const std::wstring longText(5000, L'x');
  list.Row(1).SetCaption(longText);
  list.Row(1).GetSubItems().Add(L"\u05E9\u05DC\u05D5\u05DD e\u0301");
  EXPECT_TRUE(list.TextOf(1, 0) == longText);
  EXPECT_EQ(list.TextOf(1, 1), L"\u05E9\u05DC\u05D5\u05DD e\u0301");
  EXPECT_EQ(list.TextOf(1, 2), L"") << "a row may have fewer sub-items than there are columns";
  EXPECT_EQ(list.TextOf(99, 0), L"");
  list.Row(0).GetSubItems().Add(L"one");
  list.Row(0).GetSubItems().Add(L"two");
  EXPECT_EQ(list.TextOf(0, 2), L"two");
}

} // namespace
} // namespace kiv
