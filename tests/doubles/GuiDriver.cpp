#include <doubles/GuiDriver.h>

#include <doubles/StackReport.h>
#include <framework/PostKey.h>

#include <array>
#include <cstdio>
#include <utility>

namespace kiv::test {

namespace {

using TClock = std::chrono::steady_clock;

constexpr wchar_t HostClass[] = L"KivTestHost";

std::function<bool(MSG&)>& PreTranslate() {
  static std::function<bool(MSG&)> hook;
  return hook;
}

void Handle(MSG& message) {
  if (PreTranslate() && PreTranslate()(message)) return;
  TranslateMessage(&message);
  DispatchMessageW(&message);
}

BOOL CALLBACK DumpWindow(HWND window, LPARAM) {
  std::array<wchar_t, 80> name{};
  std::array<wchar_t, 80> text{};
  std::array<char, 400> line{};
  GetClassNameW(window, name.data(), static_cast<int>(name.size()));
  GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
  RECT rect{};
  GetWindowRect(window, &rect);
  std::snprintf(line.data(), line.size(), "  %p in %p %ls \"%ls\" (%ld,%ld %ldx%ld)%s%s%s%s\n",
                static_cast<void*>(window), static_cast<void*>(GetAncestor(window, GA_PARENT)), name.data(),
                text.data(), rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                IsWindowVisible(window) ? "" : " hidden", IsWindowEnabled(window) ? "" : " disabled",
                GetFocus() == window ? " focus" : "", GetCapture() == window ? " capture" : "");
  WriteError(line.data());
  EnumChildWindows(
      window,
      [](HWND child, LPARAM parent) -> BOOL {
        if (reinterpret_cast<LPARAM>(GetAncestor(child, GA_PARENT)) == parent) DumpWindow(child, 0);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(window));
  return TRUE;
}

void SendMouse(DWORD flags, DWORD data = 0) {
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dwFlags = flags;
  input.mi.mouseData = data;
  SendInput(1, &input, sizeof(input));
  PumpMessages();
}

DWORD ButtonFlag(TShiftStateFlag button, bool down) {
  switch (button) {
  case TShiftStateFlag::ssRight:
    return down ? MOUSEEVENTF_RIGHTDOWN : MOUSEEVENTF_RIGHTUP;
  case TShiftStateFlag::ssMiddle:
    return down ? MOUSEEVENTF_MIDDLEDOWN : MOUSEEVENTF_MIDDLEUP;
  default:
    return down ? MOUSEEVENTF_LEFTDOWN : MOUSEEVENTF_LEFTUP;
  }
}

} // namespace

void SetPreTranslate(std::function<bool(MSG&)> pHook) {
  PreTranslate() = std::move(pHook);
}

void PumpMessages() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) Handle(message);
}

bool PumpUntil(const std::function<bool()>& pCondition, std::chrono::milliseconds pLimit) {
  const auto end = TClock::now() + pLimit;
  for (;;) {
    PumpMessages();
    if (pCondition()) return true;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - TClock::now()).count();
    if (left <= 0) break;
    // Conditions may change without a message, such as by another thread.
    MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(left < 20 ? left : 20), QS_ALLINPUT,
                                MWMO_INPUTAVAILABLE);
  }
  WriteError("The condition didn't come to hold. The windows of this thread:\n");
  DumpWindows();
  return false;
}

void DumpWindows() {
  EnumThreadWindows(GetCurrentThreadId(), &DumpWindow, 0);
}

void PressKey(WORD pKey, TShiftState pShift) {
  PostKeyEx32(pKey, pShift, false);
  PumpMessages();
}

void TypeText(const std::wstring& pText) {
  for (const wchar_t character : pText) {
    const SHORT key = VkKeyScanW(character);
    TShiftState shift;
    shift.Put(TShiftStateFlag::ssShift, (HIBYTE(key) & 1) != 0);
    shift.Put(TShiftStateFlag::ssCtrl, (HIBYTE(key) & 2) != 0);
    shift.Put(TShiftStateFlag::ssAlt, (HIBYTE(key) & 4) != 0);
    PressKey(LOBYTE(key), shift);
  }
}

void MoveMouse(POINT pScreen) {
  // Also where it is already: what came under it shall know.
  SetCursorPos(pScreen.x, pScreen.y);
  SendMouse(MOUSEEVENTF_MOVE);
}

void PressMouse(TShiftStateFlag pButton) {
  SendMouse(ButtonFlag(pButton, true));
}

void ReleaseMouse(TShiftStateFlag pButton) {
  SendMouse(ButtonFlag(pButton, false));
}

void ClickMouse(POINT pScreen, TShiftStateFlag pButton) {
  MoveMouse(pScreen);
  PressMouse(pButton);
  ReleaseMouse(pButton);
}

void TurnWheel(int pDelta, bool pSideways) {
  constexpr DWORD sideways = 0x1000; // "MOUSEEVENTF_HWHEEL"
  SendMouse(pSideways ? sideways : static_cast<DWORD>(MOUSEEVENTF_WHEEL), static_cast<DWORD>(pDelta));
}

void TellTopLevelWindows(UINT pMessage, WPARAM pWParam, LPARAM pLParam) {
  MSG message{nullptr, pMessage, pWParam, pLParam, 0, {}};
  EnumThreadWindows(
      GetCurrentThreadId(),
      [](HWND window, LPARAM told) -> BOOL {
        const auto& what = *reinterpret_cast<const MSG*>(told);
        SendMessageW(window, what.message, what.wParam, what.lParam);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&message));
}

POINT PointOf(HWND pWindow, int pX, int pY) {
  POINT point{pX, pY};
  ClientToScreen(pWindow, &point);
  return point;
}

POINT MiddleOf(HWND pWindow) {
  RECT rect{};
  GetWindowRect(pWindow, &rect);
  return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

COLORREF PixelOf(HWND pWindow, int pX, int pY) {
  const HDC dc = GetDC(pWindow);
  const COLORREF color = GetPixel(dc, pX, pY);
  ReleaseDC(pWindow, dc);
  return color;
}

int CountPixels(HWND pWindow, COLORREF pColor) {
  RECT client{};
  GetClientRect(pWindow, &client);
  const int width = client.right;
  const int height = client.bottom;
  const HDC window = GetDC(pWindow);
  const HDC memory = CreateCompatibleDC(window);
  BITMAPINFO info{};
  info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  void* bits = nullptr;
  const HBITMAP bitmap = CreateDIBSection(window, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  const HGDIOBJ former = SelectObject(memory, bitmap);
  BitBlt(memory, 0, 0, width, height, window, 0, 0, SRCCOPY);
  GdiFlush();
  const DWORD wanted = static_cast<DWORD>(GetRValue(pColor)) << 16 | static_cast<DWORD>(GetGValue(pColor)) << 8 |
                       static_cast<DWORD>(GetBValue(pColor));
  int count = 0;
  const auto* const pixels = static_cast<const DWORD*>(bits);
  for (int i = 0; i < width * height; ++i) count += (pixels[i] & 0xFFFFFF) == wanted ? 1 : 0;
  SelectObject(memory, former);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(pWindow, window);
  return count;
}

THostWindow::THostWindow(int pWidth, int pHeight) {
  WNDCLASSW info{};
  info.lpfnWndProc = &THostWindow::Procedure;
  info.hInstance = GetModuleHandleW(nullptr);
  info.lpszClassName = HostClass;
  info.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_WINDOW + 1));
  info.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  RegisterClassW(&info);
  fHandle = CreateWindowExW(0, HostClass, L"Host", WS_POPUP | WS_CLIPCHILDREN, 60, 50, pWidth, pHeight, nullptr,
                            nullptr, info.hInstance, this);
  // Shown without activation first: otherwise Wine leaves it to a window manager, which tests don't have, and waits two
  // seconds for that when the window goes.
  ShowWindow(fHandle, SW_SHOWNOACTIVATE);
  SetForegroundWindow(fHandle);
  SetFocus(fHandle);
  PumpMessages();
}

THostWindow::~THostWindow() {
  Destroy();
}

void THostWindow::Destroy() {
  if (fHandle) DestroyWindow(std::exchange(fHandle, nullptr));
}

int THostWindow::CountOf(UINT pMessage) const {
  return pMessage < std::size(fCounts) ? fCounts[pMessage] : 0;
}

LRESULT CALLBACK THostWindow::Procedure(HWND pWindow, UINT pMessage, WPARAM pWParam, LPARAM pLParam) {
  if (pMessage == WM_NCCREATE) {
    const auto* create = reinterpret_cast<const CREATESTRUCTW*>(pLParam);
    SetWindowLongPtrW(pWindow, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
  }
  auto* const host = reinterpret_cast<THostWindow*>(GetWindowLongPtrW(pWindow, GWLP_USERDATA));
  if (host) {
    if (pMessage < std::size(host->fCounts)) ++host->fCounts[pMessage];
    LRESULT result = 0;
    if (host->onMessage && host->onMessage(pMessage, pWParam, pLParam, result)) return result;
  }
  return DefWindowProcW(pWindow, pMessage, pWParam, pLParam);
}

} // namespace kiv::test
