#include "MemoryScreen.h"

#include <graphics/BufferedPaint.h>
#include <graphics/StyleServices.h>

#include <doubles/GdiCount.h>
#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kiv {
namespace {

using test::TMemoryScreen;

constexpr RECT All{0, 0, 40, 40};

constexpr TThemeElement Known[] = {
    tbPushButtonNormal,   tbPushButtonPressed,   tbPushButtonDisabled,       tbCheckBoxUncheckedNormal,
    tbCheckBoxCheckedHot, tbCheckBoxMixedNormal, tbRadioButtonCheckedNormal, tbGroupBoxNormal,
    ttbButtonHot,         ttbButtonPressed,      tcDropDownButtonNormal,     teEditTextNormal,
    teEditBorderNormal,   thHeaderItemNormal,    thHeaderSortArrowUp,        ttGlyphClosed,
    ttGlyphOpened,        ttlStandardNormal};

class Style : public testing::Test {
protected:
  // The services as they are on a system that the test describes.
  static bool gSystemDark;
  void SetUp() override {
    gSystemDark = false;
    fApi->ShouldAppsUseDarkMode = [] { return gSystemDark; };
    fApi->AllowDarkModeForWindow = [](HWND, bool) { return true; };
    fApi->SetPreferredAppMode = nullptr;
    fApi->RefreshImmersiveColorPolicyState = nullptr;
  }
  void TearDown() override {
    StyleServices().SetPlain(false);
    StyleServices().SetDarkMode(TDarkMode::dmLight);
  }

  ScopedShellApi fApi;
};
bool Style::gSystemDark = false;

TEST_F(Style, DrawsEachElementThemedPlainAndDark) {
  for (const int look : {0, 1, 2}) {
    StyleServices().SetPlain(look == 1);
    StyleServices().SetDarkMode(look == 2 ? TDarkMode::dmDark : TDarkMode::dmLight);
    for (const TThemeElement& element : Known) {
      const TMemoryScreen screen(60, 60);
      TCanvas canvas(screen.Dc());
      canvas.GetBrush().SetColor(clFuchsia);
      canvas.FillRect({0, 0, 60, 60}, clOlive);
      EXPECT_TRUE(StyleServices().DrawElement(canvas, element, {5, 5, 45, 45}, 96));
      EXPECT_GT(screen.CountOthers({5, 5, 45, 45}, clOlive), 0)
          << look << testing::PrintToString(element.className) << element.part;
      EXPECT_EQ(screen.CountOthers({50, 0, 60, 60}, clOlive), 0);
      EXPECT_EQ(canvas.GetBrush().GetColor(), clFuchsia);
    }
  }
}

TEST_F(Style, AClassThatDoesntOpenIsSaidSo) {
  const TMemoryScreen screen(40, 40);
  TCanvas canvas(screen.Dc());
  const TTheme none(nullptr, L"NoSuchClass", 96);
  EXPECT_FALSE(none.IsOpen());
  RECT rect{};
  SIZE size{};
  TColor color = clRed;
  EXPECT_FALSE(none.Has(1) || none.Draw(canvas, 1, 1, All) || none.IsTransparent(1, 1) ||
               none.WriteText(canvas, 1, 1, L"x", All, 0) || none.TextExtent(canvas, 1, 1, L"x", 0, rect) ||
               none.BackgroundExtent(canvas, 1, 1, All, rect) || none.ContentRect(canvas, 1, 1, All, rect) ||
               none.PartSize(1, 1, TS_DRAW, size) || none.Color(1, 1, TMT_TEXTCOLOR, color));
  EXPECT_FALSE(StyleServices().DrawElement(canvas, {L"NoSuchClass", 1, 1}, All, 96));
  EXPECT_EQ(screen.CountOthers(All, clWhite), 0);
  StyleServices().WriteText(canvas, {L"NoSuchClass", 1, 1}, L"MMM", All, DT_SINGLELINE, 96, clBlue);
  EXPECT_GT(screen.CountOthers(All, clWhite), 0);
  size = StyleServices().GetElementSize({L"NoSuchClass", 1, 1}, 96);
  EXPECT_TRUE(size.cx == 0 && size.cy == 0);
}

TEST_F(Style, SizesFollowTheDotsPerInch) {
  for (const bool plain : {true, false}) {
    StyleServices().SetPlain(plain);
    const SIZE small = StyleServices().GetElementSize(tbCheckBoxUncheckedNormal, 96);
    const SIZE large = StyleServices().GetElementSize(tbCheckBoxUncheckedNormal, 192);
    EXPECT_GE(small.cx, 10);
    EXPECT_GE(large.cx, 3 * small.cx / 2);
  }
}

TEST_F(Style, IsDarkOnlyWhereThatIsWantedAndPossible) {
  TStyleServices& style = StyleServices();
  EXPECT_FALSE(style.IsDarkModeActive());
  style.SetDarkMode(TDarkMode::dmSystem);
  EXPECT_FALSE(style.IsDarkModeActive());
  gSystemDark = true;
  EXPECT_EQ(style.HandleMessage(WM_SETTINGCHANGE, 0, 0), TStyleChange::scNone);
  EXPECT_EQ(style.HandleMessage(WM_SETTINGCHANGE, 0, reinterpret_cast<LPARAM>(L"intl")), TStyleChange::scNone);
  EXPECT_FALSE(style.IsDarkModeActive());
  const auto changed = reinterpret_cast<LPARAM>(L"ImmersiveColorSet");
  EXPECT_EQ(style.HandleMessage(WM_SETTINGCHANGE, 0, changed), TStyleChange::scThemes);
  EXPECT_TRUE(style.IsDarkModeActive());
  EXPECT_EQ(style.HandleMessage(WM_SETTINGCHANGE, 0, changed), TStyleChange::scColors);
  EXPECT_TRUE(IsDarkColor(style.GetSystemColor(clWindow)) && IsDarkColor(style.GetSystemColor(clDefault)));
  EXPECT_FALSE(IsDarkColor(style.GetSystemColor(clWindowText)));
  EXPECT_EQ(style.GetSystemColor(clRed), clRed);
  fApi->AllowDarkModeForWindow = nullptr;
  EXPECT_EQ(style.HandleMessage(WM_THEMECHANGED, 0, 0), TStyleChange::scThemes);
  EXPECT_FALSE(style.IsDarkModeActive());
  EXPECT_EQ(style.GetSystemColor(clWindow), ColorToRGB(clWindow));
  EXPECT_EQ(style.HandleMessage(WM_PAINT, 0, 0), TStyleChange::scNone);
}

TEST_F(Style, TitleBarsAreAskedForByTheNumberOfTheBuild) {
  static DWORD build;
  static std::vector<DWORD> asked;
  fApi->RtlGetVersion = [](OSVERSIONINFOW* version) -> LONG {
    version->dwMajorVersion = 10;
    version->dwBuildNumber = build;
    return 0;
  };
  fApi->DwmSetWindowAttribute = [](HWND, DWORD attribute, LPCVOID value, DWORD size) -> HRESULT {
    EXPECT_TRUE(size == sizeof(BOOL) && *static_cast<const BOOL*>(value));
    asked.push_back(attribute);
    return S_OK;
  };
  StyleServices().SetDarkMode(TDarkMode::dmDark);
  for (const DWORD each : {17763UL, 19045UL, 22631UL}) {
    build = each;
    StyleServices().ApplyDarkMode(nullptr, true);
    StyleServices().ApplyDarkMode(nullptr, false);
  }
  EXPECT_EQ(asked, (std::vector<DWORD>{19, 20, 20}));
}

TEST(BufferedPaint, ComesToTheTargetInOnePieceUnlessCancelled) {
  // The first round fills what is kept for all times.
  int before = 0;
  for (const DWORD layout : {DWORD{0}, DWORD{LAYOUT_RTL}, DWORD{0}, DWORD{LAYOUT_RTL}}) {
    const TMemoryScreen screen(40, 20);
    SetLayout(screen.Dc(), layout);
    {
      const TBufferedPaint paint(screen.Dc(), {10, 5, 20, 15});
      TCanvas canvas(paint.GetDc());
      canvas.FillRect({0, 0, 40, 20}, clBlue);
      canvas.FillRect({10, 5, 12, 15}, clRed);
      EXPECT_EQ(screen.CountOthers({0, 0, 40, 20}, clWhite), 0);
    }
    EXPECT_EQ(screen.At(10, 5), clRed);
    EXPECT_EQ(screen.At(19, 14), clBlue);
    EXPECT_EQ(screen.CountOthers({20, 0, 40, 20}, clWhite), 0);
    EXPECT_EQ(screen.CountOthers({0, 0, 10, 20}, clWhite), 0);
    {
      TBufferedPaint paint(screen.Dc(), {0, 0, 40, 20});
      TCanvas(paint.GetDc()).FillRect({0, 0, 40, 20}, clLime);
      paint.Cancel();
      EXPECT_FALSE(TBufferedPaint(screen.Dc(), {5, 5, 5, 9}).GetDc());
    }
    EXPECT_EQ(screen.At(0, 0), clWhite);
    SetLayout(screen.Dc(), 0);
    if (before == 0 && layout != 0) before = test::CountGdiObjects();
  }
  EXPECT_LE(test::CountGdiObjects(), before);
}

} // namespace
} // namespace kiv
