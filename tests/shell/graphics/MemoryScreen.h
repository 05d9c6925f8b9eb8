#pragma once

#include <graphics/Color.h>
#include <platform/Handles.h>

namespace kiv::test {

/// A context on pixels in memory, white at first.
class TMemoryScreen {
public:
  TMemoryScreen(int pWidth, int pHeight) : fDc(CreateCompatibleDC(nullptr)) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), pWidth, -pHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    fBitmap.Reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    fOld = SelectObject(fDc.Get(), fBitmap.Get());
    PatBlt(fDc.Get(), 0, 0, pWidth, pHeight, WHITENESS);
  }
  TMemoryScreen(const TMemoryScreen&) = delete;
  TMemoryScreen& operator=(const TMemoryScreen&) = delete;
  ~TMemoryScreen() { SelectObject(fDc.Get(), fOld); }

  HDC Dc() const { return fDc.Get(); }
  TColor At(int pX, int pY) const { return static_cast<TColor>(GetPixel(fDc.Get(), pX, pY)); }
  /// How many pixels of a rectangle differ from a colour.
  int CountOthers(const RECT& pRect, TColor pColor) const {
    int count = 0;
    for (int y = pRect.top; y < pRect.bottom; ++y) {
      for (int x = pRect.left; x < pRect.right; ++x) count += At(x, y) != pColor;
    }
    return count;
  }

private:
  TUniqueMemoryDc fDc;
  TUniqueBitmap fBitmap;
  HGDIOBJ fOld;
};

} // namespace kiv::test
