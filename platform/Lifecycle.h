#pragma once

#include <platform/Export.h>

#include <functional>

namespace kiv {

/// Registers what must be undone when the library ends: a room calls this where it first makes something that lives as
/// long as the process. Any thread.
KIV_EXPORT void AtShutdown(std::function<void()> pFinalizer);

/// Ends the library: runs the registered finalizers, latest first, each once. The host calls it on the main thread,
/// before it leaves OLE and before its process ends; nothing happens when the DLL is unloaded, because other threads
/// are dead by then. Shell objects that the library handed out must have been released: the libraries with their code
/// are freed here. A finalizer that raises doesn't keep the others from running. The library may be used again
/// afterwards: it comes up anew.
KIV_EXPORT void Shutdown() noexcept;

/// A host that is itself a library (a shell extension, a plug-in) says so before it uses anything else: it shares its
/// process, so pools stay smaller, and they give their threads less time at the end, since the loader may be waiting.
/// Any thread. False until set.
KIV_EXPORT void SetHostIsLibrary(bool pIsLibrary) noexcept;
KIV_EXPORT bool IsHostLibrary() noexcept;

} // namespace kiv
