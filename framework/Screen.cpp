#include <framework/Screen.h>

#include <framework/Application.h>

#include <utility>

namespace kiv {

TScreen::TScreen() = default;
TScreen::~TScreen() = default;

namespace {

void (*gCursorHook)() = nullptr;

} // namespace

void TScreen::SetCursorHook(void (*pHook)()) noexcept {
  gCursorHook = pHook;
}

void TScreen::SetCursor(TCursor pCursor) {
  if (fCursor == pCursor) return;
  fCursor = pCursor;
  if (gCursorHook) gCursorHook();
}

TScreen& Screen() {
  return Application().GetScreen();
}

TScreen::ScopedModal::ScopedModal() : fScreen(Screen()), fWatch(fScreen.fAlive) {
  ++fScreen.fModalLevel;
}

TScreen::ScopedModal::~ScopedModal() {
  if (fWatch.IsAlive()) --fScreen.fModalLevel;
}

TScreen::ScopedCursor::ScopedCursor(TCursor pCursor)
    : fScreen(Screen()), fWatch(fScreen.fAlive), fOuter(fScreen.fCursor) {
  fScreen.SetCursor(pCursor);
}

TScreen::ScopedCursor::~ScopedCursor() {
  if (fWatch.IsAlive()) fScreen.SetCursor(fOuter);
}

} // namespace kiv
