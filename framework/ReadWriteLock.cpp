#include <framework/ReadWriteLock.h>

#include <framework/Exceptions.h>

#include <algorithm>

namespace kiv {

/// What runs behind the writes. Outlives the lock while a closure runs that destroys it.
struct TMultiReadExclusiveWriteSynchronizer::TRow {
  std::mutex lock;
  std::deque<std::function<void()>> procedures; // guarded by lock, as the next
  bool running = false;

  void Run() {
    std::exception_ptr first;
    std::unique_lock guard(lock);
    if (running) return;
    running = true;
    while (!procedures.empty()) {
      const std::function<void()> procedure = std::move(procedures.front());
      procedures.pop_front();
      guard.unlock();
      try {
        procedure();
      } catch (...) {
        if (!first) first = std::current_exception();
      }
      guard.lock();
    }
    running = false;
    guard.unlock();
    if (first) std::rethrow_exception(first);
  }
};

TMultiReadExclusiveWriteSynchronizer::TMultiReadExclusiveWriteSynchronizer() : fRow(std::make_shared<TRow>()) {}

TMultiReadExclusiveWriteSynchronizer::~TMultiReadExclusiveWriteSynchronizer() = default;

std::vector<TMultiReadExclusiveWriteSynchronizer::THolder>::iterator
TMultiReadExclusiveWriteSynchronizer::FindReader(std::thread::id pThread) {
  return std::find_if(fReaders.begin(), fReaders.end(), [&](const THolder& h) { return h.thread == pThread; });
}

bool TMultiReadExclusiveWriteSynchronizer::IsFree(bool pForWriting) const noexcept {
  return fWriter.depth == 0 && (!pForWriting || fReaders.empty());
}

void TMultiReadExclusiveWriteSynchronizer::Take(std::thread::id pThread, bool pForWriting) {
  if (pForWriting) {
    fWriter = {pThread, 1};
  } else {
    fReaders.push_back({pThread, 1});
  }
}

void TMultiReadExclusiveWriteSynchronizer::TakeOrWait(bool pForWriting, std::unique_lock<std::mutex>& pGuard) {
  const std::thread::id self = std::this_thread::get_id();
  if (fWaiters.empty() && IsFree(pForWriting)) {
    Take(self, pForWriting);
    return;
  }
  TWaiter waiter{self, pForWriting, {}};
  fWaiters.push_back(&waiter);
  pGuard.unlock();
  waiter.granted.Wait(); // who sets it has taken the lock in this thread's name
}

void TMultiReadExclusiveWriteSynchronizer::ServeWaiters() {
  while (!fWaiters.empty() && IsFree(fWaiters.front()->writes)) {
    TWaiter& next = *fWaiters.front();
    fWaiters.pop_front();
    Take(next.thread, next.writes);
    next.granted.Set();
  }
}

void TMultiReadExclusiveWriteSynchronizer::BeginRead() {
  std::unique_lock guard(fLock);
  const std::thread::id self = std::this_thread::get_id();
  if (fWriter.depth > 0 && fWriter.thread == self) {
    ++fWriter.depth;
  } else if (const auto reader = FindReader(self); reader != fReaders.end()) {
    ++reader->depth;
  } else {
    TakeOrWait(false, guard);
  }
}

void TMultiReadExclusiveWriteSynchronizer::EndRead() noexcept {
  const std::lock_guard guard(fLock);
  const std::thread::id self = std::this_thread::get_id();
  if (fWriter.depth > 0 && fWriter.thread == self) {
    --fWriter.depth;
    return;
  }
  const auto reader = FindReader(self);
  if (reader == fReaders.end() || --reader->depth > 0) return;
  *reader = fReaders.back();
  fReaders.pop_back();
  ServeWaiters();
}

void TMultiReadExclusiveWriteSynchronizer::BeginWrite() {
  std::unique_lock guard(fLock);
  const std::thread::id self = std::this_thread::get_id();
  if (fWriter.depth > 0 && fWriter.thread == self) {
    ++fWriter.depth;
    return;
  }
  if (FindReader(self) != fReaders.end()) throw EInvalidOperation(L"A thread that reads can't begin to write.");
  TakeOrWait(true, guard);
}

void TMultiReadExclusiveWriteSynchronizer::EndWrite() {
  const std::shared_ptr<TRow> row = fRow;
  {
    const std::lock_guard guard(fLock);
    if (--fWriter.depth > 0) return;
    ServeWaiters();
  }
  row->Run();
}

void TMultiReadExclusiveWriteSynchronizer::AfterWrite(std::function<void()> pProcedure) {
  const std::lock_guard guard(fRow->lock);
  fRow->procedures.push_back(std::move(pProcedure));
}

} // namespace kiv
