#include <framework/ScaledPixels.h>

#include <platform/DpiAwareness.h>

namespace kiv {

int ScaledPixels(int pPixels) {
  return ScaledPixels(pPixels, GetSystemDpi());
}

} // namespace kiv
