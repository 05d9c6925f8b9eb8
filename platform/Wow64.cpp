#include <platform/Wow64.h>

#include <platform/ShellApi.h>

namespace kiv {

std::optional<void*> DisableWow64FsRedirection() {
  const auto disable = ShellApi().Wow64DisableWow64FsRedirection;
  void* old = nullptr;
  if (!disable || !disable(&old)) return std::nullopt;
  return old;
}

void RevertWow64FsRedirection(std::optional<void*> pOld) {
  const auto revert = ShellApi().Wow64RevertWow64FsRedirection;
  if (pOld && revert) revert(*pOld);
}

} // namespace kiv
