#include <graphics/Pixels.h>

#include <algorithm>

namespace kiv {

namespace {

constexpr TPixel AlphaBits = 0xFF000000;

template <typename F>
TPixel MapColors(TPixel pixel, F&& map) {
  return (pixel & AlphaBits) | map(pixel >> 16 & 0xFF) << 16 | map(pixel >> 8 & 0xFF) << 8 | map(pixel & 0xFF);
}

bool ExceedsAlpha(TPixel pixel) {
  return std::max({pixel >> 16 & 0xFF, pixel >> 8 & 0xFF, pixel & 0xFF}) > pixel >> 24;
}

} // namespace

void Premultiply(std::span<TPixel> pPixels) noexcept {
  for (TPixel& pixel : pPixels) {
    const TPixel alpha = pixel >> 24;
    if (alpha != 255) pixel = MapColors(pixel, [alpha](TPixel part) { return (part * alpha + 127) / 255; });
  }
}

void Unpremultiply(std::span<TPixel> pPixels) noexcept {
  for (TPixel& pixel : pPixels) {
    const TPixel alpha = pixel >> 24;
    if (alpha == 0) {
      pixel = 0;
    } else if (alpha != 255) {
      pixel =
          MapColors(pixel, [alpha](TPixel part) { return std::min<TPixel>((part * 255 + alpha / 2) / alpha, 255); });
    }
  }
}

void MakeOpaque(std::span<TPixel> pPixels) noexcept {
  for (TPixel& pixel : pPixels) pixel |= AlphaBits;
}

TAlphaFormat DetectAlpha(std::span<const TPixel> pPixels) noexcept {
  if (std::ranges::none_of(pPixels, [](TPixel pixel) { return (pixel & AlphaBits) != 0; })) {
    return TAlphaFormat::afIgnored;
  }
  return std::ranges::any_of(pPixels, &ExceedsAlpha) ? TAlphaFormat::afDefined : TAlphaFormat::afPremultiplied;
}

} // namespace kiv
