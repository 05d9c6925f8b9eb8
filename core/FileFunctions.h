#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <objidl.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

// What the library asks the platform about files, drives and names. Everything may be called from any thread; whatever
// touches a drive keeps the platform from showing dialogs about it, unless said otherwise. A path may be as long as the
// platform takes any (see TPathUtils::GetUnicodeAPICallPath); one that holds a NUL is nobody's.

/// True if there is a file or folder of that path.
KIV_EXPORT bool FileOrFolderExists(std::wstring_view pPath);
/// The size in bytes that a folder's listing shows; -1 if there is no such file.
KIV_EXPORT std::int64_t GetFileSize64(std::wstring_view pPath);
/// The same from a listing's record.
KIV_EXPORT std::int64_t GetFileSize64(const WIN32_FIND_DATAW& pData) noexcept;
/// As GetFileSize64, but at most 2,147,483,647.
KIV_EXPORT std::int32_t GetFileSize(std::wstring_view pPath);
KIV_EXPORT std::int32_t GetFileSize(const WIN32_FIND_DATAW& pData) noexcept;

/// True if the drive or share that the path lies on can be used: a medium is in, a server answers. May take as long as
/// a server needs not to answer. With `pShowErrors` the platform may ask the user for a medium.
KIV_EXPORT bool IsDriveReady(std::wstring_view pPath, bool pShowErrors = false);
/// True for a UNC path and for a drive that is connected to one.
KIV_EXPORT bool IsNetworkPath(std::wstring_view pPath);
/// The bytes that are free to the user, and all bytes, of the drive or share that the path lies on. If they can't be
/// had the answer is false and both are 0.
KIV_EXPORT bool KivGetDiskFreeSpace(std::wstring_view pPath, std::int64_t& pFree, std::int64_t& pTotal);

/// The text with "%NAME%" replaced by that variable of the environment. A 32-bit process on a 64-bit system gets the
/// folders of programs that 64-bit ones get. A text that the platform can't expand stays.
KIV_EXPORT std::wstring KIVExpandEnvironmentStrings(const std::wstring& pText);
/// The folder of the user's own folders, without a delimiter at its end; empty if there is none.
KIV_EXPORT std::wstring GetUserProfilePath();
/// The folder of Windows, without a delimiter at its end.
KIV_EXPORT std::wstring KivGetWindowsPath();
/// The name that the shell shows for a path; the path itself if the shell has none.
KIV_EXPORT std::wstring GetFriendlyName(const std::wstring& pPath);
/// A size in bytes as the shell shows it, in the user's language: "1.23 MB", or with `pKilobytes` "1,257 KB".
KIV_EXPORT std::wstring FormatByteSize(std::int64_t pValue, bool pKilobytes);
/// The order in which the shell lists names ("StrCmpLogicalW"), which takes digits for numbers: below 0, 0, above 0.
KIV_EXPORT int CompareFilenames(const std::wstring& pFirst, const std::wstring& pSecond) noexcept;
/// True in a 32-bit process on a 64-bit system.
KIV_EXPORT bool IsWOW64();

/// Posts to a window what it gets when files are dropped on it (`WM_DROPFILES`), at the origin of its client area. The
/// window may belong to another process. Names that are empty or hold a NUL are left out. False if it can't be reached,
/// or there is no file.
KIV_EXPORT bool SendDropFiles(HWND pWindow, const std::vector<std::wstring>& pFiles);

} // namespace kiv
