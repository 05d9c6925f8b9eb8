#include <graphics/ImageList.h>

#include <framework/ScaledPixels.h>
#include <graphics/ImageListApi.h>

#include <algorithm>
#include <utility>

namespace kiv {

namespace {

constexpr int MostOverlays = 15;
constexpr int Growth = 16; // images that the platform makes room for at a time

constexpr TPixel AlmostInvisible = 0x01000000;

bool IsInvisible(const TBitmap& image) {
  return image.GetAlphaFormat() != TAlphaFormat::afIgnored && DetectAlpha(image.Pixels()) == TAlphaFormat::afIgnored;
}

[[noreturn]] void RefuseIndex() {
  throw EInvalidGraphic(E_INVALIDARG, L"There is no image of that number");
}

// Part of a strip.
TBitmap Cut(const TBitmap& strip, int left, int width) {
  TBitmap part(width, strip.GetHeight(), strip.GetAlphaFormat());
  for (int y = 0; y < strip.GetHeight(); ++y) std::copy_n(strip.ScanLine(y) + left, width, part.ScanLine(y));
  return part;
}

} // namespace

TChangeLink::~TChangeLink() {
  if (fSender) fSender->UnregisterChanges(this);
}

TCustomImageList::TCustomImageList(TComponent* pOwner) : TComponent(pOwner) {
  fOverlays.fill(-1);
}

TCustomImageList::~TCustomImageList() {
  BeginDestruction();
  for (TChangeLink* const link : fLinks) link->fSender = nullptr;
}

// --- the list --------------------------------------------------------------------------------------------------------

IImageList& TCustomImageList::List() {
  if (!fList) {
    CreateList();
    if (fBkColor != clNone) PassBkColor();
  }
  return *fList.Get();
}

void TCustomImageList::CreateList() {
  fList = MakeImageList(fWidth, fHeight, fMasked, Growth);
}

void TCustomImageList::PassBkColor() {
  if (!fList || fShareImages) return;
  COLORREF former;
  fList->SetBkColor(fBkColor == clNone ? CLR_NONE : static_cast<COLORREF>(ColorToRGB(fBkColor)), &former);
}

void TCustomImageList::UseList(ComPtr<IImageList> pList) {
  int width = 0;
  int height = 0;
  if (FAILED(pList->GetIconSize(&width, &height))) {
    throw EInvalidGraphic(E_INVALIDARG, L"The image list can't be used");
  }
  fUnscaled.Reset();
  fOverlays.fill(-1);
  fList = std::move(pList);
  fWidth = width;
  fHeight = height;
}

void TCustomImageList::ForgetList() noexcept {
  fList.Reset();
  fUnscaled.Reset();
  fOverlays.fill(-1);
}

void TCustomImageList::DropList() {
  if (!fList) return;
  ForgetList();
  Change();
}

HIMAGELIST TCustomImageList::GetHandle() {
  return IImageListToHIMAGELIST(&List());
}

void TCustomImageList::SetHandle(HIMAGELIST pHandle) {
  if (fList && pHandle == IImageListToHIMAGELIST(fList.Get())) return;
  if (!pHandle) {
    DropList();
    return;
  }
  ComPtr<IImageList> list = ImageListOf(pHandle);
  if (!fShareImages) list->Release(); // the reference that came with the handle is ours now
  UseList(std::move(list));
  Change();
}

void TCustomImageList::SetShareImages(bool pShare) {
  if (pShare == fShareImages) return;
  // A list changes hands only with its handle.
  const bool had_images = HandleAllocated();
  ForgetList();
  fShareImages = pShare;
  if (had_images) Change();
}

void TCustomImageList::CheckOwn() const {
  if (fShareImages) throw EInvalidOperation(L"A shared image list can't be changed.");
}

void TCustomImageList::CheckSize(const TBitmap& pImages, bool pStrip) const {
  const int width = pStrip ? pImages.GetWidth() % fWidth : pImages.GetWidth() - fWidth;
  const bool fits = pImages.GetHeight() == fHeight && width == 0;
  if (!fits || pImages.IsEmpty()) throw EInvalidGraphic(E_INVALIDARG, L"The picture isn't of the image list's size");
}

void TCustomImageList::CheckIndex(int pIndex) {
  if (pIndex < 0 || pIndex >= GetCount()) RefuseIndex();
}

void TCustomImageList::SetSize(int pWidth, int pHeight) {
  pWidth = std::max(pWidth, 1);
  pHeight = std::max(pHeight, 1);
  if (pWidth == GetWidth() && pHeight == GetHeight()) return;
  CheckOwn();
  // First all of the new state: a listener may ask for the handle.
  ForgetList();
  fWidth = pWidth;
  fHeight = pHeight;
  Change();
}

void TCustomImageList::SetMasked(bool pMasked) {
  if (pMasked == fMasked) return;
  CheckOwn();
  const bool had_images = HandleAllocated();
  ForgetList();
  fMasked = pMasked;
  if (had_images) Change();
}

int TCustomImageList::GetCount() {
  int count = 0;
  return SUCCEEDED(List().GetImageCount(&count)) ? count : 0;
}

// --- images ----------------------------------------------------------------------------------------------------------

// By way of icons: what alpha means in them is documented, in bitmaps for image lists it isn't.
void TCustomImageList::Put(int pIndex, const TBitmap& pImage) {
  TUniqueIcon icon;
  if (IsInvisible(pImage)) {
    // Without any alpha the platform takes a picture for an opaque one.
    TBitmap visible = pImage.Clone();
    visible.ScanLine(0)[0] = AlmostInvisible;
    icon = visible.ToIcon();
  } else {
    icon = pImage.ToIcon();
  }
  int index = -1;
  const HRESULT hr = List().ReplaceIcon(pIndex, icon.Get(), &index);
  if (FAILED(hr)) throw EInvalidGraphic(hr, L"The image can't be put into the list");
  fUnscaled.Reset();
}

int TCustomImageList::Add(const TBitmap& pImages) {
  CheckOwn();
  CheckSize(pImages, true);
  const int first = GetCount();
  for (int left = 0; left < pImages.GetWidth(); left += fWidth) {
    if (pImages.GetWidth() == fWidth) {
      Put(-1, pImages);
    } else {
      Put(-1, Cut(pImages, left, fWidth));
    }
  }
  Change();
  return first;
}

int TCustomImageList::AddMasked(const TBitmap& pImages, TColor pTransparent) {
  CheckOwn();
  CheckSize(pImages, true);
  TBitmap masked = pImages.Clone();
  masked.MakeOpaque();
  masked.DeclareAlphaFormat(TAlphaFormat::afDefined);
  if (pTransparent != clNone) {
    TPixel transparent = masked.ScanLine(masked.GetHeight() - 1)[0];
    if (pTransparent != clDefault) transparent = PixelOf(ColorToRGB(pTransparent));
    std::ranges::replace(masked.Pixels(), transparent, TPixel{0});
  }
  return Add(masked);
}

int TCustomImageList::AddIcon(HICON pIcon) {
  return Add(TBitmap::FromIcon(pIcon).Scaled(GetWidth(), GetHeight()));
}

void TCustomImageList::AddImages(TCustomImageList& pSource) {
  CheckOwn();
  PutImages(pSource);
  Change();
}

void TCustomImageList::PutImages(TCustomImageList& pSource) {
  const int count = pSource.GetCount(); // its own, perhaps
  for (int i = 0; i < count; ++i) Put(-1, pSource.GetBitmap(i).Scaled(fWidth, fHeight));
}

void TCustomImageList::Replace(int pIndex, const TBitmap& pImage) {
  CheckOwn();
  CheckIndex(pIndex);
  CheckSize(pImage, false);
  Put(pIndex, pImage);
  Change();
}

void TCustomImageList::ReplaceIcon(int pIndex, HICON pIcon) {
  Replace(pIndex, TBitmap::FromIcon(pIcon).Scaled(GetWidth(), GetHeight()));
}

void TCustomImageList::Delete(int pIndex) {
  CheckOwn();
  CheckIndex(pIndex);
  const HRESULT hr = List().Remove(pIndex);
  if (FAILED(hr)) throw EInvalidGraphic(hr, L"The image can't be removed");
  fUnscaled.Reset();
  auto overlays = fOverlays;
  for (int& image : overlays) {
    if (image == pIndex) {
      image = -1;
    } else if (image > pIndex) {
      --image;
    }
  }
  SetOverlays(overlays);
  Change();
}

void TCustomImageList::Clear() {
  CheckOwn();
  DropList();
}

void TCustomImageList::Overlay(int pIndex, int pOverlay) {
  CheckOwn();
  CheckIndex(pIndex);
  if (pOverlay < 1 || pOverlay > MostOverlays) throw EInvalidGraphic(E_INVALIDARG, L"Overlays are numbered 1 to 15");
  const HRESULT hr = List().SetOverlayImage(pIndex, pOverlay);
  if (FAILED(hr)) throw EInvalidGraphic(hr, L"The overlay can't be set");
  fOverlays[static_cast<std::size_t>(pOverlay)] = pIndex;
  Change();
}

void TCustomImageList::Require(int) {}

bool TCustomImageList::IsReady(int) {
  return true;
}

void TCustomImageList::Assign(const TPersistent* pSource) {
  // Reading an image list may make its handle, but changes nothing that can be seen.
  auto* const source = const_cast<TCustomImageList*>(dynamic_cast<const TCustomImageList*>(pSource));
  if (!source) {
    TComponent::Assign(pSource);
    return;
  }
  if (source == this) return;
  CheckOwn();
  ForgetList();
  fMasked = source->fMasked;
  fWidth = source->GetWidth();
  fHeight = source->GetHeight();
  PutImages(*source);
  SetOverlays(source->fOverlays);
  Change();
}

// --- scale -----------------------------------------------------------------------------------------------------------

void TCustomImageList::Fill(ComPtr<IImageList> pFrom) {
  int count = 0;
  pFrom->GetImageCount(&count);
  fList = MakeImageList(fWidth, fHeight, fMasked, std::max(count, 1));
  if (fBkColor != clNone) PassBkColor();
  for (int i = 0; i < count; ++i) Put(-1, ImageOf(*pFrom.Get(), i).Scaled(fWidth, fHeight));
  SetOverlays(fOverlays);
  fUnscaled = std::move(pFrom);
}

void TCustomImageList::SetOverlays(const std::array<int, 16>& pOverlays) {
  for (std::size_t i = 1; i < pOverlays.size(); ++i) {
    if (pOverlays[i] >= 0) List().SetOverlayImage(pOverlays[i], static_cast<int>(i));
  }
  fOverlays = pOverlays;
}

void TCustomImageList::ChangeScale(int pMultiplier, int pDivisor) {
  if (fShareImages || pMultiplier == pDivisor || pMultiplier < 1 || pDivisor < 1) return;
  fWidth = std::max(MulDivRounded(fWidth, pMultiplier, pDivisor), 1);
  fHeight = std::max(MulDivRounded(fHeight, pMultiplier, pDivisor), 1);
  if (fList) {
    int width = 0;
    int height = 0;
    if (fUnscaled && SUCCEEDED(fUnscaled->GetIconSize(&width, &height)) && width == fWidth && height == fHeight) {
      fList = std::move(fUnscaled);
    } else {
      Fill(fUnscaled ? fUnscaled : fList);
    }
  }
  Change();
}

// --- listeners -------------------------------------------------------------------------------------------------------

void TCustomImageList::Change() {
  if (fUpdates > 0) {
    fChanged = true;
    return;
  }
  const TAliveWatch watch(GetAliveToken());
  const std::vector<TChangeLink*> links = fLinks;
  for (TChangeLink* const link : links) {
    // A listener may take others away, or the list itself.
    if (!watch.IsAlive()) return;
    if (std::ranges::find(fLinks, link) == fLinks.end() || !link->fOnChange) continue;
    const TNotifyEvent event = link->fOnChange;
    event(this);
  }
  if (!watch.IsAlive() || !fOnChange) return;
  const TNotifyEvent event = fOnChange;
  event(this);
}

void TCustomImageList::EndUpdate() {
  if (fUpdates == 0 || --fUpdates > 0) return;
  if (std::exchange(fChanged, false)) Change();
}

void TCustomImageList::RegisterChanges(TChangeLink* pLink) {
  if (pLink->fSender == this) return;
  if (pLink->fSender) pLink->fSender->UnregisterChanges(pLink);
  fLinks.push_back(pLink);
  pLink->fSender = this;
}

void TCustomImageList::UnregisterChanges(TChangeLink* pLink) noexcept {
  if (std::erase(fLinks, pLink) != 0) pLink->fSender = nullptr;
}

void TCustomImageList::SetBkColor(TColor pColor) {
  if (pColor == fBkColor) return;
  fBkColor = pColor;
  PassBkColor();
  Change();
}

void TCustomImageList::SetBlendColor(TColor pColor) {
  if (pColor == std::exchange(fBlendColor, pColor)) return;
  Change();
}

void TCustomImageList::SetDrawingStyle(TDrawingStyle pStyle) {
  if (pStyle == std::exchange(fDrawingStyle, pStyle)) return;
  Change();
}

} // namespace kiv
