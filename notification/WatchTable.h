#pragma once

#include <core/IItemIdList.h>
#include <notification/NotificationEvent.h>
#include <platform/Export.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

namespace kiv {

/// How a list is watched.
struct TNotificationDetails {
  std::uint32_t NotificationHandle = 0; ///< 0 while it isn't registered
  bool Recursive = true;
  TNotificationEvents EventFilter;
};

/// The watches of a notifier, by list. Lists that users would call the same object are the same; they may differ in
/// their bytes, so each look-up compares with all, and lists may answer by foreign code that comes back here: no lock
/// is held meanwhile, and who goes through the watches has a copy. Any thread.
class KIV_EXPORT TWatchTable {
public:
  struct TWatch {
    std::uint32_t id = 0; ///< never given twice
    ComPtr<IItemIdList> list;
    TNotificationDetails details;
  };

  /// The first watch of a list.
  std::optional<TWatch> Find(IItemIdList* pItemIdList) const;
  void Add(IItemIdList* pItemIdList, const TNotificationDetails& pDetails);
  /// Changes a watch that has no handle. False if it has one by now, or has gone.
  bool Change(std::uint32_t pId, const TNotificationDetails& pDetails);
  /// Takes out all watches of a list.
  std::vector<TWatch> Remove(IItemIdList* pItemIdList);
  std::vector<TWatch> RemoveAll();
  /// All watches as they are; they have no handles any more.
  std::vector<TWatch> TakeHandles();

  std::vector<TWatch> All() const;
  int Count() const;

private:
  mutable std::mutex fListLock;
  std::vector<TWatch> fWatches; // under fListLock
  std::uint32_t fLastId = 0;
};

} // namespace kiv
