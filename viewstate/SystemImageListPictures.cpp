// Icons as pictures.
#include <viewstate/SystemImageList.h>

#include <algorithm>
#include <utility>

namespace kiv {

TBitmap TKivSystemImageList::GetAsBitmap(int pIndex, int pWidth, int pHeight, TColor pBackground) {
  const int side = std::min(pWidth, pHeight);
  if (side < 1) return {};
  TBitmap image = SystemImage(pIndex, side);
  if (image.IsEmpty() || (pWidth == pHeight && pBackground == clNone)) return image;
  TBitmap picture(pWidth, pHeight, TAlphaFormat::afPremultiplied);
  if (pBackground != clNone) {
    std::ranges::fill(picture.Pixels(), PixelOf(ColorToRGB(pBackground)));
    picture.DeclareAlphaFormat(TAlphaFormat::afIgnored);
  }
  picture.GetCanvas().Draw((pWidth - side) / 2, (pHeight - side) / 2, image);
  if (pBackground != clNone) picture.MakeOpaque();
  return picture;
}

int TKivSystemImageList::CopySystemImageTo(int pIndex, TCustomImageList& pTarget) {
  const int width = pTarget.GetWidth();
  const int height = pTarget.GetHeight();
  const TBitmap picture = GetAsBitmap(pIndex, width, height);
  return picture.IsEmpty() ? -1 : pTarget.Add(picture);
}

void TKivSystemImageList::ConvertTo32BitImageList(TCustomImageList& pList) {
  TImageList copy;
  copy.Assign(&pList);
  pList.SetShareImages(false);
  pList.Assign(&copy);
}

} // namespace kiv
