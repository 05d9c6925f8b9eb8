#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <string>

namespace kiv {

/// Opens or starts a file as a double click does ("ShellExecuteExW").
///
/// With `pWait` it returns when the process that was started has ended, however long that takes; the calling thread
/// answers sent messages the while, but nothing else. `pExitCode`, if given, then gets the process's exit code; it
/// stays as it is when no process of its own was started, as for a document that a running program opens. The platform
/// tells the user what went wrong. Answers `S_OK` or the platform's error. The thread must have an apartment.
KIV_EXPORT HRESULT RunShellExecuteEx(const std::wstring& pFile, const std::wstring& pParameters, bool pWait,
                                     DWORD* pExitCode = nullptr);

/// Starts the platform's wizard for a new shortcut in a folder, given by its path, and returns at once. Answers as
/// RunShellExecuteEx does, and `E_INVALIDARG` for an empty path.
KIV_EXPORT HRESULT CreateShortcutShowDialog(const std::wstring& pPath);

} // namespace kiv
