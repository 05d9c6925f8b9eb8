#pragma once

#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <platform/Types.h>

#include <objidl.h>

#include <string>

namespace kiv {

/// A stream over a file, for shells that don't bind one ("IStream").
///
/// `pMode` is made of the access (`STGM_READ`, `STGM_WRITE`, `STGM_READWRITE`), the sharing (`STGM_SHARE_...`; without
/// one others may read, write and delete the file) and `STGM_CREATE`, which makes the file, or empties one that
/// stands. The path is of any length and form.
///
/// Positions and sizes have 64 bits. A clone shares the file, and has a position of its own. `Stat` gives the file's
/// name without its folder. Writes go to the file at once: `Revert` does nothing, and there is no locking of regions.
/// A stream is used by one thread at a time, its clones by others. Answers `S_OK` or a code of "STG Constants".
KIV_EXPORT HRESULT CreateFileStream(const std::wstring& pPath, DWORD pMode, ComPtr<IStream>& pStream);

/// The same for a path in storage form, with the file system's own disposition (`CREATE_NEW`, `OPEN_EXISTING`...).
HRESULT OpenFileStream(const std::wstring& pStoragePath, DWORD pMode, DWORD pDisposition, ComPtr<IStream>& pStream);

} // namespace kiv
