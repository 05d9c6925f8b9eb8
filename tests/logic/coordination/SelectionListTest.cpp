#include "SelectionFixture.h"

#include <framework/ComponentText.h>
#include <framework/TextCompare.h>

#include <doubles/ScopedTempFolder.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace kiv::test {
namespace {

class SelectionList : public SelectionTest {
protected:
  // "+path" selects, "-path" unselects, ">old|new" renames.
  void Do(std::initializer_list<std::wstring> pSteps) {
    for (const std::wstring& step : pSteps) {
      const std::wstring path = step.substr(1);
      if (step[0] == L'+') fList.AddPathToSelection(path);
      if (step[0] == L'-') fList.RemovePathFromSelection(path);
      if (step[0] == L'>') fList.PathWasRenamed(path.substr(0, path.find(L'|')), path.substr(path.find(L'|') + 1));
    }
  }
  TTexts Entries() { return EntriesOf(fList); }

  TKivSelectionList fList;
};

TEST_F(SelectionList, HoldsAsFewEntriesAsCanSay) {
  MakeAll({L"C:\\a\\1", L"C:\\a\\2", L"C:\\a\\d\\3", L"C:\\a\\d\\e\\4", L"C:\\a2\\x", L"C:\\b\\y", L"C:\\empty\\",
           L"C:\\n\\n\\n\\f", L"S:\\p\\q", L"S:\\r"});
  const struct {
    std::initializer_list<std::wstring> steps;
    TTexts entries;
  } cases[] = {
      {{L"+C:\\a\\1"}, {L"C:\\a\\1"}},
      {{L"+C:\\a"}, {L"C:\\a\\*"}},
      {{L"+C:\\a\\"}, {L"C:\\a\\*"}},
      {{L"+C:\\a\\*"}, {L"C:\\a\\*"}},
      {{L"+c:\\A", L"+C:\\a"}, {L"c:\\A\\*"}},
      // All of a folder, one by one, are the folder; a folder over what is selected takes it in.
      {{L"+C:\\a\\1", L"+C:\\a\\d\\3", L"+C:\\a\\2", L"+C:\\a\\d\\e\\4"}, {L"C:\\a\\*"}},
      {{L"+C:\\a\\d\\e", L"+C:\\a\\1", L"+C:\\a"}, {L"C:\\a\\*"}},
      {{L"+C:\\n\\n\\n\\f"}, {L"C:\\n\\*"}},
      {{L"+C:\\empty"}, {L"C:\\empty\\*"}},
      {{L"+C:\\a", L"+C:\\a2", L"+C:\\b", L"+C:\\n", L"+C:\\empty"}, {L"C:\\*"}},
      {{L"+C:\\"}, {L"C:\\*"}},
      {{L"+C:"}, {L"C:\\*"}},
      // Nothing of what is covered is added again.
      {{L"+C:\\*", L"+C:\\a\\d", L"+C:\\a\\1"}, {L"C:\\*"}},
      // Whoever leaves a covered folder leaves its siblings on each level.
      {{L"+C:\\", L"-C:\\a\\d\\3"},
       {L"C:\\a2\\*", L"C:\\a\\1", L"C:\\a\\2", L"C:\\a\\d\\e\\*", L"C:\\b\\*", L"C:\\empty\\*", L"C:\\n\\*"}},
      {{L"+C:\\", L"-C:\\a\\d\\"}, {L"C:\\a2\\*", L"C:\\a\\1", L"C:\\a\\2", L"C:\\b\\*", L"C:\\empty\\*", L"C:\\n\\*"}},
      {{L"+C:\\a", L"-C:\\a\\d\\*"}, {L"C:\\a\\1", L"C:\\a\\2"}},
      {{L"+C:\\n", L"-C:\\n\\n\\n\\f"}, {}},
      {{L"+C:\\a", L"-C:\\a"}, {}},
      {{L"+C:\\a\\1", L"+C:\\a\\d\\3", L"-C:\\a"}, {}},
      {{L"+C:\\a", L"-C:\\b"}, {L"C:\\a\\*"}},
      {{L"+C:\\", L"-C:\\"}, {}},
      // The network: a share is a root.
      {{L"+\\\\srv\\share\\p\\q"}, {L"\\\\srv\\share\\p\\*"}},
      {{L"+\\\\srv\\share\\p\\q", L"+\\\\SRV\\Share\\r"}, {L"\\\\SRV\\Share\\*"}},
      {{L"+\\\\srv\\share", L"-\\\\srv\\share\\p\\q"}, {L"\\\\srv\\share\\r"}},
      // Neighbours of the delimiter in the order of names.
      {{L"+C:\\a", L"+C:\\a2"}, {L"C:\\a2\\*", L"C:\\a\\*"}},
      // Renames.
      {{L"+C:\\a", L"+C:\\a2", L">C:\\a|C:\\z"}, {L"C:\\a2\\*", L"C:\\z\\*"}},
      {{L"+C:\\a\\1", L"+C:\\a\\d\\e", L">C:\\a\\d|C:\\a\\D2", L">C:\\A\\1|C:\\a\\9"},
       {L"C:\\a\\9", L"C:\\a\\D2\\e\\*"}},
      {{L"+C:\\a\\1", L"+C:\\b", L">C:\\a\\1|C:\\b\\1"}, {L"C:\\b\\*"}},
      {{L"+C:\\a\\d", L"+C:\\n\\n", L">C:\\a\\d|C:\\n"}, {L"C:\\n\\*"}},
  };
  for (const auto& c : cases) {
    fList.Clear();
    Do(c.steps);
    EXPECT_EQ(Entries(), c.entries) << testing::PrintToString(std::vector<std::wstring>(c.steps));
  }
}

TEST_F(SelectionList, TellsTheStateOfAnything) {
  MakeAll({L"C:\\a\\1", L"C:\\a\\2", L"C:\\a b\\1", L"C:\\a.b\\1", L"C:\\a-b\\1", L"C:\\A1\\1", L"C:\\full\\d\\f",
           L"C:\\full\\!x", L"C:\\full\\z"});
  fFiles.AddDrive(L'D');
  fFiles.SetMedium(L'D', false);
  Do({L"+C:\\a\\1", L"+C:\\full"});
  const struct {
    const wchar_t* path;
    TKivSelectionState state;
    bool sub;
  } cases[] = {
      {L"C:\\a\\1", ssChecked, false},
      {L"c:\\A\\1", ssChecked, false},
      {L"C:\\a\\2", ssUnChecked, false},
      {L"C:\\a", ssGrayed, false},
      {L"C:\\a\\*", ssGrayed, false},
      {L"C:\\", ssGrayed, false},
      {L"C:\\a b", ssUnChecked, false},
      {L"C:\\a.b", ssUnChecked, false},
      {L"C:\\a-b", ssUnChecked, false},
      {L"C:\\A1", ssUnChecked, false},
      {L"C:\\full", ssChecked, false},
      {L"C:\\full\\", ssChecked, false},
      {L"C:\\full\\!x", ssChecked, true},
      {L"C:\\full\\d\\f", ssChecked, true},
      {L"C:\\full\\d", ssChecked, true},
      {L"C:\\full\\z", ssChecked, true},
      {L"C:\\full\\none", ssDisabled, false},
      {L"D:\\", ssDisabled, false},
      {L"", ssDisabled, false},
      {L".", ssDisabled, false},
      {L"*", ssDisabled, false},
      {L"\\\\srv\\none", ssDisabled, false},
  };
  for (const auto& c : cases) {
    bool sub = false;
    EXPECT_EQ(fList.PathSelected(c.path, sub), c.state) << testing::PrintToString(c.path);
    EXPECT_EQ(sub, c.sub) << testing::PrintToString(c.path);
  }
  bool sub = true;
  const auto special = [&](TKivShellFolder folder) {
    return fList.IsPIDLSelected(Make<PlainItemIdList>(L"", 0, folder).Get(), sub);
  };
  EXPECT_EQ(fList.IsPIDLSelected(nullptr, sub), ssDisabled);
  EXPECT_FALSE(sub);
  EXPECT_EQ(special(SF_DRIVES), ssGrayed);
  EXPECT_EQ(special(SF_NETWORK), ssDisabled);
  EXPECT_FALSE(fList.GetDifferentDrivesSelected());
  fFiles.MakeFile(L"S:\\f", 1);
  const auto file = Make<PlainItemIdList>(L"\\\\srv\\share\\f");
  fList.AddPIDLToSelection(file.Get());
  EXPECT_EQ(fList.IsPIDLSelected(file.Get(), sub), ssChecked);
  EXPECT_EQ(special(SF_NETWORK), ssGrayed);
  EXPECT_TRUE(fList.GetDifferentDrivesSelected());
  fList.RemovePIDLFromSelection(file.Get());
  EXPECT_EQ(special(SF_NETWORK), ssDisabled);
  EXPECT_EQ(fList.CompletePIDLSelected(Make<PlainItemIdList>(L"C:\\a\\2").Get())->Path(), L"C:\\a");
}

TEST_F(SelectionList, AsksTheDiskNoMoreThanTheAnswerNeeds) {
  MakeAll({L"C:\\a\\1", L"C:\\a\\2", L"C:\\b\\x\\y\\z", L"C:\\c"});
  const auto searches = [&](std::initializer_list<std::wstring> steps) {
    const int before = fDisk.Searches();
    Do(steps);
    return fDisk.Searches() - before;
  };
  EXPECT_EQ(searches({L"+C:\\"}), 0);
  EXPECT_EQ(searches({L"-C:\\b\\x\\y\\z"}), 4) << "each level once";
  EXPECT_EQ(searches({L"+C:\\b\\x\\y\\z"}), 4) << "up to the drive, and nothing beside the way";
  fList.Clear();
  EXPECT_EQ(searches({L"+C:\\a\\1"}), 1);
  EXPECT_EQ(searches({L"+C:\\a\\2"}), 2) << "the folder, and the drive up to the first that isn't selected";
  EXPECT_EQ(searches({L"-C:\\a", L"-C:\\c"}), 0);
}

TEST_F(SelectionList, TellsOfChangesWhenTheyAreComplete) {
  MakeAll({L"C:\\a\\1", L"C:\\a\\2", L"C:\\c"});
  std::wstring told;
  fList.SetOnChange([&](TPersistent*) {
    told += L'c' + std::to_wstring(fList.GetCount());
    if (fList.GetCount() == 1 && told.size() < 8) fList.AddPathToSelection(L"C:\\c"); // a handler may come back
  });
  fList.SetOnInvalidPath([&](TPersistent*, const std::wstring& path) { told += L"<" + path + L">"; });
  Do({L"+C:\\none\\x"});
  EXPECT_EQ(told, L"<C:\\none\\x>");
  EXPECT_TRUE(fList.IsEmpty());
  told.clear();
  Do({L"+C:\\a\\1"});
  EXPECT_EQ(told, L"c1c2");
  told.clear();
  Do({L"+C:\\a\\2"}); // which comes, all three go, and the drive comes
  EXPECT_EQ(told, L"c1c1c1c1c1");
  auto doomed = std::make_unique<TKivSelectionList>();
  doomed->SetOnChange([&](TPersistent*) { doomed.reset(); });
  doomed->AddPathToSelection(L"C:\\a\\1");
  EXPECT_FALSE(doomed);
}

TEST_F(SelectionList, TellsOfWhatItTakesOverWhenItHasIt) {
  MakeAll({L"C:\\a\\1", L"C:\\a\\2", L"C:\\b", L"C:\\c"});
  Do({L"+C:\\a\\1", L"+C:\\b"});
  TKivSelectionList target;
  TTexts seen;
  target.SetOnChange([&](TPersistent*) {
    seen = EntriesOf(target);
    target.SetOnChange(nullptr);
    target.Clear(); // a handler may come back
  });
  target.Assign(&fList);
  EXPECT_EQ(seen, Entries());
  EXPECT_TRUE(target.IsEmpty());
  auto doomed = std::make_unique<TKivSelectionList>();
  doomed->AddPathToSelection(L"C:\\c");
  doomed->SetOnChange([&](TPersistent*) { doomed.reset(); });
  doomed->Assign(&fList);
  EXPECT_FALSE(doomed);
}

TEST_F(SelectionList, KeepsInvalidPathsOnRequest) {
  fList.SetRemoveInvalidPaths(false);
  Do({L"+C:\\none\\x\\*", L"+", L"+.", L"+C:\\none\\x\\"});
  EXPECT_EQ(Entries(), (TTexts{L".", L"C:\\none\\x\\"}));
  EXPECT_EQ(fList.IsPathSelected(L"C:\\none\\x"), ssDisabled);
  // Also below a folder's entry, which covers its files all the same.
  MakeAll({L"C:\\a\\f", L"C:\\z"});
  Do({L"+C:\\a", L"+C:\\a\\e", L"+C:\\a\\g"});
  EXPECT_EQ(fList.GetCount(), 5);
  EXPECT_EQ(fList.IsPathSelected(L"C:\\a\\f"), ssChecked);
  // What isn't there doesn't complete a folder that is empty.
  MakeAll({L"C:\\empty\\"});
  Do({L"+C:\\empty\\gone"});
  EXPECT_EQ(fList.IsPathSelected(L"C:\\empty"), ssGrayed);
  fList.SetPaths({L"C:\\empty\\gone"});
  EXPECT_EQ(Entries(), TTexts{L"C:\\empty\\gone"});
}

TEST_F(SelectionList, FollowsFoldersThatAreLinks) {
  MakeAll({L"C:\\place\\target.lnk", L"C:\\place\\desktop.ini", L"C:\\broken\\target.lnk", L"S:\\data\\f", L"C:\\z"});
  fDisk.SetLinkTarget(L"C:\\place\\target.lnk", L"\\\\srv\\share\\data");
  MakeAll({L"S:\\other"});
  Do({L"+C:\\place"});
  EXPECT_EQ(Entries(), TTexts{L"\\\\srv\\share\\data\\*"});
  EXPECT_EQ(fList.IsPathSelected(L"C:\\place\\"), ssChecked);
  EXPECT_EQ(fList.IsPathSelected(L"C:\\broken"), ssDisabled);
  Do({L"+C:\\broken", L"-C:\\place\\*"});
  EXPECT_TRUE(fList.IsEmpty());
  fList.SetHandleShellLinks(false);
  EXPECT_EQ(fList.IsPathSelected(L"C:\\place"), ssDisabled);
}

TEST_F(SelectionList, WalksEachSelectedFileOnce) {
  MakeAll({L"C:\\a\\1", L"C:\\a\\d\\2", L"C:\\a\\d\\e\\3", L"C:\\a\\link\\4", L"C:\\a\\z", L"C:\\b\\5", L"C:\\b\\6",
           L"C:\\gone\\7", L"C:\\x"});
  fFiles.SetAttributes(L"C:\\a\\link", {TObjectFlag::ReparsePoint});
  Do({L"+C:\\b\\6", L"+C:\\a", L"+C:\\gone\\7", L"+C:\\gone"});
  fFiles.Delete(L"C:\\gone");
  const auto walk = [this] {
    TTexts files;
    for (std::wstring file = fList.FindNext(); !file.empty(); file = fList.FindNext()) files.push_back(file);
    return files;
  };
  const TTexts all = {L"C:\\b\\6", L"C:\\a\\1", L"C:\\a\\z", L"C:\\a\\d\\2", L"C:\\a\\d\\e\\3"};
  EXPECT_EQ(walk(), all);
  EXPECT_EQ(fList.FindNext(), L"");
  fList.ResetFindNext();
  EXPECT_EQ(fList.FindNext(), all[0]);
  EXPECT_EQ(fList.FindNext(), all[1]);
  EXPECT_EQ(fList.GetListOfAllFiles()->GetCount(), 5);
  EXPECT_EQ(fList.FindNext(), all[2]) << "where it was";
  Do({L"+C:\\b\\5"});
  fList.SetFollowReparsePoint(true);
  EXPECT_EQ(walk().size(), 7U) << "from the start, with the link's and all of b";
}

TEST_F(SelectionList, ReachesAsDeepAsPathsDo) {
  std::wstring deep = L"C:";
  for (int level = 0; level < 1000; ++level) fFiles.MakeFolder(deep += L"\\d");
  const std::wstring leaf = deep + L"\\leaf";
  fFiles.MakeFile(leaf, 1);
  Do({L"+" + leaf});
  EXPECT_EQ(Entries(), TTexts{L"C:\\*"});
  EXPECT_EQ(fList.FindNext(), leaf);
  EXPECT_EQ(fList.IsPathSelected(leaf), ssChecked);
  fFiles.MakeFile(deep + L"\\other", 1);
  Do({L"-" + leaf});
  EXPECT_EQ(Entries(), TTexts{deep + L"\\other"});
}

TEST_F(SelectionList, TicksAFolderOfManyOneByOne) {
  fFiles.MakeFolder(L"C:\\a");
  TTexts paths;
  for (int i = 0; i < 50'000; ++i) {
    paths.push_back(L"C:\\a\\" + std::to_wstring(i));
    fFiles.MakeFile(paths.back(), 1);
  }
  fFiles.MakeFile(L"C:\\x", 1);
  const std::wstring last = paths.back();
  paths.pop_back();
  fList.SetPaths(paths);
  EXPECT_EQ(fList.GetCount(), 49'999);
  Do({L"+" + last});
  EXPECT_EQ(Entries(), TTexts{L"C:\\a\\*"});
  Do({L"-C:\\a\\7"});
  EXPECT_EQ(fList.GetCount(), 49'999);
  EXPECT_EQ(fList.IsPathSelected(L"C:\\a\\7"), ssUnChecked);
}

TEST_F(SelectionList, IsKeptInFilesAndTexts) {
  MakeAll({L"C:\\a\\1", L"C:\\a\\d=e\\2", L"C:\\b", L"C:\\c"});
  ScopedTempFolder temp;
  const std::wstring file = temp.PathOf(L"selection.ini");
  Do({L"+C:\\a\\d=e", L"+C:\\b"});
  const TTexts entries = Entries();
  fList.SaveToIniFile(file, L"Sel");
  fList.Clear();
  fList.LoadFromIniFile(file, L"sel");
  EXPECT_EQ(Entries(), entries);
  fList.LoadFromIniFile(file, L"other");
  EXPECT_TRUE(fList.IsEmpty());
  // By hand: what is below an entry, what completes a folder, what isn't there, and what is none.
  fList.SetPaths(
      {L"C:\\a\\1", L"garbage", L"C:\\a\\d=e\\2", L"C:\\none", L"", L"C:\\a\\d=e\\*", std::wstring(1, L'\0')});
  EXPECT_EQ(Entries(), TTexts{L"C:\\a\\*"});

  const std::wstring text = SaveComponentText(fList);
  const auto loaded = LoadComponentText(text);
  auto& copy = dynamic_cast<TKivSelectionList&>(*loaded);
  EXPECT_EQ(EntriesOf(copy), Entries());
  EXPECT_EQ(fList.ToString(), L"C:\\a\\*\r\n");
  copy.GetPaths().Add(L"C:\\b");
  copy.GetPaths().Put(1, L"C:\\c");
  EXPECT_EQ(EntriesOf(*TKivSelectionList::CreateCopy(copy)), (TTexts{L"C:\\a\\*", L"C:\\c"}));
  copy.GetPaths().Delete(0);
  fList.Assign(&copy);
  EXPECT_EQ(Entries(), TTexts{L"C:\\c"});
}

TEST_F(SelectionList, LosesNothingToFoldersThatCantBeListed) {
  MakeAll({L"C:\\a\\1", L"C:\\a\\2"});
  fFiles.DenyAccess(L"C:\\a");
  Do({L"+C:\\a\\1"});
  EXPECT_EQ(Entries(), TTexts{L"C:\\a\\1"}) << "what can't be listed isn't complete";
  Do({L"+C:\\a"});
  EXPECT_EQ(Entries(), TTexts{L"C:\\*"});
}

} // namespace
} // namespace kiv::test
