// Item lists on shells that answer as no real one can be made to.
#include <core/ItemIdList.h>

#include <core/PathmereError.h>
#include <core/SpecialFolders.h>
#include <doubles/FakeShellFolder.h>
#include <doubles/FakeShellItem.h>
#include <doubles/SimulatedFileSystem.h>
#include <platform/MainThread.h>

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

namespace kiv {
namespace {

using test::FakeShellItem;
using test::MakeUpList;
using test::ScopedFakeShell;
using test::TShellItemScript;

constexpr HRESULT NotFound = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);

class ItemIdListFakes : public testing::Test {
protected:
  static void SetUpTestSuite() { MainThread::Attach(); }
  // A list whose shell item follows a script.
  static ComPtr<TKivItemIdList> Scripted(int items = 3) {
    return TKivItemIdList::Create(TUniqueItemIdList(MakeUpList(items)));
  }
  static ScopedFakeShell::TAnswers ItemAnswers(const TShellItemScript& script) {
    return {.item = [script](PCIDLIST_ABSOLUTE) { return Make<FakeShellItem>(script); }};
  }
};

TEST_F(ItemIdListFakes, AsksTheShellOnceAndOnlyWhenItMust) {
  const ScopedFakeShell shell({.item = [](PCIDLIST_ABSOLUTE) { return Make<FakeShellItem>(TShellItemScript{}); },
                               .parse = [](const std::wstring&) { return MakeUpList(3); }});
  const auto list = TKivItemIdList::Create(LR"(C:\folder\file)");
  EXPECT_EQ(list->Path(), LR"(C:\folder\file)");
  EXPECT_FALSE(list->IsSpecialFolder(SF_DESKTOP));
  EXPECT_FALSE(list->IsResolved());
  EXPECT_EQ(shell.Calls(), 0);

  EXPECT_EQ(list->Depth(), 3);
  EXPECT_EQ(list->SpecialFolder(), SF_FILESYSTEMFOLDER);
  const int calls = shell.Calls();
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(list->Path(), LR"(C:\folder\file)");
    EXPECT_EQ(list->Depth(), 3);
    EXPECT_EQ(list->SpecialFolder(), SF_FILESYSTEMFOLDER);
    EXPECT_FALSE(list->IsInvalid() || list->IsSpecialFolder(SF_DESKTOP));
  }
  EXPECT_EQ(shell.Calls(), calls);
  // On the main thread one shell item serves all.
  EXPECT_EQ(list->ShellItem(), list->ShellItem());
  EXPECT_EQ(shell.Calls(), calls + 1);

  wchar_t windows[MAX_PATH];
  GetWindowsDirectoryW(windows, MAX_PATH);
  EXPECT_TRUE(TKivItemIdList::Create(windows)->HasAttributes(SFGAO_FILESYSTEM));
  EXPECT_EQ(shell.Calls(), calls + 1) << "the disk knows that";
}

TEST_F(ItemIdListFakes, TakesThePathThatTheListHas) {
  const TShellItemScript server{.names = {{SIGDN_DESKTOPABSOLUTEEDITING, LR"(\\server)"}}};
  const TShellItemScript other{.names = {{SIGDN_DESKTOPABSOLUTEEDITING, L"Network\\server"}}};
  int asked = 0;
  std::wstring path = LR"(C:\x)";
  ScopedFakeShell::TAnswers answers{.path = [&](PCIDLIST_ABSOLUTE) { return ++asked, path; }};
  {
    const ScopedFakeShell shell(answers);
    const auto list = Scripted();
    EXPECT_EQ(list->Path(), path);
    EXPECT_EQ(list->Path(), path);
    EXPECT_EQ(asked, 1) << "a real path is kept";
    const auto by_class = TKivItemIdList::Create(Scripted()->WindowsPointer(), iloCopyMemory);
    path = LR"(C:\x::y)";
    EXPECT_EQ(by_class->Path(), path);
    path = L"file:///C:/x";
    EXPECT_EQ(by_class->Path(), path);
    path = LR"(file:\C:\x)";
    EXPECT_EQ(by_class->Path(), path);
    EXPECT_EQ(asked, 4) << "what isn't a real path isn't trusted";
    path = L"::{679F85CB-0220-4080-B29B-5540CC05AAB6}";
    EXPECT_EQ(by_class->Path(), L"") << "a class identifier is no path";
    path = LR"(C:\late)";
    EXPECT_EQ(by_class->Path(), L"") << "that there is none is kept, too";
  }
  for (const auto& [script, expected] : {std::pair{server, LR"(\\server)"}, {other, L""}}) {
    const ScopedFakeShell shell(ItemAnswers(script));
    EXPECT_EQ(Scripted(2)->Path(), expected);
    EXPECT_EQ(Scripted(1)->Path(), L"") << "nothing one level deep is a server";
  }
  const TShellItemScript crash{.crashes = true};
  const ScopedFakeShell shell(ItemAnswers(crash));
  EXPECT_EQ(Scripted()->Path(), L"");
}

TEST_F(ItemIdListFakes, NamesThings) {
  const struct {
    SIGDN kind;
    std::wstring given;
    TItemIdListDisplayNameFormat format;
    std::wstring expected;
  } cases[] = {
      {SIGDN_NORMALDISPLAY, L"plain", dnfNormal, L"plain"},
      {SIGDN_PARENTRELATIVE, L"in", dnfInFolder, L"in"},
      {SIGDN_DESKTOPABSOLUTEEDITING, L"edit", dnfPath, L"edit"},
      {SIGDN_FILESYSPATH, LR"(C:\x)", dnfPhysicalPath, LR"(C:\x)"},
      {SIGDN_PARENTRELATIVEFORADDRESSBAR, L"bar", dnfRelativeForAddressBar, L"bar"},
      {SIGDN_PARENTRELATIVEPARSING, L"rp", dnfRelativeParsing, L"rp"},
      {SIGDN_DESKTOPABSOLUTEPARSING, L"ap", dnfAbsoluteParsing, L"ap"},
      {SIGDN_DESKTOPABSOLUTEEDITING, LR"(edit\)", dnfPreferPhysical, L"edit"},
      {SIGDN_NORMALDISPLAY, L"ftp://host/", dnfNormal, L"ftp://host"},
      {SIGDN_NORMALDISPLAY, L"ftp://host/a/", dnfNormal, L"ftp://host/a/"},
      {SIGDN_NORMALDISPLAY, L"//host", dnfNormal, L"//host"},
      // Nothing came back: the path, or the name.
      {SIGDN_FILESYSPATH, LR"(C:\x\y.txt)", dnfNormal, L"y.txt"},
      {SIGDN_FILESYSPATH, LR"(C:\)", dnfInFolder, LR"(C:\)"},
      {SIGDN_FILESYSPATH, LR"(C:\x\y.txt)", dnfPath, L""},
  };
  for (const auto& c : cases) {
    const ScopedFakeShell shell(ItemAnswers({.names = {{c.kind, c.given}}}));
    EXPECT_EQ(Scripted()->DisplayName(c.format), c.expected) << testing::PrintToString(c.given);
  }
  const ScopedFakeShell shell(
      ItemAnswers({.names = {{SIGDN_FILESYSPATH, L"{1234}"}, {SIGDN_DESKTOPABSOLUTEEDITING, L"the path"}}}));
  EXPECT_EQ(Scripted()->DisplayName(dnfPhysicalPath), L"the path");
}

TEST_F(ItemIdListFakes, NamesEachLevelAsTheUserKnowsIt) {
  const std::pair<std::wstring, std::wstring> levels[] = {
      // its parsing name, its name in the folder
      {L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}", L"This PC"},
      {LR"(\\?\USB#VID_1234&PID_5678)", L"Phone"},
      {L"DCIM", L"Pictures"},
  };
  const ScopedFakeShell shell({.item = [&](PCIDLIST_ABSOLUTE list) -> ComPtr<IShellItem> {
    int depth = 0;
    for (auto item = list; item->mkid.cb != 0; item = ILGetNext(item)) ++depth;
    const auto& [parsing, shown] = levels[depth - 1];
    return Make<FakeShellItem>(
        TShellItemScript{.names = {{SIGDN_PARENTRELATIVEPARSING, parsing}, {SIGDN_PARENTRELATIVE, shown}}});
  }});
  EXPECT_EQ(Scripted()->DisplayName(dnfForExplorer), levels[0].first + L"\\" + levels[1].first + L"\\Pictures");
}

TEST_F(ItemIdListFakes, SurvivesAShellThatFaults) {
  const ScopedFakeShell shell(ItemAnswers({.crashes = true}));
  const auto list = Scripted();
  try {
    list->DisplayName(dnfNormal);
    FAIL() << "a fault isn't a name";
  } catch (const EPathmereError& e) {
    EXPECT_TRUE(e.Message().ends_with(L" Internal data: FPath: -, fSpecialFolder: SF_INVALID, Valid"));
  }
  EXPECT_EQ(list->Name(), L"");
  EXPECT_FALSE(list->Reload());
  EXPECT_EQ(list->Depth(), 3);
  EXPECT_TRUE(list->GetInfo(TItemIdListInfoLevel::Verbose).find(L"Collecting information caused an error: ") !=
              std::wstring::npos);
  EXPECT_EQ(list.MaybeAs<IShellFolder>(), nullptr);
}

TEST_F(ItemIdListFakes, ReloadsByTheAnswerOfTheItem) {
  const auto answers = [](HRESULT hr) { return [hr] { return hr; }; };
  const struct {
    const char* what;
    TShellItemScript script;
    int items; // of the list that the item gives afterwards; 0 for none
    bool reloaded;
    int depth;
  } cases[] = {
      {"nothing new", {.update = answers(S_OK)}, 3, true, 3},
      {"another list", {.update = answers(S_OK)}, 4, true, 4},
      {"no list", {.update = answers(S_OK)}, 0, false, 3},
      {"gone", {.update = answers(NotFound)}, 4, false, 3},
      {"can't be updated", {.update = answers(E_NOINTERFACE)}, 4, true, 3},
      {"has no update", {.update = answers(S_OK), .offersItem2 = false}, 4, true, 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    auto script = ItemAnswers(c.script);
    script.list = [&](IUnknown*) { return c.items == 0 ? nullptr : MakeUpList(c.items); };
    const ScopedFakeShell shell(script);
    const auto list = Scripted();
    const auto borrowed = list->WindowsPointer();
    EXPECT_EQ(list->Reload(), c.reloaded);
    EXPECT_EQ(list->Depth(), c.depth);
    EXPECT_EQ(list->WindowsPointer() == borrowed, c.depth == 3);
    EXPECT_EQ(ILGetSize(borrowed), 3 * 6 + 2U) << "what was borrowed is still there";
  }
  // Two shells without updates: one that still has the object, one whose disk has lost it.
  for (const bool there : {true, false}) {
    wchar_t windows[MAX_PATH];
    GetWindowsDirectoryW(windows, MAX_PATH);
    const std::wstring path = there ? windows : std::wstring(windows) + LR"(\gone)";
    auto answer = ItemAnswers({.names = {{SIGDN_FILESYSPATH, path}, {SIGDN_DESKTOPABSOLUTEPARSING, path}}});
    answer.parse = [](const std::wstring&) { return MakeUpList(5); };
    const ScopedFakeShell shell(answer);
    const auto list = Scripted();
    EXPECT_EQ(list->Reload(), there);
    EXPECT_EQ(list->Depth(), there ? 5 : 3);
  }
}

TEST_F(ItemIdListFakes, ResolvesWhatIsTooLongThroughItsParents) {
  test::SimulatedFileSystem fs;
  fs.AddDrive(L'C');
  std::wstring path = L"C:";
  for (int level = 0; level < 12; ++level) {
    path += L"\\" + std::wstring(30, static_cast<wchar_t>(L'a' + level));
    fs.MakeFolder(path);
  }
  test::FakeShellNamespace folders(fs);
  std::vector<std::wstring> parsed;
  const ScopedFakeShell shell({
      .item = [&](PCIDLIST_ABSOLUTE list) -> ComPtr<IShellItem> {
        const auto node = test::FakeShellNamespace::MaybeNodeOf(list);
        const auto folder = folders.Folder(*fs.MaybePath(*node));
        return Make<FakeShellItem>(TShellItemScript{.bind = [folder](IBindCtx*, REFGUID, REFIID iid, void** object) {
          return folder->QueryInterface(iid, object);
        }});
      },
      .parse = [&](const std::wstring& text) -> PIDLIST_ABSOLUTE {
        parsed.push_back(text);
        if (text.size() > 259) return nullptr;
        return folders.ItemIdList(text).Release();
      },
  });
  ASSERT_GT(path.size(), 300U);
  const auto list = TKivItemIdList::Create(path);
  EXPECT_EQ(list->Depth(), 13);
  const TUniqueItemIdList whole = folders.ItemIdList(path);
  ASSERT_EQ(ILGetSize(list->WindowsPointer()), ILGetSize(whole.Get()));
  EXPECT_EQ(std::memcmp(list->WindowsPointer(), whole.Get(), ILGetSize(whole.Get())), 0);
  EXPECT_TRUE(TKivItemIdList::Create(path + LR"(\gone)")->IsInvalid());
  EXPECT_TRUE(TKivItemIdList::Create(LR"(C:\gone\)" + path.substr(3))->IsInvalid());
  EXPECT_TRUE(TKivItemIdList::Create(LR"(Q:\)" + std::wstring(300, L'x'))->IsInvalid());
  // A path of 15,000 levels ends soon.
  std::wstring deep = L"Q:";
  while (deep.size() < 30'000) deep += LR"(\x)";
  parsed.clear();
  EXPECT_TRUE(TKivItemIdList::Create(deep)->IsInvalid());
  EXPECT_LT(parsed.size(), 40U);
  // The long form goes to the shell as it is, then in plain form.
  parsed.clear();
  EXPECT_EQ(TKivItemIdList::Create(LR"(\\?\C:\)" + std::wstring(30, L'a'))->Depth(), 2);
  ASSERT_GE(parsed.size(), 2U);
  EXPECT_EQ(parsed.front(), LR"(\\?\C:\)" + std::wstring(30, L'a'));
  EXPECT_EQ(parsed.back(), LR"(C:\)" + std::wstring(30, L'a'));
  EXPECT_EQ(TKivItemIdList::Create(parsed.front(), nullptr, GetDesktopWindow())->Depth(), 2);
}

TEST_F(ItemIdListFakes, ComparesCanonicallyInsideQuickAccess) {
  for (const bool in_quick_access : {true, false}) {
    std::vector<SICHINTF> hints;
    const TShellItemScript script{.compare = [&](IShellItem*, SICHINTF hint, int* order) {
      hints.push_back(hint);
      *order = in_quick_access && hints.size() < 3 ? 0 : 1;
      return S_OK;
    }};
    auto answers = ItemAnswers(script);
    answers.parse = [](const std::wstring&) { return MakeUpList(1); };
    const ScopedFakeShell shell(answers);
    EXPECT_FALSE(Scripted(2)->Equals(Scripted(2).Get(), ilcDisplay));
    // First the parents are compared with the folder itself, then the lists.
    const SICHINTF expected = in_quick_access ? SICHINTF{SICHINT_CANONICAL} : SICHINTF{0};
    EXPECT_EQ(hints.size(), in_quick_access ? 3U : 2U);
    EXPECT_EQ(hints.back(), expected);
    hints.clear();
    EXPECT_FALSE(Scripted(3)->Equals(Scripted(2).Get(), ilcExact)) << "depths differ";
    EXPECT_TRUE(hints.empty());
    EXPECT_EQ(Scripted(3)->CompareTo(Scripted(3).Get(), ilcExact), in_quick_access ? 0 : 1);
    EXPECT_EQ(hints, std::vector<SICHINTF>{SICHINT_CANONICAL});
  }
  // Without items the desktop compares. The desktop's own path counts for nothing.
  const ScopedFakeShell shell({.parse = [](const std::wstring&) { return MakeUpList(0); },
                               .path = [](PCIDLIST_ABSOLUTE) { return std::wstring(LR"(C:\Desktop)"); }});
  EXPECT_TRUE(Scripted(3)->Equals(Scripted(2).Get(), ilcDisplay)) << "equal paths are enough";
  const auto desktop = TKivItemIdList::CreateForSpecialFolder(SF_DESKTOP, true);
  EXPECT_FALSE(desktop->Equals(Scripted(2).Get(), ilcDisplay));
  EXPECT_FALSE(Scripted(2)->Equals(desktop.Get(), ilcDisplay));
  EXPECT_FALSE(TKivItemIdList::Create(L"shell:desktop")->Equals(Scripted(2).Get(), ilcDisplay)) << "not resolved yet";
}

TEST_F(ItemIdListFakes, LeadsOutOfQuickAccessByPath) {
  // Real lists, one below the other: the platform tells by its own means.
  const auto drives = TKivItemIdList::CreateForSpecialFolder(SF_DRIVES, false);
  const auto drive = TKivItemIdList::Create(LR"(C:\)");
  ASSERT_TRUE(drives->IsParentOf(drive.Get(), false, ilcExact));
  std::wstring path = LR"(C:\pinned)";
  const ScopedFakeShell shell({.parse = [&](const std::wstring&) { return ILClone(drives->WindowsPointer()); },
                               .path = [&](PCIDLIST_ABSOLUTE) { return path; }});
  const auto inside = [&] { return TKivItemIdList::Create(drive->WindowsPointer(), iloForeignOwned); };
  const auto pinned = inside();
  const auto target = pinned->LinkTarget();
  EXPECT_NE(target, pinned);
  EXPECT_EQ(target->DisplayPath(), path);
  path.clear();
  EXPECT_TRUE(inside()->LinkTarget()->IsInvalid()) << "no path isn't the folder of the drives";
}

TEST_F(ItemIdListFakes, TellsSlowPlaces) {
  ScopedFakeShell shell({.parse = [](const std::wstring&) { return MakeUpList(2); }});
  shell->GetDriveTypeW = [](LPCWSTR path) -> UINT { return *path == L'Z' ? DRIVE_REMOTE : DRIVE_FIXED; };
  EXPECT_TRUE(TKivItemIdList::Create(LR"(Z:\)")->IsSlow());
  EXPECT_FALSE(TKivItemIdList::Create(LR"(C:\)")->IsSlow());
  EXPECT_FALSE(TKivItemIdList::Create(LR"(Z:\folder)")->IsSlow()) << "only the drive itself";
  EXPECT_FALSE(TKivItemIdList::CreateInvalidWithPath(LR"(Z:\)")->IsSlow());
}

TEST_F(ItemIdListFakes, TwoRoadsTakeTheFirstClassForGranted) {
  ScopedFakeShell::TAnswers answers;
  answers.list = [](IUnknown*) { return MakeUpList(3); };
  const ScopedFakeShell shell(answers);
  const auto item = Make<FakeShellItem>(TShellItemScript{});
  const auto by_item = TKivItemIdList::Create(item.Get());
  EXPECT_TRUE(by_item->IsResolved());
  EXPECT_EQ(by_item->SpecialFolder(), SF_FILESYSTEMFOLDER);
  EXPECT_EQ(by_item->Depth(), 3);
  const auto failed = TKivItemIdList::Create(static_cast<IShellFolder*>(nullptr), Scripted(1)->WindowsPointer());
  EXPECT_TRUE(failed->IsInvalid());
  EXPECT_EQ(failed->SpecialFolder(), SF_FILESYSTEMFOLDER);
}

TEST_F(ItemIdListFakes, WhoComesBackWhileAListIsResolvedGetsNothing) {
  ComPtr<TKivItemIdList> list;
  ScopedFakeShell::TAnswers answers;
  answers.parse = [&](const std::wstring&) {
    EXPECT_TRUE(list->IsInvalid());
    EXPECT_FALSE(list->IsResolved());
    EXPECT_EQ(list->Depth(), 0);
    EXPECT_EQ(list->Path(), L"no real path");
    return MakeUpList(2);
  };
  const ScopedFakeShell shell(answers);
  list = TKivItemIdList::Create(L"no real path");
  EXPECT_EQ(list->Depth(), 2);
  EXPECT_FALSE(list->IsInvalid());
}

// Its own thread's last word on a shell item.
class TMarkedItem final : public TInterfacedObject<IShellItem> {
public:
  explicit TMarkedItem(std::thread::id& pEndedOn) : fEndedOn(pEndedOn) {}
  ~TMarkedItem() override { fEndedOn = std::this_thread::get_id(); }
  HRESULT STDMETHODCALLTYPE BindToHandler(IBindCtx*, REFGUID, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetParent(IShellItem**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetDisplayName(SIGDN, LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetAttributes(SFGAOF, SFGAOF*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Compare(IShellItem*, SICHINTF, int*) override { return E_NOTIMPL; }

private:
  std::thread::id& fEndedOn;
};

TEST_F(ItemIdListFakes, TheMainThreadsItemEndsThere) {
  std::thread::id ended_on;
  std::atomic<int> made{0};
  const ScopedFakeShell shell({.item = [&](PCIDLIST_ABSOLUTE) -> ComPtr<IShellItem> {
    ++made;
    static std::thread::id elsewhere;
    return Make<TMarkedItem>(MainThread::IsCurrent() ? ended_on : elsewhere);
  }});
  ComPtr<IItemIdList> list = Scripted();
  EXPECT_TRUE(list->ShellItem());
  std::jthread([&list, &made] {
    const ComPtr<IItemIdList> last = std::move(list);
    EXPECT_NE(last->ShellItem(), last->ShellItem()) << "each call gets an item of its own here";
    EXPECT_EQ(made, 3);
  }).join();
  EXPECT_EQ(ended_on, std::thread::id()) << "not on the thread that let the list go";
  MainThread::CheckSynchronize();
  EXPECT_EQ(ended_on, std::this_thread::get_id());

  // Nor may the item outlive the list that it was made for.
  ended_on = {};
  const auto replaced = Scripted();
  EXPECT_TRUE(replaced->ShellItem());
  std::jthread([&replaced] { replaced->SetPidl(MakeUpList(2)); }).join();
  EXPECT_EQ(ended_on, std::thread::id());
  const ComPtr<IShellItem> item = replaced->ShellItem();
  EXPECT_EQ(made, 5) << "the new list has an item of its own";
  MainThread::CheckSynchronize();
  EXPECT_EQ(ended_on, std::this_thread::get_id());
}

} // namespace
} // namespace kiv
