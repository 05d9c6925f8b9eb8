#include <core/ItemIdListHelperThreadPool.h>

#include <platform/Lifecycle.h>
#include <platform/ShellApi.h>
#include <threading/WorkerPool.h>

#include <mutex>

namespace kiv {

namespace {

struct TPoolHolder {
  std::mutex lock;
  ComPtr<IWorkerThreadPool> pool; // guarded by lock
};

// Never destroyed: Shutdown empties it.
TPoolHolder& Holder() {
  static auto* const holder = new TPoolHolder;
  return *holder;
}

thread_local bool gIsPoolThread = false;

void Release() {
  ComPtr<IWorkerThreadPool> pool;
  {
    const std::lock_guard guard(Holder().lock);
    pool.Swap(Holder().pool);
  }
  if (pool) pool->Dispose();
}

} // namespace

ComPtr<IWorkerThreadPool> TItemIdListHelperThreadPool::Instance() {
  InitializeShell(); // to be there longer than the threads that use it
  const std::lock_guard guard(Holder().lock);
  if (Holder().pool) return Holder().pool;
  const auto pool = TWorkerPool::CreateInstance(TWorkerPoolConfig::Create());
  static_cast<TWorkerThreadPoolRefCounted*>(pool.Get())->SetOnNewThread([](TWorkerThreadPool&, TWorkerThread&) {
    gIsPoolThread = true;
  });
  AtShutdown(&Release);
  return Holder().pool = pool;
}

bool TItemIdListHelperThreadPool::IsCurrentThread() noexcept {
  return gIsPoolThread;
}

} // namespace kiv
