#pragma once

#include <core/IItemIdList.h>
#include <notification/NotificationEvent.h>
#include <platform/Export.h>

#include <cstdint>
#include <vector>

namespace kiv {

/// How a list is watched.
struct TNotificationDetails {
  std::uint32_t NotificationHandle = 0; ///< 0 while it isn't registered
  bool Recursive = true;
  TNotificationEvents EventFilter;
};

/// The watches of a notifier, by list. Lists that users would call the same object are the same; they may differ in
/// their bytes, so each look-up compares with all. One thread at a time.
class KIV_EXPORT TWatchTable {
public:
  struct TWatch {
    ComPtr<IItemIdList> list;
    TNotificationDetails details;
  };

  /// The first watch of a list; null if there is none. Valid until the table changes.
  TWatch* Find(IItemIdList* pItemIdList);
  /// Takes the place of a watch of the list that has no handle; otherwise stands beside what is there.
  void Store(IItemIdList* pItemIdList, const TNotificationDetails& pDetails);
  /// Takes out all watches of a list.
  std::vector<TWatch> Remove(IItemIdList* pItemIdList);
  std::vector<TWatch> RemoveAll();

  std::vector<TWatch>& All() noexcept { return fWatches; }
  int Count() const noexcept { return static_cast<int>(fWatches.size()); }

private:
  std::vector<TWatch> fWatches;
};

} // namespace kiv
