#include <threading/WorkItemsQueue.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace kiv {

namespace {

void Wake(const TWorkItemsQueue::TWaker& waker) noexcept {
  if (waker) waker->Set();
}

} // namespace

TWorkItemsQueue::~TWorkItemsQueue() = default;

TWorkItemsQueue::TLock TWorkItemsQueue::Lock() const {
  return TLock(fLock);
}

// --- with the lock held ----------------------------------------------------------------------------------------------

void TWorkItemsQueue::CountAdded(std::size_t pCount) noexcept {
  fLength.store(fList.size(), std::memory_order_relaxed);
  fAdded.store(fAdded.load(std::memory_order_relaxed) + pCount, std::memory_order_release);
}

ComPtr<IWorkItem> TWorkItemsQueue::Pop() {
  ComPtr<IWorkItem> item = std::move(fList.back());
  fList.pop_back();
  fLength.store(fLength.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
  return item;
}

bool TWorkItemsQueue::CountDone(std::size_t pCount) noexcept {
  const std::size_t done = fDone.load(std::memory_order_relaxed) + pCount;
  fDone.store(done, std::memory_order_release);
  return done == fAdded.load(std::memory_order_relaxed);
}

// The signal to set when the lock is free again, if somebody waits for what is there and nobody is about to take it.
TWorkItemsQueue::TWaker TWorkItemsQueue::NextWaker() {
  if (fList.empty() || fWaiting.empty() || fSearching || fAllWorkItemsDoneEventCount > 0) return nullptr;
  TWaker waker = std::move(fWaiting.back());
  fWaiting.pop_back();
  return waker;
}

// --- items -----------------------------------------------------------------------------------------------------------

void TWorkItemsQueue::Add(ComPtr<IWorkItem> pItem, bool pHighPriority) {
  pItem->SetStatus(TTaskStatus::WaitingToRun);
  TLock guard = Lock();
  if (pHighPriority) {
    fList.push_back(std::move(pItem));
  } else {
    fList.push_front(std::move(pItem));
  }
  CountAdded(1);
  const TWaker waker = NextWaker();
  guard.unlock();
  Wake(waker);
}

void TWorkItemsQueue::Add(IWorkItems pItems, bool pHighPriority) {
  for (const auto& item : pItems) item->SetStatus(TTaskStatus::WaitingToRun);
  TLock guard = Lock();
  // All or, out of memory, none.
  const auto first = std::make_move_iterator(pItems.begin());
  const auto end = std::make_move_iterator(pItems.end());
  if (pHighPriority) {
    fList.insert(fList.end(), first, end);
  } else {
    fList.insert(fList.begin(), std::make_reverse_iterator(end), std::make_reverse_iterator(first));
  }
  CountAdded(pItems.size());
  const TWaker waker = NextWaker();
  guard.unlock();
  Wake(waker);
}

ComPtr<IWorkItem> TWorkItemsQueue::Dequeue() {
  if (Length() == 0) return nullptr;
  const TLock guard = Lock();
  return fList.empty() ? nullptr : Pop();
}

std::size_t TWorkItemsQueue::Clear() {
  std::deque<ComPtr<IWorkItem>> dropped; // let go behind the lock: that is foreign code
  const TLock guard = Lock();
  dropped.swap(fList);
  fLength.store(0, std::memory_order_relaxed);
  return dropped.size();
}

bool TWorkItemsQueue::ContainsWorkItem(int pTag, TWorkItemClass pClass) const {
  const TLock guard = Lock();
  return std::any_of(fList.rbegin(), fList.rend(), [&](const ComPtr<IWorkItem>& item) {
    return (pTag == 0 || item->GetTag() == pTag) && (!pClass || pClass(*item));
  });
}

bool TWorkItemsQueue::ContainsWorkItem(REFIID pInterfaceId) const {
  const TLock guard = Lock();
  return std::any_of(fList.rbegin(), fList.rend(),
                     [&](const ComPtr<IWorkItem>& item) { return Supports(*item, pInterfaceId); });
}

// --- workers ---------------------------------------------------------------------------------------------------------

TWorkItemsQueue::TFound TWorkItemsQueue::TakeOrList(ComPtr<IWorkItem>& pItem, const TWaker& pWaker, TFound pLast,
                                                    bool pDone) {
  TLock guard = Lock();
  if (pDone && CountDone(1)) return TFound::LastDone;
  if (pLast == TFound::Search) fSearching = false;
  // Whoever was told anything else isn't listed.
  const auto listed = pLast == TFound::Nothing ? std::find(fWaiting.begin(), fWaiting.end(), pWaker) : fWaiting.end();
  if (fList.empty() || fAllWorkItemsDoneEventCount > 0) {
    if (pLast == TFound::Item && !fSearching) {
      fSearching = true;
      return TFound::Search;
    }
    if (listed == fWaiting.end()) fWaiting.push_back(pWaker);
    return TFound::Nothing;
  }
  if (listed != fWaiting.end()) fWaiting.erase(listed);
  pItem = Pop();
  const TWaker waker = NextWaker();
  guard.unlock();
  Wake(waker);
  return TFound::Item;
}

void TWorkItemsQueue::Leave(const TWaker& pWaker) {
  TLock guard = Lock();
  std::erase(fWaiting, pWaker);
  const TWaker waker = NextWaker();
  guard.unlock();
  Wake(waker);
}

bool TWorkItemsQueue::Done(std::size_t pCount) {
  const TLock guard = Lock();
  return CountDone(pCount);
}

bool TWorkItemsQueue::BeginAllDone() {
  const TLock guard = Lock();
  if (fAllWorkItemsDoneEventCount > 0 || NotDone() > 0) return false;
  ++fAllWorkItemsDoneEventCount;
  return true;
}

void TWorkItemsQueue::EndAllDone() {
  TLock guard = Lock();
  --fAllWorkItemsDoneEventCount;
  const TWaker waker = NextWaker();
  guard.unlock();
  Wake(waker);
}

} // namespace kiv
