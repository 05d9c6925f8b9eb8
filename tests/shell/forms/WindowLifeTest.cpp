#include "TestControls.h"

#include <doubles/GuiDriver.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <platform/ActivationContext.h>

#include <gtest/gtest.h>

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <memory>

namespace kiv::test {
namespace {

using TLog = std::vector<std::wstring>;

std::wstring PathOf(HMODULE module) {
  std::array<wchar_t, 600> path{};
  GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
  return path.data();
}

// This program has no manifest.
TEST(CommonControls, AreOfVersion6WithoutTheHostsManifest) {
  const std::wstring path = PathOf(CommonControlsApi().module);
  EXPECT_NE(path.find(L"common-controls_6595b64144ccf1df_6."), std::wstring::npos);
  const auto current = [] {
    HANDLE context = nullptr;
    GetCurrentActCtx(&context);
    if (context) ReleaseActCtx(context);
    return context;
  };
  const HANDLE hosts = current();
  {
    const ScopedCommonControls scope;
    EXPECT_NE(current(), hosts);
  }
  EXPECT_EQ(current(), hosts);
}

TEST(WindowLife, AWindowComesWhenItIsNeededAndWhenItIsToBeSeen) {
  THostWindow host;
  TLog log;
  TNotedControl panel(nullptr, L"panel ");
  panel.log = &log;
  auto* const child = new TNotedControl(&panel, L"child ");
  child->log = &log;
  child->SetParent(&panel);
  child->SetBounds(5, 6, 70, 80);
  EXPECT_FALSE(panel.HandleAllocated());
  EXPECT_THROW(panel.GetHandle(), EInvalidOperation);
  panel.SetBounds(20, 30, 200, 100);
  panel.SetVisible(false);
  panel.SetParentWindow(host.Get());
  EXPECT_FALSE(panel.HandleAllocated());
  panel.SetVisible(true);
  EXPECT_EQ(log, (TLog{L"panel create", L"child create"}));
  EXPECT_TRUE(IsWindowVisible(child->GetHandle()));
  EXPECT_EQ(GetParent(child->GetHandle()), panel.GetHandle());
  EXPECT_EQ(GetParent(panel.GetHandle()), host.Get());
  EXPECT_EQ(FindControl(child->GetHandle()), child);
  EXPECT_EQ(FindControl(host.Get()), nullptr);
  const POINT corner = child->ClientToScreen({0, 0});
  const POINT expected = PointOf(host.Get(), 25, 36);
  EXPECT_EQ(corner.x, expected.x);
  EXPECT_EQ(corner.y, expected.y);
  // Two hidden parents above it: only with both shown it is.
  panel.SetVisible(false);
  child->SetVisible(false);
  child->SetVisible(true);
  EXPECT_FALSE(child->IsShowing() && IsWindowVisible(child->GetHandle()));
  child->SetParent(nullptr);
  EXPECT_FALSE(child->HandleAllocated());
  EXPECT_EQ(log.back(), L"child destroy");
}

TEST(WindowLife, AnotherWindowHasTheSameContent) {
  THostWindow host;
  TLog log;
  TNotedControl panel(nullptr, L"panel ");
  panel.log = &log;
  panel.SetBounds(0, 0, 300, 200);
  auto* const edit = new TPlatformControl(&panel, L"EDIT");
  edit->SetParent(&panel);
  auto* const other = new TPlatformControl(&panel, L"EDIT");
  other->SetParent(&panel);
  panel.CreateParented(host.Get());
  edit->SetFocus();
  TypeText(L"abc");
  const HWND former = edit->GetHandle();
  edit->RecreateWnd();
  EXPECT_NE(edit->GetHandle(), former);
  EXPECT_FALSE(IsWindow(former));
  EXPECT_EQ(edit->GetText(), L"abc");
  EXPECT_TRUE(edit->Focused());
  // Still behind its sibling.
  EXPECT_EQ(GetWindow(edit->GetHandle(), GW_HWNDPREV), other->GetHandle());
  log.clear();
  panel.RecreateWnd();
  EXPECT_EQ(log, (TLog{L"panel destroy", L"panel create again"}));
  EXPECT_EQ(edit->GetText(), L"abc");
  EXPECT_FALSE(panel.IsRecreating());
  EXPECT_TRUE(edit->Focused());
  EXPECT_TRUE(IsWindowVisible(edit->GetHandle()));
}

// The host ends its window and knows nothing of what stands in it.
TEST(WindowLife, TheHostsWindowMayGoFirst) {
  TLog log;
  auto panel = std::make_unique<TNotedControl>(nullptr, L"panel ");
  panel->log = &log;
  auto* const edit = new TPlatformControl(panel.get(), L"EDIT");
  edit->SetParent(panel.get());
  edit->SetText(L"kept");
  {
    THostWindow host;
    panel->CreateParented(host.Get());
    log.clear();
    host.Destroy();
    EXPECT_EQ(log, TLog{L"panel destroy"});
    EXPECT_FALSE(panel->HandleAllocated());
    EXPECT_EQ(edit->GetText(), L"kept");
  }
  EXPECT_THROW(panel->GetHandle(), EInvalidOperation);
  THostWindow second;
  panel->CreateParented(second.Get());
  EXPECT_EQ(edit->GetText(), L"kept");
  EXPECT_TRUE(IsWindowVisible(edit->GetHandle()));
  log.clear();
  panel.reset();
  EXPECT_EQ(log, TLog{L"panel end"});
  EXPECT_EQ(GetWindow(second.Get(), GW_CHILD), nullptr);
}

TEST(WindowLife, NotificationsComeToTheControlAlsoInAHostsWindow) {
  THostWindow host;
  TPlatformControl button(nullptr, L"BUTTON");
  TPlatformControl list(nullptr, WC_LISTVIEWW, LVS_REPORT);
  button.CreateParented(host.Get());
  list.SetBounds(10, 60, 100, 100);
  list.CreateParented(host.Get());
  // Of the host's own controls it hears as before, and of ours it doesn't.
  const HWND own = CreateWindowW(L"BUTTON", L"", WS_CHILD | WS_VISIBLE, 200, 10, 50, 20, host.Get(),
                                 reinterpret_cast<HMENU>(7), nullptr, nullptr);
  const int before = host.CountOf(WM_COMMAND);
  SendMessageW(own, BM_CLICK, 0, 0);
  EXPECT_EQ(host.CountOf(WM_COMMAND), before + 1);
  ClickMouse(MiddleOf(button.GetHandle()));
  EXPECT_TRUE(PumpUntil([&] { return !button.commands.empty(); }));
  EXPECT_EQ(button.commands.back(), UINT{BN_CLICKED});
  EXPECT_EQ(host.CountOf(WM_COMMAND), before + 1);
  LVITEMW item{};
  SendMessageW(list.GetHandle(), LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
  EXPECT_NE(std::find(list.notifications.begin(), list.notifications.end(), static_cast<UINT>(LVN_INSERTITEM)),
            list.notifications.end());
  EXPECT_EQ(host.CountOf(WM_NOTIFY), 0);
  EXPECT_EQ(host.CountOf(WM_NOTIFYFORMAT), 0);
}

WNDPROC gKeptFrom = nullptr;
LRESULT CALLBACK KeepsTheLastMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  return message == WM_NCDESTROY ? 0 : CallWindowProcW(gKeptFrom, window, message, wParam, lParam);
}

// The host stands in front with a procedure of its own.
TEST(WindowLife, AWindowThatGoesWithoutItsLastMessageIsFoundOut) {
  THostWindow host;
  auto control = std::make_unique<TNotedControl>();
  control->CreateParented(host.Get());
  const auto keep = [&] {
    const HWND window = control->GetHandle();
    gKeptFrom = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&KeepsTheLastMessage)));
    return window;
  };
  HWND former = keep();
  DestroyWindow(former);
  EXPECT_EQ(FindControl(former), nullptr);
  EXPECT_FALSE(control->HandleAllocated());
  former = keep();
  DestroyWindow(former);
  EXPECT_EQ(FindControl(control->GetHandle()), control.get());
  EXPECT_TRUE(IsWindow(control->GetHandle()));
  former = keep();
  control->RecreateWnd();
  EXPECT_FALSE(IsWindow(former));
  EXPECT_TRUE(IsWindow(control->GetHandle()));
  former = keep();
  control.reset();
  EXPECT_EQ(FindControl(former), nullptr);
}

/// Asks its window class for more than a notification needs.
class TAskingControl : public TPlatformControl {
public:
  TAskingControl() : TPlatformControl(nullptr, L"EDIT") {}
  using TPlatformControl::CallWindowClass;
  LRESULT answer = -1;

protected:
  void CNCommand(TMessage&) override {
    TMessage length{WM_GETTEXTLENGTH, 0, 0, 0};
    DefaultHandler(length);
    answer = length.Result;
  }
};

// "DefSubclassProc" is defined in a subclass procedure only.
TEST(WindowLife, NoNextProcedureIsAskedOutsideOfAMessage) {
  THostWindow host;
  TAskingControl edit;
  edit.CreateParented(host.Get());
  edit.CallWindowClass(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L"abc"));
  EXPECT_EQ(edit.answer, 0);
  SendMessageW(edit.GetHandle(), EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L"d"));
  EXPECT_EQ(edit.answer, 4);
}

// Its notification comes through the host's procedure.
TEST(WindowLife, NoExceptionReachesTheHost) {
  THostWindow host;
  std::vector<std::wstring> reported;
  Application().SetOnException([&](std::exception_ptr exception) { reported.push_back(DescribeException(exception)); });
  TPlatformControl button(nullptr, L"BUTTON");
  button.onCommand = [](TPersistent*) { throw EInvalidOperation(L"no"); };
  button.CreateParented(host.Get());
  SendMessageW(button.GetHandle(), BM_CLICK, 0, 0);
  EXPECT_EQ(reported, std::vector<std::wstring>{L"no"});
  Application().SetOnException(nullptr);
}

} // namespace
} // namespace kiv::test
