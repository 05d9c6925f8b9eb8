// How the directory watcher works.
//
// Threads: callers put commands into a list and wake the thread that serves the watch, one for local folders and one
// for those on the network; it alone touches its watches, trees and handles. It waits at a completion port for whatever
// comes first: a command, a buffer that a directory handle filled, or the time to look after watched folders that have
// gone.
//
// A handle's buffer is copied and the handle armed again before anything else is done with it; all buffers that are
// filled are taken before the next few records are looked at. A closed handle's memory
// stays until the platform has said that it has let go of it.
#include <platform/fill/DirectoryWatcher.h>

#include <platform/ErrorMode.h>
#include <platform/Handles.h>
#include <platform/Lifecycle.h>
#include <platform/Signal.h>
#include <platform/Threads.h>
#include <platform/fill/DirectoryHandle.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <functional>
#include <iterator>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace kiv {

namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t IdleAfter = 50;       // ms without a report of a watch
constexpr std::uint64_t LookAfter = 2000;     // ms between looks at the watched folders
constexpr std::size_t LooksAtOnce = 256;      // folders
constexpr std::uint64_t ReleasedFor = 10'000; // ms that a drive's folders stay closed for an eject
constexpr std::size_t MostReports = 1024;     // kept
constexpr std::size_t RecordsAtOnce = 64;
constexpr auto LongestRelease = 1000ms;

/// What a caller waits for, a limited time: either it hears the answer, or the thread hears that it has gone on.
class TBegin {
public:
  enum class TState { Waiting, GivenUp, Opened, Failed };

  /// False if nobody waits any more.
  bool Answer(TState pState) noexcept {
    TState waiting = TState::Waiting;
    const bool heard = fState.compare_exchange_strong(waiting, pState);
    fDone.Set();
    return heard;
  }
  TState Await(std::chrono::milliseconds pLongest) noexcept {
    if (fDone.WaitFor(pLongest)) return fState;
    TState state = TState::Waiting;
    return fState.compare_exchange_strong(state, TState::GivenUp) ? TState::GivenUp : state;
  }

private:
  TSignal fDone;
  std::atomic<TState> fState{TState::Waiting};
};

/// One watch; the thread's own, but for the number.
struct TWatch final : IWatchedFolders {
  using TReports = std::deque<TDirectoryPort::TReport>;

  TWatch(std::uint32_t pNumber, TDirectoryPort& pPort, TReports& pReports, const std::wstring& pPath,
         TWatchedTree::TOptions pOptions, std::shared_ptr<TNoticeQueue> pQueue, HWND pDeviceWindow)
      : number(pNumber), port(pPort), reports(pReports), queue(std::move(pQueue)), deviceWindow(pDeviceWindow),
        tree(pPath, pOptions, *this, [this](TDirectoryNotice notice) { queue->Push(number, std::move(notice)); }) {}

  std::uint64_t Open(std::uint64_t pFolder, const std::wstring& pPath, bool pSubtree) override {
    auto handle = port.Open(pPath, pSubtree, {this, pFolder});
    if (!handle) return 0;
    if (pFolder == TWatchedTree::RootFolder) handle->AskBeforeEject(deviceWindow);
    handles[pFolder] = handle;
    return handle->number;
  }
  void Close(std::uint64_t pFolder) noexcept override {
    const auto found = handles.find(pFolder);
    if (found == handles.end()) return;
    port.Close(found->second);
    handles.erase(found);
    std::erase_if(reports,
                  [&](const auto& report) { return report.tag.owner == this && report.tag.folder == pFolder; });
  }
  // Handles that were closed count until the platform has let go of them.
  std::uint64_t Reopen(std::uint64_t pFolder, const std::wstring& pPath) override {
    Close(pFolder);
    port.Settle();
    return Open(pFolder, pPath, false);
  }
  std::uint64_t NumberOf(const std::wstring& pPath) override { return FileNumberAt(pPath); }
  std::uint64_t List(const std::wstring& pPath, bool pFiles, std::vector<TEntry>& pEntries) override {
    return ListDirectory(pPath, pFiles, pEntries);
  }
  TKind KindOf(const std::wstring& pPath) override { return KindOfPath(pPath); }
  bool IsEmpty(const std::wstring& pPath) override { return IsDirectoryEmpty(pPath); }

  const TDirectoryHandle* Root() const {
    const auto root = handles.find(TWatchedTree::RootFolder);
    return root == handles.end() ? nullptr : root->second;
  }

  const std::uint32_t number;
  TDirectoryPort& port;
  TReports& reports; // of all watches
  const std::shared_ptr<TNoticeQueue> queue;
  const HWND deviceWindow;
  std::map<std::uint64_t, TDirectoryHandle*> handles;
  std::uint64_t releasedUntil = 0;
  std::uint64_t quietSince = 0; // the last report, or what else an idle time must come behind
  bool complete = false;        // nothing is left to be opened
  bool tellComplete = false;    // the listeners may have listed the folder before everything was open
  std::shared_ptr<TBegin> begin;
  TWatchedTree tree; // last: its end closes handles
};

class TWatcherThread {
public:
  explicit TWatcherThread(bool pOnNetwork) : fOnNetwork(pOnNetwork), fThread([this] { Run(); }) {}
  ~TWatcherThread() {
    Command([this] { fStopped = true; });
    fThread.join();
  }

  void Command(std::function<void()> pCommand) {
    {
      const std::lock_guard guard(fLock);
      fCommands.push_back(std::move(pCommand));
    }
    fPort.Wake();
  }

  struct TRequest {
    std::uint32_t number = 0;
    std::wstring path;
    bool recursive = false;
    std::shared_ptr<TNoticeQueue> queue;
    HWND deviceWindow = nullptr;
  };

  void Begin(const TRequest& pRequest, const std::shared_ptr<TBegin>& pBegin) {
    const TWatchedTree::TOptions options{pRequest.recursive, pRequest.recursive && SubtreesAreReported()};
    auto watch = std::make_unique<TWatch>(pRequest.number, fPort, fReports, pRequest.path, options, pRequest.queue,
                                          pRequest.deviceWindow);
    watch->begin = pBegin;
    if (!watch->tree.Open()) {
      if (pBegin->Answer(TBegin::TState::Failed)) return;
      // Its caller believes in it: it is looked for like one that has gone.
      watch->begin.reset();
      watch->complete = true;
    }
    fWatches.emplace(pRequest.number, std::move(watch));
  }

  void End(std::uint32_t pNumber) {
    const auto found = fWatches.find(pNumber);
    if (found == fWatches.end()) return;
    found->second->queue->End(pNumber);
    fWatches.erase(found);
  }

  void Release(HANDLE pHandle) {
    const auto asked = std::find_if(fWatches.begin(), fWatches.end(), [pHandle](const auto& watch) {
      return watch.second->Root() && watch.second->Root()->file.Get() == pHandle;
    });
    if (asked == fWatches.end()) return; // let go with another one
    const std::uint32_t volume = asked->second->Root()->Volume();
    for (auto& [number, watch] : fWatches) {
      if (!watch->Root() || watch->Root()->Volume() != volume) continue;
      watch->releasedUntil = GetTickCount64() + ReleasedFor;
      Lose(*watch);
    }
    fPort.Settle();
  }

private:
  void Run() noexcept {
    SetCurrentThreadName(L"Kiv directory watcher");
    const ScopedErrorMode mode;
    while (!fStopped) {
      try {
        RunCommands();
        if (!fStopped) Turn();
      } catch (const std::bad_alloc&) {
        // What couldn't be told is told as one update of everything.
        for (auto& [number, watch] : fWatches) Survive([&watch = watch] { watch->tree.TellUpdate(); });
      }
    }
    fWatches.clear();
    Survive([this] { fPort.Settle(); });
  }

  template <typename F>
  static void Survive(F&& pAct) noexcept {
    try {
      pAct();
    } catch (...) {
      // Without memory there is nothing left to be done.
    }
  }

  // One by one: those behind one that has no memory must not be lost.
  void RunCommands() {
    for (;;) {
      std::function<void()> command;
      {
        const std::lock_guard guard(fLock);
        if (fCommands.empty()) return;
        command = std::move(fCommands.front());
        fCommands.pop_front();
      }
      command();
    }
  }

  void Turn() {
    const bool scanning = ScanSome();
    const bool busy = scanning || !fReports.empty();
    TDirectoryPort::TReport report;
    TDirectoryPort::TEvent event = fPort.Await(busy ? 0 : WaitTime(), report);
    // All that is ready, before any of it is looked at: a buffer that nobody takes overflows soon.
    while (event != TDirectoryPort::TEvent::TimeOut && fReports.size() < MostReports) {
      if (event == TDirectoryPort::TEvent::Report) fReports.push_back(std::move(report));
      report = {};
      event = fPort.Await(0, report);
    }
    if (event == TDirectoryPort::TEvent::Report) fReports.push_back(std::move(report));
    if (!fReports.empty()) TakeReport();
    if (event == TDirectoryPort::TEvent::TimeOut) TellIdle();
    LookAround();
  }

  // Each for itself: where something is reported all the time, the others have their silence all the same.
  void TellIdle() {
    for (auto& [number, watch] : fWatches) {
      if (!watch->complete || !watch->tree.WantsIdle() || GetTickCount64() < watch->quietSince + IdleAfter) continue;
      const auto is_of = [owner = watch.get()](const auto& report) { return report.tag.owner == owner; };
      if (std::any_of(fReports.begin(), fReports.end(), is_of)) continue;
      watch->tree.OnIdle();
      watch->quietSince = GetTickCount64();
    }
  }

  // Some of the oldest one.
  void TakeReport() {
    TDirectoryPort::TReport& first = fReports.front();
    TDirectoryPort::TReport part{first.kind, first.tag, {}};
    const std::size_t count = std::min(RecordsAtOnce, first.records.size());
    const auto end = first.records.begin() + static_cast<std::ptrdiff_t>(count);
    part.records.assign(std::make_move_iterator(first.records.begin()), std::make_move_iterator(end));
    first.records.erase(first.records.begin(), end);
    if (first.records.empty()) fReports.pop_front();
    OnReport(part);
  }

  DWORD WaitTime() const {
    if (fWatches.empty()) return INFINITE;
    std::uint64_t next = fNextLook;
    for (const auto& [number, watch] : fWatches) {
      if (watch->complete && watch->tree.WantsIdle()) next = std::min(next, watch->quietSince + IdleAfter);
    }
    const std::uint64_t now = GetTickCount64();
    return now >= next ? 0 : static_cast<DWORD>(next - now);
  }

  bool ScanSome() {
    bool any = false;
    for (auto& [number, watch] : fWatches) {
      if (watch->complete || !watch->tree.IsOpen()) continue;
      any = true;
      if (!watch->tree.ScanSome()) OnComplete(*watch);
    }
    return any;
  }

  static void OnComplete(TWatch& pWatch) {
    pWatch.complete = true;
    pWatch.quietSince = GetTickCount64();
    const bool late = pWatch.begin && !pWatch.begin->Answer(TBegin::TState::Opened);
    pWatch.begin.reset();
    if (std::exchange(pWatch.tellComplete, false) || late) pWatch.tree.TellUpdate();
  }

  void OnReport(TDirectoryPort::TReport& pReport) {
    auto& watch = *static_cast<TWatch*>(pReport.tag.owner);
    TWatchedTree& tree = watch.tree;
    watch.quietSince = GetTickCount64();
    switch (pReport.kind) {
    case TDirectoryPort::TReport::TKind::Records:
      return tree.OnRecords(pReport.tag.folder, std::move(pReport.records));
    case TDirectoryPort::TReport::TKind::Overflow:
      return tree.OnOverflow(pReport.tag.folder);
    default:
      // A folder below was closed by whoever took it away; the one above reports that.
      if (pReport.tag.folder == TWatchedTree::RootFolder) Lose(watch);
    }
  }

  static void Lose(TWatch& pWatch) {
    if (!pWatch.tree.IsOpen()) return;
    pWatch.tree.Close();
    pWatch.complete = true;
    if (pWatch.begin) pWatch.begin->Answer(TBegin::TState::Opened);
    pWatch.begin.reset();
    pWatch.tree.TellUpdate();
  }

  // A folder's own end or renaming isn't reported by its handle.
  void LookAround() {
    const std::uint64_t now = GetTickCount64();
    if (now < fNextLook) return;
    fNextLook = now + LookAfter;
    auto at = fWatches.upper_bound(fLastLooked);
    for (std::size_t i = 0; i < std::min(LooksAtOnce, fWatches.size()); ++i) {
      if (at == fWatches.end()) at = fWatches.begin();
      fLastLooked = at->first;
      LookAfterWatch(*at->second, now);
      ++at;
    }
  }

  void LookAfterWatch(TWatch& pWatch, std::uint64_t pNow) {
    TWatchedTree& tree = pWatch.tree;
    if (tree.IsOpen()) {
      // A server that doesn't answer would hold up the other watches, and its end is reported.
      if (fOnNetwork) return;
      if (FileNumberAt(tree.Path()) != pWatch.Root()->number) return Lose(pWatch);
      if (!pWatch.complete || !pWatch.reports.empty()) return;
      tree.LetGoOfEmpty();
      pWatch.quietSince = GetTickCount64(); // what it has seen to be empty must be so for a whole silence
    } else if (pNow >= pWatch.releasedUntil && tree.Open()) {
      pWatch.complete = false;
      pWatch.tellComplete = true;
    }
  }

  bool SubtreesAreReported() {
    if (!fSubtrees) fSubtrees = ProbeSubtrees();
    return *fSubtrees;
  }

  const bool fOnNetwork;
  std::mutex fLock;
  std::deque<std::function<void()>> fCommands; // under fLock
  TDirectoryPort fPort;
  TWatch::TReports fReports; // read, and not looked at
  std::map<std::uint32_t, std::unique_ptr<TWatch>> fWatches;
  std::uint32_t fLastLooked = 0;
  std::uint64_t fNextLook = 0;
  std::optional<bool> fSubtrees;
  bool fStopped = false;
  std::thread fThread; // last: it uses the rest
};

struct THolder {
  std::mutex lock;
  std::unique_ptr<TWatcherThread> threads[2]; // under lock; of local folders, of those on the network
};

// Never destroyed: Shutdown empties it.
THolder& Holder() {
  static auto* const holder = new THolder;
  return *holder;
}

void EndThreads() {
  std::unique_ptr<TWatcherThread> threads[2];
  const std::lock_guard guard(Holder().lock);
  std::swap(threads, Holder().threads);
}

std::atomic<std::uint32_t> gLastNumber{0};

} // namespace

std::uint32_t DirectoryWatcher::Watch(const std::wstring& pPath, bool pRecursive, std::shared_ptr<TNoticeQueue> pQueue,
                                      HWND pDeviceWindow, std::uint32_t pLongest, bool pOnNetwork) {
  const std::uint32_t number = ++gLastNumber;
  const auto begin = std::make_shared<TBegin>();
  {
    const std::lock_guard guard(Holder().lock);
    std::unique_ptr<TWatcherThread>& standing = Holder().threads[pOnNetwork ? 1 : 0];
    if (!standing) {
      standing = std::make_unique<TWatcherThread>(pOnNetwork);
      AtShutdown(&EndThreads);
    }
    pQueue->Begin(number, pPath);
    TWatcherThread& thread = *standing;
    const TWatcherThread::TRequest request{number, pPath, pRecursive, pQueue, pDeviceWindow};
    thread.Command([&thread, request, begin] { thread.Begin(request, begin); });
  }
  if (begin->Await(std::chrono::milliseconds(pLongest)) != TBegin::TState::Failed) return number;
  pQueue->End(number);
  return 0;
}

void DirectoryWatcher::Unwatch(std::uint32_t pWatch) noexcept {
  const std::lock_guard guard(Holder().lock);
  for (const auto& thread : Holder().threads) {
    if (!thread) continue;
    try {
      thread->Command([&thread = *thread, pWatch] { thread.End(pWatch); });
    } catch (...) {
      // Without memory the watch goes on, and nobody hears it.
    }
  }
}

void DirectoryWatcher::ReleaseVolume(HANDLE pHandle) noexcept {
  try {
    const auto done = std::make_shared<TSignal>();
    {
      const std::lock_guard guard(Holder().lock);
      const auto& local = Holder().threads[0];
      if (!local) return;
      TWatcherThread& thread = *local;
      thread.Command([&thread, pHandle, done] {
        thread.Release(pHandle);
        done->Set();
      });
    }
    done->WaitFor(LongestRelease);
  } catch (...) {
    // Without memory the medium stays.
  }
}

} // namespace kiv
