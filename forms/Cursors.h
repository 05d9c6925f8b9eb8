#pragma once

#include <framework/Screen.h>
#include <platform/Types.h>

namespace kiv {

// The system's pointers beside those in framework/Screen.h.
inline constexpr TCursor crNone = -1;
inline constexpr TCursor crCross = -3;
inline constexpr TCursor crIBeam = -4;
inline constexpr TCursor crSizeNESW = -6;
inline constexpr TCursor crSizeNS = -7;
inline constexpr TCursor crSizeNWSE = -8;
inline constexpr TCursor crSizeWE = -9;
inline constexpr TCursor crUpArrow = -10;
inline constexpr TCursor crHSplit = -14; ///< moves a border left and right
inline constexpr TCursor crVSplit = -15; ///< moves a border up and down
inline constexpr TCursor crNo = -18;
inline constexpr TCursor crHelp = -20;
inline constexpr TCursor crHandPoint = -21;
inline constexpr TCursor crSizeAll = -22;

/// The system's pointer of a number, which nobody frees; null for crNone and crDefault, and the arrow for a number
/// that isn't known.
KIV_EXPORT HCURSOR CursorHandle(TCursor pCursor) noexcept;

/// Gives a positive number its pointer, which stays the caller's. Null takes it back.
KIV_EXPORT void SetCursorHandle(TCursor pCursor, HCURSOR pHandle);

} // namespace kiv
