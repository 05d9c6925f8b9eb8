#pragma once

#include <framework/Set.h>

#include <cstdint>
#include <string>

namespace kiv {

/// What a folder says of one of its objects without opening it.
enum class TObjectFlag {
  Folder,     ///< can be opened and walked
  FileSystem, ///< has a path
  Link,       ///< a shortcut
  Stream,     ///< has content to read; a folder with this flag is a container file, such as an archive
  Hidden,
  System,
  ReadOnly,
  Compressed,
  Encrypted,
  Slow,         ///< on a slow device
  ReparsePoint, ///< a mount point, a symbolic link or another kind of redirection
  Offline       ///< content isn't at hand and would have to be fetched
};
using TObjectFlags = TSet<TObjectFlag>;

/// Point in time as the platform counts it ("FILETIME"): 100 ns since 1601-01-01 UTC; 0 is unknown.
using TFileTime = std::uint64_t;

/// One object of a folder.
struct TFolderObject {
  static constexpr std::int64_t UnknownSize = -1;

  /// The name by which its folder knows it: the file name, or the display name of an object that has none.
  std::wstring name;
  TObjectFlags flags;
  /// Bytes; UnknownSize for folders and for what has no size.
  std::int64_t size = UnknownSize;
  TFileTime created = 0;
  TFileTime changed = 0;
  TFileTime accessed = 0;

  friend bool operator==(const TFolderObject&, const TFolderObject&) = default;
};

} // namespace kiv
