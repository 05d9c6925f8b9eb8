#include <threading/WorkerPool.h>

#include <utility>

namespace kiv {

TWorkerThreadPool& TWorkerPool::GlobalInstance() {
  return TWorkerThreadPool::Instance();
}

ComPtr<IWorkerThreadPool> TWorkerPool::CreateInstance(const TWorkerPoolConfig& pWorkerPoolConfig) {
  auto pool = TWorkerThreadPoolRefCounted::Construct();
  pool->SetMaxCpuUsage(pWorkerPoolConfig.MaxCpuUsage);
  pool->SetMaxRunningThreads(pWorkerPoolConfig.MaxRunningThreads);
  pool->SetMinWorkerThreads(pWorkerPoolConfig.MinRunningThreads);
  pool->SetPriority(pWorkerPoolConfig.ThreadPriority);
  pool->SetOnAllWorkItemsDone(pWorkerPoolConfig.OnAllWorkItemsFinished);
  return pool;
}

ComPtr<IWorkerThreadPool> TWorkerPool::CreateInstance(TAllWorkItemsFinished pAllWorkItemsFinished) {
  TWorkerPoolConfig config = TWorkerPoolConfig::Create();
  config.OnAllWorkItemsFinished = std::move(pAllWorkItemsFinished);
  return CreateInstance(config);
}

} // namespace kiv
