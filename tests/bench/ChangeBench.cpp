#include "Benches.h"

#include <core/FolderFunctions.h>
#include <core/ItemIdList.h>
#include <doubles/PumpUntil.h>
#include <doubles/ScopedTempFolder.h>
#include <framework/Application.h>
#include <notification/ChangeNotifier.h>
#include <notification/ChangeSourceKind.h>
#include <platform/Handles.h>
#include <platform/Signal.h>
#include <platform/fill/DirectoryWatcher.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace kiv::bench {

namespace {

using TClock = std::chrono::steady_clock;

using test::PumpUntil;

// Milliseconds from a change to its subscriber on the idle main thread.
double Latency() {
  Application();
  SetChangeSourceKind(TChangeSourceKind::Directory);
  test::ScopedTempFolder folder;
  TKivShellChangeNotifier notifier;
  bool told = false;
  TClock::time_point at;
  notifier.SetOnChange([&](auto&&...) {
    if (!told) at = TClock::now();
    told = true;
  });
  notifier.AddPath(folder.Path());
  TClock::time_point start;
  std::thread other([&] {
    start = TClock::now();
    CreateEmptyFile(folder.PathOf(L"x"));
  });
  PumpUntil([&] { return told; });
  other.join();
  return std::chrono::duration<double, std::milli>(at - start).count();
}

constexpr int Count = 2000;

// Makes and deletes one file after the other.
void ChangeFiles(const std::wstring& folder) {
  for (int i = 0; i < Count / 2; ++i) {
    const std::wstring path = folder + L"\\" + std::to_wstring(i);
    CreateEmptyFile(path);
    DeleteFileW(path.c_str());
  }
}

// Microseconds each change, with nobody watching.
double ChangeAlone() {
  test::ScopedTempFolder folder;
  return Seconds([&] { ChangeFiles(folder.Path()); }) * 1e6 / Count;
}

// The same until the queue has the last one.
double ToQueue() {
  test::ScopedTempFolder folder;
  const auto woken = std::make_shared<TSignal>();
  const auto queue = std::make_shared<TNoticeQueue>([woken] { woken->Set(); });
  const std::uint32_t watch = DirectoryWatcher::Watch(folder.Path(), false, queue);
  const double seconds = Seconds([&] {
    std::thread other([&] {
      ChangeFiles(folder.Path());
      CreateEmptyFile(folder.PathOf(L"last"));
    });
    TNoticeQueue::TEntry entry;
    for (bool over = false; !over;) {
      while (!over && queue->Pop(entry)) {
        over = entry.notice.path1.ends_with(L"\\last") || entry.notice.event == TDirectoryEvent::FolderUpdate;
      }
      if (!over) woken->Wait();
    }
    other.join();
  });
  DirectoryWatcher::Unwatch(watch);
  return seconds * 1e6 / Count;
}

// A notifier without a window, which is handed its events.
class TFedPlatform final : public INotifierPlatform {
public:
  ComPtr<IItemIdList> MakeList(std::wstring_view pPath) override { return TKivItemIdList::Create(pPath); }
  ComPtr<IItemIdList> DefaultList() override { return nullptr; }
  bool Reload(IItemIdList*, std::uint64_t, ComPtr<ICancellationIndicator>) override { return true; }
  bool IsFolder(IItemIdList*) override { return false; }
  std::unique_ptr<IChangeSource> OpenSource(IChangeSink& pSink) override {
    sink = &pSink;
    return std::make_unique<TSource>();
  }
  IChangeSink* sink = nullptr;

private:
  struct TSource final : IChangeSource {
    std::uint32_t Register(IItemIdList*, bool, TNotificationEvents) override { return 1; }
    void Unregister(std::uint32_t) noexcept override {}
  };
};

// Microseconds each event from the queue to OnChange, or to OnChangePIDL.
double ToHandler(bool lists) {
  Application();
  constexpr int count = 300;
  test::ScopedTempFolder folder;
  TFedPlatform platform;
  const ScopedNotifierPlatform scope(platform);
  TKivShellChangeNotifier notifier;
  std::size_t length = 0;
  if (lists) {
    notifier.SetOnChangePIDL([&](auto*, TNotificationEvent, IItemIdList* first, IItemIdList*) {
      length += static_cast<std::size_t>(first->Depth());
    });
  } else {
    notifier.SetOnChange(
        [&](auto*, TNotificationEvent, const std::wstring& path, const std::wstring&) { length += path.size(); });
  }
  notifier.AddPath(folder.Path());
  std::vector<std::wstring> paths;
  for (int i = 0; i < count; ++i) paths.push_back(folder.MakeFile(std::to_wstring(i)));
  return Seconds([&] {
           for (const std::wstring& path : paths) {
             platform.sink->OnChangeArrived(neFileCreate, TKivItemIdList::Create(path), nullptr);
           }
         }) *
         1e6 / count;
}

// What the platform takes to make the list of such a file.
double ParseLists() {
  constexpr int count = 300;
  test::ScopedTempFolder folder;
  std::vector<std::wstring> paths;
  for (int i = 0; i < count; ++i) paths.push_back(folder.MakeFile(std::to_wstring(i)));
  return Seconds([&] {
           for (const std::wstring& path : paths) {
             PIDLIST_ABSOLUTE list = nullptr;
             SHParseDisplayName(path.c_str(), nullptr, &list, 0, nullptr);
             ILFree(list);
           }
         }) *
         1e6 / count;
}

} // namespace

std::vector<TFigure> ChangeFigures() {
  return {
      // Where the floor is a round number it is a limit that was set.
      {"changes", "latency", "ms", &Latency, [] { return 30.0; }, 1.0},
      {"changes", "to_queue", "us/change", &ToQueue, &ChangeAlone, 0},
      {"changes", "to_paths", "us/event", [] { return ToHandler(false); }, [] { return 333.0; }, 1.0},
      {"changes", "to_lists", "us/event", [] { return ToHandler(true); }, &ParseLists, 1.3},
  };
}

} // namespace kiv::bench
