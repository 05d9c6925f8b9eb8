#pragma once

#include <platform/Export.h>
#include <platform/Signal.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kiv {

/// How a thread competes for a processor: the platform's seven steps ("SetThreadPriority").
enum class TThreadPriority { tpIdle, tpLowest, tpLower, tpNormal, tpHigher, tpHighest, tpTimeCritical };

/// A running thread of the platform's. Destroying this object lets go of the thread and doesn't end it.
class KIV_EXPORT IPlatformThread {
public:
  IPlatformThread() = default;
  virtual ~IPlatformThread();
  IPlatformThread(const IPlatformThread&) = delete;
  IPlatformThread& operator=(const IPlatformThread&) = delete;

  /// Without effect where an ordinary process may not do it.
  virtual void SetPriority(TThreadPriority pPriority) noexcept = 0;
  /// Ends the thread by force, with exit code 0 ("TerminateThread"): nothing of it is unwound. False where there is no
  /// such act, or if it has no effect in time; the thread may run on then, and its starter must leave it what it uses.
  virtual bool ForceEnd() noexcept = 0;
};

/// What the processors did since the system started, in units of 100 ns. Kernel time includes idle time.
struct TSystemTimes {
  std::uint64_t idle = 0;
  std::uint64_t kernel = 0;
  std::uint64_t user = 0;
};

/// The same from an older source: idle time of all processors, and the time of day, in units of 100 ns.
struct TIdleCounters {
  double idle = 0;
  double time = 0;
};

/// What thread code asks of the platform and what a test may want to answer for it. All entries are always set; any
/// thread calls them.
struct TThreadApi {
  /// Starts a thread that runs the closure. Null if the platform makes no more threads. The closure doesn't raise.
  std::function<std::unique_ptr<IPlatformThread>(std::function<void()>)> beginThread;
  /// Milliseconds since some point in the past, in steps of up to 16.
  std::function<std::uint64_t()> tickCount;
  /// On a thread that has entered a single-threaded apartment by EnterApartment, calls into the apartment are served.
  std::function<void(std::chrono::milliseconds)> sleep;
  /// Waits for a signal, at most so long. False if the time passed first.
  std::function<bool(TSignal&, std::chrono::milliseconds)> waitFor;
  /// False if the platform doesn't tell ("GetSystemTimes").
  std::function<bool(TSystemTimes&)> readSystemTimes;
  /// What remains to be asked then ("NtQuerySystemInformation"). False if that fails as well.
  std::function<bool(TIdleCounters&)> readIdleCounters;
};

/// The entries in use: the platform's, unless a ScopedThreadApi stands.
KIV_EXPORT const TThreadApi& ThreadApi() noexcept;

/// Replaces entries for as long as it lives; those left empty stay as they were. For tests: no thread that may still
/// ask must be left when the scope ends. Scopes nest and end in reverse order.
class KIV_EXPORT ScopedThreadApi {
public:
  explicit ScopedThreadApi(TThreadApi pApi);
  ~ScopedThreadApi();
  ScopedThreadApi(const ScopedThreadApi&) = delete;
  ScopedThreadApi& operator=(const ScopedThreadApi&) = delete;

private:
  TThreadApi fApi;
  const TThreadApi* fOuter;
};

/// The calling thread's name for debuggers ("SetThreadDescription"; Linux shows the first 15 characters).
KIV_EXPORT void SetCurrentThreadName(const std::wstring& pName) noexcept;
/// Puts the calling thread into the platform's background mode, or takes it out ("THREAD_MODE_BACKGROUND_BEGIN"): its
/// disk and memory accesses come behind all others. False if the platform refuses or knows no such thing.
KIV_EXPORT bool SetCurrentThreadBackground(bool pBackground) noexcept;

/// Makes the calling thread enter COM ("CoInitializeEx", for speed over memory): the multi-threaded apartment if
/// `pFreeThreaded`, else one of its own, which its waits and sleeps through the library then serve. False if the
/// platform refuses, or if it has no apartments; LeaveApartment is called only after True.
KIV_EXPORT bool EnterApartment(bool pFreeThreaded) noexcept;
KIV_EXPORT void LeaveApartment() noexcept;
/// Registers what the calling thread lets go when it leaves the apartment that it entered by EnterApartment, before it
/// does: shell objects that it keeps. The latest runs first. False on any other thread: nobody will say when it leaves.
/// The closure doesn't raise.
KIV_EXPORT bool AtLeaveApartment(void (*pFinalizer)());

/// A small number that spreads threads over places, so that they don't share one; two threads may have the same. Costs
/// a few nanoseconds.
KIV_EXPORT std::size_t ThreadNumberForSharing() noexcept;
/// Whether no two threads have the same: natively they are counted.
#if defined(_WIN32)
inline constexpr bool ThreadNumbersAreUnique = false;
#else
inline constexpr bool ThreadNumbersAreUnique = true;
#endif

/// A variable of the process's environment, as it stands now.
KIV_EXPORT std::optional<std::wstring> EnvironmentVariable(const wchar_t* pName);
/// How many processors this process may use; at least 1.
KIV_EXPORT int ProcessorCount() noexcept;
/// Lets the other half of a processor work for a moment: for loops that wait for some nanoseconds.
KIV_EXPORT void RelaxProcessor() noexcept;

namespace detail {
/// The platform's own entries; each platform has its source file.
TThreadApi PlatformThreadApi();
} // namespace detail

} // namespace kiv
