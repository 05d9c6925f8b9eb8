#include <forms/Menu.h>

#include <forms/Hint.h>
#include <forms/WinControl.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <framework/ScaledPixels.h>
#include <platform/ShellApi.h>

#include <algorithm>

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

TMenuItem* TMenu::FindItem(std::uintptr_t pValue, TFindItemKind pKind) const {
  if (pKind == TFindItemKind::fkHandle) {
    const auto level = fLevels.find(reinterpret_cast<HMENU>(pValue));
    if (level == fLevels.end()) return nullptr;
    pValue = level->second;
  }
  return FindBelow(fItems, [pValue](const TMenuItem& item) { return item.GetCommand() == pValue; });
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
  } catch (...) {
    DestroyMenu(handle);
    throw;
  }
  fTopLevel = handle;
  return handle;
}

void TMenu::Fill(HMENU pHandle, const TMenuItem& pItem) {
  // Check marks and pictures in one column, as in the shell's menus.
  MENUINFO look{};
  look.cbSize = sizeof(look);
  look.fMask = MIM_STYLE;
  look.dwStyle = MNS_CHECKORBMP;
  SetMenuInfo(pHandle, &look);
  UINT position = 0;
  for (int i = 0; i < pItem.GetCount(); ++i) {
    TMenuItem& item = *pItem.GetItem(i);
    if (item.IsVisible()) AppendItem(pHandle, item, position++);
  }
}

bool TMenu::IsDrawn(const TMenuItem& pItem) const {
  return fOwnerDraw || pItem.GetOnDrawItem() || pItem.GetOnMeasureItem();
}

void TMenu::SetPicture(MENUITEMINFOW& pInfo, TMenuItem& pItem) {
  if (IsDrawn(pItem) || pItem.IsLine()) return;
  TBitmap picture = pItem.Picture();
  if (picture.IsEmpty()) return;
  pInfo.fMask |= MIIM_BITMAP;
  if (ShellApi().wine_get_version) {
    // Wine copies bitmaps without their alpha. Elsewhere the other way round is worse: a menu that has such an item
    // isn't drawn by its theme.
    pInfo.hbmpItem = HBMMENU_CALLBACK;
    return;
  }
  picture.SetAlphaFormat(TAlphaFormat::afPremultiplied);
  TUniqueBitmap& kept = fPictures[pItem.GetCommand()];
  kept = picture.Release();
  pInfo.hbmpItem = kept.Get();
}

void TMenu::AppendItem(HMENU pHandle, TMenuItem& pItem, UINT pPosition) {
  MENUITEMINFOW info{};
  info.cbSize = sizeof(info);
  info.fMask = MIIM_FTYPE | MIIM_STATE | MIIM_ID | MIIM_STRING | MIIM_DATA;
  info.wID = pItem.GetCommand();
  info.dwItemData = pItem.GetCommand();
  if (pItem.IsLine()) info.fType |= MFT_SEPARATOR;
  if (IsDrawn(pItem)) info.fType |= MFT_OWNERDRAW;
  if (pItem.IsRadioItem()) info.fType |= MFT_RADIOCHECK;
  if (pItem.GetBreak() == TMenuBreak::mbBreak) info.fType |= MFT_MENUBREAK;
  if (pItem.GetBreak() == TMenuBreak::mbBarBreak) info.fType |= MFT_MENUBARBREAK;
  info.fState = (pItem.IsEnabled() ? MFS_ENABLED : MFS_DISABLED) | (pItem.IsChecked() ? MFS_CHECKED : 0u) |
                (pItem.IsDefault() ? MFS_DEFAULT : 0u);
  std::wstring text = pItem.GetCaption();
  const std::wstring keys = ShortCutToText(pItem.GetShortCut());
  if (!keys.empty()) text += L"\t" + keys;
  info.dwTypeData = text.data();
  SetPicture(info, pItem);
  if (pItem.GetCount() > 0) {
    info.fMask |= MIIM_SUBMENU;
    info.hSubMenu = CreatePopupMenu();
    // Filled when it opens; until then it only mustn't be empty.
    AppendMenuW(info.hSubMenu, MF_STRING | MF_GRAYED, 0, L"");
    fLevels.insert_or_assign(info.hSubMenu, pItem.GetCommand()); // numbers of menus that are gone come again
  }
  InsertMenuItemW(pHandle, pPosition, TRUE, &info);
}

bool TMenu::HandleInit(HMENU pHandle) {
  if (pHandle == fTopLevel) return true;
  TMenuItem* const item = FindItem(reinterpret_cast<std::uintptr_t>(pHandle), TFindItemKind::fkHandle);
  if (!item) return fLevels.contains(pHandle); // its item has gone
  const TAliveWatch alive(GetAliveToken());
  const TAliveWatch itemAlive(item->GetAliveToken());
  item->Click(); // may set up what stands below
  if (!alive.IsAlive()) return true;
  while (GetMenuItemCount(pHandle) > 0 && DeleteMenu(pHandle, 0, MF_BYPOSITION)) {
  }
  if (itemAlive.IsAlive()) Fill(pHandle, *item);
  return true;
}

void TMenu::HandleSelect(const TMessage& pMessage) {
  const UINT flags = HIWORD(pMessage.WParam);
  const auto menu = reinterpret_cast<HMENU>(pMessage.LParam);
  const bool isClosed = flags == 0xFFFF && !menu;
  const TMenuItem* item = nullptr;
  if (!isClosed && (flags & MF_POPUP) != 0) {
    const HMENU below = GetSubMenu(menu, LOWORD(pMessage.WParam));
    item = FindItem(reinterpret_cast<std::uintptr_t>(below), TFindItemKind::fkHandle);
  } else if (!isClosed) {
    item = FindCommand(LOWORD(pMessage.WParam));
  }
  Application().SetHint(item ? GetLongHint(item->GetHint()) : std::wstring());
}

bool TMenu::HandleMeasure(TMessage& pMessage) {
  auto& measure = *reinterpret_cast<MEASUREITEMSTRUCT*>(pMessage.LParam);
  TMenuItem* const item = measure.CtlType == ODT_MENU ? FindCommand(static_cast<WORD>(measure.itemID)) : nullptr;
  if (!item) return false;
  int width = 0;
  int height = 0;
  if (IsDrawn(*item)) {
    const HDC screen = GetDC(nullptr);
    {
      TCanvas canvas(screen);
      canvas.GetFont() = TFont::System(TSystemFont::sfMenu, fDpi);
      item->MeasureItem(canvas, width, height, fDpi);
    }
    ReleaseDC(nullptr, screen);
  } else {
    const TBitmap picture = item->Picture();
    width = picture.GetWidth() + ScaledPixels(4, fDpi);
    height = picture.GetHeight();
  }
  measure.itemWidth = static_cast<UINT>(width);
  measure.itemHeight = static_cast<UINT>(height);
  pMessage.Result = 1;
  return true;
}

bool TMenu::HandleDraw(TMessage& pMessage) {
  const auto& draw = *reinterpret_cast<const DRAWITEMSTRUCT*>(pMessage.LParam);
  TMenuItem* const item = draw.CtlType == ODT_MENU ? FindCommand(static_cast<WORD>(draw.itemID)) : nullptr;
  if (!item) return false;
  pMessage.Result = 1;
  TCanvas canvas(draw.hDC);
  if (!IsDrawn(*item)) {
    canvas.Draw(static_cast<int>(draw.rcItem.left), static_cast<int>(draw.rcItem.top), item->Picture());
    return true;
  }
  canvas.GetFont() = TFont::System(TSystemFont::sfMenu, fDpi);
  item->DrawItem(canvas, draw.rcItem, GetOwnerDrawState(draw.itemState), fDpi);
  return true;
}

// The platform doesn't know the letters of items that are drawn by others ("WM_MENUCHAR"). With several of one letter
// the lit one's successor is lit.
bool TMenu::HandleChar(TMessage& pMessage) {
  const auto menu = reinterpret_cast<HMENU>(pMessage.LParam);
  const auto letter = static_cast<wchar_t>(LOWORD(pMessage.WParam));
  std::vector<int> found;
  int lit = -1;
  for (int i = 0; i < GetMenuItemCount(menu); ++i) {
    MENUITEMINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = MIIM_ID | MIIM_STATE;
    if (!GetMenuItemInfoW(menu, static_cast<UINT>(i), TRUE, &info)) continue;
    if ((info.fState & MFS_HILITE) != 0) lit = i;
    const TMenuItem* const item = FindCommand(static_cast<WORD>(info.wID));
    if (item && IsDrawn(*item) && IsAccel(letter, item->GetCaption())) found.push_back(i);
  }
  if (found.empty()) return false;
  const auto next = std::find_if(found.begin(), found.end(), [lit](int one) { return one > lit; });
  const int chosen = next != found.end() ? *next : found.front();
  pMessage.Result = MAKELRESULT(chosen, found.size() == 1 ? MNC_EXECUTE : MNC_SELECT);
  return true;
}

bool TMenu::HandleMessage(TMessage& pMessage) {
  switch (pMessage.Msg) {
  case WM_INITMENUPOPUP:
    return HandleInit(reinterpret_cast<HMENU>(pMessage.WParam));
  case WM_MENUSELECT:
    HandleSelect(pMessage);
    return true;
  case WM_MEASUREITEM:
    return HandleMeasure(pMessage);
  case WM_DRAWITEM:
    return HandleDraw(pMessage);
  case WM_MENUCHAR:
    return HandleChar(pMessage);
  default:
    return false;
  }
}

} // namespace kiv
