#include <notification/NotifierPlatform.h>

#include <atomic>

namespace kiv {

namespace {

std::atomic<INotifierPlatform*> gReplaced{nullptr};

} // namespace

INotifierPlatform& NotifierPlatform() {
  INotifierPlatform* const replaced = gReplaced.load();
  return replaced ? *replaced : detail::PlatformOfNotifiers();
}

ScopedNotifierPlatform::ScopedNotifierPlatform(INotifierPlatform& pPlatform) : fOuter(gReplaced.exchange(&pPlatform)) {}

ScopedNotifierPlatform::~ScopedNotifierPlatform() {
  gReplaced.store(fOuter);
}

} // namespace kiv
