#pragma once

#include <platform/Export.h>
#include <platform/Types.h>
#include <platform/fill/NoticeQueue.h>

#include <cstdint>
#include <memory>
#include <string>

namespace kiv {

/// Watches folders of the file system by their own handles ("ReadDirectoryChangesW"): the second source of changes, for
/// platforms whose shell doesn't tell what other processes do.
///
/// One thread serves all watches of local folders, another one those on the network: a server that doesn't answer may
/// hold that one up. Each comes with its first watch and ends with Shutdown. Changes in the platform's
/// buffers that were lost, a watched folder that is deleted, moved or comes back, and a medium that is let go: each is
/// one FolderUpdate of the watched folder. A folder that has gone is looked for every two seconds, and watched again
/// when it is there. Any thread.
class KIV_EXPORT DirectoryWatcher {
public:
  DirectoryWatcher() = delete;

  /// Begins to watch a folder, and comes back when changes are seen from, in deep trees and large folders after
  /// `pLongest` milliseconds: then the rest follows, and the watch tells a FolderUpdate when it is complete. 0 if there
  /// is no such folder, or it can't be opened; what is found out about that later is treated as a folder that has gone,
  /// and a file is told as NoFolder.
  /// `pDeviceWindow`, if given, is asked by WM_DEVICECHANGE for the watched handle when its medium is to be ejected,
  /// and calls ReleaseVolume then. `pOnNetwork`: whether the folder is on a server, or may be; that isn't looked at
  /// every two seconds while it is open, since its end is reported.
  static std::uint32_t Watch(const std::wstring& pPath, bool pRecursive, std::shared_ptr<TNoticeQueue> pQueue,
                             HWND pDeviceWindow = nullptr, std::uint32_t pLongest = 1000, bool pOnNetwork = false);
  /// Ends it; what the queue holds of it goes. Doesn't wait.
  static void Unwatch(std::uint32_t pWatch) noexcept;
  /// Lets go of all folders on the volume of a watched handle. Comes back when the handles are closed. They are opened
  /// again after a while, if there still is something.
  static void ReleaseVolume(HANDLE pHandle) noexcept;
};

} // namespace kiv
