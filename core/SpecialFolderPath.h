#pragma once

#include <platform/Export.h>

#include <string>
#include <string_view>

namespace kiv {

/// Exchanges a leading special folder for a placeholder, so that the path can be stored and still be right for another
/// user or on another computer: `C:\Users\Ann\Documents\x` becomes `shell:Personal\x`.
///
/// The placeholder is the platform's own name of the folder ("KNOWNFOLDERID"), in the form in which the shell parses
/// it: what is stored can also be typed into an address bar. The longest folder wins, whole components only, ignoring
/// case; a path in no special folder comes back as it is. Neither the disk nor the network is touched. Any thread.
KIV_EXPORT std::wstring NormalizeSpecialFolderPath(std::wstring_view pPath);

/// The way back. A placeholder that isn't known, or whose folder this system hasn't got, comes back as it is.
KIV_EXPORT std::wstring ExpandSpecialFolderPath(std::wstring_view pPath);

} // namespace kiv
