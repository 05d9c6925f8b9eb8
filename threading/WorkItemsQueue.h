#pragma once

#include <framework/SpinLock.h>
#include <platform/Export.h>
#include <platform/Signal.h>
#include <threading/WorkItem.h>

#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace kiv {

/// Asks whether an item is of a class: `&IsOfClass<TAsyncProcedure>`.
using TWorkItemClass = bool (*)(IWorkItem&);
template <typename T>
bool IsOfClass(IWorkItem& pItem) {
  return dynamic_cast<T*>(&pItem) != nullptr;
}

/// Whether an object offers an interface.
inline bool Supports(IUnknown& pObject, REFIID pInterfaceId) {
  void* found = nullptr;
  if (FAILED(pObject.QueryInterface(pInterfaceId, &found))) return false;
  static_cast<IUnknown*>(found)->Release();
  return true;
}

/// The items of a pool that wait for a worker, the workers that wait for an item, and the count of what isn't done yet:
/// the protocol of a pool, under one short lock. The model in tests/models is this class.
///
/// The last item of the list runs next. Normal items come in at the front, Highest ones at the end: Normal items run
/// first-in first-out, Highest ones before all Normal ones and among themselves last-in first-out.
///
/// Nobody is woken in vain and nothing waits unseen: a worker that finds nothing looks around for a moment, one worker
/// at a time; then, as the others do at once, it leaves its own signal here and sleeps. Who adds an item takes the
/// latest signal out and sets it, unless somebody looks around; who takes an item while more remain does the same (so a
/// batch needs one wake-up from its adder); and a worker that leaves with a wake-up in its hands passes it on.
///
/// While the event of the last item runs, nobody gets an item (`BeginAllDone`, `EndAllDone`).
class KIV_EXPORT TWorkItemsQueue {
public:
  using TWaker = std::shared_ptr<TSignal>;
  using TLock = std::unique_lock<TSpinLock>;

  TWorkItemsQueue() = default;
  ~TWorkItemsQueue();
  TWorkItemsQueue(const TWorkItemsQueue&) = delete;
  TWorkItemsQueue& operator=(const TWorkItemsQueue&) = delete;

  /// Sets the item to WaitingToRun, counts it, and wakes a worker that waits.
  void Add(ComPtr<IWorkItem> pItem, bool pHighPriority);
  /// The same for each, in order, as one step.
  void Add(IWorkItems pItems, bool pHighPriority);
  /// The next item; empty if there is none.
  ComPtr<IWorkItem> Dequeue();
  /// Drops all that waits, and says how many that were. Their statuses stay; they still count as not done.
  std::size_t Clear();
  std::size_t Length() const noexcept { return fLength.load(std::memory_order_relaxed); }

  /// `pTag` 0 and `pClass` null stand for any.
  bool ContainsWorkItem(int pTag, TWorkItemClass pClass = nullptr) const;
  bool ContainsWorkItem(REFIID pInterfaceId) const;

  // --- for workers ---

  enum class TFound {
    Item,
    LastDone, ///< nothing is left to do: see BeginAllDone, and call again
    Search,   ///< nothing yet: look at Length for a moment and call again, without fail
    Nothing   ///< the worker is listed as waiting: it sleeps on its signal and calls again, or Leave
  };
  /// The next item, if there is one to be had. `pLast`: what the worker was told the last time, Item at first.
  /// `pDone`: the worker has done the item before; it is counted first, as by Done, under the same lock.
  TFound TakeOrList(ComPtr<IWorkItem>& pItem, const TWaker& pWaker, TFound pLast, bool pDone = false);
  /// The worker won't take anything any more: it is listed no longer, and hands a wake-up on that was meant for it.
  void Leave(const TWaker& pWaker);

  /// How many items wait or run.
  std::size_t NotDone() const noexcept {
    const std::size_t done = fDone.load(std::memory_order_acquire); // first: it never passes what was added by then
    return fAdded.load(std::memory_order_acquire) - done;
  }
  /// Items are done, or dropped. True if they were the last ones.
  bool Done(std::size_t pCount = 1);
  /// True if the event of the last item is the caller's to raise: no other runs, and nothing has been added meanwhile.
  /// EndAllDone follows then.
  bool BeginAllDone();
  void EndAllDone();

  /// Keeps everybody out of the queue while a thread is killed, which may be adding an item.
  [[nodiscard]] TLock Lock() const;

private:
  void CountAdded(std::size_t pCount) noexcept;
  ComPtr<IWorkItem> Pop();
  TWaker NextWaker();
  bool CountDone(std::size_t pCount) noexcept;

  // What changes with each item shares a cache line with the lock.
  alignas(64) mutable TSpinLock fLock;
  std::atomic<std::size_t> fLength{0}; // of fList; written under fLock
  std::atomic<std::size_t> fAdded{0};  // all items so far; written under fLock
  std::atomic<std::size_t> fDone{0};   // of those, the ones that are done; written under fLock
  int fAllWorkItemsDoneEventCount = 0; // guarded by fLock
  bool fSearching = false;             // guarded by fLock: a worker was told Search and comes back
  std::deque<ComPtr<IWorkItem>> fList; // guarded by fLock
  std::vector<TWaker> fWaiting;        // guarded by fLock
};

} // namespace kiv
