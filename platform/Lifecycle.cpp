#include <platform/Lifecycle.h>

#include <platform/DebugOutput.h>
#include <platform/Text.h>

#include <atomic>
#include <exception>
#include <mutex>
#include <utility>
#include <vector>

namespace kiv {

namespace {

struct TFinalizers {
  std::mutex lock;
  std::vector<std::function<void()>> list;
};

// Never destroyed: finalizers may still be registered while statics go.
TFinalizers& Finalizers() {
  static auto* const finalizers = new TFinalizers;
  return *finalizers;
}

std::atomic<bool> gHostIsLibrary{false};

} // namespace

void SetHostIsLibrary(bool pIsLibrary) noexcept {
  gHostIsLibrary.store(pIsLibrary, std::memory_order_relaxed);
}

bool IsHostLibrary() noexcept {
  return gHostIsLibrary.load(std::memory_order_relaxed);
}

void AtShutdown(std::function<void()> pFinalizer) {
  TFinalizers& all = Finalizers();
  const std::lock_guard guard(all.lock);
  all.list.push_back(std::move(pFinalizer));
}

void Shutdown() noexcept {
  TFinalizers& all = Finalizers();
  for (;;) {
    std::function<void()> finalizer;
    {
      const std::lock_guard guard(all.lock);
      if (all.list.empty()) return;
      finalizer = std::move(all.list.back());
      all.list.pop_back();
    }
    try {
      finalizer();
    } catch (const std::exception& e) {
      WriteDebugLine(L"Shutdown: " + FromUtf8(e.what()));
    } catch (...) {
      WriteDebugLine(L"Shutdown: unknown exception");
    }
  }
}

} // namespace kiv
