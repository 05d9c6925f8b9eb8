// The browser: kivexplorer [--dark] [--dpi N] [PATH]
//
// --dpi N shows it as on a monitor of N dots per inch.

#include "ExplorerForm.h"

#include <core/FileFunctions.h>
#include <forms/PreTranslate.h>
#include <framework/Application.h>
#include <graphics/StyleServices.h>
#include <platform/Lifecycle.h>
#include <platform/ShellApi.h>

#include <ole2.h>

#include <cwchar>
#include <string>

namespace {

struct TOptions {
  std::wstring path;
  kiv::TDarkMode dark = kiv::TDarkMode::dmSystem;
  UINT dpi = 0;
};

TOptions ReadOptions() {
  TOptions options;
  for (int i = 1; i < __argc; ++i) {
    const std::wstring argument = __wargv[i];
    if (argument == L"--dark") {
      options.dark = kiv::TDarkMode::dmDark;
    } else if (argument == L"--dpi" && i + 1 < __argc) {
      options.dpi = static_cast<UINT>(std::wcstoul(__wargv[++i], nullptr, 10));
    } else {
      options.path = argument;
    }
  }
  return options;
}

UINT gDpi = 0;

void Run(const TOptions& options) {
  kiv::ScopedShellApi api;
  gDpi = options.dpi;
  if (gDpi > 0) api->GetDpiForWindow = [](HWND) { return gDpi; };
  kiv::Application();
  kiv::StyleServices().SetDarkMode(options.dark);
  kivexplorer::TExplorer explorer;
  explorer.SetOnLastWindowGone([] { PostQuitMessage(0); });
  kivexplorer::TExplorerForm& window = explorer.OpenWindow();
  window.ShowForm();
  kiv::Application().SetHandle(window.GetHandle());
  window.GoTo(options.path.empty() ? kiv::GetUserProfilePath() : options.path);
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    if (kiv::PreTranslateMessage(message)) continue;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  kiv::Application().SetHandle(nullptr);
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
  SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
  OleInitialize(nullptr);
  Run(ReadOptions());
  kiv::Shutdown();
  OleUninitialize();
  return 0;
}
