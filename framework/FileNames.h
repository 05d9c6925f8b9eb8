#pragma once

#include <platform/Export.h>

#include <string>
#include <string_view>

namespace kiv {

// The parts of a file's name as text: nothing here asks the disk. Parts end at "\", "/" and, since it stands behind a
// drive's letter, ":". Any thread.

/// What stands behind the last delimiter: "a.txt" of "C:\dir\a.txt", nothing of "C:\dir\".
KIV_EXPORT std::wstring ExtractFileName(std::wstring_view pFileName);
/// Everything up to the last delimiter, that one included: "C:\dir\" of "C:\dir\a.txt". With ExtractFileName it makes
/// up the whole.
KIV_EXPORT std::wstring ExtractFilePath(std::wstring_view pFileName);
/// The same without the delimiter at its end, unless a root needs it: "C:\dir" of "C:\dir\a.txt", "C:\" of "C:\a.txt",
/// "C:" of "C:a.txt", "\\" of "\\server".
KIV_EXPORT std::wstring ExtractFileDir(std::wstring_view pFileName);
/// "C:" or "\\server\share"; empty for what begins with neither.
KIV_EXPORT std::wstring ExtractFileDrive(std::wstring_view pFileName);
/// The last "." of the name and what follows it; empty if the name has none.
KIV_EXPORT std::wstring ExtractFileExt(std::wstring_view pFileName);

} // namespace kiv
