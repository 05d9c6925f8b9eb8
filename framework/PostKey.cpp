#include <framework/PostKey.h>

#include <platform/ShellApi.h>

#include <array>
#include <vector>

namespace kiv {

namespace {

using enum TShiftStateFlag;

struct TStroke {
  WORD key = 0;
  bool special = false;
  bool up = false;
};

std::vector<WORD> ModifierKeys(TShiftState shift) {
  std::vector<WORD> keys;
  if (shift.Contains(ssShift)) keys.push_back(VK_SHIFT);
  if (shift.Contains(ssCtrl)) keys.push_back(VK_CONTROL);
  if (shift.Contains(ssAlt)) keys.push_back(VK_MENU);
  return keys;
}

// The key with its modifiers around it, released in the opposite order.
std::vector<TStroke> Strokes(WORD key, const std::vector<WORD>& modifiers, bool special) {
  std::vector<TStroke> strokes;
  for (const WORD modifier : modifiers) strokes.push_back({.key = modifier});
  strokes.push_back({.key = key, .special = special});
  strokes.push_back({.key = key, .special = special, .up = true});
  for (auto at = modifiers.rbegin(); at != modifiers.rend(); ++at) strokes.push_back({.key = *at, .up = true});
  return strokes;
}

WORD ScanCode(WORD key) {
  return static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
}

// "Keystroke Message Flags"
LPARAM KeyMessageFlags(const TStroke& stroke, bool alt) {
  constexpr LPARAM once = 1;
  LPARAM flags = once | static_cast<LPARAM>(ScanCode(stroke.key) & 0xFFU) << 16;
  if (stroke.special) flags |= LPARAM{1} << 24;
  if (alt) flags |= LPARAM{1} << 29;
  if (stroke.up) flags |= LPARAM{3} << 30;
  return flags;
}

bool PostStroke(HWND window, const TStroke& stroke, bool alt) {
  const UINT down = alt ? WM_SYSKEYDOWN : WM_KEYDOWN;
  const UINT up = alt ? WM_SYSKEYUP : WM_KEYUP;
  return PostMessageW(window, stroke.up ? up : down, stroke.key, KeyMessageFlags(stroke, alt)) != FALSE;
}

// This thread's idea of which keys are down, with some more of them while it lives.
class TScopedKeysDown {
public:
  explicit TScopedKeysDown(const std::vector<WORD>& keys) {
    if (!GetKeyboardState(fOld.data())) return;
    std::array<BYTE, 256> state = fOld;
    constexpr BYTE down = 0x80;
    for (const WORD key : keys) state[key] = static_cast<BYTE>(state[key] | down);
    fChanged = SetKeyboardState(state.data()) != FALSE;
  }
  ~TScopedKeysDown() {
    if (fChanged) SetKeyboardState(fOld.data());
  }
  TScopedKeysDown(const TScopedKeysDown&) = delete;
  TScopedKeysDown& operator=(const TScopedKeysDown&) = delete;

private:
  std::array<BYTE, 256> fOld{};
  bool fChanged = false;
};

void DeliverKeys(HWND window) {
  // A window that answers a key with another one would keep us here.
  constexpr int most = 64;
  MSG message;
  for (int i = 0; i < most && IsWindow(window); ++i) {
    if (!PeekMessageW(&message, window, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE)) return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

} // namespace

bool PostKeyEx32(WORD pKey, TShiftState pShift, bool pSpecialKey) {
  const auto send = ShellApi().SendInput;
  if (!send) return false;
  std::vector<INPUT> inputs;
  for (const TStroke& stroke : Strokes(pKey, ModifierKeys(pShift), pSpecialKey)) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = stroke.key;
    input.ki.wScan = ScanCode(stroke.key);
    input.ki.dwFlags = (stroke.special ? KEYEVENTF_EXTENDEDKEY : 0U) | (stroke.up ? KEYEVENTF_KEYUP : 0U);
    inputs.push_back(input);
  }
  // In one go: nothing of the user's comes between.
  const UINT count = static_cast<UINT>(inputs.size());
  return send(count, inputs.data(), sizeof(INPUT)) == count;
}

bool PostKeyToHWND(HWND pWindow, WORD pKey, TShiftState pShift, bool pSpecialKey) {
  if (!IsWindow(pWindow)) return false;
  const std::vector<WORD> modifiers = ModifierKeys(pShift);
  const bool alt = pShift.Contains(ssAlt);
  const bool own = GetWindowThreadProcessId(pWindow, nullptr) == GetCurrentThreadId();
  const bool delivers = own && !modifiers.empty();
  // What the user typed before comes first, and must not be seen with our modifiers: "x" isn't Ctrl+X.
  if (delivers) DeliverKeys(pWindow);
  bool posted = true;
  for (const TStroke& stroke : Strokes(pKey, own ? std::vector<WORD>() : modifiers, pSpecialKey)) {
    posted = posted && PostStroke(pWindow, stroke, alt);
  }
  if (!posted || !delivers) return posted;
  const TScopedKeysDown down(modifiers);
  DeliverKeys(pWindow);
  return true;
}

} // namespace kiv
