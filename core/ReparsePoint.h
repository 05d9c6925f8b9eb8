#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <string>

namespace kiv {

/// True if file attributes are those of a reparse point: a link, a junction, a mount point, a file that isn't at hand
/// ("FILE_ATTRIBUTE_REPARSE_POINT"). `INVALID_FILE_ATTRIBUTES` are nobody's.
constexpr bool IsReparsePoint(DWORD pAttributes) noexcept {
  return pAttributes != INVALID_FILE_ATTRIBUTES && (pAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

/// The same for the file or folder of that path, itself and not what it leads to. False if there is none. Any length.
KIV_EXPORT bool IsReparsePoint(const std::wstring& pPath);

} // namespace kiv
