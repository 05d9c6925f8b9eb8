#pragma once

#include <framework/Event.h>
#include <platform/Export.h>
#include <platform/MainThread.h>

namespace kiv {

/// A mouse pointer's number, as components store it. Positive numbers are free for applications.
using TCursor = int;
inline constexpr TCursor crDefault = 0; ///< each window's own
inline constexpr TCursor crArrow = -2;
inline constexpr TCursor crHourGlass = -11; ///< input waits
inline constexpr TCursor crAppStart = -19;  ///< works in the background, input is welcome

/// What concerns all windows of the process. One instance, Screen(); main thread only.
class KIV_EXPORT TScreen {
public:
  TScreen();
  ~TScreen();
  TScreen(const TScreen&) = delete;
  TScreen& operator=(const TScreen&) = delete;

  /// The pointer over all windows, unless it is crDefault.
  TCursor GetCursor() const noexcept { return fCursor; }
  void SetCursor(TCursor pCursor);
  /// What brings a changed pointer to the screen at once, without a move of the mouse. Windows set it.
  static void SetCursorHook(void (*pHook)()) noexcept;

  /// How many modal loops the library has entered and not left. Work that must not run behind a dialog's back asks it.
  int GetModalLevel() const noexcept { return fModalLevel; }

  /// Stands around each modal loop that the library enters (dialog, menu, drag): counts the level and lets closures
  /// that are queued to the main thread run inside the loop. Scopes nest.
  class KIV_EXPORT ScopedModal {
  public:
    ScopedModal();
    ~ScopedModal();
    ScopedModal(const ScopedModal&) = delete;
    ScopedModal& operator=(const ScopedModal&) = delete;

  private:
    TScreen& fScreen;
    TAliveWatch fWatch; // the library may be shut down from inside the loop
    MainThread::ScopedModalLoop fLoop;
  };

  /// Shows another pointer for as long as it stands.
  class KIV_EXPORT ScopedCursor {
  public:
    explicit ScopedCursor(TCursor pCursor);
    ~ScopedCursor();
    ScopedCursor(const ScopedCursor&) = delete;
    ScopedCursor& operator=(const ScopedCursor&) = delete;

  private:
    TScreen& fScreen;
    TAliveWatch fWatch;
    TCursor fOuter;
  };

private:
  TCursor fCursor = crDefault;
  int fModalLevel = 0;
  TAliveToken fAlive;
};

/// The one instance. Comes and goes with Application().
KIV_EXPORT TScreen& Screen();

} // namespace kiv
