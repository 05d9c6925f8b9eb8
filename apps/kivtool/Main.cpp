#include "Commands.h"
#include "IconFile.h"
#include "WatchLoop.h"

#include <core/FileFunctions.h>
#include <core/ItemIdList.h>
#include <core/PathUtils.h>
#include <core/ShellFolderSource.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <platform/Text.h>
#include <platform/Types.h>

#include <ole2.h>

#include <atomic>
#include <string>
#include <vector>

namespace {

/// One of the standard streams: a console gets UTF-16, anything else UTF-8 bytes as they are.
class TStandardStream {
public:
  explicit TStandardStream(DWORD pWhich) : fHandle(GetStdHandle(pWhich)) {
    DWORD mode = 0;
    fIsConsole = GetConsoleMode(fHandle, &mode) != FALSE;
  }

  bool Write(std::string_view pText) const {
    if (fIsConsole) {
      const std::wstring wide = kiv::FromUtf8(pText);
      return WriteAll(wide.data(), wide.size(), [this](const wchar_t* text, DWORD length, DWORD* written) {
        return WriteConsoleW(fHandle, text, length, written, nullptr);
      });
    }
    return WriteAll(pText.data(), pText.size(), [this](const char* text, DWORD length, DWORD* written) {
      return WriteFile(fHandle, text, length, written, nullptr);
    });
  }

  /// Some more of an input stream; nothing at its end.
  std::string Read() const {
    DWORD length = 0;
    if (fIsConsole) {
      wchar_t text[4096];
      // A line typed; Ctrl+Z at its start is the end.
      if (!ReadConsoleW(fHandle, text, 4096, &length, nullptr) || length == 0 || text[0] == 0x1A) return {};
      return kiv::ToUtf8({text, length});
    }
    std::string bytes(64 * 1024, '\0');
    if (!ReadFile(fHandle, bytes.data(), static_cast<DWORD>(bytes.size()), &length, nullptr)) return {};
    bytes.resize(length);
    return bytes;
  }

private:
  template <typename TChar, typename F>
  static bool WriteAll(const TChar* text, std::size_t length, F&& write) {
    constexpr std::size_t most = 16 * 1024; // consoles refuse much larger pieces
    while (length > 0) {
      DWORD written = 0;
      if (!write(text, static_cast<DWORD>(length < most ? length : most), &written) || written == 0) return false;
      text += written;
      length -= written;
    }
    return true;
  }

  HANDLE fHandle;
  bool fIsConsole = false;
};

kiv::TFileTime ToLocalTime(kiv::TFileTime pTime) {
  FILETIME time{static_cast<DWORD>(pTime), static_cast<DWORD>(pTime >> 32U)};
  SYSTEMTIME utc;
  SYSTEMTIME local;
  if (!FileTimeToSystemTime(&time, &utc) || !SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) ||
      !SystemTimeToFileTime(&local, &time)) {
    return pTime;
  }
  return static_cast<kiv::TFileTime>(time.dwHighDateTime) << 32U | time.dwLowDateTime;
}

std::wstring ToFullPath(const std::wstring& pPath) {
  const bool drive = pPath.size() == 2 && pPath[1] == L':'; // its root, not its current folder
  const bool literal = pPath.starts_with(LR"(\\?\)");
  if (pPath.empty() || kiv::IsShellName(pPath) || drive || literal || pPath.size() > kiv::LongestPath) return pPath;
  std::wstring full(kiv::LongestPath + 1, L'\0');
  const DWORD length = GetFullPathNameW(pPath.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
  if (length == 0 || length >= full.size()) return pPath;
  full.resize(length);
  return full;
}

std::atomic<bool> gStopped{false};

// The first Ctrl+C asks, the second one ends the program.
BOOL WINAPI OnConsoleEvent(DWORD pEvent) {
  if (pEvent != CTRL_C_EVENT && pEvent != CTRL_BREAK_EVENT) return FALSE;
  return gStopped.exchange(true) ? FALSE : TRUE;
}

// From the first call on. Commands that don't ask are ended as any program is.
bool IsStopped() {
  static const BOOL watching = SetConsoleCtrlHandler(&OnConsoleEvent, TRUE);
  return watching && gStopped;
}

} // namespace

int wmain(int pCount, wchar_t** pArguments) {
  const std::vector<std::wstring> arguments(pArguments + 1, pArguments + pCount);
  const TStandardStream in(STD_INPUT_HANDLE);
  const TStandardStream out(STD_OUTPUT_HANDLE);
  const TStandardStream err(STD_ERROR_HANDLE);
  OleInitialize(nullptr);
  kiv::MainThread::Attach(); // what is remembered between two questions is the main thread's
  int result = kivtool::Failed;
  {
    kiv::TShellFolderSource folders(kiv::TFactsPrecision::Exact);
    kiv::TShellFolderSource navigation_folders(kiv::TFactsPrecision::Exact, true);
    kivtool::TEnvironment environment{
        .folders = folders,
        .in = [&in] { return in.Read(); },
        .out = [&out](std::string_view text) { return out.Write(text); },
        .err = [&err](std::string_view text) { err.Write(text); },
        .toLocalTime = &ToLocalTime,
        .toFullPath = &ToFullPath,
        .makeList = [](const std::wstring& path) { return kiv::TKivItemIdList::Create(path); },
        .parseText = [](const std::wstring& text) { return kiv::TKivItemIdList::Parse(text); },
        .compareNames = &kiv::CompareFilenames,
        .navigationFolders = &navigation_folders,
        .isStopped = &IsStopped,
        .watch = [](const auto& paths, bool recursive,
                    const auto& tell) { return kivtool::WatchPaths(paths, recursive, tell, &IsStopped); },
        .saveIcon = &kivtool::SaveIcon,
    };
    result = kivtool::Run(arguments, environment);
  }
  kiv::Shutdown();
  OleUninitialize();
  return result;
}
