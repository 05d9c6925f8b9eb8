// What a path list knows of the shell and of this process.
#include <core/PathList.h>

#include <core/FileFunctions.h>
#include <core/ItemIdListFunctions.h>
#include <core/SpecialFolders.h>
#include <framework/TextCompare.h>

namespace kiv {

std::wstring TKivPathList::GetShortcutTarget(std::wstring_view pFilepath) {
  return GetLinkTarget(pFilepath);
}

std::wstring TKivPathList::AdaptPathOnWow64Systems(std::wstring_view pFullPath) {
  std::wstring path(pFullPath);
  if (!IsWOW64()) return path;
  static const std::wstring own = TKivShellFolderHelper::ToPath(SF_PROGRAM_FILES);
  static const std::wstring wide = KIVExpandEnvironmentStrings(L"%ProgramW6432%");
  if (own.empty() || !StartsText(own, path) || FileOrFolderExists(path)) return path;
  const std::wstring adapted = wide + path.substr(own.size());
  return FileOrFolderExists(adapted) ? adapted : path;
}

} // namespace kiv
