#pragma once

#include <framework/InterfacedObject.h>
#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <platform/InterfaceId.h>
#include <threading/Cancellation.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <typeinfo>
#include <vector>

namespace kiv {

/// The life of a work item, and of a pool's thread. The values are ordered: what is at least Completed is final.
enum class TTaskStatus : std::uint8_t {
  Created = 0,
  WaitingToRun = 1, ///< in a pool's queue; of a thread: made, not started
  Running = 2,
  Paused = 3,
  Completed = 4,
  Canceled = 5
};

constexpr bool IsFinal(TTaskStatus pStatus) noexcept {
  return pStatus >= TTaskStatus::Completed;
}

/// An item's place in a pool's queue: see TWorkItemsQueue.
enum class TPriority : std::uint8_t { Highest = 0, Normal = 1 };

/// What can be told to end.
struct ITerminatable : IUnknown {
  virtual void Cancel() = 0;
};
KIV_INTERFACE_ID(ITerminatable, "{C2C95E17-2E81-467D-B16A-61DAB5E3CBE9}");

struct IWorkItem;

/// Called when an item's work is done.
using TWorkDoneEvent = std::function<void(const ComPtr<IWorkItem>&)>;

/// A unit of background work. Applications derive from TBasicWorkItem. Operations may be called on any thread, but
/// SetOnWorkDone, which is for the time before the item enters a pool, and DoWork and Finished, which are the pool's.
struct IWorkItem : ITerminatable {
  virtual TWorkDoneEvent GetOnWorkDone() = 0;
  virtual void SetOnWorkDone(TWorkDoneEvent pEvent) = 0;
  /// A number of the caller's, by which a pool can look for the item.
  virtual int GetTag() = 0;
  /// The work. On a worker. What it raises cancels the item and goes to ReportException.
  virtual void DoWork() = 0;
  /// Delivers the result. Called by the worker behind DoWork, and perhaps once more on the main thread.
  virtual void Finished() = 0;
  /// Sets the status, whatever it was.
  virtual void SetStatus(TTaskStatus pStatus) = 0;
  /// The class of the object, for look-ups and messages.
  virtual const std::type_info& ClassType() = 0;
  virtual TTaskStatus GetStatus() = 0;
  /// Waits until the status is final. An item that is in no pool never gets there.
  virtual void Wait() = 0;
  /// The pool's way to set a status: unlike SetStatus it leaves a final status alone, in one step, so that no
  /// cancellation is lost. False if it did. Only WaitingToRun replaces Completed: the item was added more than once.
  virtual bool TryChangeStatus(TTaskStatus pStatus) = 0;
};
KIV_INTERFACE_ID(IWorkItem, "{1308B4D9-B2C9-40A0-9A61-6A9A699FC98E}");

/// Implemented by the pools.
struct IPausable : IUnknown {
  virtual bool GetPaused() = 0;
  virtual void SetPaused(bool pPaused) = 0;
};
KIV_INTERFACE_ID(IPausable, "{1C3004E4-1007-4715-B84A-A39ECDC44BA9}");

/// Marks an application's work item that must not be forcibly interrupted. The library's own items and pools don't look
/// at it.
struct INonInterruptable : IUnknown {};
KIV_INTERFACE_ID(INonInterruptable, "{C9B8D6C2-1EA1-4E89-B315-8087B1306AF6}");

using IWorkItems = std::vector<ComPtr<IWorkItem>>;

class KIV_EXPORT IWorkItemsHelper {
public:
  IWorkItemsHelper() = delete;
  /// Waits for each item in turn, as IWorkItem::Wait does.
  static void WaitForAll(IWorkItems pItems);
};

/// Base of all work items.
///
/// An item is withdrawn in three ways that come to the same: by Cancel, by its token, and by an exception of its own.
/// Cancelling never interrupts the work: DoWork asks `Terminated` where it can stop. `Terminate` is the clean-up of a
/// withdrawn item: derived classes override it, call the base and forget whom they report to. It runs once, on the
/// thread that first notices, which may be any.
///
/// The result comes by `WorkDone` and then `OnWorkDone`, on the main thread unless a derived class has cleared
/// `fFireOnWorkDoneSynchronized`; not at all for an item that is cancelled by then.
class KIV_EXPORT TBasicWorkItem : public TInterfacedObject<IWorkItem, ITerminatable, ICancellationIndicator> {
public:
  TWorkDoneEvent GetOnWorkDone() override;
  void SetOnWorkDone(TWorkDoneEvent pEvent) override;
  int GetTag() final { return fTag; }
  void Finished() final;
  void SetStatus(TTaskStatus pStatus) override;
  const std::type_info& ClassType() final { return typeid(*this); }
  /// Looking is what notices a cancelled token: the item becomes Canceled then.
  TTaskStatus GetStatus() override;
  void Wait() final;
  bool TryChangeStatus(TTaskStatus pStatus) final;

  void Cancel() final;
  /// For items that were given a token.
  bool IsCancellationRequested() final;
  /// The checkpoint for DoWork: waits out a pause, and says whether the item is cancelled.
  bool Terminated();

protected:
  explicit TBasicWorkItem(ComPtr<ICancellationIndicator> pCancellationToken = nullptr,
                          TWorkDoneEvent pOnWorkDone = nullptr);
  ~TBasicWorkItem() override;

  /// Does nothing here.
  virtual void WorkDone();
  /// Stores Canceled here.
  virtual void Terminate();

  int fTag = 0;
  bool fFireOnWorkDoneSynchronized = true;

private:
  bool ClaimTermination() noexcept;
  void CleanUp();
  TTaskStatus StatusBehindPause();

  std::atomic<TTaskStatus> fStatus{TTaskStatus::Created};
  std::atomic<bool> fTerminationClaimed{false};
  ComPtr<ICancellationIndicator> fCancellationToken;
  TWorkDoneEvent fOnWorkDone;
};

} // namespace kiv
