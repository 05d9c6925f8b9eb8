#include "TestControls.h"

#include <doubles/GdiCount.h>
#include <doubles/GuiDriver.h>
#include <forms/CheckListBox.h>
#include <forms/Form.h>
#include <forms/Hint.h>
#include <forms/PopupMenu.h>
#include <forms/PreTranslate.h>
#include <forms/StdControls.h>
#include <forms/Timer.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <platform/MainThread.h>

#include <gtest/gtest.h>

#include <memory>

namespace kiv::test {
namespace {

using TAction = std::function<void()>;

/// Does what it is told while it paints and when its hint is asked for.
class TTricky : public TCustomControl {
public:
  explicit TTricky(TComponent* pOwner) : TCustomControl(pOwner) { SetBounds(200, 10, 60, 40); }
  ~TTricky() override { EndWindow(); }
  std::wstring ClassName() const override { return L"TTricky"; }

  TAction whilePainting;
  TAction whenHintIsShown;

protected:
  void Paint() override { Run(whilePainting); }
  void CMHintShow(TMessage&) override { Run(whenHintIsShown); }

private:
  static void Run(const TAction& pAction) {
    if (const TAction copy = pAction) copy();
  }
};

/// A form with one of each, in which one event does something bad.
struct TScene {
  TScene() {
    MoveMouse({5, 5});
    form->SetBorderStyle(TFormBorderStyle::fbNone);
    form->SetBounds(300, 200, 380, 280);
    Add(edit, 10);
    Add(button, 50);
    Add(list, 90);
    list->SetHeight(60);
    list->Add(L"one");
    Add(tricky, 10);
    tricky->SetLeft(200);
    Add(label, 60);
    label->SetLeft(200);
    label->SetText(L"A label");
    Add(scroll, 160);
    splitter->SetAlign(TAlign::alBottom);
    splitter->SetParent(form.get());
    menu->GetItems().Add(item);
    item->SetCaption(L"item");
    tricky->SetPopupMenu(menu);
    form->SetVisible(true);
    form->ShowForm();
    PumpMessages();
  }
  template <typename T>
  void Add(T* pControl, int pTop) {
    pControl->SetParent(form.get());
    pControl->SetBounds(10, pTop, 100, 25);
  }

  std::unique_ptr<TForm> form = std::make_unique<TForm>();
  TEdit* edit = new TEdit(form.get());
  TButton* button = new TButton(form.get());
  TCheckListBox* list = new TCheckListBox(form.get());
  TTricky* tricky = new TTricky(form.get());
  TLabel* label = new TLabel(form.get());
  TScrollBox* scroll = new TScrollBox(form.get());
  TSplitter* splitter = new TSplitter(form.get());
  TPopupMenu* menu = new TPopupMenu(form.get());
  TMenuItem* item = new TMenuItem(form.get());
  TTimer* timer = new TTimer(form.get());
};

void ChooseFirstItem(TScene& scene) {
  scene.menu->SetOnPopup([](TPersistent*) {
    MainThread::Queue([] {
      constexpr WPARAM keys[] = {VK_DOWN, VK_RETURN};
      for (const WPARAM key : keys) PostMessageW(FindWindowW(L"#32768", nullptr), WM_KEYDOWN, key, 0);
    });
  });
  ClickMouse(MiddleOf(scene.tricky->GetHandle()), TShiftStateFlag::ssRight);
}

template <auto pMember>
TComponent* Of(TScene& scene) {
  return &*(scene.*pMember);
}

struct TCase {
  const char* name;
  TComponent* (*victim)(TScene&); ///< whose event it is
  void (*run)(TScene&, TAction);  ///< arms the event with something bad and brings it about
};

template <typename T>
TNotifyEvent Notify(T action) {
  return [action](TPersistent*) { action(); };
}

const TCase Cases[] = {
    {"click", &Of<&TScene::button>,
     [](TScene& s, TAction bad) {
       s.button->SetOnClick(Notify(bad));
       ClickMouse(MiddleOf(s.button->GetHandle()));
     }},
    {"click on what paints itself", &Of<&TScene::tricky>,
     [](TScene& s, TAction bad) {
       s.tricky->SetOnClick(Notify(bad));
       ClickMouse(MiddleOf(s.tricky->GetHandle()));
     }},
    {"click on what has no window", &Of<&TScene::label>,
     [](TScene& s, TAction bad) {
       s.label->SetOnClick(Notify(bad));
       ClickMouse(PointOf(s.form->GetHandle(), 205, 65));
     }},
    {"key down", &Of<&TScene::edit>,
     [](TScene& s, TAction bad) {
       s.edit->SetOnKeyDown([bad](TPersistent*, WORD&, TShiftState) { bad(); });
       s.edit->SetFocus();
       PressKey('A');
     }},
    {"preview of keys", &Of<&TScene::form>,
     [](TScene& s, TAction bad) {
       s.form->SetKeyPreview(true);
       s.form->SetOnKeyUp([bad](TPersistent*, WORD&, TShiftState) { bad(); });
       s.edit->SetFocus();
       PressKey('A');
     }},
    {"change of text", &Of<&TScene::edit>,
     [](TScene& s, TAction bad) {
       s.edit->SetOnChange(Notify(bad));
       s.edit->SetFocus();
       TypeText(L"a");
     }},
    {"focus comes", &Of<&TScene::edit>,
     [](TScene& s, TAction bad) {
       s.button->SetFocus();
       s.edit->SetOnEnter(Notify(bad));
       s.edit->SetFocus();
     }},
    {"focus goes by the Tab key", &Of<&TScene::edit>,
     [](TScene& s, TAction bad) {
       s.edit->SetFocus();
       s.edit->SetOnExit(Notify(bad));
       PressKey(VK_TAB);
     }},
    {"focus goes with the window", &Of<&TScene::button>,
     [](TScene& s, TAction bad) {
       s.button->SetFocus();
       s.button->SetOnExit(Notify(bad));
       s.button->SetParent(nullptr);
     }},
    {"press", &Of<&TScene::tricky>,
     [](TScene& s, TAction bad) {
       s.tricky->SetOnMouseDown([bad](TPersistent*, TMouseButton, TShiftState, int, int) { bad(); });
       ClickMouse(MiddleOf(s.tricky->GetHandle()));
     }},
    {"move over what has no window", &Of<&TScene::label>,
     [](TScene& s, TAction bad) {
       s.label->SetOnMouseMove([bad](TPersistent*, TShiftState, int, int) { bad(); });
       MoveMouse(PointOf(s.form->GetHandle(), 205, 65));
     }},
    {"double click", &Of<&TScene::tricky>,
     [](TScene& s, TAction bad) {
       s.tricky->SetOnDblClick(Notify(bad));
       SendMessageW(s.tricky->GetHandle(), WM_LBUTTONDBLCLK, 0, MAKELPARAM(5, 5));
     }},
    {"wheel", &Of<&TScene::scroll>,
     [](TScene& s, TAction bad) {
       s.scroll->SetOnMouseWheel([bad](TPersistent*, TShiftState, int, POINT, bool&) { bad(); });
       SendMessageW(s.scroll->GetHandle(), WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA), 0);
     }},
    {"check", &Of<&TScene::list>,
     [](TScene& s, TAction bad) {
       s.list->SetOnClickCheck(Notify(bad));
       ClickMouse(PointOf(s.list->GetHandle(), 8, 6));
     }},
    {"paint", &Of<&TScene::tricky>,
     [](TScene& s, TAction bad) {
       s.tricky->whilePainting = bad;
       s.tricky->Repaint();
     }},
    {"size", &Of<&TScene::scroll>,
     [](TScene& s, TAction bad) {
       s.scroll->SetAlign(TAlign::alRight);
       s.scroll->SetOnResize(Notify(bad));
       s.form->SetHeight(200);
     }},
    {"timer", &Of<&TScene::timer>,
     [](TScene& s, TAction bad) {
       s.timer->SetInterval(10);
       auto done = std::make_shared<bool>(false);
       s.timer->SetOnTimer([bad, done](TPersistent* self) {
         dynamic_cast<TTimer*>(self)->SetEnabled(false);
         *done = true;
         bad();
       });
       EXPECT_TRUE(PumpUntil([done] { return *done; }));
     }},
    {"menu item", &Of<&TScene::item>,
     [](TScene& s, TAction bad) {
       s.item->SetOnClick(Notify(bad));
       ChooseFirstItem(s);
     }},
    {"menu closes", &Of<&TScene::menu>,
     [](TScene& s, TAction bad) {
       s.menu->SetOnClose(Notify(bad));
       ChooseFirstItem(s);
     }},
    {"hint", &Of<&TScene::tricky>,
     [](TScene& s, TAction bad) {
       auto done = std::make_shared<bool>(false);
       s.tricky->SetShowHint(true);
       s.tricky->whenHintIsShown = [bad, done] {
         *done = true;
         bad();
       };
       MoveMouse(MiddleOf(s.tricky->GetHandle()));
       EXPECT_TRUE(PumpUntil([done] { return *done; }));
     }},
    {"form hides", &Of<&TScene::form>,
     [](TScene& s, TAction bad) {
       s.form->SetOnHide(Notify(bad));
       SendMessageW(s.form->GetHandle(), WM_CLOSE, 0, 0);
     }},
    {"question whether the form may close", &Of<&TScene::form>,
     [](TScene& s, TAction bad) {
       s.form->SetOnCloseQuery([bad](TPersistent*, bool& close) {
         close = false;
         bad();
       });
       SendMessageW(s.form->GetHandle(), WM_CLOSE, 0, 0);
     }},
};

class Lifetime : public testing::Test {
protected:
  Lifetime() {
    SetPreTranslate([](MSG& message) { return PreTranslateMessage(message); });
    Application().SetOnException([this](std::exception_ptr e) { reported.push_back(DescribeException(e)); });
  }
  ~Lifetime() override {
    SetPreTranslate(nullptr);
    Application().SetOnException(nullptr);
  }

  THostWindow host; // takes the focus when the form goes
  std::vector<std::wstring> reported;
};

TEST_F(Lifetime, AnyEventMayFreeItsControlOrAllThatStandsAroundOrTakeAnotherWindow) {
  enum { Free, FreeAll, Recreate };
  for (const TCase& one : Cases) {
    for (const int what : {Free, FreeAll, Recreate}) {
      SCOPED_TRACE(one.name + std::to_string(what));
      TScene scene;
      TComponent* const victim = one.victim(scene);
      auto* const control = dynamic_cast<TWinControl*>(victim);
      if (what == Recreate && !control) continue;
      const TAliveWatch alive(victim->GetAliveToken());
      const TAliveWatch form(scene.form->GetAliveToken());
      const HWND window = control ? control->GetHandle() : nullptr;
      bool done = false;
      one.run(scene, [&] {
        if (std::exchange(done, true)) return;
        if (what == Recreate)
          control->RecreateWnd();
        else if (what == FreeAll || victim == scene.form.get())
          scene.form.reset();
        else
          delete victim;
      });
      EXPECT_TRUE(PumpUntil([&] { return done && (!window || !IsWindow(window)); }));
      EXPECT_EQ(alive.IsAlive(), what == Recreate);
      EXPECT_EQ(form.IsAlive(), static_cast<bool>(scene.form));
      EXPECT_TRUE(HeapValidate(GetProcessHeap(), 0, nullptr));
      EXPECT_EQ(reported, std::vector<std::wstring>{});
    }
  }
}

TEST_F(Lifetime, WhatAnEventRaisesIsReportedOnceAndHarmsNothing) {
  for (const TCase& one : Cases) {
    SCOPED_TRACE(one.name);
    TScene scene;
    bool done = false;
    reported.clear();
    const auto raise = [&] {
      if (!std::exchange(done, true)) throw EInvalidOperation(L"raised");
    };
    try {
      one.run(scene, raise);
      EXPECT_TRUE(PumpUntil([&] { return done; }));
      PumpMessages();
    } catch (const EInvalidOperation& e) {
      reported.push_back(e.Message()); // what a caller's own call does comes back to it
    }
    EXPECT_EQ(reported, std::vector<std::wstring>{L"raised"});
    scene.form->SetOnHide(nullptr);
    scene.form->SetVisible(true);
    scene.edit->SetFocus();
    EXPECT_TRUE(scene.edit->Focused());
  }
}

int CountWindows() {
  int count = 0;
  EnumThreadWindows(
      GetCurrentThreadId(),
      [](HWND, LPARAM result) -> BOOL {
        ++*reinterpret_cast<int*>(result);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&count));
  for (HWND hidden = nullptr; (hidden = FindWindowExW(HWND_MESSAGE, hidden, nullptr, nullptr)) != nullptr;) {
    if (GetWindowThreadProcessId(hidden, nullptr) == GetCurrentThreadId()) ++count; // other programs have theirs
  }
  return count;
}

TEST_F(Lifetime, FormsLeaveNothingBehind) {
  const auto round = [] {
    TScene scene;
    scene.form->GetFont().SetStyle({TFontStyle::fsBold});
    scene.item->SetBitmap(TBitmap(16, 16));
    const HMENU handle = scene.menu->CreateHandle(96);
    DestroyMenu(handle);
    scene.form->RecreateWnd();
    PumpMessages();
  };
  for (int i = 0; i < 3; ++i) round();
  const int objects = CountGdiObjects();
  const int windows = CountWindows();
  for (int i = 0; i < 20; ++i) round();
  EXPECT_LE(CountGdiObjects(), objects);
  EXPECT_LE(CountWindows(), windows);
}

} // namespace
} // namespace kiv::test
