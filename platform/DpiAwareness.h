#pragma once

#include <platform/Export.h>

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

/// True if the system lets a program ask for dark controls.
KIV_EXPORT bool IsDarkModeSupported();

} // namespace kiv
