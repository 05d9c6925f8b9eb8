#include <graphics/Color.h>

#include <windows.h>

namespace kiv {

TColor ColorToRGB(TColor pColor) {
  if (pColor == clDefault) pColor = clWindow;
  if (IsSystemColor(pColor)) return static_cast<TColor>(GetSysColor(pColor & 0xFF));
  return pColor & 0xFFFFFF;
}

} // namespace kiv
