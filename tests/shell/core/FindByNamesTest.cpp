#include <core/FindByNames.h>

#include <doubles/FakeShellFolder.h>

#include <gtest/gtest.h>

#include <string>

namespace kiv {
namespace {

using test::FakeShellNamespace;
using test::SimulatedFileSystem;
using test::TShellFault;
using test::TShellMethod;
using TKind = TShellFault::TKind;

class FindByNames : public testing::Test {
protected:
  void SetUp() override {
    fFiles.AddDrive(L'C');
    fFiles.MakeFolder(L"C:\\Dir");
    fFiles.MakeFolder(L"C:\\Dir\\in ");
    fFiles.MakeFile(L"C:\\Dir\\in \\deep.txt");
    for (const wchar_t* name : {L"x.lnk", L"y.txt"}) fFiles.MakeFile(std::wstring(L"C:\\Dir\\") + name);
    fShell.SetDisplayName(L"C:\\Dir\\x.lnk", L"Shown");
  }
  void TearDown() override { EXPECT_EQ(fShell.LiveObjects(), 0) << "nothing may leak, whatever the folder did"; }

  // The path of what was found below C:; empty if nothing was.
  std::wstring Find(const std::wstring& path) {
    const TUniqueItemIdList found = kiv::FindByNames(fShell.Folder(L"C:\\"), path, nullptr);
    const auto node = found ? FakeShellNamespace::MaybeNodeOf(found.Get()) : std::nullopt;
    return node ? fFiles.MaybePath(*node).value_or(L"gone") : std::wstring();
  }

  SimulatedFileSystem fFiles;
  FakeShellNamespace fShell{fFiles};
};

TEST_F(FindByNames, TakesTheNamesThatObjectsAreKnownBy) {
  fFiles.MakeFile(L"C:\\Dir\\z1");
  fFiles.MakeFile(L"C:\\Dir\\z2");
  fShell.SetDisplayName(L"C:\\Dir\\z1", L"twin");
  fShell.SetDisplayName(L"C:\\Dir\\z2", L"Twin");
  const struct {
    const wchar_t* path;
    const wchar_t* found;
  } cases[] = {
      {L"Dir", L"C:\\Dir"},
      {L"DIR\\", L"C:\\Dir"},
      {L"dir/Y.TXT", L"C:\\Dir\\y.txt"},
      {L"Dir\\shown", L"C:\\Dir\\x.lnk"},
      {L"Dir\\x.lnk", L"C:\\Dir\\x.lnk"},
      {L"Dir\\C:\\Dir\\y.txt", L""}, // a delimiter ends a name
      {L"Dir\\in \\deep.txt", L"C:\\Dir\\in \\deep.txt"},
      {L"Dir\\in\\deep.txt", L""},
      {L"Dir\\TWIN", L"C:\\Dir\\z1"}, // the first one
      {L"Dir\\y", L""},
      {L"Dir\\y.txt\\more", L""}, // no folder
      {L"Dir\\\\y.txt", L""},
      {L"\\Dir", L""},
      {L"", L""},
      {LR"(\\?\Dir\y.txt)", L"C:\\Dir\\y.txt"},
  };
  for (const auto& c : cases) EXPECT_EQ(Find(c.path), c.found) << testing::PrintToString(std::wstring(c.path));
  EXPECT_FALSE(kiv::FindByNames(nullptr, L"Dir", nullptr));
}

TEST_F(FindByNames, SurvivesWhatFoldersDo) {
  const struct {
    const char* what;
    TShellFault fault;
    const wchar_t* path;
    const wchar_t* found;
  } cases[] = {
      {"two crashes end the walk", {.step = 2, .times = 2}, L"Dir\\y.txt", L""},
      {"what comes before a failure is found", {.kind = TKind::Fail, .step = 3}, L"Dir\\shown", L"C:\\Dir\\x.lnk"},
      {"the same item for ever", {.kind = TKind::SameItem, .step = 2}, L"Dir\\none", L""},
      {"the same item some times", {.kind = TKind::SameItem, .step = 2, .times = 9}, L"Dir\\y.txt", L"C:\\Dir\\y.txt"},
      {"names that crash", {.method = TShellMethod::GetDisplayNameOf}, L"Dir\\y.txt", L""},
      {"no names", {.kind = TKind::NoResult, .method = TShellMethod::GetDisplayNameOf}, L"Dir\\", L"C:\\Dir"},
      {"can't be bound", {.method = TShellMethod::BindToObject}, L"Dir\\in \\deep.txt", L""},
      {"bound to nothing", {.kind = TKind::NoResult, .method = TShellMethod::BindToObject}, L"Dir\\in \\deep.txt", L""},
  };
  for (const auto& c : cases) {
    fShell.AddFault(L"C:\\Dir", c.fault);
    EXPECT_EQ(Find(c.path), c.found) << c.what;
    fShell.ClearFaults();
  }
}

TEST_F(FindByNames, SurvivesAFolderThatVanishesOnTheWay) {
  fShell.AddFault(L"C:\\Dir", {.kind = TKind::Slow, .method = TShellMethod::BindToObject, .action = [this] {
                                 fFiles.Delete(L"C:\\Dir\\in \\deep.txt");
                                 fFiles.Delete(L"C:\\Dir\\in ");
                               }});
  EXPECT_EQ(Find(L"Dir\\in \\deep.txt"), L"");
}

} // namespace
} // namespace kiv
