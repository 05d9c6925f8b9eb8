#include <forms/Timer.h>

#include <framework/Application.h>
#include <framework/Exceptions.h>

#include <exception>
#include <unordered_map>
#include <utility>

namespace kiv {

namespace {

// The platform hands its number back, and no more.
std::unordered_map<UINT_PTR, TTimer*>& RunningTimers() {
  static std::unordered_map<UINT_PTR, TTimer*> timers;
  return timers;
}

} // namespace

TTimer::~TTimer() {
  BeginDestruction();
  Stop();
}

void TTimer::SetEnabled(bool pEnabled) {
  if (fEnabled == pEnabled) return;
  fEnabled = pEnabled;
  Start();
}

void TTimer::SetInterval(int pInterval) {
  fInterval = pInterval;
  Start();
}

void TTimer::SetOnTimer(TNotifyEvent pEvent) {
  fOnTimer = std::move(pEvent);
  Start();
}

void TTimer::Timer() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnTimer, this));
}

void TTimer::Stop() noexcept {
  if (fId == 0) return;
  KillTimer(nullptr, fId);
  RunningTimers().erase(std::exchange(fId, 0));
}

void TTimer::Start() {
  Stop();
  if (!fEnabled || fInterval <= 0 || !fOnTimer || IsDesigning()) return;
  fId = SetTimer(nullptr, 0, static_cast<UINT>(fInterval), &TTimer::Elapsed);
  if (fId == 0) throw EOSError(GetLastError(), L"Not enough timers available");
  RunningTimers().emplace(fId, this);
}

void CALLBACK TTimer::Elapsed(HWND, UINT, UINT_PTR pId, DWORD) {
  const auto found = RunningTimers().find(pId);
  if (found == RunningTimers().end()) return; // its last message, which was on the way
  try {
    found->second->Timer();
  } catch (...) {
    ReportException(std::current_exception());
  }
}

} // namespace kiv
