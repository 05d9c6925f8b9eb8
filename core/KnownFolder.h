#pragma once

#include <core/IItemIdList.h>

namespace kiv {

/// What the platform's known folder manager says of a list.
struct TKnownFolder {
  enum class TKind {
    NoManager, ///< there is none, or it can't tell: something else must be asked
    None,      ///< no known folder
    Found
  };
  TKind kind = TKind::None;
  GUID id = {}; ///< "KNOWNFOLDERID"
};

/// Asks the manager for the folder of a list, on the pool of TItemIdListHelperThreadPool and for a second at most, and
/// if that gives nothing for the folder of its path ("IKnownFolderManager"). A manager that was found not to implement
/// this isn't asked again. Any thread with COM.
KIV_EXPORT TKnownFolder FindKnownFolder(IItemIdList* pItemIdList);
/// Asks the manager again, whatever was found out about it.
KIV_EXPORT void ForgetKnownFolderManager() noexcept;

} // namespace kiv
