#pragma once

#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <platform/Handles.h>

#include <shobjidl.h>

#include <string_view>

namespace kiv {

/// A path cut at its first "\" or "/". A long-path prefix (`\\?\`) is left out.
struct TPathParts {
  std::wstring_view head;
  std::wstring_view tail; ///< empty if nothing follows
};
KIV_EXPORT TPathParts SplitAtFirstDelimiter(std::wstring_view pPath) noexcept;

/// Finds an object by the names of the levels that lead to it, by looking through folder after folder: for paths that
/// the platform doesn't parse, or would change. On each level the first object that is known by the name is taken (see
/// TObjectNames::IsKnownAs); what lies elsewhere isn't tried. Returns a list relative to the folder; empty if a name
/// isn't found, or a folder fails.
///
/// Slow: reads every folder on the way. `pWindow` is the parent of dialogs that the folders may show; with one the
/// platform may also ask for missing disks. Null: nothing is shown. Used on the folder's thread.
KIV_EXPORT TUniqueItemIdList FindByNames(ComPtr<IShellFolder> pFolder, std::wstring_view pPath, HWND pWindow);

} // namespace kiv
