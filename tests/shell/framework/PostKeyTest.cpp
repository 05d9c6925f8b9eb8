#include <framework/PostKey.h>

#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace kiv {
namespace {

using enum TShiftStateFlag;

// A key that goes down or up, as text: "+Shift" and "-Shift".
std::wstring Name(UINT key, bool up) {
  return (up ? L"-" : L"+") + std::to_wstring(key);
}

TEST(PostKey, PressesModifiersAroundTheKeyInOneGo) {
  static std::vector<std::wstring> sent;
  static int calls;
  static UINT accepted;
  ScopedShellApi api;
  api->SendInput = [](UINT count, LPINPUT inputs, int size) -> UINT {
    ++calls;
    EXPECT_EQ(size, static_cast<int>(sizeof(INPUT)));
    for (UINT i = 0; i < count; ++i) {
      EXPECT_EQ(inputs[i].type, static_cast<DWORD>(INPUT_KEYBOARD));
      const DWORD flags = inputs[i].ki.dwFlags;
      const bool extended = (flags & KEYEVENTF_EXTENDEDKEY) != 0;
      sent.push_back(Name(inputs[i].ki.wVk, (flags & KEYEVENTF_KEYUP) != 0) + (extended ? L"x" : L""));
    }
    return accepted == 0 ? 0 : count;
  };
  accepted = 1;
  const struct {
    TShiftState shift;
    bool special;
    std::vector<std::wstring> expected;
  } cases[] = {
      {{}, false, {L"+46", L"-46"}},
      {{}, true, {L"+46x", L"-46x"}},
      {{ssLeft, ssCtrl}, false, {L"+17", L"+46", L"-46", L"-17"}},
      {{ssShift, ssCtrl, ssAlt}, true, {L"+16", L"+17", L"+18", L"+46x", L"-46x", L"-18", L"-17", L"-16"}},
  };
  for (const auto& c : cases) {
    sent.clear();
    calls = 0;
    EXPECT_TRUE(PostKeyEx32(VK_DELETE, c.shift, c.special));
    EXPECT_EQ(sent, c.expected);
    EXPECT_EQ(calls, 1);
  }
  accepted = 0;
  EXPECT_FALSE(PostKeyEx32(VK_DELETE, {}, false));
  api->SendInput = nullptr;
  EXPECT_FALSE(PostKeyEx32(VK_DELETE, {}, false));
}

// A window that notes the keys that come, and which modifiers it sees as down.
class TKeyWindow {
public:
  TKeyWindow() {
    WNDCLASSW info{};
    info.lpfnWndProc = &TKeyWindow::Procedure;
    info.lpszClassName = L"KivPostKeyTest";
    RegisterClassW(&info);
    fHandle = CreateWindowW(info.lpszClassName, L"", 0, 0, 0, 9, 9, HWND_MESSAGE, nullptr, nullptr, nullptr);
    gSeen.clear();
  }
  ~TKeyWindow() { DestroyWindow(fHandle); }
  TKeyWindow(const TKeyWindow&) = delete;
  TKeyWindow& operator=(const TKeyWindow&) = delete;

  HWND Get() const { return fHandle; }
  static std::vector<std::wstring> Take() { return std::exchange(gSeen, {}); }
  static void Pump() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }

private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM key, LPARAM flags) {
    std::wstring text;
    if (message == WM_CHAR) text = std::wstring(L"char ") + static_cast<wchar_t>(key);
    if (message == WM_KEYDOWN || message == WM_SYSKEYDOWN) text = Name(static_cast<UINT>(key), false);
    if (message == WM_KEYUP || message == WM_SYSKEYUP) text = Name(static_cast<UINT>(key), true);
    if (!text.empty()) {
      if (message == WM_SYSKEYDOWN || message == WM_SYSKEYUP) text += L" sys";
      if (GetKeyState(VK_SHIFT) < 0) text += L" shift";
      if (GetKeyState(VK_CONTROL) < 0) text += L" ctrl";
      if (message != WM_CHAR && (flags & (LPARAM{1} << 24)) != 0) text += L" x";
      gSeen.push_back(text);
      return 0;
    }
    return DefWindowProcW(window, message, key, flags);
  }

  static inline std::vector<std::wstring> gSeen;
  HWND fHandle;
};

TEST(PostKey, AWindowGetsTheKeyAndSeesTheModifiers) {
  using TKeys = std::vector<std::wstring>;
  TKeyWindow window;
  EXPECT_TRUE(PostKeyToHWND(window.Get(), VK_DELETE, {}, true));
  EXPECT_EQ(TKeyWindow::Take(), TKeys{}); // posted, not sent
  TKeyWindow::Pump();
  EXPECT_EQ(TKeyWindow::Take(), (TKeys{L"+46 x", L"-46 x"}));

  EXPECT_TRUE(PostKeyToHWND(window.Get(), 'A', {ssShift}, false));
  TKeys keys = TKeyWindow::Take();
  std::sort(keys.begin(), keys.end()); // the character's place among them is the system's affair
  EXPECT_EQ(keys, (TKeys{L"+65 shift", L"-65 shift", L"char A shift"}));
  EXPECT_TRUE(PostKeyToHWND(window.Get(), VK_F4, {ssCtrl, ssShift}, false));
  EXPECT_EQ(TKeyWindow::Take(), (TKeys{L"+115 shift ctrl", L"-115 shift ctrl"}));
  EXPECT_TRUE(PostKeyToHWND(window.Get(), VK_F4, {ssAlt}, false));
  EXPECT_EQ(TKeyWindow::Take(), (TKeys{L"+115 sys", L"-115 sys"}));
  // Nor by what was typed before.
  PostMessageW(window.Get(), WM_KEYDOWN, VK_DELETE, 0);
  EXPECT_TRUE(PostKeyToHWND(window.Get(), VK_INSERT, {ssShift}, false));
  EXPECT_EQ(TKeyWindow::Take(), (TKeys{L"+46", L"+45 shift", L"-45 shift"}));
  // And not longer than that.
  EXPECT_GE(GetKeyState(VK_SHIFT), 0);
  EXPECT_GE(GetKeyState(VK_CONTROL), 0);
  EXPECT_FALSE(PostKeyToHWND(nullptr, 'A', {ssShift}, false));
}

} // namespace
} // namespace kiv
