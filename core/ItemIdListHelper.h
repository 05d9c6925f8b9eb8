#pragma once

#include <core/IItemIdList.h>
#include <core/ItemIdListHelperThreadPool.h>
#include <threading/Cancellation.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace kiv {

/// Questions about item lists. Any thread with COM. A nil list is answered as an invalid one.
///
/// Those that begin with "Try" ask on the pool of TItemIdListHelperThreadPool and wait at most `pStopAfter`
/// milliseconds; the question itself runs on after that. `pFinished` is true only if the answer is one; otherwise the
/// answer is the one that is said to be given then. `pCancellationIndicator`, which may be nil, ends the waiting as
/// well. On a thread of that pool they ask at once and wait as long as it takes.
class KIV_EXPORT TItemIdListHelper {
public:
  TItemIdListHelper() = delete;

  /// Whether the object has gone: it can't be reloaded, or the list is invalid. True when the time is over.
  static bool TryIsInvalid(IItemIdList* pItemIdList, std::uint64_t pStopAfter,
                           ComPtr<ICancellationIndicator> pCancellationIndicator = nullptr);
  /// IItemIdList::Reload. False when the time is over, and a line in the log.
  static bool TryReload(IItemIdList* pItemIdList, std::uint64_t pStopAfter, bool& pFinished,
                        ComPtr<ICancellationIndicator> pCancellationIndicator = nullptr);
  /// HasSubFolders. False when the time is over. A list whose path is known
  /// to end in ".zip" is answered at once.
  static bool TryHasSubFolders(IItemIdList* pItemIdList, std::uint64_t pStopAfter, bool pFileSystemOnly,
                               bool& pFinished, ComPtr<ICancellationIndicator> pCancellationIndicator = nullptr);
  /// IItemIdList::SpecialFolder. SF_UNKNOWN when the time is over.
  static TKivShellFolder TryGetSpecialFolder(IItemIdList* pItemIdList, std::uint64_t pStopAfter, bool& pFinished,
                                             ComPtr<ICancellationIndicator> pCancellationIndicator = nullptr);

  /// Whether a tree shows the object as one that can be expanded. With `pFileSystemOnly` it must belong to the file
  /// system or lead there, and an archive (".zip") has no folders.
  static bool HasSubFolders(IItemIdList* pItemIdList, bool pFileSystemOnly);
  static bool IsNullOrInvalid(IItemIdList* pItemIdList);
  /// Whether the list was made of a path's text alone (TKivItemIdList::CreateSimpleIdList).
  static bool IsSimple(IItemIdList* pItemIdList);
  /// A folder that is a file as well, such as an archive.
  static bool IsFileAndFolder(IItemIdList* pItemIdList);
  static bool SupportsIShellFolder2(IItemIdList* pItemIdList);
  /// By the text of the path.
  static bool IsUNCPath(IItemIdList* pItemIdList);
  /// UNC paths, and drives that are connected to one, or should be. False for what has no path.
  static bool IsNetworkPath(IItemIdList* pItemIdList);
  /// Whether a network place answers within `pTimeout` milliseconds; a drive whose connection has gone is connected
  /// again. True for everything that isn't one.
  static bool IsNetworkPathReachable(IItemIdList* pItemIdList, std::uint64_t pTimeout,
                                     ComPtr<ICancellationIndicator> pCancellationIndicator = nullptr);
  /// Whether it is a folder of a cloud provider's, which the shell shows on the desktop.
  static bool IsSynchronizedCloudPath(IItemIdList* pItemIdList);
  /// All of them that have a path. Slow: looks through the desktop.
  static std::vector<ComPtr<IItemIdList>> GetSynchronizedCloudPaths();

  /// To the log: the message, and all that the list tells of itself ("-nil-" for nil). Asks the shell.
  static void WriteDebugInfo(IItemIdList* pItemIdList, std::wstring_view pMessage);
};

/// Who says whether the shell shows a namespace extension on the desktop, by its class identifier ("{...}"); the
/// settings stand above this room. Null (as at first) for nobody: no object counts as a cloud provider's then. Called
/// from any thread.
KIV_EXPORT void SetShellShowNamespaceSource(bool (*pSource)(std::wstring_view pClassId)) noexcept;

} // namespace kiv
