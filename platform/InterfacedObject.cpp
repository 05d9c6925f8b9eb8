#include <platform/InterfacedObject.h>

#include <platform/Threads.h>

#include <cstddef>

namespace kiv {

namespace {

// Many threads make and end objects at once: each counts in a place of its own, as far as there are enough. A place may
// fall below zero, when objects end on another thread than they were made on; the sum is right.
struct alignas(64) TPlace {
  std::atomic<long> count{0};
};
constexpr std::size_t PlaceCount = 16;
TPlace gPlaces[PlaceCount];

std::atomic<long>& OwnCount() noexcept {
  return gPlaces[ThreadNumberForSharing() % PlaceCount].count;
}

} // namespace

long LiveObjects() noexcept {
  long sum = 0;
  for (const TPlace& place : gPlaces) sum += place.count.load(std::memory_order_relaxed);
  return sum;
}

detail::TLiveObjectMark::TLiveObjectMark() noexcept {
  OwnCount().fetch_add(1, std::memory_order_relaxed);
}

detail::TLiveObjectMark::~TLiveObjectMark() {
  OwnCount().fetch_sub(1, std::memory_order_relaxed);
}

} // namespace kiv
