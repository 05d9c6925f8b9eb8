#pragma once

#include <doubles/SimulatedFileSystem.h>

#include <platform/Handles.h>

#include <optional>
#include <string>
#include <vector>

// Inside of FakeShellFolder: not for tests.
namespace kiv::test {

/// One item of a fake folder's item lists, taken apart.
struct TFakeItem {
  SimulatedFileSystem::TNodeId id = 0;
  std::wstring name;
};

/// The items of a list; nothing if one of them isn't ours. An empty list has none.
std::optional<std::vector<TFakeItem>> MaybeItemsOf(PCUIDLIST_RELATIVE pList);

/// A list from the task allocator; nil without memory.
TUniqueItemIdList MakeItemIdList(const std::vector<TFakeItem>& pItems);

} // namespace kiv::test
