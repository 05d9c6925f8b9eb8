#pragma once

#include <core/IItemIdList.h>
#include <platform/Export.h>

namespace kiv {

/// Asks the user to unlock an encrypted volume. Raises nothing; runs on the thread that walks.
using TUnlockVolumeHook = void (*)(IItemIdList* pVolume);

/// What runs when a walk that may show dialogs meets a locked volume. Null (as at first) for nothing. Any thread.
KIV_EXPORT void SetUnlockVolumeHook(TUnlockVolumeHook pHook) noexcept;

/// Runs the hook if the path is a drive's and the drive is a locked volume. True if it is, whether there is a hook or
/// not.
bool UnlockIfLocked(const std::wstring& pPath, IItemIdList* pVolume);

} // namespace kiv
