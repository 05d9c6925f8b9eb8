#include "MemoryScreen.h"

#include <graphics/Canvas.h>

#include <doubles/GdiCount.h>

#include <gtest/gtest.h>

#include <string>

namespace kiv {
namespace {

using test::TMemoryScreen;

TEST(Canvas, DrawsWhatItsToolsSay) {
  const TMemoryScreen screen(60, 40);
  TCanvas canvas(screen.Dc());
  canvas.GetBrush().SetColor(clRed);
  canvas.FillRect({0, 0, 10, 10});
  canvas.FrameRect({20, 0, 30, 10});
  canvas.FillRect({0, 20, 10, 30}, clBlue);
  canvas.FillRect({0, 0, 60, 40}, clNone);
  canvas.GetPen().SetColor(clLime);
  canvas.Line(40, 5, 50, 5);
  canvas.GetBrush().SetStyle(TBrushStyle::bsClear);
  canvas.Rectangle({20, 20, 30, 30});
  const struct {
    int x, y;
    TColor color;
  } cases[] = {{9, 9, clRed},    {10, 9, clWhite},  {20, 5, clRed},   {21, 5, clWhite},
               {0, 20, clBlue},  {40, 5, clLime},   {50, 5, clLime},  {51, 5, clWhite},
               {29, 29, clLime}, {25, 25, clWhite}, {30, 30, clWhite}};
  for (const auto& each : cases) EXPECT_EQ(screen.At(each.x, each.y), each.color) << each.x << ' ' << each.y;
}

TEST(Canvas, WritesInsideOfWhatItMeasures) {
  const TMemoryScreen screen(300, 60);
  TCanvas canvas(screen.Dc());
  canvas.GetFont().SetColor(clBlack);
  const SIZE size = canvas.TextExtent(L"Mg");
  EXPECT_GT(size.cx, 5);
  canvas.TextAt(10, 10, L"Mg");
  EXPECT_GT(screen.CountOthers({10, 10, 10 + size.cx, 10 + size.cy}, clWhite), 10);
  EXPECT_EQ(screen.CountOthers({0, 0, 300, 10}, clWhite), 0);
  EXPECT_EQ(screen.CountOthers({0, 10 + size.cy, 300, 60}, clWhite), 0);
  // The brush is behind text unless it is clear.
  canvas.GetBrush().SetColor(clYellow);
  canvas.TextAt({100, 0, 150, 50}, 100, 0, L"");
  EXPECT_EQ(screen.CountOthers({100, 0, 150, 50}, clYellow), 0);
  canvas.GetBrush().SetStyle(TBrushStyle::bsClear);
  canvas.TextRect({100, 0, 150, 50}, std::wstring(20'000, L'W'),
                  DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_MODIFYSTRING);
  EXPECT_EQ(screen.At(149, 0), clYellow);
  EXPECT_EQ(screen.CountOthers({150, 0, 300, 60}, clWhite), 0);
  EXPECT_GT(canvas.TextExtent(L"several words in a narrow place", 50, DT_WORDBREAK).cy, 2 * size.cy);
  EXPECT_EQ(canvas.TextHeight(L""), size.cy);
}

TEST(Canvas, LeavesTheContextAsItWas) {
  const TMemoryScreen screen(50, 50);
  const HDC dc = screen.Dc();
  const auto state = [dc] {
    RECT clip;
    GetClipBox(dc, &clip);
    return std::vector<INT_PTR>{reinterpret_cast<INT_PTR>(GetCurrentObject(dc, OBJ_FONT)),
                                reinterpret_cast<INT_PTR>(GetCurrentObject(dc, OBJ_PEN)),
                                reinterpret_cast<INT_PTR>(GetCurrentObject(dc, OBJ_BRUSH)),
                                static_cast<INT_PTR>(GetTextColor(dc)),
                                static_cast<INT_PTR>(GetBkColor(dc)),
                                GetBkMode(dc),
                                static_cast<INT_PTR>(GetTextAlign(dc)),
                                clip.left,
                                clip.right};
  };
  const auto before = state();
  const int objects = test::CountGdiObjects();
  for (int round = 0; round < 20; ++round) {
    TCanvas canvas(dc);
    canvas.GetFont().SetHeight(-10 - round);
    canvas.GetFont().SetColor(clRed);
    canvas.GetBrush().SetColor(round);
    canvas.GetPen().SetColor(round);
    {
      const TCanvas::ScopedClip clip(canvas, {10, 0, 20, 50});
      const TCanvas::ScopedClip inner(canvas, {0, 0, 15, 50});
      canvas.TextAt(0, 0, L"WWWWWW");
      canvas.FillRect({0, 0, 50, 50});
    }
    EXPECT_EQ(screen.At(9, 20), clWhite);
    EXPECT_EQ(screen.At(14, 20), round);
    EXPECT_EQ(screen.At(15, 20), clWhite);
    canvas.DrawFocusRect({0, 30, 50, 50});
    canvas.DrawFocusRect({0, 30, 50, 50});
    IntersectClipRect(dc, 30, 0, 40, 50); // somebody's own doing
    if (round % 2 == 0) canvas.SetHandle(nullptr);
    canvas.SetHandle(nullptr);
    canvas.TextAt(0, 0, L"nowhere");
  }
  EXPECT_EQ(state(), before);
  EXPECT_EQ(test::CountGdiObjects(), objects);
}

TEST(Canvas, DoesntMirrorPictures) {
  // Left half opaque red, right half transparent.
  TUniqueIcon icon;
  {
    TUniqueBitmap mask(CreateBitmap(16, 16, 1, 1, nullptr));
    const TMemoryScreen picture(16, 16);
    TCanvas(picture.Dc()).FillRect({0, 0, 8, 16}, clRed);
    TCanvas(picture.Dc()).FillRect({8, 0, 16, 16}, clBlack);
    const TUniqueMemoryDc mask_dc(CreateCompatibleDC(nullptr));
    const HGDIOBJ old = SelectObject(mask_dc.Get(), mask.Get());
    PatBlt(mask_dc.Get(), 0, 0, 8, 16, BLACKNESS);
    PatBlt(mask_dc.Get(), 8, 0, 8, 16, WHITENESS);
    SelectObject(mask_dc.Get(), old);
    ICONINFO info{TRUE, 0, 0, mask.Get(), static_cast<HBITMAP>(GetCurrentObject(picture.Dc(), OBJ_BITMAP))};
    icon.Reset(CreateIconIndirect(&info));
  }
  ASSERT_TRUE(icon);
  const TMemoryScreen screen(40, 20);
  SetLayout(screen.Dc(), LAYOUT_RTL);
  {
    TCanvas canvas(screen.Dc());
    EXPECT_TRUE(canvas.IsMirrored());
    canvas.DrawIcon({0, 0, 16, 16}, icon.Get());
  }
  EXPECT_EQ(GetLayout(screen.Dc()), DWORD{LAYOUT_RTL});
  SetLayout(screen.Dc(), 0);
  // It stands at the right, where Wine puts it one pixel further left.
  EXPECT_EQ(screen.CountOthers({0, 0, 23, 20}, clWhite), 0);
  EXPECT_EQ(screen.At(26, 8), clRed);
  EXPECT_EQ(screen.At(37, 8), clWhite);
}

} // namespace
} // namespace kiv
