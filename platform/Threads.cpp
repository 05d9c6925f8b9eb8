#include <platform/Threads.h>

#include <atomic>
#include <thread>
#include <utility>

namespace kiv {

namespace {

std::atomic<const TThreadApi*> gOverride{nullptr};

const TThreadApi& PlatformApi() noexcept {
  // Never destroyed: threads may still ask while statics go.
  static const auto* const api = new TThreadApi(detail::PlatformThreadApi());
  return *api;
}

template <typename F>
void Inherit(F& entry, const F& outer) {
  if (!entry) entry = outer;
}

} // namespace

IPlatformThread::~IPlatformThread() = default;

const TThreadApi& ThreadApi() noexcept {
  const TThreadApi* const standing = gOverride.load(std::memory_order_acquire);
  return standing ? *standing : PlatformApi();
}

ScopedThreadApi::ScopedThreadApi(TThreadApi pApi) : fApi(std::move(pApi)), fOuter(gOverride.load()) {
  const TThreadApi& outer = ThreadApi();
  Inherit(fApi.beginThread, outer.beginThread);
  Inherit(fApi.tickCount, outer.tickCount);
  Inherit(fApi.sleep, outer.sleep);
  Inherit(fApi.waitFor, outer.waitFor);
  Inherit(fApi.readSystemTimes, outer.readSystemTimes);
  Inherit(fApi.readIdleCounters, outer.readIdleCounters);
  gOverride.store(&fApi, std::memory_order_release);
}

ScopedThreadApi::~ScopedThreadApi() {
  gOverride.store(fOuter, std::memory_order_release);
}

int ProcessorCount() noexcept {
  const unsigned count = std::thread::hardware_concurrency();
  return count > 0 ? static_cast<int>(count) : 1;
}

} // namespace kiv
