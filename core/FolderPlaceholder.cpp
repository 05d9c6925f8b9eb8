#include <core/FolderPlaceholder.h>

#include <framework/TextCompare.h>

namespace kiv {

namespace {

std::wstring_view WithoutDelimiter(std::wstring_view path) {
  if (!path.empty() && path.back() == L'\\') path.remove_suffix(1);
  return path;
}

// Whether `text` is `start`, or `start` with a component behind it.
bool StartsWithComponents(std::wstring_view text, std::wstring_view start) {
  return SameText(text.substr(0, start.size()), start) &&
         (text.size() == start.size() || text[start.size()] == L'\\' || text[start.size()] == L'/');
}

bool LiesIn(std::wstring_view path, std::wstring_view folder) {
  const std::wstring_view bare = WithoutDelimiter(folder);
  // "D:" isn't in the folder "D:\": it is whatever folder is the current one there.
  return !bare.empty() && StartsWithComponents(path, bare) && (path.size() > bare.size() || bare == folder);
}

} // namespace

std::wstring ReplaceFolderByName(std::wstring_view pPath, std::span<const TNamedFolder> pFolders) {
  const TNamedFolder* best = nullptr;
  for (const TNamedFolder& folder : pFolders) {
    const bool longer = !best || WithoutDelimiter(folder.path).size() > WithoutDelimiter(best->path).size();
    if (longer && LiesIn(pPath, folder.path)) best = &folder;
  }
  if (!best) return std::wstring(pPath);
  const std::wstring_view rest = pPath.substr(WithoutDelimiter(best->path).size());
  // The root of a drive has its delimiter anyway.
  const bool is_root = rest == L"\\" && best->path.back() == L'\\';
  return best->name + std::wstring(is_root ? L"" : rest);
}

std::wstring ReplaceNameByFolder(std::wstring_view pText, std::span<const TNamedFolder> pFolders) {
  for (const TNamedFolder& folder : pFolders) {
    if (folder.path.empty() || !StartsWithComponents(pText, folder.name)) continue;
    const std::wstring_view rest = pText.substr(folder.name.size());
    return rest.empty() ? folder.path : std::wstring(WithoutDelimiter(folder.path)) + std::wstring(rest);
  }
  return std::wstring(pText);
}

} // namespace kiv
