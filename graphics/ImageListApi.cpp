#include <graphics/ImageListApi.h>

#include <platform/ActivationContext.h>

#include <algorithm>

namespace kiv {

namespace {

template <typename F>
F Entry(const char* name) {
  const FARPROC found = GetProcAddress(CommonControlsApi().module, name);
  if (!found) throw EInvalidGraphic(E_NOTIMPL, L"Image lists can't be used");
  return reinterpret_cast<F>(reinterpret_cast<void*>(found));
}

// The system's own list loads its images one by one. Others have all of theirs.
void PrepareImage(IImageList& list, int index) {
  ComPtr<IImageList2> sparse;
  if (SUCCEEDED(
          list.QueryInterface(__uuidof(IImageList2), reinterpret_cast<void**>(sparse.ReleaseAndGetAddressOf())))) {
    sparse->ForceImagePresent(index, ILFIP_ALWAYS);
  }
}

// Onto one colour, as the platform draws it.
TBitmap DrawOn(TColor color, IImageList& list, int index, UINT overlay, int over, int width, int height) {
  TBitmap bitmap(width, height);
  bitmap.GetCanvas().FillRect({0, 0, width, height}, color);
  IMAGELISTDRAWPARAMS draw{};
  draw.i = index;
  draw.hdcDst = bitmap.GetCanvas().GetHandle();
  draw.rgbBk = CLR_NONE;
  draw.rgbFg = CLR_NONE;
  draw.fStyle = ILD_TRANSPARENT | overlay;
  DrawImage(list, draw, over);
  return bitmap;
}

} // namespace

ComPtr<IImageList> MakeImageList(int pWidth, int pHeight, bool pMasked, int pRoom) {
  static const auto create = Entry<decltype(&ImageList_Create)>("ImageList_Create");
  const UINT flags = pMasked ? ILC_COLOR32 | ILC_MASK : ILC_COLOR32;
  const HIMAGELIST handle = create(pWidth, pHeight, flags, pRoom, pRoom);
  if (!handle) throw EInvalidGraphic(E_OUTOFMEMORY, L"The image list can't be made");
  ComPtr<IImageList> list = ImageListOf(handle);
  list->Release(); // the handle's
  return list;
}

ComPtr<IImageList> ImageListOf(HIMAGELIST pHandle) {
  static const auto query = Entry<decltype(&HIMAGELIST_QueryInterface)>("HIMAGELIST_QueryInterface");
  ComPtr<IImageList> list;
  const HRESULT hr = query(pHandle, __uuidof(IImageList), reinterpret_cast<void**>(list.ReleaseAndGetAddressOf()));
  if (FAILED(hr)) throw EInvalidGraphic(hr, L"The image list can't be used");
  return list;
}

void DrawImage(IImageList& pList, IMAGELISTDRAWPARAMS pDraw, int pOver) {
  pDraw.cbSize = sizeof(pDraw);
  pDraw.himl = IImageListToHIMAGELIST(&pList);
  PrepareImage(pList, pDraw.i);
  pList.Draw(&pDraw);
  if (pOver < 0) return;
  pDraw.i = pOver;
  pDraw.fStyle = ILD_TRANSPARENT;
  PrepareImage(pList, pOver);
  pList.Draw(&pDraw);
}

TBitmap ImageOf(IImageList& pList, int pIndex, UINT pOverlay, int pOver) {
  int width = 0;
  int height = 0;
  if (FAILED(pList.GetIconSize(&width, &height))) return {};
  // What differs between black and white is what shows through: true of masks, alpha and overlays alike, and of each
  // version's ways to keep them.
  TBitmap black = DrawOn(clBlack, pList, pIndex, pOverlay, pOver, width, height);
  const TBitmap white = DrawOn(clWhite, pList, pIndex, pOverlay, pOver, width, height);
  const auto on_white = white.Pixels();
  const auto on_black = black.Pixels();
  for (std::size_t i = 0; i < on_black.size(); ++i) {
    const auto through = [&](int shift) {
      return static_cast<int>(on_white[i] >> shift & 0xFF) - static_cast<int>(on_black[i] >> shift & 0xFF);
    };
    const int alpha = 255 - std::clamp(std::min({through(0), through(8), through(16)}), 0, 255);
    on_black[i] = static_cast<TPixel>(alpha) << 24 | (on_black[i] & 0xFFFFFF);
  }
  black.DeclareAlphaFormat(TAlphaFormat::afPremultiplied);
  return black;
}

} // namespace kiv
