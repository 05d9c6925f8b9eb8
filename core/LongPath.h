#pragma once

#include <platform/Export.h>

#include <string>

namespace kiv {

/// The longest path that the platform takes in any form, in UTF-16 units ("Maximum Path Length Limitation").
inline constexpr std::size_t LongestPath = 32767;

/// The form of an absolute path in which file calls take more than 260 characters: `\\?\C:\...` or
/// `\\?\UNC\server\...`. Short paths, relative ones and those that have the form already stay as they are. Forward
/// slashes are turned, because the platform doesn't look for them in this form.
KIV_EXPORT std::wstring ToLongPath(const std::wstring& pPath);

} // namespace kiv
