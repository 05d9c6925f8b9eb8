#pragma once

#include <graphics/Color.h>
#include <graphics/Theme.h>
#include <graphics/ThemeElements.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kiv {

/// Whether the windows of the library are dark.
enum class TDarkMode {
  dmLight,
  dmSystem, ///< as the user has set it for programs
  dmDark
};

/// What a message says of the looks of all windows.
enum class TStyleChange {
  scNone,
  scColors, ///< colours, contrast, light or dark: repaint
  scThemes  ///< themes as well: open them anew, measure, then repaint
};

/// The look that all controls share: the platform's themes, or a plain look where they are off or lack something;
/// colours, light or dark. One instance, StyleServices(); main thread only.
class KIV_EXPORT TStyleServices {
public:
  TStyleServices();
  ~TStyleServices();
  TStyleServices(const TStyleServices&) = delete;
  TStyleServices& operator=(const TStyleServices&) = delete;

  /// True if themes are drawn: the platform has them on for this process, and nobody has switched them off here.
  bool IsEnabled() const noexcept { return fThemed && !fPlain; }
  /// The look is the platform's. There is no other as yet; controls ask so that one can come.
  bool IsSystemStyle() const noexcept { return true; }
  /// Switches to the plain look and back. The caller repaints.
  void SetPlain(bool pPlain);

  /// An element in the size for `pDpi` dots per inch, by its theme or plain. False, and nothing is drawn, if it has
  /// neither.
  bool DrawElement(TCanvas& pCanvas, const TThemeElement& pElement, const RECT& pRect, int pDpi);
  /// Text of an element in the canvas's font, in the colour that it has there unless one is given.
  void WriteText(TCanvas& pCanvas, const TThemeElement& pElement, std::wstring_view pText, const RECT& pRect,
                 UINT pFlags, int pDpi, TColor pColor = clNone);
  /// The size that an element is best drawn in.
  SIZE GetElementSize(const TThemeElement& pElement, int pDpi);
  /// The theme of a class for windows without one of their own; it may not be open. It stays good until the next
  /// message for which HandleMessage says scThemes.
  const TTheme& GetTheme(const wchar_t* pClass, int pDpi);

  /// The host's choice for its windows, made before they are. Light unless set. Where the platform has no dark controls
  /// it stays light.
  TDarkMode GetDarkMode() const noexcept { return fDarkMode; }
  void SetDarkMode(TDarkMode pMode);
  bool IsDarkModeActive() const noexcept { return fDark; }
  /// The user has asked for high contrast: system colours only, no blending of colours that text stands on.
  bool IsHighContrast() const noexcept { return fHighContrast; }
  /// The plain colour for a colour: as ColorToRGB, with system colours from the dark palette while dark mode is active.
  TColor GetSystemColor(TColor pColor) const;
  /// Lets the platform draw a window's own parts dark or light: scroll bars and controls, with `pTopLevel` its title
  /// bar as well. For each window after it was made, and after each change.
  void ApplyDarkMode(HWND pWindow, bool pTopLevel) const;

  /// For each top-level window of the library's: what a message that it got says of the looks.
  TStyleChange HandleMessage(UINT pMessage, WPARAM pWParam, LPARAM pLParam);

private:
  void ReadSettings();

  std::map<std::pair<std::wstring, int>, TTheme> fThemes;
  TDarkMode fDarkMode = TDarkMode::dmLight;
  bool fThemed = false;
  bool fPlain = false;
  bool fDark = false;
  bool fHighContrast = false;
};

/// The one instance.
KIV_EXPORT TStyleServices& StyleServices();

/// An element without themes, in the system's colours. False if it has no plain look.
bool DrawPlainElement(TCanvas& pCanvas, const TThemeElement& pElement, const RECT& pRect, int pDpi);
/// The size that a plain element is best drawn in, in pixels at 96 dots per inch.
SIZE PlainElementSize(const TThemeElement& pElement);

} // namespace kiv
