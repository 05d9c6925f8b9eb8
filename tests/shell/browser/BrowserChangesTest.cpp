// What happens on the disk while the browser shows it.
#include "BrowserFixture.h"

#include <core/FolderFunctions.h>
#include <core/ItemIdList.h>
#include <doubles/OutsideChanges.h>
#include <platform/Handles.h>
#include <platform/Threads.h>

#include <chrono>
#include <set>

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
    auto due = std::chrono::steady_clock::now();
    const auto equals = [this, &due] { // a look takes its time itself
      if (View().IsListing() || std::chrono::steady_clock::now() < due) return false;
      due = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
      const std::vector<std::wstring> shown = Names();
      const std::set<std::wstring> set(shown.begin(), shown.end());
      return set.size() == shown.size() && set == OnDisk() && View().IsConsistent();
    };
    return PumpUntil(equals, fLimit);
  }
  void Rename(const std::wstring& from, const std::wstring& to) {
    ASSERT_TRUE(MoveFileW(fTemp.PathOf(from).c_str(), fTemp.PathOf(to).c_str()));
  }

  ScopedTempFolder fTemp;
  const std::chrono::minutes fLimit{2}; // of a hundred thousand files
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

// Another process makes, renames, rewrites and deletes files while a label is edited, and once more behind that. Rows
// are selected and checked, one has the focus, one stands on top. KIV_STORM_FILES says among how many files.
TEST_F(BrowserChanges, AStormLeavesTheUsersWorkAlone) {
  const int files = std::stoi(EnvironmentVariable(L"KIV_STORM_FILES").value_or(L"2000"));
  for (int i = 0; i < files; ++i) CreateEmptyFile(fTemp.PathOf(std::to_wstring(i) + L".txt"));
  const std::wstring middle = std::to_wstring(files / 2);
  const std::wstring edited = middle + L" a.doc";
  const std::wstring chosen = middle + L" z.doc";
  for (const std::wstring& name : {edited, chosen}) fTemp.MakeFile(name, 1);
  GoTo(fTemp.Path());
  Selection().AddPathToSelection(fTemp.PathOf(edited));
  FocusOn(edited);
  const TFolderRow* const row = Row(edited);
  View().GetRow(View().GetItems().GetCount() - 1)->MakeVisible(false);
  Row(edited)->MakeVisible(false);
  ASSERT_EQ(View().GetTopItem(), row);
  PressKey(VK_F2);
  ASSERT_TRUE(PumpUntil([&] { return View().GetEditControl() != nullptr; }));
  const HWND edit = View().GetEditControl();
  TypeText(middle + L" being typed");
  Row(chosen)->SetSelected(true);
  for (const wchar_t* const last : {L"first storm", L"second storm"}) {
    const bool is_edited = View().GetEditControl() != nullptr;
    ChangeFromOutside(fTemp.Path(), TOutsideChanges::Numbered, is_edited ? 1 : 2, files, fTemp.PathOf(last));
    ASSERT_TRUE(PumpUntil([&] { return IsFile(fTemp.PathOf(last)); }, fLimit));
    if (is_edited) {
      EXPECT_EQ(View().GetEditControl(), edit) << "still the same one";
      wchar_t text[80];
      GetWindowTextW(edit, text, 80);
      EXPECT_EQ(text, middle + L" being typed.doc");
      PressKey(VK_RETURN);
      ASSERT_TRUE(PumpUntil([&] { return Row(middle + L" being typed.doc") != nullptr; }, fLimit));
    }
    ASSERT_TRUE(EqualsDisk()) << last;
    ASSERT_EQ(Row(middle + L" being typed.doc"), row);
    EXPECT_EQ(View().GetItemFocused(), row);
    EXPECT_EQ(View().GetTopItem(), row);
    EXPECT_TRUE(row->GetSelected() && Row(chosen)->GetSelected());
    EXPECT_EQ(View().GetSelCount(), 2);
    EXPECT_TRUE(PumpUntil([&] { return row->GetState() == ssChecked && Row(chosen)->GetState() == ssUnChecked; }));
    EXPECT_EQ(Selection().GetCount(), 1);
  }
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
