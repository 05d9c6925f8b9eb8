#include <forms/Hint.h>

#include <forms/Timer.h>
#include <framework/Application.h>
#include <graphics/Canvas.h>
#include <platform/Lifecycle.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace kiv {

namespace {

/// The one hint of the process: waits while the pointer rests on a control, shows, and hides after a while.
class THintController {
public:
  static THintController& Instance() {
    if (!fInstance) {
      fInstance.reset(new THintController);
      AtShutdown([] { fInstance.reset(); });
    }
    return *fInstance;
  }
  static THintController* Standing() noexcept { return fInstance.get(); }

  void Mouse(TControl& control, const TMessage& message) {
    switch (message.Msg) {
    case WM_MOUSEMOVE:
      Move(control);
      break;
    default:
      // A click or a key means that the user knows what he wants.
      Cancel();
      fQuiet = &control;
      GetCursorPos(&fPoint);
    }
  }

  void Leave(const TControl& control) {
    for (const TControl* one = &control; one; one = one->GetParent()) {
      if (fQuiet == one) fQuiet = nullptr;
      if (fControl != one) continue;
      Cancel();
      return;
    }
  }

  void Cancel() {
    fTimer.SetEnabled(false);
    fWindow.ReleaseHint();
    fWatch.reset();
    fControl = nullptr;
    fShown = false;
    if (fOwnHint) Application().SetHint({});
    fOwnHint = false;
  }

private:
  THintController() {
    fTimer.SetEnabled(false);
    fTimer.SetOnTimer([this](TPersistent*) { Elapsed(); });
  }

  // Whose hint the application shows in its status bar.
  static std::wstring HintOf(const TControl* control) {
    while (control && control->GetHint().empty()) control = control->GetParent();
    return control ? control->GetHint() : std::wstring();
  }

  void Move(TControl& under) {
    POINT point;
    GetCursorPos(&point);
    if (fControl == &under && fWatch && fWatch->IsAlive()) {
      MoveInside(point);
      return;
    }
    if (&under == fQuiet && IsNear(point)) {
      if (fControl) Cancel();
      return;
    }
    const bool shownBefore = fShown && IsWindowVisible(fWindow.AllocatedHandle());
    Cancel();
    fQuiet = nullptr;
    fControl = &under;
    fWatch = std::make_unique<TAliveWatch>(under.GetAliveToken());
    fPoint = point;
    const std::wstring hint = HintOf(&under);
    fOwnHint = !hint.empty();
    if (fOwnHint) Application().SetHint(GetLongHint(hint));
    Wait(shownBefore);
  }

  // Of where the click was: a control may be large.
  bool IsNear(POINT point) const {
    const int reach = GetSystemMetrics(SM_CYSMICON);
    return std::abs(point.x - fPoint.x) <= reach && std::abs(point.y - fPoint.y) <= reach;
  }

  // A control may have several hints, each for an area of its own (CM_HINTSHOW).
  void MoveInside(POINT point) {
    if (point.x == fPoint.x && point.y == fPoint.y) return;
    fPoint = point;
    if (fShown && PtInRect(&fArea, point)) return;
    const bool shownBefore = fShown && IsWindowVisible(fWindow.AllocatedHandle());
    fWindow.ReleaseHint();
    fShown = false;
    Wait(shownBefore);
  }

  // From one to the next it goes quicker.
  void Wait(bool shownBefore) {
    const int pause = static_cast<int>(GetDoubleClickTime());
    StartTimer(shownBefore ? pause / 5 : pause);
  }

  void StartTimer(int milliseconds) {
    fTimer.SetEnabled(false);
    fTimer.SetInterval(milliseconds);
    fTimer.SetEnabled(true);
  }

  void Elapsed() {
    fTimer.SetEnabled(false);
    if (!fControl || !fWatch->IsAlive() || fShown) {
      fWindow.ReleaseHint();
      return;
    }
    const TAliveWatch alive = *fWatch;
    // Who has nothing to say leaves it to its parent.
    for (TControl* control = fControl; control; control = control->GetParent()) {
      const TAliveWatch shower(control->GetAliveToken());
      const TAnswer answer = Show(*control);
      if (answer != TAnswer::Nothing || !alive.IsAlive() || !shower.IsAlive()) return;
    }
  }

  enum class TAnswer { Nothing, Shown, Refused };

  TAnswer Show(TControl& control) {
    if (!control.GetShowHint() || !control.IsShowing()) return TAnswer::Nothing;
    POINT point;
    GetCursorPos(&point);
    THintInfo info;
    info.control = &control;
    info.text = GetShortHint(control.GetHint());
    // Below the pointer.
    info.position = {point.x, point.y + GetSystemMetrics(SM_CYCURSOR) * 2 / 3};
    info.area = control.GetClientRect();
    const TAliveWatch alive(control.GetAliveToken());
    const TControl* const asked = fControl;
    const bool refused = control.Perform(CM_HINTSHOW, 0, reinterpret_cast<LPARAM>(&info)) != 0;
    if (refused || !alive.IsAlive() || fControl != asked) return TAnswer::Refused;
    if (info.text.empty()) return TAnswer::Nothing;
    fWindow.ScaleForPPI(control.GetCurrentPPI());
    RECT rect = fWindow.CalcHintRect(info.maxWidth, info.text);
    OffsetRect(&rect, info.position.x, info.position.y);
    const POINT corner = control.ClientToScreen({0, 0});
    fArea = info.area;
    OffsetRect(&fArea, corner.x, corner.y);
    fShown = true;
    fWindow.SetBiDiMode(control.GetBiDiMode());
    fWindow.ActivateHint(rect, info.text);
    StartTimer(static_cast<int>(GetDoubleClickTime()) * 10);
    return TAnswer::Shown;
  }

  static inline std::unique_ptr<THintController> fInstance;

  TTimer fTimer;
  THintWindow fWindow;
  TControl* fControl = nullptr;
  const TControl* fQuiet = nullptr; // was clicked: no hint until the pointer is elsewhere
  std::unique_ptr<TAliveWatch> fWatch;
  RECT fArea{}; // on the screen
  POINT fPoint{-1, -1};
  bool fShown = false;
  bool fOwnHint = false;
};

constexpr UINT TextFlags = DT_LEFT | DT_NOPREFIX | DT_EXPANDTABS;

} // namespace

THintWindow::THintWindow(TComponent* pOwner) : TWinControl(pOwner) {
  PutControlState(TControlStateFlag::csCustomPaint, true);
  SetDoubleBuffered(true);
  SetColor(clInfoBk);
  GetFont() = TFont::System(TSystemFont::sfStatus, GetCurrentPPI());
  GetFont().SetColor(clInfoText);
  SetVisible(false);
}

THintWindow::~THintWindow() {
  EndWindow();
}

void THintWindow::CreateParams(TCreateParams& pParams) {
  TWinControl::CreateParams(pParams);
  pParams.style = WS_POPUP | WS_BORDER;
  pParams.exStyle |= WS_EX_TOOLWINDOW | WS_EX_TOPMOST | WS_EX_NOACTIVATE;
  pParams.classStyle |= CS_SAVEBITS | CS_DROPSHADOW;
  pParams.wndParent = nullptr;
}

RECT THintWindow::CalcHintRect(int pMaxWidth, const std::wstring& pHint) {
  const HDC screen = GetDC(nullptr);
  TCanvas canvas(screen);
  canvas.GetFont() = GetFont();
  const UINT flags = TextFlags | (pMaxWidth > 0 ? static_cast<UINT>(DT_WORDBREAK) : 0u);
  const SIZE size = canvas.TextExtent(pHint, pMaxWidth > 0 ? pMaxWidth : 0x7FFF, flags);
  canvas.SetHandle(nullptr);
  ReleaseDC(nullptr, screen);
  return {0, 0, size.cx + ScaledPixels(8), size.cy + ScaledPixels(6)};
}

void THintWindow::ActivateHint(const RECT& pRect, const std::wstring& pHint) {
  SetText(pHint);
  RECT rect = pRect;
  MONITORINFO monitor{};
  monitor.cbSize = sizeof(monitor);
  if (GetMonitorInfoW(MonitorFromRect(&rect, MONITOR_DEFAULTTONEAREST), &monitor)) {
    const RECT& area = monitor.rcWork;
    OffsetRect(&rect, std::min<LONG>(0, area.right - rect.right), std::min<LONG>(0, area.bottom - rect.bottom));
    OffsetRect(&rect, std::max<LONG>(0, area.left - rect.left), std::max<LONG>(0, area.top - rect.top));
  }
  HandleNeeded();
  SetWindowPos(GetHandle(), HWND_TOPMOST, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
               SWP_NOACTIVATE | SWP_SHOWWINDOW);
  Invalidate();
}

void THintWindow::ReleaseHint() {
  if (HandleAllocated()) ShowWindow(GetHandle(), SW_HIDE);
}

void THintWindow::PaintWindow(HDC pDC) {
  TCanvas canvas(pDC);
  RECT rect = GetClientRect();
  canvas.FillRect(rect, GetColor());
  InflateRect(&rect, -ScaledPixels(3), -ScaledPixels(2));
  canvas.GetFont() = GetFont();
  canvas.GetBrush().SetStyle(TBrushStyle::bsClear);
  canvas.SetRightToLeftText(IsRightToLeft());
  canvas.TextRect(rect, GetText(), TextFlags | DT_WORDBREAK);
}

void THintWindow::WndProc(TMessage& pMessage) {
  if (pMessage.Msg == WM_NCHITTEST) {
    pMessage.Result = HTTRANSPARENT;
    return;
  }
  if (pMessage.Msg == WM_MOUSEACTIVATE) {
    pMessage.Result = MA_NOACTIVATE;
    return;
  }
  TWinControl::WndProc(pMessage);
}

std::wstring GetShortHint(const std::wstring& pHint) {
  return pHint.substr(0, pHint.find(L'|'));
}

std::wstring GetLongHint(const std::wstring& pHint) {
  const std::size_t bar = pHint.find(L'|');
  return bar == std::wstring::npos ? pHint : pHint.substr(bar + 1);
}

void HintMouseMessage(TControl& pControl, const TMessage& pMessage) {
  if (pMessage.Msg == WM_MOUSELEAVE || pMessage.Msg == CM_MOUSELEAVE) {
    if (THintController* const standing = THintController::Standing()) standing->Leave(pControl);
    return;
  }
  THintController::Instance().Mouse(pControl, pMessage);
}

void CancelHint() noexcept {
  try {
    if (THintController* const standing = THintController::Standing()) standing->Cancel();
  } catch (...) {
    ReportException(std::current_exception());
  }
}

} // namespace kiv
