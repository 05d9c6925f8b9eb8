#pragma once

#include <forms/Layout.h>
#include <framework/Event.h>
#include <framework/PropertyValue.h>
#include <framework/Set.h>
#include <framework/ShiftState.h>
#include <platform/Types.h>

namespace kiv {

enum class TMouseButton { mbLeft, mbRight, mbMiddle };

/// What a class of controls is like. Set by constructors.
enum class TControlStyleFlag {
  csAcceptsControls, ///< designers may put others in
  csCaptureMouse,    ///< holds the mouse while the left button is down
  csClickEvents,     ///< a press and release of the left button is a click
  csSetCaption,      ///< its text follows its name until it gets another
  csOpaque,          ///< paints all of its area, so that nothing is erased behind it
  csDoubleClicks,    ///< a second press is a double click, else one more click
  csReflector,       ///< takes notifications of its window's children that no control claims
  csNoDesignVisible  ///< can be invisible in a designer too
};
using TControlStyle = TSet<TControlStyleFlag>;

enum class TControlStateFlag {
  csLButtonDown,     ///< the left button went down here
  csClicked,         ///< and its release will be a click; an override may take it out
  csFocusing,        ///< the focus is on its way here
  csCustomPaint,     ///< paints by PaintWindow, not by the window class
  csRecreating,      ///< its window goes and another comes
  csDestroyingHandle ///< its window is on the way out
};
using TControlState = TSet<TControlStateFlag>;

/// Direction of reading: whether text, scroll bar and order are those of scripts from right to left.
enum class TBiDiMode { bdLeftToRight, bdRightToLeft, bdRightToLeftNoAlign, bdRightToLeftReadingOnly };

/// A part of a control that styles draw.
enum class TStyleElement { seFont, seClient, seBorder };
using TStyleElements = TSet<TStyleElement>;

enum class TBorderStyle { bsNone, bsSingle };

using TMouseEvent = TEvent<TPersistent*, TMouseButton, TShiftState, int, int>;
using TMouseMoveEvent = TEvent<TPersistent*, TShiftState, int, int>;
/// The wheel's turn in units of `WHEEL_DELTA`, and the point on the screen. Set the last to true to use it up.
using TMouseWheelEvent = TEvent<TPersistent*, TShiftState, int, POINT, bool&>;
/// A virtual key; set it to 0 to use it up.
using TKeyEvent = TEvent<TPersistent*, WORD&, TShiftState>;
/// A character; set it to 0 to use it up.
using TKeyPressEvent = TEvent<TPersistent*, wchar_t&>;
/// A point of the control, (-1, -1) if the menu is wanted by the keyboard. Set the last to true if it has been shown.
using TContextPopupEvent = TEvent<TPersistent*, POINT, bool&>;

template <>
struct TEnumNames<TAlign> {
  static constexpr TEnumName<TAlign> Values[] = {{TAlign::alNone, L"alNone"},     {TAlign::alTop, L"alTop"},
                                                 {TAlign::alBottom, L"alBottom"}, {TAlign::alLeft, L"alLeft"},
                                                 {TAlign::alRight, L"alRight"},   {TAlign::alClient, L"alClient"},
                                                 {TAlign::alCustom, L"alCustom"}};
};
template <>
struct TEnumNames<TAnchorKind> {
  static constexpr TEnumName<TAnchorKind> Values[] = {{TAnchorKind::akLeft, L"akLeft"},
                                                      {TAnchorKind::akTop, L"akTop"},
                                                      {TAnchorKind::akRight, L"akRight"},
                                                      {TAnchorKind::akBottom, L"akBottom"}};
};
template <>
struct TEnumNames<TStyleElement> {
  static constexpr TEnumName<TStyleElement> Values[] = {{TStyleElement::seFont, L"seFont"},
                                                        {TStyleElement::seClient, L"seClient"},
                                                        {TStyleElement::seBorder, L"seBorder"}};
};
template <>
struct TEnumNames<TBorderStyle> {
  static constexpr TEnumName<TBorderStyle> Values[] = {{TBorderStyle::bsNone, L"bsNone"},
                                                       {TBorderStyle::bsSingle, L"bsSingle"}};
};
template <>
struct TEnumNames<TBiDiMode> {
  static constexpr TEnumName<TBiDiMode> Values[] = {{TBiDiMode::bdLeftToRight, L"bdLeftToRight"},
                                                    {TBiDiMode::bdRightToLeft, L"bdRightToLeft"},
                                                    {TBiDiMode::bdRightToLeftNoAlign, L"bdRightToLeftNoAlign"},
                                                    {TBiDiMode::bdRightToLeftReadingOnly, L"bdRightToLeftReadingOnly"}};
};

} // namespace kiv
