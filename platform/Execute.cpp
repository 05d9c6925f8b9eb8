#include <platform/Execute.h>

#include <platform/FaultGuard.h>
#include <platform/Handles.h>
#include <platform/PumpingWait.h>
#include <platform/ShellApi.h>

namespace kiv {

HRESULT RunShellExecuteEx(const std::wstring& pFile, const std::wstring& pParameters, bool pWait, DWORD* pExitCode) {
  const auto execute = ShellApi().ShellExecuteExW;
  if (!execute) return E_NOTIMPL;
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof(info);
  // A thread that is about to wait can't serve what the platform would leave for later.
  info.fMask = SEE_MASK_NOCLOSEPROCESS | (pWait ? SEE_MASK_NOASYNC : 0);
  info.lpFile = pFile.c_str();
  info.lpParameters = pParameters.c_str();
  info.nShow = SW_SHOWNORMAL;
  bool started = false;
  DWORD error = ERROR_SUCCESS;
  const HRESULT hr = GuardedCall([&] {
    started = execute(&info) != FALSE;
    if (!started) error = GetLastError();
  });
  const TUniqueHandle process(info.hProcess);
  if (FAILED(hr)) return hr;
  if (!started) return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
  if (!pWait || !process) return S_OK;
  AwaitAnsweringMessages(process.Get(), 0, true);
  DWORD code = 0;
  if (pExitCode && GetExitCodeProcess(process.Get(), &code)) *pExitCode = code;
  return S_OK;
}

HRESULT CreateShortcutShowDialog(const std::wstring& pPath) {
  if (pPath.empty()) return E_INVALIDARG;
  wchar_t system[MAX_PATH];
  const UINT length = GetSystemDirectoryW(system, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) return E_FAIL;
  // Everything behind the name is the folder, blanks included: no quotes. It is known as one by its delimiter.
  std::wstring parameters = L"appwiz.cpl,NewLinkHere " + pPath;
  if (parameters.back() != L'\\') parameters += L'\\';
  return RunShellExecuteEx(std::wstring(system, length) + L"\\rundll32.exe", parameters, false);
}

} // namespace kiv
