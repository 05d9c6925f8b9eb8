#pragma once

#include <platform/Export.h>
#include <platform/MainThreadQueue.h>

#include <chrono>
#include <exception>
#include <functional>
#include <thread>

/// The one main thread of the process and the closures on their way to it.
///
/// The main thread is the one that calls Attach; the host's thread with the message loop. On Windows the wake-up is a
/// message posted to a hidden window of that thread, so any message loop of the host's serves, modal ones included.
/// See TMainThreadQueue for the order and the rules.
namespace kiv::MainThread {

/// Makes the calling thread the main thread and opens the queue. Framework start-up does it; a second call on the same
/// thread changes nothing. Raises EException on Windows if the window that takes the wake-ups can't be made.
KIV_EXPORT void Attach();

KIV_EXPORT bool IsCurrent() noexcept;

/// Any thread; always queues, on the main thread too. `pOwner` is what RemoveQueuedEvents goes by.
KIV_EXPORT void Queue(std::function<void()> pProcedure, const void* pOwner = nullptr);
/// Any thread: waits until the closure has run on the main thread, and raises here what it raised there.
KIV_EXPORT void Synchronize(const std::function<void()>& pProcedure);
/// Any thread: withdraws what `pOwner` has queued and what hasn't begun.
KIV_EXPORT void RemoveQueuedEvents(const void* pOwner);
/// For a thread that is ended by force: withdraws its Synchronize call if that hasn't begun. Any thread.
KIV_EXPORT void DropCallsOf(std::thread::id pCaller);
/// Main thread: runs what is queued. False on any other thread, or if nothing ran.
KIV_EXPORT bool CheckSynchronize(std::chrono::milliseconds pTimeout = {});

/// Who is told of an exception that leaves a queued closure; the debugger's output if nobody is named.
KIV_EXPORT void SetExceptionHandler(std::function<void(std::exception_ptr)> pHandler);

/// Main thread: what the wake-up leads to. A host without a Windows message loop calls it when it has been woken.
KIV_EXPORT void RunPosted() noexcept;

/// For tests and benchmarks.
KIV_EXPORT TMainThreadQueue::TStatistics Statistics();

/// Stands around each modal loop that the library enters itself.
class KIV_EXPORT ScopedModalLoop {
public:
  ScopedModalLoop();

private:
  TMainThreadQueue::ScopedModalLoop fScope;
};

} // namespace kiv::MainThread
