#pragma once

#include <framework/ShiftState.h>
#include <platform/Types.h>

#include <chrono>
#include <functional>
#include <string>

namespace kiv::test {

/// What drives windows in a test: a host's message loop, input as the user would give it, and looks at the result.

/// Stands between the loop and the dispatch of each message, as a host's pre-translation does; true if it used the
/// message up. None at first.
void SetPreTranslate(std::function<bool(MSG&)> pHook);

/// Runs the message loop until the condition holds. False when the time is over: then the state of all windows of this
/// thread, focus and capture stand in the error stream.
[[nodiscard]] bool PumpUntil(const std::function<bool()>& pCondition,
                             std::chrono::milliseconds pLimit = std::chrono::seconds(20));
/// Handles what waits now, and what that leads to, until nothing is left.
void PumpMessages();
/// Writes class, text, place and state of the thread's windows to the error stream.
void DumpWindows();

/// Presses and releases a key through the window system, and handles what comes of it.
void PressKey(WORD pKey, TShiftState pShift = {});
/// Types characters of the keyboard's layout.
void TypeText(const std::wstring& pText);

/// Points of the screen. Each call handles what comes of it.
void MoveMouse(POINT pScreen);
void PressMouse(TShiftStateFlag pButton = TShiftStateFlag::ssLeft);
void ReleaseMouse(TShiftStateFlag pButton = TShiftStateFlag::ssLeft);
void ClickMouse(POINT pScreen, TShiftStateFlag pButton = TShiftStateFlag::ssLeft);
void TurnWheel(int pDelta, bool pSideways = false);
/// A point of a window's client area on the screen.
POINT PointOf(HWND pWindow, int pX, int pY);
/// Its middle.
POINT MiddleOf(HWND pWindow);

/// Tells the top-level windows of this thread what the platform tells all that there are, and no others.
void TellTopLevelWindows(UINT pMessage, WPARAM pWParam, LPARAM pLParam);

/// A pixel of a window's client area as it stands on the screen, 0x00BBGGRR.
COLORREF PixelOf(HWND pWindow, int pX, int pY);
/// How many pixels of a window's client area have a colour.
int CountPixels(HWND pWindow, COLORREF pColor);

/// A window of a host that knows nothing of the library: its own class, and whatever messages come are noted.
class THostWindow {
public:
  THostWindow(int pWidth = 400, int pHeight = 300);
  ~THostWindow();
  THostWindow(const THostWindow&) = delete;
  THostWindow& operator=(const THostWindow&) = delete;

  HWND Get() const noexcept { return fHandle; }
  /// Ends the window as its host would.
  void Destroy();
  /// How often a message came.
  int CountOf(UINT pMessage) const;
  /// Answers for a message of the host's own; true if it did.
  std::function<bool(UINT, WPARAM, LPARAM, LRESULT&)> onMessage;

private:
  static LRESULT CALLBACK Procedure(HWND pWindow, UINT pMessage, WPARAM pWParam, LPARAM pLParam);

  HWND fHandle = nullptr;
  int fCounts[0x400] = {};
};

} // namespace kiv::test
