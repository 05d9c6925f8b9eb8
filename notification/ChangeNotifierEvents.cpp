// The road of an event through a notifier, and the notifier's end.
//
// Phases: the source hands an event over on the main thread (OnChangeArrived). Delivered at once, ProcessChangeEvent
// runs there. Otherwise a work item of the global pool reloads the lists, touching nothing of the notifier, enters the
// notifier's life (TLife), and runs ProcessChangeEvent. The destructor closes that life: nobody enters any more, and it
// waits for those inside. Events that wait for a worker are limited: what comes beyond that is lost, and when half of
// them have been taken, one update of everything that is watched is told.
#include <notification/ChangeNotifier.h>

#include <core/DebugLog.h>
#include <framework/Application.h>
#include <platform/MainThread.h>
#include <threading/WorkProcedures.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <thread>
#include <utility>

namespace kiv {

namespace {

constexpr std::uint64_t ReloadLimit = 1000; // milliseconds, on the main thread
constexpr std::size_t MostWaiting = 10'000; // events for workers

} // namespace

/// Who is inside a notifier on other threads than the main thread, and whether it lives.
struct TKivShellChangeNotifier::TLife {
  /// Leaves behind an Enter.
  struct TVisit {
    TLife& life;
    ~TVisit() { life.Leave(); }
  };

  bool Enter() {
    const std::lock_guard guard(lock);
    if (closed) return false;
    inside.push_back(std::this_thread::get_id());
    return true;
  }
  void Leave() {
    const std::lock_guard guard(lock);
    inside.erase(std::find(inside.begin(), inside.end(), std::this_thread::get_id()));
    left.notify_all();
  }
  /// Until nobody is inside but the caller's own thread.
  void Close() {
    std::unique_lock guard(lock);
    closed = true;
    const auto self = std::this_thread::get_id();
    const auto alone = [&] { return std::all_of(inside.begin(), inside.end(), [&](auto id) { return id == self; }); };
    while (!alone()) {
      // A handler may wait for the main thread.
      if (MainThread::IsCurrent()) {
        guard.unlock();
        try {
          MainThread::CheckSynchronize();
        } catch (...) { // of whatever else waits for this thread
          ReportException(std::current_exception());
        }
        guard.lock();
      }
      left.wait_for(guard, std::chrono::milliseconds(5), alone);
    }
  }
  bool IsClosed() {
    const std::lock_guard guard(lock);
    return closed;
  }
  /// One more event for a worker; false if there are too many.
  bool Admit() {
    const std::lock_guard guard(lock);
    overflowed = overflowed || waiting >= MostWaiting;
    waiting += overflowed ? 0 : 1;
    return !overflowed;
  }
  /// One of them is taken, or dropped.
  void Uncount() {
    const std::lock_guard guard(lock);
    --waiting;
  }
  /// Whether an update of everything is due.
  bool TakeOverflow() {
    const std::lock_guard guard(lock);
    return waiting <= MostWaiting / 2 && std::exchange(overflowed, false);
  }

  std::mutex lock;
  std::condition_variable left;
  bool closed = false;
  std::vector<std::thread::id> inside;
  std::size_t waiting = 0;
  bool overflowed = false;
};

TKivShellChangeNotifier::TKivShellChangeNotifier(TComponent* pOwner, bool pCheckForDuplicates)
    : TKivBaseComponent(pOwner), fCheckForDuplicates(pCheckForDuplicates), fLife(std::make_shared<TLife>()) {}

void TKivShellChangeNotifier::EndEvents() {
  BeginDestruction();
  fCancellationToken.Cancel();
  // Before the source goes: a handler that still runs on a worker may end watches.
  fLife->Close();
  fDuplicates->Close();
}

TKivShellChangeNotifier::~TKivShellChangeNotifier() {
  EndEvents();
  const auto end = [this] {
    fNotificationHandles.RemoveAll();
    if (fSource) fSource->Close();
    fSource.reset();
  };
  // A call that was queued for the main thread may run there just now, and may only just open the source.
  if (MainThread::IsCurrent()) {
    end();
  } else {
    MainThread::Synchronize(end);
  }
}

bool TKivShellChangeNotifier::IsGone(TLife& pLife) {
  return pLife.IsClosed();
}

bool TKivShellChangeNotifier::Accepts(TNotificationEvent pEvent) {
  return GetEnabled() && GetNotificationEvent(pEvent);
}

void TKivShellChangeNotifier::OnChangeArrived(TNotificationEvent pEvent, ComPtr<IItemIdList> pFirst,
                                              ComPtr<IItemIdList> pSecond) {
  // While the destructor waits, the source is still there.
  if (!Accepts(pEvent) || fLife->IsClosed()) return;
  // The shell tells of all drives; only those count that are watched themselves.
  if (pEvent == neDriveSpaceChange && pFirst && !fNotificationHandles.Find(pFirst.Get())) return;
  const TChangedLists lists{std::move(pFirst), std::move(pSecond)};
  if (fNotifyAsynchronously) {
    ProcessOnWorker(pEvent, lists);
  } else {
    ProcessChangeEvent(pEvent, lists);
  }
}

void TKivShellChangeNotifier::ProcessOnWorker(TNotificationEvent pEvent, const TChangedLists& pItemIdLists) {
  // Whoever ends the pool's items drops the closure as well.
  struct TTicket {
    explicit TTicket(std::shared_ptr<TLife> pLife) : life(std::move(pLife)), admitted(life->Admit()) {}
    TTicket(const TTicket&) = delete;
    TTicket& operator=(const TTicket&) = delete;
    ~TTicket() { Use(); }
    void Use() {
      if (std::exchange(admitted, false)) life->Uncount();
    }
    const std::shared_ptr<TLife> life;
    bool admitted;
  };
  const auto ticket = std::make_shared<TTicket>(fLife);
  if (!ticket->admitted) return;
  const ComPtr<ICancellationIndicator> indicator = fCancellationToken;
  TAsyncProcedure::CreateAndQueue(
      [this, pEvent, lists = pItemIdLists, indicator, ticket, life = fLife] {
        ticket->Use();
        if (life->TakeOverflow() && life->Enter()) {
          const TLife::TVisit visit{*life};
          TellUpdates();
        }
        VisitOnWorker(life, indicator, pEvent, lists);
      },
      indicator);
}

// Behind lost events. On a worker.
void TKivShellChangeNotifier::TellUpdates() {
  if (!GetNotificationEvent(neFolderUpdate)) return;
  for (const auto& watch : fNotificationHandles.All()) {
    if (watch.details.EventFilter.Contains(neFolderUpdate)) ProcessOnWorker(neFolderUpdate, {watch.list, nullptr});
  }
}

// The notifier may be gone, so nothing of it is touched but within its life.
void TKivShellChangeNotifier::VisitOnWorker(const std::shared_ptr<TLife>& pLife,
                                            const ComPtr<ICancellationIndicator>& pIndicator, TNotificationEvent pEvent,
                                            const TChangedLists& pItemIdLists) {
  // Slow for a dead share, and nobody may have to wait for it.
  INotifierPlatform& platform = NotifierPlatform();
  if (pItemIdLists.first) platform.ReloadOnWorker(pItemIdLists.first.Get());
  if (pItemIdLists.second && pItemIdLists.second->IsResolved()) platform.ReloadOnWorker(pItemIdLists.second.Get());
  if (pIndicator->IsCancellationRequested() || !pLife->Enter()) return;
  const TLife::TVisit visit{*pLife};
  ProcessChangeEvent(pEvent, pItemIdLists);
}

// False if the event has no path to tell.
bool TKivShellChangeNotifier::TellPath(TNotificationEvent pEvent, const TChangedLists& pItemIdLists,
                                       std::wstring& pPath) {
  if (pEvent == neImageListChange) {
    // An index of the system's images, as the shell sends it.
    const auto* const index = pItemIdLists.second ? pItemIdLists.second->WindowsPointer() : nullptr;
    pPath = std::to_wstring(reinterpret_cast<std::uintptr_t>(index));
  } else if (pEvent != neAssociationChange && pItemIdLists.first) {
    pPath = pItemIdLists.first->Path();
  }
  TDebugLog::LogDebugVerboseMessage(L"TKivShellChangeNotifier: " + pPath + L"  (" +
                                    std::to_wstring(static_cast<int>(pEvent)) + L")");
  return !pPath.empty() || pEvent == neDriveSpaceChange;
}

void TKivShellChangeNotifier::ProcessChangeEvent(TNotificationEvent pEvent, const TChangedLists& pItemIdLists) {
  INotifierPlatform& platform = NotifierPlatform();
  // What is asked may be foreign code that lets messages in, and either handler the notifier's end.
  const std::shared_ptr<TLife> life = fLife;
  IItemIdList* const first = pItemIdLists.first.Get();
  IItemIdList* const second = pItemIdLists.second.Get();
  if (MainThread::IsCurrent()) {
    const ComPtr<ICancellationIndicator> indicator = fCancellationToken;
    const auto answers = [&](IItemIdList* list) {
      return platform.Reload(list, ReloadLimit, indicator) && !life->IsClosed();
    };
    if ((first && !answers(first)) || (second && second->IsResolved() && !answers(second))) return;
  }
  TNotificationEvent event = pEvent;
  if (event == neFileChange && first && platform.IsFolder(first)) event = neFolderUpdate;
  if (life->IsClosed() || (event != pEvent && !GetNotificationEvent(event))) return;
  const auto duplicates = fDuplicates;
  if (!duplicates->Passes(event, first) || life->IsClosed()) return;
  std::wstring path;
  if (fOnChange && TellPath(event, pItemIdLists, path)) {
    DoOnChange(event, path, second ? second->Path() : std::wstring());
    if (life->IsClosed()) return;
  }
  DoOnChangePidl(event, first, second);
}

void TKivShellChangeNotifier::DoOnChange(TNotificationEvent pEvent, const std::wstring& pPath1,
                                         const std::wstring& pPath2) {
  const TKivShellNotifierEvent event = fOnChange;
  if (event) event(this, pEvent, pPath1, pPath2);
}

void TKivShellChangeNotifier::DoOnChangePidl(TNotificationEvent pEvent, IItemIdList* pFirst, IItemIdList* pSecond) {
  const TKivShellNotifierEventPIDL event = fOnChangePIDL;
  const std::shared_ptr<TLife> life = fLife;
  if (event && pFirst && !pFirst->IsInvalid() && !life->IsClosed()) event(this, pEvent, pFirst, pSecond);
}

} // namespace kiv
