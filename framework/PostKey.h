#pragma once

#include <framework/ShiftState.h>
#include <platform/Export.h>
#include <platform/Types.h>

namespace kiv {

/// Presses and releases a key as the user would: whatever window has the focus gets it ("SendInput"). `pKey` is a
/// virtual key code. The modifiers in `pShift` (ssShift, ssCtrl, ssAlt) are held down around it; its mouse buttons
/// don't count. `pSpecialKey`: the key is one of the extended ones, such as the arrows or the right-hand Ctrl key.
/// False if the platform refuses, as it does while a program of higher privileges has the focus; then nothing was
/// pressed.
KIV_EXPORT bool PostKeyEx32(WORD pKey, TShiftState pShift, bool pSpecialKey);

/// Posts the pressing and releasing of a key to one window. If the window belongs to the calling thread and modifiers
/// are given, its key messages are delivered before the call returns, those that waited already as they are, then these
/// with the modifiers seen as down; otherwise they wait in the window's queue. A window of another thread gets messages
/// for the modifiers, too, but its thread doesn't see them as down by GetKeyState. False if the window can't be posted
/// to.
KIV_EXPORT bool PostKeyToHWND(HWND pWindow, WORD pKey, TShiftState pShift, bool pSpecialKey);

} // namespace kiv
