#include <framework/Screen.h>

#include <framework/Application.h>

#include <utility>

namespace kiv {

TScreen::TScreen() = default;
TScreen::~TScreen() = default;

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
    : fScreen(Screen()), fWatch(fScreen.fAlive), fOuter(std::exchange(fScreen.fCursor, pCursor)) {}

TScreen::ScopedCursor::~ScopedCursor() {
  if (fWatch.IsAlive()) fScreen.fCursor = fOuter;
}

} // namespace kiv
