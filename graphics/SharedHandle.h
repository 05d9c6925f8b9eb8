#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace kiv::detail {

/// Handles by what they were made from: equal requests share one for as long as anyone holds it. Any thread.
template <typename TKey, typename THandle>
class TSharedHandles {
public:
  using TShared = std::shared_ptr<const THandle>;

  /// The handle for `pKey`; `pMake` makes it if nobody holds one.
  template <typename F>
  TShared Get(const TKey& pKey, F&& pMake) {
    const std::lock_guard guard(fLock);
    std::weak_ptr<const THandle>& place = fHandles[pKey];
    if (TShared standing = place.lock()) return standing;
    auto made = std::make_shared<const THandle>(pMake());
    place = made;
    if (fHandles.size() > fMost) DropUnused();
    return made;
  }

private:
  void DropUnused() {
    std::erase_if(fHandles, [](const auto& entry) { return entry.second.expired(); });
    fMost = 2 * fHandles.size() + 16;
  }

  std::mutex fLock;
  std::map<TKey, std::weak_ptr<const THandle>> fHandles;
  std::size_t fMost = 16;
};

} // namespace kiv::detail
