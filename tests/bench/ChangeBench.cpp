#include "Benches.h"
#include "ChangeStorm.h"

#include <core/FolderFunctions.h>
#include <core/ItemIdList.h>
#include <doubles/PumpUntil.h>
#include <doubles/ScopedTempFolder.h>
#include <framework/Application.h>
#include <notification/ChangeNotifier.h>
#include <notification/ChangeSourceKind.h>

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

// A notifier without a window, which is handed its events.
class TFedPlatform final : public INotifierPlatform {
public:
  ComPtr<IItemIdList> MakeList(std::wstring_view pPath) override { return TKivItemIdList::Create(pPath); }
  ComPtr<IItemIdList> DefaultList() override { return nullptr; }
  bool Reload(IItemIdList*, std::uint64_t, ComPtr<ICancellationIndicator>) override { return true; }
  void ReloadOnWorker(IItemIdList*) override {}
  TLook Look(IItemIdList*, std::uint64_t, ComPtr<ICancellationIndicator>) override { return {}; }
  bool IsFolder(IItemIdList*) override { return false; }
  std::shared_ptr<IChangeSource> OpenSource(IChangeSink& pSink) override {
    sink = &pSink;
    return std::make_shared<TSource>();
  }
  IChangeSink* sink = nullptr;

private:
  struct TSource final : IChangeSource {
    std::uint32_t Register(IItemIdList*, bool, TNotificationEvents) override { return 1; }
    void Unregister(std::uint32_t) noexcept override {}
    void Close() noexcept override {}
  };
};

// Microseconds each event from the queue to OnChangePIDL, whose handler asks the list for its depth.
double ToLists() {
  Application();
  constexpr int count = 300;
  test::ScopedTempFolder folder;
  TFedPlatform platform;
  const ScopedNotifierPlatform scope(platform);
  TKivShellChangeNotifier notifier;
  int depth = 0;
  notifier.SetOnChangePIDL(
      [&](auto*, TNotificationEvent, IItemIdList* first, IItemIdList*) { depth += first->Depth(); });
  notifier.AddPath(folder.Path());
  std::vector<std::wstring> paths;
  for (int i = 0; i < count; ++i) paths.push_back(folder.MakeFile(std::to_wstring(i)));
  return Seconds([&] {
           for (const std::wstring& path : paths) {
             platform.sink->OnChangeArrived(neFileCreate, TKivItemIdList::CreateOfChange(path, false), nullptr);
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

// Changes, and how many a second: a tenth more than the figure's floor asks for.
constexpr int PacedCount = 10'000;
constexpr int Pace = 22'000;

// These take long: one run does.
double ThreadsOnce() {
  static const double threads = ThreadsOfWatches(1000);
  return threads;
}
// All of them, and not a median that hides some.
double LostOnce() {
  static const int lost = [] {
    int all = 0;
    for (int i = 0; i < 10; ++i) all += ChangesToQueue(PacedCount, Pace).lost;
    return all;
  }();
  return lost;
}
double LongestTurnOnce() {
  static const double longest = LongestTurn(100'000);
  return longest;
}

} // namespace

std::vector<TFigure> ChangeFigures() {
  return {
      // Where the floor is a round number it is a limit that was set.
      {"changes", "latency", "ms", &Latency, [] { return 30.0; }, 1.0},
      {"changes", "to_queue", "us/event", [] { return ChangesToQueue(PacedCount, Pace).each; }, [] { return 50.0; },
       1.0},
      {"changes", "lost_to_queue", "events", &LostOnce, [] { return 1.0; }, 0.5},
      {"changes", "to_paths", "us/event", [] { return ChangesToPaths(3000); }, [] { return 333.0; }, 1.0},
      {"changes", "to_lists", "us/event", &ToLists, &ParseLists, 1.3},
      {"changes", "threads_of_1000_watches", "threads", &ThreadsOnce, [] { return 1.0; }, 1.0},
      {"changes", "longest_turn_of_100000", "ms", &LongestTurnOnce, [] { return 50.0; }, 1.0},
  };
}

} // namespace kiv::bench
