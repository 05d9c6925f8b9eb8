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
  for (std::size_t width = 1; width < count; width *= 2) {
    for (std::size_t begin = 0; begin < count; begin += 2 * width) {
      const std::size_t middle = std::min(begin + width, count);
      const std::size_t end = std::min(middle + width, count);
      std::size_t left = begin;
      std::size_t right = middle;
      for (std::size_t at = begin; at < end; ++at) {
        const bool isRight = left == middle || (right < end && pIsBelow(pItems[right], pItems[left]));
        merged[at] = pItems[isRight ? right++ : left++];
      }
    }
    pItems.swap(merged);
  }
}

} // namespace kiv
