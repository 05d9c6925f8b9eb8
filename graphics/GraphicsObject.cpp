#include <graphics/GraphicsObject.h>

namespace kiv {

TGraphicsObject::~TGraphicsObject() = default;

void TGraphicsObject::Changed() {
  if (!fOnChange) return;
  const TNotifyEvent event = fOnChange;
  event(this);
}

} // namespace kiv
