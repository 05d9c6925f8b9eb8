#include <platform/DpiAwareness.h>
#include <platform/Execute.h>
#include <platform/Handles.h>
#include <platform/PumpingWait.h>
#include <platform/ShellApi.h>
#include <platform/SystemStrings.h>
#include <platform/TempPath.h>
#include <platform/Wow64.h>

#include <doubles/Crash.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kiv {
namespace {

using enum TDpiAwareness;

TEST(DpiAwareness, IsTheThreadsThenTheProcessesThenNone) {
  static DPI_AWARENESS_CONTEXT current;
  static PROCESS_DPI_AWARENESS process;
  static HRESULT result;
  ScopedShellApi api;
  api->GetThreadDpiAwarenessContext = [] { return current; };
  // Handles of the same context differ: only the platform's comparison tells.
  api->AreDpiAwarenessContextsEqual = [](DPI_AWARENESS_CONTEXT a, DPI_AWARENESS_CONTEXT b) -> WINBOOL {
    return reinterpret_cast<INT_PTR>(a) - 1000 == reinterpret_cast<INT_PTR>(b);
  };
  api->GetProcessDpiAwareness = [](HANDLE, PROCESS_DPI_AWARENESS* awareness) -> HRESULT {
    *awareness = process;
    return result;
  };
  const std::pair<DPI_AWARENESS_CONTEXT, TDpiAwareness> threads[] = {
      {DPI_AWARENESS_CONTEXT_UNAWARE, dpiUnaware},
      {DPI_AWARENESS_CONTEXT_SYSTEM_AWARE, dpiSystem},
      {DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE, dpiPerMonitor},
      {DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2, dpiPerMonitorV2},
      {DPI_AWARENESS_CONTEXT_UNAWARE_GDISCALED, dpiUnaware},
  };
  process = PROCESS_SYSTEM_DPI_AWARE;
  result = S_OK;
  for (const auto& [context, awareness] : threads) {
    current = reinterpret_cast<DPI_AWARENESS_CONTEXT>(reinterpret_cast<INT_PTR>(context) + 1000);
    EXPECT_EQ(GetDpiAwareness(), awareness);
  }
  current = nullptr; // one that nobody knows
  EXPECT_EQ(GetDpiAwareness(), dpiSystem);
  api->AreDpiAwarenessContextsEqual = nullptr;
  const std::pair<PROCESS_DPI_AWARENESS, TDpiAwareness> processes[] = {{PROCESS_DPI_UNAWARE, dpiUnaware},
                                                                       {PROCESS_SYSTEM_DPI_AWARE, dpiSystem},
                                                                       {PROCESS_PER_MONITOR_DPI_AWARE, dpiPerMonitor}};
  for (const auto& [given, awareness] : processes) {
    process = given;
    EXPECT_EQ(GetDpiAwareness(), awareness);
  }
  result = E_ACCESSDENIED;
  EXPECT_EQ(GetDpiAwareness(), dpiUnaware);
  api->GetProcessDpiAwareness = nullptr;
  EXPECT_EQ(GetDpiAwareness(), dpiUnaware);
}

TEST(SystemStrings, AreThePlatformsOrTheDefault) {
  // Which texts there are differs: any that the library has will do.
  wchar_t buffer[1000];
  unsigned id = 1;
  while (id < 10000 && LoadStringW(ShellApi().comdlg32, id, buffer, 1000) == 0) ++id;
  ASSERT_LT(id, 10000U);
  EXPECT_EQ(LoadSystemString(TSystemLibrary::slComDlg32, id, L"mine"), buffer);
  EXPECT_EQ(LoadSystemStrings(TSystemLibrary::slComDlg32, {{id, L"mine"}, {0xFFFE, L"other"}}),
            (std::vector<std::wstring>{buffer, L"other"}));
  EXPECT_EQ(LoadSystemString(TSystemLibrary::slShell32, 0xFFFE, L""), L"");
  ScopedShellApi api;
  api->comdlg32 = nullptr;
  EXPECT_EQ(LoadSystemString(TSystemLibrary::slComDlg32, id, L"mine"), L"mine");
}

TEST(Execute, WaitsForTheProcessAndReadsItsCode) {
  DWORD code = 99;
  EXPECT_EQ(RunShellExecuteEx(L"cmd.exe", L"/c exit 7", true, &code), S_OK);
  EXPECT_EQ(code, 7U);
  code = 99;
  EXPECT_EQ(RunShellExecuteEx(L"cmd.exe", L"/c exit 3", false, &code), S_OK);
  EXPECT_EQ(code, 99U);
}

TEST(PumpingWait, AnswersWhatWasSentBeforeTheWaitAndHasBeenSeen) {
  const HWND window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  ASSERT_TRUE(window);
  const TUniqueHandle answered(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  std::thread sender([&] {
    SendMessageW(window, WM_NULL, 0, 0);
    SetEvent(answered.Get());
  });
  while ((HIWORD(GetQueueStatus(QS_SENDMESSAGE)) & QS_SENDMESSAGE) == 0) SwitchToThread();
  EXPECT_TRUE(AwaitAnsweringMessages(answered.Get(), 0, true));
  sender.join();
  DestroyWindow(window);
}

TEST(Execute, AsksThePlatformAndClosesWhatItGets) {
  static SHELLEXECUTEINFOW seen;
  static std::wstring parameters;
  static HANDLE given;
  ScopedShellApi api;
  api->ShellExecuteExW = [](SHELLEXECUTEINFOW* info) -> WINBOOL {
    seen = *info;
    parameters = info->lpParameters;
    given = info->hProcess = CreateEventW(nullptr, TRUE, TRUE, nullptr); // one that has ended
    return TRUE;
  };
  for (const bool wait : {false, true}) {
    EXPECT_EQ(RunShellExecuteEx(L"x", L"", wait), S_OK);
    EXPECT_EQ((seen.fMask & SEE_MASK_NOCLOSEPROCESS) != 0, true);
    DWORD flags = 0;
    EXPECT_FALSE(GetHandleInformation(given, &flags)) << wait;
  }
  EXPECT_EQ(CreateShortcutShowDialog(L"C:\\My Files"), S_OK);
  EXPECT_EQ(parameters, L"appwiz.cpl,NewLinkHere C:\\My Files\\");
  EXPECT_EQ(CreateShortcutShowDialog(L"D:\\"), S_OK);
  EXPECT_EQ(parameters, L"appwiz.cpl,NewLinkHere D:\\");
  EXPECT_EQ(CreateShortcutShowDialog(L""), E_INVALIDARG);
}

TEST(Execute, FailuresAreAnswered) {
  ScopedShellApi api;
  api->ShellExecuteExW = [](SHELLEXECUTEINFOW*) -> WINBOOL {
    SetLastError(ERROR_CANCELLED);
    return FALSE;
  };
  EXPECT_EQ(RunShellExecuteEx(L"x", L"", true), HRESULT_FROM_WIN32(ERROR_CANCELLED));
  api->ShellExecuteExW = [](SHELLEXECUTEINFOW*) -> WINBOOL {
    SetLastError(ERROR_SUCCESS);
    return FALSE;
  };
  EXPECT_EQ(RunShellExecuteEx(L"x", L"", true), E_FAIL);
  api->ShellExecuteExW = [](SHELLEXECUTEINFOW*) -> WINBOOL {
    test::Crash();
    return TRUE;
  };
  EXPECT_EQ(RunShellExecuteEx(L"x", L"", true), E_FAIL);
  api->ShellExecuteExW = nullptr;
  EXPECT_EQ(RunShellExecuteEx(L"x", L"", true), E_NOTIMPL);
}

TEST(TempPath, IsAFolderInItsLongForm) {
  const std::wstring path = KivGetTempPath();
  ASSERT_TRUE(path.ends_with(L'\\'));
  EXPECT_NE(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0U);
  wchar_t old[MAX_PATH];
  GetEnvironmentVariableW(L"TMP", old, MAX_PATH);
  SetEnvironmentVariableW(L"TMP", L"C:\\PROGRA~1");
  const std::wstring expanded = KivGetTempPath();
  SetEnvironmentVariableW(L"TMP", old);
  EXPECT_TRUE(expanded == L"C:\\Program Files\\" || GetFileAttributesW(L"C:\\PROGRA~1") == INVALID_FILE_ATTRIBUTES)
      << testing::PrintToString(expanded);
}

TEST(Wow64, RevertsOnlyWhatWasDone) {
  static std::vector<void*> reverted;
  static WINBOOL works;
  ScopedShellApi api;
  api->Wow64DisableWow64FsRedirection = [](PVOID* old) -> WINBOOL {
    *old = &works;
    return works;
  };
  api->Wow64RevertWow64FsRedirection = [](PVOID old) -> WINBOOL {
    reverted.push_back(old);
    return TRUE;
  };
  for (const WINBOOL how : {FALSE, TRUE}) {
    works = how;
    RevertWow64FsRedirection(DisableWow64FsRedirection());
    { const ScopedWow64FsRedirectionOff off; }
  }
  EXPECT_EQ(reverted, (std::vector<void*>{&works, &works}));
  api->Wow64DisableWow64FsRedirection = nullptr;
  EXPECT_EQ(DisableWow64FsRedirection(), std::nullopt);
}

} // namespace
} // namespace kiv
