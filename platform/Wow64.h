#pragma once

#include <platform/Export.h>

#include <optional>

namespace kiv {

/// Shows the calling thread the real system folder instead of the one that a 32-bit process is shown in its place
/// ("Wow64DisableWow64FsRedirection"). Answers what RevertWow64FsRedirection needs; nothing when there is nothing to
/// revert, as in a 64-bit process or on a system without the function.
KIV_EXPORT std::optional<void*> DisableWow64FsRedirection();

/// Undoes what DisableWow64FsRedirection did, on the same thread.
KIV_EXPORT void RevertWow64FsRedirection(std::optional<void*> pOld);

/// Redirection is off while it lives. Keep the scope small: libraries that are loaded inside it come from the wrong
/// folder in a 32-bit process.
class ScopedWow64FsRedirectionOff {
public:
  ScopedWow64FsRedirectionOff() : fOld(DisableWow64FsRedirection()) {}
  ~ScopedWow64FsRedirectionOff() { RevertWow64FsRedirection(fOld); }
  ScopedWow64FsRedirectionOff(const ScopedWow64FsRedirectionOff&) = delete;
  ScopedWow64FsRedirectionOff& operator=(const ScopedWow64FsRedirectionOff&) = delete;

private:
  std::optional<void*> fOld;
};

} // namespace kiv
