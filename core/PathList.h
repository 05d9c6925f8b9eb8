#pragma once

#include <platform/Export.h>

#include <string_view>

namespace kiv {

/// Tests of what a path leads to, by its text alone. Any thread.
class KIV_EXPORT TKivPathList {
public:
  TKivPathList() = delete;

  /// True if the second path lies below the first, at any depth, ignoring case. The same path doesn't.
  static bool IsSubPathOf(std::wstring_view p_SuperiorPath, std::wstring_view p_PossibleSubPath) noexcept;
  /// True for `\\server...` and `\\?\UNC\...`, but not for other long-path forms, nor for `\\` and a single character
  /// that isn't a third backslash.
  static bool IsUNCPath(std::wstring_view pFullPath) noexcept;
  /// True for `\\server`, with or without a delimiter at its end.
  static bool IsUncServer(std::wstring_view pPath) noexcept;
  /// True for the class identifier of a virtual folder: `::{...`.
  static bool IsFolderClassId(std::wstring_view pPath) noexcept;
  /// True for the path of a device on the USB.
  static bool IsUSBDevicePath(std::wstring_view pPath) noexcept;
};

} // namespace kiv
