#include <graphics/Theme.h>

#include <platform/ShellApi.h>

namespace kiv {

namespace {

int LengthOf(std::wstring_view text) {
  return static_cast<int>(text.size());
}

// Selects a canvas's font for a function that takes what is selected.
class ScopedFont {
public:
  explicit ScopedFont(TCanvas& pCanvas)
      : fDc(pCanvas.GetHandle()), fOuter(SelectObject(fDc, pCanvas.GetFont().GetHandle())) {}
  ~ScopedFont() { SelectObject(fDc, fOuter); }
  ScopedFont(const ScopedFont&) = delete;
  ScopedFont& operator=(const ScopedFont&) = delete;

private:
  HDC fDc;
  HGDIOBJ fOuter;
};

} // namespace

TTheme::TTheme(HWND pWindow, const wchar_t* pClasses, int pDpi) {
  const auto open = ShellApi().OpenThemeDataForDpi;
  fTheme.Reset(open ? open(pWindow, pClasses, static_cast<UINT>(pDpi)) : OpenThemeData(pWindow, pClasses));
}

bool TTheme::Has(int pPart, int pState) const {
  return fTheme && IsThemePartDefined(fTheme.Get(), pPart, pState);
}

bool TTheme::Draw(TCanvas& pCanvas, int pPart, int pState, const RECT& pRect, const RECT* pClip) const {
  return fTheme && SUCCEEDED(DrawThemeBackground(fTheme.Get(), pCanvas.GetHandle(), pPart, pState, &pRect, pClip));
}

bool TTheme::IsTransparent(int pPart, int pState) const {
  return fTheme && IsThemeBackgroundPartiallyTransparent(fTheme.Get(), pPart, pState);
}

bool TTheme::WriteText(TCanvas& pCanvas, int pPart, int pState, std::wstring_view pText, const RECT& pRect, UINT pFlags,
                       TColor pColor) const {
  if (!fTheme || !pCanvas.GetHandle()) return false;
  const ScopedFont font(pCanvas);
  SetBkMode(pCanvas.GetHandle(), TRANSPARENT);
  DTTOPTS options{};
  options.dwSize = sizeof(options);
  if (pColor != clNone) {
    options.dwFlags |= DTT_TEXTCOLOR;
    options.crText = static_cast<COLORREF>(ColorToRGB(pColor));
  }
  if (pCanvas.IsRightToLeftText()) pFlags |= DT_RTLREADING;
  RECT rect = pRect;
  return SUCCEEDED(DrawThemeTextEx(fTheme.Get(), pCanvas.GetHandle(), pPart, pState, pText.data(), LengthOf(pText),
                                   pFlags & ~static_cast<UINT>(DT_MODIFYSTRING), &rect, &options));
}

bool TTheme::TextExtent(TCanvas& pCanvas, int pPart, int pState, std::wstring_view pText, UINT pFlags,
                        RECT& pExtent) const {
  if (!fTheme || !pCanvas.GetHandle()) return false;
  const ScopedFont font(pCanvas);
  return SUCCEEDED(GetThemeTextExtent(fTheme.Get(), pCanvas.GetHandle(), pPart, pState, pText.data(), LengthOf(pText),
                                      pFlags, nullptr, &pExtent));
}

bool TTheme::BackgroundExtent(TCanvas& pCanvas, int pPart, int pState, const RECT& pContent, RECT& pExtent) const {
  return fTheme &&
         SUCCEEDED(GetThemeBackgroundExtent(fTheme.Get(), pCanvas.GetHandle(), pPart, pState, &pContent, &pExtent));
}

bool TTheme::ContentRect(TCanvas& pCanvas, int pPart, int pState, const RECT& pRect, RECT& pContent) const {
  return fTheme &&
         SUCCEEDED(GetThemeBackgroundContentRect(fTheme.Get(), pCanvas.GetHandle(), pPart, pState, &pRect, &pContent));
}

bool TTheme::PartSize(int pPart, int pState, THEMESIZE pWhich, SIZE& pSize) const {
  return fTheme && SUCCEEDED(GetThemePartSize(fTheme.Get(), nullptr, pPart, pState, nullptr, pWhich, &pSize));
}

bool TTheme::Color(int pPart, int pState, int pProperty, TColor& pColor) const {
  COLORREF color = 0;
  if (!fTheme || FAILED(GetThemeColor(fTheme.Get(), pPart, pState, pProperty, &color))) return false;
  pColor = static_cast<TColor>(color);
  return true;
}

void DrawParentBackground(HWND pWindow, HDC pDc, const RECT& pRect) {
  RECT rect = pRect; // some headers want one that may change
  DrawThemeParentBackground(pWindow, pDc, &rect);
}

} // namespace kiv
