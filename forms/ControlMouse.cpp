#include <forms/Control.h>

#include <forms/Hint.h>
#include <forms/WinControl.h>
#include <framework/Exceptions.h>

#include <windowsx.h>

#include <utility>

namespace kiv {

namespace {

// Who has the mouse: its window may be the parent's.
TControl* gCapture = nullptr;

POINT MessagePoint(const TMessage& message) noexcept {
  return {GET_X_LPARAM(message.LParam), GET_Y_LPARAM(message.LParam)};
}

} // namespace

TShiftState KeyboardShiftState() noexcept {
  using enum TShiftStateFlag;
  TShiftState state;
  state.Put(ssShift, GetKeyState(VK_SHIFT) < 0);
  state.Put(ssCtrl, GetKeyState(VK_CONTROL) < 0);
  state.Put(ssAlt, GetKeyState(VK_MENU) < 0);
  return state;
}

TShiftState KeysToShiftState(WPARAM pKeys) noexcept {
  using enum TShiftStateFlag;
  TShiftState state;
  state.Put(ssShift, (pKeys & MK_SHIFT) != 0);
  state.Put(ssCtrl, (pKeys & MK_CONTROL) != 0);
  state.Put(ssLeft, (pKeys & MK_LBUTTON) != 0);
  state.Put(ssRight, (pKeys & MK_RBUTTON) != 0);
  state.Put(ssMiddle, (pKeys & MK_MBUTTON) != 0);
  state.Put(ssAlt, GetKeyState(VK_MENU) < 0);
  return state;
}

int TakeWheelDistance(int& pRest, int pDelta, bool pSideways, int pStep, int pPage) noexcept {
  UINT steps = 3;
  SystemParametersInfoW(pSideways ? SPI_GETWHEELSCROLLCHARS : SPI_GETWHEELSCROLLLINES, 0, &steps, 0);
  pRest += pDelta;
  const int turns = pRest / WHEEL_DELTA;
  pRest -= turns * WHEEL_DELTA;
  return turns * (steps == WHEEL_PAGESCROLL ? pPage : static_cast<int>(steps) * pStep);
}

TControl* GetCaptureControl() noexcept {
  const HWND window = GetCapture();
  TWinControl* const control = window ? FindControl(window) : nullptr;
  if (control && gCapture && gCapture != control && gCapture->GetParent() == control) return gCapture;
  return control;
}

bool TControl::GetMouseCapture() const {
  return GetCaptureControl() == this;
}

void TControl::ForgetCapture() noexcept {
  if (gCapture == this) gCapture = nullptr;
}

void TWinControl::WMCaptureChanged(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  const auto next = reinterpret_cast<HWND>(pMessage.LParam);
  TControl* const former = next != fHandle ? std::exchange(gCapture, nullptr) : nullptr;
  // Whose window it was; a parent tells a child that has none.
  const bool isOurs = former && (former == this || former->GetParent() == this);
  if (isOurs) former->CaptureLost();
  if (alive.IsAlive()) DefaultHandler(pMessage);
}

void TControl::CaptureLost() {
  PutControlState(TControlStateFlag::csLButtonDown, false);
  PutControlState(TControlStateFlag::csClicked, false);
}

void TControl::SetMouseCapture(bool pCapture) {
  if (GetMouseCapture() == pCapture) return;
  if (!pCapture) {
    gCapture = nullptr; // given back: nobody loses it
    ReleaseCapture();
    return;
  }
  auto* const self = dynamic_cast<TWinControl*>(this);
  TWinControl* const holder = self ? self : fParent;
  if (!holder) throw EInvalidOperation(L"A control without a parent can't take the mouse");
  const HWND window = holder->GetHandle();
  // What the former one hears of its loss is foreign code.
  const TAliveWatch alive(GetAliveToken());
  if (GetCapture() == window && gCapture) std::exchange(gCapture, nullptr)->CaptureLost();
  if (!alive.IsAlive()) return;
  SetCapture(window);
  if (alive.IsAlive()) gCapture = this;
}

bool TControl::IgnoresMouseWhileDesigning(const TMessage& pMessage) {
  if (!IsDesigning() || pMessage.Msg < WM_MOUSEFIRST || pMessage.Msg > WM_MOUSELAST) return false;
  return Perform(CM_DESIGNHITTEST, pMessage.WParam, pMessage.LParam) == 0;
}

bool TControl::HasHintAbove() const noexcept {
  const TControl* control = this;
  while (control && control->fHint.empty() && !control->fShowHint) control = control->GetParent();
  return control != nullptr;
}

void TControl::HandleMouseButton(TMessage& pMessage) {
  using enum TMouseButton;
  if (HasHintAbove()) HintMouseMessage(*this, pMessage);
  switch (pMessage.Msg) {
  case WM_MOUSEMOVE: {
    const TAliveWatch alive(GetAliveToken());
    DefaultHandler(pMessage);
    const POINT point = MessagePoint(pMessage);
    if (alive.IsAlive()) MouseMove(KeysToShiftState(pMessage.WParam), point.x, point.y);
    return;
  }
  case WM_LBUTTONDOWN:
  case WM_LBUTTONDBLCLK:
    HandleButtonDown(pMessage, mbLeft, pMessage.Msg == WM_LBUTTONDBLCLK);
    return;
  case WM_RBUTTONDOWN:
  case WM_RBUTTONDBLCLK:
    HandleButtonDown(pMessage, mbRight, pMessage.Msg == WM_RBUTTONDBLCLK);
    return;
  case WM_MBUTTONDOWN:
  case WM_MBUTTONDBLCLK:
    HandleButtonDown(pMessage, mbMiddle, pMessage.Msg == WM_MBUTTONDBLCLK);
    return;
  case WM_LBUTTONUP:
    HandleButtonUp(pMessage, mbLeft);
    return;
  case WM_RBUTTONUP:
    HandleButtonUp(pMessage, mbRight);
    return;
  default:
    HandleButtonUp(pMessage, mbMiddle);
  }
}

void TControl::HandleButtonDown(TMessage& pMessage, TMouseButton pButton, bool pDouble) {
  const TAliveWatch alive(GetAliveToken());
  const bool isLeft = pButton == TMouseButton::mbLeft;
  if (isLeft) {
    PutControlState(TControlStateFlag::csLButtonDown, true);
    const bool isClick = fControlStyle.Contains(TControlStyleFlag::csClickEvents) &&
                         (!pDouble || !fControlStyle.Contains(TControlStyleFlag::csDoubleClicks));
    PutControlState(TControlStateFlag::csClicked, isClick);
  }
  // The window class may run a loop of its own in here, until the button comes up.
  DefaultHandler(pMessage);
  if (!alive.IsAlive()) return;
  if (isLeft && fControlStyle.Contains(TControlStyleFlag::csCaptureMouse) && (GetKeyState(VK_LBUTTON) < 0)) {
    SetMouseCapture(true);
    if (!alive.IsAlive()) return;
  }
  TShiftState shift = KeysToShiftState(pMessage.WParam);
  const POINT point = MessagePoint(pMessage);
  if (pDouble && fControlStyle.Contains(TControlStyleFlag::csDoubleClicks)) {
    shift.Include(TShiftStateFlag::ssDouble);
    if (isLeft) DblClick();
    if (!alive.IsAlive()) return;
  }
  MouseDown(pButton, shift, point.x, point.y);
}

void TControl::HandleButtonUp(TMessage& pMessage, TMouseButton pButton) {
  const TAliveWatch alive(GetAliveToken());
  const POINT point = MessagePoint(pMessage);
  DefaultHandler(pMessage);
  if (!alive.IsAlive()) return;
  if (pButton == TMouseButton::mbLeft) {
    PutControlState(TControlStateFlag::csLButtonDown, false);
    if (fControlStyle.Contains(TControlStyleFlag::csCaptureMouse)) SetMouseCapture(false);
    if (!alive.IsAlive()) return;
    if (HasState(TControlStateFlag::csClicked)) {
      PutControlState(TControlStateFlag::csClicked, false);
      const RECT area{0, 0, fBox.width, fBox.height};
      if (PtInRect(&area, point)) Click();
      if (!alive.IsAlive()) return;
    }
  }
  MouseUp(pButton, KeysToShiftState(pMessage.WParam), point.x, point.y);
}

void TWinControl::WMContextMenu(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  const POINT screen = MessagePoint(pMessage);
  TControl* const child = screen.x == -1 && screen.y == -1 ? nullptr : ControlAtPos(ScreenToClient(screen), false);
  if (child) pMessage.Result = child->Perform(WM_CONTEXTMENU, pMessage.WParam, pMessage.LParam);
  if (alive.IsAlive() && pMessage.Result == 0) TControl::WndProc(pMessage);
}

void TControl::HandleContextMenu(TMessage& pMessage) {
  if (IsDesigning()) return;
  POINT point = MessagePoint(pMessage);
  if (point.x != -1 || point.y != -1) point = ScreenToClient(point);
  const TAliveWatch alive(GetAliveToken());
  bool handled = false;
  DoContextPopup(point, handled);
  if (!alive.IsAlive() || handled) {
    pMessage.Result = 1;
    return;
  }
  if (ShowPopupMenu(point))
    pMessage.Result = 1;
  else
    DefaultHandler(pMessage);
}

void TControl::CMMouseEnter(TMessage&) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnMouseEnter, this));
}

void TControl::CMMouseLeave(TMessage& pMessage) {
  if (HasHintAbove()) HintMouseMessage(*this, pMessage);
  static_cast<void>(FireEvent(GetAliveToken(), fOnMouseLeave, this));
}

void TControl::MouseDown(TMouseButton pButton, TShiftState pShift, int pX, int pY) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnMouseDown, this, pButton, pShift, pX, pY));
}

void TControl::MouseMove(TShiftState pShift, int pX, int pY) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnMouseMove, this, pShift, pX, pY));
}

void TControl::MouseUp(TMouseButton pButton, TShiftState pShift, int pX, int pY) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnMouseUp, this, pButton, pShift, pX, pY));
}

void TControl::Click() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnClick, this));
}

void TControl::DblClick() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnDblClick, this));
}

bool TControl::DoMouseWheel(TShiftState pShift, int pDelta, POINT pScreen) {
  bool handled = false;
  const bool alive = FireEvent(GetAliveToken(), fOnMouseWheel, this, pShift, pDelta, pScreen, handled);
  return handled || !alive;
}

bool TControl::DoMouseWheelHorz(TShiftState pShift, int pDelta, POINT pScreen) {
  bool handled = false;
  const bool alive = FireEvent(GetAliveToken(), fOnMouseWheelHorz, this, pShift, pDelta, pScreen, handled);
  return handled || !alive;
}

void TControl::DoContextPopup(POINT pPoint, bool& pHandled) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnContextPopup, this, pPoint, pHandled));
}

} // namespace kiv
