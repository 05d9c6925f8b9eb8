#pragma once

#include <windows.h>

namespace kiv::test {

/// How many objects of the drawing system (fonts, bitmaps, contexts...) this process has. For counting before and
/// after: the platform keeps some of its own.
inline int CountGdiObjects() {
  if (const DWORD count = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)) return static_cast<int>(count);
  // Wine doesn't count. It knows a handle by its lower half.
  int count = 0;
  for (UINT_PTR handle = 1; handle <= 0xFFFF; ++handle) {
    if (GetObjectType(reinterpret_cast<HGDIOBJ>(handle)) != 0) ++count;
  }
  return count;
}

} // namespace kiv::test
