#pragma once

#include <graphics/Color.h>
#include <platform/Export.h>

#include <cstdint>
#include <span>

namespace kiv {

/// One pixel of a picture with 32 bits: 0xAARRGGBB, which in memory is the order of the platform's bitmaps.
using TPixel = std::uint32_t;

/// An opaque pixel of a plain colour.
constexpr TPixel PixelOf(TColor pColor) noexcept {
  return 0xFF000000U | static_cast<TPixel>(RgbColor(BlueOf(pColor), GreenOf(pColor), RedOf(pColor)));
}

/// What the upper 8 bits of a picture's pixels mean.
enum class TAlphaFormat {
  afIgnored,      ///< nothing: the picture is opaque
  afDefined,      ///< how opaque the pixel is, its colours as they are: what files and icons have
  afPremultiplied ///< the same, with the colours multiplied by it already: what the platform blends
};

/// Multiplies the colours by the alpha, rounded.
KIV_EXPORT void Premultiply(std::span<TPixel> pPixels) noexcept;
/// Takes that back as well as 8 bits allow. Fully transparent pixels become 0.
KIV_EXPORT void Unpremultiply(std::span<TPixel> pPixels) noexcept;
/// Sets all alpha to 255.
KIV_EXPORT void MakeOpaque(std::span<TPixel> pPixels) noexcept;

/// What the alpha of a picture of unknown origin seems to mean. Without any alpha it is ignored, since old drawing
/// functions leave 0 there; colours above the alpha can't be premultiplied.
KIV_EXPORT TAlphaFormat DetectAlpha(std::span<const TPixel> pPixels) noexcept;

/// Scales a picture with bicubic filtering: pictures that shrink are averaged over all their pixels, those that grow
/// are smooth. Rows follow each other without gaps. Widths and heights are at least 1.
///
/// The picture is opaque or premultiplied, else transparent pixels' colours would show at edges; with
/// `pPremultiplied` no colour of the result exceeds its alpha. May raise std::bad_alloc.
KIV_EXPORT void ResamplePixels(const TPixel* pSource, int pSourceWidth, int pSourceHeight, TPixel* pTarget,
                               int pTargetWidth, int pTargetHeight, bool pPremultiplied);

} // namespace kiv
