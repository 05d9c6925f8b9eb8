#include <core/FolderFunctions.h>
#include <core/ItemIdList.h>
#include <core/PathList.h>
#include <doubles/Gate.h>
#include <doubles/KnownTree.h>
#include <doubles/OutsideChanges.h>
#include <doubles/PumpUntil.h>
#include <doubles/ScopedTempFolder.h>
#include <framework/Application.h>
#include <notification/ChangeNotifier.h>
#include <notification/ChangeSourceKind.h>
#include <platform/Lifecycle.h>
#include <platform/ShellApi.h>
#include <platform/fill/DirectoryWatcher.h>

#include <dbt.h>
#include <shlobj.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kiv {
namespace {

using test::PumpUntil;

// What the platform was asked for by the test that runs.
struct TAsked {
  HWND window = nullptr;
  int sources = 0;
  LONG events = 0;
  UINT message = 0;
  BOOL recursive = FALSE;
  int registered = 0;
  int deregistered = 0;
  LONG shellEvent = 0;
  PIDLIST_ABSOLUTE lists[2] = {};
  int unlocked = 0;
} gAsked;

class NotifierSources : public testing::Test {
protected:
  void SetUp() override {
    OleInitialize(nullptr);
    Application();
    gAsked = {};
  }
  void TearDown() override {
    fNotifier.reset();
    SetChangeSourceKind(TChangeSourceKind::Automatic);
    Shutdown();
    OleUninitialize();
  }
  void Listen() {
    fNotifier->SetOnChange([this](auto*, TNotificationEvent event, const std::wstring& path1,
                                  const std::wstring& path2) {
      fTold += std::to_wstring(static_cast<int>(event)) + L":" + path1 + (path2.empty() ? L"" : L">" + path2) + L" ";
    });
  }
  static void PumpMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
  }
  bool HasTold(const std::wstring& text) const { return fTold.find(text + L" ") != std::wstring::npos; }

  test::ScopedTempFolder fFolder;
  std::wstring fTold;
  std::unique_ptr<TKivShellChangeNotifier> fNotifier = std::make_unique<TKivShellChangeNotifier>();
};

void FakeShell(ScopedShellApi& api) {
  api->SHChangeNotifyRegister = [](HWND window, int sources, LONG events, UINT message, int,
                                   const SHChangeNotifyEntry* entry) -> ULONG {
    gAsked.window = window;
    gAsked.sources = sources;
    gAsked.events = events;
    gAsked.message = message;
    gAsked.recursive = entry->fRecursive;
    return static_cast<ULONG>(++gAsked.registered);
  };
  api->SHChangeNotifyDeregister = [](ULONG) -> BOOL {
    ++gAsked.deregistered;
    return TRUE;
  };
  api->SHChangeNotification_Lock = [](HANDLE, DWORD, PIDLIST_ABSOLUTE** lists, LONG* event) -> HANDLE {
    *lists = gAsked.lists;
    *event = gAsked.shellEvent;
    return reinterpret_cast<HANDLE>(1);
  };
  api->SHChangeNotification_Unlock = [](HANDLE) -> BOOL {
    ++gAsked.unlocked;
    return TRUE;
  };
}

TEST_F(NotifierSources, RegisterWithTheShellAsItWants) {
  ScopedShellApi api;
  FakeShell(api);
  SetChangeSourceKind(TChangeSourceKind::Shell);
  Listen();
  fNotifier->AddItemIdList(TKivItemIdList::Create(fFolder.Path()).Get(), false, {neFileCreate, neNetShare});
  EXPECT_EQ(gAsked.sources, 0x8003);
  EXPECT_EQ(gAsked.events, 0x602);
  EXPECT_EQ(gAsked.message, 2011U);
  EXPECT_FALSE(gAsked.recursive);
  EXPECT_EQ(GetAncestor(gAsked.window, GA_PARENT), GetDesktopWindow()) << "messages about devices come to such windows";
  fNotifier->AddPath(fFolder.MakeFolder(L"sub"));
  EXPECT_EQ(gAsked.sources, 0x9003);
  EXPECT_TRUE(gAsked.recursive);

  const auto created = TKivItemIdList::Create(fFolder.MakeFile(L"x"));
  gAsked.lists[0] = const_cast<PIDLIST_ABSOLUTE>(created->WindowsPointer());
  const auto arrive = [](LONG event) {
    gAsked.shellEvent = event;
    SendMessageW(gAsked.window, 2011, 1, 2);
  };
  arrive(SHCNE_CREATE);
  EXPECT_EQ(fTold, L"3:" + fFolder.PathOf(L"x") + L" ");
  fTold.clear();
  fNotifier->SetEventFilter({neFileDelete, neDriveSpaceChange});
  arrive(SHCNE_CREATE);
  EXPECT_EQ(fTold, L"");
  // Drive space comes as a mask of drives; C: is the lowest of these.
  alignas(USHORT) unsigned char drives[] = {6, 0, 0x0C, 0, 0, 0, 0, 0};
  gAsked.lists[0] = reinterpret_cast<PIDLIST_ABSOLUTE>(drives);
  arrive(SHCNE_FREESPACE);
  EXPECT_EQ(fTold, L"");
  fNotifier->AddPath(L"C:\\");
  arrive(SHCNE_FREESPACE);
  EXPECT_EQ(fTold, L"9:C:\\ ");
  EXPECT_EQ(gAsked.unlocked, 4);
  fNotifier.reset();
  EXPECT_EQ(gAsked.deregistered, gAsked.registered);
}

TEST_F(NotifierSources, HearWhatThisProcessAnnounces) {
  SetChangeSourceKind(TChangeSourceKind::Shell);
  Listen();
  fNotifier->AddPath(fFolder.Path());
  const std::wstring file = fFolder.MakeFile(L"x");
  SHChangeNotify(SHCNE_CREATE, SHCNF_PATHW | SHCNF_FLUSH, file.c_str(), nullptr);
  PumpUntil([&] { return HasTold(L"3:" + file); });
}

TEST_F(NotifierSources, HearWhatOthersDo) {
  Listen();
  std::wstring lists;
  fNotifier->SetOnChangePIDL([&](auto*, TNotificationEvent event, IItemIdList* first, IItemIdList* second) {
    ASSERT_TRUE(second);
    EXPECT_EQ(second->IsInvalid(), event != neFileRename);
    lists += std::to_wstring(static_cast<int>(event)) + L":" + first->Path() + L" ";
  });
  const std::wstring file = fFolder.MakeFile(L"watched alone");
  fFolder.MakeFile(L"not watched");
  const std::wstring sub = fFolder.MakeFolder(L"sub");
  const std::wstring beside = fFolder.MakeFolder(L"beside the file");
  fNotifier->AddPath(file);
  fNotifier->AddPath(sub);
  std::thread([&] {
    const TUniqueHandle touched(CreateFileW(beside.c_str(), FILE_WRITE_ATTRIBUTES, 7, nullptr, OPEN_EXISTING,
                                            FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    const FILETIME time{0, 0x1D00000};
    EXPECT_TRUE(SetFileTime(touched.Get(), nullptr, nullptr, &time));
    EXPECT_TRUE(DeleteFileW(fFolder.PathOf(L"not watched").c_str()));
    EXPECT_TRUE(DeleteFileW(file.c_str()));
    EXPECT_TRUE(CreateEmptyFile(sub + L"\\a"));
    EXPECT_TRUE(MoveFileW((sub + L"\\a").c_str(), (sub + L"\\b").c_str()));
  }).join();
  PumpUntil([&] { return HasTold(L"5:" + sub + L"\\a>" + sub + L"\\b") && HasTold(L"4:" + file); });
  EXPECT_FALSE(HasTold(L"4:" + fFolder.PathOf(L"not watched")));
  EXPECT_FALSE(HasTold(L"15:" + beside));
  EXPECT_NE(lists.find(L"4:" + file + L" "), std::wstring::npos) << "though nothing could parse it any more";
}

TEST_F(NotifierSources, SurviveWhatHandlersDo) {
  SetChangeSourceKind(TChangeSourceKind::Directory);
  int told = 0;
  fNotifier->SetOnChange([&](auto&&...) {
    if (++told == 1) throw std::runtime_error("a handler's own");
    if (told == 2) return PumpUntil([&] { return !fNotifier; });
    fNotifier.reset();
  });
  fNotifier->AddPath(fFolder.Path());
  for (int i = 0; i < 50; ++i) fFolder.MakeFile(std::to_wstring(i));
  PumpUntil([&] { return !fNotifier; });
  EXPECT_EQ(told, 3) << "the last one inside of the one before";
}

TEST_F(NotifierSources, MayBeMadeAndEndedOnAnyThread) {
  bool ended = false;
  std::thread maker([&] {
    auto notifier = std::make_unique<TKivShellChangeNotifier>();
    notifier->Start();
    notifier.reset();
    MainThread::Queue([&] { ended = true; });
  });
  PumpUntil([&] { return ended; });
  maker.join();
}

// A shell that tells of other processes, as the probe finds out late.
TEST_F(NotifierSources, GoOverToAShellThatReports) {
  ScopedShellApi api;
  FakeShell(api);
  static test::TGate* probed = nullptr;
  test::TGate gate;
  probed = &gate;
  static decltype(TShellApi::SHChangeNotifyRegister) fake = nullptr;
  fake = api->SHChangeNotifyRegister;
  api->SHChangeNotifyRegister = [](HWND window, int sources, LONG events, UINT message, int count,
                                   const SHChangeNotifyEntry* entry) -> ULONG {
    if (message == 2011) return fake(window, sources, events, message, count, entry);
    probed->Pass();
    PostMessageW(window, message, 0, 0);
    return 1000;
  };
  Listen();
  const std::wstring ended = fFolder.MakeFolder(L"ended");
  const std::wstring other = fFolder.MakeFolder(L"other");
  fNotifier->SetOnChangePIDL([&](auto*, TNotificationEvent event, auto&&...) {
    if (event != neFolderUpdate) return;
    fNotifier->RemovePath(ended);
    throw std::runtime_error("a handler's own");
  });
  for (const std::wstring& path : {fFolder.Path(), ended, other}) fNotifier->AddPath(path);
  EXPECT_EQ(gAsked.registered, 0) << "the directory watcher serves until the answer is known";
  fFolder.MakeFile(L"a");
  PumpUntil([&] { return HasTold(L"3:" + fFolder.PathOf(L"a")); });
  gate.Open();
  PumpUntil([&] { return HasTold(L"15:" + other); });
  EXPECT_TRUE(HasTold(L"15:" + fFolder.Path()));
  EXPECT_EQ(gAsked.registered, 2) << "of three, one of which a handler ended in between";
  // Never both: the end of the first source is told by the order of its thread.
  DirectoryWatcher::Unwatch(
      DirectoryWatcher::Watch(fFolder.Path(), false, std::make_shared<TNoticeQueue>([] { return true; })));
  fTold.clear();
  fFolder.MakeFile(L"b");
  const auto created = TKivItemIdList::Create(fFolder.MakeFile(L"c"));
  gAsked.lists[0] = const_cast<PIDLIST_ABSOLUTE>(created->WindowsPointer());
  gAsked.shellEvent = SHCNE_CREATE;
  SendMessageW(gAsked.window, 2011, 1, 2);
  PumpMessages();
  EXPECT_EQ(fTold, L"3:" + fFolder.PathOf(L"c") + L" ");
  fNotifier->AddPath(fFolder.MakeFolder(L"sub"));
  EXPECT_EQ(gAsked.registered, 3);
}

// A server isn't asked what is a file, and may say it late.
TEST_F(NotifierSources, GoOverToTheShellForAFileOfASlowServer) {
  ScopedShellApi api;
  FakeShell(api);
  test::TGate gate;
  const auto held = std::make_shared<TNoticeQueue>([&gate] { return gate.Pass(), true; });
  const std::wstring slow = fFolder.MakeFolder(L"slow");
  const std::uint32_t watch = DirectoryWatcher::Watch(slow, false, held, nullptr, 10'000, true);
  fFolder.MakeFile(L"slow\\x");
  gate.AwaitArrivals();
  api->GetDriveTypeW = [](const wchar_t*) -> UINT { return DRIVE_REMOTE; };
  SetChangeSourceKind(TChangeSourceKind::Directory);
  Listen();
  const std::wstring file = fFolder.MakeFile(L"file");
  fNotifier->AddPath(file);
  EXPECT_EQ(gAsked.registered, 0);
  gate.Open();
  PumpUntil([&] { return HasTold(L"15:" + file); });
  EXPECT_EQ(gAsked.registered, 1);
  DirectoryWatcher::Unwatch(watch);
  // So is a folder of a file system that doesn't number its files.
  api->GetDriveTypeW = [](const wchar_t*) -> UINT { return DRIVE_FIXED; };
  api->NtQueryInformationFile = [](HANDLE, void*, void*, ULONG, int) -> LONG { return 0; };
  fNotifier->AddPath(slow);
  EXPECT_EQ(gAsked.registered, 2);
}

TEST_F(NotifierSources, LetGoOfAMediumThatIsToBeEjected) {
  SetChangeSourceKind(TChangeSourceKind::Directory);
  ScopedShellApi api;
  static HANDLE handle = nullptr;
  static HWND window = nullptr;
  api->RegisterDeviceNotificationW = [](HANDLE recipient, void* filter, DWORD) -> HDEVNOTIFY {
    handle = static_cast<const DEV_BROADCAST_HANDLE*>(filter)->dbch_handle;
    window = static_cast<HWND>(recipient);
    return nullptr;
  };
  Listen();
  const std::wstring other = fFolder.MakeFolder(L"other");
  const std::wstring ejected = fFolder.MakeFolder(L"ejected");
  fNotifier->AddPath(other);
  fNotifier->AddPath(ejected);
  DEV_BROADCAST_HANDLE device{};
  device.dbch_size = sizeof(device);
  device.dbch_devicetype = DBT_DEVTYP_HANDLE;
  const auto query = [&](HANDLE of) {
    device.dbch_handle = of;
    SendMessageW(window, WM_DEVICECHANGE, DBT_DEVICEQUERYREMOVE, reinterpret_cast<LPARAM>(&device));
  };
  query(GetCurrentProcess()); // nobody's handle
  const std::wstring file = fFolder.MakeFile(L"ejected\\x");
  PumpUntil([&] { return HasTold(L"3:" + file); });
  EXPECT_TRUE(DeleteFileW(file.c_str()));
  fTold.clear();
  query(handle);
  // All on that volume: a handle would keep a folder there that is deleted, and its name taken.
  for (const std::wstring& folder : {other, ejected}) {
    EXPECT_TRUE(RemoveDirectoryW(folder.c_str()));
    EXPECT_EQ(GetFileAttributesW(folder.c_str()), INVALID_FILE_ATTRIBUTES);
    PumpUntil([&] { return HasTold(L"15:" + folder); });
  }
}

// Another process changes what it likes in a few nested folders, as fast as it can.
TEST_F(NotifierSources, TellAllThatAListingNeeds) {
  SetChangeSourceKind(TChangeSourceKind::Directory);
  const std::wstring root = fFolder.MakeFolder(L"root");
  fNotifier->AddPath(root);
  test::TKnownTree known(root);
  const auto follow = [&](unsigned seed, int count, const std::wstring& last) {
    test::ChangeFromOutside(root, test::TOutsideChanges::AtRandom, seed, count, last);
    PumpUntil([&] { return known.Known().contains(last); });
    // Reports of other folders may still be under way, and folders that were deleted may go later.
    PumpUntil([&] { return known.IsTrue(); });
  };
  fNotifier->SetOnChange([&](auto*, TNotificationEvent event, const std::wstring& path1, const std::wstring& path2) {
    known.Apply(event, path1, path2);
  });
  follow(1, 300, root + L"\\the first one");
  follow(2, 1000, root + L"\\the last one");
}

} // namespace
} // namespace kiv
