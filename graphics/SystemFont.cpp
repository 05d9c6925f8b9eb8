#include <graphics/Font.h>

#include <framework/Exceptions.h>
#include <platform/DpiAwareness.h>
#include <platform/ShellApi.h>

namespace kiv {

namespace {

// The user's settings in the size for some dots per inch; in that for the system's where it knows but that one.
template <typename T>
int Ask(UINT action, T& settings, int dpi) {
  const auto ask = ShellApi().SystemParametersInfoForDpi;
  if (ask && ask(action, sizeof(T), &settings, 0, static_cast<UINT>(dpi))) return dpi;
  if (!SystemParametersInfoW(action, sizeof(T), &settings, 0)) {
    throw EOSError(GetLastError(), L"The system's fonts can't be read");
  }
  return GetSystemDpi();
}

} // namespace

TFont TFont::System(TSystemFont pWhich, int pDpi) {
  LOGFONTW font{};
  int dpi;
  if (pWhich == TSystemFont::sfIconTitle) {
    dpi = Ask(SPI_GETICONTITLELOGFONT, font, pDpi);
  } else {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    dpi = Ask(SPI_GETNONCLIENTMETRICS, metrics, pDpi);
    switch (pWhich) {
    case TSystemFont::sfMenu:
      font = metrics.lfMenuFont;
      break;
    case TSystemFont::sfStatus:
      font = metrics.lfStatusFont;
      break;
    case TSystemFont::sfCaption:
      font = metrics.lfCaptionFont;
      break;
    default:
      font = metrics.lfMessageFont;
    }
  }
  TFont made(font, dpi);
  made.ScaleForDpi(pDpi);
  return made;
}

bool TFont::IsInstalled(const std::wstring& pName) {
  if (pName.empty() || pName.size() >= LF_FACESIZE) return false;
  LOGFONTW wanted{};
  wanted.lfCharSet = DEFAULT_CHARSET;
  pName.copy(wanted.lfFaceName, LF_FACESIZE - 1);
  const HDC screen = GetDC(nullptr);
  bool found = false;
  EnumFontFamiliesExW(
      screen, &wanted,
      [](const LOGFONTW*, const TEXTMETRICW*, DWORD, LPARAM result) -> int {
        *reinterpret_cast<bool*>(result) = true;
        return 0;
      },
      reinterpret_cast<LPARAM>(&found), 0);
  ReleaseDC(nullptr, screen);
  return found;
}

} // namespace kiv
