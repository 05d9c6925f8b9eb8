#include "WatchLoop.h"

#include <core/ItemIdList.h>
#include <framework/Application.h>
#include <notification/ChangeNotifier.h>

namespace kivtool {

namespace {

kiv::TFileTime Now() {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return static_cast<kiv::TFileTime>(now.dwHighDateTime) << 32U | now.dwLowDateTime;
}

} // namespace

std::vector<std::wstring> WatchPaths(const std::vector<std::wstring>& pPaths, bool pRecursive,
                                     const std::function<bool(const TWatchedChange&)>& pTell,
                                     const std::function<bool()>& pIsStopped) {
  constexpr DWORD slice = 100; // ms between looks at whether the user has had enough
  kiv::Application();
  kiv::TKivShellChangeNotifier notifier;
  notifier.SetRecursive(pRecursive);
  bool goes_on = true;
  notifier.SetOnChange([&](auto*, kiv::TNotificationEvent event, const std::wstring& path1, const std::wstring& path2) {
    if (goes_on) goes_on = pTell({Now(), event, path1, path2});
  });
  std::vector<std::wstring> failed;
  for (const std::wstring& path : pPaths) {
    const auto list = kiv::TKivItemIdList::Create(path);
    if (list->IsInvalid()) {
      failed.push_back(path);
    } else {
      notifier.AddItemIdList(list.Get());
    }
  }
  if (notifier.GetCount() == 0) return failed;
  notifier.Start();
  MSG message;
  while (goes_on && !pIsStopped()) {
    MsgWaitForMultipleObjectsEx(0, nullptr, slice, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    while (goes_on && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
  }
  return failed;
}

} // namespace kivtool
