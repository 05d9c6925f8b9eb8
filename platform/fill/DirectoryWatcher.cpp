// How the directory watcher works.
//
// Threads: callers put commands into a list and wake the thread that serves the watch, one for local folders and one
// for those on the network; it alone touches its watches, trees and handles. It waits at a completion port for whatever
// comes first: a command, a buffer that a directory handle filled, or the time to look after watched folders that have
// gone.
//
// All buffers that are filled are taken, and their handles armed again, before the next few records are looked at.
// Where changes follow each other closely, the thread lets some of them gather before that: to hear of each one alone
// costs many times as much as to look at it. A closed handle's memory stays until the platform has said that it has let
// go of it.
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
#include <vector>

namespace kiv {

namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t IdleAfter = 50;       // ms without a report of a watch
constexpr std::uint64_t WakeAfter = 50;       // ms between attempts to wake who takes notices
constexpr std::uint64_t LookAfter = 2000;     // ms between looks at the watched folders
constexpr std::size_t LooksAtOnce = 256;      // folders
constexpr std::uint64_t ReleasedFor = 10'000; // ms that a drive's folders stay closed for an eject
constexpr std::size_t RecordsAtOnce = 64;
constexpr std::size_t ToldAtOnce = 1024; // notices; the queue limits their number
constexpr std::uint64_t StreamGap = 20;  // ms; what comes sooner behind something else is part of a stream
constexpr std::size_t FewRecords = 16;   // of a stream in one turn
constexpr DWORD GatherFor = 1;           // ms
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
  TWatch(std::uint32_t pNumber, TDirectoryPort& pPort, TUnreadReports& pReports, const std::wstring& pPath,
         TWatchedTree::TOptions pOptions, std::shared_ptr<TNoticeQueue> pQueue, HWND pDeviceWindow)
      : number(pNumber), port(pPort), reports(pReports), queue(std::move(pQueue)), deviceWindow(pDeviceWindow),
        tree(pPath, pOptions, *this, [this](TDirectoryNotice notice) {
          told.push_back(std::move(notice));
          if (told.size() >= ToldAtOnce) Tell();
        }) {}

  // All at once: the taker is woken once, and there is one lock for them.
  void Tell() {
    if (!told.empty()) {
      unheard = !queue->Push(number, std::exchange(told, {}));
    } else if (unheard) {
      unheard = !queue->Wake();
    }
  }

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
    reports.Drop(this, pFolder);
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
  TUnreadReports& reports; // of all watches
  const std::shared_ptr<TNoticeQueue> queue;
  const HWND deviceWindow;
  std::map<std::uint64_t, TDirectoryHandle*> handles;
  std::uint64_t releasedUntil = 0;
  std::uint64_t quietSince = 0; // the last report, or what else an idle time must come behind
  bool complete = false;        // nothing is left to be opened
  bool tellComplete = false;    // the listeners may have listed the folder before everything was open
  std::vector<TDirectoryNotice> told;
  bool isFile = false;
  bool wasOpen = false; // then it is a folder that has gone, whatever stands there meanwhile
  bool unheard = false; // the queue's taker couldn't be woken
  std::shared_ptr<TBegin> begin;
  TWatchedTree tree; // last: its end closes handles
};

class TWatcherThread {
public:
  explicit TWatcherThread(bool pOnNetwork) : fOnNetwork(pOnNetwork), fThread([this] { Run(); }) {}
  ~TWatcherThread() {
    Command([this] { fStopped = true; });
    HANDLE handle = nullptr;
    {
      const std::lock_guard guard(fLock);
      handle = fHandle.Get();
    }
    // It may stand in a question to a server that has gone.
    while (handle && WaitForSingleObject(handle, 100) == WAIT_TIMEOUT) CancelSynchronousIo(handle);
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
      TellIfFile(*watch);
    } else {
      watch->wasOpen = true;
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
    {
      const std::lock_guard guard(fLock);
      fHandle = TUniqueHandle(OpenThread(THREAD_TERMINATE | SYNCHRONIZE, FALSE, GetCurrentThreadId()));
    }
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
    for (auto& [number, watch] : fWatches) watch->Tell();
    if (fReports.IsEmpty() && fFew) Sleep(GatherFor);
    fPort.Rearm(fReports);
    const bool busy = scanning || !fReports.IsEmpty();
    TDirectoryReport report;
    std::size_t count = 0;
    TDirectoryPort::TEvent event = fPort.Await(busy ? 0 : WaitTime(), report);
    for (; event != TDirectoryPort::TEvent::TimeOut; event = fPort.Await(0, report)) {
      if (event != TDirectoryPort::TEvent::Report) continue;
      count += report.records.size();
      fReports.Add(std::move(report));
    }
    NoteStream(count);
    if (fReports.Take(RecordsAtOnce, report)) OnReport(report);
    TellIdle();
    LookAround();
  }

  void NoteStream(std::size_t pCount) {
    fFew = false;
    if (pCount == 0) return;
    const std::uint64_t now = GetTickCount64();
    fFew = pCount < FewRecords && now < fLastReport + StreamGap;
    fLastReport = now;
  }

  // Each for itself: where something is reported all the time, the others have their silence all the same.
  void TellIdle() {
    for (auto& [number, watch] : fWatches) {
      if (!watch->complete || !watch->tree.WantsIdle() || GetTickCount64() < watch->quietSince + IdleAfter) continue;
      if (fReports.HasOf(watch.get())) continue;
      watch->tree.OnIdle();
      watch->quietSince = GetTickCount64();
    }
  }

  DWORD WaitTime() const {
    if (fWatches.empty()) return INFINITE;
    const std::uint64_t now = GetTickCount64();
    std::uint64_t next = fNextLook;
    for (const auto& [number, watch] : fWatches) {
      if (watch->complete && watch->tree.WantsIdle()) next = std::min(next, watch->quietSince + IdleAfter);
      if (watch->unheard) next = std::min(next, now + WakeAfter);
    }
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

  void OnReport(TDirectoryReport& pReport) {
    auto& watch = *static_cast<TWatch*>(pReport.owner);
    TWatchedTree& tree = watch.tree;
    watch.quietSince = GetTickCount64();
    switch (pReport.kind) {
    case TDirectoryReport::TKind::Records:
      return tree.OnRecords(pReport.folder, std::move(pReport.records));
    case TDirectoryReport::TKind::Overflow:
      return tree.OnOverflow(pReport.folder);
    default:
      // A folder below was closed by whoever took it away; the one above reports that.
      if (pReport.folder == TWatchedTree::RootFolder) Lose(watch);
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
      if (!pWatch.complete || pWatch.reports.HasOf(&pWatch)) return;
      tree.LetGoOfEmpty();
      pWatch.quietSince = GetTickCount64(); // what it has seen to be empty must be so for a whole silence
    } else if (pNow < pWatch.releasedUntil) {
      return; // a medium that is being ejected isn't touched
    } else if (tree.Open()) {
      pWatch.complete = false;
      pWatch.tellComplete = true;
      pWatch.wasOpen = true;
    } else {
      TellIfFile(pWatch);
    }
  }

  // Once: it is ended when that is heard.
  static void TellIfFile(TWatch& pWatch) {
    if (pWatch.isFile || pWatch.wasOpen || KindOfPath(pWatch.tree.Path()) != IWatchedFolders::TKind::File) return;
    pWatch.isFile = true;
    pWatch.told.push_back({TDirectoryEvent::NoFolder, pWatch.tree.Path(), {}});
  }

  bool SubtreesAreReported() {
    if (!fSubtrees) fSubtrees = ProbeSubtrees();
    return *fSubtrees;
  }

  const bool fOnNetwork;
  std::mutex fLock;
  std::deque<std::function<void()>> fCommands; // under fLock
  TUniqueHandle fHandle;                       // under fLock; of the thread itself
  TDirectoryPort fPort;
  TUnreadReports fReports;
  bool fFew = false; // in the last turn, of a stream
  std::uint64_t fLastReport = 0;
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
