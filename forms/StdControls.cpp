#include <forms/StdControls.h>

#include <forms/Form.h>
#include <framework/ScaledPixels.h>
#include <graphics/StyleServices.h>

#include <commctrl.h>

#include <algorithm>

namespace kiv {

// --- TLabel ---------------------------------------------------------------------------------------------------------

TLabel::TLabel(TComponent* pOwner) : TGraphicControl(pOwner) {
  StoreColor(clBtnFace);
}

TLabel::~TLabel() = default;

void TLabel::SetAlignment(TAlignment pAlignment) {
  fAlignment = pAlignment;
  Invalidate();
}

void TLabel::SetAutoSize(bool pAutoSize) {
  fAutoSize = pAutoSize;
  AdjustSize();
}

void TLabel::SetWordWrap(bool pWordWrap) {
  fWordWrap = pWordWrap;
  AdjustSize();
  Invalidate();
}

void TLabel::SetEllipsisPosition(TEllipsisPosition pPosition) {
  fEllipsis = pPosition;
  Invalidate();
}

void TLabel::SetShowAccelChar(bool pShow) {
  fShowAccelChar = pShow;
  AdjustSize();
  Invalidate();
}

void TLabel::SetFocusControl(TWinControl* pControl) {
  if (fFocusControl) fFocusControl->RemoveFreeNotification(this);
  fFocusControl = pControl;
  fFocusKey = pControl;
  if (pControl) pControl->FreeNotification(this);
}

void TLabel::Notification(TComponent* pComponent, TOperation pOperation) {
  if (pOperation == TOperation::opRemove && pComponent == fFocusKey) {
    fFocusControl = nullptr;
    fFocusKey = nullptr;
  }
  TGraphicControl::Notification(pComponent, pOperation);
}

UINT TLabel::TextFlags() const noexcept {
  TAlignment alignment = fAlignment;
  if (UseRightToLeftAlignment() && alignment != TAlignment::taCenter) {
    alignment = alignment == TAlignment::taLeftJustify ? TAlignment::taRightJustify : TAlignment::taLeftJustify;
  }
  static constexpr UINT sides[] = {DT_LEFT, DT_RIGHT, DT_CENTER};
  static constexpr UINT ellipses[] = {0, DT_PATH_ELLIPSIS, DT_END_ELLIPSIS, DT_WORD_ELLIPSIS};
  return sides[static_cast<int>(alignment)] | ellipses[static_cast<int>(fEllipsis)] | DT_EXPANDTABS |
         (fWordWrap ? static_cast<UINT>(DT_WORDBREAK) : 0u) | (fShowAccelChar ? 0u : static_cast<UINT>(DT_NOPREFIX));
}

void TLabel::AdjustSize() {
  if (!fAutoSize || IsLoading()) return;
  const HDC screen = GetDC(nullptr);
  SIZE size;
  {
    TCanvas canvas(screen);
    canvas.GetFont() = GetFont();
    // An empty one keeps the height of a line.
    const std::wstring text = StoredText().empty() ? L" " : StoredText();
    size = canvas.TextExtent(text, fWordWrap ? GetWidth() : 0x7FFF,
                             TextFlags() & ~static_cast<UINT>(DT_RIGHT | DT_CENTER));
  }
  ReleaseDC(nullptr, screen);
  // What is aligned to the right grows to the left.
  const bool keepsRight = !fWordWrap && (TextFlags() & DT_RIGHT) != 0;
  const int width = fWordWrap ? GetWidth() : size.cx;
  SetBounds(keepsRight ? GetLeft() + GetWidth() - width : GetLeft(), GetTop(), width, size.cy);
}

void TLabel::Loaded() {
  const TAliveWatch alive(GetAliveToken());
  TGraphicControl::Loaded();
  if (alive.IsAlive()) AdjustSize();
}

void TLabel::CMTextChanged(TMessage& pMessage) {
  TGraphicControl::CMTextChanged(pMessage);
  AdjustSize();
}

void TLabel::CMFontChanged(TMessage& pMessage) {
  TGraphicControl::CMFontChanged(pMessage);
  AdjustSize();
}

void TLabel::CMDialogChar(TMessage& pMessage) {
  const bool isMine = fFocusControl && IsShowing() && IsEnabled() && fShowAccelChar &&
                      IsAccel(static_cast<wchar_t>(pMessage.WParam), StoredText());
  if (!isMine || !fFocusControl->CanFocus()) return;
  pMessage.Result = 1;
  fFocusControl->SetFocus();
}

void TLabel::Paint() {
  TCanvas& canvas = GetCanvas();
  const RECT rect = GetClientRect();
  if (!IsParentColor()) canvas.FillRect(rect, StyleServices().GetSystemColor(GetColor()));
  canvas.GetBrush().SetStyle(TBrushStyle::bsClear);
  canvas.GetFont().SetColor(StyleServices().GetSystemColor(IsEnabled() ? GetFont().GetColor() : clGrayText));
  const bool hides = fShowAccelChar && GetParent() && !GetParent()->ShowsAccelChars();
  canvas.TextRect(rect, StoredText(), TextFlags() | (hides ? static_cast<UINT>(DT_HIDEPREFIX) : 0u));
}

// --- TButton --------------------------------------------------------------------------------------------------------

TButton::TButton(TComponent* pOwner) : TWinControl(pOwner) {
  // The window class has the mouse and makes clicks itself.
  SetControlStyle({TControlStyleFlag::csSetCaption, TControlStyleFlag::csDoubleClicks});
  TWinControl::SetBounds(0, 0, ScaledPixels(75), ScaledPixels(25));
  SetTabStop(true);
}

TButton::~TButton() {
  EndWindow();
}

void TButton::CreateParams(TCreateParams& pParams) {
  TWinControl::CreateParams(pParams);
  pParams.className = L"BUTTON";
  pParams.style |= static_cast<DWORD>(fDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON);
  // It centres its text; aligned to a side it would look odd.
  pParams.exStyle &= ~static_cast<DWORD>(WS_EX_RIGHT);
}

void TButton::SetDefault(bool pDefault) {
  fDefault = pDefault;
  if (!HandleAllocated()) return;
  SendMessageW(GetHandle(), BM_SETSTYLE, static_cast<WPARAM>(pDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON), TRUE);
}

void TButton::Click() {
  if (fModalResult != 0) {
    if (auto* const form = dynamic_cast<TForm*>(&Root())) form->SetModalResult(fModalResult);
  }
  TWinControl::Click();
}

void TButton::CNCommand(TMessage& pMessage) {
  if (HIWORD(pMessage.WParam) == BN_CLICKED) Click();
}

void TButton::CMDialogKey(TMessage& pMessage) {
  const bool isEnter = pMessage.WParam == VK_RETURN;
  const bool isMine = isEnter ? Focused() || (fDefault && !dynamic_cast<TButton*>(NearestControl(::GetFocus())))
                              : pMessage.WParam == VK_ESCAPE && fCancel;
  const bool withKeys =
      !(KeyboardShiftState() & TShiftState{TShiftStateFlag::ssAlt, TShiftStateFlag::ssCtrl}).IsEmpty();
  if (!isMine || withKeys || !CanFocus() || !IsShowing()) return;
  pMessage.Result = 1;
  Click();
}

void TButton::CMDialogChar(TMessage& pMessage) {
  if (!CanFocus() || !IsAccel(static_cast<wchar_t>(pMessage.WParam), GetText())) return;
  pMessage.Result = 1;
  Click();
}

// --- TCheckBox ------------------------------------------------------------------------------------------------------

TCheckBox::TCheckBox(TComponent* pOwner) : TWinControl(pOwner) {
  SetControlStyle({TControlStyleFlag::csSetCaption, TControlStyleFlag::csDoubleClicks});
  TWinControl::SetBounds(0, 0, ScaledPixels(97), ScaledPixels(17));
  SetTabStop(true);
}

TCheckBox::~TCheckBox() {
  EndWindow();
}

void TCheckBox::CreateParams(TCreateParams& pParams) {
  TWinControl::CreateParams(pParams);
  pParams.className = L"BUTTON";
  pParams.style |= BS_CHECKBOX;
  if (UseRightToLeftAlignment()) pParams.style |= BS_LEFTTEXT | BS_RIGHT;
}

void TCheckBox::CreateWnd() {
  TWinControl::CreateWnd();
  SendMessageW(GetHandle(), BM_SETCHECK, fChecked ? BST_CHECKED : BST_UNCHECKED, 0);
}

void TCheckBox::SetChecked(bool pChecked) {
  if (fChecked == pChecked) return;
  fChecked = pChecked;
  if (HandleAllocated()) SendMessageW(GetHandle(), BM_SETCHECK, fChecked ? BST_CHECKED : BST_UNCHECKED, 0);
  Click();
}

void TCheckBox::CNCommand(TMessage& pMessage) {
  if (HIWORD(pMessage.WParam) == BN_CLICKED) SetChecked(!fChecked);
}

void TCheckBox::CMDialogChar(TMessage& pMessage) {
  if (!CanFocus() || !IsAccel(static_cast<wchar_t>(pMessage.WParam), GetText())) return;
  pMessage.Result = 1;
  const TAliveWatch alive(GetAliveToken());
  SetFocus();
  if (alive.IsAlive()) SetChecked(!fChecked);
}

// --- TCustomEdit ----------------------------------------------------------------------------------------------------

TCustomEdit::TCustomEdit(TComponent* pOwner) : TWinControl(pOwner) {
  SetControlStyle({TControlStyleFlag::csDoubleClicks});
  StoreColor(clWindow);
  SetParentColor(false);
  TWinControl::SetBounds(0, 0, ScaledPixels(121), ScaledPixels(23));
  SetTabStop(true);
}

TCustomEdit::~TCustomEdit() {
  EndWindow();
}

TEdit::~TEdit() {
  EndWindow();
}

void TCustomEdit::CreateParams(TCreateParams& pParams) {
  TWinControl::CreateParams(pParams);
  pParams.className = L"EDIT";
  pParams.style |= ES_AUTOHSCROLL;
  if (fReadOnly) pParams.style |= ES_READONLY;
  if (fBorderStyle == TBorderStyle::bsSingle) pParams.exStyle |= WS_EX_CLIENTEDGE;
}

void TCustomEdit::CreateWnd() {
  fCreating = true; // the window tells of its first text
  try {
    TWinControl::CreateWnd();
  } catch (...) {
    fCreating = false;
    throw;
  }
  fCreating = false;
  const HWND window = GetHandle();
  if (fMaxLength > 0) SendMessageW(window, EM_LIMITTEXT, static_cast<WPARAM>(fMaxLength), 0);
  if (!fTextHint.empty()) SendMessageW(window, EM_SETCUEBANNER, 0, reinterpret_cast<LPARAM>(fTextHint.c_str()));
  SendMessageW(window, EM_SETMODIFY, fModified, 0);
  SendMessageW(window, EM_SETSEL, fSelStart, static_cast<LPARAM>(fSelEnd));
}

void TCustomEdit::WMDestroy(TMessage& pMessage) {
  fModified = IsModified();
  SendMessageW(GetHandle(), EM_GETSEL, reinterpret_cast<WPARAM>(&fSelStart), reinterpret_cast<LPARAM>(&fSelEnd));
  TWinControl::WMDestroy(pMessage);
}

void TCustomEdit::CNCommand(TMessage& pMessage) {
  if (HIWORD(pMessage.WParam) == EN_CHANGE && !fCreating) Change();
}

void TCustomEdit::Change() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnChange, this));
}

void TCustomEdit::SetBorderStyle(TBorderStyle pStyle) {
  if (fBorderStyle == pStyle) return;
  fBorderStyle = pStyle;
  RecreateWnd();
}

void TCustomEdit::SetReadOnly(bool pReadOnly) {
  fReadOnly = pReadOnly;
  if (HandleAllocated()) SendMessageW(GetHandle(), EM_SETREADONLY, pReadOnly, 0);
}

void TCustomEdit::SetTextHint(const std::wstring& pHint) {
  fTextHint = pHint;
  if (HandleAllocated()) SendMessageW(GetHandle(), EM_SETCUEBANNER, 0, reinterpret_cast<LPARAM>(fTextHint.c_str()));
}

void TCustomEdit::SetMaxLength(int pLength) {
  fMaxLength = pLength;
  if (HandleAllocated()) SendMessageW(GetHandle(), EM_LIMITTEXT, static_cast<WPARAM>(pLength), 0);
}

bool TCustomEdit::IsModified() const {
  const HWND window = AllocatedHandle();
  return window ? SendMessageW(window, EM_GETMODIFY, 0, 0) != 0 : fModified;
}

void TCustomEdit::SetModified(bool pModified) {
  fModified = pModified;
  if (HandleAllocated()) SendMessageW(GetHandle(), EM_SETMODIFY, pModified, 0);
}

void TCustomEdit::SelectAll() {
  SendMessageW(GetHandle(), EM_SETSEL, 0, -1);
}

int TCustomEdit::GetSelStart() const {
  DWORD start = fSelStart;
  if (HandleAllocated()) SendMessageW(AllocatedHandle(), EM_GETSEL, reinterpret_cast<WPARAM>(&start), 0);
  return static_cast<int>(start);
}

int TCustomEdit::GetSelLength() const {
  DWORD start = fSelStart;
  DWORD end = fSelEnd;
  if (HandleAllocated()) {
    SendMessageW(AllocatedHandle(), EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
  }
  return static_cast<int>(end - start);
}

void TCustomEdit::Select(int pStart, int pLength) {
  SendMessageW(GetHandle(), EM_SETSEL, static_cast<WPARAM>(pStart), pStart + pLength);
  SendMessageW(GetHandle(), EM_SCROLLCARET, 0, 0);
}

void TCustomEdit::SetSelText(const std::wstring& pText) {
  SendMessageW(GetHandle(), EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(pText.c_str()));
}

} // namespace kiv
