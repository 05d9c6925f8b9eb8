#pragma once

#include <graphics/Canvas.h>
#include <platform/Handles.h>

#include <uxtheme.h>
#include <vssym32.h>

#include <string_view>

namespace kiv {

namespace detail {
struct TThemeTraits : TPointerTraits<HTHEME> {
  static void Close(HTHEME value) noexcept { CloseThemeData(value); }
};
} // namespace detail

/// The platform's theme of one class of windows, for one number of dots per inch ("OpenThemeData").
///
/// Not every class opens on every system, and none where themes are off: whoever draws by a theme asks IsOpen and has
/// another way. On a theme that isn't open operations do nothing and say so. After a change of themes
/// (`WM_THEMECHANGED`) it is opened anew. Main thread only.
class KIV_EXPORT TTheme {
public:
  TTheme() = default;
  /// `pClasses` as the platform takes it: "BUTTON", or several with ";" between, the first that there is. A window
  /// that a theme of its own was set for ("SetWindowTheme") gets that one.
  TTheme(HWND pWindow, const wchar_t* pClasses, int pDpi);

  bool IsOpen() const noexcept { return static_cast<bool>(fTheme); }
  HTHEME GetHandle() const noexcept { return fTheme.Get(); }
  void Close() noexcept { fTheme.Reset(); }

  bool Has(int pPart, int pState = 0) const;
  /// The part's background; with `pClip`, only what lies in there.
  bool Draw(TCanvas& pCanvas, int pPart, int pState, const RECT& pRect, const RECT* pClip = nullptr) const;
  /// Parts of a window show its parent behind them.
  bool IsTransparent(int pPart, int pState) const;
  /// Text in the canvas's font, and in the theme's colour unless one is given. `pFlags` are `DT_...`.
  bool WriteText(TCanvas& pCanvas, int pPart, int pState, std::wstring_view pText, const RECT& pRect, UINT pFlags,
                 TColor pColor = clNone) const;
  /// The rectangle that a text takes ("GetThemeTextExtent"), in the canvas's font.
  bool TextExtent(TCanvas& pCanvas, int pPart, int pState, std::wstring_view pText, UINT pFlags, RECT& pExtent) const;
  /// What the background has around a content, and what it leaves for one.
  bool BackgroundExtent(TCanvas& pCanvas, int pPart, int pState, const RECT& pContent, RECT& pExtent) const;
  bool ContentRect(TCanvas& pCanvas, int pPart, int pState, const RECT& pRect, RECT& pContent) const;
  bool PartSize(int pPart, int pState, THEMESIZE pWhich, SIZE& pSize) const;
  /// A colour by its property (`TMT_TEXTCOLOR`...).
  bool Color(int pPart, int pState, int pProperty, TColor& pColor) const;

private:
  TUnique<detail::TThemeTraits> fTheme;
};

/// Lets a window's parent draw what is behind a part of the window ("DrawThemeParentBackground").
KIV_EXPORT void DrawParentBackground(HWND pWindow, HDC pDc, const RECT& pRect);

} // namespace kiv
