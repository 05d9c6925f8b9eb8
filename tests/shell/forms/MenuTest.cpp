#include "TestControls.h"

#include <doubles/GuiDriver.h>
#include <forms/PopupMenu.h>
#include <forms/StdControls.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <platform/MainThread.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace kiv::test {
namespace {

using TLog = std::vector<std::wstring>;

TMenuItem* AddItem(TMenuItem& parent, const wchar_t* caption, TLog* log = nullptr) {
  auto* const item = new TMenuItem;
  item->SetCaption(caption);
  if (log) item->SetOnClick([log, caption](TPersistent*) { log->push_back(caption); });
  parent.Add(item);
  return item;
}

TEST(Menu, ItemsBelongToOneMenuAndGoWithIt) {
  TPopupMenu menu;
  TMenuItem& root = menu.GetItems();
  auto* const file = AddItem(root, L"&File");
  auto* const open = AddItem(*file, L"&Open");
  file->AddSeparator();
  file->AddSeparator();
  EXPECT_EQ(file->GetCount(), 2);
  EXPECT_EQ(open->GetParentMenu(), &menu);
  EXPECT_EQ(menu.FindCommand(open->GetCommand()), open);
  EXPECT_EQ(root.Find(L"open"), open);
  EXPECT_THROW(root.Add(open), EInvalidOperation);
  EXPECT_THROW(open->Add(file), EInvalidOperation);
  const TAliveWatch alive(open->GetAliveToken());
  file->Clear();
  EXPECT_FALSE(alive.IsAlive());
  const std::unique_ptr<TMenuItem> kept(file);
  root.Remove(file);
  EXPECT_EQ(root.GetCount(), 0);
  EXPECT_EQ(kept->GetOwner(), nullptr);
}

// What opens a level is looked up when the platform tells of it: it may have gone.
TEST(Menu, LevelsAndLettersOfAnOpenMenuAreFound) {
  TPopupMenu menu;
  menu.SetOwnerDraw(true);
  auto* const file = AddItem(menu.GetItems(), L"&File");
  file->SetHint(L"short|the files");
  AddItem(*file, L"&Open");
  AddItem(menu.GetItems(), L"&Edit");
  AddItem(menu.GetItems(), L"For&mat");
  AddItem(menu.GetItems(), L"&Export");
  const HMENU handle = menu.CreateHandle(96);
  const HMENU below = GetSubMenu(handle, 0);
  const auto found = [&] { return menu.FindItem(reinterpret_cast<std::uintptr_t>(below), TFindItemKind::fkHandle); };
  EXPECT_EQ(found(), file);
  EXPECT_EQ(menu.FindItem(file->GetCommand(), TFindItemKind::fkCommand), file);
  EXPECT_EQ(menu.FindItem(reinterpret_cast<std::uintptr_t>(handle), TFindItemKind::fkHandle), nullptr);
  const auto tell = [&](UINT message, WPARAM what, HMENU level) {
    TMessage told{message, what, reinterpret_cast<LPARAM>(level), 0};
    EXPECT_TRUE(menu.HandleMessage(told) || message == WM_MENUCHAR);
    return told.Result;
  };
  tell(WM_MENUSELECT, MAKEWPARAM(0, MF_POPUP), handle);
  EXPECT_EQ(Application().GetHint(), L"the files");
  tell(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(below), nullptr);
  EXPECT_EQ(GetMenuItemCount(below), 1);
  EXPECT_EQ(tell(WM_MENUCHAR, MAKEWPARAM(L'm', MF_POPUP), handle), MAKELRESULT(2, MNC_EXECUTE));
  EXPECT_EQ(tell(WM_MENUCHAR, MAKEWPARAM(L'E', MF_POPUP), handle), MAKELRESULT(1, MNC_SELECT));
  EXPECT_EQ(tell(WM_MENUCHAR, MAKEWPARAM(L'x', MF_POPUP), handle), 0);
  delete file;
  EXPECT_EQ(found(), nullptr);
  tell(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(below), nullptr);
  tell(WM_MENUSELECT, MAKEWPARAM(0, 0xFFFF), nullptr);
  EXPECT_EQ(Application().GetHint(), L"");
  DestroyMenu(handle);
}

// As the platform asks for it.
TEST(Menu, ItemsThatDrawThemselvesShowMarksPicturesAndTheDefault) {
  TPopupMenu menu;
  menu.SetOwnerDraw(true);
  auto* const item = AddItem(menu.GetItems(), L"Item");
  const auto measured = [&] {
    MEASUREITEMSTRUCT measure{ODT_MENU, 0, item->GetCommand(), 0, 0, 0};
    TMessage message{WM_MEASUREITEM, 0, reinterpret_cast<LPARAM>(&measure), 0};
    EXPECT_TRUE(menu.HandleMessage(message));
    return static_cast<int>(measure.itemWidth);
  };
  // Pixels in the column of the marks, and in that of the text.
  const auto drawn = [&](UINT state, TPixel wanted) {
    TBitmap picture(120, 24);
    DRAWITEMSTRUCT draw{};
    draw.CtlType = ODT_MENU;
    draw.itemID = item->GetCommand();
    draw.itemState = state;
    draw.hDC = picture.GetCanvas().GetHandle();
    draw.rcItem = {0, 0, 120, 24};
    TMessage message{WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&draw), 0};
    EXPECT_TRUE(menu.HandleMessage(message));
    std::pair<int, int> counts;
    for (int i = 0; const TPixel pixel : picture.Pixels()) {
      const bool isMark = i++ % 120 < 4 + GetSystemMetrics(SM_CXMENUCHECK);
      if ((pixel & 0xFFFFFF) == wanted) ++(isMark ? counts.first : counts.second);
    }
    return counts;
  };
  const auto text = static_cast<TPixel>(ColorToRGB(clMenuText));
  const int plain = measured();
  const auto [none, letters] = drawn(0, text);
  EXPECT_EQ(none, 0);
  EXPECT_GT(letters, 0);
  const int check = drawn(ODS_CHECKED, text).first;
  item->SetRadioItem(true);
  const int dot = drawn(ODS_CHECKED, text).first;
  EXPECT_TRUE(check > 0 && dot > 0 && check != dot) << check << ' ' << dot;
  TBitmap red(8, 8);
  red.GetCanvas().FillRect({0, 0, 8, 8}, clRed);
  item->SetBitmap(std::move(red));
  EXPECT_EQ(drawn(0, 0xFF0000).first, 64);
  EXPECT_EQ(drawn(ODS_CHECKED, 0xFF0000).first, 0); // the mark takes its place
  item->SetDefault(true);
  EXPECT_GT(measured(), plain);
}

TEST(Menu, OneOfARadioGroupIsCheckedAndOneOfAllIsTheDefault) {
  TPopupMenu menu;
  std::vector<TMenuItem*> items;
  for (int i = 0; i < 4; ++i) {
    items.push_back(AddItem(menu.GetItems(), L"x"));
    items.back()->SetAutoCheck(true);
    items.back()->SetRadioItem(i < 3);
    items.back()->SetGroupIndex(i == 2 ? 2 : 1);
  }
  const auto checked = [&] {
    std::wstring text;
    for (const TMenuItem* item : items) text += item->IsChecked() ? L'x' : L'-';
    return text;
  };
  for (TMenuItem* item : items) item->Click();
  EXPECT_EQ(checked(), L"-xxx");
  items[0]->Click();
  items[0]->Click(); // stays
  items[3]->Click();
  EXPECT_EQ(checked(), L"x-x-");
  items[1]->SetDefault(true);
  items[2]->SetDefault(true);
  EXPECT_FALSE(items[1]->IsDefault());
}

// The platform's menu as an application's other windows would see it.
TEST(Menu, ThePlatformGetsStatesAndPictures) {
  TPopupMenu menu;
  TImageList images;
  TBitmap picture(16, 16);
  images.Add(picture);
  menu.SetImages(&images);
  auto* const first = AddItem(menu.GetItems(), L"First");
  first->SetShortCut(MakeShortCut(VK_DELETE, {TShiftStateFlag::ssShift}));
  first->SetImageIndex(0);
  AddItem(menu.GetItems(), L"hidden")->SetVisible(false);
  auto* const second = AddItem(menu.GetItems(), L"Second");
  second->SetEnabled(false);
  second->SetChecked(true);
  second->SetDefault(true);
  const HMENU handle = menu.CreateHandle(96);
  ASSERT_EQ(GetMenuItemCount(handle), 2);
  wchar_t text[80] = {};
  MENUITEMINFOW info{};
  info.cbSize = sizeof(info);
  info.fMask = MIIM_STATE | MIIM_STRING | MIIM_BITMAP | MIIM_FTYPE;
  info.dwTypeData = text;
  info.cch = 80;
  EXPECT_TRUE(GetMenuItemInfoW(handle, first->GetCommand(), FALSE, &info));
  EXPECT_STREQ(text, L"First\tShift+Del");
  EXPECT_NE(info.hbmpItem, nullptr);
  info.cch = 80;
  EXPECT_TRUE(GetMenuItemInfoW(handle, second->GetCommand(), FALSE, &info));
  EXPECT_EQ(info.fState & (MFS_DISABLED | MFS_CHECKED | MFS_DEFAULT), UINT{MFS_DISABLED | MFS_CHECKED | MFS_DEFAULT});
  DestroyMenu(handle);
}

class MenuLoop : public testing::Test {
protected:
  // From inside the loop that the platform runs for the menu.
  void WhenUp(std::function<void()> pAction) {
    menu->SetOnPopup([this, pAction = std::move(pAction)](TPersistent*) {
      log.push_back(L"popup");
      MainThread::Queue([pAction] { pAction(); });
    });
  }
  static void Press(std::initializer_list<WPARAM> pKeys) {
    for (const WPARAM key : pKeys) {
      PostMessageW(FindWindowW(L"#32768", nullptr), WM_KEYDOWN, key, 0);
      PostMessageW(FindWindowW(L"#32768", nullptr), WM_KEYUP, key, 0);
    }
  }

  THostWindow host;
  TLog log;
  std::unique_ptr<TPopupMenu> menu = std::make_unique<TPopupMenu>();
};

TEST_F(MenuLoop, WhatIsChosenIsDoneAfterIt) {
  AddItem(menu->GetItems(), L"one", &log);
  auto* const two = AddItem(menu->GetItems(), L"two", &log);
  two->SetHint(L"short|long");
  menu->SetOnClose([this](TPersistent*) { log.push_back(L"close"); });
  TLog hints;
  Application().SetOnHint([&] { hints.push_back(Application().GetHint()); });
  int level = 0;
  // That this runs at all shows that the loop lets closures through.
  WhenUp([&] {
    level = Screen().GetModalLevel();
    Press({VK_DOWN, VK_DOWN, VK_RETURN});
  });
  const POINT point = PointOf(host.Get(), 20, 20);
  menu->Popup(point.x, point.y);
  Application().SetOnHint(nullptr);
  EXPECT_EQ(log, (TLog{L"popup", L"close", L"two"}));
  EXPECT_EQ(level, 1);
  EXPECT_EQ(Screen().GetModalLevel(), 0);
  EXPECT_NE(std::find(hints.begin(), hints.end(), L"long"), hints.end());
}

TEST_F(MenuLoop, SubMenusAreSetUpWhenTheyOpen) {
  auto* const more = AddItem(menu->GetItems(), L"more");
  AddItem(*more, L"old", &log);
  more->SetOnClick([&](TPersistent*) {
    more->Clear();
    AddItem(*more, L"new", &log);
  });
  WhenUp([] { Press({VK_DOWN, VK_RIGHT, VK_RETURN}); });
  const POINT point = PointOf(host.Get(), 20, 20);
  menu->Popup(point.x, point.y);
  EXPECT_EQ(log, (TLog{L"popup", L"new"}));
}

TEST_F(MenuLoop, TheMenuMayGoWhileItIsUp) {
  AddItem(menu->GetItems(), L"one", &log);
  WhenUp([this] { menu.reset(); });
  const POINT point = PointOf(host.Get(), 20, 20);
  menu->Popup(point.x, point.y);
  EXPECT_EQ(log, TLog{L"popup"});
  EXPECT_EQ(FindWindowW(L"#32768", nullptr), nullptr);
}

TEST_F(MenuLoop, AControlShowsItsOwnAndTheRestIsTheParents) {
  TNotedControl panel;
  panel.SetBounds(0, 0, 200, 200);
  auto* const child = new TNotedControl(&panel);
  child->SetParent(&panel);
  child->SetBounds(50, 50, 50, 50);
  panel.SetPopupMenu(menu.get());
  panel.CreateParented(host.Get());
  AddItem(menu->GetItems(), L"one", &log);
  WhenUp([this] { menu->CloseMenu(); });
  ClickMouse(MiddleOf(child->GetHandle()), TShiftStateFlag::ssRight);
  EXPECT_TRUE(PumpUntil([this] { return !log.empty(); }));
  EXPECT_EQ(menu->GetPopupComponent(), &panel);
  // Without a window, and all the same its own.
  auto* const label = new TLabel(&panel);
  label->SetParent(&panel);
  label->SetText(L"label");
  label->SetPopupMenu(menu.get());
  panel.SetPopupMenu(nullptr);
  log.clear();
  ClickMouse(PointOf(panel.GetHandle(), 3, 3), TShiftStateFlag::ssRight);
  EXPECT_TRUE(PumpUntil([this] { return !log.empty(); }));
  EXPECT_EQ(menu->GetPopupComponent(), label);
  child->SetOnContextPopup([this](TPersistent*, POINT point, bool& handled) {
    log.push_back(std::to_wstring(point.x) + L" " + std::to_wstring(point.y));
    handled = true;
  });
  log.clear();
  ClickMouse(PointOf(child->GetHandle(), 3, 4), TShiftStateFlag::ssRight);
  EXPECT_TRUE(PumpUntil([this] { return !log.empty(); }));
  EXPECT_EQ(log, TLog{L"3 4"});
}

} // namespace
} // namespace kiv::test
