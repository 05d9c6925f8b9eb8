#pragma once

#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <platform/Types.h>

#include <objidl.h>

#include <string>

namespace kiv {

/// A storage over a folder of the file system, for shells whose folders offer none ("IStorage"). Files are its streams,
/// folders its storages. Paths are of any length.
///
/// - Element names are one component of a path: nothing outside the folder is reached. New ones must be such as the
///   platform takes; everything else is `STG_E_INVALIDNAME`.
/// - `CreateStorage` answers `STG_E_FILEALREADYEXISTS` for whatever stands there, also with `STGM_CREATE`: no folder is
///   replaced by an empty one. `CreateStream` with `STGM_CREATE` empties a file that stands.
/// - `DestroyElement` removes a folder with all that is in it, for good, read-only files too. Neither it nor `CopyTo`
///   follows links to folders; `CopyTo` leaves them out.
/// - `MoveElementTo` doesn't replace anything, `CopyTo` does, and merges folders. A folder can't go into itself, nor
///   be copied there by a link, a short name or another letter of its drive.
/// - The access mode of a storage is that of its elements' own calls: one opened for reading can make elements.
/// - There are no transactions: `Commit` and `Revert` do nothing. There is no class and there are no state bits.
///
/// Answers, as its methods do, `S_OK` or a code of "STG Constants"; `STG_E_PATHNOTFOUND` if there is no such folder.
/// Any thread.
KIV_EXPORT HRESULT CreateFileStorage(const std::wstring& pFolder, ComPtr<IStorage>& pStorage);

} // namespace kiv
