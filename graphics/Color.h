#pragma once

#include <platform/Export.h>

#include <cstdint>

namespace kiv {

/// A colour as components store it: 0x00BBGGRR, the order of the platform's `COLORREF`; or, with the top byte 0xFF, the
/// number of a system colour ("GetSysColor"); or clNone or clDefault.
using TColor = std::int32_t;

namespace detail {
constexpr TColor SystemColor(int pIndex) noexcept {
  return static_cast<TColor>(0xFF000000U | static_cast<std::uint32_t>(pIndex));
}
} // namespace detail

inline constexpr TColor clScrollBar = detail::SystemColor(0);
inline constexpr TColor clBackground = detail::SystemColor(1);
inline constexpr TColor clActiveCaption = detail::SystemColor(2);
inline constexpr TColor clInactiveCaption = detail::SystemColor(3);
inline constexpr TColor clMenu = detail::SystemColor(4);
inline constexpr TColor clWindow = detail::SystemColor(5);
inline constexpr TColor clWindowFrame = detail::SystemColor(6);
inline constexpr TColor clMenuText = detail::SystemColor(7);
inline constexpr TColor clWindowText = detail::SystemColor(8);
inline constexpr TColor clCaptionText = detail::SystemColor(9);
inline constexpr TColor clActiveBorder = detail::SystemColor(10);
inline constexpr TColor clInactiveBorder = detail::SystemColor(11);
inline constexpr TColor clAppWorkSpace = detail::SystemColor(12);
inline constexpr TColor clHighlight = detail::SystemColor(13);
inline constexpr TColor clHighlightText = detail::SystemColor(14);
inline constexpr TColor clBtnFace = detail::SystemColor(15);
inline constexpr TColor clBtnShadow = detail::SystemColor(16);
inline constexpr TColor clGrayText = detail::SystemColor(17);
inline constexpr TColor clBtnText = detail::SystemColor(18);
inline constexpr TColor clInactiveCaptionText = detail::SystemColor(19);
inline constexpr TColor clBtnHighlight = detail::SystemColor(20);
inline constexpr TColor cl3DDkShadow = detail::SystemColor(21);
inline constexpr TColor cl3DLight = detail::SystemColor(22);
inline constexpr TColor clInfoText = detail::SystemColor(23);
inline constexpr TColor clInfoBk = detail::SystemColor(24);
inline constexpr TColor clHotLight = detail::SystemColor(26);
inline constexpr TColor clGradientActiveCaption = detail::SystemColor(27);
inline constexpr TColor clGradientInactiveCaption = detail::SystemColor(28);
inline constexpr TColor clMenuHighlight = detail::SystemColor(29);
inline constexpr TColor clMenuBar = detail::SystemColor(30);

inline constexpr TColor clBlack = 0x000000;
inline constexpr TColor clMaroon = 0x000080;
inline constexpr TColor clGreen = 0x008000;
inline constexpr TColor clOlive = 0x008080;
inline constexpr TColor clNavy = 0x800000;
inline constexpr TColor clPurple = 0x800080;
inline constexpr TColor clTeal = 0x808000;
inline constexpr TColor clGray = 0x808080;
inline constexpr TColor clSilver = 0xC0C0C0;
inline constexpr TColor clRed = 0x0000FF;
inline constexpr TColor clLime = 0x00FF00;
inline constexpr TColor clYellow = 0x00FFFF;
inline constexpr TColor clBlue = 0xFF0000;
inline constexpr TColor clFuchsia = 0xFF00FF;
inline constexpr TColor clAqua = 0xFFFF00;
inline constexpr TColor clWhite = 0xFFFFFF;

/// No colour: nothing is drawn there.
inline constexpr TColor clNone = 0x1FFFFFFF;
/// The colour that whatever draws would choose by itself.
inline constexpr TColor clDefault = 0x20000000;

constexpr bool IsSystemColor(TColor pColor) noexcept {
  return (static_cast<std::uint32_t>(pColor) & 0xFF000000U) == 0xFF000000U;
}

constexpr TColor RgbColor(int pRed, int pGreen, int pBlue) noexcept {
  return (pRed & 0xFF) | (pGreen & 0xFF) << 8 | (pBlue & 0xFF) << 16;
}
/// Parts of a plain colour, 0..255.
constexpr int RedOf(TColor pColor) noexcept {
  return pColor & 0xFF;
}
constexpr int GreenOf(TColor pColor) noexcept {
  return pColor >> 8 & 0xFF;
}
constexpr int BlueOf(TColor pColor) noexcept {
  return pColor >> 16 & 0xFF;
}

/// `pWeight` parts of 255 of the first plain colour, the rest of the second one.
constexpr TColor MixColors(TColor pFirst, TColor pSecond, int pWeight) noexcept {
  const auto mix = [pWeight](int a, int b) { return (a * pWeight + b * (255 - pWeight) + 127) / 255; };
  return RgbColor(mix(RedOf(pFirst), RedOf(pSecond)), mix(GreenOf(pFirst), GreenOf(pSecond)),
                  mix(BlueOf(pFirst), BlueOf(pSecond)));
}

/// How bright a plain colour looks, 0..255.
constexpr int LuminanceOf(TColor pColor) noexcept {
  return (RedOf(pColor) * 299 + GreenOf(pColor) * 587 + BlueOf(pColor) * 114 + 500) / 1000;
}
constexpr bool IsDarkColor(TColor pColor) noexcept {
  return LuminanceOf(pColor) < 128;
}

#if defined(_WIN32)
/// The plain colour that a colour stands for now: a system colour is looked up, clDefault is the colour of windows.
/// clNone has none; it counts as white, as the platform's `CLR_NONE` does in its functions. Any thread.
KIV_EXPORT TColor ColorToRGB(TColor pColor);
#endif

} // namespace kiv
