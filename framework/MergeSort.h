#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace kiv {

/// Sorts by a comparison that may be foreign code: equals keep their order, and one that contradicts itself gives some
/// order of the same items. std::stable_sort leaves the vector then. If the comparison raises, the content of `pItems`
/// is of no use any more: sort a copy, or indexes. O(n log n); items are copied.
///
/// `pIsBelow(a, b)` says whether a goes before b.
template <typename T, typename F>
void MergeSort(std::vector<T>& pItems, F&& pIsBelow) {
  const std::size_t count = pItems.size();
  std::vector<T> merged(count);
  const auto at = [](std::vector<T>& items, std::size_t index) {
    return items.begin() + static_cast<std::ptrdiff_t>(index);
  };
  for (std::size_t width = 1; width < count; width *= 2) {
    for (std::size_t begin = 0; begin < count; begin += 2 * width) {
      const std::size_t middle = std::min(begin + width, count);
      const std::size_t end = std::min(middle + width, count);
      // What stands in order already costs one comparison.
      if (middle == end || !pIsBelow(pItems[middle], pItems[middle - 1])) {
        std::copy(at(pItems, begin), at(pItems, end), at(merged, begin));
        continue;
      }
      std::size_t left = begin;
      std::size_t right = middle;
      for (std::size_t to = begin; to < end; ++to) {
        const bool isRight = left == middle || (right < end && pIsBelow(pItems[right], pItems[left]));
        merged[to] = pItems[isRight ? right++ : left++];
      }
    }
    pItems.swap(merged);
  }
}

} // namespace kiv
