// Lists the Windows folder, and catches an exception that the library raises: the C++ runtime is shared with it.
#include <pathmere/Kiv.Shell.Folders.h>
#include <pathmere/Kiv.Utils.Debug.h>
#include <pathmere/Shell_Win32.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

int main() {
  bool caught = false;
  try {
    kiv::RequireOle(L"do this");
  } catch (const kiv::EException& e) {
    caught = e.Message().starts_with(L"Can't do this: ");
  }
  OleInitialize(nullptr);
  int objects = 0;
  std::wstring logged;
  {
    kiv::TShellFolderSource folders;
    std::unique_ptr<kiv::IFolderStepper> stepper;
    wchar_t windows[MAX_PATH];
    GetWindowsDirectoryW(windows, MAX_PATH);
    if (folders.OpenFolder(windows, stepper) == S_OK) {
      kiv::TFolderObject object;
      while (stepper->Next(object) == kiv::TFolderStep::Object) ++objects;
    }
    const kiv::ScopedDebugSink sink([&](const std::wstring& line) { logged = line; });
    kiv::TDebugLog::LogMessage(L"hello");
  }
  kiv::Shutdown();
  OleUninitialize();
  std::printf("objects %s, exception %s, log %s\n", objects > 5 ? "listed" : "missing", caught ? "caught" : "lost",
              logged.ends_with(L": hello") ? "heard" : "silent");
  return objects > 5 && caught && logged.ends_with(L": hello") ? 0 : 1;
}
