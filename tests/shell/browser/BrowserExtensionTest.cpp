// Folders of a third party that are huge, slow, broken, or never answer.
#include "BrowserFixture.h"

#include <doubles/ScopedExtension.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

namespace kiv::test {
namespace {

using enum TShiftStateFlag;
using TClock = std::chrono::steady_clock;

// Asks a window all the while whether it answers, from another thread.
class TAnswers {
public:
  explicit TAnswers(HWND window)
      : fThread([this, window](const std::stop_token& stop) {
          while (!stop.stop_requested()) {
            const auto start = TClock::now();
            DWORD_PTR answer = 0;
            SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, 60'000, &answer);
            fLongest = std::max(fLongest, std::chrono::duration<double, std::milli>(TClock::now() - start).count());
            Sleep(2);
          }
          fDone = true;
        }) {}
  ~TAnswers() {
    fThread.request_stop();
    // The thread may be waiting for an answer.
    EXPECT_TRUE(PumpUntil([this] { return fDone.load(); }));
    std::printf("longest answer of the window: %.0f ms\n", fLongest);
  }

private:
  double fLongest = 0;
  std::atomic<bool> fDone{false};
  std::jthread fThread;
};

class BrowserExtension : public TBrowserTest {
protected:
  void EnterExtension(const std::wstring& name) { Enter(fExtension.PathOf(name)); }
  bool HasObjects(int count) {
    return PumpUntil([&] { return !View().IsListing() && View().GetItems().GetCount() == count; });
  }

  ScopedExtension fExtension;
  ScopedTempFolder fTemp;
};

TEST_F(BrowserExtension, ShowsWhatItCanOfBrokenFolders) {
  const struct {
    const wchar_t* name;
    int objects;
    bool tells;
  } cases[] = {
      {L"5 objects", 5, false},           {L"5 objects, crash next 3", 5, false}, {L"5 objects, fail next 3", 0, true},
      {L"5 objects, fail enum", 0, true}, {L"5 objects, empty next 3", 2, false}, {L"5 objects, no folder2", 5, false},
  };
  for (const auto& one : cases) {
    EnterExtension(one.name);
    ASSERT_TRUE(PumpUntil([&] { return View().GetFolder().path.find(one.name) != std::wstring::npos; })) << one.name;
    EXPECT_TRUE(HasObjects(one.objects)) << one.name << ' ' << View().GetItems().GetCount();
    EXPECT_FALSE(fWindow->Button(TGlyph::NewFolder).IsEnabled()) << "nothing can be made there";
    EXPECT_EQ(View().GetMessageText().find(L"can't be shown") != std::wstring::npos, one.tells) << one.name;
    EXPECT_TRUE(View().IsConsistent());
  }
}

TEST_F(BrowserExtension, AHundredThousandObjects) {
  constexpr int objects = 100'000;
  const TAnswers answers(fWindow->GetHandle());
  EnterExtension(L"100000 objects");
  ASSERT_TRUE(PumpUntil([&] { return View().GetItems().GetCount() == objects && !View().IsListing(); }));
  for (const int i : {0, 1, 12'345, objects - 1}) {
    EXPECT_EQ(View().GetRow(i)->GetCaption(), L"Shown: object " + std::to_wstring(i + 1));
  }
  View().SelectAll();
  bool slow = true; // to delete the rows takes more than one turn
  View().SetOnDeletion([&slow](auto&&...) {
    if (std::exchange(slow, false)) Sleep(40);
  });
  View().SetFilter(L"object 9999");
  View().SetOnDeletion({});
  ASSERT_GT(View().GetItems().GetCount(), 11);
  EXPECT_EQ(View().GetSelCount(), 11) << "none that waits to be deleted";
  View().SelectAll();
  EXPECT_EQ(View().GetSelectedItemIdLists().size(), 11U);
  EXPECT_TRUE(PumpUntil([&] { return View().GetItems().GetCount() == 11; }));
  View().SetFilter(L"");
  EXPECT_TRUE(PumpUntil([&] { return View().GetItems().GetCount() == objects; }));
  View().SetOrder({sample::TFolderColumn::Name, true});
  EXPECT_TRUE(PumpUntil([&] { return View().GetRow(0)->GetCaption() == L"Shown: object 100000"; }));
  const TFolderRow* const last = View().GetRow(objects - 1);
  const auto entries = View().GetEntries();
  View().Reload();
  ASSERT_TRUE(PumpUntil([&] { return !View().IsListing(); }));
  EXPECT_EQ(View().GetRow(objects - 1), last);
  EXPECT_EQ(View().GetEntries(), entries) << "none has changed";
  View().GoToText(fTemp.Path());
  EXPECT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, fTemp.Path()); }));
  EXPECT_TRUE(View().IsConsistent());
}

// Whatever a folder does in whichever of its methods: the main thread asks it nothing, the window answers all the
// while, the next folder opens.
TEST_F(BrowserExtension, NoneIsAskedOnTheMainThread) {
  fTemp.MakeFile(L"a.txt");
  const TAnswers answers(fWindow->GetHandle());
  for (const std::wstring deed : {L"wait", L"slow", L"crash", L"fail"}) {
    for (const wchar_t* const method :
         {L"enum", L"next 3", L"parse", L"bind", L"names", L"attributes", L"compare", L"ui", L"details"}) {
      const ScopedExtensionWait wait;
      const std::wstring name = L"5 objects, " + deed + L' ' + method;
      SCOPED_TRACE(std::string(name.begin(), name.end()));
      View().SetFocus();
      fExtension.WatchAsks();
      const bool is_parsed = method == std::wstring(L"parse");
      View().GoToText(fExtension.PathOf(name) + (is_parsed ? L"\\object 1" : L""));
      const auto end = TClock::now() + std::chrono::milliseconds(150);
      ASSERT_TRUE(PumpUntil([&] { return TClock::now() > end; }));
      PressKey(VK_DOWN); // the link is told what is selected
      PressKey(VK_UP);
      View().GoToText(fTemp.Path());
      ASSERT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, fTemp.Path()); }));
      EXPECT_EQ(Names(), (std::vector<std::wstring>{L"a.txt"}));
      const std::wstring asks = fExtension.Asks();
      EXPECT_EQ(std::string(asks.begin(), asks.end()), "");
    }
  }
}

// Several that never answer, one after the other; and the window can be closed.
TEST_F(BrowserExtension, OneThatNeverAnswersHoldsNobodyUp) {
  fTemp.MakeFile(L"a.txt");
  const ScopedExtensionWait wait;
  const std::wstring path = fExtension.PathOf(L"5 objects, wait next 3, wait compare");
  for (int i = 0; i < 6; ++i) {
    View().GoToText(path);
    ASSERT_TRUE(PumpUntil([&] { return wait.HasArrived(); }));
    View().GoToText(fTemp.Path());
    ASSERT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, fTemp.Path()); })) << i;
    EXPECT_EQ(Names(), (std::vector<std::wstring>{L"a.txt"}));
  }
  View().GoToText(path);
  ASSERT_TRUE(PumpUntil([&] { return wait.HasArrived(); }));
  fExplorer->OpenWindow().ShowForm();
  fWindow->Close();
  PumpMessages();
  fWindow = fExplorer->Windows().back();
}

// Opening an object and making a folder, with one that doesn't come back from it.
TEST_F(BrowserExtension, ActionsThatNeverEndHoldNobodyUp) {
  fTemp.MakeFile(L"a.txt");
  const TAnswers answers(fWindow->GetHandle());
  const ScopedExtensionWait wait;
  EnterExtension(L"5 objects, wait ui, wait storage");
  ASSERT_TRUE(HasObjects(5));
  EXPECT_TRUE(fWindow->Button(TGlyph::NewFolder).IsEnabled());
  fExtension.WatchAsks();
  for (const auto& act : {&TFolderView::OpenFocused, &TFolderView::MakeNewFolder}) {
    (View().*act)();
    EXPECT_TRUE(PumpUntil([&] { return wait.HasArrived(); }));
    View().GoToText(fTemp.Path());
    EXPECT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, fTemp.Path()); }));
    PressKey(VK_LEFT, {ssAlt});
    EXPECT_TRUE(HasObjects(5));
  }
  EXPECT_EQ(fExtension.Asks(), L"");
}

} // namespace
} // namespace kiv::test
