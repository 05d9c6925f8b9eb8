#include <platform/DebugOutput.h>

#include <platform/Text.h>
#include <platform/Types.h>

#include <mutex>
#include <utility>

#if !defined(_WIN32)
#include <cstdio>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace kiv {

namespace {

// Recursive: a sink may log itself.
std::recursive_mutex& SinkLock() {
  static auto* const lock = new std::recursive_mutex;
  return *lock;
}

ScopedDebugSink* gSink = nullptr; // guarded by SinkLock

void WriteToPlatform(const std::wstring& line) {
#if defined(_WIN32)
  OutputDebugStringW(line.c_str());
#else
  std::fputs((ToUtf8(line) + '\n').c_str(), stderr);
#endif
}

} // namespace

void WriteDebugLine(const std::wstring& pLine) noexcept {
  try {
    const std::lock_guard guard(SinkLock());
    if (gSink) {
      gSink->fSink(pLine);
      return;
    }
  } catch (...) {
    // The log is the last resort: there is nobody left to tell.
    return;
  }
  WriteToPlatform(pLine);
}

unsigned long CurrentThreadNumber() noexcept {
#if defined(_WIN32)
  return GetCurrentThreadId();
#else
  return static_cast<unsigned long>(::syscall(SYS_gettid));
#endif
}

ScopedDebugSink::ScopedDebugSink(TSink pSink) : fSink(std::move(pSink)) {
  const std::lock_guard guard(SinkLock());
  fOuter = std::exchange(gSink, this);
}

ScopedDebugSink::~ScopedDebugSink() {
  const std::lock_guard guard(SinkLock());
  gSink = fOuter;
}

} // namespace kiv
