#include <graphics/Bitmap.h>

#include <algorithm>
#include <vector>

namespace kiv {

namespace {

// The pixels of any bitmap of the platform's, rows from the top down.
TBitmap CopyPixels(HBITMAP bitmap) {
  BITMAP shape{};
  if (!bitmap || !GetObjectW(bitmap, sizeof(shape), &shape)) {
    throw EInvalidGraphic(E_INVALIDARG, L"The bitmap can't be read");
  }
  TBitmap copy(shape.bmWidth, std::abs(shape.bmHeight));
  BITMAPINFO info{};
  info.bmiHeader = {sizeof(BITMAPINFOHEADER), copy.GetWidth(), -copy.GetHeight(), 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  const TUniqueMemoryDc dc(CreateCompatibleDC(nullptr));
  const auto rows = static_cast<UINT>(copy.GetHeight());
  if (!GetDIBits(dc.Get(), bitmap, 0, rows, copy.Pixels().data(), &info, DIB_RGB_COLORS)) {
    throw EInvalidGraphic(E_FAIL, L"The bitmap can't be read");
  }
  // Others have no alpha, whatever was put into its place.
  if (shape.bmBitsPixel != 32) std::ranges::for_each(copy.Pixels(), [](TPixel& pixel) { pixel &= 0xFFFFFF; });
  return copy;
}

// An icon without colours: the upper half of its one bitmap says where the screen stays, the lower one what colour
// comes there.
TBitmap FromMonochrome(HBITMAP both) {
  const TBitmap pixels = CopyPixels(both);
  TBitmap picture(pixels.GetWidth(), pixels.GetHeight() / 2, TAlphaFormat::afDefined);
  const std::size_t half = picture.Pixels().size();
  const auto source = pixels.Pixels();
  auto* target = picture.Pixels().data();
  for (std::size_t i = 0; i < half; ++i) {
    const bool screen = (source[i] & 1) != 0;
    const bool inverse = (source[half + i] & 1) != 0;
    if (!screen) {
      target[i] = 0xFF000000 | source[half + i];
    } else if (inverse) {
      target[i] = 0xFF000000; // what would invert the screen
    }
  }
  return picture;
}

TBitmap WithMask(TBitmap picture, HBITMAP mask) {
  picture.DeclareAlphaFormat(TAlphaFormat::afDefined);
  const TBitmap outside = CopyPixels(mask);
  const auto source = outside.Pixels();
  const auto target = picture.Pixels();
  for (std::size_t i = 0; i < std::min(source.size(), target.size()); ++i) {
    target[i] = (source[i] & 1) != 0 ? 0 : target[i] | 0xFF000000;
  }
  return picture;
}

} // namespace

TBitmap TBitmap::FromHandle(HBITMAP pBitmap, std::optional<TAlphaFormat> pAlpha) {
  TBitmap bitmap = CopyPixels(pBitmap);
  bitmap.fAlpha = pAlpha.value_or(DetectAlpha(bitmap.Pixels()));
  return bitmap;
}

TBitmap TBitmap::FromIcon(HICON pIcon, int pSize) {
  ICONINFO info{};
  if (!GetIconInfo(pIcon, &info)) throw EInvalidGraphic(HRESULT_FROM_WIN32(GetLastError()), L"The icon can't be read");
  const TUniqueBitmap mask(info.hbmMask);
  const TUniqueBitmap color(info.hbmColor);
  TBitmap picture;
  if (!color) {
    picture = FromMonochrome(mask.Get());
  } else {
    picture = CopyPixels(color.Get());
    const bool has_alpha = DetectAlpha(picture.Pixels()) != TAlphaFormat::afIgnored;
    if (has_alpha) {
      picture.fAlpha = TAlphaFormat::afDefined;
    } else {
      picture = WithMask(std::move(picture), mask.Get());
    }
  }
  return pSize > 0 ? picture.Scaled(pSize, pSize) : std::move(picture);
}

TUniqueIcon TBitmap::ToIcon() const {
  if (IsEmpty()) throw EInvalidGraphic(E_INVALIDARG, L"The icon can't be made");
  TBitmap straight = Clone();
  straight.SetAlphaFormat(TAlphaFormat::afDefined);
  // The mask is for functions that don't know of alpha. Its rows are whole words.
  const std::size_t stride = (static_cast<std::size_t>(fWidth) + 15) / 16 * 2;
  std::vector<BYTE> mask(stride * static_cast<std::size_t>(fHeight));
  for (int y = 0; y < fHeight; ++y) {
    const TPixel* const row = straight.ScanLine(y);
    for (int x = 0; x < fWidth; ++x) {
      if (row[x] >> 24 == 0) {
        mask[stride * static_cast<std::size_t>(y) + static_cast<std::size_t>(x) / 8] |=
            static_cast<BYTE>(0x80 >> (x % 8));
      }
    }
  }
  const TUniqueBitmap mask_bitmap(CreateBitmap(fWidth, fHeight, 1, 1, mask.data()));
  ICONINFO info{TRUE, 0, 0, mask_bitmap.Get(), straight.GetHandle()};
  TUniqueIcon icon(CreateIconIndirect(&info));
  if (!icon) throw EInvalidGraphic(HRESULT_FROM_WIN32(GetLastError()), L"The icon can't be made");
  return icon;
}

} // namespace kiv
