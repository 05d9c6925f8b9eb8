#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

namespace kiv {

/// Who adapts a window's pixels to its monitor ("DPI_AWARENESS_CONTEXT").
enum class TDpiAwareness {
  dpiUnaware,     ///< the system stretches
  dpiSystem,      ///< the program, for the main monitor; the system stretches on others
  dpiPerMonitor,  ///< the program, for each top-level window
  dpiPerMonitorV2 ///< the same, with dialogs, menus and non-client areas adapted by the system
};

/// The calling thread's awareness; the process's where the system doesn't know it by thread. dpiUnaware if it knows
/// neither. Windows made by the thread get it.
KIV_EXPORT TDpiAwareness GetDpiAwareness();

/// Dots per inch of the main monitor as the calling thread sees it, which is 96 for one that isn't aware
/// ("GetDpiForSystem"). Any thread.
KIV_EXPORT int GetSystemDpi();

/// Dots per inch that a window is to be drawn with ("GetDpiForWindow"); the system's where there is no such window.
KIV_EXPORT int GetWindowDpi(HWND pWindow);

/// A system metric (`SM_...`) in pixels at `pDpi` dots per inch ("GetSystemMetricsForDpi").
KIV_EXPORT int GetSystemMetric(int pIndex, int pDpi);

/// True if the system lets a program ask for dark controls.
KIV_EXPORT bool IsDarkModeSupported();

} // namespace kiv
