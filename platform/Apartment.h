#pragma once

#include <platform/Export.h>

namespace kiv {

/// The apartment of the calling thread ("CoGetApartmentType").
enum class TApartment {
  None,           ///< COM isn't initialised on this thread
  SingleThreaded, ///< its own single-threaded apartment
  MainSingleThreaded,
  MultiThreaded, ///< also by implication, because another thread is in it
  Neutral
};

KIV_EXPORT TApartment CurrentApartment() noexcept;

/// For what needs OLE on this thread: drag and drop, the clipboard, in-place activation.
///
/// The library never calls `OleInitialize` for its host: the host does, once, on its main thread, before it makes the
/// first window, and `OleUninitialize` at its end. Raises EException, with what to do, if the thread isn't in a
/// single-threaded apartment. `pWhat` says what was to be done ("register a drop target").
KIV_EXPORT void RequireOle(const wchar_t* pWhat);

} // namespace kiv
