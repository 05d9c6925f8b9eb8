#include <folder_view/CheckImages.h>

#include <graphics/StyleServices.h>

namespace kiv::sample {

std::unique_ptr<TImageList> MakeCheckImages(int pSize, int pDpi) {
  auto images = std::make_unique<TImageList>();
  images->SetSize(pSize, pSize);
  TStyleServices& style = StyleServices();
  for (const TThemeElement& element :
       {tbCheckBoxUncheckedDisabled, tbCheckBoxCheckedNormal, tbCheckBoxUncheckedNormal, tbCheckBoxMixedNormal}) {
    TBitmap bitmap(pSize, pSize);
    TCanvas& canvas = bitmap.GetCanvas();
    canvas.FillRect({0, 0, pSize, pSize}, style.GetSystemColor(clWindow));
    const SIZE box = style.GetElementSize(element, pDpi);
    const int left = (pSize - static_cast<int>(box.cx)) / 2;
    const int top = (pSize - static_cast<int>(box.cy)) / 2;
    style.DrawElement(canvas, element, {left, top, left + box.cx, top + box.cy}, pDpi);
    bitmap.MakeOpaque();
    images->Add(bitmap);
  }
  return images;
}

} // namespace kiv::sample
