#pragma once

#include <platform/Types.h>

namespace kiv {

/// A window of the host's or of ours. Elsewhere than on Windows a value that is only passed through.
#if defined(_WIN32)
using TWindowHandle = HWND;
#else
using TWindowHandle = void*;
#endif

/// Offered by components that have a window: non-visual components which they own take it for the parent of dialogs.
class IWindowOwner {
public:
  /// The window if it is there already; null otherwise. Makes none. Any thread.
  virtual TWindowHandle AllocatedHandle() const noexcept = 0;

protected:
  ~IWindowOwner() = default;
};

} // namespace kiv
