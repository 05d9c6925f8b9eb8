#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <shtypes.h>

#include <string>

namespace kiv {

/// For a library of the platform's ("IShellLibrary"): the path of the folder that new files go to by default. Empty for
/// anything else, and on systems without libraries. The list is absolute and borrowed. The thread must have an
/// apartment.
KIV_EXPORT std::wstring GetDefaultSavePathFromLibrary(PCIDLIST_ABSOLUTE pItemIdList);

} // namespace kiv
