#pragma once

#include <forms/WinControl.h>

namespace kiv {

/// What stands between a window and its control, from the window's first message to its last.
///
/// The control may die while a message of its window is being handled: in the window class's own procedure, which calls
/// out to the application and then goes on with its memory. So such a window outlives its control, hidden and without a
/// parent, until the outermost message has returned.
struct TWindowLink {
  HWND window = nullptr;
  TWinControl* control = nullptr; ///< null once the control has gone
  int depth = 0;                  ///< messages of this window that are being handled
  int frames = 0;                 ///< those of them that came through the window's procedures
  bool hasEnded = false;          ///< the window has been told that it is destroyed
  bool isOwnClass = false;        ///< the window class is the library's: its procedure holds nothing

  /// Makes a window whose messages come to the control, the very first included. Null if the platform refuses; see
  /// "GetLastError".
  static TWindowLink* Create(TWinControl& pControl, const TCreateParams& pParams);
  /// Takes the control from the window and ends the window, at once or as soon as it can.
  void Abandon() noexcept;
  /// The window has gone, though its last message was kept from the link, and so has the link.
  void Bury() noexcept;
  /// The next procedure of the window: the class's, or that of whoever stands between. Does nothing outside of a
  /// message that came through the window's procedures.
  LRESULT CallDefault(const TMessage& pMessage) const;
  /// The class's procedure, past all that stand between. The link may be gone after.
  LRESULT CallClass(UINT pMessage, WPARAM pWParam, LPARAM pLParam);

  /// Null as well for a window that has gone, whoever has its number now: its link is buried then.
  static TWindowLink* Of(HWND pWindow) noexcept;

private:
  friend LRESULT CALLBACK WindowLinkProc(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);
  LRESULT Deliver(const TMessage& pMessage);
  bool Stands() const noexcept;
  void LetGo();
};

/// For a control in a window of the host's: sees to it that the notifications that the window gets about this control
/// come to the control. Counted: one call of each for every control.
void WatchParentWindow(HWND pParent);
void UnwatchParentWindow(HWND pParent) noexcept;

} // namespace kiv
