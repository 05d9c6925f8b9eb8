#include <platform/MainThreadQueue.h>

#include <platform/Exception.h>

#include <algorithm>
#include <utility>

namespace kiv {

// A Synchronize call that waits. Shared, because the main thread may still be signalling when the caller leaves.
struct TMainThreadQueue::TCall {
  TSignal done;
  std::exception_ptr raised;
};

TMainThreadQueue::TMainThreadQueue(TConfig pConfig) : fConfig(std::move(pConfig)) {}

TMainThreadQueue::~TMainThreadQueue() {
  Close();
}

void TMainThreadQueue::Attach() {
  {
    const std::lock_guard guard(fLock);
    fMainThread = std::this_thread::get_id();
    fClosed = false;
    fRoadTaken = false;
    // A wake-up that was under way to a former main thread may never arrive.
    fTurnRequested = false;
    if (fEntries.empty()) return;
    fTurnRequested = true;
    ++fStatistics.wakes;
  }
  RequestTurn(fConfig.wake);
}

bool TMainThreadQueue::IsMainThread() const noexcept {
  return fMainThread.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

void TMainThreadQueue::Queue(TProcedure pProcedure, const void* pOwner) {
  Append({std::move(pProcedure), pOwner, nullptr, {}});
}

void TMainThreadQueue::Synchronize(const TProcedure& pProcedure) {
  if (IsMainThread()) {
    pProcedure();
    return;
  }
  auto call = std::make_shared<TCall>();
  Append({pProcedure, nullptr, call, std::this_thread::get_id()});
  call->done.Wait();
  // Taken out: the exception lives and ends on this thread, whoever lets the call go last.
  if (const std::exception_ptr raised = std::exchange(call->raised, nullptr)) std::rethrow_exception(raised);
}

void TMainThreadQueue::Append(TEntry pEntry) {
  bool wake = false;
  {
    const std::lock_guard guard(fLock);
    if (fClosed) {
      if (pEntry.call) throw EException(L"The main thread no longer takes calls.");
      return;
    }
    fEntries.push_back(std::move(pEntry));
    if (fWaiters > 0) fArrived.Set();
    wake = !fTurnRequested && !fRoadTaken;
    if (wake) {
      fTurnRequested = true;
      ++fStatistics.wakes;
    }
  }
  if (wake) RequestTurn(fConfig.wake);
}

void TMainThreadQueue::RequestTurn(const std::function<bool()>& pHow) {
  if (pHow()) return;
  const std::lock_guard guard(fLock);
  fTurnRequested = false;
}

void TMainThreadQueue::RemoveQueuedEvents(const void* pOwner) {
  std::deque<TEntry> removed; // what a closure holds is let go outside the lock
  const std::lock_guard guard(fLock);
  const auto kept = std::stable_partition(fEntries.begin(), fEntries.end(), [pOwner](const TEntry& entry) {
    return entry.call || !pOwner || entry.owner != pOwner;
  });
  std::move(kept, fEntries.end(), std::back_inserter(removed));
  fEntries.erase(kept, fEntries.end());
}

void TMainThreadQueue::DropCallsOf(std::thread::id pCaller) {
  std::deque<TEntry> removed;
  const std::lock_guard guard(fLock);
  for (auto entry = fEntries.begin(); entry != fEntries.end();) {
    if (entry->call && entry->caller == pCaller) {
      removed.push_back(std::move(*entry));
      entry = fEntries.erase(entry);
    } else {
      ++entry;
    }
  }
}

// The next entry. With none left, the posted road ends in the same breath, so that no Queue falls between.
bool TMainThreadQueue::TakeNext(TEntry& pEntry, bool pLeaveRoadWhenEmpty) {
  const std::lock_guard guard(fLock);
  if (fEntries.empty()) {
    if (pLeaveRoadWhenEmpty) {
      fRoadTaken = false;
      ++fStatistics.idles;
    }
    return false;
  }
  pEntry = std::move(fEntries.front());
  fEntries.pop_front();
  return true;
}

void TMainThreadQueue::Run(TEntry& pEntry) {
  if (!pEntry.call) {
    pEntry.procedure();
    return;
  }
  try {
    pEntry.procedure();
  } catch (...) {
    pEntry.call->raised = std::current_exception();
  }
  pEntry.procedure = nullptr; // before its caller goes on
  pEntry.call->done.Set();
}

void TMainThreadQueue::WaitForArrival(std::chrono::milliseconds pTimeout) {
  {
    const std::lock_guard guard(fLock);
    if (!fEntries.empty()) return;
    ++fWaiters;
  }
  const auto end = fConfig.now() + pTimeout;
  // The signal may be a left-over of an earlier wait: only an entry or the time ends this one.
  for (auto left = pTimeout; left.count() > 0 && fArrived.WaitFor(left) && IsEmpty();) {
    left = std::chrono::ceil<std::chrono::milliseconds>(end - fConfig.now());
  }
  const std::lock_guard guard(fLock);
  --fWaiters;
}

bool TMainThreadQueue::CheckSynchronize(std::chrono::milliseconds pTimeout) {
  if (!IsMainThread()) return false;
  if (pTimeout.count() > 0) WaitForArrival(pTimeout);
  bool ran = false;
  for (TEntry entry; TakeNext(entry, false); entry = {}) {
    ran = true;
    Run(entry);
  }
  return ran;
}

void TMainThreadQueue::RunPosted() noexcept {
  {
    const std::lock_guard guard(fLock);
    fTurnRequested = false;
    if (fRoadTaken || !IsMainThread()) return;
    fRoadTaken = true;
  }
  const auto start = fConfig.now();
  for (TEntry entry; TakeNext(entry, true); entry = {}) {
    try {
      Run(entry);
    } catch (...) {
      try {
        fConfig.onException(std::current_exception());
      } catch (...) {
        // The handler failed too: the closures behind this one still have a right to run.
      }
    }
    if (fConfig.now() - start < fConfig.slice) continue;
    {
      const std::lock_guard guard(fLock);
      fRoadTaken = false;
      if (fEntries.empty()) {
        ++fStatistics.idles;
        return;
      }
      fTurnRequested = true;
      ++fStatistics.yields;
    }
    RequestTurn(fConfig.yield);
    return;
  }
}

void TMainThreadQueue::Close() noexcept {
  std::deque<TEntry> dropped;
  {
    const std::lock_guard guard(fLock);
    fClosed = true;
    fTurnRequested = false;
    dropped.swap(fEntries);
  }
  for (TEntry& entry : dropped) {
    if (!entry.call) continue;
    entry.procedure = nullptr; // before its caller goes on
    entry.call->raised = std::make_exception_ptr(EException(L"The main thread ended before it took this call."));
    entry.call->done.Set();
  }
}

bool TMainThreadQueue::IsEmpty() const {
  const std::lock_guard guard(fLock);
  return fEntries.empty();
}

TMainThreadQueue::TStatistics TMainThreadQueue::Statistics() const {
  const std::lock_guard guard(fLock);
  return fStatistics;
}

TMainThreadQueue::ScopedModalLoop::ScopedModalLoop(TMainThreadQueue& pQueue) : fQueue(pQueue) {
  bool wake = false;
  {
    const std::lock_guard guard(fQueue.fLock);
    fWasClosed = std::exchange(fQueue.fRoadTaken, false);
    wake = fWasClosed && !fQueue.fEntries.empty() && !fQueue.fTurnRequested;
    if (wake) {
      fQueue.fTurnRequested = true;
      ++fQueue.fStatistics.wakes;
    }
  }
  if (wake) fQueue.RequestTurn(fQueue.fConfig.wake);
}

TMainThreadQueue::ScopedModalLoop::~ScopedModalLoop() {
  const std::lock_guard guard(fQueue.fLock);
  fQueue.fRoadTaken = fWasClosed;
}

} // namespace kiv
