#include <platform/MainThreadWaker.h>

#include <platform/ErrorText.h>
#include <platform/Exception.h>
#include <platform/MainThread.h>
#include <platform/ThisModule.h>
#include <platform/Types.h>

#include <atomic>
#include <utility>

namespace kiv::MainThreadWaker {

namespace {

constexpr wchar_t ClassName[] = L"KivMainThreadWaker";
constexpr UINT WakeMessage = WM_APP;
constexpr UINT_PTR YieldTimer = 1;

// Read by any thread that wakes; written on the main thread.
std::atomic<HWND> gWindow{nullptr};

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WakeMessage || (message == WM_TIMER && wParam == YieldTimer)) {
    if (message == WM_TIMER) KillTimer(window, YieldTimer);
    MainThread::RunPosted();
    return 0;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

[[noreturn]] void Fail(const wchar_t* what) {
  throw EException(std::wstring(what) + L": " + GetErrorMessageText(GetLastError()));
}

} // namespace

void Start() {
  WNDCLASSEXW windowClass{};
  windowClass.cbSize = sizeof(windowClass);
  windowClass.lpfnWndProc = &WindowProcedure;
  windowClass.hInstance = ThisModule();
  windowClass.lpszClassName = ClassName;
  if (!RegisterClassExW(&windowClass) && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
    Fail(L"The window class for calls to the main thread can't be registered");
  }
  const HWND window =
      CreateWindowExW(0, ClassName, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, ThisModule(), nullptr);
  if (!window) Fail(L"The window for calls to the main thread can't be made");
  // A window of a former main thread can only be destroyed there: it is told to close.
  if (const HWND former = gWindow.exchange(window)) PostMessageW(former, WM_CLOSE, 0, 0);
}

void Stop() noexcept {
  if (const HWND window = gWindow.exchange(nullptr)) DestroyWindow(window);
  UnregisterClassW(ClassName, ThisModule());
}

bool Wake() noexcept {
  const HWND window = gWindow.load();
  return window && PostMessageW(window, WakeMessage, 0, 0);
}

bool TakeTurnLater() noexcept {
  // Posted messages come before input and painting, timers behind them.
  constexpr UINT waiting = QS_INPUT | QS_PAINT;
  const HWND window = gWindow.load();
  if (window && (HIWORD(GetQueueStatus(waiting)) & waiting) != 0) {
    return SetTimer(window, YieldTimer, USER_TIMER_MINIMUM, nullptr) != 0;
  }
  return Wake();
}

} // namespace kiv::MainThreadWaker
