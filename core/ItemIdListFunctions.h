#pragma once

#include <core/IItemIdList.h>
#include <platform/Types.h>

#include <objidl.h>

#include <string>
#include <string_view>

namespace kiv {

/// Where a special folder is; empty if this system hasn't got it, or it is virtual.
KIV_EXPORT std::wstring GetPathFromSpecialFolder(TKivShellFolder pFolder);

/// Whether the list, or the folder that it lies in, is the result of a search. What has no path is judged by its
/// parsing name. `pAcceptSearchFolder` says whether the search folder itself counts, or only what lies in it. False for
/// nil.
KIV_EXPORT bool IsInSearchFolder(IItemIdList* pItemIdList, bool pAcceptSearchFolder);

/// The path that a shell link leads to; empty if it isn't a link, or its target has none.
KIV_EXPORT std::wstring GetLinkTarget(std::wstring_view pPath);

/// A folder's storage: new folders, deleting without undo, renaming ("IStorage"). The folder's own, or, where the shell
/// has none for a folder on a disk, one over the file system. `E_NOINTERFACE` for a folder that can't be changed this
/// way, the platform's code for what can't be bound.
KIV_EXPORT HRESULT GetFolderStorage(IItemIdList* pFolder, ComPtr<IStorage>& pStorage);

} // namespace kiv
