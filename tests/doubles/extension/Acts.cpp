#include "Acts.h"

#include "Extension.h"

#include <platform/Handles.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>

namespace kiv::test {

namespace {

constexpr DWORD MostWaiting = 60'000; // milliseconds; a test that went away
constexpr DWORD SlowStep = 20;

void WaitForTest() {
  const TUniqueHandle arrived(OpenEventW(EVENT_MODIFY_STATE, FALSE, ExtensionArrived));
  const TUniqueHandle go_on(OpenEventW(SYNCHRONIZE, FALSE, ExtensionGoOn));
  if (arrived) SetEvent(arrived.Get());
  if (go_on) WaitForSingleObject(go_on.Get(), MostWaiting);
}

std::atomic<DWORD> gWatched{0};
std::wstring gAsks; // the watched thread's

} // namespace

void NoteAsk(TMethod pMethod) {
  if (GetCurrentThreadId() == gWatched) gAsks += NameOf(pMethod) + L' ';
}

void WatchAsksOf(DWORD pThread) {
  gWatched = pThread;
  gAsks.clear();
}

const std::wstring& NotedAsks() {
  return gAsks;
}

std::optional<HRESULT> Do(TDeed pDeed) {
  switch (pDeed) {
  case TDeed::Own:
    // The platform's own case of a callee that meets an access violation and handles it.
    if (!IsBadReadPtr(reinterpret_cast<const void*>(std::uintptr_t{0x10}), 1)) std::abort();
    return std::nullopt;
  case TDeed::Fail:
    return E_ACCESSDENIED;
  case TDeed::Empty:
    return S_OK;
  case TDeed::Wait:
    WaitForTest();
    return std::nullopt;
  case TDeed::Slow:
    Sleep(SlowStep);
    return std::nullopt;
  default:
    return std::nullopt;
  }
}

} // namespace kiv::test
