#pragma once

#include <core/FolderSource.h>
#include <core/IItemIdList.h>
#include <notification/NotificationEvent.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kivtool {

/// One event of a watch.
struct TWatchedChange {
  kiv::TFileTime time = 0; ///< when it arrived
  kiv::TNotificationEvent event{};
  std::wstring path1;
  std::wstring path2;
};

/// Watches folders, with all below them if `recursive`, and calls `tell` until that answers false or somebody has had
/// enough. Answers the paths that can't be watched; if that is all of them, at once.
using TWatchPaths = std::function<std::vector<std::wstring>(const std::vector<std::wstring>& paths, bool recursive,
                                                            const std::function<bool(const TWatchedChange&)>& tell)>;

/// The icon of one object, as a picture.
struct TIconOptions {
  std::wstring path;
  std::wstring file; ///< a PNG file to be written
  int size = 32;     ///< pixels
  bool overlay = false;
  bool opened = false; ///< as a folder looks while it is open
};

/// What the commands need of the world, so that they run against a simulated one as well.
struct TEnvironment {
  kiv::IFolderSource& folders;
  /// Some more bytes of the standard input, in UTF-8; none at its end.
  std::function<std::string()> in;
  /// UTF-8 to the standard output. False when nobody reads it any more: the command ends.
  std::function<bool(std::string_view)> out;
  /// UTF-8 to the standard error.
  std::function<void(std::string_view)> err;
  /// From UTC to local time.
  std::function<kiv::TFileTime(kiv::TFileTime)> toLocalTime;
  /// An absolute path from one that may be relative to the current folder. "shell:" names and "::{...}" stay.
  std::function<std::wstring(const std::wstring&)> toFullPath;
  /// The item list for a path or another name that the shell parses.
  std::function<kiv::ComPtr<kiv::IItemIdList>(const std::wstring&)> makeList;
  /// The item list for what a user writes: a path, a name of a special folder, and what else parsing knows.
  std::function<kiv::ComPtr<kiv::IItemIdList>(const std::wstring&)> parseText;
  /// The order of two names in the shell's lists: below 0, 0, above 0.
  std::function<int(const std::wstring&, const std::wstring&)> compareNames;
  /// Folders as a navigation pane lists them; null for the same as `folders`.
  kiv::IFolderSource* navigationFolders = nullptr;
  /// Whether the user wants the command to end (Ctrl+C). Asked often by those that take long.
  std::function<bool()> isStopped = [] { return false; };
  TWatchPaths watch = nullptr;
  /// Saves an icon. Raises EException if it can't.
  std::function<void(const TIconOptions&)> saveIcon = nullptr;
};

/// What the program ends with.
enum TExitCode : int {
  Succeeded = 0,
  Failed = 1,      ///< the command couldn't do its work, or not all of it
  UsageError = 2,  ///< the command line wasn't understood
  Interrupted = 3, ///< ended early: nobody read the output to its end, or the user had enough
};

} // namespace kivtool
