#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

namespace kiv {

/// For the host's message loop, before TranslateMessage and DispatchMessage: true if the library used the message up.
///
///     while (GetMessageW(&message, nullptr, 0, 0) > 0) {
///       if (kiv::PreTranslateMessage(message)) continue;
///       TranslateMessage(&message);
///       DispatchMessageW(&message);
///     }
///
/// It gives menus their short cuts and controls their navigation: Tab and arrows, Enter and Esc for buttons, letters
/// with Alt. Messages for windows that don't belong to the library stay as they are. Without it the controls work, but
/// for these keys; a host with "IsDialogMessage" in its loop has the Tab key all the same. Main thread. What a handler
/// raises goes to the application's HandleException.
KIV_EXPORT bool PreTranslateMessage(const MSG& pMessage);

} // namespace kiv
