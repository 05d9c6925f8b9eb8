#pragma once

#include <platform/Export.h>
#include <platform/Handles.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kiv {

/// Reads one registry key. What isn't there, is of another type or may not be read is an empty optional, never an
/// exception: the library reads other programs' settings and has a default for each. Used by one thread at a time.
class KIV_EXPORT TRegistryReader {
public:
  /// `pRoot` is `HKEY_CURRENT_USER` and the like; `pPath` without a leading backslash, may be empty. `pView` is 0,
  /// `KEY_WOW64_64KEY` or `KEY_WOW64_32KEY`.
  TRegistryReader(HKEY pRoot, const std::wstring& pPath, REGSAM pView = 0) noexcept;

  /// False if the key isn't there or may not be read; all else then answers "nothing".
  bool Exists() const noexcept { return static_cast<bool>(fKey); }

  /// `REG_SZ` as it stands, `REG_EXPAND_SZ` with its variables replaced. `pName` empty: the key's own value.
  std::optional<std::wstring> Text(const std::wstring& pName) const;
  /// `REG_DWORD`.
  std::optional<std::uint32_t> Number(const std::wstring& pName) const;
  /// `REG_MULTI_SZ`.
  std::optional<std::vector<std::wstring>> Texts(const std::wstring& pName) const;
  /// The bytes of a value of any type.
  std::optional<std::vector<std::uint8_t>> Bytes(const std::wstring& pName) const;
  bool HasValue(const std::wstring& pName) const;

  /// In the registry's order.
  std::vector<std::wstring> ValueNames() const;
  std::vector<std::wstring> KeyNames() const;

private:
  std::optional<std::vector<std::uint8_t>> Read(const std::wstring& pName, DWORD& pType) const;

  TUniqueRegistryKey fKey;
};

} // namespace kiv
