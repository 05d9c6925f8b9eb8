#include <notification/ReportingProbe.h>

#include <core/FolderFunctions.h>
#include <core/IdListFromPath.h>
#include <framework/Application.h>
#include <notification/ShellChangeSource.h>
#include <platform/Handles.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <platform/ShellApi.h>
#include <platform/Signal.h>
#include <platform/TempPath.h>
#include <platform/ThisModule.h>
#include <platform/Threads.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace kiv {

namespace {

using namespace std::chrono_literals;

constexpr auto FirstWait = 40ms;
constexpr ULONGLONG LongestProbe = 2000; // ms
constexpr UINT ShellMessage = WM_USER + 1;
constexpr int FileSystemOnly = SHCNRF_InterruptLevel | SHCNRF_NewDelivery;

/// One run, shared with its thread.
struct TRun {
  TSignal done;
  std::atomic<bool> stopped{false};
  std::atomic<bool> known{false};
  std::atomic<bool> reports{false};
};

struct TState {
  std::shared_ptr<TRun> run;
  std::thread thread;
  std::vector<ShellChangeSource*> sources;
};

// Never destroyed: Shutdown empties it. Main thread.
TState& State() {
  static auto* const state = new TState;
  return *state;
}

bool IsEventWaiting(HWND window, const TRun& run) {
  const ULONGLONG end = GetTickCount64() + LongestProbe;
  for (ULONGLONG now = GetTickCount64(); now < end && !run.stopped; now = GetTickCount64()) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      if (message.hwnd == window && message.message == ShellMessage) return true;
      DispatchMessageW(&message);
    }
    constexpr DWORD slice = 100; // ms, so that a stop is noticed
    MsgWaitForMultipleObjectsEx(0, nullptr, slice, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
  }
  return false;
}

bool IsReported(const std::wstring& folder, const TRun& run) {
  const auto register_window = ShellApi().SHChangeNotifyRegister;
  const auto deregister = ShellApi().SHChangeNotifyDeregister;
  const TUniqueItemIdList list = GetIdListFromPath(nullptr, folder);
  const HWND window =
      CreateWindowExW(0, L"STATIC", nullptr, WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, ThisModule(), nullptr);
  bool reported = false;
  if (register_window && deregister && list && window) {
    const SHChangeNotifyEntry entry{list.Get(), FALSE};
    const ULONG id = register_window(window, FileSystemOnly, SHCNE_DISKEVENTS, ShellMessage, 1, &entry);
    reported = id != 0 && CreateEmptyFile(folder + L"\\x") && IsEventWaiting(window, run);
    if (id != 0) deregister(id);
  }
  if (window) DestroyWindow(window);
  return reported;
}

void Tell(const std::shared_ptr<TRun>& run) {
  if (State().run != run) return;
  const std::vector<ShellChangeSource*> sources = State().sources;
  for (ShellChangeSource* source : sources) {
    const auto& standing = State().sources;
    if (std::find(standing.begin(), standing.end(), source) == standing.end()) continue;
    source->OnProbed(run->reports);
  }
}

void Probe(const std::shared_ptr<TRun>& run) {
  const bool apartment = EnterApartment(false);
  const std::wstring folder = KivGetTempPath() + L"kivprobe" + std::to_wstring(GetCurrentProcessId());
  // One that a process of the same number left behind does as well.
  if (apartment && (CreateDirectoryW(folder.c_str(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS)) {
    run->reports = IsReported(folder, *run);
    DeleteFileW((folder + L"\\x").c_str());
    RemoveDirectoryW(folder.c_str());
  }
  if (apartment) LeaveApartment();
  run->known = true;
  run->done.Set();
  if (!run->stopped) MainThread::Queue([run] { Tell(run); });
}

void End() {
  TState& state = State();
  if (state.run) state.run->stopped = true;
  if (state.thread.joinable()) state.thread.join();
  state.run.reset();
}

} // namespace

std::optional<bool> ReportingProbe::Result() {
  TState& state = State();
  if (!state.run) {
    const auto run = state.run = std::make_shared<TRun>();
    state.thread = std::thread([run] {
      try {
        Probe(run);
      } catch (...) {
        ReportException(std::current_exception());
      }
    });
    AtShutdown(&End);
    run->done.WaitFor(FirstWait);
  }
  return state.run->known ? std::optional<bool>(state.run->reports) : std::nullopt;
}

void ReportingProbe::Add(ShellChangeSource& pSource) {
  State().sources.push_back(&pSource);
}

void ReportingProbe::Remove(ShellChangeSource& pSource) noexcept {
  std::erase(State().sources, &pSource);
}

} // namespace kiv
