#include <core/ScopedVisit.h>

namespace kiv {

namespace {

thread_local const ScopedVisit* gInnermost = nullptr;

} // namespace

ScopedVisit::ScopedVisit(const void* pObject) noexcept : fObject(pObject), fOuter(gInnermost) {
  for (const ScopedVisit* visit = fOuter; visit && !fRepeated; visit = visit->fOuter) {
    fRepeated = visit->fObject == pObject;
  }
  gInnermost = this;
}

ScopedVisit::~ScopedVisit() {
  gInnermost = fOuter;
}

} // namespace kiv
