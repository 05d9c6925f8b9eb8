#pragma once

#include <platform/Types.h>

namespace kiv {

/// Keeps the platform from showing dialogs of its own ("There is no disk in the drive") while calls run that may touch
/// a removable drive.
///
/// It sets the calling thread's mode ("SetThreadErrorMode"), not the process's: two threads that save and restore the
/// process's mode in turn would leave it wrong.
class ScopedErrorMode {
public:
  /// `SEM_FAILCRITICALERRORS`, or 0 where the platform may show dialogs.
  explicit ScopedErrorMode(DWORD pMode = SEM_FAILCRITICALERRORS) noexcept { SetThreadErrorMode(pMode, &fOldMode); }
  ~ScopedErrorMode() { SetThreadErrorMode(fOldMode, nullptr); }
  ScopedErrorMode(const ScopedErrorMode&) = delete;
  ScopedErrorMode& operator=(const ScopedErrorMode&) = delete;

private:
  DWORD fOldMode = 0;
};

} // namespace kiv
