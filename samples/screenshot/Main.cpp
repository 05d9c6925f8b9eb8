// Saves a picture of the window that has come up, once nothing changes in it any more.
//
//   screenshot OUT.png [SECONDS]     how long to wait for a window at most; 30

#include <graphics/Bitmap.h>
#include <platform/Exception.h>
#include <platform/Lifecycle.h>

#include <ole2.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

using namespace kiv;

BOOL CALLBACK Join(HWND window, LPARAM all) {
  RECT rect{};
  if (!IsWindowVisible(window) || window == GetDesktopWindow() || !GetWindowRect(window, &rect)) return TRUE;
  RECT& area = *reinterpret_cast<RECT*>(all);
  UnionRect(&area, &area, &rect);
  return TRUE;
}

// A window may say that it isn't ready yet.
BOOL CALLBACK IsReady(HWND window, LPARAM) {
  return GetPropW(window, L"Kiv.Busy") == nullptr;
}

// Around all windows that can be seen; empty if there are none.
RECT AreaOfWindows() {
  RECT area{};
  EnumWindows(&Join, reinterpret_cast<LPARAM>(&area));
  const RECT screen{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
  RECT seen{};
  IntersectRect(&seen, &area, &screen);
  return seen;
}

TBitmap Capture(const RECT& area) {
  TBitmap picture(static_cast<int>(area.right - area.left), static_cast<int>(area.bottom - area.top));
  const HDC screen = GetDC(nullptr);
  BitBlt(picture.GetCanvas().GetHandle(), 0, 0, picture.GetWidth(), picture.GetHeight(), screen, area.left, area.top,
         SRCCOPY);
  ReleaseDC(nullptr, screen);
  return picture;
}

int Run(const std::wstring& path, int seconds) {
  std::optional<TBitmap> last;
  for (int left = seconds * 2; left > 0; --left) {
    Sleep(500);
    const RECT area = AreaOfWindows();
    if (IsRectEmpty(&area) || !EnumWindows(&IsReady, 0)) continue;
    TBitmap now = Capture(area);
    const auto pixels = now.Pixels();
    if (last && std::equal(pixels.begin(), pixels.end(), last->Pixels().begin(), last->Pixels().end())) {
      now.SaveToFile(path);
      return 0;
    }
    last = std::move(now);
  }
  std::fputs(last ? "screenshot: the windows don't come to rest\n" : "screenshot: no window came up\n", stderr);
  return 1;
}

} // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 2) {
    std::fputs("Usage: screenshot OUT.png [SECONDS]\n", stderr);
    return 2;
  }
  OleInitialize(nullptr);
  int result = 1;
  try {
    result = Run(argv[1], argc > 2 ? static_cast<int>(std::wcstol(argv[2], nullptr, 10)) : 30);
  } catch (const EException& e) {
    std::fprintf(stderr, "screenshot: %ls\n", e.Message().c_str());
  }
  Shutdown();
  OleUninitialize();
  return result;
}
