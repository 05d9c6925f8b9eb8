#include <forms/Menu.h>

#include <forms/Control.h>
#include <forms/Hint.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>

#include <utility>

namespace kiv {

TMenu::TMenu(TComponent* pOwner) : TComponent(pOwner) {
  fItems.fMenu = this;
}

TMenu::~TMenu() {
  BeginDestruction();
}

void TMenu::SetImages(TCustomImageList* pImages) {
  if (fImages) fImages->RemoveFreeNotification(this);
  fImages = pImages;
  fImagesKey = pImages;
  if (pImages) pImages->FreeNotification(this);
}

void TMenu::Notification(TComponent* pComponent, TOperation pOperation) {
  if (pOperation == TOperation::opRemove && pComponent == fImagesKey) {
    fImages = nullptr;
    fImagesKey = nullptr;
  }
  TComponent::Notification(pComponent, pOperation);
}

// --- finding --------------------------------------------------------------------------------------------------------

namespace {

// The first below an item for which a condition holds, depth first.
template <typename F>
TMenuItem* FindBelow(const TMenuItem& item, const F& condition) {
  for (int i = 0; i < item.GetCount(); ++i) {
    TMenuItem* const one = item.GetItem(i);
    if (condition(*one)) return one;
    if (TMenuItem* const below = FindBelow(*one, condition)) return below;
  }
  return nullptr;
}

} // namespace

TMenuItem* TMenu::FindCommand(WORD pCommand) const {
  return FindBelow(fItems, [pCommand](const TMenuItem& item) { return item.GetCommand() == pCommand; });
}

bool TMenu::IsShortCut(const TMessage& pMessage) {
  const TShortCut pressed = MakeShortCut(static_cast<WORD>(pMessage.WParam), KeyboardShiftState());
  if (pressed == scNone) return false;
  const auto fits = [&](const TMenuItem& item) { return item.GetShortCut() == pressed && item.GetCount() == 0; };
  TMenuItem* const item = FindBelow(fItems, fits);
  if (!item) return false;
  // The levels above may set up their items when they open.
  const TAliveWatch alive(item->GetAliveToken());
  std::vector<TMenuItem*> above;
  for (TMenuItem* parent = item->GetParent(); parent && parent != &fItems; parent = parent->GetParent()) {
    above.insert(above.begin(), parent);
  }
  for (TMenuItem* parent : above) {
    if (!parent->IsEnabled()) return false;
    parent->Click();
    if (!alive.IsAlive()) return true;
  }
  if (!item->IsEnabled()) return false;
  item->Click();
  return true;
}

// --- the platform's menus -------------------------------------------------------------------------------------------

HMENU TMenu::CreateHandle(int pDpi) {
  fDpi = pDpi;
  fLevels.clear();
  fPictures.clear();
  const HMENU handle = CreatePopupMenu();
  if (!handle) throw EOSError(GetLastError(), L"A menu can't be made");
  try {
    Fill(handle, fItems);
    fLevels.emplace(handle, &fItems);
  } catch (...) {
    DestroyMenu(handle);
    throw;
  }
  return handle;
}

void TMenu::Fill(HMENU pHandle, const TMenuItem& pItem) {
  UINT position = 0;
  for (int i = 0; i < pItem.GetCount(); ++i) {
    TMenuItem& item = *pItem.GetItem(i);
    if (item.IsVisible()) AppendItem(pHandle, item, position++);
  }
}

void TMenu::AppendItem(HMENU pHandle, TMenuItem& pItem, UINT pPosition) {
  MENUITEMINFOW info{};
  info.cbSize = sizeof(info);
  info.fMask = MIIM_FTYPE | MIIM_STATE | MIIM_ID | MIIM_STRING | MIIM_DATA;
  info.wID = pItem.GetCommand();
  info.dwItemData = pItem.GetCommand();
  const bool isDrawn = fOwnerDraw || pItem.GetOnDrawItem() || pItem.GetOnMeasureItem();
  if (pItem.IsLine()) info.fType |= MFT_SEPARATOR;
  if (isDrawn) info.fType |= MFT_OWNERDRAW;
  if (pItem.IsRadioItem()) info.fType |= MFT_RADIOCHECK;
  if (fRightToLeft) info.fType |= MFT_RIGHTORDER;
  if (pItem.GetBreak() == TMenuBreak::mbBreak) info.fType |= MFT_MENUBREAK;
  if (pItem.GetBreak() == TMenuBreak::mbBarBreak) info.fType |= MFT_MENUBARBREAK;
  info.fState = (pItem.IsEnabled() ? MFS_ENABLED : MFS_DISABLED) | (pItem.IsChecked() ? MFS_CHECKED : 0u) |
                (pItem.IsDefault() ? MFS_DEFAULT : 0u);
  std::wstring text = pItem.GetCaption();
  const std::wstring keys = ShortCutToText(pItem.GetShortCut());
  if (!keys.empty()) text += L"\t" + keys;
  info.dwTypeData = text.data();
  TBitmap picture = isDrawn || pItem.IsLine() ? TBitmap() : pItem.Picture();
  if (!picture.IsEmpty()) {
    info.fMask |= MIIM_BITMAP;
    TUniqueBitmap& kept = fPictures[pItem.GetCommand()];
    kept = picture.Release();
    info.hbmpItem = kept.Get();
  }
  if (pItem.GetCount() > 0) {
    info.fMask |= MIIM_SUBMENU;
    info.hSubMenu = CreatePopupMenu();
    // Filled when it opens; until then it only mustn't be empty.
    AppendMenuW(info.hSubMenu, MF_STRING | MF_GRAYED, 0, L"");
    fLevels.emplace(info.hSubMenu, &pItem);
  }
  InsertMenuItemW(pHandle, pPosition, TRUE, &info);
}

bool TMenu::HandleInit(HMENU pHandle) {
  const auto found = fLevels.find(pHandle);
  if (found == fLevels.end() || found->second == &fItems) return found != fLevels.end();
  TMenuItem* const item = found->second;
  const TAliveWatch alive(GetAliveToken());
  const TAliveWatch itemAlive(item->GetAliveToken());
  item->Click(); // may set up what stands below
  if (!alive.IsAlive()) return true;
  while (GetMenuItemCount(pHandle) > 0 && DeleteMenu(pHandle, 0, MF_BYPOSITION)) {
  }
  if (itemAlive.IsAlive())
    Fill(pHandle, *item);
  else
    fLevels.erase(pHandle);
  return true;
}

void TMenu::HandleSelect(WPARAM pWhat) {
  const UINT flags = HIWORD(pWhat);
  const bool isClosed = flags == 0xFFFF;
  const TMenuItem* const item = isClosed || (flags & MF_POPUP) != 0 ? nullptr : FindCommand(LOWORD(pWhat));
  Application().SetHint(item ? GetLongHint(item->GetHint()) : std::wstring());
}

bool TMenu::HandleMessage(TMessage& pMessage) {
  switch (pMessage.Msg) {
  case WM_INITMENUPOPUP:
    return HandleInit(reinterpret_cast<HMENU>(pMessage.WParam));
  case WM_MENUSELECT:
    HandleSelect(pMessage.WParam);
    return true;
  case WM_MEASUREITEM: {
    auto& measure = *reinterpret_cast<MEASUREITEMSTRUCT*>(pMessage.LParam);
    TMenuItem* const item = measure.CtlType == ODT_MENU ? FindCommand(static_cast<WORD>(measure.itemID)) : nullptr;
    if (!item) return false;
    const HDC screen = GetDC(nullptr);
    int width = 0;
    int height = 0;
    {
      TCanvas canvas(screen);
      canvas.GetFont() = TFont::System(TSystemFont::sfMenu, fDpi);
      item->MeasureItem(canvas, width, height, fDpi);
    }
    ReleaseDC(nullptr, screen);
    measure.itemWidth = static_cast<UINT>(width);
    measure.itemHeight = static_cast<UINT>(height);
    pMessage.Result = 1;
    return true;
  }
  case WM_DRAWITEM: {
    const auto& draw = *reinterpret_cast<const DRAWITEMSTRUCT*>(pMessage.LParam);
    TMenuItem* const item = draw.CtlType == ODT_MENU ? FindCommand(static_cast<WORD>(draw.itemID)) : nullptr;
    if (!item) return false;
    TCanvas canvas(draw.hDC);
    canvas.GetFont() = TFont::System(TSystemFont::sfMenu, fDpi);
    item->DrawItem(canvas, draw.rcItem, GetOwnerDrawState(draw.itemState), fDpi);
    pMessage.Result = 1;
    return true;
  }
  default:
    return false;
  }
}

} // namespace kiv
