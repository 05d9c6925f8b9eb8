#include <forms/Form.h>

#include <forms/Hint.h>
#include <forms/PreTranslate.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <framework/ScaledPixels.h>
#include <framework/Screen.h>
#include <platform/MainThread.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace kiv {

namespace {

/// Keeps all other windows of the thread from input for as long as it stands.
class ScopedModalWindows {
public:
  explicit ScopedModalWindows(HWND except) : fExcept(except), fActive(GetActiveWindow()) {
    EnumThreadWindows(GetCurrentThreadId(), &ScopedModalWindows::Disable, reinterpret_cast<LPARAM>(this));
  }
  /// Before the modal window goes: otherwise the platform activates a window of another program.
  void Enable() noexcept {
    for (const HWND window : std::exchange(fDisabled, {})) EnableWindow(window, TRUE);
  }
  ~ScopedModalWindows() {
    Enable();
    if (IsWindow(fActive) && IsWindowVisible(fActive)) SetActiveWindow(fActive);
  }
  ScopedModalWindows(const ScopedModalWindows&) = delete;
  ScopedModalWindows& operator=(const ScopedModalWindows&) = delete;

private:
  static BOOL CALLBACK Disable(HWND window, LPARAM self) {
    auto* const scope = reinterpret_cast<ScopedModalWindows*>(self);
    if (window == scope->fExcept || !IsWindowVisible(window) || !IsWindowEnabled(window)) return TRUE;
    try {
      scope->fDisabled.push_back(window);
      EnableWindow(window, FALSE);
    } catch (...) {
      return FALSE;
    }
    return TRUE;
  }

  HWND fExcept;
  HWND fActive;
  std::vector<HWND> fDisabled;
};

} // namespace

TForm::TForm(TComponent* pOwner) : TCustomControl(pOwner) {
  IncludeStyle(TControlStyleFlag::csAcceptsControls);
  IncludeStyle(TControlStyleFlag::csNoDesignVisible);
  SetVisible(false);
  TCustomControl::SetBounds(0, 0, ScaledPixels(320), ScaledPixels(240));
  GetFont() = TFont::System(TSystemFont::sfMessage, GetCurrentPPI());
  RestoreParentFont();
}

TForm::~TForm() {
  EndWindow();
}

// --- the window -----------------------------------------------------------------------------------------------------

void TForm::CreateParams(TCreateParams& pParams) {
  TCustomControl::CreateParams(pParams);
  if (!IsTopLevel()) return;
  using enum TFormBorderStyle;
  static constexpr DWORD caption = WS_CAPTION | WS_SYSMENU;
  pParams.style &= ~static_cast<DWORD>(WS_CHILD | WS_CLIPSIBLINGS | WS_TABSTOP);
  switch (fBorderStyle) {
  case fbNone:
    pParams.style |= WS_POPUP;
    break;
  case fbSingle:
    pParams.style |= caption | WS_MINIMIZEBOX;
    break;
  case fbSizeable:
    pParams.style |= caption | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;
    break;
  case fbDialog:
    pParams.style |= caption | WS_POPUP;
    pParams.exStyle |= WS_EX_DLGMODALFRAME | WS_EX_WINDOWEDGE;
    break;
  case fbToolWindow:
    pParams.style |= caption | WS_POPUP;
    pParams.exStyle |= WS_EX_TOOLWINDOW;
    break;
  case fbSizeToolWin:
    pParams.style |= caption | WS_THICKFRAME | WS_POPUP;
    pParams.exStyle |= WS_EX_TOOLWINDOW;
    break;
  }
  if (fPosition == TFormPosition::poDefault && !IsRecreating()) pParams.x = pParams.y = CW_USEDEFAULT;
  if (IsRecreating() && fPlacement.showCmd == SW_SHOWMAXIMIZED) pParams.style |= WS_MAXIMIZE;
  if (IsRecreating() && fPlacement.showCmd == SW_SHOWMINIMIZED) pParams.style |= WS_MINIMIZE;
  pParams.wndParent = WindowBehind();
  // The frame is the platform's, and says the language's direction itself.
  if (UseRightToLeftAlignment()) pParams.exStyle &= ~static_cast<DWORD>(WS_EX_RIGHT);
}

// The place behind a window that is maximized or minimized goes with it.
void TForm::CreateWnd() {
  const bool isPlaced = IsRecreating() && IsTopLevel() && fPlacement.length != 0;
  TCustomControl::CreateWnd();
  if (!isPlaced || !HandleAllocated() || fPlacement.showCmd == SW_SHOWNORMAL) return;
  WINDOWPLACEMENT placement = fPlacement;
  placement.showCmd = SW_HIDE;
  SetWindowPlacement(GetHandle(), &placement);
}

void TForm::WMDestroy(TMessage& pMessage) {
  fPlacement = {};
  fPlacement.length = sizeof(fPlacement);
  if (!IsRecreating() || !GetWindowPlacement(AllocatedHandle(), &fPlacement)) fPlacement = {};
  fIsReplacing = IsRecreating() && IsShowing();
  TCustomControl::WMDestroy(pMessage);
}

void TForm::CMRecreateWnd(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  TCustomControl::CMRecreateWnd(pMessage);
  if (alive.IsAlive()) fIsReplacing = false; // a handler may have hidden it meanwhile
}

HWND TForm::WindowBehind() const {
  // Not the form itself, nor a window that stands in front of it.
  const auto isBehind = [this](HWND window) {
    for (; window; window = GetWindow(window, GW_OWNER)) {
      if (window == AllocatedHandle()) return false;
    }
    return true;
  };
  for (const HWND window : {fPopupParent, fModalOwner, static_cast<HWND>(Application().GetHandle())}) {
    if (IsWindow(window) && isBehind(window)) return window;
  }
  return nullptr;
}

void TForm::StandInFrontOfActive() {
  fModalOwner = GetActiveWindow();
  // A window from an earlier time has another owner.
  if (HandleAllocated()) {
    SetWindowLongPtrW(GetHandle(), GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(WindowBehind()));
  }
}

void TForm::SetBorderStyle(TFormBorderStyle pStyle) {
  if (fBorderStyle == pStyle) return;
  fBorderStyle = pStyle;
  RecreateWnd();
}

void TForm::SetPopupParent(HWND pWindow) {
  if (fPopupParent == pWindow) return;
  fPopupParent = pWindow;
  RecreateWnd();
}

void TForm::WndProc(TMessage& pMessage) {
  switch (pMessage.Msg) {
  case WM_CLOSE:
    if (IsTopLevel()) {
      Close();
      return;
    }
    break;
  case WM_ACTIVATE:
    HandleActivate(pMessage);
    return;
  case WM_ACTIVATEAPP:
    if (pMessage.WParam == FALSE) CancelHint();
    break;
  case WM_DPICHANGED:
    HandleDpiChanged(pMessage);
    return;
  case WM_GETMINMAXINFO:
    HandleMinMaxInfo(pMessage);
    return;
  default:
    break;
  }
  TCustomControl::WndProc(pMessage);
}

void TForm::ChangeScale(int pM, int pD, bool pKeepPlace) {
  const TAliveWatch alive(GetAliveToken());
  TCustomControl::ChangeScale(pM, pD, pKeepPlace);
  if (!pKeepPlace || !alive.IsAlive() || !IsTopLevel()) return;
  SetBounds(GetLeft(), GetTop(), MulDivRounded(GetWidth(), pM, pD), MulDivRounded(GetHeight(), pM, pD));
}

void TForm::HandleDpiChanged(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  const RECT suggested = *reinterpret_cast<const RECT*>(pMessage.LParam);
  DisableAlign();
  ScaleForPPI(LOWORD(pMessage.WParam));
  if (!alive.IsAlive()) return;
  SetBoundsRect(suggested);
  if (!alive.IsAlive()) return;
  EnableAlign();
  if (alive.IsAlive()) Invalidate();
}

void TForm::HandleMinMaxInfo(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  DefaultHandler(pMessage);
  if (!alive.IsAlive()) return;
  auto& info = *reinterpret_cast<MINMAXINFO*>(pMessage.LParam);
  const TSizeConstraints& bounds = GetConstraints();
  if (bounds.minWidth > 0) info.ptMinTrackSize.x = bounds.minWidth;
  if (bounds.minHeight > 0) info.ptMinTrackSize.y = bounds.minHeight;
  if (bounds.maxWidth > 0) info.ptMaxTrackSize.x = bounds.maxWidth;
  if (bounds.maxHeight > 0) info.ptMaxTrackSize.y = bounds.maxHeight;
}

// --- showing --------------------------------------------------------------------------------------------------------

void TForm::PlaceForShow() {
  if (!IsTopLevel() || IsZoomed(GetHandle()) || IsIconic(GetHandle())) return;
  RECT area{};
  const HWND owner = GetWindow(GetHandle(), GW_OWNER);
  if (fPosition == TFormPosition::poOwnerFormCenter && owner) {
    GetWindowRect(owner, &area);
  } else if (fPosition == TFormPosition::poScreenCenter || fPosition == TFormPosition::poOwnerFormCenter) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    const HWND active = GetActiveWindow();
    GetMonitorInfoW(MonitorFromWindow(active ? active : GetHandle(), MONITOR_DEFAULTTOPRIMARY), &monitor);
    area = monitor.rcWork;
  } else {
    return;
  }
  SetBounds(static_cast<int>(area.left + area.right - GetWidth()) / 2,
            static_cast<int>(area.top + area.bottom - GetHeight()) / 2, GetWidth(), GetHeight());
}

void TForm::CMShowingChanged(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  if (!IsShowing()) {
    DoHide();
    if (alive.IsAlive()) TCustomControl::CMShowingChanged(pMessage);
    return;
  }
  if (!std::exchange(fIsReplacing, false)) {
    PlaceForShow();
    if (alive.IsAlive()) DoShow();
  }
  // What shows it may have hidden it again.
  if (alive.IsAlive() && IsShowing()) TCustomControl::CMShowingChanged(pMessage);
}

void TForm::ShowForm() {
  const TAliveWatch alive(GetAliveToken());
  SetVisible(true);
  if (!alive.IsAlive() || !HandleAllocated()) return;
  if (IsIconic(GetHandle())) ShowWindow(GetHandle(), SW_RESTORE);
  SetForegroundWindow(GetHandle());
}

void TForm::DoShow() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnShow, this));
}

void TForm::DoHide() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnHide, this));
}

// --- focus ----------------------------------------------------------------------------------------------------------

bool TForm::CanFocus() const {
  return IsVisible() && IsEnabled() && TCustomControl::CanFocus();
}

void TForm::SetActiveControl(TWinControl* pControl) {
  if (fActiveControl) fActiveControl->RemoveFreeNotification(this);
  fActiveControl = pControl;
  fActiveKey = pControl;
  if (!pControl) return;
  pControl->FreeNotification(this);
  const bool isActive = HandleAllocated() && GetActiveWindow() == GetHandle();
  if (isActive && pControl->CanFocus()) pControl->SetFocus();
}

void TForm::Notification(TComponent* pComponent, TOperation pOperation) {
  if (pOperation == TOperation::opRemove && pComponent == fActiveKey) {
    fActiveControl = nullptr;
    fActiveKey = nullptr;
  }
  TCustomControl::Notification(pComponent, pOperation);
}

void TForm::HandleActivate(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  const bool isActive = LOWORD(pMessage.WParam) != WA_INACTIVE;
  TWinControl* const focused = NearestControl(::GetFocus());
  if (!isActive && focused && focused != this && ContainsControl(focused)) SetActiveControl(focused);
  DefaultHandler(pMessage); // gives the focus to the form
  if (!alive.IsAlive()) return;
  static_cast<void>(FireEvent(GetAliveToken(), isActive ? fOnActivate : fOnDeactivate, this));
}

void TForm::WMSetFocus(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  TCustomControl::WMSetFocus(pMessage);
  if (alive.IsAlive() && Focused()) FocusInside();
}

void TForm::FocusInside() {
  const bool isUsable = fActiveControl && ContainsControl(fActiveControl) && fActiveControl->CanFocus();
  TWinControl* const control = isUsable ? fActiveControl : FindNextControl(nullptr, true, true, false);
  if (control && control->HandleAllocated()) control->SetFocus();
}

// --- closing, modal -------------------------------------------------------------------------------------------------

bool TForm::CloseQuery() {
  bool canClose = true;
  const bool alive = FireEvent(GetAliveToken(), fOnCloseQuery, this, canClose);
  return alive && canClose;
}

void TForm::DoClose(TCloseAction& pAction) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnClose, this, pAction));
}

void TForm::Close() {
  if (fModal) {
    SetModalResult(mrCancel);
    return;
  }
  const TAliveWatch alive(GetAliveToken());
  if (!CloseQuery() || !alive.IsAlive()) return;
  TCloseAction action = TCloseAction::caHide;
  DoClose(action);
  if (!alive.IsAlive()) return;
  if (action == TCloseAction::caHide) SetVisible(false);
  if (action == TCloseAction::caMinimize) ShowWindow(GetHandle(), SW_MINIMIZE);
  if (action == TCloseAction::caFree) Release();
}

void TForm::Release() {
  SetVisible(false);
  MainThread::Queue([this, alive = TAliveWatch(GetAliveToken())] {
    if (alive.IsAlive()) delete this;
  });
}

void TForm::SetModalResult(int pResult) {
  fModalResult = pResult;
  // Wakes the loop, wherever the result came from.
  if (fModal && HandleAllocated()) PostMessageW(GetHandle(), WM_NULL, 0, 0);
}

int TForm::ShowModal() {
  if (IsVisible() || !IsEnabled() || fModal) throw EInvalidOperation(L"Cannot make a visible window modal");
  CancelCapture();
  const TAliveWatch alive(GetAliveToken());
  fModalResult = mrNone;
  StandInFrontOfActive();
  HandleNeeded();
  const TScreen::ScopedModal scope;
  ScopedModalWindows others(GetHandle());
  fModal = true;
  int result = mrCancel;
  try {
    ShowForm();
    if (alive.IsAlive()) RunModalLoop();
  } catch (...) {
    if (alive.IsAlive()) fModal = false;
    throw;
  }
  others.Enable();
  if (!alive.IsAlive()) return result;
  result = fModalResult;
  fModal = false;
  SetVisible(false);
  return result;
}

void TForm::RunModalLoop() {
  const TAliveWatch alive(GetAliveToken());
  while (alive.IsAlive()) {
    if (Application().IsTerminated()) fModalResult = mrCancel;
    // A result may be taken back by who is asked.
    if (fModalResult != mrNone) {
      const bool canClose = CloseQuery();
      if (!alive.IsAlive()) return;
      if (canClose || Application().IsTerminated()) return;
      fModalResult = mrNone;
    }
    if (!IsVisible()) {
      fModalResult = mrCancel;
      return;
    }
    MSG message;
    const BOOL got = GetMessageW(&message, nullptr, 0, 0);
    if (got <= 0) {
      // The host's loop is to end: it must see that, too.
      if (got == 0) PostQuitMessage(static_cast<int>(message.wParam));
      fModalResult = mrCancel;
      return;
    }
    if (PreTranslateMessage(message)) continue;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

void TForm::CancelCapture() noexcept {
  if (const HWND holder = GetCapture()) SendMessageW(holder, WM_CANCELMODE, 0, 0);
  ReleaseCapture();
}

} // namespace kiv
