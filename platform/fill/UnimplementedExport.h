#pragma once

#include <platform/Types.h>

namespace kiv::fill {

/// Catches the exception of an export that is present but not implemented.
///
/// Wine raises it from a thunk without unwind data, so no frame-based handler is ever found: the stack can't be walked
/// past the thunk. While a scope lives, a vectored handler that reacts to this one code takes the calling thread back
/// to the innermost scope's frame instead. On a system that doesn't have such exports nothing is installed, and a scope
/// costs one test. Scopes nest and are left in reverse order, also by C++ exceptions.
class ScopedUnimplementedExportTrap {
public:
  /// `pCode` is the exception, `pResume` where the thread goes on, with the code in `rax` and the stack pointer that
  /// was stored in Frame().
  ScopedUnimplementedExportTrap(DWORD pCode, void* pResume) noexcept;
  ~ScopedUnimplementedExportTrap();
  ScopedUnimplementedExportTrap(const ScopedUnimplementedExportTrap&) = delete;
  ScopedUnimplementedExportTrap& operator=(const ScopedUnimplementedExportTrap&) = delete;

  /// Where the guarded frame stores its stack pointer.
  void** Frame() noexcept { return &fFrame; }

private:
  static LONG CALLBACK OnException(EXCEPTION_POINTERS* pointers);
  static DWORD Install() noexcept;

  void* fFrame = nullptr;
  void* const fResume;
  const DWORD fCode;
  ScopedUnimplementedExportTrap* fOuter = nullptr;
};

} // namespace kiv::fill
