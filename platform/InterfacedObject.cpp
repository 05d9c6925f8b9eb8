#include <platform/InterfacedObject.h>

#include <platform/Threads.h>

#include <cstddef>

namespace kiv {

namespace {

// Many threads make and end objects at once: those with small numbers have a place of their own, which nobody else
// writes, and the others share some. A place may fall below zero, when objects end on another thread than they were
// made on; the sum is right.
struct alignas(64) TPlace {
  std::atomic<long> count{0};
};
constexpr std::size_t OwnPlaces = 64;
constexpr std::size_t SharedPlaces = 16;
TPlace gPlaces[OwnPlaces + SharedPlaces];

void Count(long change) noexcept {
  const std::size_t number = ThreadNumberForSharing();
  if (ThreadNumbersAreUnique && number < OwnPlaces) {
    std::atomic<long>& count = gPlaces[number].count;
    count.store(count.load(std::memory_order_relaxed) + change, std::memory_order_relaxed);
  } else {
    gPlaces[OwnPlaces + number % SharedPlaces].count.fetch_add(change, std::memory_order_relaxed);
  }
}

} // namespace

long LiveObjects() noexcept {
  long sum = 0;
  for (const TPlace& place : gPlaces) sum += place.count.load(std::memory_order_relaxed);
  return sum;
}

detail::TLiveObjectMark::TLiveObjectMark() noexcept {
  Count(1);
}

detail::TLiveObjectMark::~TLiveObjectMark() {
  Count(-1);
}

} // namespace kiv
