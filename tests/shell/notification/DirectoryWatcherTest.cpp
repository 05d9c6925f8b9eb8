#include <platform/fill/DirectoryWatcher.h>

#include <core/FolderFunctions.h>
#include <core/PathFunctions.h>
#include <doubles/Gate.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/Lifecycle.h>
#include <platform/Signal.h>
#include <platform/fill/LiteralPath.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace kiv {
namespace {

class DirectoryWatches : public testing::Test {
protected:
  void TearDown() override {
    Shutdown();
    fQueue->Close();
  }

  // Everything up to a notice of that kind for that path, without writes, which come once or twice.
  std::wstring TellUntil(TDirectoryEvent event, const std::wstring& path) {
    static constexpr const wchar_t* names[] = {L"+", L"-", L">", L"~", L"++", L"--", L">>", L"!", L"?"};
    std::wstring told;
    TNoticeQueue::TEntry entry;
    for (;;) {
      while (fQueue->Pop(entry)) {
        const TDirectoryNotice& n = entry.notice;
        if (n.event != TDirectoryEvent::FileChange) {
          told += names[static_cast<int>(n.event)] + Short(n.path1) + (n.path2.empty() ? L"" : L":" + Short(n.path2));
          told += L' ';
        }
        if (n.event == event && n.path1 == path) return told;
      }
      fWoken->Wait();
    }
  }
  std::wstring Short(const std::wstring& path) const {
    return path.starts_with(fFolder.Path()) ? path.substr(fFolder.Path().size()) : path;
  }
  void Write(const std::wstring& path) {
    const TUniqueHandle file(
        CreateFileW(LiteralPath(path).c_str(), GENERIC_WRITE, 7, nullptr, OPEN_EXISTING, 0, nullptr));
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file.Get(), "x", 1, &written, nullptr));
  }
  void Move(const std::wstring& from, const std::wstring& to) {
    EXPECT_TRUE(MoveFileW(LiteralPath(from).c_str(), LiteralPath(to).c_str())) << from;
  }

  test::ScopedTempFolder fFolder;
  std::shared_ptr<TSignal> fWoken = std::make_shared<TSignal>();
  std::shared_ptr<TNoticeQueue> fQueue =
      std::make_shared<TNoticeQueue>([woken = fWoken] { return woken->Set(), true; });
};

TEST_F(DirectoryWatches, TellFilesFromFolders) {
  fFolder.MakeFolder(L"old\\older");
  const std::wstring empty = fFolder.MakeFolder(L"empty");
  ASSERT_NE(DirectoryWatcher::Watch(fFolder.Path(), true, fQueue), 0U);
  const std::wstring file = fFolder.MakeFile(L"old\\older\\x");
  EXPECT_EQ(TellUntil(TDirectoryEvent::FileCreate, file), L"+\\old\\older\\x ");
  Write(file);
  TellUntil(TDirectoryEvent::FileChange, file);
  // Reports of different folders come in no order: each change waits until the one before is told.
  Move(fFolder.PathOf(L"old"), fFolder.PathOf(L"new"));
  EXPECT_EQ(TellUntil(TDirectoryEvent::FolderRename, fFolder.PathOf(L"old")), L">>\\old:\\new ");
  const std::wstring moved = fFolder.PathOf(L"new\\older\\x");
  EXPECT_TRUE(DeleteFileW(moved.c_str()));
  EXPECT_EQ(TellUntil(TDirectoryEvent::FileDelete, moved), L"-\\new\\older\\x ");
  // One that was emptied before it went, one that was empty already.
  const std::wstring emptied = fFolder.PathOf(L"new\\older");
  for (const std::wstring& folder : {emptied, empty}) {
    EXPECT_TRUE(RemoveDirectoryW(folder.c_str()));
    EXPECT_EQ(TellUntil(TDirectoryEvent::FolderDelete, folder), L"--" + Short(folder) + L" ");
  }
}

TEST_F(DirectoryWatches, StayInTheirFolderUnlessTold) {
  fFolder.MakeFolder(L"sub");
  ASSERT_NE(DirectoryWatcher::Watch(fFolder.Path(), false, fQueue), 0U);
  fFolder.MakeFile(L"sub\\x");
  const std::wstring file = fFolder.MakeFile(L"y");
  EXPECT_EQ(TellUntil(TDirectoryEvent::FileCreate, file).find(L"\\sub\\x"), std::wstring::npos);
}

TEST_F(DirectoryWatches, TakeAnyName) {
  ASSERT_NE(DirectoryWatcher::Watch(fFolder.Path(), true, fQueue), 0U);
  const std::wstring part(100, L'p');
  const std::wstring names[] = {L"\xD83D\xDE00 \x4E2D", L"Case", std::wstring(255, L'n'), L"dots..",
                                part + L"\\" + part + L"\\" + part + L"\\deep"};
  for (const std::wstring& name : names) {
    const std::wstring path = fFolder.PathOf(name);
    if (name.find(L'\\') != std::wstring::npos) ForceDirectories(GetParentPathFromPath(path));
    TUniqueHandle(CreateFileW(LiteralPath(path).c_str(), GENERIC_WRITE, 7, nullptr, CREATE_NEW, 0, nullptr));
    TellUntil(TDirectoryEvent::FileCreate, path); // the watchdog has the name of the one that doesn't come
  }
}

TEST_F(DirectoryWatches, NoticeThatTheirFolderGoesAndComesBack) {
  const std::wstring watched = fFolder.MakeFolder(L"watched");
  ASSERT_NE(DirectoryWatcher::Watch(watched, false, fQueue), 0U);
  Move(watched, fFolder.PathOf(L"moved"));
  EXPECT_EQ(TellUntil(TDirectoryEvent::FolderUpdate, watched), L"!\\watched ");
  fFolder.MakeFolder(L"watched");
  EXPECT_EQ(TellUntil(TDirectoryEvent::FolderUpdate, watched), L"!\\watched ");
  const std::wstring file = fFolder.MakeFile(L"watched\\x");
  EXPECT_EQ(TellUntil(TDirectoryEvent::FileCreate, file), L"+\\watched\\x ");
}

TEST_F(DirectoryWatches, DontWaitForThoseOnTheNetworkAndOpenLateWhatIsntThere) {
  test::TGate gate;
  const auto held = std::make_shared<TNoticeQueue>([&gate] { return gate.Pass(), true; });
  ASSERT_NE(DirectoryWatcher::Watch(fFolder.MakeFolder(L"slow"), false, held, nullptr, 10'000, true), 0U);
  fFolder.MakeFile(L"slow\\x");
  gate.AwaitArrivals();
  const std::wstring late = fFolder.PathOf(L"late");
  EXPECT_NE(DirectoryWatcher::Watch(late, false, fQueue, nullptr, 1, true), 0U) << "nobody knows yet";
  ASSERT_NE(DirectoryWatcher::Watch(fFolder.MakeFolder(L"local"), true, fQueue), 0U);
  const std::wstring local = fFolder.MakeFile(L"local\\x");
  EXPECT_EQ(TellUntil(TDirectoryEvent::FileCreate, local), L"+\\local\\x ");
  gate.Open();
  // Commands are obeyed in their order: by now that folder wasn't there.
  EXPECT_EQ(DirectoryWatcher::Watch(fFolder.PathOf(L"none"), false, fQueue, nullptr, 10'000, true), 0U);
  fFolder.MakeFolder(L"late");
  EXPECT_EQ(TellUntil(TDirectoryEvent::FolderUpdate, late), L"!\\late ");
  const std::wstring file = fFolder.MakeFile(L"late\\x");
  EXPECT_EQ(TellUntil(TDirectoryEvent::FileCreate, file), L"+\\late\\x ");
}

TEST_F(DirectoryWatches, TryAgainToWakeWhoTakesTheirNotices) {
  int attempts = 0;
  fQueue =
      std::make_shared<TNoticeQueue>([&attempts, woken = fWoken] { return ++attempts > 3 && (woken->Set(), true); });
  ASSERT_NE(DirectoryWatcher::Watch(fFolder.Path(), false, fQueue), 0U);
  const std::wstring file = fFolder.MakeFile(L"x");
  fWoken->Wait();
  EXPECT_EQ(TellUntil(TDirectoryEvent::FileCreate, file), L"+\\x ");
}

TEST_F(DirectoryWatches, ComeAndGoInNumbers) {
  EXPECT_EQ(DirectoryWatcher::Watch(fFolder.PathOf(L"none"), true, fQueue), 0U);
  EXPECT_EQ(DirectoryWatcher::Watch(fFolder.MakeFile(L"file"), true, fQueue), 0U);
  for (int i = 0; i < 100; ++i) DirectoryWatcher::Unwatch(DirectoryWatcher::Watch(fFolder.Path(), true, fQueue));
  std::vector<std::uint32_t> watches;
  for (int i = 0; i < 1000; ++i) {
    watches.push_back(DirectoryWatcher::Watch(fFolder.MakeFolder(L"d" + std::to_wstring(i)), false, fQueue));
    ASSERT_NE(watches.back(), 0U);
  }
  const std::wstring file = fFolder.MakeFile(L"d999\\x");
  EXPECT_EQ(TellUntil(TDirectoryEvent::FileCreate, file), L"+\\d999\\x ");
  for (const std::uint32_t watch : watches) DirectoryWatcher::Unwatch(watch);
}

} // namespace
} // namespace kiv
