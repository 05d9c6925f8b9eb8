#pragma once

#include <core/IItemIdList.h>
#include <platform/Export.h>

#include <cstdint>
#include <memory>
#include <string>

namespace kiv {

/// One object that a folder lists. "." and ".." don't come.
struct TDiskEntry {
  std::wstring name;
  bool isFolder = false;
  /// A junction or symbolic link: what lies below it lies elsewhere.
  bool isLink = false;
  std::int64_t size = 0; ///< bytes; of a folder 0
};

/// A listing of one folder under way; its end closes it.
class IDiskSearch {
public:
  virtual ~IDiskSearch() = default;
  /// False behind the last one.
  virtual bool Next(TDiskEntry& pEntry) = 0;
};

enum class TDiskObject { Nothing, File, Folder };

/// What a selection asks of the disk: the seam to the platform, in whose place tests put a tree in memory. Paths of any
/// length, without a "*" at their end. Any thread.
class ISelectionDisk {
public:
  virtual ~ISelectionDisk() = default;

  virtual bool IsDriveReady(const std::wstring& pPath) = 0;
  /// What a path is that of; a drive may have its delimiter or not.
  virtual TDiskObject ObjectAt(const std::wstring& pPath) = 0;
  /// Bytes; -1 if there is no such file.
  virtual std::int64_t FileSize(const std::wstring& pPath) = 0;
  /// Null for what can't be listed. The folder may have a delimiter at its end or not.
  virtual std::unique_ptr<IDiskSearch> Search(const std::wstring& pFolder) = 0;
  /// Where a shell link's file leads; empty if that has no path.
  virtual std::wstring LinkTarget(const std::wstring& pLinkFile) = 0;
  /// The item list of a path.
  virtual ComPtr<IItemIdList> MakeItemIdList(const std::wstring& pPath) = 0;
};

/// The disk that selections use which are made from now on: the platform's, unless a ScopedSelectionDisk stands.
KIV_EXPORT ISelectionDisk& SelectionDisk() noexcept;

/// Puts another one in its place for as long as it lives. For tests and tools; the disk must outlive the selections and
/// the work that ask it.
class KIV_EXPORT ScopedSelectionDisk {
public:
  explicit ScopedSelectionDisk(ISelectionDisk& pDisk) noexcept;
  ~ScopedSelectionDisk();
  ScopedSelectionDisk(const ScopedSelectionDisk&) = delete;
  ScopedSelectionDisk& operator=(const ScopedSelectionDisk&) = delete;

private:
  ISelectionDisk* const fOuter;
};

namespace detail {
/// The platform's; each platform has its source file.
ISelectionDisk& PlatformSelectionDisk();
} // namespace detail

} // namespace kiv
