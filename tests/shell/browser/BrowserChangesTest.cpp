// What happens on the disk while the browser shows it.
#include "BrowserFixture.h"

#include <core/FolderFunctions.h>
#include <core/ItemIdList.h>
#include <platform/Handles.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <set>
#include <thread>

namespace kiv::test {
namespace {

class BrowserChanges : public TBrowserTest {
protected:
  // What the folder holds, by the platform.
  std::set<std::wstring> OnDisk() const {
    std::set<std::wstring> names;
    WIN32_FIND_DATAW data;
    const TUniqueFind find(FindFirstFileW(fTemp.PathOf(L"*").c_str(), &data));
    do {
      const std::wstring name = data.cFileName;
      if (name != L"." && name != L"..") names.insert(name);
    } while (FindNextFileW(find.Get(), &data));
    return names;
  }
  bool EqualsDisk() {
    return PumpUntil([this] {
      const std::vector<std::wstring> shown = Names();
      const std::set<std::wstring> set(shown.begin(), shown.end());
      return set.size() == shown.size() && set == OnDisk() && View().IsConsistent() && !View().IsListing();
    });
  }
  void Rename(const std::wstring& from, const std::wstring& to) {
    ASSERT_TRUE(MoveFileW(fTemp.PathOf(from).c_str(), fTemp.PathOf(to).c_str()));
  }

  ScopedTempFolder fTemp;
};

TEST_F(BrowserChanges, SingleOnesComeInPlace) {
  for (const wchar_t* const name : {L"a.txt", L"c.txt", L"e.txt"}) fTemp.MakeFile(name, 1);
  GoTo(fTemp.Path());
  FocusOn(L"c.txt");
  const TFolderRow* const row = Row(L"c.txt");
  fTemp.MakeFile(L"b.txt");
  EXPECT_TRUE(Shows({L"a.txt", L"b.txt", L"c.txt", L"e.txt"}));
  Rename(L"c.txt", L"z.txt");
  EXPECT_TRUE(Shows({L"a.txt", L"b.txt", L"e.txt", L"z.txt"}));
  EXPECT_EQ(View().GetSelected(), row) << "the row goes with its object";
  fTemp.MakeFile(L"a.txt", 3000);
  EXPECT_TRUE(PumpUntil([&] { return Row(L"a.txt")->Text(sample::TFolderColumn::Size) == L"3 KB"; }));
  ASSERT_TRUE(DeleteFileW(fTemp.PathOf(L"z.txt").c_str()));
  EXPECT_TRUE(Shows({L"a.txt", L"b.txt", L"e.txt"}));
  EXPECT_EQ(FocusedName(), L"e.txt") << "the nearest that is left";
}

TEST_F(BrowserChanges, AFolderThatGoesSaysSo) {
  const std::wstring sub = fTemp.MakeFolder(L"sub");
  GoTo(sub);
  Rename(L"sub", L"away");
  const auto tells = [&] { return View().GetMessageText().find(sub) != std::wstring::npos; };
  EXPECT_TRUE(PumpUntil(tells)) << "by itself";
  PressKey(VK_BACK);
  ASSERT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, fTemp.Path()); }));
  View().GoTo(TKivItemIdList::Create(sub));
  EXPECT_TRUE(PumpUntil(tells)) << "gone before it was opened";
  Rename(L"away", L"sub");
  PressKey(VK_F5);
  EXPECT_TRUE(PumpUntil([&] { return View().GetMessageText() == L"This folder is empty."; })) << "and back";
}

// Another thread makes, renames and deletes at random while a label is edited, rows are checked, one has the focus.
TEST_F(BrowserChanges, AStormLeavesTheUsersWorkAlone) {
  constexpr int files = 400;
  for (int i = 0; i < files; ++i) fTemp.MakeFile(L"file " + std::to_wstring(i) + L".txt", 1);
  fTemp.MakeFile(L"file 200 kept.txt", 1);
  fTemp.MakeFile(L"file 201 kept.txt", 1);
  GoTo(fTemp.Path());
  Selection().AddPathToSelection(fTemp.PathOf(L"file 201 kept.txt"));
  FocusOn(L"file 200 kept.txt");
  Row(L"file 200 kept.txt")->MakeVisible(false);
  PressKey(VK_F2);
  ASSERT_TRUE(PumpUntil([&] { return View().GetEditControl() != nullptr; }));
  const HWND edit = View().GetEditControl();
  TypeText(L"being typed");

  std::atomic<bool> done{false};
  std::thread storm([&] {
    std::mt19937 random(4711);
    for (int step = 0; step < 3000; ++step) {
      const std::wstring one = fTemp.PathOf(L"file " + std::to_wstring(random() % (2 * files)) + L".txt");
      const std::wstring two = fTemp.PathOf(L"file " + std::to_wstring(random() % (2 * files)) + L".txt");
      switch (random() % 3) {
      case 0:
        CreateEmptyFile(one);
        break;
      case 1:
        MoveFileW(one.c_str(), two.c_str());
        break;
      default:
        DeleteFileW(one.c_str());
      }
    }
    done = true;
  });
  EXPECT_TRUE(PumpUntil([&] { return done.load(); }));
  storm.join();
  EXPECT_EQ(View().GetEditControl(), edit) << "still the same one";
  wchar_t text[80];
  GetWindowTextW(edit, text, 80);
  EXPECT_STREQ(text, L"being typed.txt");
  EXPECT_EQ(FocusedName(), L"file 200 kept.txt");
  PressKey(VK_RETURN);
  ASSERT_TRUE(PumpUntil([&] { return Row(L"being typed.txt") != nullptr; }));
  EXPECT_TRUE(EqualsDisk());
  EXPECT_EQ(FocusedName(), L"being typed.txt");
  EXPECT_TRUE(Row(L"being typed.txt")->GetSelected());
  EXPECT_EQ(View().GetSelCount(), 1);
  Row(L"file 201 kept.txt")->MakeVisible(false);
  EXPECT_TRUE(PumpUntil([&] { return Row(L"file 201 kept.txt")->GetState() == ssChecked; }));
}

// The row on top of the screen stays there, whatever comes and goes elsewhere; so do focus and selection.
TEST_F(BrowserChanges, ListingAgainKeepsThePlace) {
  for (int i = 0; i < 300; ++i) fTemp.MakeFile(L"m" + std::to_wstring(i));
  GoTo(fTemp.Path());
  Row(L"m150")->MakeVisible(false);
  FocusOn(L"m140");
  const std::wstring top = View().GetTopItem()->GetCaption();
  ASSERT_NE(top, L"m0");
  for (int i = 0; i < 50; ++i) fTemp.MakeFile(L"a" + std::to_wstring(i));
  for (int i = 0; i < 40; ++i) DeleteFileW(fTemp.PathOf(L"m" + std::to_wstring(i)).c_str());
  PressKey(VK_F5);
  EXPECT_TRUE(EqualsDisk());
  EXPECT_EQ(View().GetTopItem()->GetCaption(), top);
  EXPECT_EQ(FocusedName(), L"m140");
  EXPECT_EQ(View().GetSelected(), Row(L"m140"));
}

} // namespace
} // namespace kiv::test
