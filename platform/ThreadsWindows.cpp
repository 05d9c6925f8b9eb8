#include <platform/Threads.h>

#include <platform/ApartmentWait.h>
#include <platform/Handles.h>
#include <platform/Types.h>

#include <objbase.h>
#include <process.h>

#include <array>
#include <cstring>
#include <utility>
#include <vector>

namespace kiv {

namespace {

// --- threads ---------------------------------------------------------------------------------------------------------

constexpr DWORD LongestEnd = 1000; // ms

int PriorityValue(TThreadPriority priority) noexcept {
  switch (priority) {
  case TThreadPriority::tpIdle:
    return THREAD_PRIORITY_IDLE;
  case TThreadPriority::tpLowest:
    return THREAD_PRIORITY_LOWEST;
  case TThreadPriority::tpLower:
    return THREAD_PRIORITY_BELOW_NORMAL;
  case TThreadPriority::tpHigher:
    return THREAD_PRIORITY_ABOVE_NORMAL;
  case TThreadPriority::tpHighest:
    return THREAD_PRIORITY_HIGHEST;
  case TThreadPriority::tpTimeCritical:
    return THREAD_PRIORITY_TIME_CRITICAL;
  default:
    return THREAD_PRIORITY_NORMAL;
  }
}

class TWindowsThread final : public IPlatformThread {
public:
  explicit TWindowsThread(HANDLE pThread) noexcept : fThread(pThread) {}
  void SetPriority(TThreadPriority pPriority) noexcept override {
    SetThreadPriority(fThread.Get(), PriorityValue(pPriority));
  }
  bool ForceEnd() noexcept override {
    if (!TerminateThread(fThread.Get(), 0)) return false;
    // The end is asynchronous: nothing of the thread's may be freed before it has happened. It doesn't while a driver
    // holds the thread.
    return WaitForSingleObject(fThread.Get(), LongestEnd) == WAIT_OBJECT_0;
  }

private:
  TUniqueHandle fThread;
};

unsigned __stdcall RunBody(void* argument) {
  const std::unique_ptr<std::function<void()>> body(static_cast<std::function<void()>*>(argument));
  (*body)();
  return 0;
}

std::unique_ptr<IPlatformThread> BeginThread(std::function<void()> body) {
  auto argument = std::make_unique<std::function<void()>>(std::move(body));
  const std::uintptr_t handle = _beginthreadex(nullptr, 0, &RunBody, argument.get(), 0, nullptr);
  if (handle == 0) return nullptr;
  static_cast<void>(argument.release()); // the thread's now
  return std::make_unique<TWindowsThread>(reinterpret_cast<HANDLE>(handle));
}

// --- apartments ------------------------------------------------------------------------------------------------------

struct TApartmentState {
  int entered = 0; // how many times; COM lets a thread in again if it is for the same kind of apartment
  bool served = false;
  HANDLE never = nullptr; // an event that nobody sets: what a sleep waits for
};
thread_local TApartmentState gApartment;
// Raw, like all that lies here: some runtimes (MinGW) free a thread's variables before they destroy them.
thread_local std::vector<void (*)()>* gBeforeLeaving = nullptr;

void SleepServing(std::chrono::milliseconds time) {
  const DWORD limit = time.count() > 0 ? static_cast<DWORD>(time.count()) : 0;
  if (limit == 0 || !gApartment.served || !gApartment.never || !WaitServingApartment(gApartment.never, limit)) {
    Sleep(limit);
  }
}

// --- processors ------------------------------------------------------------------------------------------------------

std::uint64_t Value(const FILETIME& time) noexcept {
  return static_cast<std::uint64_t>(time.dwHighDateTime) << 32U | time.dwLowDateTime;
}

bool ReadSystemTimes(TSystemTimes& times) {
  FILETIME idle;
  FILETIME kernel;
  FILETIME user;
  if (!GetSystemTimes(&idle, &kernel, &user)) return false;
  times = {Value(idle), Value(kernel), Value(user)};
  return true;
}

using TQuerySystemInformation = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);

TQuerySystemInformation QuerySystemInformation() noexcept {
  static const auto query = [] {
    const HMODULE library = GetModuleHandleW(L"ntdll.dll");
    return library ? reinterpret_cast<TQuerySystemInformation>(
                         reinterpret_cast<void*>(GetProcAddress(library, "NtQuerySystemInformation")))
                   : nullptr;
  }();
  return query;
}

// A signed 64-bit number at an offset.
double LargeAt(const void* buffer, std::size_t offset) noexcept {
  std::int64_t value = 0;
  std::memcpy(&value, static_cast<const char*>(buffer) + offset, sizeof(value));
  return static_cast<double>(value);
}

bool ReadIdleCounters(TIdleCounters& counters) {
  constexpr ULONG performance_class = 2;
  constexpr ULONG time_of_day_class = 3;
  constexpr LONG length_mismatch = static_cast<LONG>(0xC0000004);
  const TQuerySystemInformation query = QuerySystemInformation();
  if (!query) return false;
  alignas(8) std::array<unsigned char, 32> time_of_day{};
  if (query(time_of_day_class, time_of_day.data(), 32, nullptr) < 0) return false;
  // Idle time comes first; what follows grows with the platform's versions, and the length must fit.
  alignas(8) std::array<unsigned char, 2048> performance{};
  ULONG needed = 0;
  LONG status = query(performance_class, performance.data(), 364, &needed);
  if (status == length_mismatch && needed > 0 && needed <= performance.size()) {
    status = query(performance_class, performance.data(), needed, nullptr);
  }
  if (status < 0) return false;
  counters = {LargeAt(performance.data(), 0), LargeAt(time_of_day.data(), 8)};
  return true;
}

} // namespace

TThreadApi detail::PlatformThreadApi() {
  return {
      .beginThread = &BeginThread,
      .tickCount = [] { return static_cast<std::uint64_t>(GetTickCount64()); },
      .sleep = &SleepServing,
      .waitFor = [](TSignal& signal, std::chrono::milliseconds limit) { return signal.WaitFor(limit); },
      .readSystemTimes = &ReadSystemTimes,
      .readIdleCounters = &ReadIdleCounters,
  };
}

void SetCurrentThreadName(const std::wstring& pName) noexcept {
  // Windows 10 before version 1607 hasn't got it.
  using TSetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
  static const auto set = reinterpret_cast<TSetDescription>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
  if (set) set(GetCurrentThread(), pName.c_str());
}

bool SetCurrentThreadBackground(bool pBackground) noexcept {
  return SetThreadPriority(GetCurrentThread(),
                           pBackground ? THREAD_MODE_BACKGROUND_BEGIN : THREAD_MODE_BACKGROUND_END) != FALSE;
}

bool EnterApartment(bool pFreeThreaded) noexcept {
  const DWORD flags = pFreeThreaded ? COINIT_MULTITHREADED : COINIT_APARTMENTTHREADED;
  if (FAILED(CoInitializeEx(nullptr, flags | COINIT_SPEED_OVER_MEMORY))) return false;
  if (gApartment.entered++ == 0 && !pFreeThreaded) {
    gApartment.served = true;
    gApartment.never = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  }
  return true;
}

void LeaveApartment() noexcept {
  // One may register another.
  while (gApartment.entered == 1 && gBeforeLeaving && !gBeforeLeaving->empty()) {
    const auto finalizer = gBeforeLeaving->back();
    gBeforeLeaving->pop_back();
    finalizer();
  }
  if (--gApartment.entered == 0) {
    delete std::exchange(gBeforeLeaving, nullptr);
    const TApartmentState state = std::exchange(gApartment, {});
    if (state.never) CloseHandle(state.never);
  }
  CoUninitialize();
}

bool AtLeaveApartment(void (*pFinalizer)()) {
  if (gApartment.entered == 0) return false;
  if (!gBeforeLeaving) gBeforeLeaving = new std::vector<void (*)()>;
  gBeforeLeaving->push_back(pFinalizer);
  return true;
}

bool ServesApartment() noexcept {
  return gApartment.served;
}

std::optional<bool> WaitServingApartment(HANDLE pObject, DWORD pLimit) noexcept {
  DWORD index = 0;
  const HRESULT hr = CoWaitForMultipleHandles(COWAIT_DEFAULT, pLimit, 1, &pObject, &index);
  if (hr == S_OK) return true;
  if (hr == RPC_S_CALLPENDING) return false;
  return std::nullopt;
}

std::size_t ThreadNumberForSharing() noexcept {
  return GetCurrentThreadId() / 4; // the platform counts in steps of four
}

std::optional<std::wstring> EnvironmentVariable(const wchar_t* pName) {
  std::wstring value(GetEnvironmentVariableW(pName, nullptr, 0), L'\0');
  if (value.empty()) return std::nullopt;
  value.resize(GetEnvironmentVariableW(pName, value.data(), static_cast<DWORD>(value.size())));
  return value;
}

void RelaxProcessor() noexcept {
  YieldProcessor();
}

} // namespace kiv
