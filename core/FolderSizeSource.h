#pragma once

#include <platform/Export.h>
#include <threading/Cancellation.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kiv {

/// What a file or folder comes to, with all that lies in it.
struct TFolderSize {
  std::int64_t size = 0; ///< bytes
  int fileCount = 0;
  int folderCount = 0; ///< the folder itself counts
};

/// Who measures folders in the background.
class IFolderSizeSource {
public:
  virtual ~IFolderSizeSource() = default;

  /// Measures each path, in no order, and calls `pDone` for each on the main thread, unless the token is cancelled by
  /// then. A path that isn't there comes to nothing. Main thread; returns at once.
  virtual void Measure(std::vector<std::wstring> pPaths, bool pFollowReparsePoints,
                       ComPtr<ICancellationIndicator> pCancellationToken,
                       std::function<void(const TFolderSize&)> pDone) = 0;
};

/// The one of the process; null (as at first) if nobody measures. The work stands above this room.
KIV_EXPORT IFolderSizeSource* FolderSizeSource() noexcept;
/// Borrowed until it is replaced. Main thread. Answers the former one.
KIV_EXPORT IFolderSizeSource* SetFolderSizeSource(IFolderSizeSource* pSource) noexcept;

} // namespace kiv
