#pragma once

#include <platform/Types.h>

namespace kiv {

/// A window of the host's or of ours. Elsewhere than on Windows a value that is only passed through.
#if defined(_WIN32)
using TWindowHandle = HWND;
#else
using TWindowHandle = void*;
#endif

} // namespace kiv
