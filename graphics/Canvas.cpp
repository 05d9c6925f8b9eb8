#include <graphics/Canvas.h>

#include <algorithm>
#include <utility>

namespace kiv {

namespace {

constexpr std::size_t LongestLine = 8192; // "ExtTextOut"

int LengthOf(std::wstring_view text) {
  return static_cast<int>(std::min(text.size(), LongestLine));
}

} // namespace

void TCanvas::SetHandle(HDC pDc) noexcept {
  if (fDc) RestoreDC(fDc, fSaved);
  fSelectedFont.reset();
  fSelectedPen.reset();
  fSelectedBrush.reset();
  fDc = pDc;
  if (fDc) fSaved = SaveDC(fDc);
}

bool TCanvas::IsMirrored() const noexcept {
  return fDc && (GetLayout(fDc) & LAYOUT_RTL) != 0;
}

void TCanvas::Select(const std::shared_ptr<const TUniqueFont>& pFont) const {
  SelectObject(fDc, pFont->Get());
  fSelectedFont = pFont;
}

void TCanvas::SelectTextTools() {
  Select(fFont.GetSharedHandle());
  SetTextColor(fDc, static_cast<COLORREF>(ColorToRGB(fFont.GetColor())));
  SetTextAlign(fDc, TA_LEFT | TA_TOP);
  if (fBrush.GetStyle() == TBrushStyle::bsClear) {
    SetBkMode(fDc, TRANSPARENT);
  } else {
    SetBkMode(fDc, OPAQUE);
    SetBkColor(fDc, static_cast<COLORREF>(ColorToRGB(fBrush.GetColor())));
  }
}

void TCanvas::SelectShapeTools() {
  auto pen = fPen.GetSharedHandle();
  auto brush = fBrush.GetSharedHandle();
  SelectObject(fDc, pen->Get());
  SelectObject(fDc, brush->Get());
  fSelectedPen = std::move(pen);
  fSelectedBrush = std::move(brush);
  SetROP2(fDc, R2_COPYPEN);
  SetBkMode(fDc, TRANSPARENT); // between dashes
}

void TCanvas::TextAt(int pX, int pY, std::wstring_view pText) {
  if (!fDc) return;
  SelectTextTools();
  const UINT options = fRightToLeftText ? ETO_RTLREADING : 0U;
  ExtTextOutW(fDc, pX, pY, options, nullptr, pText.data(), static_cast<UINT>(LengthOf(pText)), nullptr);
}

void TCanvas::TextAt(const RECT& pClip, int pX, int pY, std::wstring_view pText) {
  if (!fDc) return;
  SelectTextTools();
  UINT options = ETO_CLIPPED;
  if (fRightToLeftText) options |= ETO_RTLREADING;
  if (fBrush.GetStyle() != TBrushStyle::bsClear) options |= ETO_OPAQUE;
  ExtTextOutW(fDc, pX, pY, options, &pClip, pText.data(), static_cast<UINT>(LengthOf(pText)), nullptr);
}

int TCanvas::TextRect(const RECT& pRect, std::wstring_view pText, UINT pFlags) {
  if (!fDc || pText.empty()) return 0;
  SelectTextTools();
  if (fRightToLeftText) pFlags |= DT_RTLREADING;
  RECT rect = pRect;
  // The text isn't ours to change.
  return DrawTextW(fDc, pText.data(), LengthOf(pText), &rect, pFlags & ~static_cast<UINT>(DT_MODIFYSTRING));
}

SIZE TCanvas::TextExtent(std::wstring_view pText) const {
  SIZE size{};
  if (!fDc) return size;
  Select(fFont.GetSharedHandle());
  if (!pText.empty()) {
    GetTextExtentPoint32W(fDc, pText.data(), LengthOf(pText), &size);
    return size;
  }
  TEXTMETRICW metrics;
  if (GetTextMetricsW(fDc, &metrics)) size.cy = metrics.tmHeight;
  return size;
}

SIZE TCanvas::TextExtent(std::wstring_view pText, int pWidth, UINT pFlags) const {
  if (!fDc || pText.empty()) return {};
  Select(fFont.GetSharedHandle());
  RECT rect{0, 0, pWidth, 0};
  const UINT flags = (pFlags | DT_CALCRECT) & ~static_cast<UINT>(DT_MODIFYSTRING);
  DrawTextW(fDc, pText.data(), LengthOf(pText), &rect, flags);
  return {rect.right - rect.left, rect.bottom - rect.top};
}

void TCanvas::FillRect(const RECT& pRect) {
  if (fDc) ::FillRect(fDc, &pRect, fBrush.GetHandle());
}

void TCanvas::FrameRect(const RECT& pRect) {
  if (fDc) ::FrameRect(fDc, &pRect, fBrush.GetHandle());
}

void TCanvas::FillRect(const RECT& pRect, TColor pColor) {
  if (!fDc || pColor == clNone) return;
  const COLORREF outer = SetDCBrushColor(fDc, static_cast<COLORREF>(ColorToRGB(pColor)));
  ::FillRect(fDc, &pRect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
  SetDCBrushColor(fDc, outer);
}

void TCanvas::Line(int pX1, int pY1, int pX2, int pY2) {
  if (!fDc) return;
  SelectShapeTools();
  MoveToEx(fDc, pX1, pY1, nullptr);
  LineTo(fDc, pX2, pY2);
  LineTo(fDc, pX2 + 1, pY2); // its own end isn't drawn
}

void TCanvas::Rectangle(const RECT& pRect) {
  if (!fDc) return;
  SelectShapeTools();
  ::Rectangle(fDc, pRect.left, pRect.top, pRect.right, pRect.bottom);
}

void TCanvas::Polygon(std::span<const POINT> pPoints) {
  if (!fDc) return;
  SelectShapeTools();
  ::Polygon(fDc, pPoints.data(), static_cast<int>(pPoints.size()));
}

void TCanvas::DrawFocusRect(const RECT& pRect) {
  if (!fDc) return;
  // Its two colours come from the context.
  SetTextColor(fDc, RGB(0, 0, 0));
  SetBkColor(fDc, RGB(255, 255, 255));
  ::DrawFocusRect(fDc, &pRect);
}

void TCanvas::DrawIcon(const RECT& pRect, HICON pIcon) {
  if (!fDc || !pIcon) return;
  const ScopedUnmirroredPictures unmirrored(fDc);
  DrawIconEx(fDc, pRect.left, pRect.top, pIcon, pRect.right - pRect.left, pRect.bottom - pRect.top, 0, nullptr,
             DI_NORMAL);
}

TCanvas::ScopedClip::ScopedClip(TCanvas& pCanvas, const RECT& pRect) : fDc(pCanvas.GetHandle()) {
  if (!fDc) return;
  TUniqueRegion region(CreateRectRgn(0, 0, 0, 0));
  if (GetClipRgn(fDc, region.Get()) > 0) fOuter = std::move(region);
  IntersectClipRect(fDc, pRect.left, pRect.top, pRect.right, pRect.bottom);
}

TCanvas::ScopedClip::~ScopedClip() {
  if (fDc) SelectClipRgn(fDc, fOuter.Get());
}

TCanvas::ScopedUnmirroredPictures::ScopedUnmirroredPictures(HDC pDc) noexcept : fDc(pDc), fLayout(GetLayout(pDc)) {
  if (fLayout != GDI_ERROR && (fLayout & LAYOUT_RTL) != 0) SetLayout(fDc, fLayout | LAYOUT_BITMAPORIENTATIONPRESERVED);
}

TCanvas::ScopedUnmirroredPictures::~ScopedUnmirroredPictures() {
  if (fLayout != GDI_ERROR) SetLayout(fDc, fLayout);
}

} // namespace kiv
