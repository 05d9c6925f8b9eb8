#include <graphics/ImageList.h>

#include <graphics/ImageListApi.h>

#include <algorithm>

namespace kiv {

namespace {

constexpr int CutOpacity = 128;
constexpr int DisabledOpacity = 128;

UINT StyleFlags(TDrawingStyle style) {
  switch (style) {
  case TDrawingStyle::dsFocus:
    return ILD_BLEND25;
  case TDrawingStyle::dsSelected:
    return ILD_BLEND50;
  case TDrawingStyle::dsTransparent:
    return ILD_TRANSPARENT;
  default:
    return ILD_NORMAL;
  }
}

COLORREF ListColor(TColor color) {
  if (color == clNone) return CLR_NONE;
  return color == clDefault ? CLR_DEFAULT : static_cast<COLORREF>(ColorToRGB(color));
}

// Premultiplied colours stay within the alpha.
void TakeColors(TBitmap& bitmap) {
  for (TPixel& pixel : bitmap.Pixels()) {
    const TPixel gray = ((pixel >> 16 & 0xFF) * 299 + (pixel >> 8 & 0xFF) * 587 + (pixel & 0xFF) * 114 + 500) / 1000;
    pixel = (pixel & 0xFF000000) | gray << 16 | gray << 8 | gray;
  }
}

} // namespace

// Some systems forget the overlay of an image with alpha, so for a list of our own we draw it. What overlays a shared
// list has is known to the platform only.
UINT TCustomImageList::OverlayBits(int pOverlay) const noexcept {
  return fShareImages && pOverlay > 0 ? static_cast<UINT>(INDEXTOOVERLAYMASK(pOverlay)) : 0U;
}

int TCustomImageList::OverlayImage(int pOverlay) const noexcept {
  const bool known = !fShareImages && pOverlay > 0 && pOverlay < static_cast<int>(fOverlays.size());
  return known ? fOverlays[static_cast<std::size_t>(pOverlay)] : -1;
}

TBitmap TCustomImageList::GetBitmap(int pIndex, int pOverlay) {
  if (pIndex < 0 || pIndex >= GetCount()) return {};
  Require(pIndex);
  return ImageOf(List(), pIndex, OverlayBits(pOverlay), OverlayImage(pOverlay));
}

TUniqueIcon TCustomImageList::GetIcon(int pIndex) {
  const TBitmap image = GetBitmap(pIndex);
  return image.IsEmpty() ? TUniqueIcon() : image.ToIcon();
}

void TCustomImageList::Draw(TCanvas& pCanvas, int pX, int pY, int pIndex, bool pEnabled) {
  Draw(pCanvas, pX, pY, pIndex, fDrawingStyle, pEnabled ? TImageEffect::ieNone : TImageEffect::ieDisabled);
}

void TCustomImageList::Draw(TCanvas& pCanvas, int pX, int pY, int pIndex, TDrawingStyle pStyle, TImageEffect pEffect,
                            int pOverlay) {
  if (!pCanvas.GetHandle() || pIndex < 0 || pIndex >= GetCount()) return;
  // The platform's own effects differ from version to version.
  if (pEffect != TImageEffect::ieNone) {
    TBitmap image = GetBitmap(pIndex, pOverlay);
    if (pEffect == TImageEffect::ieDisabled) TakeColors(image);
    pCanvas.Draw(pX, pY, image, pEffect == TImageEffect::ieCut ? CutOpacity : DisabledOpacity);
    return;
  }
  Require(pIndex);
  const TCanvas::ScopedUnmirroredPictures unmirrored(pCanvas.GetHandle());
  IMAGELISTDRAWPARAMS draw{};
  draw.i = pIndex;
  draw.hdcDst = pCanvas.GetHandle();
  draw.x = pX;
  draw.y = pY;
  draw.rgbBk = ListColor(fBkColor);
  draw.rgbFg = ListColor(fBlendColor);
  draw.fStyle = StyleFlags(pStyle) | OverlayBits(pOverlay);
  DrawImage(List(), draw, OverlayImage(pOverlay));
}

} // namespace kiv
