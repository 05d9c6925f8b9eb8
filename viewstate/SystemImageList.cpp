#include <viewstate/SystemImageList.h>

#include <core/ItemIdList.h>
#include <framework/PropertyRegistry.h>
#include <framework/ScaledPixels.h>
#include <platform/Lifecycle.h>

#include <algorithm>
#include <map>
#include <utility>

namespace kiv {

namespace {

using enum TKivImageListSize;

constexpr int LeastWidth = 16;
constexpr int MostWidth = 256;
constexpr int MostOverlays = 15;

// Those that all share.
struct TInstances {
  std::map<TKivImageListSize, std::unique_ptr<TKivSystemImageList>> bySize;
  std::map<int, std::unique_ptr<TKivSystemImageList>> byWidth;
};
std::unique_ptr<TInstances> gInstances;

TInstances& Instances() {
  if (!gInstances) {
    gInstances = std::make_unique<TInstances>();
    AtShutdown([] { gInstances.reset(); });
  }
  return *gInstances;
}

} // namespace

TKivSystemImageList::TKivSystemImageList(TComponent* pOwner) : TKivSystemImageList(si_Small, pOwner) {}

TKivSystemImageList::TKivSystemImageList(TKivImageListSize pSize, TComponent* pOwner)
    : TKivSystemImageList(LeastWidth, pOwner, pSize) {}

TKivSystemImageList::TKivSystemImageList(int pHeight, TComponent* pOwner, TKivImageListSize pSize)
    : TCustomImageList(pOwner), fSize(pSize), fHeight(std::max(pHeight, 1)) {
  TCustomImageList::SetShareImages(fSize != si_FreeScaled);
}

TKivSystemImageList* TKivSystemImageList::CreateScaled(TKivImageListSize pSize, int pDestPPI, TComponent* pOwner) {
  auto list = std::make_unique<TKivSystemImageList>(pSize, pOwner);
  const int height = pSize == si_FreeScaled ? LeastWidth : TKivImageListSizeHelper::GetDefaultHeight(pSize);
  list->Scale(ScaledPixels(height, pDestPPI));
  return list.release();
}

TKivSystemImageList::~TKivSystemImageList() = default;

TKivSystemImageList* TKivSystemImageList::GetInstance(TKivImageListSize pSize) {
  if (pSize == si_FreeScaled) return GetInstance(ScaledPixels(LeastWidth));
  auto& place = Instances().bySize[pSize];
  if (!place) {
    place = std::make_unique<TKivSystemImageList>(pSize);
    place->SetDrawingStyle(TDrawingStyle::dsTransparent);
    place->fInstance = true;
  }
  return place.get();
}

TKivSystemImageList* TKivSystemImageList::GetInstance(int pWidth) {
  pWidth = std::clamp(pWidth, LeastWidth, MostWidth);
  const int small_width = ScaledPixels(LeastWidth);
  if (pWidth >= small_width && pWidth <= small_width + 3) pWidth = small_width;
  auto& place = Instances().byWidth[pWidth];
  if (!place) {
    place = std::make_unique<TKivSystemImageList>(pWidth, nullptr, si_FreeScaled);
    place->SetDrawingStyle(TDrawingStyle::dsTransparent);
    place->fInstance = true;
  }
  return place.get();
}

TKivImageListSize TKivSystemImageList::PixelsToSize(int pPixels) {
  for (const auto size : {si_SysSmall, si_Large, si_ExtraLarge}) {
    if (pPixels <= TKivImageListSizeHelper::GetSize(size)) return size;
  }
  return pPixels >= TKivImageListSizeHelper::GetSize(si_Jumbo) ? si_Jumbo : si_ExtraLarge;
}

void TKivSystemImageList::Show(TKivImageListSize pSize, int pHeight) {
  if (pSize == fSize && (pSize != si_FreeScaled || pHeight == fHeight)) return;
  if (fInstance) CheckOwn();
  BeginUpdate();
  DropList();
  fMade.clear();
  fSize = pSize;
  fHeight = std::max(pHeight, 1);
  TCustomImageList::SetShareImages(fSize != si_FreeScaled);
  Change();
  EndUpdate();
}

void TKivSystemImageList::SetSize(TKivImageListSize pSize) {
  Show(pSize, GetHeight());
}

void TKivSystemImageList::Scale(int pPixels) {
  const TKivImageListSize size = PixelsToSize(pPixels);
  Show(TKivImageListSizeHelper::GetSize(size) == pPixels ? size : si_FreeScaled, pPixels);
}

void TKivSystemImageList::ChangeScale(int pMultiplier, int pDivisor) {
  if (fInstance || pMultiplier == pDivisor || pMultiplier < 1 || pDivisor < 1) return;
  Scale(MulDivRounded(GetHeight(), pMultiplier, pDivisor));
}

void TKivSystemImageList::SetShareImages(bool) {}

void TKivSystemImageList::SetHandle(HIMAGELIST) {
  CheckOwn();
}

void TKivSystemImageList::CheckOwn() const {
  throw EInvalidOperation(L"The system's image list can't be changed.");
}

int TKivSystemImageList::GetHeight() const {
  if (fSize == si_FreeScaled) return fHeight;
  return HandleAllocated() ? TCustomImageList::GetHeight() : TKivImageListSizeHelper::GetSize(fSize);
}

int TKivSystemImageList::GetCount() {
  if (fSize != si_FreeScaled) return TCustomImageList::GetCount();
  if (!fSystem) fSystem = SystemImages(si_Small);
  int count = 0;
  return fSystem && SUCCEEDED(fSystem->GetImageCount(&count)) ? count : 0;
}

int TKivSystemImageList::GetSpecialFolderIcon(TKivShellFolder pFolder) const {
  const ComPtr<IItemIdList> list = TKivItemIdList::CreateForSpecialFolder(pFolder, true);
  return GetIndexFromItemIdList(list.Get(), fSize, false);
}

void TKivSystemImageList::CreateList() {
  if (fSize != si_FreeScaled) {
    ComPtr<IImageList> list = SystemImages(fSize);
    if (!list) throw EInvalidGraphic(E_NOTIMPL, L"The system's icons can't be used");
    UseList(std::move(list));
    return;
  }
  fMade.clear();
  fOverlays.fill(-1);
  UseList(MakeImageList(fHeight, fHeight, true, LeastWidth));
  SyncOverlays();
}

// So that controls which draw by the handle find them. The shell loads them when objects first have them.
void TKivSystemImageList::SyncOverlays() {
  for (int overlay = 1; overlay <= MostOverlays; ++overlay) {
    const int image = OverlayImage(overlay);
    int& known = fOverlays[static_cast<std::size_t>(overlay)];
    if (image >= 0 && image != known && SUCCEEDED(List().SetOverlayImage(image, overlay))) known = image;
  }
}

// Places without an image may look like anything ("ImageList_SetImageCount"), and a control may draw them before their
// turn comes.
void TKivSystemImageList::Grow(std::size_t pCount) {
  TBitmap blank(fHeight, fHeight, TAlphaFormat::afPremultiplied);
  blank.ScanLine(0)[0] = 0x01000000; // without any alpha the platform takes a picture for an opaque one
  const TUniqueIcon icon = blank.ToIcon();
  HRESULT hr = List().SetImageCount(static_cast<UINT>(pCount));
  for (std::size_t i = fMade.size(); SUCCEEDED(hr) && i < pCount; ++i) {
    int index = -1;
    hr = List().ReplaceIcon(static_cast<int>(i), icon.Get(), &index);
  }
  if (FAILED(hr)) throw EInvalidGraphic(hr, L"The image list can't be enlarged");
  fMade.resize(pCount);
}

void TKivSystemImageList::Require(int pIndex) {
  if (fSize != si_FreeScaled || pIndex < 0) return;
  const auto index = static_cast<std::size_t>(pIndex);
  if ((index < fMade.size() && fMade[index]) || pIndex >= GetCount()) return;
  List(); // makes it, and with it the overlays
  if (index >= fMade.size()) Grow(std::max(static_cast<std::size_t>(GetCount()), index + 1));
  if (fMade[index]) return;
  TBitmap image = SystemImage(pIndex, fHeight);
  if (image.IsEmpty()) image = TBitmap(fHeight, fHeight, TAlphaFormat::afPremultiplied);
  Put(pIndex, image);
  fMade[index] = true;
  SyncOverlays();
}

bool TKivSystemImageList::IsReady(int pIndex) {
  if (fSize != si_FreeScaled || pIndex < 0) return true;
  const auto index = static_cast<std::size_t>(pIndex);
  return (index < fMade.size() && fMade[index]) || pIndex >= GetCount();
}

int TKivSystemImageList::OverlayImage(int pOverlay) {
  if (fSize != si_FreeScaled || pOverlay < 1 || pOverlay > MostOverlays) return -1;
  const int count = GetCount();
  int image = -1;
  if (count == 0 || FAILED(fSystem->GetOverlayImage(pOverlay, &image)) || image < 0 || image >= count) return -1;
  Require(image);
  return image;
}

namespace {

using TSizeGetter = TKivImageListSize (TKivSystemImageList::*)() const;
using TSizeSetter = void (TKivSystemImageList::*)(TKivImageListSize);

[[maybe_unused]] const bool gPublished = [] {
  TCustomImageList::PublishProperties();
  PublishClass<TKivSystemImageList, TCustomImageList>(L"TKivSystemImageList", L"The icons of files and folders.")
      .Property(L"Size", static_cast<TSizeGetter>(&TKivSystemImageList::GetSize),
                static_cast<TSizeSetter>(&TKivSystemImageList::SetSize), si_Small,
                L"Which of the platform's lists it is.");
  return true;
}();

} // namespace

} // namespace kiv
