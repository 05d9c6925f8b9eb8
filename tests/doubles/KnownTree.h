#pragma once

#include <notification/NotificationEvent.h>
#include <platform/fill/DirectoryHandle.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kiv::test {

/// What somebody knows of a folder on the disk, and of all below it, who listed it once and heard of every change
/// since.
class TKnownTree {
public:
  explicit TKnownTree(std::wstring pRoot) : fRoot(std::move(pRoot)) { List(); }

  void Apply(TNotificationEvent event, const std::wstring& path1, const std::wstring& path2) {
    if (event == neFileCreate || event == neFolderCreate) fKnown[path1] = event == neFolderCreate;
    if (event == neFileDelete || event == neFolderDelete) Take(path1);
    if (event == neFolderUpdate && path1 == fRoot) List();
    if (event != neFileRename && event != neFolderRename) return;
    const auto moved = Take(path1);
    Take(path2);
    for (const auto& [path, folder] : moved) fKnown[path2 + path.substr(path1.size())] = folder;
    fKnown[path2] = event == neFolderRename;
  }
  /// Each full path, and whether it is a folder.
  const std::map<std::wstring, bool>& Known() const { return fKnown; }
  /// Whether that is what is there.
  bool IsTrue() const { return fKnown == TKnownTree(fRoot).fKnown; }

private:
  void List() {
    fKnown.clear();
    std::vector<std::wstring> folders = {fRoot};
    while (!folders.empty()) {
      const std::wstring folder = std::move(folders.back());
      folders.pop_back();
      // Gone meanwhile, it lists nothing.
      std::vector<IWatchedFolders::TEntry> entries;
      ListDirectory(folder, true, entries);
      for (const auto& entry : entries) {
        const std::wstring path = folder + L"\\" + entry.name;
        const bool is_folder = entry.kind == IWatchedFolders::TKind::Folder;
        fKnown[path] = is_folder;
        if (is_folder) folders.push_back(path);
      }
    }
  }
  std::map<std::wstring, bool> Take(const std::wstring& path) {
    std::map<std::wstring, bool> taken;
    for (auto at = fKnown.lower_bound(path); at != fKnown.end() && at->first.starts_with(path);) {
      const bool of = at->first.size() == path.size() || at->first[path.size()] == L'\\';
      if (of) taken.insert(*at);
      at = of ? fKnown.erase(at) : std::next(at);
    }
    return taken;
  }

  const std::wstring fRoot;
  std::map<std::wstring, bool> fKnown;
};

} // namespace kiv::test
