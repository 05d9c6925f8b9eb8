// The road of an event through a notifier, and the notifier's end.
//
// Phases: the source hands an event over on the main thread (OnChangeArrived). Delivered at once, ProcessChangeEvent
// runs there. Otherwise a work item of the global pool reloads the lists, touching nothing of the notifier, enters the
// notifier's life (TLife), and runs ProcessChangeEvent. The destructor closes that life: nobody enters any more, and it
// waits for those inside.
#include <notification/ChangeNotifier.h>

#include <core/DebugLog.h>
#include <platform/MainThread.h>
#include <threading/WorkProcedures.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <thread>

namespace kiv {

namespace {

constexpr std::uint64_t ReloadLimit = 1000; // milliseconds, on the main thread

} // namespace

/// Who is inside a notifier on other threads than the main thread, and whether it lives.
struct TKivShellChangeNotifier::TLife {
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
        MainThread::CheckSynchronize();
        guard.lock();
      }
      left.wait_for(guard, std::chrono::milliseconds(5), alone);
    }
  }
  bool IsClosed() {
    const std::lock_guard guard(lock);
    return closed;
  }

  std::mutex lock;
  std::condition_variable left;
  bool closed = false;
  std::vector<std::thread::id> inside;
};

TKivShellChangeNotifier::TKivShellChangeNotifier(TComponent* pOwner, bool pCheckForDuplicates)
    : TKivBaseComponent(pOwner), fCheckForDuplicates(pCheckForDuplicates), fLife(std::make_shared<TLife>()) {}

TKivShellChangeNotifier::~TKivShellChangeNotifier() {
  BeginDestruction();
  fDuplicates.Close();
  fCancellationToken.Cancel();
  // Before the source goes: a handler that still runs on a worker may end watches.
  fLife->Close();
  const auto end = [this] {
    Unregister(fNotificationHandles.RemoveAll());
    fSource.reset();
  };
  // A call that was queued for the main thread may run there just now, and may only just open the source.
  if (MainThread::IsCurrent()) {
    end();
  } else {
    MainThread::Synchronize(end);
  }
}

bool TKivShellChangeNotifier::Accepts(TNotificationEvent pEvent) {
  return GetEnabled() && GetNotificationEvent(pEvent);
}

void TKivShellChangeNotifier::OnChangeArrived(TNotificationEvent pEvent, ComPtr<IItemIdList> pFirst,
                                              ComPtr<IItemIdList> pSecond) {
  // While the destructor waits, the source is still there.
  if (!Accepts(pEvent) || fLife->IsClosed()) return;
  // The shell tells of all drives; only those count that are watched themselves.
  if (pEvent == neDriveSpaceChange && pFirst) {
    const std::lock_guard guard(fListLock);
    if (!fNotificationHandles.Find(pFirst.Get())) return;
  }
  const TChangedLists lists{std::move(pFirst), std::move(pSecond)};
  if (fNotifyAsynchronously) {
    ProcessOnWorker(pEvent, lists);
  } else {
    ProcessChangeEvent(pEvent, lists);
  }
}

void TKivShellChangeNotifier::ProcessOnWorker(TNotificationEvent pEvent, const TChangedLists& pItemIdLists) {
  const ComPtr<ICancellationIndicator> indicator = fCancellationToken;
  TAsyncProcedure::CreateAndQueue(
      [this, pEvent, lists = pItemIdLists, indicator, life = fLife] {
        // Slow for a dead share, and nobody may have to wait for it.
        if (lists.first && lists.first->IsResolved()) lists.first->Reload();
        if (lists.second && lists.second->IsResolved()) lists.second->Reload();
        if (indicator->IsCancellationRequested() || !life->Enter()) return;
        struct TVisit {
          TLife& life;
          ~TVisit() { life.Leave(); }
        } const visit{*life};
        ProcessChangeEvent(pEvent, lists);
      },
      indicator);
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
  IItemIdList* const first = pItemIdLists.first.Get();
  IItemIdList* const second = pItemIdLists.second.Get();
  if (MainThread::IsCurrent()) {
    const auto answers = [&](IItemIdList* list) { return platform.Reload(list, ReloadLimit, fCancellationToken); };
    if ((first && !answers(first)) || (second && second->IsResolved() && !answers(second))) return;
  }
  TNotificationEvent event = pEvent;
  if (event == neFileChange && first && platform.IsFolder(first)) {
    event = neFolderUpdate;
    if (!GetNotificationEvent(event)) return;
  }
  if (!fDuplicates.Passes(event, first)) return;
  // Any of the two handlers may be the notifier's end.
  const std::shared_ptr<TLife> life = fLife;
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
  if (event && pFirst && !pFirst->IsInvalid()) event(this, pEvent, pFirst, pSecond);
}

} // namespace kiv
