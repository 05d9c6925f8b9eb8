#include <forms/WinControl.h>

#include <forms/Cursors.h>
#include <forms/WindowLink.h>
#include <framework/Application.h>
#include <graphics/StyleServices.h>

#include <windowsx.h>

#include <algorithm>

namespace kiv {

namespace {

constexpr bool IsMouseMessage(UINT message) noexcept {
  return message >= WM_MOUSEFIRST && message <= WM_MOUSELAST && message != WM_MOUSEWHEEL && message != WM_MOUSEHWHEEL;
}

} // namespace

LRESULT TWinControl::Perform(UINT pMessage, WPARAM pWParam, LPARAM pLParam) {
  const bool isPlatforms = !IsControlMessage(pMessage) && !IsReflectedMessage(pMessage);
  if (isPlatforms && fHandle) return SendMessageW(fHandle, pMessage, pWParam, pLParam);
  return TControl::Perform(pMessage, pWParam, pLParam);
}

void TWinControl::WndProc(TMessage& pMessage) {
  if (IsMouseMessage(pMessage.Msg)) {
    const TAliveWatch alive(GetAliveToken());
    TrackMouse(pMessage);
    if (!alive.IsAlive() || IsControlMouseMessage(pMessage)) return;
  } else if (HandleOwnMessage(pMessage) || HandleReflected(pMessage) || HandleWindowMessage(pMessage) ||
             HandleFocusOrKeys(pMessage)) {
    return;
  }
  TControl::WndProc(pMessage);
}

void TWinControl::DefaultHandler(TMessage& pMessage) {
  if (!fLink || IsControlMessage(pMessage.Msg) || IsReflectedMessage(pMessage.Msg)) return;
  // A window that stays behind for its class's sake isn't destroyed yet.
  const bool staysBehind = HasState(TControlStateFlag::csDestroyingHandle) && fLink->depth > 0 && !fLink->isOwnClass;
  if (pMessage.Msg == WM_DESTROY && staysBehind) return;
  pMessage.Result = fLink->CallDefault(pMessage);
}

bool TWinControl::HandleOwnMessage(TMessage& pMessage) {
  switch (pMessage.Msg) {
  case CM_RECREATEWND:
    CMRecreateWnd(pMessage);
    return true;
  case CM_SHOWINGCHANGED:
    CMShowingChanged(pMessage);
    return true;
  case CM_ENTER:
    CMEnter(pMessage);
    return true;
  case CM_EXIT:
    CMExit(pMessage);
    return true;
  case CM_DIALOGKEY:
    CMDialogKey(pMessage);
    return true;
  case CM_WANTSPECIALKEY:
    CMWantSpecialKey(pMessage);
    return true;
  case CM_CHILDKEY:
    CMChildKey(pMessage);
    return true;
  case CM_CHILDFOCUSED:
    CMChildFocused(pMessage);
    return true;
  case CM_TABSTOPCHANGED:
    return true;
  default:
    return false;
  }
}

bool TWinControl::HandleReflected(TMessage& pMessage) {
  if (!IsReflectedMessage(pMessage.Msg)) return false;
  switch (pMessage.Msg) {
  case CN_NOTIFY:
    CNNotify(pMessage);
    return true;
  case CN_COMMAND:
    CNCommand(pMessage);
    return true;
  case CN_DRAWITEM:
    CNDrawItem(pMessage);
    return true;
  case CN_MEASUREITEM:
    CNMeasureItem(pMessage);
    return true;
  case CN_HSCROLL:
  case CN_VSCROLL:
    CNScroll(pMessage);
    return true;
  case CN_KEYDOWN:
  case CN_KEYUP:
  case CN_CHAR:
  case CN_SYSKEYDOWN:
  case CN_SYSCHAR:
    CNKey(pMessage);
    return true;
  default:
    if (pMessage.Msg >= CN_CTLCOLORMSGBOX && pMessage.Msg <= CN_CTLCOLORSTATIC) {
      CNCtlColor(pMessage);
      return true;
    }
    return false;
  }
}

bool TWinControl::HandleWindowMessage(TMessage& pMessage) {
  switch (pMessage.Msg) {
  case WM_PAINT:
    WMPaint(pMessage);
    return true;
  case WM_ERASEBKGND:
    WMEraseBkgnd(pMessage);
    return true;
  case WM_PRINTCLIENT:
    WMPrintClient(pMessage);
    return true;
  case WM_WINDOWPOSCHANGED:
    WMWindowPosChanged(pMessage);
    return true;
  case WM_SIZE:
    WMSize(pMessage);
    return true;
  case WM_DESTROY:
    WMDestroy(pMessage);
    return true;
  case WM_SETCURSOR:
    WMSetCursor(pMessage);
    return true;
  case WM_NOTIFY:
    WMNotify(pMessage);
    return true;
  case WM_COMMAND:
    WMCommand(pMessage);
    return true;
  case WM_PARENTNOTIFY:
    WMParentNotify(pMessage);
    return true;
  case WM_SYSCOLORCHANGE:
  case WM_THEMECHANGED:
  case WM_SETTINGCHANGE:
    HandleLookChange(pMessage);
    return true;
  case WM_DPICHANGED_AFTERPARENT:
    DefaultHandler(pMessage);
    AdoptWindowPPI();
    return true;
  case WM_GETOBJECT:
    WMGetObject(pMessage);
    return true;
  case WM_MOUSELEAVE:
    HandleMouseLeave(pMessage);
    return true;
  case WM_MOUSEWHEEL:
  case WM_MOUSEHWHEEL:
    HandleWheel(pMessage);
    return true;
  case WM_CAPTURECHANGED:
    WMCaptureChanged(pMessage);
    return true;
  default:
    break;
  }
  if (ReflectMessage(fHandle, pMessage)) return true;
  return false;
}

void TWinControl::WMNotify(TMessage& pMessage) {
  if (!ReflectMessage(fHandle, pMessage)) DefaultHandler(pMessage);
}

void TWinControl::WMCommand(TMessage& pMessage) {
  if (!ReflectMessage(fHandle, pMessage)) DefaultHandler(pMessage);
}

void TWinControl::WMPrintClient(TMessage& pMessage) {
  const auto dc = reinterpret_cast<HDC>(pMessage.WParam);
  if (HasState(TControlStateFlag::csCustomPaint)) {
    PaintAll(dc);
    return;
  }
  const TAliveWatch alive(GetAliveToken());
  DefaultHandler(pMessage);
  if (alive.IsAlive()) PaintControls(dc);
}

// Letters are underlined and the focus is marked from now on.
void TWinControl::HandleCues(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  DefaultHandler(pMessage);
  if (!alive.IsAlive()) return;
  if (HasState(TControlStateFlag::csCustomPaint) || HasGraphicControls()) Invalidate();
}

void TWinControl::WMGetObject(TMessage& pMessage) {
  DefaultHandler(pMessage);
}

void TWinControl::CNCtlColor(TMessage& pMessage) {
  const auto dc = reinterpret_cast<HDC>(pMessage.WParam);
  const TStyleServices& style = StyleServices();
  SetTextColor(dc, static_cast<COLORREF>(style.GetSystemColor(GetFont().GetColor())));
  SetBkColor(dc, static_cast<COLORREF>(style.GetSystemColor(GetColor())));
  pMessage.Result = reinterpret_cast<LRESULT>(fBrush.GetHandle());
}

// Top-level windows only get the most of these: windows of platform classes hear them from what they stand in
// ("WM_SYSCOLORCHANGE"). The root tells all controls in it what has changed.
void TWinControl::HandleLookChange(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  DefaultHandler(pMessage);
  const std::vector<TWinControl*> children =
      alive.IsAlive() && pMessage.Msg != WM_THEMECHANGED ? fTabList : std::vector<TWinControl*>{};
  for (TWinControl* child : children) {
    if (std::find(fTabList.begin(), fTabList.end(), child) == fTabList.end() || !child->fHandle) continue;
    SendMessageW(child->fHandle, pMessage.Msg, pMessage.WParam, pMessage.LParam);
    if (!alive.IsAlive()) return;
  }
  if (!alive.IsAlive() || GetParent()) return;
  const bool isFont = pMessage.Msg == WM_SETTINGCHANGE && pMessage.WParam == SPI_SETNONCLIENTMETRICS;
  if (isFont && IsParentFont()) TakeSystemFont();
  if (!alive.IsAlive()) return;
  const TStyleChange change = StyleServices().HandleMessage(pMessage.Msg, pMessage.WParam, pMessage.LParam);
  if (change != TStyleChange::scNone) Perform(CM_THEMECHANGED);
}

// --- mouse ----------------------------------------------------------------------------------------------------------

bool TWinControl::IsControlMouseMessage(TMessage& pMessage) {
  if (!HasGraphicControls()) return false;
  const POINT point{GET_X_LPARAM(pMessage.LParam), GET_Y_LPARAM(pMessage.LParam)};
  TControl* target = nullptr;
  if (GetCapture() == fHandle) {
    TControl* const holder = GetCaptureControl();
    if (holder && holder != this && holder->GetParent() == this) target = holder;
  } else {
    target = ControlAtPos(point, false);
  }
  if (!target) return false;
  const TAliveWatch alive(GetAliveToken());
  const LPARAM inside = MAKELPARAM(point.x - target->GetLeft(), point.y - target->GetTop());
  pMessage.Result = target->Perform(pMessage.Msg, pMessage.WParam, inside);
  // Only the window's own procedure makes the wish for a menu of it.
  if (pMessage.Msg == WM_RBUTTONUP && alive.IsAlive()) DefaultHandler(pMessage);
  return true;
}

void TWinControl::SetMouseControl(TControl* pControl) {
  if (fMouseControl == pControl) return;
  const TAliveWatch alive(GetAliveToken());
  TControl* const former = std::exchange(fMouseControl, pControl);
  if (former) former->Perform(CM_MOUSELEAVE);
  if (alive.IsAlive() && fMouseControl == pControl && pControl) pControl->Perform(CM_MOUSEENTER);
}

void TWinControl::TrackMouse(TMessage& pMessage) {
  if (pMessage.Msg != WM_MOUSEMOVE || !fHandle) return;
  const TAliveWatch alive(GetAliveToken());
  if (!fIsMouseInside) {
    TRACKMOUSEEVENT track{sizeof(TRACKMOUSEEVENT), TME_LEAVE, fHandle, 0};
    fIsMouseInside = TrackMouseEvent(&track) != 0;
    Perform(CM_MOUSEENTER);
    if (!alive.IsAlive()) return;
  }
  if (HasGraphicControls()) {
    SetMouseControl(ControlAtPos({GET_X_LPARAM(pMessage.LParam), GET_Y_LPARAM(pMessage.LParam)}, false));
  }
}

void TWinControl::HandleMouseLeave(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  DefaultHandler(pMessage);
  if (!alive.IsAlive()) return;
  fIsMouseInside = false;
  SetMouseControl(nullptr);
  if (alive.IsAlive()) Perform(CM_MOUSELEAVE);
}

// What isn't used up goes to the parent window, by the platform.
void TWinControl::HandleWheel(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  const POINT screen{GET_X_LPARAM(pMessage.LParam), GET_Y_LPARAM(pMessage.LParam)};
  const TShiftState shift = KeysToShiftState(GET_KEYSTATE_WPARAM(pMessage.WParam));
  const int delta = GET_WHEEL_DELTA_WPARAM(pMessage.WParam);
  const bool isUsed =
      pMessage.Msg == WM_MOUSEWHEEL ? DoMouseWheel(shift, delta, screen) : DoMouseWheelHorz(shift, delta, screen);
  if (!isUsed && alive.IsAlive()) DefaultHandler(pMessage);
}

// The window under the pointer asks again, as after a move.
void TWinControl::ApplyScreenCursor() {
  POINT point;
  const HWND window = GetCursorPos(&point) ? WindowFromPoint(point) : nullptr;
  if (!NearestControl(window)) return;
  const LRESULT hit = SendMessageW(window, WM_NCHITTEST, 0, MAKELPARAM(point.x, point.y));
  SendMessageW(window, WM_SETCURSOR, reinterpret_cast<WPARAM>(window), MAKELPARAM(hit, WM_MOUSEMOVE));
}

void TWinControl::WMSetCursor(TMessage& pMessage) {
  const bool isHere = reinterpret_cast<HWND>(pMessage.WParam) == fHandle && LOWORD(pMessage.LParam) == HTCLIENT;
  TCursor cursor = isHere ? Screen().GetCursor() : crDefault;
  if (isHere && cursor == crDefault) {
    POINT point;
    GetCursorPos(&point);
    TControl* control = ControlAtPos(ScreenToClient(point), false);
    if (!control) control = this;
    for (; control && cursor == crDefault; control = control->GetParent()) cursor = control->GetCursor();
  }
  if (cursor == crDefault) {
    DefaultHandler(pMessage);
    return;
  }
  ::SetCursor(CursorHandle(cursor));
  pMessage.Result = 1;
}

} // namespace kiv
