#pragma once

#include <core/IItemIdList.h>
#include <platform/Handles.h>

#include <string>

namespace kiv {

/// The lists of the special folders: the table from TKivShellFolder to the platform, and the lists that all share. They
/// fill on demand and live until Shutdown. Any thread. Applications use TKivItemIdList::CreateForSpecialFolder.
class KIV_EXPORT SpecialFolders {
public:
  SpecialFolders() = delete;

  /// What is shared for a folder; nil if nothing is yet. For SF_FILESYSTEMFOLDER the empty list, for SF_DESKTOP the
  /// root.
  static ComPtr<IItemIdList> FromCache(TKivShellFolder pFolder);
  /// Shares a list unless another one is shared already; returns the shared one.
  static ComPtr<IItemIdList> Share(TKivShellFolder pFolder, const ComPtr<IItemIdList>& pList);
  /// Forgets all, the names too. Shutdown does it.
  static void Clear();
  /// A raw list from the platform: by the folder's number ("SHGetSpecialFolderLocation"), and if that gives nothing by
  /// its identifier ("SHGetKnownFolderIDList"). Empty if the system hasn't got the folder.
  static TUniqueItemIdList MakeRawList(TKivShellFolder pFolder);
  /// The folder with an identifier of the platform's ("KNOWNFOLDERID"), among those of the set; an empty set means all.
  /// SF_INVALID if it is none of them. The platform has several for some folders.
  static TKivShellFolder FromIdentifier(const GUID& pId, TKivShellFolders pFolders);
};

/// Where a special folder is, and what it is called. Empty if the system hasn't got it.
class KIV_EXPORT TKivShellFolderHelper {
public:
  TKivShellFolderHelper() = delete;

  static std::wstring ToPath(TKivShellFolder pFolder);
  /// The name under which users know it.
  static std::wstring ToString(TKivShellFolder pFolder);
};

} // namespace kiv
