#pragma once

#include <threading/WorkItem.h>

#include <functional>

namespace kiv {

using TProcedure = std::function<void()>;

/// A closure as a work item.
class KIV_EXPORT TAsyncProcedure : public TBasicWorkItem {
public:
  /// An item with a tag, whose closure for the end is told the item. Queues nothing.
  static ComPtr<IWorkItem> CreateNoAdd(TProcedure pMethod, ComPtr<ICancellationIndicator> pCancellationToken,
                                       TWorkDoneEvent pOnWorkDone, int pTag);
  /// An item whose WorkDone calls `pOnWorkDone`, if given. Queues nothing.
  static ComPtr<IWorkItem> Create(TProcedure pMethod, ComPtr<ICancellationIndicator> pCancellationToken = nullptr,
                                  TProcedure pOnWorkDone = nullptr);
  /// The same, added to the global pool with priority Normal.
  static ComPtr<IWorkItem> CreateAndQueue(TProcedure pMethod,
                                          ComPtr<ICancellationIndicator> pCancellationToken = nullptr,
                                          TProcedure pOnWorkDone = nullptr);

  TAsyncProcedure(TProcedure pMethod, ComPtr<ICancellationIndicator> pCancellationToken, TProcedure pWorkDone,
                  TWorkDoneEvent pOnWorkDone = nullptr, int pTag = 0);

  void DoWork() override;

protected:
  ~TAsyncProcedure() override;
  void WorkDone() override;

private:
  TProcedure fProcedure;
  TProcedure fWorkDone;
};

/// Runs a closure a little later, unless it is withdrawn before: on a worker, or on the main thread. The delay occupies
/// a worker, and is cut into slices of 50 ms, after each of which a cancellation is noticed.
class KIV_EXPORT TDelayedProcedure : public TBasicWorkItem {
public:
  /// `pDelay` in milliseconds; nothing sleeps if it isn't above 0. Any other delay takes one slice longer than it says:
  /// 500 takes 550 ms, 1 takes 51.
  static ComPtr<IWorkItem> Create(TProcedure pMethod, int pDelay, bool pExecuteAsynchronous,
                                  ComPtr<ICancellationIndicator> pCancellationToken = nullptr);
  /// The same, added to the global pool with priority Normal.
  static ComPtr<IWorkItem> CreateAndQueue(TProcedure pMethod, int pDelay, bool pExecuteAsynchronous,
                                          ComPtr<ICancellationIndicator> pCancellationToken = nullptr);
  /// Without delay, on a worker.
  static ComPtr<IWorkItem> CreateAndQueue(TProcedure pMethod,
                                          ComPtr<ICancellationIndicator> pCancellationToken = nullptr);

  TDelayedProcedure(TProcedure pMethod, int pDelay, bool pExecuteAsynchronous,
                    ComPtr<ICancellationIndicator> pCancellationToken);

  void DoWork() override;

protected:
  ~TDelayedProcedure() override;

private:
  bool SleepThroughDelay();

  int fDelay;
  bool fExecuteAsynchronous;
  TProcedure fMethod;
};

} // namespace kiv
