#include <core/FolderFunctions.h>
#include <core/ItemIdList.h>
#include <core/PathList.h>
#include <doubles/PumpUntil.h>
#include <doubles/ScopedTempFolder.h>
#include <framework/Application.h>
#include <notification/ChangeNotifier.h>
#include <notification/ChangeSourceKind.h>
#include <platform/Lifecycle.h>
#include <platform/ShellApi.h>
#include <platform/fill/DirectoryHandle.h>

#include <shlobj.h>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
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
  fNotifier->AddPath(file);
  fNotifier->AddPath(sub);
  std::thread([&] {
    EXPECT_TRUE(DeleteFileW(fFolder.PathOf(L"not watched").c_str()));
    EXPECT_TRUE(DeleteFileW(file.c_str()));
    EXPECT_TRUE(CreateEmptyFile(sub + L"\\a"));
    EXPECT_TRUE(MoveFileW((sub + L"\\a").c_str(), (sub + L"\\b").c_str()));
  }).join();
  PumpUntil([&] { return HasTold(L"5:" + sub + L"\\a>" + sub + L"\\b") && HasTold(L"4:" + file); });
  EXPECT_FALSE(HasTold(L"4:" + fFolder.PathOf(L"not watched")));
  EXPECT_NE(lists.find(L"4:" + file + L" "), std::wstring::npos) << "though nothing could parse it any more";
}

TEST_F(NotifierSources, SurviveWhatHandlersDo) {
  SetChangeSourceKind(TChangeSourceKind::Directory);
  int told = 0;
  fNotifier->SetOnChange([&](auto&&...) {
    if (++told == 1) throw std::runtime_error("a handler's own");
    fNotifier.reset();
  });
  fNotifier->AddPath(fFolder.Path());
  for (int i = 0; i < 50; ++i) fFolder.MakeFile(std::to_wstring(i));
  PumpUntil([&] { return !fNotifier; });
  EXPECT_EQ(told, 2);
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

/// What a listener knows of a tree: paths as they are on disk, with "/" behind folders.
class TKnownTree {
public:
  explicit TKnownTree(std::wstring pRoot) : fRoot(std::move(pRoot)) { List(); }

  void Apply(TNotificationEvent event, const std::wstring& path1, const std::wstring& path2) {
    if (event == neFileCreate || event == neFolderCreate) fKnown[path1] = event == neFolderCreate;
    if (event == neFileDelete || event == neFolderDelete) Take(path1);
    if (event == neFolderUpdate && path1 == fRoot) List();
    if (event != neFileRename && event != neFolderRename) return;
    const auto moved = Take(path1);
    Take(path2);
    for (const auto& [path, folder] : moved) fKnown[path2 + path.substr(path1.size())] = folder;
    fKnown[path2] = event == neFolderRename;
  }
  const std::map<std::wstring, bool>& Known() const { return fKnown; }

private:
  void List() {
    fKnown.clear();
    std::vector<std::wstring> folders = {fRoot};
    while (!folders.empty()) {
      const std::wstring folder = std::move(folders.back());
      folders.pop_back();
      // Gone meanwhile, it lists nothing.
      for (const auto& entry : ListDirectory(folder, true)) {
        const std::wstring path = folder + L"\\" + entry.name;
        const bool is_folder = entry.kind == IWatchedFolders::TKind::Folder;
        fKnown[path] = is_folder;
        if (is_folder) folders.push_back(path);
      }
    }
  }
  std::map<std::wstring, bool> Take(const std::wstring& path) {
    std::map<std::wstring, bool> taken;
    for (auto at = fKnown.lower_bound(path); at != fKnown.end() && at->first.starts_with(path);) {
      const bool of = at->first.size() == path.size() || at->first[path.size()] == L'\\';
      if (of) taken.insert(*at);
      at = of ? fKnown.erase(at) : std::next(at);
    }
    return taken;
  }

  const std::wstring fRoot;
  std::map<std::wstring, bool> fKnown;
};

// Makes, renames, moves and deletes in a few nested folders as fast as it can.
void ChangeAtRandom(const std::wstring& root, unsigned seed, int count) {
  std::mt19937 random(seed);
  const auto name = [&] { return std::wstring(1, static_cast<wchar_t>(L'a' + random() % 12)); };
  const auto path = [&] {
    std::wstring p = root;
    for (auto depth = random() % 3; depth > 0; --depth) p += L"\\" + name();
    return p + L"\\" + name();
  };
  for (int i = 0; i < count; ++i) {
    const std::wstring p = path();
    switch (random() % 6) {
    case 0:
    case 1:
      CreateEmptyFile(p);
      break;
    case 2:
      CreateDirectoryW(p.c_str(), nullptr);
      break;
    case 3:
      MoveFileW(p.c_str(), path().c_str());
      break;
    case 4:
      DeleteFileW(p.c_str());
      break;
    default:
      RemoveDirectoryW(p.c_str());
    }
  }
}

TEST_F(NotifierSources, TellAllThatAListingNeeds) {
  SetChangeSourceKind(TChangeSourceKind::Directory);
  const std::wstring root = fFolder.MakeFolder(L"root");
  ChangeAtRandom(root, 1, 300);
  fNotifier->AddPath(root);
  TKnownTree known(root);
  bool over = false;
  const std::wstring last = root + L"\\the last one";
  fNotifier->SetOnChange([&](auto*, TNotificationEvent event, const std::wstring& path1, const std::wstring& path2) {
    known.Apply(event, path1, path2);
    over = over || known.Known().contains(last);
  });
  std::thread other([&] {
    ChangeAtRandom(root, 2, 2000);
    CreateEmptyFile(last);
  });
  PumpUntil([&] { return over; });
  other.join();
  // Reports of other folders may still be under way, and folders that were deleted may go later.
  PumpUntil([&] { return known.Known() == TKnownTree(root).Known(); });
}

} // namespace
} // namespace kiv
