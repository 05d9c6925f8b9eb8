#include <graphics/StyleServices.h>

#include <framework/ScaledPixels.h>
#include <platform/DpiAwareness.h>
#include <platform/FaultGuard.h>
#include <platform/Lifecycle.h>
#include <platform/ShellApi.h>

#include <dwmapi.h>

#include <cwchar>

namespace kiv {

namespace {

// The attribute of a window with a dark title bar ("DWMWINDOWATTRIBUTE"), and what it was before it was documented.
constexpr DWORD DarkTitleBar = 20;
constexpr DWORD FirstDarkTitleBar = 19;
constexpr DWORD DocumentedBuild = 18985;

DWORD SystemBuild() {
  OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof(version);
  const auto ask = ShellApi().RtlGetVersion;
  return ask && ask(&version) == 0 && version.dwMajorVersion >= 10 ? version.dwBuildNumber : 0;
}

bool AsksForHighContrast() {
  HIGHCONTRASTW contrast{};
  contrast.cbSize = sizeof(contrast);
  return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof(contrast), &contrast, 0) &&
         (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

bool SystemIsDark() {
  bool dark = false;
  const auto ask = ShellApi().ShouldAppsUseDarkMode;
  // Some systems export it and raise when it is called.
  return SUCCEEDED(GuardedCall([&] { dark = ask(); })) && dark;
}

TColor DarkColor(TColor color) {
  switch (color) {
  case clWindow:
  case clMenu:
  case clScrollBar:
    return RgbColor(0x19, 0x19, 0x19);
  case clBtnFace:
  case clMenuBar:
  case clAppWorkSpace:
  case clBackground:
    return RgbColor(0x20, 0x20, 0x20);
  case clInfoBk:
  case cl3DLight:
    return RgbColor(0x2B, 0x2B, 0x2B);
  case clWindowText:
  case clBtnText:
  case clMenuText:
  case clInfoText:
  case clHighlightText:
  case clCaptionText:
    return clWhite;
  case clGrayText:
  case clInactiveCaptionText:
    return RgbColor(0x9D, 0x9D, 0x9D);
  case clHighlight:
  case clMenuHighlight:
    return RgbColor(0x4D, 0x4D, 0x4D);
  case clHotLight:
    return RgbColor(0x99, 0xEB, 0xFF);
  case clBtnShadow:
  case clWindowFrame:
  case clBtnHighlight:
    return RgbColor(0x53, 0x53, 0x53);
  case cl3DDkShadow:
    return clBlack;
  default:
    return ColorToRGB(color);
  }
}

} // namespace

TStyleServices::TStyleServices() {
  ReadSettings();
}

TStyleServices::~TStyleServices() = default;

void TStyleServices::ReadSettings() {
  fThemes.clear();
  fThemed = IsAppThemed() && IsThemeActive();
  fHighContrast = AsksForHighContrast();
  const bool wanted =
      fDarkMode == TDarkMode::dmDark || (fDarkMode == TDarkMode::dmSystem && IsDarkModeSupported() && SystemIsDark());
  fDark = wanted && !fHighContrast && IsDarkModeSupported();
}

void TStyleServices::SetPlain(bool pPlain) {
  fPlain = pPlain;
}

const TTheme& TStyleServices::GetTheme(const wchar_t* pClass, int pDpi) {
  const auto [place, is_new] = fThemes.try_emplace({pClass, pDpi});
  if (is_new) place->second = TTheme(nullptr, pClass, pDpi);
  return place->second;
}

bool TStyleServices::DrawElement(TCanvas& pCanvas, const TThemeElement& pElement, const RECT& pRect, int pDpi) {
  if (!pCanvas.GetHandle()) return false;
  // The platform's themes for windows without one of their own are light.
  if (IsEnabled() && !fDark) {
    const TTheme& theme = GetTheme(pElement.className, pDpi);
    if (theme.Has(pElement.part) && theme.Draw(pCanvas, pElement.part, pElement.state, pRect)) return true;
  }
  return DrawPlainElement(pCanvas, pElement, pRect, pDpi);
}

void TStyleServices::WriteText(TCanvas& pCanvas, const TThemeElement& pElement, std::wstring_view pText,
                               const RECT& pRect, UINT pFlags, int pDpi, TColor pColor) {
  if (IsEnabled() && !fDark) {
    const TTheme& theme = GetTheme(pElement.className, pDpi);
    if (theme.WriteText(pCanvas, pElement.part, pElement.state, pText, pRect, pFlags, pColor)) return;
  }
  const TFont font = pCanvas.GetFont();
  const TBrush brush = pCanvas.GetBrush();
  pCanvas.GetFont().SetColor(GetSystemColor(pColor == clNone ? font.GetColor() : pColor));
  pCanvas.GetBrush().SetStyle(TBrushStyle::bsClear);
  pCanvas.TextRect(pRect, pText, pFlags);
  pCanvas.GetFont() = font;
  pCanvas.GetBrush() = brush;
}

SIZE TStyleServices::GetElementSize(const TThemeElement& pElement, int pDpi) {
  SIZE size{};
  if (IsEnabled()) {
    const TTheme& theme = GetTheme(pElement.className, pDpi);
    if (theme.PartSize(pElement.part, pElement.state, TS_DRAW, size) && size.cx > 0) {
      // Without a theme for it the size is that for the system's dots per inch.
      if (ShellApi().OpenThemeDataForDpi) return size;
      const int dpi = GetSystemDpi();
      return {MulDivRounded(size.cx, pDpi, dpi), MulDivRounded(size.cy, pDpi, dpi)};
    }
  }
  size = PlainElementSize(pElement);
  return {ScaledPixels(size.cx, pDpi), ScaledPixels(size.cy, pDpi)};
}

void TStyleServices::SetDarkMode(TDarkMode pMode) {
  if (pMode == fDarkMode) return;
  fDarkMode = pMode;
  // Menus and scroll bars ask the process, not their window.
  if (const auto prefer = ShellApi().SetPreferredAppMode) {
    const int mode = pMode == TDarkMode::dmLight ? 0 : pMode == TDarkMode::dmSystem ? 1 : 2;
    GuardedCall([&] { prefer(mode); });
  }
  ReadSettings();
}

TColor TStyleServices::GetSystemColor(TColor pColor) const {
  if (pColor == clDefault) pColor = clWindow;
  return fDark && IsSystemColor(pColor) ? DarkColor(pColor) : ColorToRGB(pColor);
}

void TStyleServices::ApplyDarkMode(HWND pWindow, bool pTopLevel) const {
  if (!IsDarkModeSupported()) return;
  const auto allow = ShellApi().AllowDarkModeForWindow;
  GuardedCall([&] { allow(pWindow, fDark); });
  const auto set = ShellApi().DwmSetWindowAttribute;
  if (!pTopLevel || !set) return;
  const BOOL dark = fDark;
  set(pWindow, SystemBuild() >= DocumentedBuild ? DarkTitleBar : FirstDarkTitleBar, &dark, sizeof(dark));
}

TStyleChange TStyleServices::HandleMessage(UINT pMessage, WPARAM pWParam, LPARAM pLParam) {
  switch (pMessage) {
  case WM_THEMECHANGED:
    ReadSettings();
    return TStyleChange::scThemes;
  case WM_SYSCOLORCHANGE:
    ReadSettings();
    return TStyleChange::scColors;
  case WM_SETTINGCHANGE: {
    // The light or dark setting has a name, not a number.
    const auto* const name = reinterpret_cast<const wchar_t*>(pLParam);
    const bool light = pLParam != 0 && std::wcscmp(name, L"ImmersiveColorSet") == 0;
    if (!light && pWParam != SPI_SETHIGHCONTRAST) return TStyleChange::scNone;
    if (const auto refresh = ShellApi().RefreshImmersiveColorPolicyState) GuardedCall([&] { refresh(); });
    const std::pair before(fDark, fHighContrast);
    ReadSettings();
    if (before != std::pair(fDark, fHighContrast)) return TStyleChange::scThemes;
    return TStyleChange::scColors;
  }
  default:
    return TStyleChange::scNone;
  }
}

TStyleServices& StyleServices() {
  static std::unique_ptr<TStyleServices> services;
  if (!services) {
    services = std::make_unique<TStyleServices>();
    AtShutdown([] { services.reset(); });
  }
  return *services;
}

} // namespace kiv
