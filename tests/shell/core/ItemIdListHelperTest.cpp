#include <core/ItemIdListHelper.h>

#include <core/ItemIdList.h>
#include <core/ItemIdListFunctions.h>
#include <core/ShellLinkHelper.h>
#include <core/SpecialFolders.h>
#include <doubles/FakeShellItem.h>
#include <doubles/Gate.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/MainThread.h>

#include <gtest/gtest.h>

#include <thread>

namespace kiv {
namespace {

using test::FakeShellItem;
using test::ScopedFakeShell;
using test::ScopedTempFolder;
using test::TShellItemScript;

class ItemIdListHelper : public testing::Test {
protected:
  static void SetUpTestSuite() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    MainThread::Attach();
  }
  void TearDown() override {
    auto* const pool = static_cast<TWorkerThreadPoolRefCounted*>(TItemIdListHelperThreadPool::Instance().Get());
    while (pool->GetWorkItemsActive()) std::this_thread::yield(); // it uses what ends here
  }
  static ComPtr<IItemIdList> List(int depth = 3) {
    return TKivItemIdList::Create(TUniqueItemIdList(test::MakeUpList(depth)));
  }
  static ScopedFakeShell::TAnswers Answers(const TShellItemScript& script, const std::wstring& path = {}) {
    return {.item = [script](PCIDLIST_ABSOLUTE) { return Make<FakeShellItem>(script); },
            .path = [path](PCIDLIST_ABSOLUTE) { return path; }};
  }
};

TEST_F(ItemIdListHelper, WaitsNoLongerThanItMay) {
  test::TGate gate;
  const ScopedFakeShell shell(Answers({.update = [&] { return gate.Pass(), E_FAIL; }}));
  const auto list = List();
  bool finished = true;
  EXPECT_FALSE(TItemIdListHelper::TryReload(list.Get(), 1, finished));
  EXPECT_FALSE(finished);
  const auto other = List();
  EXPECT_TRUE(TItemIdListHelper::TryIsInvalid(other.Get(), 1));
  gate.AwaitArrivals(2); // the questions run on
  gate.Open();
  EXPECT_FALSE(TItemIdListHelper::TryReload(list.Get(), 100'000, finished));
  EXPECT_TRUE(finished);
}

TEST_F(ItemIdListHelper, AnswersInTime) {
  ScopedTempFolder temp;
  const std::wstring path = temp.MakeFile(L"file");
  const auto file = TKivItemIdList::Create(path);
  constexpr std::uint64_t ample = 100'000;
  bool finished = false;
  EXPECT_TRUE(TItemIdListHelper::TryReload(file.Get(), ample, finished) && finished);
  EXPECT_FALSE(TItemIdListHelper::TryIsInvalid(file.Get(), ample));
  EXPECT_EQ(TItemIdListHelper::TryGetSpecialFolder(file.Get(), ample, finished), SF_FILESYSTEMFOLDER);
  const auto folder = TKivItemIdList::Create(temp.Path());
  temp.MakeFolder(L"sub");
  for (const bool file_system_only : {false, true}) {
    EXPECT_TRUE(TItemIdListHelper::TryHasSubFolders(folder.Get(), ample, file_system_only, finished) && finished);
    EXPECT_FALSE(TItemIdListHelper::TryHasSubFolders(file.Get(), ample, file_system_only, finished));
  }
  DeleteFileW(path.c_str());
  EXPECT_TRUE(TItemIdListHelper::TryIsInvalid(file.Get(), ample));
  for (IItemIdList* const none : {EmptyIdList().Get(), static_cast<IItemIdList*>(nullptr)}) {
    EXPECT_TRUE(TItemIdListHelper::TryIsInvalid(none, ample));
    EXPECT_FALSE(TItemIdListHelper::TryReload(none, ample, finished));
    EXPECT_EQ(TItemIdListHelper::TryGetSpecialFolder(none, ample, finished), SF_INVALID);
    EXPECT_TRUE(finished);
  }
  const auto token = TCustomCancellationToken::Construct();
  token->Cancel();
  EXPECT_TRUE(TItemIdListHelper::TryIsInvalid(folder.Get(), ample, token)) << "nobody waits for what is cancelled";

  const auto archive = TKivItemIdList::Create(LR"(C:\none\a.Zip)");
  EXPECT_TRUE(TItemIdListHelper::TryHasSubFolders(archive.Get(), 0, false, finished) && finished);
  EXPECT_FALSE(TItemIdListHelper::TryHasSubFolders(archive.Get(), 0, true, finished));
  EXPECT_TRUE(finished);
  EXPECT_FALSE(archive->IsResolved()) << "its name is enough";
}

TEST_F(ItemIdListHelper, TellsKindsOfObjects) {
  const struct {
    SFGAOF attributes;
    const wchar_t* path;
    bool hasSubFolders, hasFileSystemSubFolders, isFileAndFolder;
  } cases[] = {
      {SFGAO_HASSUBFOLDER | SFGAO_FILESYSTEM | SFGAO_FOLDER, LR"(C:\d)", true, true, false},
      {SFGAO_HASSUBFOLDER | SFGAO_FILESYSANCESTOR | SFGAO_FOLDER, L"", true, true, false},
      {SFGAO_HASSUBFOLDER | SFGAO_FOLDER, L"", true, false, false},
      {SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR | SFGAO_FOLDER, LR"(C:\d)", false, false, false},
      {SFGAO_FOLDER | SFGAO_STREAM, LR"(C:\a.zip)", true, false, true},
      {SFGAO_STREAM, LR"(C:\a.txt)", false, false, false},
  };
  for (const auto& c : cases) {
    const ScopedFakeShell shell(Answers({.attributes = c.attributes}, c.path));
    const auto list = List();
    EXPECT_EQ(TItemIdListHelper::HasSubFolders(list.Get(), false), c.hasSubFolders) << &c - cases;
    EXPECT_EQ(TItemIdListHelper::HasSubFolders(list.Get(), true), c.hasFileSystemSubFolders) << &c - cases;
    EXPECT_EQ(TItemIdListHelper::IsFileAndFolder(list.Get()), c.isFileAndFolder) << &c - cases;
  }
  const auto windows = TKivItemIdList::CreateForSpecialFolder(SF_WINDOWS, true);
  EXPECT_TRUE(TItemIdListHelper::SupportsIShellFolder2(windows.Get()));
  EXPECT_FALSE(TItemIdListHelper::SupportsIShellFolder2(EmptyIdList().Get()));
  EXPECT_TRUE(TItemIdListHelper::IsSimple(TKivItemIdList::CreateSimpleIdList(LR"(C:\none)").Get()));
  EXPECT_FALSE(TItemIdListHelper::IsSimple(windows.Get()) || TItemIdListHelper::IsSimple(nullptr));
  EXPECT_TRUE(TItemIdListHelper::IsNullOrInvalid(nullptr) && TItemIdListHelper::IsNullOrInvalid(EmptyIdList().Get()));
  EXPECT_FALSE(TItemIdListHelper::IsNullOrInvalid(windows.Get()));
}

TEST_F(ItemIdListHelper, ReachesNetworkPlaces) {
  static UINT type;
  static DWORD remembered;
  static DWORD connected;
  static std::wstring made;
  ScopedShellApi api;
  api->GetDriveTypeW = [](LPCWSTR) { return type; };
  api->WNetGetConnectionW = [](LPCWSTR, LPWSTR name, LPDWORD length) -> DWORD {
    wcscpy_s(name, *length, LR"(\\srv\share)");
    return remembered;
  };
  api->WNetAddConnection2W = [](LPNETRESOURCEW resource, LPCWSTR, LPCWSTR, DWORD) -> DWORD {
    made = std::wstring(resource->lpLocalName) + L"=" + resource->lpRemoteName;
    return connected;
  };
  const struct {
    const wchar_t* path;
    UINT driveType;
    DWORD remembers, connects;
    bool isNetwork, isReachable;
    const wchar_t* connection;
  } cases[] = {
      {LR"(C:\x)", DRIVE_FIXED, 0, 0, false, true, L""},
      {LR"(\\?\C:\no such file)", DRIVE_FIXED, 0, 0, false, false, L""},
      {LR"(N:\x)", DRIVE_REMOTE, NO_ERROR, ERROR_BAD_NETPATH, true, true, L""},
      {LR"(N:\x)", DRIVE_NO_ROOT_DIR, ERROR_CONNECTION_UNAVAIL, NO_ERROR, true, true, LR"(N:=\\srv\share)"},
      {LR"(N:\x)", DRIVE_NO_ROOT_DIR, ERROR_CONNECTION_UNAVAIL, ERROR_BAD_NETPATH, true, false, LR"(N:=\\srv\share)"},
      {LR"(N:\x)", DRIVE_NO_ROOT_DIR, ERROR_NOT_CONNECTED, NO_ERROR, true, false, L""},
      {LR"(\\no-such-server.invalid\x)", DRIVE_NO_ROOT_DIR, 0, 0, true, false, L""},
      {L"", DRIVE_NO_ROOT_DIR, 0, 0, false, true, L""},
  };
  for (const auto& c : cases) {
    type = c.driveType;
    remembered = c.remembers;
    connected = c.connects;
    made.clear();
    const ComPtr<IItemIdList> list = TKivItemIdList::CreateInvalidWithPath(c.path);
    EXPECT_EQ(TItemIdListHelper::IsNetworkPath(list.Get()), c.isNetwork) << &c - cases;
    EXPECT_EQ(TItemIdListHelper::IsUNCPath(list.Get()), c.path[0] == L'\\') << &c - cases;
    EXPECT_EQ(TItemIdListHelper::IsNetworkPathReachable(list.Get(), 100'000), c.isReachable) << &c - cases;
    EXPECT_EQ(made, c.connection) << &c - cases;
  }
}

TEST_F(ItemIdListHelper, FindsFoldersOfCloudProviders) {
  static std::wstring asked;
  const std::wstring cloud = L"::{018D5C66-4533-4307-9B53-224DE2ED1FE6}";
  const auto is_cloud = [&](const std::wstring& name, const std::wstring& path) {
    asked.clear();
    constexpr int depth = 20; // no other list is as long
    auto answers = Answers({.names = {{SIGDN_PARENTRELATIVEPARSING, name}}});
    answers.path = [=, size = ILGetSize(List(depth)->WindowsPointer())](PCIDLIST_ABSOLUTE list) {
      return ILGetSize(list) == size ? path : std::wstring();
    };
    const ScopedFakeShell shell(answers);
    return TItemIdListHelper::IsSynchronizedCloudPath(List(depth).Get());
  };
  EXPECT_FALSE(is_cloud(cloud, LR"(Q:\cloud)")) << "nobody says that it is shown";
  SetShellShowNamespaceSource([](std::wstring_view id) {
    asked = id;
    return id.starts_with(L"{018");
  });
  EXPECT_TRUE(is_cloud(cloud, LR"(Q:\cloud)"));
  EXPECT_EQ(asked, cloud.substr(2));
  EXPECT_FALSE(is_cloud(L"::{11111111-4533-4307-9B53-224DE2ED1FE6}", LR"(Q:\cloud)"));
  EXPECT_FALSE(is_cloud(L"cloud", LR"(Q:\cloud)"));
  EXPECT_TRUE(TItemIdListHelper::GetSynchronizedCloudPaths().empty());
  SetShellShowNamespaceSource(nullptr);
}

TEST_F(ItemIdListHelper, MakesLinks) {
  ScopedTempFolder temp;
  const auto target = TKivItemIdList::Create(temp.MakeFile(L"target.txt"));
  const auto folder = TKivItemIdList::Create(temp.MakeFolder(L"links"));
  const auto drives = TKivItemIdList::CreateForSpecialFolder(SF_DRIVES, true);
  const auto link = TShellLinkHelper::AddLinkTo(target.Get(), folder.Get(), L"to \x4E2D it");
  ASSERT_TRUE(link);
  EXPECT_EQ(link->Path(), temp.PathOf(L"links\\to \x4E2D it.lnk"));
  const auto resolved = TShellLinkHelper::Resolve(link.Get());
  ASSERT_TRUE(resolved);
  EXPECT_TRUE(resolved->Equals(target.Get(), ilcDisplay));
  EXPECT_TRUE(link->LinkTarget()->Equals(target.Get(), ilcDisplay));
  const auto to_drives = TShellLinkHelper::AddLinkTo(drives.Get(), folder.Get(), L"drives.LNK");
  ASSERT_TRUE(to_drives) << "what has no path can be linked to";
  EXPECT_EQ(to_drives->Name(), L"drives.LNK");
  EXPECT_TRUE(to_drives->LinkTarget()->Equals(drives.Get(), ilcDisplay));

  for (const wchar_t* name : {L"to \x4E2D it", L"", L"a/b", L"..\\out", L"a:b", L"nul", L"a*"}) {
    EXPECT_FALSE(TShellLinkHelper::AddLinkTo(drives.Get(), folder.Get(), name)) << testing::PrintToString(name);
  }
  EXPECT_TRUE(TShellLinkHelper::Resolve(link.Get())->Equals(target.Get(), ilcDisplay)) << "the first one stays";
  EXPECT_FALSE(TShellLinkHelper::AddLinkTo(target.Get(), drives.Get(), L"x"));
  EXPECT_FALSE(TShellLinkHelper::AddLinkTo(EmptyIdList().Get(), folder.Get(), L"x"));
  EXPECT_FALSE(TShellLinkHelper::AddLinkTo(target.Get(), TKivItemIdList::Create(temp.PathOf(L"none")).Get(), L"x"));
  EXPECT_FALSE(TShellLinkHelper::AddLinkTo(nullptr, nullptr, L"x"));

  EXPECT_EQ(GetLinkTarget(link->Path()), target->Path());
  const std::wstring broken = temp.MakeFile(L"broken.lnk", 100);
  for (const std::wstring& none : {broken, target->Path(), temp.PathOf(L"none.lnk"), std::wstring()}) {
    EXPECT_FALSE(TShellLinkHelper::Resolve(none)) << testing::PrintToString(none);
    EXPECT_EQ(GetLinkTarget(none), L"");
    EXPECT_TRUE(TKivItemIdList::Create(none)->LinkTarget());
  }
}

} // namespace
} // namespace kiv
