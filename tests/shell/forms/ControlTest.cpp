#include "TestControls.h"

#include <doubles/GuiDriver.h>
#include <forms/ExtControls.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace kiv::test {
namespace {

using TLog = std::vector<std::wstring>;

/// Without a window.
class TMark : public TControl {
public:
  explicit TMark(TComponent* pOwner) : TControl(pOwner) {}
  std::wstring ClassName() const override { return L"TMark"; }

protected:
  void WndProc(TMessage& pMessage) override {
    if (pMessage.Msg != WM_PAINT) {
      TControl::WndProc(pMessage);
      return;
    }
    const RECT area{0, 0, GetWidth(), GetHeight()};
    const HBRUSH brush = CreateSolidBrush(RGB(255, 0, 0));
    FillRect(reinterpret_cast<HDC>(pMessage.WParam), &area, brush);
    DeleteObject(brush);
  }
};

RECT ScreenRect(TWinControl& control) {
  RECT rect{};
  GetWindowRect(control.GetHandle(), &rect);
  MapWindowPoints(nullptr, GetParent(control.GetHandle()), reinterpret_cast<POINT*>(&rect), 2);
  return rect;
}

TEST(Control, WindowsFollowAlignmentAndAnchors) {
  THostWindow host;
  TNotedControl panel;
  panel.SetBounds(0, 0, 200, 100);
  auto* const top = new TNotedControl(&panel);
  auto* const rest = new TNotedControl(&panel);
  auto* const corner = new TNotedControl(&panel);
  for (TWinControl* one : {top, rest, corner}) one->SetParent(&panel);
  top->SetHeight(20);
  top->SetAlign(TAlign::alTop);
  rest->SetAlign(TAlign::alClient);
  corner->SetBounds(150, 70, 40, 20);
  corner->SetAnchors({TAnchorKind::akRight, TAnchorKind::akBottom});
  int resized = 0;
  rest->SetOnResize([&](TPersistent*) { ++resized; });
  panel.CreateParented(host.Get());
  panel.SetBounds(0, 0, 300, 150);
  const auto same = [](const RECT& a, const RECT& b) { return EqualRect(&a, &b) != 0; };
  EXPECT_TRUE(same(ScreenRect(*top), {0, 0, 300, 20}));
  EXPECT_TRUE(same(ScreenRect(*rest), {0, 20, 300, 150}));
  EXPECT_TRUE(same(ScreenRect(*corner), {250, 120, 290, 140}));
  EXPECT_EQ(resized, 1);
  top->SetVisible(false);
  EXPECT_TRUE(same(ScreenRect(*rest), {0, 0, 300, 150}));
  // The host moves it, and the control knows.
  SetWindowPos(panel.GetHandle(), nullptr, 7, 8, 100, 90, SWP_NOZORDER);
  EXPECT_TRUE(same(panel.GetBoundsRect(), {7, 8, 107, 98}));
  EXPECT_TRUE(same(ScreenRect(*corner), {50, 60, 90, 80}));
}

TEST(Control, TheMouseComesToWindowsAndToWhatStandsInThem) {
  THostWindow host;
  TNotedControl panel;
  panel.SetBounds(0, 0, 200, 100);
  auto* const mark = new TMark(&panel);
  mark->SetParent(&panel);
  mark->SetBounds(50, 40, 20, 20);
  TLog log;
  const auto watch = [&](TControl& control, const std::wstring& name) {
    control.SetOnMouseEnter([&log, name](TPersistent*) { log.push_back(name + L" in"); });
    control.SetOnMouseLeave([&log, name](TPersistent*) { log.push_back(name + L" out"); });
    control.SetOnClick([&log, name](TPersistent*) { log.push_back(name + L" click"); });
    control.SetOnMouseDown([&log, name](TPersistent*, TMouseButton button, TShiftState, int x, int y) {
      log.push_back(name + L" down " + std::to_wstring(static_cast<int>(button)) + L" " + std::to_wstring(x) + L" " +
                    std::to_wstring(y));
    });
  };
  MoveMouse(PointOf(host.Get(), 300, 250));
  panel.CreateParented(host.Get());
  EXPECT_TRUE(PumpUntil([&] { return PixelOf(panel.GetHandle(), 60, 50) == RGB(255, 0, 0); }));
  EXPECT_EQ(CountPixels(panel.GetHandle(), RGB(255, 0, 0)), 400);
  watch(panel, L"panel");
  watch(*mark, L"mark");
  ClickMouse(PointOf(panel.GetHandle(), 10, 11));
  EXPECT_EQ(std::exchange(log, {}), (TLog{L"panel in", L"panel down 0 10 11", L"panel click"}));
  Screen().SetCursor(crHourGlass); // without a move
  EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_WAIT));
  Screen().SetCursor(crDefault);
  EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_ARROW));
  MoveMouse(PointOf(panel.GetHandle(), 51, 43));
  PressMouse(TShiftStateFlag::ssRight);
  ReleaseMouse(TShiftStateFlag::ssRight);
  EXPECT_EQ(std::exchange(log, {}), (TLog{L"mark in", L"mark down 1 1 3"}));
  // Pressed here and released elsewhere is no click, and the one that was pressed has the mouse meanwhile.
  PressMouse();
  EXPECT_EQ(GetCaptureControl(), mark);
  MoveMouse(PointOf(panel.GetHandle(), 10, 11));
  ReleaseMouse();
  EXPECT_EQ(GetCaptureControl(), nullptr);
  EXPECT_EQ(std::count(log.begin(), log.end(), L"mark click"), 0);
  log.clear();
  MoveMouse(PointOf(host.Get(), 300, 250));
  EXPECT_TRUE(PumpUntil([&] { return !log.empty() && log.back() == L"panel out"; }));
}

TEST(Control, FocusIsToldFromTheInnermostOutAndFromTheOutermostIn) {
  THostWindow host;
  TLog log;
  TNotedControl root(nullptr, L"root ");
  root.SetBounds(0, 0, 300, 200);
  TNotedControl left(nullptr, L"left ");
  TNotedControl right(nullptr, L"right ");
  TNotedControl inner(nullptr, L"inner ");
  left.SetParent(&root);
  right.SetParent(&root);
  inner.SetParent(&left);
  root.CreateParented(host.Get());
  inner.SetFocus();
  EXPECT_TRUE(inner.Focused());
  for (TNotedControl* one : {&root, &left, &right, &inner}) one->log = &log;
  right.SetFocus();
  EXPECT_EQ(std::exchange(log, {}), (TLog{L"inner exit", L"left exit", L"right enter"}));
  ::SetFocus(host.Get());
  EXPECT_EQ(std::exchange(log, {}), (TLog{L"right exit", L"root exit"}));
  left.SetEnabled(false);
  EXPECT_FALSE(inner.CanFocus());
  EXPECT_THROW(inner.SetFocus(), EInvalidOperation);
}

TEST(Control, WhatAPressHasBegunEndsWithTheLossOfTheMouse) {
  THostWindow host;
  TNotedControl panel;
  panel.SetBounds(0, 0, 200, 100);
  auto mark = std::make_unique<TMark>(nullptr);
  mark->SetParent(&panel);
  mark->SetBounds(50, 40, 20, 20);
  auto* const side = new TNotedControl(&panel);
  side->SetParent(&panel);
  side->SetWidth(40);
  side->SetAlign(TAlign::alLeft);
  auto* const splitter = new TSplitter(&panel);
  splitter->SetLeft(41);
  splitter->SetParent(&panel);
  TPlatformControl button(nullptr, L"BUTTON");
  button.SetBounds(210, 10, 100, 30);
  button.CreateParented(host.Get());
  panel.CreateParented(host.Get());
  int clicks = 0;
  mark->SetOnClick([&](TPersistent*) { ++clicks; });
  const auto pressAt = [&](int x, int y) {
    MoveMouse(PointOf(panel.GetHandle(), x, y));
    PressMouse();
    EXPECT_EQ(GetCapture(), panel.GetHandle());
    SendMessageW(panel.GetHandle(), WM_CANCELMODE, 0, 0); // a dialog comes up
    EXPECT_EQ(GetCapture(), nullptr);
  };
  pressAt(60, 50);
  ReleaseMouse();
  EXPECT_EQ(clicks, 0);
  pressAt(splitter->GetLeft() + 1, 50);
  MoveMouse(PointOf(panel.GetHandle(), splitter->GetLeft() + 2, 60));
  EXPECT_EQ(side->GetWidth(), 40);
  ReleaseMouse();
  // The one that lost it has gone when a window of the platform's takes it.
  pressAt(60, 50);
  mark.reset();
  ReleaseMouse();
  MoveMouse(MiddleOf(button.GetHandle()));
  PressMouse();
  EXPECT_EQ(GetCaptureControl(), &button);
  ReleaseMouse();
}

TEST(Control, TheKeyboardGoesOnWhenItsControlIsDisabledOrHidden) {
  THostWindow host;
  TNotedControl panel;
  panel.SetBounds(0, 0, 300, 200);
  std::vector<TPlatformControl*> edits;
  for (int i = 0; i < 3; ++i) {
    edits.push_back(new TPlatformControl(&panel, L"EDIT"));
    edits.back()->SetParent(&panel);
    edits.back()->SetTop(40 * i);
  }
  panel.CreateParented(host.Get());
  edits[0]->SetFocus();
  edits[0]->SetEnabled(false);
  EXPECT_TRUE(edits[1]->Focused());
  edits[1]->SetVisible(false);
  EXPECT_TRUE(edits[2]->Focused());
  edits[2]->SetEnabled(false);
  EXPECT_EQ(GetFocus(), panel.GetHandle());
}

TEST(Control, InADesignerItIsSeenAndDoesNothing) {
  THostWindow host;
  TNotedControl root;
  root.SetBounds(0, 0, 200, 100);
  auto* const button = new TPlatformControl(&root, L"BUTTON");
  button->SetParent(&root);
  root.SetDesigning(true);
  button->SetVisible(false);
  button->SetEnabled(false);
  root.CreateParented(host.Get());
  EXPECT_TRUE(IsWindowVisible(button->GetHandle()));
  EXPECT_TRUE(IsWindowEnabled(button->GetHandle())); // for the designer's mouse
  int pressed = 0;
  button->SetOnMouseDown([&](TPersistent*, TMouseButton, TShiftState, int, int) { ++pressed; });
  ClickMouse(MiddleOf(button->GetHandle()));
  EXPECT_EQ(pressed, 0);
  EXPECT_TRUE(button->commands.empty());
}

TEST(Control, TheParentsLookIsTakenOverUntilItIsSet) {
  TNotedControl parent;
  auto* const child = new TNotedControl(&parent);
  auto* const grandchild = new TNotedControl(child);
  child->SetParent(&parent);
  grandchild->SetParent(child);
  parent.GetFont().SetFontName(L"Tahoma");
  parent.SetColor(clRed);
  parent.SetShowHint(true);
  parent.SetBiDiMode(TBiDiMode::bdRightToLeft);
  EXPECT_EQ(grandchild->GetFont().GetFontName(), L"Tahoma");
  EXPECT_EQ(grandchild->GetColor(), clRed);
  EXPECT_TRUE(grandchild->GetShowHint());
  EXPECT_TRUE(grandchild->UseRightToLeftAlignment());
  child->GetFont().SetStyle({TFontStyle::fsBold});
  child->SetColor(clBlue);
  child->SetShowHint(false);
  parent.GetFont().SetFontName(L"Arial");
  parent.SetColor(clLime);
  EXPECT_FALSE(child->IsParentFont());
  EXPECT_EQ(grandchild->GetFont().GetFontName(), L"Tahoma");
  EXPECT_EQ(grandchild->GetFont().GetStyle(), TFontStyles{TFontStyle::fsBold});
  EXPECT_EQ(grandchild->GetColor(), clBlue);
  EXPECT_FALSE(grandchild->GetShowHint());
  child->SetParentFont(true);
  child->SetParentColor(true);
  EXPECT_EQ(grandchild->GetFont().GetFontName(), L"Arial");
  EXPECT_EQ(grandchild->GetColor(), clLime);
}

} // namespace
} // namespace kiv::test
