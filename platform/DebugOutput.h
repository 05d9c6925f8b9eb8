#pragma once

#include <platform/Export.h>

#include <functional>
#include <string>

namespace kiv {

/// One line of text to the debugger's output (`OutputDebugStringW`; the standard error stream where there is no such
/// thing). Any thread.
KIV_EXPORT void WriteDebugLine(const std::wstring& pLine) noexcept;

/// The calling thread's number as the platform counts threads.
KIV_EXPORT unsigned long CurrentThreadNumber() noexcept;

/// Sends the lines of WriteDebugLine to a function of the caller's for as long as it lives: for hosts with a log of
/// their own, and for tests. The function is called on the thread that writes,
/// one call at a time: it must not wait for another thread that may write. Scopes nest and end in reverse order.
class KIV_EXPORT ScopedDebugSink {
public:
  using TSink = std::function<void(const std::wstring&)>;

  explicit ScopedDebugSink(TSink pSink);
  ~ScopedDebugSink();
  ScopedDebugSink(const ScopedDebugSink&) = delete;
  ScopedDebugSink& operator=(const ScopedDebugSink&) = delete;

private:
  friend void WriteDebugLine(const std::wstring&) noexcept;

  TSink fSink;
  ScopedDebugSink* fOuter;
};

} // namespace kiv
