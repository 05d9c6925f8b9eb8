#pragma once

#include <platform/Types.h>

#include <cstdint>
#include <optional>

namespace kiv {

/// Whether the calling thread has entered a single-threaded apartment by EnterApartment, and so serves it while it
/// waits. The main thread's apartment is the host's: waits of the library on it never let calls in.
bool ServesApartment() noexcept;

/// Waits for a kernel object on a thread that serves its apartment, and lets calls of other apartments in meanwhile
/// ("CoWaitForMultipleHandles"). COM brings them as posted messages, which a wait for sent messages alone leaves lying.
/// `pLimit` in milliseconds; INFINITE waits for ever. Empty if COM refuses to wait.
std::optional<bool> WaitServingApartment(HANDLE pObject, DWORD pLimit) noexcept;

} // namespace kiv
