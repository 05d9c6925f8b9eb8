#include <platform/DpiAwareness.h>

#include <platform/ShellApi.h>

#include <optional>
#include <utility>

namespace kiv {

namespace {

std::optional<TDpiAwareness> MaybeAwarenessOfThread(const TShellApi& api) {
  if (!api.GetThreadDpiAwarenessContext || !api.AreDpiAwarenessContextsEqual) return std::nullopt;
  const DPI_AWARENESS_CONTEXT context = api.GetThreadDpiAwarenessContext();
  const std::pair<DPI_AWARENESS_CONTEXT, TDpiAwareness> known[] = {
      {DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2, TDpiAwareness::dpiPerMonitorV2},
      {DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE, TDpiAwareness::dpiPerMonitor},
      {DPI_AWARENESS_CONTEXT_SYSTEM_AWARE, TDpiAwareness::dpiSystem},
      {DPI_AWARENESS_CONTEXT_UNAWARE, TDpiAwareness::dpiUnaware},
      {DPI_AWARENESS_CONTEXT_UNAWARE_GDISCALED, TDpiAwareness::dpiUnaware},
  };
  for (const auto& [candidate, awareness] : known) {
    if (api.AreDpiAwarenessContextsEqual(context, candidate)) return awareness;
  }
  return std::nullopt;
}

} // namespace

TDpiAwareness GetDpiAwareness() {
  const TShellApi& api = ShellApi();
  if (const auto awareness = MaybeAwarenessOfThread(api)) return *awareness;
  PROCESS_DPI_AWARENESS awareness = PROCESS_DPI_UNAWARE;
  if (!api.GetProcessDpiAwareness || FAILED(api.GetProcessDpiAwareness(nullptr, &awareness))) {
    return TDpiAwareness::dpiUnaware;
  }
  switch (awareness) {
  case PROCESS_SYSTEM_DPI_AWARE:
    return TDpiAwareness::dpiSystem;
  case PROCESS_PER_MONITOR_DPI_AWARE:
    return TDpiAwareness::dpiPerMonitor;
  default:
    return TDpiAwareness::dpiUnaware;
  }
}

int GetSystemDpi() {
  if (const auto ask = ShellApi().GetDpiForSystem) return static_cast<int>(ask());
  const HDC screen = GetDC(nullptr);
  const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
  ReleaseDC(nullptr, screen);
  return dpi > 0 ? dpi : USER_DEFAULT_SCREEN_DPI;
}

int GetWindowDpi(HWND pWindow) {
  const auto ask = ShellApi().GetDpiForWindow;
  const UINT dpi = ask && pWindow ? ask(pWindow) : 0;
  return dpi > 0 ? static_cast<int>(dpi) : GetSystemDpi();
}

int GetSystemMetric(int pIndex, int pDpi) {
  if (const auto ask = ShellApi().GetSystemMetricsForDpi) return ask(pIndex, static_cast<UINT>(pDpi));
  return MulDiv(GetSystemMetrics(pIndex), pDpi, GetSystemDpi());
}

bool IsDarkModeSupported() {
  const TShellApi& api = ShellApi();
  return api.AllowDarkModeForWindow && api.ShouldAppsUseDarkMode;
}

} // namespace kiv
