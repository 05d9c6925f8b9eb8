#include "Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> gAllocations{0};

} // namespace

void* operator new(std::size_t size) {
  // Not a locked addition: the threads of other figures shall not wait for one another here.
  gAllocations.store(gAllocations.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

long kiv::bench::AllocationCount() noexcept {
  return gAllocations.load(std::memory_order_relaxed);
}
