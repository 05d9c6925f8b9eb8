#include "ListFixture.h"

#include <graphics/Bitmap.h>
#include <graphics/StyleServices.h>
#include <platform/ShellApi.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>

namespace kiv {
namespace {

using test::PumpMessages;
using test::PumpUntil;
using test::TListFixture;

/// The pixels of a row's box as they stand on the screen.
class TBoxes : public TListFixture {
public:
  TBoxes() {
    list->SetCheckBoxes(true);
    Show(4);
  }
  RECT BoxOf(int pRow) {
    const TRowRect icon = Row(pRow).DisplayRect(TDisplayCode::drIcon);
    return {icon.left - list->ScaledPixels(16), icon.top, icon.left, icon.bottom};
  }
  std::vector<COLORREF> Look(int pRow) {
    PumpMessages();
    list->Update();
    std::vector<COLORREF> pixels;
    const RECT box = BoxOf(pRow);
    for (int y = box.top; y < box.bottom; ++y) {
      for (int x = box.left; x < box.right; ++x) pixels.push_back(test::PixelOf(Window(), x, y));
    }
    return pixels;
  }
  POINT PointOfBox(int pRow) {
    const RECT box = BoxOf(pRow);
    return test::PointOf(Window(), (box.left + box.right) / 2, (box.top + box.bottom) / 2);
  }
};

TEST(ListViewLook, EachStateOfABoxHasItsOwn) {
  for (const bool isPlain : {false, true}) {
    SCOPED_TRACE(isPlain ? "plain" : "themed");
    StyleServices().SetPlain(isPlain);
    TBoxes list;
    std::set<std::vector<COLORREF>> looks{list.Look(0)};
    list.Row(0).SetChecked(true);
    EXPECT_TRUE(looks.insert(list.Look(0)).second) << "checked";
    list.Row(0).SetCheckMixed(true);
    EXPECT_TRUE(looks.insert(list.Look(0)).second) << "mixed";
    list.Row(0).SetChecked(true);
    list.Row(0).SetCheckEnabled(false);
    EXPECT_TRUE(looks.insert(list.Look(0)).second) << "checked and disabled";
    const auto disabled = list.Look(0);
    list.Row(0).SetCheckEnabled(true);
    list.list->SetEnabled(false);
    EXPECT_EQ(list.Look(0), disabled) << "with the list";
    list.list->SetEnabled(true);
    if (!isPlain) { // the plain look knows no hot one
      const auto unchecked = list.Look(1);
      test::MoveMouse(list.PointOfBox(1));
      EXPECT_NE(list.Look(1), unchecked);
      test::MoveMouse(list.PointOfBox(2));
      EXPECT_EQ(list.Look(1), unchecked);
    }
  }
  StyleServices().SetPlain(false);
}

TEST(ListViewLook, BoxesAreTickedWhereTheyCanBe) {
  TBoxes list;
  std::wstring ticked;
  list.list->SetOnItemChecked([&](TPersistent*, TListItem* item) { ticked += item->GetCaption() + L","; });
  list.Row(1).SetCheckMixed(true);
  list.Row(2).SetCheckEnabled(false);
  for (const int row : {0, 1, 2}) {
    test::MoveMouse(list.PointOfRow(3)); // no double clicks
    test::ClickMouse(list.PointOfBox(row));
  }
  EXPECT_TRUE(list.Row(0).GetChecked());
  EXPECT_TRUE(list.Row(1).GetChecked() && !list.Row(1).GetCheckMixed());
  EXPECT_FALSE(list.Row(2).GetChecked());
  test::PressKey(VK_SPACE);
  EXPECT_FALSE(list.Row(2).GetChecked());
  list.Row(0).SetFocused(true);
  list.Send(WM_KEYUP, VK_SPACE);
  EXPECT_TRUE(list.Row(0).GetChecked()) << "it went down elsewhere";
  test::ClickMouse(list.PointOfRow(3));
  EXPECT_FALSE(list.Row(3).GetChecked()) << "a click on the text ticks nothing";
  test::PressKey(VK_SPACE);
  EXPECT_TRUE(list.Row(3).GetChecked());
  EXPECT_EQ(ticked, L"row 0,row 1,row 3,");
}

/// Images that are made one by one, when they are asked for.
class TSlowImages : public TCustomImageList {
public:
  TSlowImages() {
    TBitmap strip(16 * 10, 16);
    strip.GetCanvas().FillRect({0, 0, 160, 16}, clYellow);
    strip.MakeOpaque();
    Add(strip);
  }
  void Require(int pIndex) override {
    ++wishes;
    if (pIndex == never || !ready.insert(pIndex).second) return;
    whilePainting += isPainting() ? 1 : 0;
    TBitmap image(16, 16);
    image.GetCanvas().FillRect({0, 0, 16, 16}, clFuchsia);
    image.MakeOpaque();
    Put(pIndex, image);
  }
  bool IsReady(int pIndex) override { return ready.count(pIndex) == 1; }

  std::set<int> ready;
  int never = -1; // can't be made
  int wishes = 0;
  int whilePainting = 0;
  std::function<bool()> isPainting = [] { return false; };
};

TEST(ListViewLook, ImagesThatArentMadeYetAreMadeOutsideOfPainting) {
  TSlowImages images;
  TListFixture list(TViewStyle::vsReport, 1, std::make_unique<test::TPaintingList>());
  images.isPainting = [view = static_cast<test::TPaintingList*>(list.list.get())] { return view->IsInsideNative(); };
  list.list->SetSmallImages(&images);
  list.Show(100);
  list.Row(0).SetImageIndex(7);
  list.Row(1).SetImageIndex(3);
  list.Row(2).SetImageIndex(7);
  list.Row(99).SetImageIndex(5);
  const auto pixel = [&](int row) {
    list.list->Update();
    const TRowRect icon = list.Row(row).DisplayRect(TDisplayCode::drIcon);
    return test::PixelOf(list.Window(), icon.left + 4, icon.top + 4);
  };
  ASSERT_TRUE(PumpUntil([&] { return images.ready.size() == 2; }));
  PumpMessages();
  EXPECT_EQ(images.ready, (std::set<int>{3, 7})) << "of rows that show";
  for (const int row : {0, 1, 2}) EXPECT_EQ(pixel(row), RGB(255, 0, 255)) << row;
  EXPECT_EQ(images.whilePainting, 0);
  images.never = 8;
  images.wishes = 0;
  list.Row(1).SetImageIndex(8);
  for (int turn = 0; turn < 20; ++turn) PumpMessages();
  EXPECT_EQ(images.wishes, 1) << "painted without it, and not asked again and again";
}

TEST(ListViewLook, ThePressedBoxIsTickedThoughTheRowsMove) {
  TBoxes list;
  TListItem& row = list.Row(2);
  list.list->SetOnSelectItem([&](auto&&...) {
    if (list.Rows().GetCount() == 4) list.Rows().Insert(0);
  });
  test::ClickMouse(list.PointOfBox(2));
  EXPECT_EQ(list.Rows().GetCount(), 5);
  EXPECT_TRUE(row.GetChecked());
  EXPECT_FALSE(list.Row(2).GetChecked());
}

class TTippedList : public TListView {
protected:
  void DoInfoTip(TListItem* pItem, std::wstring& pText) override {
    if (pItem->GetIndex() > 0) pText = L"about " + pText;
  }
};

TEST(ListViewLook, ADerivedClassIsAskedForTheHintOfARow) {
  TListFixture list(TViewStyle::vsReport, 1, std::make_unique<TTippedList>());
  list.Show(3);
  const auto hintOf = [&](int row) {
    test::MoveMouse(list.PointOfRow(row));
    THintInfo hint;
    hint.text = L"of the list";
    list.list->Perform(CM_HINTSHOW, 0, reinterpret_cast<LPARAM>(&hint));
    return hint.text;
  };
  EXPECT_EQ(hintOf(1), L"about row 1");
  EXPECT_EQ(hintOf(0), L"of the list");
}

// Platforms give a cell the colours that the one before it was given.
TEST(ListViewLook, WhatACellIsDrawnWithEndsWithIt) {
  TListFixture list(TViewStyle::vsReport, 3);
  list.list->SetOnAdvancedCustomDrawItem([&](TPersistent*, TListItem* item, auto&&...) {
    if (item->GetIndex() == 1) list.list->GetCanvas().GetFont().SetColor(clGreen);
  });
  list.list->SetOnAdvancedCustomDrawSubItem([&](TPersistent*, TListItem*, int subItem, auto&&...) {
    if (subItem == 1) list.list->GetCanvas().GetFont().SetColor(clRed);
  });
  list.Show(2);
  const HDC dc = GetDC(list.Window());
  NMLVCUSTOMDRAW draw{};
  draw.nmcd.hdr = {list.Window(), 0, NM_CUSTOMDRAW};
  draw.nmcd.hdc = dc;
  const auto colorAt = [&](int row, int cell) {
    draw.nmcd.dwItemSpec = static_cast<DWORD_PTR>(row);
    draw.iSubItem = std::max(cell, 0);
    draw.nmcd.dwDrawStage = CDDS_ITEMPREPAINT | (cell < 0 ? 0U : CDDS_SUBITEM);
    if (cell < 0) draw.clrText = RGB(1, 2, 3);
    SendMessageW(test::Host().Get(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&draw));
    return draw.clrText;
  };
  const COLORREF green = static_cast<COLORREF>(clGreen);
  const COLORREF red = static_cast<COLORREF>(clRed);
  for (const auto& [row, color] : {std::pair(0, RGB(1, 2, 3)), std::pair(1, green)}) {
    EXPECT_EQ(colorAt(row, -1), color);
    EXPECT_EQ(colorAt(row, 0), color);
    EXPECT_EQ(colorAt(row, 1), red);
    EXPECT_EQ(colorAt(row, 2), color);
  }
  ReleaseDC(list.Window(), dc);
}

TEST(ListViewLook, FollowsTheScaleAndTheDark) {
  TImageList images;
  images.SetSize(32, 32);
  TListFixture list(TViewStyle::vsIcon, 1);
  list.list->SetLargeImages(&images);
  list.list->SetCheckBoxes(true);
  list.Show(2);
  const auto boxHeight = [&] {
    int width = 0;
    int height = 0;
    const auto images = reinterpret_cast<IImageList*>(list.Send(LVM_GETIMAGELIST, LVSIL_STATE));
    images->GetIconSize(&width, &height);
    return height;
  };
  const auto spacing = [&] { return LOWORD(list.Send(LVM_GETITEMSPACING, FALSE)); };
  const int former = spacing();
  const int dpi = list.list->GetCurrentPPI();
  const int box = boxHeight();
  list.list->ScaleForPPI(2 * dpi);
  EXPECT_EQ(boxHeight(), 2 * box);
  EXPECT_EQ(spacing(), 32 + 2 * (former - 32));
  list.list->SetViewStyle(TViewStyle::vsReport);
  const HWND header = list.list->GetHeaderHandle();
  EXPECT_EQ(SendMessageW(header, WM_GETFONT, 0, 0), list.Send(WM_GETFONT));

  ScopedShellApi api;
  api->ShouldAppsUseDarkMode = [] { return true; };
  api->AllowDarkModeForWindow = [](HWND, bool) { return true; };
  api->SetPreferredAppMode = nullptr;
  StyleServices().SetDarkMode(TDarkMode::dmDark);
  list.list->Perform(CM_THEMECHANGED);
  const auto dark = static_cast<LRESULT>(StyleServices().GetSystemColor(clWindow));
  EXPECT_EQ(list.Send(LVM_GETBKCOLOR), dark);
  EXPECT_EQ(list.Send(LVM_GETTEXTCOLOR), RGB(255, 255, 255));
  const test::THostWindow& host = test::Host();
  const HDC dc = GetDC(host.Get());
  NMCUSTOMDRAW draw{};
  draw.hdr = {header, 0, NM_CUSTOMDRAW};
  draw.dwDrawStage = CDDS_ITEMPREPAINT;
  draw.hdc = dc;
  list.Send(WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&draw));
  EXPECT_EQ(GetTextColor(dc), RGB(255, 255, 255)) << "the header's text";
  ReleaseDC(host.Get(), dc);
  StyleServices().SetDarkMode(TDarkMode::dmLight);
  list.list->Perform(CM_THEMECHANGED);
  EXPECT_EQ(list.Send(LVM_GETBKCOLOR), static_cast<LRESULT>(GetSysColor(COLOR_WINDOW)));
}

} // namespace
} // namespace kiv
