#pragma once

namespace kiv {

/// How the main thread is reached: the one platform act of the main-thread queue.
namespace MainThreadWaker {

/// On the main thread: gets ready to be woken. Raises EException if that fails.
void Start();
/// On the main thread: `Wake` fails from here on.
void Stop() noexcept;
/// Any thread. False if nobody can be woken.
bool Wake() noexcept;
/// On the main thread: asks for another turn behind input and painting that wait.
bool TakeTurnLater() noexcept;

} // namespace MainThreadWaker

} // namespace kiv
