#include <forms/WinControl.h>

#include <algorithm>

namespace kiv {

// The road of a key. PreTranslateMessage gives it to the control as CN_KEYDOWN and the like, before the platform makes
// characters of it; what nobody uses there goes through the window to DoKeyDown. In front of the window's wishes
// (WM_GETDLGCODE, CM_WANTSPECIALKEY) come short cuts and the parents' (CM_CHILDKEY), behind them the navigation of the
// whole tree (CM_DIALOGKEY, CM_DIALOGCHAR), which begins at the root.

namespace {

// The wish of a window that keeps a key from navigation; 0 for keys that don't navigate.
LRESULT WishFor(WPARAM key) noexcept {
  switch (key) {
  case VK_TAB:
    return DLGC_WANTTAB;
  case VK_LEFT:
  case VK_RIGHT:
  case VK_UP:
  case VK_DOWN:
    return DLGC_WANTARROWS;
  case VK_RETURN:
  case VK_EXECUTE:
  case VK_ESCAPE:
  case VK_CANCEL:
    return DLGC_WANTALLKEYS;
  default:
    return 0;
  }
}

} // namespace

bool TWinControl::PreProcessMessage(const MSG& pMessage) {
  static_cast<void>(pMessage);
  return false;
}

TWinControl& TWinControl::Root() noexcept {
  TWinControl* root = this;
  while (root->GetParent()) root = root->GetParent();
  return *root;
}

bool TWinControl::IsShortCutUsed(const TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  for (TWinControl* control = this; control; control = control->GetParent()) {
    if (control->DoShortCut(pMessage)) return true;
    if (!alive.IsAlive()) return true;
  }
  return false;
}

// Result other than 0: the key is used up.
void TWinControl::CNKey(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  pMessage.Result = 1;
  const bool isDown = pMessage.Msg == CN_KEYDOWN || pMessage.Msg == CN_SYSKEYDOWN;
  if (IsDesigning()) {
    pMessage.Result = 0;
  } else if (isDown) {
    if (pMessage.WParam == VK_MENU) ShowCues(UISF_HIDEACCEL | UISF_HIDEFOCUS);
    if (!alive.IsAlive() || IsShortCutUsed(pMessage) || !alive.IsAlive()) return;
    if (Perform(CM_CHILDKEY, pMessage.WParam, reinterpret_cast<LPARAM>(this)) != 0 || !alive.IsAlive()) return;
    const LRESULT wish = WishFor(pMessage.WParam);
    bool isFree = wish != 0 && Perform(CM_WANTSPECIALKEY, pMessage.WParam) == 0;
    if (!alive.IsAlive()) return;
    isFree = isFree && (Perform(WM_GETDLGCODE, pMessage.WParam) & (wish | DLGC_WANTALLKEYS)) == 0;
    if (!alive.IsAlive()) return;
    if (isFree && Root().Perform(CM_DIALOGKEY, pMessage.WParam, pMessage.LParam) != 0) return;
    pMessage.Result = 0;
  } else if (pMessage.Msg == CN_SYSCHAR) {
    pMessage.Result = pMessage.WParam != VK_SPACE ? Root().Perform(CM_DIALOGCHAR, pMessage.WParam) : 0;
  } else if (pMessage.Msg == CN_CHAR) {
    // Without Alt, where the focus has no use for letters.
    const bool takesLetters = (Perform(WM_GETDLGCODE) & (DLGC_WANTCHARS | DLGC_WANTALLKEYS)) != 0;
    pMessage.Result = takesLetters ? 0 : Root().Perform(CM_DIALOGCHAR, pMessage.WParam);
  } else {
    pMessage.Result = 0;
  }
}

bool TWinControl::ShowsAccelChars() const noexcept {
  return !fHandle || (SendMessageW(fHandle, WM_QUERYUISTATE, 0, 0) & UISF_HIDEACCEL) == 0;
}

// The user has come to the keyboard.
void TWinControl::ShowCues(WORD pWhich) {
  if (fHandle) SendMessageW(fHandle, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, pWhich), 0);
}

void TWinControl::CMChildKey(TMessage& pMessage) {
  if (GetParent()) pMessage.Result = GetParent()->Perform(CM_CHILDKEY, pMessage.WParam, pMessage.LParam);
}

// Each child is asked until one uses it.
void TWinControl::Broadcast(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  const std::vector<TControl*> children = fControls;
  for (TControl* child : children) {
    if (std::find(fControls.begin(), fControls.end(), child) == fControls.end()) continue;
    pMessage.Result = child->Perform(pMessage.Msg, pMessage.WParam, pMessage.LParam);
    if (pMessage.Result != 0 || !alive.IsAlive()) return;
  }
}

void TWinControl::CMDialogChar(TMessage& pMessage) {
  if (IsShowing()) Broadcast(pMessage);
}

void TWinControl::CMDialogKey(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  Broadcast(pMessage);
  if (pMessage.Result == 0 && alive.IsAlive() && !GetParent()) Navigate(pMessage);
}

// The root's part: moves the focus among all that stands in it.
void TWinControl::Navigate(TMessage& pMessage) {
  TWinControl* const focused = NearestControl(::GetFocus());
  if (!focused || !ContainsControl(focused) || KeyboardShiftState().Contains(TShiftStateFlag::ssAlt)) return;
  const bool isShift = KeyboardShiftState().Contains(TShiftStateFlag::ssShift);
  const WPARAM key = pMessage.WParam;
  const TAliveWatch alive(GetAliveToken());
  if (key == VK_TAB) {
    if (KeyboardShiftState().Contains(TShiftStateFlag::ssCtrl)) return;
    pMessage.Result = SelectNext(focused, !isShift, true, WrapsTabOrder());
  } else if (key == VK_LEFT || key == VK_RIGHT || key == VK_UP || key == VK_DOWN) {
    const bool isForward =
        (key == VK_RIGHT) != UseRightToLeftAlignment() ? key != VK_LEFT && key != VK_UP : key == VK_DOWN;
    TWinControl* const group = focused->GetParent();
    if (group) pMessage.Result = group->SelectNext(focused, isForward, false, true);
  }
  if (pMessage.Result != 0 && alive.IsAlive()) ShowCues(UISF_HIDEFOCUS);
}

void TWinControl::GetTabOrderList(std::vector<TWinControl*>& pList) const {
  for (TWinControl* child : fTabList) {
    pList.push_back(child);
    child->GetTabOrderList(pList);
  }
}

TWinControl* TWinControl::FindNextControl(TWinControl* pCurrent, bool pForward, bool pTabStops, bool pWrap) const {
  std::vector<TWinControl*> list;
  if (pTabStops)
    GetTabOrderList(list);
  else
    list = fTabList; // arrows stay among siblings
  if (!pForward) std::reverse(list.begin(), list.end());
  const auto start = std::find(list.begin(), list.end(), pCurrent);
  const auto first = start == list.end() ? list.begin() : start + 1;
  const auto fits = [&](TWinControl* one) {
    return one != pCurrent && one->CanFocus() && one->IsTabStop() && (one->HandleAllocated() || one->IsShowing());
  };
  auto found = std::find_if(first, list.end(), fits);
  if (found != list.end()) return *found;
  if (!pWrap) return nullptr;
  found = std::find_if(list.begin(), first, fits);
  return found != first ? *found : nullptr;
}

bool TWinControl::SelectNext(TWinControl* pCurrent, bool pForward, bool pTabStops, bool pWrap) {
  TWinControl* const next = FindNextControl(pCurrent, pForward, pTabStops, pWrap);
  if (!next) return false;
  next->SetFocus();
  return true;
}

bool IsAccel(wchar_t pCharacter, const std::wstring& pCaption) {
  for (std::size_t i = 0; i + 1 < pCaption.size(); ++i) {
    if (pCaption[i] != L'&') continue;
    const wchar_t marked = pCaption[++i];
    if (marked == L'&') continue;
    return CompareStringOrdinal(&marked, 1, &pCharacter, 1, TRUE) == CSTR_EQUAL;
  }
  return false;
}

} // namespace kiv
