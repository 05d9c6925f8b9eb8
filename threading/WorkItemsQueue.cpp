#include <threading/WorkItemsQueue.h>

#include <algorithm>
#include <utility>

namespace kiv {

namespace {

void Wake(const TWorkItemsQueue::TWaker& waker) noexcept {
  if (waker) waker->Set();
}

} // namespace

TWorkItemsQueue::~TWorkItemsQueue() = default;

// --- with the lock held ----------------------------------------------------------------------------------------------

void TWorkItemsQueue::Push(ComPtr<IWorkItem> pItem, bool pHighPriority) {
  if (pHighPriority) {
    fList.push_back(std::move(pItem));
  } else {
    fList.push_front(std::move(pItem));
  }
  fLength.store(fList.size(), std::memory_order_relaxed);
  fNotDone.fetch_add(1, std::memory_order_relaxed);
}

ComPtr<IWorkItem> TWorkItemsQueue::Pop() {
  ComPtr<IWorkItem> item = std::move(fList.back());
  fList.pop_back();
  fLength.store(fList.size(), std::memory_order_relaxed);
  return item;
}

// The signal to set when the lock is free again, if somebody waits for what is there.
TWorkItemsQueue::TWaker TWorkItemsQueue::NextWaker() {
  if (fList.empty() || fWaiting.empty() || fAllWorkItemsDoneEventCount > 0) return nullptr;
  TWaker waker = std::move(fWaiting.back());
  fWaiting.pop_back();
  return waker;
}

// --- items -----------------------------------------------------------------------------------------------------------

void TWorkItemsQueue::Add(ComPtr<IWorkItem> pItem, bool pHighPriority) {
  pItem->SetStatus(TTaskStatus::WaitingToRun);
  TLock guard(fLock);
  Push(std::move(pItem), pHighPriority);
  const TWaker waker = NextWaker();
  guard.unlock();
  Wake(waker);
}

void TWorkItemsQueue::Add(const IWorkItems& pItems, bool pHighPriority) {
  for (const auto& item : pItems) item->SetStatus(TTaskStatus::WaitingToRun);
  TLock guard(fLock);
  for (const auto& item : pItems) Push(item, pHighPriority);
  const TWaker waker = NextWaker();
  guard.unlock();
  Wake(waker);
}

ComPtr<IWorkItem> TWorkItemsQueue::Dequeue() {
  if (Length() == 0) return nullptr;
  const std::lock_guard guard(fLock);
  return fList.empty() ? nullptr : Pop();
}

std::size_t TWorkItemsQueue::Clear() {
  std::deque<ComPtr<IWorkItem>> dropped; // let go behind the lock: that is foreign code
  const std::lock_guard guard(fLock);
  dropped.swap(fList);
  fLength.store(0, std::memory_order_relaxed);
  return dropped.size();
}

bool TWorkItemsQueue::ContainsWorkItem(int pTag, TWorkItemClass pClass) const {
  const std::lock_guard guard(fLock);
  return std::any_of(fList.rbegin(), fList.rend(), [&](const ComPtr<IWorkItem>& item) {
    return (pTag == 0 || item->GetTag() == pTag) && (!pClass || pClass(*item));
  });
}

bool TWorkItemsQueue::ContainsWorkItem(REFIID pInterfaceId) const {
  const std::lock_guard guard(fLock);
  return std::any_of(fList.rbegin(), fList.rend(),
                     [&](const ComPtr<IWorkItem>& item) { return Supports(*item, pInterfaceId); });
}

// --- workers ---------------------------------------------------------------------------------------------------------

bool TWorkItemsQueue::TakeOrList(ComPtr<IWorkItem>& pItem, const TWaker& pWaker) {
  TLock guard(fLock);
  const auto listed = std::find(fWaiting.begin(), fWaiting.end(), pWaker);
  if (fList.empty() || fAllWorkItemsDoneEventCount > 0) {
    if (listed == fWaiting.end()) fWaiting.push_back(pWaker);
    return false;
  }
  if (listed != fWaiting.end()) fWaiting.erase(listed);
  pItem = Pop();
  const TWaker waker = NextWaker();
  guard.unlock();
  Wake(waker);
  return true;
}

void TWorkItemsQueue::Leave(const TWaker& pWaker) {
  TLock guard(fLock);
  std::erase(fWaiting, pWaker);
  const TWaker waker = NextWaker();
  guard.unlock();
  Wake(waker);
}

bool TWorkItemsQueue::Done(std::size_t pCount) noexcept {
  return fNotDone.fetch_sub(pCount, std::memory_order_acq_rel) == pCount;
}

bool TWorkItemsQueue::BeginAllDone() noexcept {
  const std::lock_guard guard(fLock);
  if (fAllWorkItemsDoneEventCount > 0 || NotDone() > 0) return false;
  ++fAllWorkItemsDoneEventCount;
  return true;
}

void TWorkItemsQueue::EndAllDone() {
  TLock guard(fLock);
  --fAllWorkItemsDoneEventCount;
  const TWaker waker = NextWaker();
  guard.unlock();
  Wake(waker);
}

} // namespace kiv
