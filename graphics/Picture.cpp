#include <graphics/Picture.h>

namespace kiv {

TPicture::~TPicture() = default;

void TPicture::Assign(const TPersistent* pSource) {
  if (const auto* const picture = dynamic_cast<const TPicture*>(pSource)) {
    SetBitmap(picture->fBitmap.Clone());
  } else if (const auto* const bitmap = dynamic_cast<const TBitmap*>(pSource)) {
    SetBitmap(bitmap->Clone());
  } else {
    TGraphicsObject::Assign(pSource);
  }
}

void TPicture::SetBitmap(TBitmap pBitmap) {
  if (fBitmap.IsEmpty() && pBitmap.IsEmpty()) return;
  fBitmap = std::move(pBitmap);
  Changed();
}

} // namespace kiv
