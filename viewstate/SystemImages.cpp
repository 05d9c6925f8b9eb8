#include <viewstate/SystemImages.h>

#include <platform/FaultGuard.h>
#include <platform/ShellApi.h>

#include <algorithm>

namespace kiv {

namespace {

struct TSizeData {
  int number;
  int height;
};
constexpr TSizeData Sizes[] = {{0, 32}, {1, 16}, {2, 48}, {3, 16}, {4, 256}, {-1, -1}};

const TSizeData& DataOf(TKivImageListSize size) noexcept {
  return Sizes[static_cast<std::size_t>(size)];
}

TBitmap ImageFrom(TKivImageListSize size, int index) {
  const ComPtr<IImageList> list = SystemImages(size);
  int count = 0;
  if (!list || FAILED(list->GetImageCount(&count)) || index < 0 || index >= count) return {};
  return ImageOf(*list.Get(), index);
}

// An icon that has no large picture lies in the corner of an empty large one.
bool LiesInCorner(const TBitmap& picture, int corner) {
  for (int y = 0; y < picture.GetHeight(); ++y) {
    const TPixel* const row = picture.ScanLine(y);
    const int left = y < corner ? std::min(corner, picture.GetWidth()) : 0;
    if (std::any_of(row + left, row + picture.GetWidth(), [](TPixel pixel) { return pixel >> 24 != 0; })) return false;
  }
  return true;
}

} // namespace

int TKivImageListSizeHelper::ToInt(TKivImageListSize pSize) noexcept {
  return DataOf(pSize).number;
}

int TKivImageListSizeHelper::GetDefaultHeight(TKivImageListSize pSize) noexcept {
  return DataOf(pSize).height;
}

int TKivImageListSizeHelper::GetSize(TKivImageListSize pSize) {
  int width = 0;
  int height = 0;
  const ComPtr<IImageList> list = SystemImages(pSize);
  return list && SUCCEEDED(list->GetIconSize(&width, &height)) ? height : GetDefaultHeight(pSize);
}

ComPtr<IImageList> SystemImages(TKivImageListSize pSize) {
  const int number = TKivImageListSizeHelper::ToInt(pSize);
  ComPtr<IImageList> list;
  if (number < 0) return list;
  const HRESULT hr = GuardedExport(ShellApi().SHGetImageList, number, __uuidof(IImageList),
                                   reinterpret_cast<void**>(list.ReleaseAndGetAddressOf()));
  if (FAILED(hr)) list.Reset();
  return list;
}

TBitmap SystemImage(int pIndex, int pSize) {
  using enum TKivImageListSize;
  for (const auto size : {si_SysSmall, si_Small, si_Large, si_ExtraLarge}) {
    if (TKivImageListSizeHelper::GetSize(size) < pSize) continue;
    const TBitmap picture = ImageFrom(size, pIndex);
    return picture.Scaled(pSize, pSize);
  }
  const TBitmap jumbo = ImageFrom(si_Jumbo, pIndex);
  if (!jumbo.IsEmpty() && !LiesInCorner(jumbo, TKivImageListSizeHelper::GetSize(si_ExtraLarge))) {
    return jumbo.Scaled(pSize, pSize);
  }
  return ImageFrom(si_ExtraLarge, pIndex).Scaled(pSize, pSize);
}

} // namespace kiv
