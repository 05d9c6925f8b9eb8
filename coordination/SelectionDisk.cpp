#include <coordination/SelectionDisk.h>

#include <utility>

namespace kiv {

namespace {

ISelectionDisk* gDisk = nullptr; // main thread

} // namespace

ISelectionDisk& SelectionDisk() noexcept {
  return gDisk ? *gDisk : detail::PlatformSelectionDisk();
}

ScopedSelectionDisk::ScopedSelectionDisk(ISelectionDisk& pDisk) noexcept : fOuter(std::exchange(gDisk, &pDisk)) {}

ScopedSelectionDisk::~ScopedSelectionDisk() {
  gDisk = fOuter;
}

} // namespace kiv
