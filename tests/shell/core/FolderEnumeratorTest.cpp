#include <core/FolderEnumerator.h>

#include <doubles/FakeShellFolder.h>
#include <platform/ErrorMode.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kiv {
namespace {

using test::FakeShellNamespace;
using test::SimulatedFileSystem;
using test::TShellFault;
using test::TShellMethod;
using TKind = TShellFault::TKind;

class FolderEnumerator : public testing::Test {
protected:
  void SetUp() override {
    fFiles.AddDrive(L'C');
    fFiles.MakeFolder(L"C:\\Dir");
    for (const wchar_t* name : {L"a", L"b", L"c", L"d"}) fFiles.MakeFile(std::wstring(L"C:\\Dir\\") + name, 5);
  }
  void TearDown() override { EXPECT_EQ(fShell.LiveObjects(), 0) << "nothing may leak, whatever the folder did"; }

  // One walk: a letter for each object (in brackets after a fault), "." for the end, "!" for a failure.
  std::string Walk(TFolderEnumerator& enumerator, std::size_t most = 100) {
    std::string trace;
    for (std::size_t i = 0; i < most; ++i) {
      TUniqueItemIdList item;
      const TFolderStep step = enumerator.Next(item);
      EXPECT_EQ(static_cast<bool>(item), step == TFolderStep::Object || step == TFolderStep::ObjectAfterFault);
      if (step == TFolderStep::End || step == TFolderStep::Failed) {
        EXPECT_FALSE(enumerator.IsRunning());
        return trace + (step == TFolderStep::End ? "." : "!");
      }
      const auto node = FakeShellNamespace::MaybeNodeOf(item.Get());
      const auto object = node ? fFiles.MaybeObject(*node) : std::nullopt;
      const std::string name = object ? std::string(1, static_cast<char>(object->name[0])) : "?";
      trace += step == TFolderStep::ObjectAfterFault ? "[" + name + "]" : name;
    }
    return trace + "...";
  }
  TFolderEnumerator Open() { return TFolderEnumerator(fShell.Folder(L"C:\\Dir")); }

  SimulatedFileSystem fFiles;
  FakeShellNamespace fShell{fFiles};
};

TEST_F(FolderEnumerator, StepsToTheEndAndStartsOver) {
  TFolderEnumerator enumerator = Open();
  EXPECT_EQ(Walk(enumerator), "abcd.");
  EXPECT_EQ(enumerator.Status(), S_FALSE);
  EXPECT_EQ(Walk(enumerator), "abcd.");
  EXPECT_EQ(Walk(enumerator, 2), "ab...");
  enumerator.Restart();
  EXPECT_EQ(Walk(enumerator), "abcd.");
  // Moved in the middle of a walk, it goes on where it was.
  Walk(enumerator, 2);
  TFolderEnumerator other = std::move(enumerator);
  EXPECT_EQ(Walk(other), "cd.");
  enumerator = TFolderEnumerator();
  EXPECT_EQ(Walk(enumerator), ".");
}

TEST_F(FolderEnumerator, MeetsEachMisbehaviourWithItsOutcome) {
  const HRESULT denied = HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED);
  const struct {
    const char* what;
    TShellFault fault;
    const char* trace;
    HRESULT status;
  } cases[] = {
      {"one crash", {TKind::Crash, TShellMethod::Next, 3, 1}, "ab[c]d.", S_FALSE},
      {"a crash at the first", {TKind::Crash, TShellMethod::Next, 1, 1}, "[a]bcd.", S_FALSE},
      {"two crashes at one step", {TKind::Crash, TShellMethod::Next, 3, 2}, "ab.", E_FAIL},
      {"a crash at each step", {TKind::Crash, TShellMethod::Next, 1}, ".", E_FAIL},
      {"a crash at the end", {TKind::Crash, TShellMethod::Next, 5, 1}, "abcd.", E_FAIL},
      {"a fault of its own", {TKind::HandlesOwnFault, TShellMethod::Next, 2}, "abcd.", S_FALSE},
      {"a failing step", {TKind::Fail, TShellMethod::Next, 3, 1, denied}, "ab!", denied},
      {"success without an item", {TKind::NoResult, TShellMethod::Next, 3}, "ab.", E_UNEXPECTED},
      {"an early end", {TKind::FalseNoResult, TShellMethod::Next, 3}, "ab.", S_FALSE},
      {"an enumerator that crashes", {TKind::Crash, TShellMethod::EnumObjects}, "!", E_FAIL},
      {"an enumerator that fails", {TKind::Fail, TShellMethod::EnumObjects, 1, 1, denied}, "!", denied},
      {"success without an enumerator", {TKind::NoResult, TShellMethod::EnumObjects}, ".", S_FALSE},
      {"nothing to enumerate", {TKind::FalseNoResult, TShellMethod::EnumObjects}, ".", S_FALSE},
      {"an enumerator's own fault", {TKind::HandlesOwnFault, TShellMethod::EnumObjects}, "abcd.", S_FALSE},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    fShell.ClearFaults();
    fShell.AddFault(L"C:\\Dir", c.fault);
    TFolderEnumerator enumerator = Open();
    EXPECT_EQ(Walk(enumerator), c.trace);
    EXPECT_EQ(enumerator.Status(), c.status);
    // Usable behind each of these.
    fShell.ClearFaults();
    EXPECT_EQ(Walk(enumerator), "abcd.");
    EXPECT_EQ(enumerator.Status(), S_FALSE);
  }
}

TEST_F(FolderEnumerator, ACallerCanLeaveAFolderThatGivesTheSameForEver) {
  fShell.AddFault(L"C:\\Dir", {TKind::SameItem, TShellMethod::Next, 2});
  TFolderEnumerator enumerator = Open();
  EXPECT_EQ(Walk(enumerator, 5), "abbbb...");
}

TEST_F(FolderEnumerator, KeepsTheThreadsErrorModeAndSetsTheOneAskedForInside) {
  DWORD inside = 0xFF;
  fShell.AddFault(L"C:\\Dir", {TKind::Slow, TShellMethod::Next, 1, TShellFault::Always, E_FAIL,
                               [&] { inside = GetThreadErrorMode(); }});
  const ScopedErrorMode own(SEM_NOGPFAULTERRORBOX);
  for (const bool show : {false, true}) {
    TFolderEnumerator enumerator(fShell.Folder(L"C:\\Dir"), {.showErrorMessages = show});
    Walk(enumerator);
    EXPECT_EQ(inside & SEM_FAILCRITICALERRORS, show ? 0U : SEM_FAILCRITICALERRORS);
    EXPECT_EQ(GetThreadErrorMode(), static_cast<DWORD>(SEM_NOGPFAULTERRORBOX));
  }
}

} // namespace
} // namespace kiv
