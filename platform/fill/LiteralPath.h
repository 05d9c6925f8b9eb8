#pragma once

#include <string>

namespace kiv {

/// The form of an absolute path that file calls take literally: it may be long, or end with a blank or a dot.
inline std::wstring LiteralPath(const std::wstring& pPath) {
  if (pPath.starts_with(LR"(\\?\)")) return pPath;
  return pPath.starts_with(LR"(\\)") ? LR"(\\?\UNC\)" + pPath.substr(2) : LR"(\\?\)" + pPath;
}

} // namespace kiv
