#pragma once

#include <platform/Export.h>
#include <platform/Handles.h>
#include <platform/Types.h>

#include <string_view>

namespace kiv {

// Files and folders of the disk, by paths of any length. Any thread.

/// Starts a listing of a pattern, or finds one file or folder; a delimiter at the end counts for nothing. A 32-bit
/// process gets the real system folder. Empty if there is nothing; the thread's last error then says why, and after a
/// success it is as it was ("FindFirstFile").
KIV_EXPORT TUniqueFind FindFirst(std::wstring_view pPath, WIN32_FIND_DATAW& pFindData);
/// Whether there is a file, not a folder, of that path.
KIV_EXPORT bool IsFile(std::wstring_view pPath);
KIV_EXPORT bool IsFolder(std::wstring_view pPath);

/// Makes a folder and what is missing of those that it lies in. True if it is there at the end. Raises
/// EArgumentException for an empty path.
KIV_EXPORT bool ForceDirectories(std::wstring_view pFullPath);
/// Makes an empty file. False if it can't be made, or there is something of that path already, which stays.
KIV_EXPORT bool CreateEmptyFile(std::wstring_view pFullPath);

} // namespace kiv
