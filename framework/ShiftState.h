#pragma once

#include <framework/Set.h>

namespace kiv {

/// The keys and mouse buttons that are down while something happens.
enum class TShiftStateFlag { ssShift, ssAlt, ssCtrl, ssLeft, ssRight, ssMiddle, ssDouble, ssTouch, ssPen };

using TShiftState = TSet<TShiftStateFlag>;

} // namespace kiv
