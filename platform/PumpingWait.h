#pragma once

#include <platform/Types.h>

#include <cstdint>

namespace kiv {

/// Waits for a kernel object, answering messages that other threads send to this thread's windows the while. Posted
/// messages stay where they are; a thread that serves an apartment of its own lets calls into it in as well. `pLimit`
/// is in milliseconds, unless `pEndless`. True if the object was signalled.
bool AwaitAnsweringMessages(HANDLE pObject, std::uint64_t pLimit, bool pEndless = false);

} // namespace kiv
