#pragma once

#include <platform/Handles.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Inside of FakeShellFolder and of the namespace extension: not for tests.
namespace kiv::test {

/// One item of a fake folder's item lists, taken apart.
struct TFakeItem {
  std::uint64_t id = 0; // a node's, or what its folder makes of it
  std::wstring name;
};

/// The items of a list; nothing if one of them isn't ours. An empty list has none.
std::optional<std::vector<TFakeItem>> MaybeItemsOf(PCUIDLIST_RELATIVE pList);

/// A list from the task allocator; nil without memory.
TUniqueItemIdList MakeItemIdList(const std::vector<TFakeItem>& pItems);

} // namespace kiv::test
