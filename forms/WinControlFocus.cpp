#include <forms/WinControl.h>

#include <forms/Hint.h>
#include <forms/WindowLink.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>

#include <algorithm>
#include <exception>

namespace kiv {

namespace {

// Who has, or last had, the focus among all controls. A change of the application in between doesn't count.
TWinControl* gFocused = nullptr;
int gKept = 0; // how many recreations are going on

} // namespace

TWinControl* NearestControl(HWND pWindow) noexcept {
  for (; pWindow; pWindow = GetAncestor(pWindow, GA_PARENT)) {
    if (TWinControl* const control = FindControl(pWindow)) return control;
  }
  return nullptr;
}

bool TWinControl::Focused() const noexcept {
  return fHandle && GetFocus() == fHandle;
}

bool TWinControl::CanFocus() const {
  const TWinControl* control = this;
  for (;; control = control->GetParent()) {
    if (!(control->IsVisible() && control->IsEnabled())) return false;
    if (!control->GetParent()) break;
  }
  return !control->fParentWindow || IsWindowEnabled(control->fParentWindow);
}

void TWinControl::SetFocus() {
  if (!CanFocus()) throw EInvalidOperation(L"Cannot focus a disabled or invisible window");
  ::SetFocus(GetHandle());
}

void TWinControl::ForgetFocus() noexcept {
  if (gFocused == this) gFocused = GetParent();
}

// Tells all that the focus leaves, from the innermost, and then all that it comes to, from the outermost. Foreign code
// runs at each step: it may move the focus on, and then this move is over.
void TWinControl::MoveFocus(TWinControl* pTo) {
  TWinControl* const from = gFocused;
  if (from == pTo || gKept > 0) return;
  gFocused = pTo;
  std::vector<std::pair<TWinControl*, UINT>> steps;
  for (TWinControl* control = from; control && !control->ContainsControl(pTo); control = control->GetParent()) {
    steps.emplace_back(control, CM_EXIT);
  }
  const auto firstEntered = static_cast<std::ptrdiff_t>(steps.size());
  for (TWinControl* control = pTo; control && !control->ContainsControl(from); control = control->GetParent()) {
    steps.emplace_back(control, CM_ENTER);
  }
  std::reverse(steps.begin() + firstEntered, steps.end());
  std::vector<TAliveWatch> watches;
  for (const auto& [control, message] : steps) watches.emplace_back(control->GetAliveToken());
  for (std::size_t i = 0; i < steps.size(); ++i) {
    if (!watches[i].IsAlive()) continue;
    steps[i].first->Perform(steps[i].second);
    if (gFocused != pTo) return;
  }
}

TWinControl::ScopedFocusKept::ScopedFocusKept(TWinControl& pRoot) {
  TWinControl* const focused = NearestControl(::GetFocus());
  if (pRoot.ContainsControl(focused)) {
    fFocused = focused;
    fWatch = std::make_unique<TAliveWatch>(focused->GetAliveToken());
  }
  ++gKept;
}

TWinControl::ScopedFocusKept::~ScopedFocusKept() {
  if (fWatch && fWatch->IsAlive() && fFocused->fHandle) ::SetFocus(fFocused->fHandle);
  --gKept;
  try {
    if (fWatch) MoveFocus(NearestControl(::GetFocus()));
  } catch (...) {
    ReportException(std::current_exception());
  }
}

// Before it is disabled or hidden: otherwise nobody has the keyboard, and the Tab key leads nowhere.
void TWinControl::GiveFocusAway() {
  const HWND focused = fHandle ? ::GetFocus() : nullptr;
  const bool isHere = focused && (focused == fHandle || IsChild(fHandle, focused));
  if (!isHere || (GetWindowLongW(fHandle, GWL_STYLE) & WS_CHILD) == 0) return;
  const HWND above = GetAncestor(fHandle, GA_PARENT);
  if (!Root().SelectNext(this, true, true, true)) ::SetFocus(above);
}

void TWinControl::WMSetFocus(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  DefaultHandler(pMessage);
  if (!alive.IsAlive()) return;
  const bool isNew = gFocused != this;
  MoveFocus(this);
  if (!isNew || !alive.IsAlive() || !Focused()) return;
  for (TWinControl* above = GetParent(); above;) {
    const TAliveWatch aboveAlive(above->GetAliveToken());
    above->Perform(CM_CHILDFOCUSED, 0, reinterpret_cast<LPARAM>(static_cast<TControl*>(this)));
    if (!alive.IsAlive() || !aboveAlive.IsAlive()) return;
    above = above->GetParent();
  }
}

void TWinControl::WMKillFocus(TMessage& pMessage) {
  const auto next = reinterpret_cast<HWND>(pMessage.WParam);
  const TAliveWatch alive(GetAliveToken());
  DefaultHandler(pMessage);
  if (!alive.IsAlive() || !next) return;
  // A window that isn't a control's but stands in one (an editor inside a combo box) is still inside. Where another
  // control gets it, that one tells both sides.
  TWinControl* const inside = NearestControl(next);
  if (!inside || !FindControl(next)) MoveFocus(inside);
}

void TWinControl::DoEnter() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnEnter, this));
}

void TWinControl::DoExit() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnExit, this));
}

// --- tab order ------------------------------------------------------------------------------------------------------

void TWinControl::SetTabStop(bool pTabStop) {
  if (fTabStop == pTabStop) return;
  fTabStop = pTabStop;
  if (!fHandle) return;
  const LONG style = GetWindowLongW(fHandle, GWL_STYLE);
  SetWindowLongW(fHandle, GWL_STYLE, pTabStop ? style | WS_TABSTOP : style & ~WS_TABSTOP);
  Perform(CM_TABSTOPCHANGED);
}

int TWinControl::GetTabOrder() const noexcept {
  if (!GetParent()) return -1;
  const auto& list = GetParent()->fTabList;
  return static_cast<int>(std::find(list.begin(), list.end(), this) - list.begin());
}

void TWinControl::SetTabOrder(int pTabOrder) {
  if (!GetParent() || pTabOrder < 0) return;
  auto& list = GetParent()->fTabList;
  const auto place = std::min(static_cast<std::size_t>(pTabOrder), list.size() - 1);
  list.erase(std::find(list.begin(), list.end(), this));
  list.insert(list.begin() + static_cast<std::ptrdiff_t>(place), this);
}

// --- keys -----------------------------------------------------------------------------------------------------------

bool TWinControl::HandleFocusOrKeys(TMessage& pMessage) {
  switch (pMessage.Msg) {
  case WM_SETFOCUS:
    WMSetFocus(pMessage);
    return true;
  case WM_KILLFOCUS:
    WMKillFocus(pMessage);
    return true;
  case WM_GETDLGCODE:
    WMGetDlgCode(pMessage);
    return true;
  case WM_KEYDOWN:
  case WM_SYSKEYDOWN:
    if (!DoKeyDown(pMessage)) DefaultHandler(pMessage);
    return true;
  case WM_KEYUP:
  case WM_SYSKEYUP:
    if (!DoKeyUp(pMessage)) DefaultHandler(pMessage);
    return true;
  case WM_CHAR:
    if (!DoKeyPress(pMessage)) DefaultHandler(pMessage);
    return true;
  default:
    return false;
  }
}

// True if the key is used up, or the control has gone.
bool TWinControl::DoKeyDown(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  CancelHint();
  auto key = static_cast<WORD>(pMessage.WParam);
  if (PreviewKey([&](TWinControl& root) { root.KeyDown(key, KeyboardShiftState()); })) return true;
  if (key != 0) KeyDown(key, KeyboardShiftState());
  if (!alive.IsAlive() || key == 0) return true;
  pMessage.WParam = key;
  return false;
}

bool TWinControl::DoKeyUp(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  auto key = static_cast<WORD>(pMessage.WParam);
  if (PreviewKey([&](TWinControl& root) { root.KeyUp(key, KeyboardShiftState()); })) return true;
  if (key != 0) KeyUp(key, KeyboardShiftState());
  if (!alive.IsAlive() || key == 0) return true;
  pMessage.WParam = key;
  return false;
}

bool TWinControl::DoKeyPress(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  auto key = static_cast<wchar_t>(pMessage.WParam);
  if (PreviewKey([&](TWinControl& root) { root.KeyPress(key); })) return true;
  if (key != 0) KeyPress(key);
  if (!alive.IsAlive() || key == 0) return true;
  pMessage.WParam = static_cast<WPARAM>(key);
  return false;
}

// A root that previews keys sees them first. True if the control died of it.
bool TWinControl::PreviewKey(const std::function<void(TWinControl&)>& pShow) {
  TWinControl& root = Root();
  if (&root == this || !root.fKeyPreview) return false;
  const TAliveWatch alive(GetAliveToken());
  pShow(root);
  return !alive.IsAlive();
}

void TWinControl::KeyDown(WORD& pKey, TShiftState pShift) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnKeyDown, this, pKey, pShift));
}

void TWinControl::KeyPress(wchar_t& pKey) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnKeyPress, this, pKey));
}

void TWinControl::KeyUp(WORD& pKey, TShiftState pShift) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnKeyUp, this, pKey, pShift));
}

} // namespace kiv
