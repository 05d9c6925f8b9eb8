#include <coordination/SelectionList.h>
#include <core/ItemIdList.h>
#include <core/PathUtils.h>
#include <core/ShellLinkHelper.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/Handles.h>

#include <gtest/gtest.h>

#include <ole2.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace kiv::test {
namespace {

class SelectionOnDisk : public testing::Test {
protected:
  static void SetUpTestSuite() { OleInitialize(nullptr); }
  static void TearDownTestSuite() { OleUninitialize(); }

  std::set<std::wstring> Below(const std::wstring& pFolder) {
    std::set<std::wstring> entries;
    for (int i = 0; i < fList.GetCount(); ++i) {
      if (TKivPathList::IsSubPathOf(pFolder, fList.GetListItem(i))) {
        entries.insert(fList.GetListItem(i).substr(pFolder.size() + 1));
      }
    }
    return entries;
  }

  ScopedTempFolder fTemp;
  TKivSelectionList fList;
};

TEST_F(SelectionOnDisk, TicksAndUnticksRealFiles) {
  const std::wstring folder = fTemp.MakeFolder(L"sel");
  const std::wstring first = fTemp.MakeFile(L"sel\\1", 5);
  const std::wstring second = fTemp.MakeFile(L"sel\\d\\2", 6);
  fTemp.MakeFile(L"sel2\\x");
  fList.AddPathToSelection(first);
  EXPECT_EQ(fList.IsPathSelected(folder), ssGrayed);
  EXPECT_EQ(fList.IsPathSelected(fTemp.PathOf(L"sel2")), ssUnChecked);
  EXPECT_EQ(fList.GetSize(), 5);
  fList.AddPathToSelection(second);
  EXPECT_EQ(fList.ToString(), folder + L"\\*\r\n");
  EXPECT_EQ(fList.GetListOfAllFiles()->GetCount(), 2);
  fList.RemovePathFromSelection(second);
  EXPECT_EQ(fList.ToString(), first + L"\r\n");
  bool sub = false;
  EXPECT_EQ(fList.IsPIDLSelected(TKivItemIdList::Create(first).Get(), sub), ssChecked);
  EXPECT_EQ(fList.IsPIDLSelected(TKivItemIdList::CreateForSpecialFolder(SF_DRIVES, true).Get(), sub), ssGrayed);
  EXPECT_EQ(fList.IsPathSelected(fTemp.PathOf(L"none")), ssDisabled);
  EXPECT_EQ(fList.IsPathSelected(L"\\\\no server of that name\\share"), ssDisabled);
}

TEST_F(SelectionOnDisk, LeavesAllElseOfADriveSelected) {
  const std::wstring file = fTemp.MakeFile(L"a\\b\\c.txt");
  fTemp.MakeFile(L"a\\b\\d.txt");
  fTemp.MakeFolder(L"a\\e");
  const std::wstring drive = file.substr(0, 3);
  fList.AddPathToSelection(drive);
  EXPECT_EQ(fList.ToString(), drive + L"*\r\n");
  fList.RemovePathFromSelection(file);
  EXPECT_EQ(Below(fTemp.Path()), (std::set<std::wstring>{L"a\\b\\d.txt", L"a\\e\\*"}));
  EXPECT_EQ(fList.IsPathSelected(drive), ssGrayed);
  EXPECT_EQ(fList.IsPathSelected(file), ssUnChecked);
  fList.AddPathToSelection(file);
  EXPECT_EQ(fList.ToString(), drive + L"*\r\n") << "and back again";
}

TEST_F(SelectionOnDisk, TakesOneFormOfEachPath) {
  const std::wstring file = fTemp.MakeFile(L"a\\b\\c.txt");
  fTemp.MakeFile(L"a\\d.txt");
  fTemp.MakeFile(L"beside");
  std::wstring slashed = fTemp.PathOf(L"a");
  std::replace(slashed.begin(), slashed.end(), L'\\', L'/');
  fList.AddPathToSelection(slashed + L"/");
  EXPECT_EQ(fList.ToString(), fTemp.PathOf(L"a\\*\r\n"));
  fList.RemovePathFromSelection(slashed + L"/b/c.txt");
  EXPECT_EQ(fList.ToString(), fTemp.PathOf(L"a\\d.txt\r\n"));
  const std::filesystem::path current = std::filesystem::current_path();
  std::filesystem::current_path(fTemp.Path());
  EXPECT_EQ(fList.IsPathSelected(L"a\\d.txt"), ssDisabled) << "what it is hangs on the current folder";
  std::filesystem::current_path(current);
}

TEST_F(SelectionOnDisk, ReachesLongPathsAndOddNames) {
  const std::wstring name(100, L'n');
  std::wstring deep;
  for (int level = 0; level < 5; ++level) deep += name + L"\\";
  const std::wstring one = fTemp.MakeFile(deep + L"\x00E4 \x4E2D=[1].txt");
  const std::wstring two = fTemp.MakeFile(deep + L"b");
  ASSERT_GT(one.size(), 500U);
  fTemp.MakeFile(L"beside");
  fList.AddPathToSelection(one);
  EXPECT_EQ(fList.IsPathSelected(one), ssChecked);
  fList.SaveToIniFile(fTemp.PathOf(L"s.ini"), L"s");
  fList.LoadFromIniFile(fTemp.PathOf(L"s.ini"), L"s");
  EXPECT_EQ(fList.ToString(), one + L"\r\n");
  fList.AddPathToSelection(two);
  EXPECT_EQ(fList.ToString(), fTemp.PathOf(name) + L"\\*\r\n");
}

// The folder of a network place: where its link leads is meant.
TEST_F(SelectionOnDisk, FollowsTheLinkOfAPlace) {
  const std::wstring data = fTemp.MakeFolder(L"data");
  fTemp.MakeFile(L"data\\f");
  const std::wstring place = fTemp.MakeFolder(L"place");
  const auto target = TKivItemIdList::Create(data);
  const auto folder = TKivItemIdList::Create(place);
  ASSERT_TRUE(TShellLinkHelper::AddLinkTo(target.Get(), folder.Get(), L"target"));
  fList.AddPathToSelection(place);
  EXPECT_EQ(fList.ToString(), data + L"\\*\r\n");
  EXPECT_EQ(fList.IsPathSelected(place), ssChecked);
}

TEST_F(SelectionOnDisk, OffersItsFileFunctions) {
  const std::wstring file = fTemp.PathOf(L"n\\m\\f");
  EXPECT_TRUE(TKivSelectionList::ForceDirectories(fTemp.PathOf(L"n\\m")));
  EXPECT_TRUE(TKivSelectionList::CreateEmptyFile(file));
  EXPECT_TRUE(TKivSelectionList::IsFile(file) && !TKivSelectionList::IsFolder(file));
  WIN32_FIND_DATAW data;
  const TUniqueFind found(TKivSelectionList::FindFirst(file, data));
  EXPECT_TRUE(found);
  EXPECT_STREQ(data.cFileName, L"f");
  EXPECT_EQ(TKivSelectionList::FindFirst(file + L"x", data), INVALID_HANDLE_VALUE);
}

} // namespace
} // namespace kiv::test
