#include <walker/UnlockVolumeHook.h>

#include <core/PathFunctions.h>
#include <platform/ShellApi.h>

#include <atomic>

namespace kiv {

namespace {

constexpr auto LockedVolume = static_cast<DWORD>(0x80310000); // FVE_E_LOCKED_VOLUME

std::atomic<TUnlockVolumeHook> gHook{nullptr};

bool IsLocked(const std::wstring& root) {
  const auto free_space = ShellApi().GetDiskFreeSpaceExW;
  ULARGE_INTEGER free;
  return free_space && !free_space(root.c_str(), &free, nullptr, nullptr) && GetLastError() == LockedVolume;
}

} // namespace

void SetUnlockVolumeHook(TUnlockVolumeHook pHook) noexcept {
  gHook = pHook;
}

bool UnlockIfLocked(const std::wstring& pPath, IItemIdList* pVolume) {
  if (!IsDrive(pPath) || !IsLocked(pPath)) return false;
  if (const TUnlockVolumeHook hook = gHook) hook(pVolume);
  return true;
}

} // namespace kiv
