// What of the platform changes while windows stand: resolution, colours, the host's window around them.
#include "TestControls.h"

#include <doubles/GuiDriver.h>
#include <forms/CheckListBox.h>
#include <forms/StdControls.h>
#include <graphics/StyleServices.h>
#include <platform/ComPtr.h>
#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <oleacc.h>

namespace kiv::test {
namespace {

/// A panel with one of each in a host's window, on a platform as the test describes it.
class Look : public testing::Test {
protected:
  Look() {
    gDpi = 96;
    gDark = false;
    fApi->GetDpiForWindow = [](HWND) { return gDpi; };
    fApi->ShouldAppsUseDarkMode = [] { return gDark; };
    fApi->AllowDarkModeForWindow = [](HWND, bool) { return true; };
    fApi->SetPreferredAppMode = nullptr;
    fApi->RefreshImmersiveColorPolicyState = nullptr;
    panel.SetBounds(0, 0, 300, 200);
    panel.SetBevelOuter(TBevelCut::bvNone);
    const std::pair<TControl*, int> places[] = {{label, 8}, {edit, 30}, {check, 60}, {button, 90}, {list, 130}};
    for (const auto& [control, top] : places) {
      control->SetParent(&panel);
      control->SetBounds(10, top, 120, 24);
    }
    label->SetText(L"&Name");
    check->SetText(L"Check");
    button->SetText(L"&Press me");
  }
  ~Look() override { StyleServices().SetDarkMode(TDarkMode::dmLight); }

  static UINT gDpi;
  static bool gDark;
  ScopedShellApi fApi;
  THostWindow host;
  TPanel panel;
  TLabel* label = new TLabel(&panel);
  TEdit* edit = new TEdit(&panel);
  TCheckBox* check = new TCheckBox(&panel);
  TButton* button = new TButton(&panel);
  TCheckListBox* list = new TCheckListBox(&panel);
};
UINT Look::gDpi = 96;
bool Look::gDark = false;

TEST_F(Look, AnotherMonitorReachesWhatStandsInAHostsWindow) {
  panel.SetPadding({1, 2, 3, 4});
  list->SetAlign(TAlign::alBottom);
  list->SetAlignWithMargins(true);
  list->SetMargins({10, 0, 20, 6});
  panel.CreateParented(host.Get());
  const auto fontOf = [](TWinControl* control) {
    LOGFONTW font{};
    const auto handle = reinterpret_cast<HFONT>(SendMessageW(control->GetHandle(), WM_GETFONT, 0, 0));
    GetObjectW(handle, sizeof(font), &font);
    return std::abs(font.lfHeight);
  };
  const int fontHeight = fontOf(edit);
  const int labelHeight = label->GetHeight();
  EXPECT_EQ(list->GetLeft(), 11);
  EXPECT_EQ(list->GetBoundsRect().right, panel.GetClientWidth() - 23);
  EXPECT_EQ(list->GetBoundsRect().bottom, panel.GetClientHeight() - 10);
  gDpi = 192;
  // The host resizes first, as it is told to, then the platform tells the windows below.
  SetWindowPos(panel.GetHandle(), nullptr, 0, 0, 600, 400, SWP_NOZORDER);
  SendMessageW(panel.GetHandle(), WM_DPICHANGED_AFTERPARENT, 0, 0);
  EXPECT_EQ(edit->GetCurrentPPI(), 192);
  EXPECT_EQ(edit->GetWidth(), 240);
  EXPECT_EQ(edit->GetTop(), 60);
  EXPECT_NEAR(fontOf(edit), 2 * fontHeight, 1);
  EXPECT_NEAR(fontOf(button), 2 * fontHeight, 1);
  EXPECT_NEAR(label->GetHeight(), 2 * labelHeight, 3);
  EXPECT_EQ(list->GetLeft(), 22);
  EXPECT_EQ(list->GetBoundsRect().right, panel.GetClientWidth() - 46);
  // A window that comes later is of the same resolution, and so is one that comes again.
  panel.RecreateWnd();
  EXPECT_EQ(edit->GetWidth(), 240);
  EXPECT_NEAR(fontOf(edit), 2 * fontHeight, 1);
}

TEST_F(Look, AScrolledBoxKeepsItsPlaceOnAnotherMonitor) {
  TScrollBox box;
  box.SetBorderStyle(TBorderStyle::bsNone);
  box.SetBounds(0, 0, 200, 100);
  auto* const first = new TEdit(&box);
  first->SetParent(&box);
  first->SetBounds(10, 20, 50, 20);
  auto* const last = new TEdit(&box);
  last->SetParent(&box);
  last->SetBounds(10, 280, 50, 20);
  box.CreateParented(host.Get());
  first->SetFocus();
  EXPECT_EQ(box.GetScrollPosition().y, 0);
  last->SetFocus(); // has to be seen
  EXPECT_EQ(box.GetScrollPosition().y, 200);
  gDpi = 192;
  SetWindowPos(box.GetHandle(), nullptr, 0, 0, 400, 200, SWP_NOZORDER);
  SendMessageW(box.GetHandle(), WM_DPICHANGED_AFTERPARENT, 0, 0);
  EXPECT_EQ(box.GetScrollPosition().y, 200); // of 100 that are left in a box of 200
  EXPECT_EQ(last->GetTop(), 360);
  box.ScrollTo(0, 0);
  EXPECT_EQ(first->GetTop(), 40);
  EXPECT_EQ(last->GetTop(), 560);
}

TEST_F(Look, TheUsersChangeToDarkRepaintsAllInIt) {
  StyleServices().SetDarkMode(TDarkMode::dmSystem);
  list->Add(L"item");
  // In a pane of the host's, which passes nothing on.
  const HWND pane =
      CreateWindowW(L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 390, 290, host.Get(), nullptr, nullptr, nullptr);
  panel.CreateParented(pane);
  PumpMessages();
  const auto isPainted = [&] {
    const auto color = [](TColor which) { return static_cast<COLORREF>(StyleServices().GetSystemColor(which)); };
    const auto shows = [&](TWinControl& control, TColor back, TColor text) {
      return CountPixels(control.GetHandle(), color(back)) > 100 && CountPixels(control.GetHandle(), color(text)) > 5;
    };
    return shows(panel, clBtnFace, clWindowText) && shows(*edit, clWindow, clWindowText) &&
           shows(*check, clBtnFace, clWindowText) && shows(*list, clWindow, clWindowText);
  };
  edit->SetText(L"text");
  EXPECT_TRUE(PumpUntil(isPainted));
  gDark = true;
  const auto change = reinterpret_cast<LPARAM>(L"ImmersiveColorSet");
  TellTopLevelWindows(WM_SETTINGCHANGE, 0, change);
  EXPECT_TRUE(StyleServices().IsDarkModeActive());
  EXPECT_TRUE(PumpUntil(isPainted));
  gDark = false;
  TellTopLevelWindows(WM_SETTINGCHANGE, 0, change);
  EXPECT_TRUE(PumpUntil(isPainted));
  EXPECT_EQ(CountPixels(panel.GetHandle(), RGB(0x20, 0x20, 0x20)), 0);
}

/// As a control of the platform's that keeps colours.
class TListening : public TNotedControl {
public:
  using TNotedControl::TNotedControl;
  int told = 0;

protected:
  void WndProc(TMessage& pMessage) override {
    if (pMessage.Msg == WM_SYSCOLORCHANGE) ++told;
    TNotedControl::WndProc(pMessage);
  }
};

TEST_F(Look, ChangesThatTopLevelWindowsGetReachAllLevels) {
  auto* const inner = new TPanel(&panel);
  inner->SetParent(&panel);
  auto* const listening = new TListening(inner);
  listening->SetParent(inner);
  panel.CreateParented(host.Get());
  TellTopLevelWindows(WM_SYSCOLORCHANGE, 0, 0);
  EXPECT_EQ(listening->told, 1);
}

TEST_F(Look, TheHostMayPutItIntoAnotherOfItsWindows) {
  panel.CreateParented(host.Get());
  THostWindow other;
  ::SetParent(panel.GetHandle(), other.Get());
  SetWindowPos(panel.GetHandle(), nullptr, 5, 6, 300, 200, SWP_NOZORDER);
  EXPECT_EQ(panel.GetParentWindow(), other.Get());
  TPlatformControl alone(nullptr, L"BUTTON");
  alone.CreateParented(host.Get());
  ::SetParent(alone.GetHandle(), other.Get());
  SetWindowPos(alone.GetHandle(), nullptr, 310, 0, 50, 20, SWP_NOZORDER);
  host.Destroy();
  SendMessageW(alone.GetHandle(), BM_CLICK, 0, 0);
  EXPECT_EQ(alone.commands.size(), 1u); // heard in the new window
  edit->SetText(L"kept");
  THostWindow third;
  panel.SetParentWindow(third.Get());
  EXPECT_EQ(edit->GetText(), L"kept");
  EXPECT_TRUE(IsChild(third.Get(), edit->GetHandle()));
}

/// In a dialog whose cues are hidden. Wine doesn't keep that state.
class TCuedPanel : public TPanel {
public:
  WORD hidden = UISF_HIDEACCEL | UISF_HIDEFOCUS;
  int painted = 0;

protected:
  void Paint() override { ++painted; }
  void WndProc(TMessage& pMessage) override {
    if (pMessage.Msg == WM_QUERYUISTATE) {
      pMessage.Result = hidden;
    } else if (pMessage.Msg == WM_CHANGEUISTATE) {
      ASSERT_EQ(LOWORD(pMessage.WParam), UIS_CLEAR);
      hidden = static_cast<WORD>(hidden & ~HIWORD(pMessage.WParam));
      pMessage.Msg = WM_UPDATEUISTATE; // as the top of the dialog sends it down
      TPanel::WndProc(pMessage);
    } else {
      TPanel::WndProc(pMessage);
    }
  }
};

TEST_F(Look, TheCuesComeWithTheKeyboard) {
  TCuedPanel dialog;
  dialog.SetBounds(0, 0, 200, 100);
  dialog.CreateParented(host.Get());
  EXPECT_FALSE(dialog.ShowsAccelChars());
  UpdateWindow(dialog.GetHandle());
  const int before = dialog.painted;
  dialog.Perform(CN_SYSKEYDOWN, VK_MENU);
  EXPECT_TRUE(dialog.ShowsAccelChars());
  UpdateWindow(dialog.GetHandle());
  EXPECT_GT(dialog.painted, before);
}

/// The name that assistive programs get for a window.
std::wstring AccessibleName(HWND window) {
  ComPtr<IAccessible> object;
  void** const place = reinterpret_cast<void**>(object.ReleaseAndGetAddressOf());
  const HRESULT hr = AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible), place);
  if (FAILED(hr)) return std::to_wstring(hr);
  VARIANT self{};
  self.vt = VT_I4;
  self.lVal = CHILDID_SELF;
  BSTR name = nullptr;
  object->get_accName(self, &name);
  const std::wstring text = name ? name : L"";
  SysFreeString(name);
  return text;
}

TEST_F(Look, AssistiveProgramsGetTheNamesOfControls) {
  panel.CreateParented(host.Get());
  EXPECT_EQ(AccessibleName(check->GetHandle()), L"Check");
  EXPECT_EQ(AccessibleName(button->GetHandle()), L"Press me");
}

} // namespace
} // namespace kiv::test
