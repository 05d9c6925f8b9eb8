#include <graphics/Bitmap.h>

#include <platform/ErrorText.h>

#include <algorithm>
#include <utility>

namespace kiv {

namespace {

constexpr std::int64_t MostPixels = std::int64_t{1} << 28; // 1 GiB

} // namespace

EInvalidGraphic::EInvalidGraphic(HRESULT pCode, const std::wstring& pWhat)
    : EOSError(static_cast<DWORD>(pCode), pWhat + L": " + DescribeError(pCode)) {}
EInvalidGraphic::~EInvalidGraphic() = default;

struct TBitmap::TDrawing {
  TUniqueMemoryDc dc;
  HGDIOBJ outer = nullptr;
  TCanvas canvas;

  ~TDrawing() { Leave(); }

  void Enter(HBITMAP bitmap) {
    if (dc) return;
    dc.Reset(CreateCompatibleDC(nullptr));
    outer = SelectObject(dc.Get(), bitmap);
    canvas.SetHandle(dc.Get());
  }
  void Leave() {
    if (!dc) return;
    canvas.SetHandle(nullptr);
    SelectObject(dc.Get(), outer);
    dc.Reset();
  }
};

TBitmap::TBitmap() = default;

TBitmap::TBitmap(int pWidth, int pHeight, TAlphaFormat pAlpha) : fAlpha(pAlpha) {
  if (pWidth < 0 || pHeight < 0 || std::int64_t{pWidth} * pHeight > MostPixels) {
    throw EInvalidGraphic(E_INVALIDARG, L"A picture of that size can't be made");
  }
  if (pWidth == 0 || pHeight == 0) return;
  BITMAPINFO info{};
  info.bmiHeader = {sizeof(BITMAPINFOHEADER), pWidth, -pHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  void* bits = nullptr;
  fHandle.Reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
  if (!fHandle) throw EInvalidGraphic(E_OUTOFMEMORY, L"The picture can't be made");
  fBits = static_cast<TPixel*>(bits);
  fWidth = pWidth;
  fHeight = pHeight;
}

TBitmap::TBitmap(TBitmap&& pOther) noexcept
    : TPersistent(pOther), fHandle(std::move(pOther.fHandle)), fBits(std::exchange(pOther.fBits, nullptr)),
      fWidth(std::exchange(pOther.fWidth, 0)), fHeight(std::exchange(pOther.fHeight, 0)), fAlpha(pOther.fAlpha),
      fDrawing(std::move(pOther.fDrawing)) {}

TBitmap& TBitmap::operator=(TBitmap&& pOther) noexcept {
  if (this == &pOther) return *this;
  fDrawing = std::move(pOther.fDrawing); // first: it has the old bitmap selected
  fHandle = std::move(pOther.fHandle);
  fBits = std::exchange(pOther.fBits, nullptr);
  fWidth = std::exchange(pOther.fWidth, 0);
  fHeight = std::exchange(pOther.fHeight, 0);
  fAlpha = pOther.fAlpha;
  return *this;
}

TBitmap::~TBitmap() {
  fDrawing.reset(); // before what it has selected
}

void TBitmap::Assign(const TPersistent* pSource) {
  if (const auto* const bitmap = dynamic_cast<const TBitmap*>(pSource)) {
    *this = bitmap->Clone();
  } else {
    TPersistent::Assign(pSource);
  }
}

TBitmap TBitmap::Clone() const {
  TBitmap copy(fWidth, fHeight, fAlpha);
  std::ranges::copy(Pixels(), copy.Pixels().begin());
  return copy;
}

void TBitmap::SetSize(int pWidth, int pHeight, TColor pFill) {
  if (pWidth == fWidth && pHeight == fHeight) return;
  TBitmap resized(pWidth, pHeight, fAlpha);
  if (pFill != clNone) {
    std::ranges::fill(resized.Pixels(), PixelOf(ColorToRGB(pFill)));
  }
  for (int row = 0; row < std::min(resized.fHeight, fHeight); ++row) {
    std::copy_n(ScanLine(row), std::min(resized.fWidth, fWidth), resized.ScanLine(row));
  }
  *this = std::move(resized);
}

void TBitmap::SetAlphaFormat(TAlphaFormat pAlpha) {
  if (pAlpha == fAlpha) return;
  if (pAlpha != TAlphaFormat::afIgnored) {
    if (fAlpha == TAlphaFormat::afIgnored) {
      MakeOpaque();
    } else if (pAlpha == TAlphaFormat::afPremultiplied) {
      Premultiply(Pixels());
    } else {
      Unpremultiply(Pixels());
    }
  }
  fAlpha = pAlpha;
}

std::span<TPixel> TBitmap::Pixels() noexcept {
  if (fDrawing) GdiFlush();
  return {fBits, RowOffset(fHeight)};
}

std::span<const TPixel> TBitmap::Pixels() const noexcept {
  if (fDrawing) GdiFlush();
  return {fBits, RowOffset(fHeight)};
}

TCanvas& TBitmap::GetCanvas() {
  if (!fDrawing) fDrawing = std::make_unique<TDrawing>();
  if (fHandle) fDrawing->Enter(fHandle.Get());
  return fDrawing->canvas;
}

HBITMAP TBitmap::GetHandle() {
  if (fDrawing) fDrawing->Leave();
  return fHandle.Get();
}

TUniqueBitmap TBitmap::Release() {
  fDrawing.reset();
  fBits = nullptr;
  fWidth = fHeight = 0;
  return std::move(fHandle);
}

TBitmap TBitmap::Scaled(int pWidth, int pHeight) const {
  if (IsEmpty()) return {};
  pWidth = std::max(pWidth, 1);
  pHeight = std::max(pHeight, 1);
  if (pWidth == fWidth && pHeight == fHeight) return Clone();
  if (fAlpha == TAlphaFormat::afDefined) {
    TBitmap blendable = Clone();
    blendable.SetAlphaFormat(TAlphaFormat::afPremultiplied);
    TBitmap scaled = blendable.Scaled(pWidth, pHeight);
    scaled.SetAlphaFormat(TAlphaFormat::afDefined);
    return scaled;
  }
  TBitmap scaled(pWidth, pHeight, fAlpha);
  ResamplePixels(Pixels().data(), fWidth, fHeight, scaled.fBits, pWidth, pHeight,
                 fAlpha == TAlphaFormat::afPremultiplied);
  return scaled;
}

TBitmap TBitmap::ScaledDownTo(int pMostWidth, int pMostHeight) const {
  if (fWidth <= pMostWidth && fHeight <= pMostHeight) return Clone();
  const double factor = std::min(static_cast<double>(pMostWidth) / fWidth, static_cast<double>(pMostHeight) / fHeight);
  const auto scale = [factor](int length) { return static_cast<int>(length * factor + 0.5); };
  return Scaled(scale(fWidth), scale(fHeight));
}

void TCanvas::Draw(int pX, int pY, const TBitmap& pBitmap, int pOpacity) {
  if (!fDc || pBitmap.IsEmpty()) return;
  if (pBitmap.fAlpha == TAlphaFormat::afDefined) {
    TBitmap blendable = pBitmap.Clone();
    blendable.SetAlphaFormat(TAlphaFormat::afPremultiplied);
    Draw(pX, pY, blendable, pOpacity);
    return;
  }
  const bool selected = pBitmap.fDrawing && pBitmap.fDrawing->dc;
  TBitmap::TDrawing drawing; // a bitmap can be selected into one context only
  if (!selected) drawing.Enter(pBitmap.fHandle.Get());
  const HDC source = selected ? pBitmap.fDrawing->dc.Get() : drawing.dc.Get();
  const ScopedUnmirroredPictures unmirrored(fDc);
  if (pBitmap.fAlpha == TAlphaFormat::afIgnored && pOpacity >= 255) {
    BitBlt(fDc, pX, pY, pBitmap.fWidth, pBitmap.fHeight, source, 0, 0, SRCCOPY);
    return;
  }
  const BYTE alpha = pBitmap.fAlpha == TAlphaFormat::afPremultiplied ? AC_SRC_ALPHA : 0;
  const BLENDFUNCTION blend{AC_SRC_OVER, 0, static_cast<BYTE>(std::clamp(pOpacity, 0, 255)), alpha};
  GdiAlphaBlend(fDc, pX, pY, pBitmap.fWidth, pBitmap.fHeight, source, 0, 0, pBitmap.fWidth, pBitmap.fHeight, blend);
}

void TCanvas::Draw(const RECT& pRect, const TBitmap& pBitmap, int pOpacity) {
  const int width = pRect.right - pRect.left;
  const int height = pRect.bottom - pRect.top;
  if (!fDc || width <= 0 || height <= 0) return;
  if (width == pBitmap.fWidth && height == pBitmap.fHeight) {
    Draw(pRect.left, pRect.top, pBitmap, pOpacity);
  } else {
    Draw(pRect.left, pRect.top, pBitmap.Scaled(width, height), pOpacity);
  }
}

} // namespace kiv
