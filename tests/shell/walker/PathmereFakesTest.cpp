// The walker on folders that do what no real one can be made to do.
#include <walker/Pathmere.h>

#include <core/ItemIdList.h>
#include <core/PathmereError.h>
#include <core/SpecialFolders.h>
#include <doubles/FakeShellFolder.h>
#include <doubles/FakeShellItem.h>
#include <framework/Application.h>
#include <platform/MainThread.h>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace kiv {
namespace {

using test::FakeShellItem;
using test::FakeShellNamespace;
using test::ScopedFakeShell;
using test::SimulatedFileSystem;
using test::TShellFault;
using test::TShellItemScript;
using test::TShellMethod;
using TKind = TShellFault::TKind;

constexpr wchar_t Dir[] = LR"(C:\Dir)";

class PathmereFakes : public testing::Test {
protected:
  static void SetUpTestSuite() { MainThread::Attach(); }
  void SetUp() override {
    fFiles.AddDrive(L'C');
    fFiles.MakeFolder(Dir);
    for (const wchar_t* name : {L"a", L"b", L"c", L"d"}) fFiles.MakeFile(std::wstring(Dir) + L"\\" + name, 5);
  }
  void TearDown() override {
    // A question that a worker was asked holds a list for a moment longer than the one who asked waits; what the list
    // kept is then released here.
    using namespace std::chrono_literals;
    for (int turns = 0; fShell.LiveObjects() != 0 && turns < 100; ++turns) MainThread::CheckSynchronize(50ms);
    EXPECT_EQ(fShell.LiveObjects(), 0) << "nothing may leak, whatever the folder did";
  }

  std::wstring PathOf(PCIDLIST_ABSOLUTE list) {
    const auto node = FakeShellNamespace::MaybeNodeOf(list);
    return node ? fFiles.MaybePath(*node).value_or(L"") : L"";
  }
  // A shell over the simulated tree.
  ScopedFakeShell::TAnswers Answers() {
    return {.item = [this](PCIDLIST_ABSOLUTE list) -> ComPtr<IShellItem> {
              const std::wstring path = PathOf(list);
              TShellItemScript script = fItem;
              script.names.emplace(SIGDN_FILESYSPATH, path);
              script.bind = [this, folder = fShell.Folder(path), hr = fBind](IBindCtx*, REFGUID, REFIID iid,
                                                                             void** object) {
                if (const auto action = std::exchange(fAtBind, nullptr)) action();
                return FAILED(hr) ? hr : folder->QueryInterface(iid, object);
              };
              return Make<FakeShellItem>(script);
            },
            .path = [this](PCIDLIST_ABSOLUTE list) { return PathOf(list); }};
  }
  ComPtr<TKivItemIdList> List(const std::wstring& path) { return TKivItemIdList::Create(fShell.ItemIdList(path)); }

  // One walk: a letter for each object, "." for the end, "!" and the code for a failure.
  std::string Walk(TPathmere& walker, int most = 100) {
    std::string trace;
    try {
      while (--most >= 0) {
        if (!walker.Next()) return trace + ".";
        const auto node = FakeShellNamespace::MaybeNodeOf(walker.GetItemIdList()->WindowsPointer());
        trace += static_cast<char>(fFiles.MaybeObject(*node)->name[0]);
      }
      return trace + "...";
    } catch (const EPathmereError& e) {
      EXPECT_NE(e.Message().find(Dir), std::wstring::npos);
      return trace + "!" + std::to_string(e.ErrorCode());
    }
  }

  SimulatedFileSystem fFiles;
  FakeShellNamespace fShell{fFiles};
  TShellItemScript fItem; // what all shell items have
  HRESULT fBind = S_OK;   // what binding them comes to
  std::function<void()> fAtBind;
};

TEST_F(PathmereFakes, MeetsEachMisbehaviourWithItsOutcome) {
  const ScopedFakeShell shell(Answers());
  enum class TLast { D, B, None }; // the object behind it
  const struct {
    const char* what;
    TShellFault fault;
    const char* trace;
    TLast last;
  } cases[] = {
      {"one crash", {TKind::Crash, TShellMethod::Next, 3, 1}, "abcd.", TLast::D},
      {"two crashes", {TKind::Crash, TShellMethod::Next, 3, 2}, "ab.", TLast::None},
      {"a crash at the end", {TKind::Crash, TShellMethod::Next, 5, 1}, "abcd.", TLast::D},
      {"a code of the system's", {TKind::Fail, TShellMethod::Next, 3, 1, E_ACCESSDENIED}, "ab!5", TLast::B},
      {"no code of the system's", {TKind::Fail, TShellMethod::Next, 3, 1, E_FAIL}, "ab.", TLast::B},
      {"success without an item", {TKind::NoResult, TShellMethod::Next, 3}, "ab.", TLast::B},
      {"least code", {TKind::Fail, TShellMethod::EnumObjects, 1, 1, HRESULT_FROM_WIN32(3)}, "!3", TLast::D},
      {"below", {TKind::Fail, TShellMethod::EnumObjects, 1, 1, HRESULT_FROM_WIN32(2)}, ".", TLast::D},
      {"greatest code", {TKind::Fail, TShellMethod::EnumObjects, 1, 1, HRESULT_FROM_WIN32(12175)}, "!12175", TLast::D},
      {"above", {TKind::Fail, TShellMethod::EnumObjects, 1, 1, HRESULT_FROM_WIN32(12176)}, ".", TLast::D},
      {"by its low bits alone", {TKind::Fail, TShellMethod::EnumObjects, 1, 1, MK_E_SYNTAX}, "!484", TLast::D},
      {"an enumerator that crashes", {TKind::Crash, TShellMethod::EnumObjects}, ".", TLast::D},
      {"success without an enumerator", {TKind::NoResult, TShellMethod::EnumObjects}, ".", TLast::D},
  };
  TPathmere walker;
  walker.SetFolderIdList(List(Dir));
  ASSERT_EQ(walker.GetDirectory(), LR"(C:\Dir\)");
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    fShell.ClearFaults();
    ASSERT_EQ(Walk(walker), "abcd.") << "usable behind each of these";
    fShell.AddFault(Dir, c.fault);
    EXPECT_EQ(Walk(walker), c.trace);
    const std::wstring last = walker.GetItemIdList() ? walker.GetObjectName() : L"";
    EXPECT_EQ(last, c.last == TLast::D ? L"d" : c.last == TLast::B ? L"b" : L"");
    EXPECT_EQ(walker.GetDirectory(), LR"(C:\Dir\)");
  }
}

TEST_F(PathmereFakes, TakesWhatComesAfterACrashUntested) {
  const ScopedFakeShell shell(Answers());
  TPathmere walker;
  walker.SetFolderIdList(List(Dir));
  walker.SetFilter(L"d");
  EXPECT_EQ(Walk(walker), "d.");
  fShell.AddFault(Dir, {TKind::Crash, TShellMethod::Next, 2, 1});
  EXPECT_EQ(Walk(walker), "bd.");
}

TEST_F(PathmereFakes, EndsAFolderThatGivesTheSameForEver) {
  const ScopedFakeShell shell(Answers());
  TPathmere walker;
  walker.SetFolderIdList(List(Dir));
  fShell.AddFault(Dir, {TKind::SameItem, TShellMethod::Next, 2});
  EXPECT_EQ(Walk(walker, 5), "abbbb...") << "the caller may have enough before";
  walker.SetFilter(L"none"); // then the caller has no say
  EXPECT_EQ(Walk(walker), ".");
  EXPECT_THROW(walker.SetObjectName(L"none"), EPathmereError);
}

TEST_F(PathmereFakes, AsksForAttributesOnlyWhereARuleNeedsThem) {
  const ScopedFakeShell shell(Answers());
  int asked = 0;
  fShell.AddFault(Dir, {TKind::Slow, TShellMethod::GetAttributesOf, 1, TShellFault::Always, S_OK, [&] { ++asked; }});
  TPathmere walker;
  walker.SetFolderIdList(List(Dir));
  EXPECT_EQ(Walk(walker), "abcd.");
  EXPECT_EQ(asked, 0);
  walker.SetFilter(L"a;b");
  EXPECT_EQ(Walk(walker), "ab.");
  EXPECT_EQ(asked, 4);
  const int calls = shell.Calls();
  walker.SetFileSystemOnly(true);
  EXPECT_EQ(Walk(walker), "ab.");
  EXPECT_EQ(shell.Calls(), calls) << "files are judged by their folder alone";
}

TEST_F(PathmereFakes, AnswersAttributesByTheFolderAndElseByTheObject) {
  const ScopedFakeShell shell(Answers());
  fFiles.MakeFolder(LR"(C:\Dir\sub)");
  fItem.attributes = SFGAO_LINK | SFGAO_FOLDER | SFGAO_STREAM | SFGAO_BROWSABLE;
  TPathmere walker;
  walker.SetAbsoluteItemIdList(List(LR"(C:\Dir\sub)"));
  walker.SetFolderIdList(List(Dir));
  walker.SetItemIdList(TKivItemIdList::Create(fShell.ItemIdList(LR"(C:\Dir\sub)", true)));
  EXPECT_EQ(walker.GetAttributes(SFGAO_FOLDER | SFGAO_LINK), SFGAO_FOLDER);
  EXPECT_TRUE(walker.IsFolder());
  // Browsable alone is another question, for the object itself.
  EXPECT_EQ(walker.GetAttributes(SFGAO_BROWSABLE | SFGAO_FOLDER), SFGAO_FOLDER);
  EXPECT_EQ(walker.GetAttributes(SFGAO_BROWSABLE), SFGAO_BROWSABLE);
  walker.SetFileSystemOnly(true);
  EXPECT_EQ(walker.GetAttributes(SFGAO_BROWSABLE), 0U) << "a file that opens like a folder";
  EXPECT_TRUE(walker.IsFolder());

  for (const TKind kind : {TKind::Fail, TKind::Crash}) {
    fShell.ClearFaults();
    fShell.AddFault(Dir, {kind, TShellMethod::GetAttributesOf});
    EXPECT_EQ(walker.GetAttributes(SFGAO_LINK | SFGAO_HIDDEN), SFGAO_LINK);
    EXPECT_FALSE(walker.IsFolder());
    walker.SetFileSystemOnly(false);
    EXPECT_TRUE(walker.IsFolder());
    walker.SetFileSystemOnly(true);
  }
}

TEST_F(PathmereFakes, AsksOnceAnObjectForSubFolders) {
  const ScopedFakeShell shell(Answers());
  for (const wchar_t* folder : {LR"(C:\Dir\e)", LR"(C:\Dir\e\sub)"}) fFiles.MakeFolder(folder);
  fFiles.MakeFile(LR"(C:\Dir\f.Zip)");
  int asked = 0;
  fShell.AddFault(Dir, {TKind::Slow, TShellMethod::GetAttributesOf, 1, TShellFault::Always, S_OK, [&] { ++asked; }});
  const auto tell = [&](TPathmere& walker) {
    std::string answers;
    while (walker.Next()) {
      answers += walker.HasSubFolders() ? '+' : '-';
      const int before = asked;
      EXPECT_EQ(walker.HasSubFolders(), answers.back() == '+');
      EXPECT_EQ(asked, before);
    }
    return answers;
  };
  TPathmere walker;
  EXPECT_THROW(walker.HasSubFolders(), EInvalidOperation);
  walker.SetFolderIdList(List(Dir));
  EXPECT_THROW(walker.HasSubFolders(), EInvalidOperation);
  EXPECT_EQ(tell(walker), "----++");
  walker.SetFileSystemOnly(true);
  EXPECT_EQ(tell(walker), "----+-");
  // What comes back to the walker while it is asked leaves no answer behind for another object.
  walker.SetObjectName(L"e");
  const auto with = walker.GetItemIdList();
  walker.SetObjectName(L"a");
  fShell.ClearFaults();
  fShell.AddFault(Dir, {TKind::Slow, TShellMethod::GetAttributesOf, 2, 1, S_OK, [&] { walker.SetItemIdList(with); }});
  EXPECT_FALSE(walker.HasSubFolders());
  EXPECT_TRUE(walker.HasSubFolders());
  walker.SetSpecialFolder(SF_DESKTOP);
  EXPECT_TRUE(walker.HasSubFolders());
}

class TSelecting : public TPathmere {
public:
  bool HasMultiObjects() const override { return true; }
};

TEST_F(PathmereFakes, SeveralObjectsDoInsteadOfOne) {
  const ScopedFakeShell shell(Answers());
  TSelecting walker;
  EXPECT_FALSE(walker.CheckIfValid(false)) << "of no folder";
  walker.SetFolderIdList(List(Dir));
  EXPECT_TRUE(walker.CheckIfValid(false));
}

TEST_F(PathmereFakes, FileSystemOnlyKnowsItsExceptionsByName) {
  for (const wchar_t* name : {L"recycler", L"Recycle.Bin", L"recycl"})
    fFiles.MakeFile(std::wstring(Dir) + L"\\" + name);
  const ScopedFakeShell shell(Answers());
  // No object has any attribute.
  fShell.AddFault(Dir, {TKind::NoResult, TShellMethod::GetAttributesOf});
  TPathmere walker;
  walker.SetFileSystemOnly(true);
  walker.SetFolderIdList(List(Dir));
  EXPECT_EQ(Walk(walker), "Rr.");
  // The computer and the network as objects; in the network what has a name.
  SpecialFolders::Clear();
  SpecialFolders::Share(SF_DRIVES, List(LR"(C:\Dir\a)"));
  SpecialFolders::Share(SF_NETWORK, List(LR"(C:\Dir\d)"));
  EXPECT_EQ(Walk(walker), "adRr.");
  SpecialFolders::Clear();
  SpecialFolders::Share(SF_NETWORK, List(Dir));
  walker.SetFolderIdList(List(Dir));
  EXPECT_EQ(Walk(walker), "abcdrRr.");
}

TEST_F(PathmereFakes, FindsAnObjectByTheNameThatIsShownWhereverTheWalkStands) {
  const ScopedFakeShell shell(Answers());
  TPathmere walker;
  walker.SetFolderIdList(List(Dir));
  ASSERT_EQ(Walk(walker, 3), "abc...");
  fShell.SetDisplayName(LR"(C:\Dir\b)", L"shown b");
  walker.SetObjectName(L"SHOWN b");
  EXPECT_EQ(walker.GetObjectName(), L"b");
  EXPECT_EQ(walker.GetShellObjectName(true), L"shown b");
  EXPECT_EQ(Walk(walker), "abcd.") << "the search is over";
}

TEST_F(PathmereFakes, KeepsAFolderThatCannotBeBoundAndTriesAgain) {
  const ScopedFakeShell shell(Answers());
  TPathmere walker;
  fBind = E_ACCESSDENIED;
  const auto list = List(Dir);
  // On this thread a list keeps its shell item, with what it answers.
  std::thread([&] { walker.SetFolderIdList(list); }).join();
  EXPECT_EQ(walker.GetFolderIdList(), list);
  std::thread([&] {
    EXPECT_THROW(walker.GetShellFolder(), EPathmereError);
    EXPECT_THROW(walker.Next(), EPathmereError);
    EXPECT_EQ(walker.GetAttributes(SFGAO_FOLDER), 0U);
    EXPECT_FALSE(walker.BrowseObject());
  }).join();
  fBind = S_OK;
  EXPECT_EQ(Walk(walker), "abcd.");
}

TEST_F(PathmereFakes, AcceptsResultsOfASearchOnlyWhenTold) {
  auto answers = Answers();
  answers.path = nullptr;
  fItem.names[SIGDN_DESKTOPABSOLUTEEDITING] = L"search-ms:query=x";
  const ScopedFakeShell shell(answers);
  TPathmere walker;
  try {
    walker.SetFolderIdList(List(Dir));
    FAIL() << "a search's results aren't a folder";
  } catch (const EPathmereError& e) {
    EXPECT_EQ(e.ErrorCode(), 3U);
  }
  EXPECT_EQ(walker.GetFolderIdList(), nullptr);
  walker.SetFolderIdList(List(L"C:")); // one level deep it is the search itself
  walker.SetAcceptSearchFolderPaths(true);
  walker.SetFolderIdList(List(Dir));
  EXPECT_EQ(Walk(walker), "abcd.");
}

TEST_F(PathmereFakes, SurvivesAFolderThatComesBackToItsWalker) {
  const ScopedFakeShell shell(Answers());
  fFiles.MakeFolder(LR"(C:\Other)");
  fFiles.MakeFile(LR"(C:\Other\x)");
  auto walker = std::make_unique<TPathmere>();
  const auto other = List(LR"(C:\Other)");
  for (const TShellMethod method : {TShellMethod::Next, TShellMethod::GetAttributesOf}) {
    const auto at_second_call = [&](std::function<void()> action) {
      if (!walker) walker = std::make_unique<TPathmere>();
      walker->SetFilter(L"a;b;x"); // a rule that asks for attributes
      walker->SetFolderIdList(List(Dir));
      fShell.ClearFaults();
      fShell.AddFault(Dir, {TKind::Slow, method, 2, 1, S_OK, std::move(action)});
    };
    at_second_call([&] { walker->SetFolderIdList(other); });
    EXPECT_EQ(Walk(*walker), "a.");
    EXPECT_EQ(walker->GetDirectory(), LR"(C:\Other\)");
    EXPECT_EQ(Walk(*walker), "x.");
    at_second_call([&] { walker.reset(); });
    TPathmere* const gone = walker.get();
    ASSERT_TRUE(gone->Next());
    EXPECT_FALSE(gone->Next());
    EXPECT_EQ(walker, nullptr);
  }
}

TEST_F(PathmereFakes, SurvivesAFolderThatComesBackWhileItIsBound) {
  const ScopedFakeShell shell(Answers());
  fFiles.MakeFolder(LR"(C:\Other)");
  fFiles.MakeFile(LR"(C:\Other\x)");
  auto walker = std::make_unique<TPathmere>();
  for (const HRESULT bound : {S_OK, E_ACCESSDENIED}) {
    fBind = bound;
    fAtBind = [&] {
      fBind = S_OK;
      walker->SetFolderIdList(List(LR"(C:\Other)"));
      EXPECT_TRUE(walker->Next());
    };
    walker->SetFolderIdList(List(Dir));
    EXPECT_EQ(walker->GetDirectory(), LR"(C:\Other\)");
    EXPECT_EQ(walker->GetObjectName(), L"x") << "what it set stays, with its walk";
    EXPECT_FALSE(walker->Next());
  }
  fAtBind = [&] { walker.reset(); };
  walker->SetFolderIdList(List(Dir));
  EXPECT_EQ(walker, nullptr);
}

std::wstring gUnlocked;

TEST_F(PathmereFakes, OffersToUnlockALockedDrive) {
  auto answers = Answers();
  answers.path = [this](PCIDLIST_ABSOLUTE list) {
    const std::wstring path = PathOf(list);
    return path == L"C:" ? L"C:\\" : path;
  };
  ScopedFakeShell shell(answers);
  shell->GetDiskFreeSpaceExW = [](LPCWSTR, PULARGE_INTEGER, PULARGE_INTEGER, PULARGE_INTEGER) -> BOOL {
    SetLastError(0x80310000);
    return FALSE;
  };
  gUnlocked.clear();
  SetUnlockVolumeHook([](IItemIdList* volume) { gUnlocked += volume->Path(); });
  Application().SetHandle(reinterpret_cast<HWND>(std::intptr_t{0x100}));
  TPathmere walker;
  walker.SetFolderIdList(List(Dir));
  Walk(walker);
  EXPECT_EQ(gUnlocked, L"") << "not a drive";
  walker.SetFolderIdList(List(L"C:"));
  EXPECT_EQ(Walk(walker), "D.");
  EXPECT_EQ(gUnlocked, L"C:\\");
  walker.SetShowErrorMessages(false);
  Walk(walker);
  EXPECT_EQ(gUnlocked, L"C:\\") << "nobody is to be asked";
  walker.SetShowErrorMessages(true);
  SetUnlockVolumeHook(nullptr);
  EXPECT_EQ(Walk(walker), "D.");
  Application().SetHandle(nullptr);
}

} // namespace
} // namespace kiv
