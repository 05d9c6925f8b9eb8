#pragma once

#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <platform/Threads.h>
#include <threading/ThreadPool.h>
#include <threading/WorkerThreadPool.h>

namespace kiv {

/// How a private pool is to be.
struct TWorkerPoolConfig {
  int MaxCpuUsage = 80; ///< percent
  int MaxRunningThreads = TCustomThreadPool::DefaultMaxRunningThreads();
  int MinRunningThreads = 1;
  TThreadPriority ThreadPriority = TThreadPriority::tpNormal;
  TAllWorkItemsFinished OnAllWorkItemsFinished;

  static TWorkerPoolConfig Create() { return {}; }
};

/// Where pools come from.
class KIV_EXPORT TWorkerPool {
public:
  TWorkerPool() = delete;

  static TWorkerThreadPool& GlobalInstance();
  /// A private pool, whose threads are in single-threaded apartments of their own.
  static ComPtr<IWorkerThreadPool> CreateInstance(const TWorkerPoolConfig& pWorkerPoolConfig);
  static ComPtr<IWorkerThreadPool> CreateInstance(TAllWorkItemsFinished pAllWorkItemsFinished);
};

} // namespace kiv
