#pragma once

#include <core/PathUtils.h>

#include <string_view>

namespace kiv {

/// True if file attributes are those of a reparse point: a link, a junction, a mount point, a file that isn't at hand
/// ("FILE_ATTRIBUTE_REPARSE_POINT"). `INVALID_FILE_ATTRIBUTES` are nobody's.
constexpr bool IsReparsePoint(DWORD pAttributes) noexcept {
  return pAttributes != INVALID_FILE_ATTRIBUTES && (pAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

/// The same for the file or folder of that path: TPathUtils::IsReparsePoint.
inline bool IsReparsePoint(std::wstring_view pPath) {
  return TPathUtils::IsReparsePoint(pPath);
}

} // namespace kiv
