#include <forms/CheckListBox.h>

#include <framework/Exceptions.h>
#include <graphics/Canvas.h>
#include <graphics/StyleServices.h>

#include <algorithm>

namespace kiv {

TCheckListBox::TCheckListBox(TComponent* pOwner) : TWinControl(pOwner) {
  SetControlStyle({TControlStyleFlag::csDoubleClicks});
  StoreColor(clWindow);
  SetParentColor(false);
  TWinControl::SetBounds(0, 0, ScaledPixels(121), ScaledPixels(97));
  SetTabStop(true);
}

TCheckListBox::~TCheckListBox() {
  EndWindow();
}

void TCheckListBox::CreateParams(TCreateParams& pParams) {
  TWinControl::CreateParams(pParams);
  pParams.className = L"LISTBOX";
  pParams.style |= LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL;
  pParams.exStyle |= WS_EX_CLIENTEDGE;
}

void TCheckListBox::CreateWnd() {
  TWinControl::CreateWnd();
  // The texts are ours; the window has them for assistive programs and for typing to an item.
  for (const TItem& item : fItems) InsertText(-1, item.text);
  SendMessageW(GetHandle(), LB_SETCURSEL, static_cast<WPARAM>(fItemIndex), 0);
}

void TCheckListBox::WMDestroy(TMessage& pMessage) {
  fItemIndex = GetItemIndex();
  TWinControl::WMDestroy(pMessage);
}

TCheckListBox::TItem& TCheckListBox::At(int pIndex) {
  if (pIndex < 0 || pIndex >= GetCount()) throw EArgumentOutOfRange(L"TCheckListBox: there is no such item");
  return fItems[static_cast<std::size_t>(pIndex)];
}

const TCheckListBox::TItem& TCheckListBox::At(int pIndex) const {
  return const_cast<TCheckListBox*>(this)->At(pIndex);
}

int TCheckListBox::Add(std::wstring pText, bool pChecked) {
  fItems.push_back({std::move(pText), pChecked, true});
  if (HandleAllocated()) InsertText(-1, fItems.back().text);
  return GetCount() - 1;
}

void TCheckListBox::Clear() {
  fItems.clear();
  fItemIndex = -1;
  if (HandleAllocated()) SendMessageW(GetHandle(), LB_RESETCONTENT, 0, 0);
}

void TCheckListBox::InsertText(int pIndex, const std::wstring& pText) {
  SendMessageW(GetHandle(), LB_INSERTSTRING, static_cast<WPARAM>(pIndex), reinterpret_cast<LPARAM>(pText.c_str()));
}

const std::wstring& TCheckListBox::GetItem(int pIndex) const {
  return At(pIndex).text;
}

bool TCheckListBox::IsChecked(int pIndex) const {
  return At(pIndex).checked;
}

void TCheckListBox::SetChecked(int pIndex, bool pChecked) {
  At(pIndex).checked = pChecked;
  InvalidateItem(pIndex);
}

bool TCheckListBox::IsItemEnabled(int pIndex) const {
  return At(pIndex).enabled;
}

void TCheckListBox::SetItemEnabled(int pIndex, bool pEnabled) {
  At(pIndex).enabled = pEnabled;
  InvalidateItem(pIndex);
}

void TCheckListBox::Move(int pFrom, int pTo) {
  TItem item = At(pFrom);
  static_cast<void>(At(pTo));
  const bool wasSelected = GetItemIndex() == pFrom;
  fItems.erase(fItems.begin() + pFrom);
  fItems.insert(fItems.begin() + pTo, std::move(item));
  if (HandleAllocated()) {
    SendMessageW(GetHandle(), LB_DELETESTRING, static_cast<WPARAM>(pFrom), 0);
    InsertText(pTo, GetItem(pTo));
  }
  if (wasSelected) SetItemIndex(pTo);
  Invalidate();
}

int TCheckListBox::GetItemIndex() const {
  return HandleAllocated() ? static_cast<int>(SendMessageW(AllocatedHandle(), LB_GETCURSEL, 0, 0)) : fItemIndex;
}

void TCheckListBox::SetItemIndex(int pIndex) {
  if (pIndex != -1) static_cast<void>(At(pIndex));
  fItemIndex = pIndex;
  if (HandleAllocated()) SendMessageW(GetHandle(), LB_SETCURSEL, static_cast<WPARAM>(pIndex), 0);
}

void TCheckListBox::InvalidateItem(int pIndex) {
  if (!HandleAllocated()) return;
  RECT rect{};
  SendMessageW(GetHandle(), LB_GETITEMRECT, static_cast<WPARAM>(pIndex), reinterpret_cast<LPARAM>(&rect));
  InvalidateRect(GetHandle(), &rect, FALSE);
}

void TCheckListBox::Toggle(int pIndex) {
  if (!At(pIndex).enabled) return;
  SetChecked(pIndex, !IsChecked(pIndex));
  static_cast<void>(FireEvent(GetAliveToken(), fOnClickCheck, this));
}

int TCheckListBox::ItemHeight() const {
  const HDC screen = GetDC(nullptr);
  int height = 0;
  {
    TCanvas canvas(screen);
    canvas.GetFont() = GetFont();
    height = canvas.TextHeight(L"Wg");
  }
  ReleaseDC(nullptr, screen);
  return std::max(height, ScaledPixels(13)) + ScaledPixels(4);
}

int TCheckListBox::CheckWidth() const {
  return ScaledPixels(19);
}

void TCheckListBox::CMFontChanged(TMessage& pMessage) {
  TWinControl::CMFontChanged(pMessage);
  if (HandleAllocated()) SendMessageW(GetHandle(), LB_SETITEMHEIGHT, 0, ItemHeight());
}

void TCheckListBox::CNMeasureItem(TMessage& pMessage) {
  reinterpret_cast<MEASUREITEMSTRUCT*>(pMessage.LParam)->itemHeight = static_cast<UINT>(ItemHeight());
  pMessage.Result = 1;
}

void TCheckListBox::CNCommand(TMessage& pMessage) {
  if (HIWORD(pMessage.WParam) == LBN_SELCHANGE) Click();
}

void TCheckListBox::CNDrawItem(TMessage& pMessage) {
  const auto& draw = *reinterpret_cast<const DRAWITEMSTRUCT*>(pMessage.LParam);
  pMessage.Result = 1;
  const auto index = static_cast<int>(draw.itemID);
  if (index < 0 || index >= GetCount()) return;
  const TItem& item = At(index);
  const TStyleServices& style = StyleServices();
  TCanvas canvas(draw.hDC);
  const bool selected = (draw.itemState & ODS_SELECTED) != 0;
  canvas.FillRect(draw.rcItem, style.GetSystemColor(selected ? clHighlight : GetColor()));
  RECT box = draw.rcItem;
  RECT text = draw.rcItem;
  const bool fromRight = UseRightToLeftAlignment();
  if (fromRight) {
    box.left = text.right = box.right - CheckWidth();
  } else {
    box.right = text.left = box.left + CheckWidth();
  }
  const int size = ScaledPixels(13);
  InflateRect(&box, -(static_cast<int>(box.right - box.left) - size) / 2,
              -(static_cast<int>(box.bottom - box.top) - size) / 2);
  const bool enabled = item.enabled && IsEnabled();
  const TThemeElement& element = item.checked ? (enabled ? tbCheckBoxCheckedNormal : tbCheckBoxCheckedDisabled)
                                              : (enabled ? tbCheckBoxUncheckedNormal : tbCheckBoxUncheckedDisabled);
  StyleServices().DrawElement(canvas, element, box, GetCurrentPPI());
  InflateRect(&text, -ScaledPixels(2), 0);
  canvas.GetFont() = GetFont();
  canvas.GetFont().SetColor(style.GetSystemColor(!enabled   ? clGrayText
                                                 : selected ? clHighlightText
                                                            : GetFont().GetColor()));
  canvas.GetBrush().SetStyle(TBrushStyle::bsClear);
  canvas.SetRightToLeftText(IsRightToLeft());
  canvas.TextRect(text, item.text,
                  DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX |
                      static_cast<UINT>(fromRight ? DT_RIGHT : DT_LEFT));
  if ((draw.itemState & (ODS_FOCUS | ODS_NOFOCUSRECT)) == ODS_FOCUS) canvas.DrawFocusRect(draw.rcItem);
}

void TCheckListBox::MouseDown(TMouseButton pButton, TShiftState pShift, int pX, int pY) {
  const TAliveWatch alive(GetAliveToken());
  TWinControl::MouseDown(pButton, pShift, pX, pY);
  if (!alive.IsAlive() || pButton != TMouseButton::mbLeft) return;
  const LRESULT at = SendMessageW(GetHandle(), LB_ITEMFROMPOINT, 0, MAKELPARAM(pX, pY));
  const bool isOnBox = UseRightToLeftAlignment() ? pX >= GetClientWidth() - CheckWidth() : pX < CheckWidth();
  if (HIWORD(at) == 0 && LOWORD(at) < fItems.size() && isOnBox) Toggle(LOWORD(at));
}

void TCheckListBox::KeyPress(wchar_t& pKey) {
  const TAliveWatch alive(GetAliveToken());
  TWinControl::KeyPress(pKey);
  if (!alive.IsAlive() || pKey != L' ') return;
  pKey = 0;
  if (const int index = GetItemIndex(); index >= 0) Toggle(index);
}

} // namespace kiv
