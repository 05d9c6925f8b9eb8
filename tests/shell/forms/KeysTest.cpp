#include "TestControls.h"

#include <doubles/GuiDriver.h>
#include <forms/Form.h>
#include <forms/PopupMenu.h>
#include <forms/PreTranslate.h>
#include <forms/StdControls.h>

#include <gtest/gtest.h>

namespace kiv::test {
namespace {

using TLog = std::vector<std::wstring>;

/// A host whose loop has the hook.
class Keys : public testing::Test {
protected:
  Keys() {
    SetPreTranslate([](MSG& message) { return PreTranslateMessage(message); });
    panel.SetBounds(0, 0, 380, 280);
  }
  ~Keys() override { SetPreTranslate(nullptr); }

  template <typename T>
  T* Place(int pTop, const wchar_t* pText) {
    auto* const control = new T(&panel);
    control->SetParent(&panel);
    control->SetBounds(10, pTop, 100, 25);
    control->SetText(pText);
    control->SetOnClick([this, pText](TPersistent*) { log.push_back(pText); });
    return control;
  }

  THostWindow host;
  TLog log;
  TNotedControl panel;
};

TEST_F(Keys, TabFollowsTheTabOrderAndLeavesTheEndsToTheHost) {
  auto* const first = Place<TEdit>(0, L"1");
  auto* const second = Place<TEdit>(30, L"2");
  auto* const third = Place<TEdit>(60, L"3");
  auto* const nested = new TNotedControl(&panel);
  nested->SetParent(&panel);
  auto* const inner = new TEdit(nested);
  inner->SetParent(nested);
  nested->SetTabOrder(1);
  third->SetEnabled(false);
  panel.CreateParented(host.Get());
  first->SetFocus();
  std::vector<TWinControl*> reached;
  const auto press = [&](TShiftState shift) {
    PressKey(VK_TAB, shift);
    reached.push_back(NearestControl(GetFocus()));
  };
  for (int i = 0; i < 3; ++i) press({});
  press({TShiftStateFlag::ssShift});
  EXPECT_EQ(reached, (std::vector<TWinControl*>{inner, second, second, inner}));
  EXPECT_EQ(GetWindowLongW(first->GetHandle(), GWL_STYLE) & WS_TABSTOP, WS_TABSTOP); // for the host's own navigation
}

TEST_F(Keys, ButtonsHaveEnterEscAndTheirLetters) {
  auto* const edit = Place<TEdit>(0, L"");
  Place<TButton>(30, L"&Yes")->SetDefault(true);
  Place<TButton>(60, L"&No")->SetCancel(true);
  auto* const label = new TLabel(&panel);
  label->SetParent(&panel);
  label->SetText(L"&Text");
  label->SetFocusControl(edit);
  auto* const check = Place<TCheckBox>(90, L"Chec&k");
  panel.CreateParented(host.Get());
  edit->SetFocus();
  PressKey(VK_RETURN);
  PressKey(VK_ESCAPE);
  PressKey('N', {TShiftStateFlag::ssAlt});
  PressKey('K', {TShiftStateFlag::ssAlt});
  EXPECT_EQ(log, (TLog{L"&Yes", L"&No", L"&No", L"Chec&k"}));
  EXPECT_TRUE(check->IsChecked());
  EXPECT_TRUE(check->Focused());
  PressKey('T', {TShiftStateFlag::ssAlt});
  EXPECT_TRUE(edit->Focused());
  EXPECT_EQ(edit->GetText(), L"");
}

TEST_F(Keys, EventsSeeKeysAndMayUseThemUp) {
  auto* const edit = Place<TEdit>(0, L"");
  panel.SetKeyPreview(true);
  panel.SetOnKeyDown([&](TPersistent*, WORD& key, TShiftState shift) {
    if (key == 'B') key = 0; // its character comes all the same
    if (shift.Contains(TShiftStateFlag::ssCtrl)) log.push_back(L"ctrl");
  });
  edit->SetOnKeyPress([&](TPersistent*, wchar_t& key) {
    if (key == L'x') key = 0;
    if (key == L'y') key = L'Z';
  });
  edit->SetOnKeyUp(
      [&](TPersistent*, WORD& key, TShiftState) { log.push_back(std::wstring(1, static_cast<wchar_t>(key))); });
  panel.CreateParented(host.Get());
  edit->SetFocus();
  TypeText(L"axy");
  EXPECT_EQ(edit->GetText(), L"aZ");
  EXPECT_EQ(log, (TLog{L"A", L"X", L"Y"}));
  log.clear();
  PressKey('Q', {TShiftStateFlag::ssCtrl});
  EXPECT_EQ(std::count(log.begin(), log.end(), L"ctrl"), 2); // the Ctrl key and Q with it
}

TEST_F(Keys, ShortCutsComeBeforeAllElse) {
  auto* const edit = Place<TEdit>(0, L"");
  TPopupMenu menu;
  auto* const item = new TMenuItem(&menu);
  item->SetShortCut(MakeShortCut('D', {TShiftStateFlag::ssCtrl}));
  item->SetOnClick([&](TPersistent*) { log.push_back(L"item"); });
  auto* const sub = new TMenuItem(&menu);
  sub->SetCaption(L"More");
  sub->Add(item);
  menu.GetItems().Add(sub);
  panel.SetPopupMenu(&menu);
  panel.CreateParented(host.Get());
  edit->SetFocus();
  PressKey('D', {TShiftStateFlag::ssCtrl});
  PressKey('D');
  EXPECT_EQ(log, TLog{L"item"});
  EXPECT_EQ(edit->GetText(), L"d");
  sub->SetEnabled(false);
  PressKey('D', {TShiftStateFlag::ssCtrl});
  EXPECT_EQ(log, TLog{L"item"});
}

} // namespace
} // namespace kiv::test
