#include <threading/WorkProcedures.h>

#include <platform/MainThread.h>
#include <platform/Threads.h>
#include <threading/WorkerPool.h>
#include <threading/WorkerThreadPool.h>

#include <utility>

namespace kiv {

namespace {

constexpr int DelaySlice = 50; // ms

ComPtr<IWorkItem> AddToGlobalPool(ComPtr<IWorkItem> item) {
  TWorkerPool::GlobalInstance().AddWorkItem(item, TPriority::Normal);
  return item;
}

} // namespace

TAsyncProcedure::TAsyncProcedure(TProcedure pMethod, ComPtr<ICancellationIndicator> pCancellationToken,
                                 TProcedure pWorkDone, TWorkDoneEvent pOnWorkDone, int pTag)
    : TBasicWorkItem(std::move(pCancellationToken), std::move(pOnWorkDone)), fProcedure(std::move(pMethod)),
      fWorkDone(std::move(pWorkDone)) {
  fTag = pTag;
}

TAsyncProcedure::~TAsyncProcedure() = default;

ComPtr<IWorkItem> TAsyncProcedure::CreateNoAdd(TProcedure pMethod, ComPtr<ICancellationIndicator> pCancellationToken,
                                               TWorkDoneEvent pOnWorkDone, int pTag) {
  return Make<TAsyncProcedure>(std::move(pMethod), std::move(pCancellationToken), TProcedure(), std::move(pOnWorkDone),
                               pTag);
}

ComPtr<IWorkItem> TAsyncProcedure::Create(TProcedure pMethod, ComPtr<ICancellationIndicator> pCancellationToken,
                                          TProcedure pOnWorkDone) {
  return Make<TAsyncProcedure>(std::move(pMethod), std::move(pCancellationToken), std::move(pOnWorkDone));
}

ComPtr<IWorkItem> TAsyncProcedure::CreateAndQueue(TProcedure pMethod, ComPtr<ICancellationIndicator> pCancellationToken,
                                                  TProcedure pOnWorkDone) {
  return AddToGlobalPool(Create(std::move(pMethod), std::move(pCancellationToken), std::move(pOnWorkDone)));
}

void TAsyncProcedure::DoWork() {
  if (!Terminated()) fProcedure();
}

void TAsyncProcedure::WorkDone() {
  if (fWorkDone) fWorkDone();
}

TDelayedProcedure::TDelayedProcedure(TProcedure pMethod, int pDelay, bool pExecuteAsynchronous,
                                     ComPtr<ICancellationIndicator> pCancellationToken)
    : TBasicWorkItem(std::move(pCancellationToken)), fDelay(pDelay), fExecuteAsynchronous(pExecuteAsynchronous),
      fMethod(std::move(pMethod)) {
  fFireOnWorkDoneSynchronized = false;
}

TDelayedProcedure::~TDelayedProcedure() = default;

ComPtr<IWorkItem> TDelayedProcedure::Create(TProcedure pMethod, int pDelay, bool pExecuteAsynchronous,
                                            ComPtr<ICancellationIndicator> pCancellationToken) {
  return Make<TDelayedProcedure>(std::move(pMethod), pDelay, pExecuteAsynchronous, std::move(pCancellationToken));
}

ComPtr<IWorkItem> TDelayedProcedure::CreateAndQueue(TProcedure pMethod, int pDelay, bool pExecuteAsynchronous,
                                                    ComPtr<ICancellationIndicator> pCancellationToken) {
  return AddToGlobalPool(Create(std::move(pMethod), pDelay, pExecuteAsynchronous, std::move(pCancellationToken)));
}

ComPtr<IWorkItem> TDelayedProcedure::CreateAndQueue(TProcedure pMethod,
                                                    ComPtr<ICancellationIndicator> pCancellationToken) {
  return CreateAndQueue(std::move(pMethod), 0, true, std::move(pCancellationToken));
}

// False if the item was cancelled meanwhile.
bool TDelayedProcedure::SleepThroughDelay() {
  if (fDelay <= 0) return true;
  for (int pass = 0; pass <= fDelay / DelaySlice; ++pass) {
    ThreadApi().sleep(std::chrono::milliseconds(DelaySlice));
    if (Terminated()) return false;
  }
  if (fDelay % DelaySlice > 0) ThreadApi().sleep(std::chrono::milliseconds(fDelay % DelaySlice));
  return true;
}

void TDelayedProcedure::DoWork() {
  if (!SleepThroughDelay()) return;
  if (fExecuteAsynchronous) {
    if (!Terminated()) fMethod();
    return;
  }
  MainThread::Queue([self = ComPtr<TDelayedProcedure>(this)] {
    if (!self->Terminated()) self->fMethod();
  });
}

} // namespace kiv
