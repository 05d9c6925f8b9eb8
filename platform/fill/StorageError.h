#pragma once

#include <platform/Types.h>

#include <string>

namespace kiv {

/// The code that a storage or stream answers for an error of the file system ("STG Constants").
HRESULT StorageError(DWORD pError) noexcept;
/// The same for the calling thread's last error; never a success.
HRESULT LastStorageError() noexcept;

/// The full path in the form that takes any length and any name, `\\?\...`. Empty for an empty path, one that is too
/// long, and a device.
std::wstring ToStoragePath(const std::wstring& pPath);
/// The path at which a folder really stands: links, replaced drives and short names on the way resolved. The same path
/// if the platform can't tell.
std::wstring ResolvedPath(const std::wstring& pFolder);
/// The path of something in a folder that is given in that form.
std::wstring PathInFolder(const std::wstring& pFolder, const std::wstring& pName);
/// The last component; a root's own path.
std::wstring NameOfPath(const std::wstring& pPath);

} // namespace kiv
