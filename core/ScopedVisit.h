#pragma once

#include <platform/Export.h>

namespace kiv {

/// Marks that this thread is busy with an object, for as long as the mark lives, so that work which comes back to the
/// same object notices it. Marks nest; each thread has its own.
class KIV_EXPORT ScopedVisit {
public:
  explicit ScopedVisit(const void* pObject) noexcept;
  ~ScopedVisit();
  ScopedVisit(const ScopedVisit&) = delete;
  ScopedVisit& operator=(const ScopedVisit&) = delete;

  /// This thread was busy with the object already.
  bool IsRepeated() const noexcept { return fRepeated; }

private:
  const void* const fObject;
  const ScopedVisit* const fOuter;
  bool fRepeated = false;
};

} // namespace kiv
