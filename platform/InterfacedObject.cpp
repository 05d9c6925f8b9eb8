#include <platform/InterfacedObject.h>

namespace kiv {

namespace {
std::atomic<long> gLiveObjects{0};
} // namespace

long LiveObjects() noexcept {
  return gLiveObjects.load(std::memory_order_relaxed);
}

detail::TLiveObjectMark::TLiveObjectMark() noexcept {
  gLiveObjects.fetch_add(1, std::memory_order_relaxed);
}

detail::TLiveObjectMark::~TLiveObjectMark() {
  gLiveObjects.fetch_sub(1, std::memory_order_relaxed);
}

} // namespace kiv
