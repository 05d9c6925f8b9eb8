#pragma once

#include <framework/ShiftState.h>
#include <platform/Export.h>
#include <platform/ResourceText.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace kiv {

/// A key with Shift, Ctrl and Alt: the virtual key in the low byte, bits for the others. 0 is none.
using TShortCut = std::uint16_t;
inline constexpr TShortCut scNone = 0;
inline constexpr TShortCut scShift = 0x2000;
inline constexpr TShortCut scCtrl = 0x4000;
inline constexpr TShortCut scAlt = 0x8000;

/// "Shift+", "Ctrl+", "Alt+"
KIV_EXPORT extern const TResourceText _sKeyShift;
KIV_EXPORT extern const TResourceText _sKeyCtrl;
KIV_EXPORT extern const TResourceText _sKeyAlt;

KIV_EXPORT TShortCut MakeShortCut(std::uint16_t pKey, TShiftState pShift) noexcept;
/// As menus show it: "Ctrl+Shift+Del". Empty for scNone and for keys without a name.
KIV_EXPORT std::wstring ShortCutToText(TShortCut pShortCut);
/// The other way; case doesn't count. scNone for what isn't one.
KIV_EXPORT TShortCut TextToShortCut(std::wstring_view pText);

} // namespace kiv
