#pragma once

#include <platform/Types.h>

#include <olectl.h>

namespace kiv {

/// A message on its way through a control. `Result` is what the sender gets.
struct TMessage {
  UINT Msg = 0;
  WPARAM WParam = 0;
  LPARAM LParam = 0;
  LRESULT Result = 0;
};

/// The library's own messages. They go through WndProc like those of the platform, but only between controls (Perform):
/// no window gets them, so they can't meet a host's messages of the same number.
enum : UINT {
  CM_BASE = WM_APP + 0x3000,
  CM_ENTER,      ///< a control here or below gets the focus
  CM_EXIT,       ///< and loses it
  CM_MOUSEENTER, ///< the mouse pointer comes onto the control
  CM_MOUSELEAVE, ///< and leaves it
  CM_ENABLEDCHANGED,
  CM_VISIBLECHANGED,
  CM_SHOWINGCHANGED, ///< the window is to be shown or hidden
  CM_TEXTCHANGED,
  CM_FONTCHANGED,
  CM_COLORCHANGED,
  CM_CURSORCHANGED,
  CM_BIDIMODECHANGED,
  CM_TABSTOPCHANGED,
  CM_PARENTFONTCHANGED, ///< the parent's font changed
  CM_PARENTCOLORCHANGED,
  CM_PARENTSHOWHINTCHANGED,
  CM_PARENTBIDIMODECHANGED,
  CM_HITTEST,        ///< LParam: a point of the control; Result other than 0: it belongs to the control
  CM_DESIGNHITTEST,  ///< the same while designing: the control wants its mouse messages all the same
  CM_HINTSHOW,       ///< LParam: THintInfo*; Result other than 0: no hint
  CM_DIALOGKEY,      ///< WParam: a key that no control wanted; Result other than 0: it is used up
  CM_DIALOGCHAR,     ///< WParam: a character pressed with Alt; Result other than 0: it is used up
  CM_WANTSPECIALKEY, ///< WParam: a navigation key; Result other than 0: the control wants it for itself
  CM_CHILDKEY,       ///< WParam: a key for a control below, LParam: that control; Result other than 0: used up
  CM_CHILDFOCUSED,   ///< LParam: a control below that has got the focus
  CM_THEMECHANGED,   ///< the platform's themes or colours changed
  CM_RECREATEWND,
  CM_INVALIDATE
};

/// A notification that the platform sends to a control's parent, handed to the control itself: its number with this
/// added ("OCM__BASE").
enum : UINT {
  CN_BASE = OCM__BASE,
  CN_COMMAND = CN_BASE + WM_COMMAND,
  CN_NOTIFY = CN_BASE + WM_NOTIFY,
  CN_DRAWITEM = CN_BASE + WM_DRAWITEM,
  CN_MEASUREITEM = CN_BASE + WM_MEASUREITEM,
  CN_DELETEITEM = CN_BASE + WM_DELETEITEM,
  CN_COMPAREITEM = CN_BASE + WM_COMPAREITEM,
  CN_HSCROLL = CN_BASE + WM_HSCROLL,
  CN_VSCROLL = CN_BASE + WM_VSCROLL,
  CN_CTLCOLORMSGBOX = CN_BASE + WM_CTLCOLORMSGBOX,
  CN_CTLCOLOREDIT = CN_BASE + WM_CTLCOLOREDIT,
  CN_CTLCOLORLISTBOX = CN_BASE + WM_CTLCOLORLISTBOX,
  CN_CTLCOLORBTN = CN_BASE + WM_CTLCOLORBTN,
  CN_CTLCOLORSCROLLBAR = CN_BASE + WM_CTLCOLORSCROLLBAR,
  CN_CTLCOLORSTATIC = CN_BASE + WM_CTLCOLORSTATIC,
  // Keys, before the control's window gets them.
  CN_KEYDOWN = CN_BASE + WM_KEYDOWN,
  CN_KEYUP = CN_BASE + WM_KEYUP,
  CN_CHAR = CN_BASE + WM_CHAR,
  CN_SYSKEYDOWN = CN_BASE + WM_SYSKEYDOWN,
  CN_SYSCHAR = CN_BASE + WM_SYSCHAR
};

constexpr bool IsControlMessage(UINT pMessage) noexcept {
  return pMessage >= CM_BASE && pMessage <= CM_INVALIDATE;
}
/// True for a reflected notification and for a key on its way to the window.
constexpr bool IsReflectedMessage(UINT pMessage) noexcept {
  return pMessage >= CN_BASE && pMessage < CN_BASE + WM_USER;
}

} // namespace kiv
