#include <core/ResolveByParentPath.h>

#include <core/IdListFromPath.h>
#include <core/ItemIdList.h>
#include <core/PathUtils.h>
#include <core/PathmereError.h>
#include <framework/FileNames.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kiv {

namespace {

// One step down: a folder's path, which is the beginning of the whole one, and the name of something in it.
struct TStep {
  std::wstring_view folder;
  std::wstring name;
};

// From the path's own folder up to its root.
std::vector<TStep> StepsUp(std::wstring_view path) {
  std::vector<TStep> steps;
  for (;;) {
    const std::wstring_view folder = path.substr(0, ExtractFileDir(path).size());
    std::wstring name = ExtractFileName(path);
    if (folder.empty() || name.empty()) return steps;
    steps.push_back({folder, std::move(name)});
    path = folder;
  }
}

TUniqueItemIdList ParseFolder(std::wstring_view path) {
  TUniqueItemIdList list = GetIdListFromPath(nullptr, path, nullptr);
  if (!list && TPathUtils::IsUnicodeAPICallPath(path)) {
    list = GetIdListFromPath(nullptr, TPathUtils::RevertUnicodeAPICallPath(path), nullptr);
  }
  return list;
}

// The place of the nearest folder that parses, and its list. A path of 30,000 characters can have 15,000 of them: since
// a folder exists only in one that exists, halving finds the border.
std::size_t FindParsedFolder(const std::vector<TStep>& steps, TUniqueItemIdList& list) {
  list = ParseFolder(steps[0].folder);
  if (list) return 0;
  std::size_t fails = 0;
  std::size_t parses = steps.size();
  while (parses - fails > 1) {
    const std::size_t middle = fails + (parses - fails) / 2;
    if (TUniqueItemIdList found = ParseFolder(steps[middle].folder)) {
      parses = middle;
      list = std::move(found);
    } else {
      fails = middle;
    }
  }
  return parses;
}

// Something in a folder, relative to it; nothing if it isn't there or the folder can't be bound.
TUniqueItemIdList ChildOf(TKivItemIdList& folder, const std::wstring& name) {
  try {
    return GetIdListFromPath(folder.GetShellFolder().Get(), name, nullptr);
  } catch (const EPathmereError&) {
    return {};
  }
}

} // namespace

ComPtr<IItemIdList> ResolveByParentPath(std::wstring_view pPath) {
  if (!ShellTakesPath(pPath)) return EmptyIdList();
  const std::vector<TStep> steps = StepsUp(pPath);
  if (steps.empty()) return EmptyIdList();
  TUniqueItemIdList list;
  std::size_t at = FindParsedFolder(steps, list);
  if (at == steps.size()) return EmptyIdList();
  auto folder = TKivItemIdList::Create(std::move(list));
  for (;; --at) {
    const TUniqueItemIdList item = ChildOf(*folder, steps[at].name);
    if (!item) return EmptyIdList();
    folder = TKivItemIdList::Create(TUniqueItemIdList(ILCombine(folder->WindowsPointer(), item.Get())));
    if (at == 0) return folder;
  }
}

} // namespace kiv
