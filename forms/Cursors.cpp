#include <forms/Cursors.h>

#include <unordered_map>

namespace kiv {

namespace {

std::unordered_map<TCursor, HCURSOR>& OwnCursors() {
  static std::unordered_map<TCursor, HCURSOR> cursors;
  return cursors;
}

const wchar_t* SystemName(TCursor cursor) noexcept {
  switch (cursor) {
  case crCross:
    return IDC_CROSS;
  case crIBeam:
    return IDC_IBEAM;
  case crSizeNESW:
    return IDC_SIZENESW;
  case crSizeNS:
  case crVSplit:
    return IDC_SIZENS;
  case crSizeNWSE:
    return IDC_SIZENWSE;
  case crSizeWE:
  case crHSplit:
    return IDC_SIZEWE;
  case crUpArrow:
    return IDC_UPARROW;
  case crHourGlass:
    return IDC_WAIT;
  case crNo:
    return IDC_NO;
  case crAppStart:
    return IDC_APPSTARTING;
  case crHelp:
    return IDC_HELP;
  case crHandPoint:
    return IDC_HAND;
  case crSizeAll:
    return IDC_SIZEALL;
  default:
    return IDC_ARROW;
  }
}

} // namespace

HCURSOR CursorHandle(TCursor pCursor) noexcept {
  if (pCursor == crDefault || pCursor == crNone) return nullptr;
  const auto& own = OwnCursors();
  const auto found = own.find(pCursor);
  return found != own.end() ? found->second : LoadCursorW(nullptr, SystemName(pCursor));
}

void SetCursorHandle(TCursor pCursor, HCURSOR pHandle) {
  if (pHandle)
    OwnCursors()[pCursor] = pHandle;
  else
    OwnCursors().erase(pCursor);
}

} // namespace kiv
