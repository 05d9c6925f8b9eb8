#include <platform/Threads.h>

#include <platform/Text.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <thread>

#include <pthread.h>
#include <time.h>

namespace kiv {

namespace {

// A thread runs on by itself once it was started. Priorities are for privileged processes here, and nothing ends a
// thread against its will.
class TNativeThread final : public IPlatformThread {
public:
  void SetPriority(TThreadPriority) noexcept override {}
  bool ForceEnd() noexcept override { return false; }
};

std::unique_ptr<IPlatformThread> BeginThread(std::function<void()> body) {
  try {
    auto thread = std::make_unique<TNativeThread>();
    std::thread(std::move(body)).detach();
    return thread;
  } catch (const std::system_error&) {
    return nullptr;
  }
}

std::uint64_t TickCount() {
  timespec now{};
  // The coarse clock costs a fifth of the exact one; its steps of some milliseconds are fine enough for ticks.
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1000U + static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000U;
}

bool ReadSystemTimes(TSystemTimes& times) {
  std::FILE* const file = std::fopen("/proc/stat", "r");
  if (!file) return false;
  // See proc(5): hundredths of a second, summed over the processors.
  unsigned long long user = 0;
  unsigned long long nice = 0;
  unsigned long long system = 0;
  unsigned long long idle = 0;
  unsigned long long disk = 0;
  unsigned long long irq = 0;
  unsigned long long soft_irq = 0;
  const int read =
      std::fscanf(file, "cpu %llu %llu %llu %llu %llu %llu %llu", &user, &nice, &system, &idle, &disk, &irq, &soft_irq);
  std::fclose(file);
  if (read != 7) return false;
  constexpr std::uint64_t units = 100'000;
  times.idle = (idle + disk) * units;
  times.kernel = (system + irq + soft_irq) * units + times.idle;
  times.user = (user + nice) * units;
  return true;
}

} // namespace

TThreadApi detail::PlatformThreadApi() {
  return {
      .beginThread = &BeginThread,
      .tickCount = &TickCount,
      .sleep = [](std::chrono::milliseconds time) { std::this_thread::sleep_for(time); },
      .waitFor = [](TSignal& signal, std::chrono::milliseconds limit) { return signal.WaitFor(limit); },
      .readSystemTimes = &ReadSystemTimes,
      .readIdleCounters = [](TIdleCounters&) { return false; },
  };
}

void SetCurrentThreadName(const std::wstring& pName) noexcept {
  try {
    pthread_setname_np(pthread_self(), ToUtf8(pName.substr(0, 15)).substr(0, 15).c_str());
  } catch (...) {
    // Out of memory: a nameless thread does as well.
  }
}

bool SetCurrentThreadBackground(bool) noexcept {
  return false;
}

bool EnterApartment(bool) noexcept {
  return false;
}

void LeaveApartment() noexcept {}

bool AtLeaveApartment(void (*)()) {
  return false;
}

std::size_t ThreadNumberForSharing() noexcept {
  static std::atomic<std::size_t> next{0};
  static thread_local const std::size_t number = next.fetch_add(1, std::memory_order_relaxed);
  return number;
}

std::optional<std::wstring> EnvironmentVariable(const wchar_t* pName) {
  const char* const value = std::getenv(ToUtf8(pName).c_str());
  if (!value) return std::nullopt;
  return FromUtf8(value);
}

void RelaxProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#endif
}

} // namespace kiv
