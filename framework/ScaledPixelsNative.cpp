#include <framework/ScaledPixels.h>

namespace kiv {

int ScaledPixels(int pPixels) {
  return pPixels; // no screen to ask
}

} // namespace kiv
