#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

namespace kiv {

/// The library's activation context for version 6 of the common controls ("Isolating Components").
///
/// Which version a process gets is said by its program's manifest, and that is the host's: it may lack the entry. So
/// the library has a manifest of its own, the DLL's resource, or for the static library a temporary file, and switches
/// it on around whatever makes a window or binds an entry of the common controls. It is switched off again at once: the
/// host's own windows don't change.
class KIV_EXPORT ScopedCommonControls {
public:
  /// Any thread. Where the platform refuses the context the scope does nothing, and the host's version stands.
  ScopedCommonControls() noexcept;
  ~ScopedCommonControls();
  ScopedCommonControls(const ScopedCommonControls&) = delete;
  ScopedCommonControls& operator=(const ScopedCommonControls&) = delete;

private:
  ULONG_PTR fCookie = 0;
  bool fActive = false;
};

/// Entries of "comctl32.dll" for the windows that the library makes and for those it listens to, bound in its
/// activation context. All are there: the first use raises EException if one isn't.
struct TCommonControlsApi {
  using TSubclass = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);

  HMODULE module = nullptr;
  BOOL(WINAPI* SetWindowSubclass)(HWND, TSubclass, UINT_PTR, DWORD_PTR) = nullptr;
  BOOL(WINAPI* GetWindowSubclass)(HWND, TSubclass, UINT_PTR, DWORD_PTR*) = nullptr;
  BOOL(WINAPI* RemoveWindowSubclass)(HWND, TSubclass, UINT_PTR) = nullptr;
  LRESULT(WINAPI* DefSubclassProc)(HWND, UINT, WPARAM, LPARAM) = nullptr;
};

/// Any thread. All window classes of the common controls are registered after it.
KIV_EXPORT const TCommonControlsApi& CommonControlsApi();

} // namespace kiv
