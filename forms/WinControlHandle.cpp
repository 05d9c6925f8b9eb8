#include <forms/WinControl.h>

#include <forms/WindowLink.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <graphics/StyleServices.h>
#include <platform/DpiAwareness.h>
#include <platform/MainThread.h>

#include <algorithm>

namespace kiv {

// How a window comes and goes: HandleNeeded or UpdateShowing lead to CreateHandle, that to CreateWnd with CreateParams;
// DestroyHandle ends the children's windows and calls DestroyWnd. Whoever ends the window, WMDestroy sees it whole, and
// WindowGone is the last.

HWND TWinControl::GetHandle() {
  HandleNeeded();
  return fHandle;
}

void TWinControl::HandleNeeded() {
  // One that ended may have gone without its last message.
  if (fHandle && (!fLink->hasEnded || TWindowLink::Of(fHandle))) return;
  const TAliveWatch alive(GetAliveToken());
  if (GetParent()) GetParent()->HandleNeeded();
  // The parent may have made it together with its own.
  if (alive.IsAlive() && !fHandle) CreateHandle();
}

bool TWinControl::MayExist() const {
  return GetParent() || (fParentWindow && IsWindow(fParentWindow));
}

void TWinControl::CreateParams(TCreateParams& pParams) {
  pParams.caption = StoredText();
  pParams.style = WS_CHILD | WS_CLIPSIBLINGS;
  if (GetControlStyle().Contains(TControlStyleFlag::csAcceptsControls)) {
    pParams.style |= WS_CLIPCHILDREN;
    pParams.exStyle |= WS_EX_CONTROLPARENT;
  }
  if (!IsEnabled() && !IsDesigning()) pParams.style |= WS_DISABLED;
  if (fTabStop) pParams.style |= WS_TABSTOP;
  if (UseRightToLeftAlignment()) pParams.exStyle |= WS_EX_RIGHT;
  if (IsRightToLeft()) pParams.exStyle |= WS_EX_RTLREADING;
  if (UseRightToLeftScrollBar()) pParams.exStyle |= WS_EX_LEFTSCROLLBAR;
  pParams.x = GetLeft();
  pParams.y = GetTop();
  pParams.width = GetWidth();
  pParams.height = GetHeight();
  if (GetParent())
    pParams.wndParent = GetParent()->fHandle;
  else if (IsWindow(fParentWindow))
    pParams.wndParent = fParentWindow; // the host may have ended it
}

void TWinControl::CreateWnd() {
  if (GetParent()) GetParent()->HandleNeeded();
  TCreateParams params;
  CreateParams(params);
  if (!params.wndParent && (params.style & WS_CHILD) != 0) {
    throw EInvalidOperation(L"Control '" + GetName() + L"' has no parent window");
  }
  CreateWindowHandle(params);
}

void TWinControl::CreateWindowHandle(const TCreateParams& pParams) {
  Application(); // the first to ask makes its thread the main thread
  if (!MainThread::IsCurrent()) throw EInvalidOperation(L"Windows of controls are made by the main thread only");
  TScreen::SetCursorHook(&TWinControl::ApplyScreenCursor);
  const TAliveWatch alive(GetAliveToken());
  const bool isMade = TWindowLink::Create(*this, pParams) != nullptr;
  const DWORD error = GetLastError();
  if (!isMade && alive.IsAlive() && error != 0) throw EOSError(error, L"The window of a control can't be made");
  if (!alive.IsAlive() || !fHandle) throw EAbort(L"The window went while it was made");
  UpdateBrush();
  ApplyLook();
  if (!alive.IsAlive() || !fHandle) throw EAbort(L"The window went while it was made");
  if (!NameToTell().empty()) ApplyAccessibleName();
  StoreWindowBounds();
  if (alive.IsAlive()) AdoptWindowPPI();
  if (alive.IsAlive()) ApplyFont();
  if (!alive.IsAlive() || !fHandle) throw EAbort(L"The window went while it was made");
}

void TWinControl::AdoptLink(TWindowLink* pLink, HWND pWindow) noexcept {
  fLink = pLink;
  fHandle = pWindow;
}

void TWinControl::CreateHandle() {
  if (fHandle) return;
  const TAliveWatch alive(GetAliveToken());
  CreateWnd();
  if (!alive.IsAlive() || !fHandle) return;
  PutControlState(TControlStateFlag::csRecreating, false);
  PlaceAmongSiblings();
  // The client area stands only now.
  if (alive.IsAlive()) Realign();
}

// The first sibling in front of it that has a window says where it belongs.
void TWinControl::PlaceAmongSiblings() {
  if (!GetParent()) return;
  const auto& siblings = GetParent()->fControls;
  auto one = std::find(siblings.begin(), siblings.end(), static_cast<TControl*>(this));
  HWND before = HWND_TOP;
  while (one != siblings.end() && ++one != siblings.end()) {
    auto* const window = dynamic_cast<TWinControl*>(*one);
    if (!window || !window->fHandle) continue;
    before = window->fHandle;
    break;
  }
  if (!fHandle) return;
  SetWindowPos(fHandle, before, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_NOOWNERZORDER);
}

void TWinControl::AdoptWindowPPI() {
  if (fHandle && !GetParent()) ScaleForPPI(GetWindowDpi(fHandle));
}

void TWinControl::RecreateWnd() {
  if (fHandle) Perform(CM_RECREATEWND);
}

void TWinControl::CMRecreateWnd(TMessage&) {
  const TAliveWatch alive(GetAliveToken());
  const ScopedFocusKept kept(*this);
  MarkRecreating();
  DestroyHandle();
  if (!alive.IsAlive()) return;
  UpdateControlState();
  if (alive.IsAlive() && !fHandle && MayExist()) HandleNeeded();
}

void TWinControl::MarkRecreating() {
  PutControlState(TControlStateFlag::csRecreating, true);
  for (TWinControl* child : fTabList) {
    if (child->fHandle) child->MarkRecreating();
  }
}

void TWinControl::DestroyHandle() {
  if (!fHandle) return;
  const TAliveWatch alive(GetAliveToken());
  const bool isGoing = IsDestroying();
  const std::vector<TWinControl*> children = fTabList;
  for (TWinControl* child : children) {
    if (std::find(fTabList.begin(), fTabList.end(), child) == fTabList.end()) continue;
    child->DestroyHandle();
    if (!isGoing && !alive.IsAlive()) return;
  }
  if (fHandle) DestroyWnd();
}

void TWinControl::DestroyWnd() {
  DestroyWindowHandle();
}

void TWinControl::DestroyWindowHandle() noexcept {
  TWindowLink* const link = fLink;
  if (!link) return;
  const TAliveWatch alive(GetAliveToken());
  PutControlState(TControlStateFlag::csDestroyingHandle, true);
  if (link->depth > 0 && !link->isOwnClass) {
    // The window class is at work further down the stack: the window stays, without its control, until that returns.
    TMessage message{WM_DESTROY, 0, 0, 0};
    try {
      WndProc(message);
    } catch (...) {
      ReportException(std::current_exception());
    }
    if (fLink == link) {
      WindowGone();
      link->Abandon();
    }
  } else {
    const HWND window = fHandle;
    DestroyWindow(window);
    // Who stands in front may have kept the last message to himself, or the window.
    if (alive.IsAlive() && fLink == link && TWindowLink::Of(window)) {
      WindowGone();
      link->Abandon();
    }
  }
  if (alive.IsAlive()) PutControlState(TControlStateFlag::csDestroyingHandle, false);
}

LRESULT TWinControl::CallWindowClass(UINT pMessage, WPARAM pWParam, LPARAM pLParam) const {
  return fLink ? fLink->CallClass(pMessage, pWParam, pLParam) : 0;
}

void TWinControl::WMDestroy(TMessage& pMessage) {
  StoreText(GetText());
  if (!NameToTell().empty()) {
    // The service keeps it for the window's number otherwise.
    const std::wstring name = std::exchange(fAccessibleName, {});
    const std::wstring label = std::exchange(fLabelText, {});
    ApplyAccessibleName();
    fAccessibleName = name;
    fLabelText = label;
  }
  DefaultHandler(pMessage);
}

void TWinControl::WindowGone() noexcept {
  fHandle = nullptr;
  fLink = nullptr;
  fWindowFont.reset();
  fWindowTheme.clear();
  fShowing = false;
  fIsMouseInside = false;
}

// --- showing --------------------------------------------------------------------------------------------------------

void TWinControl::UpdateControlState() {
  TWinControl* control = this;
  while (control->GetParent()) {
    control = control->GetParent();
    if (!control->fShowing) return;
  }
  if (control->MayExist()) UpdateShowing();
}

void TWinControl::UpdateShowing() {
  const TAliveWatch alive(GetAliveToken());
  const bool isSeen =
      IsVisible() || (IsDesigning() && !GetControlStyle().Contains(TControlStyleFlag::csNoDesignVisible));
  const bool show = isSeen && !IsLoading() && !IsDestroying() && MayExist();
  if (show) {
    if (!fHandle) CreateHandle();
    const std::vector<TWinControl*> children = alive.IsAlive() ? fTabList : std::vector<TWinControl*>{};
    for (TWinControl* child : children) {
      if (std::find(fTabList.begin(), fTabList.end(), child) != fTabList.end()) child->UpdateShowing();
      if (!alive.IsAlive()) return;
    }
  }
  if (!alive.IsAlive() || !fHandle || fShowing == show) return;
  fShowing = show;
  try {
    Perform(CM_SHOWINGCHANGED);
  } catch (...) {
    if (alive.IsAlive()) fShowing = !show;
    throw;
  }
}

void TWinControl::CMShowingChanged(TMessage&) {
  const TAliveWatch alive(GetAliveToken());
  if (!fShowing) GiveFocusAway();
  if (!alive.IsAlive() || !fHandle) return;
  SetWindowPos(fHandle, nullptr, 0, 0, 0, 0,
               SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | (fShowing ? SWP_SHOWWINDOW : SWP_HIDEWINDOW));
}

} // namespace kiv
