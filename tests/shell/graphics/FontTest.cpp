#include <graphics/Brush.h>
#include <graphics/Font.h>
#include <graphics/Pen.h>

#include <doubles/GdiCount.h>
#include <framework/Exceptions.h>
#include <platform/DpiAwareness.h>
#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <memory>

namespace kiv {
namespace {

TEST(Font, ScalesWithoutAddingUpItsRoundings) {
  TFont font;
  font.ScaleForDpi(96);
  font.SetHeight(-11);
  for (const int dpi : {72, 120, 96, 144, 72, 192, 110, 96}) font.ScaleForDpi(dpi);
  EXPECT_EQ(font.GetHeight(), -11);
  font.ScaleForDpi(144);
  EXPECT_EQ(font.GetHeight(), -17);
  EXPECT_EQ(font.GetSize(), 9);
  font.SetSize(8);
  EXPECT_EQ(font.GetHeight(), -16);
  font.ScaleForDpi(0);
  EXPECT_EQ(font.GetPixelsPerInch(), 144);
}

TEST(Font, TellsOfRealChangesOnlyAndMayGoInTheHandler) {
  auto font = std::make_unique<TFont>();
  int changes = 0;
  font->SetOnChange([&](TPersistent* sender) {
    EXPECT_EQ(sender, font.get());
    ++changes;
  });
  font->SetColor(font->GetColor());
  font->SetHeight(font->GetHeight());
  font->ScaleForDpi(font->GetPixelsPerInch());
  EXPECT_EQ(changes, 0);
  TFont other(*font);
  other.SetStyle({TFontStyle::fsBold}); // the copy has no listener
  font->Assign(&other);
  font->Assign(&other);
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(*font == other);
  const TBrush brush;
  EXPECT_THROW(font->Assign(&brush), EConvertError);
  font->SetOnChange([&](TPersistent*) { font.reset(); });
  font->SetFontName(L"Arial");
  EXPECT_FALSE(font);
}

TEST(Font, EqualValuesShareOneHandleThatGoesWithTheLast) {
  const int before = test::CountGdiObjects();
  {
    TFont a;
    a.SetFontName(std::wstring(100, L'x')); // longer than the platform takes
    const TFont b(a);
    const HFONT handle = a.GetHandle();
    EXPECT_EQ(handle, b.GetHandle());
    a.SetStyle({TFontStyle::fsItalic});
    EXPECT_NE(a.GetHandle(), handle);
    LOGFONTW read{};
    GetObjectW(a.GetHandle(), sizeof(read), &read);
    EXPECT_TRUE(read.lfItalic);
    TBrush brush;
    brush.SetColor(0x123456);
    TPen pen;
    pen.SetColor(0x123456);
    EXPECT_EQ(brush.GetHandle(), TBrush(brush).GetHandle());
    EXPECT_EQ(pen.GetHandle(), TPen(pen).GetHandle());
    EXPECT_EQ(test::CountGdiObjects(), before + 4);
  }
  EXPECT_EQ(test::CountGdiObjects(), before);
}

TEST(Font, IsTheUsersInTheSizeForTheWindow) {
  for (const bool asks_for_dpi : {true, false}) {
    ScopedShellApi api;
    if (!asks_for_dpi) api->SystemParametersInfoForDpi = nullptr;
    for (const auto which : {TSystemFont::sfMessage, TSystemFont::sfIconTitle, TSystemFont::sfMenu,
                             TSystemFont::sfStatus, TSystemFont::sfCaption}) {
      const TFont small = TFont::System(which, 96);
      const TFont large = TFont::System(which, 192);
      EXPECT_FALSE(small.GetFontName().empty());
      EXPECT_EQ(small.GetFontName(), large.GetFontName());
      EXPECT_NEAR(large.GetHeight(), 2 * small.GetHeight(), 1);
      EXPECT_EQ(large.GetPixelsPerInch(), 192);
    }
  }
}

TEST(Dpi, IsTheWindowsThenTheSystems) {
  ScopedShellApi api;
  api->GetDpiForSystem = []() -> UINT { return 120; };
  api->GetDpiForWindow = [](HWND window) -> UINT { return window == GetDesktopWindow() ? 168 : 0; };
  EXPECT_EQ(GetWindowDpi(GetDesktopWindow()), 168);
  EXPECT_EQ(GetWindowDpi(reinterpret_cast<HWND>(INT_PTR{2})), 120);
  EXPECT_EQ(GetWindowDpi(nullptr), 120);
  api->GetDpiForSystem = nullptr;
  api->GetSystemMetricsForDpi = nullptr;
  EXPECT_EQ(GetSystemMetric(SM_CXVSCROLL, 2 * GetSystemDpi()), 2 * GetSystemMetrics(SM_CXVSCROLL));
}

} // namespace
} // namespace kiv
