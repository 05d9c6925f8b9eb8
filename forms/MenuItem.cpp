#include <forms/Menu.h>

#include <framework/Exceptions.h>
#include <framework/ScaledPixels.h>
#include <framework/TextCompare.h>
#include <graphics/StyleServices.h>

#include <algorithm>
#include <bitset>

namespace kiv {

namespace {

// The platform's numbers have 16 bits; small ones are left to hosts.
constexpr WORD FirstCommand = 0x1000;
constexpr WORD LastCommand = 0xEFFF;

std::bitset<LastCommand + 1>& UsedCommands() noexcept {
  static std::bitset<LastCommand + 1> used;
  return used;
}

// The one that was given back the longest time ago, more or less.
WORD TakeCommand() {
  static WORD last = LastCommand;
  for (int i = FirstCommand; i <= LastCommand; ++i) {
    last = static_cast<WORD>(last < LastCommand ? last + 1 : FirstCommand);
    if (UsedCommands()[last]) continue;
    UsedCommands()[last] = true;
    return last;
  }
  throw EInvalidOperation(L"There are too many menu items");
}

} // namespace

TMenuItem::TMenuItem(TComponent* pOwner) : TComponent(pOwner), fCommand(TakeCommand()) {}

TMenuItem::~TMenuItem() {
  BeginDestruction();
  if (fParent) fParent->Remove(this);
  for (TMenuItem* item : fItems) item->fParent = nullptr;
  UsedCommands()[fCommand] = false;
}

TMenuItem* TMenuItem::GetItem(int pIndex) const {
  if (pIndex < 0 || pIndex >= GetCount()) throw EArgumentOutOfRange(L"Menu index out of range");
  return fItems[static_cast<std::size_t>(pIndex)];
}

void TMenuItem::Insert(int pIndex, TMenuItem* pItem) {
  if (!pItem) throw EInvalidArgument(L"TMenuItem.Insert: there is no item");
  if (pIndex < 0 || pIndex > GetCount()) throw EArgumentOutOfRange(L"Menu index out of range");
  for (const TMenuItem* above = this; above; above = above->fParent) {
    if (above == pItem) throw EInvalidOperation(L"A menu item can't stand in itself");
  }
  if (pItem->fParent) throw EInvalidOperation(L"Menu inserted twice");
  fItems.insert(fItems.begin() + pIndex, pItem);
  pItem->fParent = this;
  if (!pItem->GetOwner()) InsertComponent(pItem);
}

void TMenuItem::Remove(TMenuItem* pItem) {
  const auto found = std::find(fItems.begin(), fItems.end(), pItem);
  if (found == fItems.end()) throw EInvalidOperation(L"Sub-menu is not in menu");
  fItems.erase(found);
  pItem->fParent = nullptr;
  if (pItem->GetOwner() == this && !pItem->IsDestroying()) RemoveComponent(pItem);
}

void TMenuItem::Clear() {
  while (!fItems.empty()) {
    TMenuItem* const item = fItems.back();
    const bool isOwned = item->GetOwner() == this;
    Remove(item);
    if (isOwned) delete item;
  }
}

int TMenuItem::IndexOf(const TMenuItem* pItem) const noexcept {
  const auto found = std::find(fItems.begin(), fItems.end(), pItem);
  return found == fItems.end() ? -1 : static_cast<int>(found - fItems.begin());
}

TMenuItem* TMenuItem::Find(const std::wstring& pCaption) const {
  const auto plain = [](std::wstring text) {
    std::erase(text, L'&');
    return text;
  };
  for (TMenuItem* item : fItems) {
    if (SameText(plain(item->fCaption), plain(pCaption))) return item;
    if (TMenuItem* const below = item->Find(pCaption)) return below;
  }
  return nullptr;
}

void TMenuItem::AddSeparator() {
  if (fItems.empty() || fItems.back()->IsLine()) return;
  auto* const line = new TMenuItem(this);
  line->SetCaption(L"-");
  Add(line);
}

TMenu* TMenuItem::GetParentMenu() const noexcept {
  const TMenuItem* root = this;
  while (root->fParent) root = root->fParent;
  return root->fMenu;
}

void TMenuItem::SetChecked(bool pChecked) {
  fChecked = pChecked;
  if (!pChecked || !fRadioItem || !fParent) return;
  for (TMenuItem* item : fParent->fItems) {
    if (item != this && item->fRadioItem && item->fGroupIndex == fGroupIndex) item->fChecked = false;
  }
}

void TMenuItem::SetDefault(bool pDefault) {
  if (pDefault && fParent) {
    for (TMenuItem* item : fParent->fItems) item->fDefault = false;
  }
  fDefault = pDefault;
}

void TMenuItem::SetSubMenuImages(TCustomImageList* pImages) {
  if (fSubMenuImages) fSubMenuImages->RemoveFreeNotification(this);
  fSubMenuImages = pImages;
  fImagesKey = pImages;
  if (pImages) pImages->FreeNotification(this);
}

void TMenuItem::Notification(TComponent* pComponent, TOperation pOperation) {
  if (pOperation == TOperation::opRemove && pComponent == fImagesKey) {
    fSubMenuImages = nullptr;
    fImagesKey = nullptr;
  }
  TComponent::Notification(pComponent, pOperation);
}

void TMenuItem::Click() {
  if (!fEnabled) return;
  if (fAutoCheck && fItems.empty() && (!fRadioItem || !fChecked)) SetChecked(!fChecked);
  static_cast<void>(FireEvent(GetAliveToken(), fOnClick, this));
}

// --- looks ----------------------------------------------------------------------------------------------------------

TCustomImageList* TMenuItem::Images() const noexcept {
  if (fParent && fParent->fSubMenuImages) return fParent->fSubMenuImages;
  const TMenu* const menu = GetParentMenu();
  return menu ? menu->GetImages() : nullptr;
}

TBitmap TMenuItem::Picture() const {
  if (!fBitmap.IsEmpty()) return fBitmap.Clone();
  TCustomImageList* const images = Images();
  return images && fImageIndex >= 0 ? images->GetBitmap(fImageIndex) : TBitmap();
}

void TMenuItem::MeasureItem(TCanvas& pCanvas, int& pWidth, int& pHeight, int pDpi) {
  const auto scaled = [pDpi](int pixels) { return ScaledPixels(pixels, pDpi); };
  if (IsLine()) {
    pHeight = scaled(7);
  } else {
    const SIZE text = pCanvas.TextExtent(fCaption, 0x7FFF, DT_SINGLELINE);
    const std::wstring keys = ShortCutToText(fShortCut);
    pWidth = text.cx + scaled(20) + (keys.empty() ? 0 : pCanvas.TextWidth(keys) + scaled(24));
    pHeight = text.cy;
    if (TCustomImageList* const images = Images()) {
      pWidth += images->GetWidth();
      pHeight = std::max(pHeight, images->GetHeight());
    }
    pHeight += scaled(6);
  }
  static_cast<void>(FireEvent(GetAliveToken(), fOnMeasureItem, this, pCanvas, pWidth, pHeight));
}

void TMenuItem::DrawItem(TCanvas& pCanvas, const RECT& pRect, TOwnerDrawState pState, int pDpi) {
  if (fOnDrawItem) {
    static_cast<void>(FireEvent(GetAliveToken(), fOnDrawItem, this, pCanvas, pRect, pState));
    return;
  }
  const auto scaled = [pDpi](int pixels) { return ScaledPixels(pixels, pDpi); };
  const TStyleServices& style = StyleServices();
  const bool isLit = pState.Contains(TOwnerDrawStateFlag::odSelected) && !IsLine();
  const bool isGray =
      pState.Contains(TOwnerDrawStateFlag::odGrayed) || pState.Contains(TOwnerDrawStateFlag::odDisabled);
  pCanvas.FillRect(pRect, style.GetSystemColor(isLit ? clHighlight : clMenu));
  RECT rect = pRect;
  if (IsLine()) {
    const LONG middle = (rect.top + rect.bottom) / 2;
    pCanvas.FillRect({rect.left + scaled(3), middle, rect.right - scaled(3), middle + 1},
                     style.GetSystemColor(clBtnShadow));
    return;
  }
  InflateRect(&rect, -scaled(4), 0);
  TCustomImageList* const images = Images();
  if (images) {
    const int y = static_cast<int>(rect.top + rect.bottom - images->GetHeight()) / 2;
    if (fImageIndex >= 0) images->Draw(pCanvas, static_cast<int>(rect.left), y, fImageIndex, !isGray);
    rect.left += images->GetWidth() + scaled(6);
  }
  pCanvas.GetFont().SetColor(style.GetSystemColor(isGray ? clGrayText : isLit ? clHighlightText : clMenuText));
  pCanvas.GetBrush().SetStyle(TBrushStyle::bsClear);
  const UINT flags = DT_SINGLELINE | DT_VCENTER |
                     (pState.Contains(TOwnerDrawStateFlag::odNoAccel) ? static_cast<UINT>(DT_HIDEPREFIX) : 0u);
  pCanvas.TextRect(rect, fCaption, flags | DT_LEFT);
  const std::wstring keys = ShortCutToText(fShortCut);
  if (!keys.empty()) pCanvas.TextRect(rect, keys, DT_SINGLELINE | DT_VCENTER | DT_RIGHT | DT_NOPREFIX);
}

} // namespace kiv
