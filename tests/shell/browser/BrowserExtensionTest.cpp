// Folders of a third party that are huge, slow, broken, or never answer.
#include "BrowserFixture.h"

#include <doubles/ScopedExtension.h>

#include <chrono>
#include <cstdio>

namespace kiv::test {
namespace {

using TClock = std::chrono::steady_clock;

class BrowserExtension : public TBrowserTest {
protected:
  // The longest turn of the main thread while the condition comes to hold; below zero if it doesn't.
  double LongestTurn(const std::function<bool()>& condition) {
    double longest = 0;
    auto last = TClock::now();
    const bool holds = PumpUntil([&] {
      const auto now = TClock::now();
      longest = std::max(longest, std::chrono::duration<double, std::milli>(now - last).count());
      last = now;
      return condition();
    });
    return holds ? longest : -1;
  }
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
    EXPECT_EQ(View().GetMessageText().find(L"can't be shown") != std::wstring::npos, one.tells) << one.name;
    EXPECT_TRUE(View().IsConsistent());
  }
}

TEST_F(BrowserExtension, AHundredThousandObjects) {
  constexpr int objects = 100'000;
  EnterExtension(L"100000 objects");
  const double longest = LongestTurn([&] { return View().GetItems().GetCount() == objects && !View().IsListing(); });
  ASSERT_GE(longest, 0);
  std::printf("longest turn of the main thread: %.0f ms\n", longest);
  for (const int i : {0, 1, 12'345, objects - 1}) {
    EXPECT_EQ(View().GetRow(i)->GetCaption(), L"Shown: object " + std::to_wstring(i + 1));
  }
  View().SetFilter(L"object 9999");
  EXPECT_EQ(Names().size(), 11U);
  View().SetFilter(L"");
  EXPECT_EQ(View().GetItems().GetCount(), objects);
  View().SetOrder({sample::TFolderColumn::Name, true});
  EXPECT_TRUE(PumpUntil([&] { return View().GetRow(0)->GetCaption() == L"Shown: object 100000"; }));
  EXPECT_TRUE(View().IsConsistent());
}

// The listing, or the question for attributes, never comes back: the window answers all the while, other folders open,
// one after the other, and the window can be closed.
TEST_F(BrowserExtension, OneThatNeverAnswersHoldsNobodyUp) {
  fTemp.MakeFile(L"a.txt");
  for (const wchar_t* const name : {L"5 objects, wait next 3", L"5 objects, wait attributes"}) {
    const ScopedExtensionWait wait;
    for (int i = 0; i < 6; ++i) {
      View().GoToText(fExtension.PathOf(name));
      const auto end = TClock::now() + std::chrono::milliseconds(300);
      const double longest = LongestTurn([&] { return TClock::now() > end; });
      std::printf("%ls: longest turn %.0f ms\n", name, longest);
      View().GoToText(fTemp.Path());
      EXPECT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, fTemp.Path()); })) << name << ' ' << i;
      EXPECT_EQ(Names(), (std::vector<std::wstring>{L"a.txt"}));
    }
    View().GoToText(fExtension.PathOf(name));
    wait.AwaitArrival();
    fExplorer->OpenWindow();
    fWindow->Close();
    PumpMessages();
    fWindow = fExplorer->Windows().back();
    fWindow->ShowForm();
  }
}

} // namespace
} // namespace kiv::test
