#include "ChangeStorm.h"

#include <doubles/KnownTree.h>
#include <doubles/OutsideChanges.h>
#include <doubles/PumpUntil.h>
#include <doubles/ScopedTempFolder.h>
#include <framework/Application.h>
#include <notification/ChangeNotifier.h>
#include <notification/ChangeSourceKind.h>
#include <platform/Handles.h>
#include <platform/Signal.h>
#include <platform/fill/DirectoryWatcher.h>

#include <tlhelp32.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

namespace kiv::bench {

namespace {

using TClock = std::chrono::steady_clock;
using test::PumpUntil;

constexpr double Failed = 1e9;

// The watcher lets go of folders on a thread of its own, in the order in which it is told to.
void AwaitUnwatched(const std::wstring& folder) {
  DirectoryWatcher::Unwatch(
      DirectoryWatcher::Watch(folder, false, std::make_shared<TNoticeQueue>([] { return true; })));
}

int ThreadCount() {
  const TUniqueHandle all(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
  THREADENTRY32 thread{};
  thread.dwSize = sizeof(thread);
  int count = 0;
  for (BOOL more = Thread32First(all.Get(), &thread); more; more = Thread32Next(all.Get(), &thread)) {
    if (thread.th32OwnerProcessID == GetCurrentProcessId()) ++count;
  }
  return count;
}

} // namespace

double LongestTurn(int pCount) {
  Application();
  SetChangeSourceKind(TChangeSourceKind::Directory);
  test::ScopedTempFolder folder;
  const std::wstring root = folder.MakeFolder(L"root");
  const std::wstring last = root + L"\\the last one";
  TKivShellChangeNotifier notifier;
  notifier.AddPath(root);
  test::TKnownTree known(root);
  TClock::time_point latest = TClock::now();
  TClock::duration in_handler{};
  notifier.SetOnChange([&](auto*, TNotificationEvent event, const std::wstring& path1, const std::wstring& path2) {
    latest = TClock::now();
    known.Apply(event, path1, path2);
    in_handler += TClock::now() - latest;
  });
  test::ChangeFromOutside(root, test::TOutsideChanges::AtRandom, 1, pCount, last);
  double longest = 0;
  bool is_true = false;
  // Folders that were deleted may stay for a while (Wine), and then go without being looked at anew.
  const auto over = [&] {
    const auto quiet = TClock::now() - latest;
    is_true = known.Known().contains(last) && quiet > std::chrono::milliseconds(500) && known.IsTrue();
    return is_true || quiet > std::chrono::seconds(60);
  };
  while (!over()) {
    constexpr DWORD slice = 500; // ms
    MsgWaitForMultipleObjectsEx(0, nullptr, slice, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      const auto begin = TClock::now();
      in_handler = {};
      DispatchMessageW(&message);
      const auto turn = TClock::now() - begin - in_handler;
      longest = std::max(longest, std::chrono::duration<double, std::milli>(turn).count());
    }
  }
  notifier.Clear();
  AwaitUnwatched(folder.Path());
  return is_true ? longest : Failed;
}

TQueuedChanges ChangesToQueue(int pCount, int pPerSecond) {
  constexpr auto silence = std::chrono::seconds(5);
  test::ScopedTempFolder folder;
  const std::wstring last = folder.PathOf(L"last");
  const auto woken = std::make_shared<TSignal>();
  const auto queue =
      std::make_shared<TNoticeQueue>([woken] { return woken->Set(), true; }, static_cast<std::size_t>(pCount) * 4);
  const std::uint32_t watch = DirectoryWatcher::Watch(folder.Path(), false, queue);
  test::ChangeFromOutside(folder.Path(), test::TOutsideChanges::ComeAndGo, 1, pCount, last, pPerSecond);
  TNoticeQueue::TEntry entry;
  TClock::time_point first;
  int changes = 0;
  for (bool over = false; !over;) {
    while (!over && queue->Pop(entry)) {
      if (entry.notice.event == TDirectoryEvent::FolderUpdate || entry.notice.event == TDirectoryEvent::FileChange)
        continue;
      if (changes++ == 0) first = TClock::now();
      over = entry.notice.path1 == last;
    }
    // If the last one is lost, too, nothing comes any more.
    over = over || !woken->WaitFor(silence);
  }
  const double seconds = std::chrono::duration<double>(TClock::now() - first).count();
  DirectoryWatcher::Unwatch(watch);
  AwaitUnwatched(folder.Path());
  return {seconds * 1e6 / std::max(changes - 1, 1), std::max(pCount + 1 - changes, 0)};
}

double ChangesToPaths(int pCount) {
  Application();
  SetChangeSourceKind(TChangeSourceKind::Directory);
  test::ScopedTempFolder folder;
  const std::wstring last = folder.PathOf(L"last");
  TKivShellChangeNotifier notifier;
  TClock::time_point first;
  TClock::time_point latest;
  int events = 0;
  bool over = false;
  notifier.SetOnChange([&](auto*, TNotificationEvent, const std::wstring& path, const std::wstring&) {
    latest = TClock::now();
    if (events++ == 0) first = latest;
    over = over || path == last;
  });
  notifier.AddPath(folder.Path());
  test::ChangeFromOutside(folder.Path(), test::TOutsideChanges::ComeAndGo, 1, pCount, last);
  PumpUntil([&] { return over; });
  notifier.Clear();
  AwaitUnwatched(folder.Path());
  return std::chrono::duration<double, std::micro>(latest - first).count() / events;
}

double ThreadsOfWatches(int pCount) {
  Application();
  SetChangeSourceKind(TChangeSourceKind::Directory);
  test::ScopedTempFolder folder;
  TKivShellChangeNotifier notifier;
  notifier.SetRecursive(false);
  const auto watch = [&](int number) { notifier.AddPath(folder.MakeFolder(std::to_wstring(number))); };
  // By then the few threads that ask about all objects are there.
  constexpr int few = 100;
  for (int i = 0; i < few; ++i) watch(i);
  const int before = ThreadCount();
  for (int i = few; i < pCount; ++i) watch(i);
  const int more = ThreadCount() - before;
  notifier.Clear();
  AwaitUnwatched(folder.Path());
  return more;
}

} // namespace kiv::bench
