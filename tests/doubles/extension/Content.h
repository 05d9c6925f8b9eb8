#pragma once

#include <doubles/FakeItemId.h>
#include <doubles/extension/Script.h>

#include <shobjidl.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kiv::test {

/// What lies in a folder of the extension: worked out from its name, so that a huge folder costs nothing.
class TContent {
public:
  /// The root.
  TContent() = default;
  explicit TContent(std::wstring pName);

  bool IsRoot() const noexcept { return fName.empty(); }
  const std::wstring& Name() const noexcept { return fName; }
  const TScript& Script() const noexcept { return fScript; }
  std::size_t Count() const;
  /// From 0.
  TFakeItem At(std::size_t pIndex) const;
  /// What is called so when it is parsed.
  std::optional<TFakeItem> Find(std::wstring_view pName) const;

private:
  std::wstring NextLevel() const;

  std::wstring fName;
  TScript fScript;
};

bool IsFolder(const TFakeItem& pItem);
std::wstring ShownName(const TFakeItem& pItem);
SFGAOF AttributesOf(const TFakeItem& pItem);

} // namespace kiv::test
