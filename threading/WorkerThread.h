#pragma once

#include <framework/SpinLock.h>
#include <platform/Export.h>
#include <platform/Signal.h>
#include <threading/KivThread.h>
#include <threading/WorkItem.h>
#include <threading/WorkItemsQueue.h>

#include <memory>

namespace kiv {

class TWorkerThreadPool;

/// A thread of a worker pool, made by it: takes items and runs them until it is told to end or nothing comes for long.
class KIV_EXPORT TWorkerThread final : public TKivThread {
public:
  explicit TWorkerThread(TWorkerThreadPool& pPool);
  ~TWorkerThread() override;

  /// The item in hand; empty if there is none. Any thread that knows this one to live.
  ComPtr<IWorkItem> GetWorkItem() const;
  /// Cancels the item in hand. True if there was one.
  bool TerminateWorkItem();
  /// Also pauses the item in hand.
  void SetPaused(bool pPaused) override;

protected:
  void Execute() override;
  void CallExecute() override;
  void TerminatedSet() override;

private:
  friend class TWorkerThreadPool;

  bool CarryOn();
  void CountWorkItem();
  void RunAllDone();
  void RunWorkItem() noexcept;
  void DropWorkItem() noexcept;

  // Valid while this thread is inside.
  TWorkerThreadPool& fPool;
  const TWorkItemsQueue::TWaker fWaker = std::make_shared<TSignal>();
  mutable TSpinLock fWorkItemLock;
  // A reference of its own; written by this thread only. Taken out under the lock, so that who reads it there can count
  // it; put in without.
  std::atomic<IWorkItem*> fWorkItem{nullptr};
  bool fCarriesItem = false; // from the queue until it is counted as done; written inside only, as the next
  bool fRunsEvent = false;   // the event of the last item
};

} // namespace kiv
