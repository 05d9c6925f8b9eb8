#include "NotifierFixture.h"

#include <doubles/Gate.h>
#include <platform/MainThread.h>
#include <threading/WorkerPool.h>

#include <atomic>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace kiv {
namespace {

using test::ListOf;

class NotifierEvents : public test::TNotifierFixture {
protected:
  void SetUp() override {
    TNotifierFixture::SetUp();
    Listen(*fNotifier);
    fNotifier->AddPath(L"C:\\a");
  }
};

TEST(NotificationEvents, HaveNamesAndShellValues) {
  EXPECT_EQ(TNotificationEventHelper::ToString(neAssociationChange), L"neAssociationChange");
  EXPECT_EQ(TNotificationEventHelper::ToString(neServerDisconnect), L"neServerDisconnect");
  EXPECT_EQ(TNotificationEventHelper::ToString(neImageListChange), L"");
  EXPECT_EQ(TNotificationEventHelper::ToString(nePopulated), L"");
  const std::pair<std::uint32_t, TNotificationEvent> arriving[] = {{0x8000000, neAssociationChange},
                                                                   {0x800, neAttributesChange},
                                                                   {0x2000, neFileChange},
                                                                   {0x1, neFileRename},
                                                                   {0x40000, neDriveSpaceChange},
                                                                   {0x10000, neShellDriveAdd},
                                                                   {0x20000, neFolderRename},
                                                                   {0x200, neNetShare},
                                                                   {0x400, neNetShare},
                                                                   {0x600, neUnknown},
                                                                   {0x8000, neImageListChange},
                                                                   {0x3, neUnknown},
                                                                   {0x80000002, neFileCreate},
                                                                   {0x7fffffff, neUnknown},
                                                                   {0, neUnknown}};
  for (const auto& [value, event] : arriving) {
    EXPECT_EQ(TNotificationEventHelper::FromShellEvent(value), event) << value;
  }
  EXPECT_EQ(TNotificationEventHelper::ToShellEvents({neFileCreate, neNetShare, neAsyncResult}), 0x602U);
  EXPECT_EQ(TNotificationEventHelper::ToShellEvents({neUnknown}), 0x7fffffffU);
  EXPECT_EQ(TNotificationEventHelper::ToShellEvents(DefaultNotificationEvents), 0x807FFFFU);
}

TEST_F(NotifierEvents, ArriveWithPathsThenWithLists) {
  Arrive(neFileCreate, L"C:\\a\\x");
  EXPECT_EQ(Told(), L"3:C:\\a\\x [C:\\a\\x] ");
  Arrive(neFileRename, ListOf(L"C:\\a\\x"), ListOf(L"C:\\a\\y"));
  EXPECT_EQ(Told(), L"5:C:\\a\\x>C:\\a\\y [C:\\a\\x] ");
  Arrive(neAssociationChange, L"C:\\a");
  EXPECT_EQ(Told(), L"[C:\\a] ") << "it has no path";
  Arrive(neImageListChange, ListOf(L"x"), ListOf(L"y"));
  EXPECT_EQ(Told(), L"18:4711>y [x] ");
  Arrive(neServerDisconnect, L"");
  EXPECT_EQ(Told(), L"[] ") << "without a path only the list is told";
  const auto gone = ListOf(L"C:\\gone");
  gone->invalid = true;
  Arrive(neFolderDelete, gone);
  EXPECT_EQ(Told(), L"13:C:\\gone ");
}

TEST_F(NotifierEvents, OfDriveSpaceAreForWatchedDrives) {
  fNotifier->AddPath(L"D:\\");
  Arrive(neDriveSpaceChange, L"C:\\");
  EXPECT_EQ(Told(), L"");
  Arrive(neDriveSpaceChange, L"D:\\");
  EXPECT_EQ(Told(), L"9:D:\\ [D:\\] ");
  Arrive(neDriveSpaceChange, ComPtr<IItemIdList>());
  EXPECT_EQ(Told(), L"9: ");
}

TEST_F(NotifierEvents, OfAFolderAreUpdatesOfIt) {
  const auto folder = ListOf(L"C:\\a\\sub");
  folder->folder = true;
  Arrive(neFileChange, folder);
  EXPECT_EQ(Told(), L"15:C:\\a\\sub [C:\\a\\sub] ");
  fNotifier->SetNotificationEvent(neFolderUpdate, false);
  Arrive(neFileChange, folder);
  EXPECT_EQ(Told(), L"");
  fNotifier->SetEventFilter({neFolderUpdate});
  Arrive(neFileChange, folder);
  EXPECT_EQ(Told(), L"") << "it doesn't get that far";
}

TEST_F(NotifierEvents, OnceForEachDeletionAndDrive) {
  fNotifier->SetOnChangePIDL(nullptr);
  const struct {
    std::uint64_t after; // ms
    TNotificationEvent event;
    const wchar_t* path;
    bool told;
  } cases[] = {
      {0, neDriveRemove, L"D:\\", true},       {2999, neDriveRemove, L"d:\\", false},
      {1, neDriveRemove, L"D:\\", true},       {0, neDriveAdd, L"D:\\", false},
      {10, neDriveRemove, L"E:\\", true},      {10, neDriveRemove, L"D:\\", true},
      {10, neFileDelete, L"C:\\a\\x", true},   {10, neFileChange, L"C:\\a\\y", true},
      {10, neFileDelete, L"C:\\a\\x", true},   {10, neFileDelete, L"C:\\a\\x", false},
      {10, neFileDelete, L"C:\\a\\X", true},   {10, neFolderDelete, L"C:\\a\\X", true},
      {10, neFolderDelete, L"C:\\a\\X", true}, {10, neMediaInsert, L"E:\\", true},
      {10, neMediaInsert, L"E:\\", false},
  };
  for (const auto& c : cases) {
    fTime.Advance(c.after);
    Arrive(c.event, c.path);
    EXPECT_EQ(!Told().empty(), c.told) << static_cast<int>(c.event) << c.path << c.after;
  }
}

TEST_F(NotifierEvents, AreDroppedIfTheObjectDoesNotAnswer) {
  const auto silent = ListOf(L"\\\\dead\\x");
  silent->reload = [] { return false; };
  Arrive(neFileCreate, silent);
  EXPECT_EQ(fPlatform.lastLimit, 1000U);
  EXPECT_EQ(Told(), L"");
  Arrive(neFileRename, ListOf(L"C:\\a\\x"), silent);
  EXPECT_EQ(Told(), L"");
  silent->resolved = false;
  Arrive(neFileRename, ListOf(L"C:\\a\\x"), silent);
  EXPECT_EQ(Told(), L"5:C:\\a\\x>\\\\dead\\x [C:\\a\\x] ") << "what isn't resolved isn't asked";
}

TEST_F(NotifierEvents, EndWithTheirFilterAndWithEnabled) {
  fNotifier->SetEventFilter({neFileCreate});
  EXPECT_FALSE(fPlatform.sink->Accepts(neFileDelete));
  Arrive(neFileDelete, L"C:\\a\\x");
  fNotifier->SetEnabled(false);
  EXPECT_FALSE(fPlatform.sink->Accepts(neFileCreate));
  Arrive(neFileCreate, L"C:\\a\\x");
  EXPECT_EQ(Told(), L"");
}

TEST_F(NotifierEvents, SurviveWhatHandlersDo) {
  fNotifier->SetOnChange([](auto&&...) { throw std::runtime_error("a handler's own"); });
  EXPECT_THROW(Arrive(neFileCreate, L"C:\\a\\x"), std::runtime_error);
  fNotifier->SetOnChange([this](auto&&...) { fNotifier->RemovePath(L"C:\\a"); });
  Arrive(neFileCreate, L"C:\\a\\x");
  EXPECT_EQ(Told(), L"[C:\\a\\x] ");
  EXPECT_EQ(fPlatform.Registered(), L"");
  fNotifier->SetOnChange([this](auto&&...) { fNotifier.reset(); });
  Arrive(neFileCreate, L"C:\\a\\x");
  EXPECT_EQ(fNotifier, nullptr);
  EXPECT_EQ(Told(), L"");
}

TEST_F(NotifierEvents, AreToldOnWorkersUntilTheNotifierGoes) {
  fNotifier->SetNotifyAsynchronously(true);
  std::atomic<bool> on_main{true};
  std::atomic<int> told{0};
  std::wstring watched;
  test::TGate handler;
  fNotifier->SetOnChange([&](auto&&...) {
    on_main = MainThread::IsCurrent();
    ++told;
    handler.Pass();
    MainThread::Synchronize([&] { watched = fPlatform.Registered(); });
  });
  fNotifier->SetOnChangePIDL(nullptr);
  Arrive(neFileCreate, L"C:\\a\\x");
  handler.AwaitArrivals();
  // Another one hangs where a dead share would let it hang, and doesn't hold up the end.
  test::TGate share;
  const auto hanging = ListOf(L"\\\\dead\\x");
  hanging->resolved = false;
  hanging->reload = [&share] {
    share.Pass();
    return true;
  };
  Arrive(neFileCreate, hanging);
  share.AwaitArrivals();
  // What else waits for the main thread may raise.
  int reported = 0;
  Application().SetOnException([&reported](auto&&...) { ++reported; });
  MainThread::Queue([] { throw EException(L"somebody else's"); });
  handler.Open();
  fNotifier.reset();
  Application().SetOnException(nullptr);
  EXPECT_EQ(reported, 1);
  EXPECT_FALSE(on_main);
  EXPECT_EQ(watched, L"C:\\a* ") << "the end waits for a handler, and lets it come to the main thread";
  share.Open();
  while (TWorkerPool::GlobalInstance().GetWorkItemsActive()) std::this_thread::yield();
  EXPECT_EQ(told, 1) << "nothing is told behind the end";
}

TEST_F(NotifierEvents, AreLostIfWorkersDontGetToThemAndToldAsUpdates) {
  constexpr int most = 10'000;
  fNotifier->AddItemIdList(ListOf(L"C:\\b").Get(), true, {neFileCreate});
  fNotifier->AddPath(L"C:\\c");
  fNotifier->SetNotifyAsynchronously(true);
  test::TGate share;
  std::atomic<int> waiting{0};
  std::mutex lock;
  std::map<std::wstring, int> told;
  fNotifier->SetOnChangePIDL(nullptr);
  fNotifier->SetOnChange([&](auto*, TNotificationEvent event, const std::wstring& path, const std::wstring&) {
    const std::lock_guard guard(lock);
    ++told[std::to_wstring(static_cast<int>(event)) + L":" + path];
  });
  const auto hanging = ListOf(L"C:\\a\\x");
  hanging->reload = [&] {
    ++waiting;
    share.Pass();
    return true;
  };
  // Workers may have taken some of them by then.
  for (int i = 0; i < 2 * most; ++i) Arrive(neFileCreate, hanging);
  EXPECT_LT(waiting, most / 2);
  share.Open();
  while (TWorkerPool::GlobalInstance().GetWorkItemsActive()) std::this_thread::yield();
  fNotifier.reset();
  EXPECT_GE(told[L"3:C:\\a\\x"], most);
  EXPECT_LT(told[L"3:C:\\a\\x"], 2 * most);
  told.erase(L"3:C:\\a\\x");
  EXPECT_EQ(told, (std::map<std::wstring, int>{{L"15:C:\\a", 1}, {L"15:C:\\c", 1}}));
}

} // namespace
} // namespace kiv
