#include "TestControls.h"

#include <doubles/GuiDriver.h>
#include <forms/CheckListBox.h>
#include <forms/Form.h>
#include <forms/PreTranslate.h>
#include <forms/StdControls.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <framework/PostKey.h>
#include <platform/MainThread.h>

#include <gtest/gtest.h>

#include <memory>

namespace kiv::test {
namespace {

using TLog = std::vector<std::wstring>;

bool Same(const RECT& a, const RECT& b) {
  return EqualRect(&a, &b) != 0;
}

TEST(Form, AModalOneKeepsTheOthersFromInputUntilItHasAResult) {
  THostWindow host;
  TForm form;
  form.SetBorderStyle(TFormBorderStyle::fbNone);
  auto* const edit = new TEdit(&form);
  edit->SetParent(&form);
  auto* const ok = new TButton(&form);
  ok->SetParent(&form);
  ok->SetTop(50);
  ok->SetDefault(true);
  ok->SetModalResult(mrOk);
  TLog log;
  bool canClose = false;
  form.SetOnCloseQuery([&](TPersistent*, bool& close) {
    log.push_back(close ? L"query" : L"?");
    close = canClose;
    if (canClose) return;
    canClose = true;
    MainThread::Queue([] { PostKeyEx32(VK_RETURN, {}, false); }); // for the form's loop
  });
  form.SetOnShow([&](TPersistent*) {
    log.push_back(L"show");
    // Runs inside the form's loop.
    MainThread::Queue([&] {
      log.push_back(IsWindowEnabled(host.Get()) ? L"enabled" : L"disabled");
      log.push_back(edit->Focused() ? L"edit" : L"elsewhere");
      log.push_back(std::to_wstring(Screen().GetModalLevel()));
      PostMessageW(form.GetHandle(), WM_CLOSE, 0, 0);
    });
  });
  form.SetOnHide([&](TPersistent*) { log.push_back(L"hide"); });
  EXPECT_EQ(form.ShowModal(), mrOk);
  EXPECT_EQ(log, (TLog{L"show", L"disabled", L"edit", L"1", L"query", L"query", L"hide"}));
  EXPECT_TRUE(IsWindowEnabled(host.Get()));
  EXPECT_EQ(Screen().GetModalLevel(), 0);
  // In front of the window that is active now, with the same window.
  THostWindow second;
  const HWND former = form.GetHandle();
  HWND owner = nullptr;
  form.SetOnShow([&](TPersistent*) {
    owner = GetWindow(form.GetHandle(), GW_OWNER);
    form.SetModalResult(mrYes);
  });
  EXPECT_EQ(form.ShowModal(), mrYes);
  EXPECT_EQ(owner, second.Get());
  EXPECT_EQ(form.GetHandle(), former);
  form.SetOnShow(nullptr);
  form.SetVisible(true);
  EXPECT_THROW(form.ShowModal(), EInvalidOperation);
}

// A place of the platform's is asked for once.
TEST(Form, ShowsAnotherWindowAsTheFormerOne) {
  using enum TFormPosition;
  for (const auto& [state, position] : {std::pair(SW_SHOWMAXIMIZED, poScreenCenter),
                                        {SW_SHOWMINIMIZED, poDefault},
                                        {SW_SHOWNORMAL, poScreenCenter},
                                        {SW_SHOWNORMAL, poDefault}}) {
    SCOPED_TRACE(state);
    TForm form;
    form.SetBorderStyle(TFormBorderStyle::fbSizeToolWin);
    form.SetPosition(position);
    int shown = 0;
    form.SetOnShow([&](TPersistent*) { ++shown; });
    form.SetVisible(true);
    form.SetBounds(123, 45, 300, 200);
    ShowWindow(form.GetHandle(), state);
    form.RecreateWnd();
    WINDOWPLACEMENT placement{};
    placement.length = sizeof(placement);
    GetWindowPlacement(form.GetHandle(), &placement);
    EXPECT_EQ(placement.showCmd, static_cast<UINT>(state));
    EXPECT_TRUE(IsWindowVisible(form.GetHandle()));
    EXPECT_EQ(shown, 1);
    ShowWindow(form.GetHandle(), SW_RESTORE);
    EXPECT_TRUE(Same(form.GetBoundsRect(), {123, 45, 423, 245}));
  }
}

TEST(Form, AModalOneMayGoWhileItIsUp) {
  THostWindow host;
  auto form = std::make_unique<TForm>();
  form->SetBorderStyle(TFormBorderStyle::fbNone);
  form->SetOnShow([&](TPersistent*) { MainThread::Queue([&] { form.reset(); }); });
  EXPECT_EQ(form->ShowModal(), mrCancel);
  EXPECT_EQ(form, nullptr);
  EXPECT_TRUE(IsWindowEnabled(host.Get()));
  EXPECT_EQ(Screen().GetModalLevel(), 0);
}

TEST(Form, ClosesAsItIsToldTo) {
  auto form = std::make_unique<TForm>();
  TCloseAction wanted = TCloseAction::caNone;
  form->SetOnClose([&](TPersistent*, TCloseAction& action) { action = wanted; });
  form->SetVisible(true);
  SendMessageW(form->GetHandle(), WM_CLOSE, 0, 0);
  EXPECT_TRUE(form->IsVisible());
  wanted = TCloseAction::caHide;
  SendMessageW(form->GetHandle(), WM_CLOSE, 0, 0);
  EXPECT_FALSE(IsWindowVisible(form->GetHandle()));
  wanted = TCloseAction::caFree;
  const TAliveWatch alive(form->GetAliveToken());
  const HWND window = form->GetHandle();
  form.release()->Close();
  EXPECT_TRUE(alive.IsAlive()); // its own messages may be under way
  EXPECT_TRUE(PumpUntil([&] { return !alive.IsAlive() && !IsWindow(window); }));
}

TEST(Form, AnotherMonitorScalesAllThatStandsInIt) {
  TForm form;
  form.SetBorderStyle(TFormBorderStyle::fbNone);
  form.SetBounds(10, 10, 200, 100);
  auto* const panel = new TNotedControl(&form);
  panel->SetParent(&form);
  panel->SetHeight(20);
  panel->SetAlign(TAlign::alTop);
  auto* const button = new TButton(&form);
  button->SetParent(&form);
  button->SetBounds(110, 60, 80, 30);
  button->SetAnchors({TAnchorKind::akRight, TAnchorKind::akBottom});
  button->GetFont().SetStyle({TFontStyle::fsBold});
  form.HandleNeeded();
  const int fontHeight = form.GetFont().GetHeight();
  RECT suggested{20, 20, 320, 170};
  SendMessageW(form.GetHandle(), WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&suggested));
  EXPECT_TRUE(Same(form.GetBoundsRect(), suggested));
  EXPECT_EQ(form.GetCurrentPPI(), 144);
  EXPECT_EQ(button->ScaledPixels(10), 15);
  EXPECT_TRUE(Same(button->GetBoundsRect(), {165, 90, 285, 135}));
  EXPECT_TRUE(Same(panel->GetBoundsRect(), {0, 0, 300, 30}));
  EXPECT_EQ(button->GetFont().GetHeight(), form.GetFont().GetHeight());
  EXPECT_TRUE(panel->IsParentFont());
  EXPECT_NEAR(form.GetFont().GetHeight(), fontHeight * 1.5, 1.0);
  // There and back leaves no trace, and a size of the host's in between doesn't either.
  suggested = {10, 10, 210, 110};
  SendMessageW(form.GetHandle(), WM_DPICHANGED, MAKEWPARAM(96, 96), reinterpret_cast<LPARAM>(&suggested));
  EXPECT_TRUE(Same(button->GetBoundsRect(), {110, 60, 190, 90}));
  EXPECT_EQ(form.GetFont().GetHeight(), fontHeight);
}

// A host may resize what stands in its window before it tells of the new resolution.
TEST(Form, AHostsSizeMayComeBeforeItsResolution) {
  THostWindow host;
  TNotedControl panel;
  panel.SetBounds(0, 0, 200, 100);
  auto* const corner = new TNotedControl(&panel);
  corner->SetParent(&panel);
  corner->SetBounds(150, 70, 40, 20);
  corner->SetAnchors({TAnchorKind::akRight, TAnchorKind::akBottom});
  panel.CreateParented(host.Get());
  SetWindowPos(panel.GetHandle(), nullptr, 0, 0, 400, 200, SWP_NOZORDER);
  panel.ScaleForPPI(192);
  EXPECT_TRUE(Same(corner->GetBoundsRect(), {300, 140, 380, 180}));
  EXPECT_TRUE(Same(panel.GetBoundsRect(), {0, 0, 400, 200}));
  panel.FlipChildren(true);
  EXPECT_TRUE(Same(corner->GetBoundsRect(), {20, 140, 100, 180}));
  panel.SetWidth(500);
  EXPECT_EQ(corner->GetLeft(), 20);
}

TEST(SmallControls, KeepTheirContentInAnotherWindow) {
  THostWindow host;
  TNotedControl panel;
  panel.SetBounds(0, 0, 380, 280);
  auto* const edit = new TEdit(&panel);
  edit->SetParent(&panel);
  edit->SetMaxLength(5);
  int changes = 0;
  edit->SetOnChange([&](TPersistent*) { ++changes; });
  auto* const check = new TCheckBox(&panel);
  check->SetParent(&panel);
  check->SetTop(30);
  auto* const list = new TCheckListBox(&panel);
  list->SetParent(&panel);
  list->SetTop(60);
  for (const wchar_t* text : {L"a", L"b", L"c"}) list->Add(text);
  list->SetItemEnabled(2, false);
  panel.CreateParented(host.Get());
  EXPECT_EQ(changes, 0);
  edit->SetFocus();
  TypeText(L"abcde");
  EXPECT_EQ(changes, 5);
  TypeText(L"fgh");
  EXPECT_EQ(edit->GetText(), L"abcde");
  const int typed = changes;
  edit->Select(1, 2);
  ClickMouse(MiddleOf(check->GetHandle()));
  int checks = 0;
  list->SetOnClickCheck([&](TPersistent*) { ++checks; });
  const auto itemPoint = [&](int index) {
    RECT rect{};
    SendMessageW(list->GetHandle(), LB_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&rect));
    return PointOf(list->GetHandle(), list->ScaledPixels(8), static_cast<int>(rect.top + rect.bottom) / 2);
  };
  ClickMouse(itemPoint(0));
  ClickMouse(itemPoint(2)); // isn't enabled
  ClickMouse(itemPoint(1));
  PressKey(VK_SPACE);
  list->Move(0, 2);
  panel.RecreateWnd();
  EXPECT_EQ(edit->GetText(), L"abcde");
  EXPECT_EQ(edit->GetSelStart(), 1);
  EXPECT_EQ(edit->GetSelLength(), 2);
  EXPECT_TRUE(edit->IsModified());
  EXPECT_EQ(changes, typed);
  EXPECT_EQ(SendMessageW(check->GetHandle(), BM_GETCHECK, 0, 0), BST_CHECKED);
  EXPECT_EQ(checks, 3);
  EXPECT_TRUE(list->IsChecked(2)); // "a", which was moved
  EXPECT_FALSE(list->IsChecked(0));
  EXPECT_EQ(list->GetItemIndex(), 0);
  wchar_t text[8] = {};
  SendMessageW(list->GetHandle(), LB_GETTEXT, 2, reinterpret_cast<LPARAM>(text));
  EXPECT_STREQ(text, L"a");
}

TEST(SmallControls, ASplitterMovesTheEdgeOfItsNeighbour) {
  THostWindow host;
  TNotedControl panel;
  panel.SetBounds(0, 0, 300, 100);
  auto* const side = new TNotedControl(&panel);
  side->SetParent(&panel);
  side->SetWidth(100);
  side->SetAlign(TAlign::alLeft);
  auto* const rest = new TNotedControl(&panel);
  rest->SetParent(&panel);
  rest->SetAlign(TAlign::alClient);
  auto* const splitter = new TSplitter(&panel);
  splitter->SetBounds(101, 0, 6, 10);
  splitter->SetParent(&panel);
  splitter->SetMinSize(40);
  int moved = 0;
  splitter->SetOnMoved([&](TPersistent*) { ++moved; });
  panel.CreateParented(host.Get());
  EXPECT_EQ(splitter->GetLeft(), 100);
  const auto drag = [&](int from, int to) {
    MoveMouse(PointOf(panel.GetHandle(), from, 50));
    PressMouse();
    MoveMouse(PointOf(panel.GetHandle(), to, 50));
    ReleaseMouse();
  };
  drag(103, 143);
  EXPECT_EQ(side->GetWidth(), 140);
  EXPECT_EQ(rest->GetLeft(), 146);
  drag(143, 2);
  EXPECT_EQ(side->GetWidth(), 40);
  drag(43, 299);
  EXPECT_EQ(rest->GetWidth(), 40);
  EXPECT_EQ(moved, 3);
}

TEST(SmallControls, AScrollBoxShowsWhatDoesntFit) {
  THostWindow host;
  TScrollBox box;
  box.SetBorderStyle(TBorderStyle::bsNone);
  box.SetBounds(0, 0, 200, 100);
  auto* const distant = new TButton(&box);
  distant->SetParent(&box);
  distant->SetBounds(10, 280, 50, 20);
  box.CreateParented(host.Get());
  EXPECT_NE(GetWindowLongW(box.GetHandle(), GWL_STYLE) & WS_VSCROLL, 0);
  EXPECT_EQ(GetWindowLongW(box.GetHandle(), GWL_STYLE) & WS_HSCROLL, 0);
  box.ScrollInView(*distant);
  EXPECT_EQ(distant->GetTop(), 80);
  EXPECT_EQ(box.GetScrollPosition().y, 200);
  SendMessageW(box.GetHandle(), WM_VSCROLL, SB_LINEUP, 0);
  EXPECT_EQ(distant->GetTop(), 80 + box.ScaledPixels(20));
  MoveMouse(PointOf(box.GetHandle(), 100, 50));
  TurnWheel(-WHEEL_DELTA);
  EXPECT_EQ(distant->GetTop(), 80);
  auto* const aside = new TButton(&box);
  aside->SetParent(&box);
  aside->SetBounds(480, 20, 20, 20);
  TurnWheel(WHEEL_DELTA, true);
  EXPECT_GT(box.GetScrollPosition().x, 0);
  TurnWheel(-WHEEL_DELTA, true);
  EXPECT_EQ(box.GetScrollPosition().x, 0);
  delete aside;
  box.SetHeight(300); // all fits again
  EXPECT_EQ(distant->GetTop(), 280);
  EXPECT_EQ(GetWindowLongW(box.GetHandle(), GWL_STYLE) & WS_VSCROLL, 0);
}

} // namespace
} // namespace kiv::test
