#pragma once

#include <platform/Export.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

/// A folder whose place differs from one computer or user to the next, and the name that stands for it.
struct TNamedFolder {
  std::wstring name;
  std::wstring path;
};

/// Exchanges the longest of the folders that the path lies in, or is, for its name. Whole components only, ignoring
/// case; the first of several folders with the same path. A path in none of them, and a folder without a path, is left
/// alone.
KIV_EXPORT std::wstring ReplaceFolderByName(std::wstring_view pPath, std::span<const TNamedFolder> pFolders);

/// The way back: a leading name, whole and ignoring case, for its folder's path. A name that no folder has, or whose
/// folder has no path here, is left alone.
KIV_EXPORT std::wstring ReplaceNameByFolder(std::wstring_view pText, std::span<const TNamedFolder> pFolders);

} // namespace kiv
