#include <forms/Control.h>

#include <forms/WinControl.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <platform/DpiAwareness.h>

#include <exception>
#include <optional>

namespace kiv {

TControl::TControl(TComponent* pOwner) : TComponent(pOwner), fCurrentPPI(GetSystemDpi()) {
  using enum TControlStyleFlag;
  fControlStyle = {csCaptureMouse, csClickEvents, csSetCaption, csDoubleClicks};
  fFont.ScaleForDpi(fCurrentPPI);
  const int margin = ScaledPixels(3);
  fMargins = {margin, margin, margin, margin};
  fFont.SetOnChange([this](TPersistent*) { FontChanged(); });
}

TControl::~TControl() {
  BeginDestruction();
  fFont.SetOnChange(nullptr);
  try {
    if (GetCaptureControl() == this) SetMouseCapture(false);
    ForgetCapture();
    if (fParent) fParent->RemoveControl(this);
  } catch (...) {
    ReportException(std::current_exception());
  }
}

void TControl::SetName(const std::wstring& pName) {
  const bool follows = fControlStyle.Contains(TControlStyleFlag::csSetCaption) && !IsLoading() && IsDesigning() &&
                       GetText() == GetName();
  TComponent::SetName(pName);
  if (follows) SetText(pName);
}

void TControl::SetParent(TWinControl* pParent) {
  if (fParent == pParent) return;
  const auto* const self = dynamic_cast<const TWinControl*>(this);
  if (pParent && self && self->ContainsControl(pParent)) {
    throw EInvalidOperation(L"A control can't have itself or a control inside it as its parent");
  }
  const TAliveWatch alive(GetAliveToken());
  std::optional<TAliveWatch> there; // a handler that hears of the focus may free it
  if (pParent) there.emplace(pParent->GetAliveToken());
  if (fParent) fParent->RemoveControl(this);
  if (there && there->IsAlive() && alive.IsAlive() && !fParent) pParent->InsertControl(this);
}

void TControl::Loaded() {
  const TAliveWatch alive(GetAliveToken());
  TComponent::Loaded();
  if (!alive.IsAlive() || !fParent) return;
  // What was read before the parent's own properties were.
  Perform(CM_PARENTFONTCHANGED);
  if (alive.IsAlive()) Perform(CM_PARENTCOLORCHANGED);
  if (alive.IsAlive()) Perform(CM_PARENTSHOWHINTCHANGED);
  if (alive.IsAlive()) Perform(CM_PARENTBIDIMODECHANGED);
  if (alive.IsAlive()) UpdateAnchorBase();
}

// --- state ----------------------------------------------------------------------------------------------------------

void TControl::SetVisible(bool pVisible) {
  if (fVisible == pVisible) return;
  fVisible = pVisible;
  const TAliveWatch alive(GetAliveToken());
  Perform(CM_VISIBLECHANGED);
  if (alive.IsAlive()) RequestAlign();
}

bool TControl::IsShowing() const {
  return fVisible && fParent && fParent->IsShowing();
}

void TControl::SetEnabled(bool pEnabled) {
  if (fEnabled == pEnabled) return;
  fEnabled = pEnabled;
  Perform(CM_ENABLEDCHANGED);
}

void TControl::SetText(const std::wstring& pText) {
  if (fText == pText) return;
  fText = pText;
  Perform(CM_TEXTCHANGED);
}

void TControl::SetCursor(TCursor pCursor) {
  if (fCursor == pCursor) return;
  fCursor = pCursor;
  Perform(CM_CURSORCHANGED);
}

// --- painting -------------------------------------------------------------------------------------------------------

void TControl::InvalidateInParent() {
  if (!fParent || !fParent->HandleAllocated()) return;
  const RECT area = GetBoundsRect();
  // Several may stand on top of one another: only who paints all of its area needs nothing behind it.
  InvalidateRect(fParent->GetHandle(), &area, !fControlStyle.Contains(TControlStyleFlag::csOpaque));
}

void TControl::Invalidate() {
  if (IsShowing()) InvalidateInParent();
}

void TControl::Update() {
  if (fParent) fParent->Update();
}

void TControl::Repaint() {
  Invalidate();
  Update();
}

// --- messages -------------------------------------------------------------------------------------------------------

LRESULT TControl::Perform(UINT pMessage, WPARAM pWParam, LPARAM pLParam) {
  TMessage message{pMessage, pWParam, pLParam, 0};
  WndProc(message);
  return message.Result;
}

void TControl::WndProc(TMessage& pMessage) {
  if (IgnoresMouseWhileDesigning(pMessage)) return;
  if (DispatchOwn(pMessage)) return;
  switch (pMessage.Msg) {
  case WM_MOUSEMOVE:
  case WM_LBUTTONDOWN:
  case WM_RBUTTONDOWN:
  case WM_MBUTTONDOWN:
  case WM_LBUTTONUP:
  case WM_RBUTTONUP:
  case WM_MBUTTONUP:
  case WM_LBUTTONDBLCLK:
  case WM_RBUTTONDBLCLK:
  case WM_MBUTTONDBLCLK:
    HandleMouseButton(pMessage);
    break;
  case WM_CONTEXTMENU:
    HandleContextMenu(pMessage);
    break;
  default:
    DefaultHandler(pMessage);
  }
}

void TControl::DefaultHandler(TMessage& pMessage) {
  static_cast<void>(pMessage); // no window, no default
}

bool TControl::DispatchOwn(TMessage& pMessage) {
  static constexpr struct {
    UINT message;
    void (TControl::*handler)(TMessage&);
  } handlers[] = {{CM_ENABLEDCHANGED, &TControl::CMEnabledChanged},
                  {CM_VISIBLECHANGED, &TControl::CMVisibleChanged},
                  {CM_TEXTCHANGED, &TControl::CMTextChanged},
                  {CM_FONTCHANGED, &TControl::CMFontChanged},
                  {CM_COLORCHANGED, &TControl::CMColorChanged},
                  {CM_CURSORCHANGED, &TControl::CMCursorChanged},
                  {CM_BIDIMODECHANGED, &TControl::CMBiDiModeChanged},
                  {CM_PARENTFONTCHANGED, &TControl::CMParentFontChanged},
                  {CM_PARENTCOLORCHANGED, &TControl::CMParentColorChanged},
                  {CM_PARENTBIDIMODECHANGED, &TControl::CMParentBiDiModeChanged},
                  {CM_PARENTSHOWHINTCHANGED, &TControl::CMParentShowHintChanged},
                  {CM_MOUSEENTER, &TControl::CMMouseEnter},
                  {CM_MOUSELEAVE, &TControl::CMMouseLeave},
                  {CM_HITTEST, &TControl::CMHitTest},
                  {CM_DESIGNHITTEST, &TControl::CMDesignHitTest},
                  {CM_HINTSHOW, &TControl::CMHintShow},
                  {CM_DIALOGCHAR, &TControl::CMDialogChar},
                  {CM_THEMECHANGED, &TControl::CMThemeChanged}};
  if (!IsControlMessage(pMessage.Msg)) return false;
  if (pMessage.Msg == CM_INVALIDATE) {
    Invalidate();
    return true;
  }
  for (const auto& entry : handlers) {
    if (entry.message != pMessage.Msg) continue;
    (this->*entry.handler)(pMessage);
    return true;
  }
  return false;
}

void TControl::CMEnabledChanged(TMessage&) {
  Invalidate();
}

void TControl::CMVisibleChanged(TMessage&) {
  // Shown or hidden: what is there now has to be painted.
  if (fParent && fParent->IsShowing()) InvalidateInParent();
}

void TControl::CMTextChanged(TMessage&) {
  Invalidate();
}

void TControl::CMThemeChanged(TMessage&) {
  Invalidate();
}

} // namespace kiv
