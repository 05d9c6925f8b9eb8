#include <notification/WatchTable.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace kiv {

namespace {

bool IsOf(const TWatchTable::TWatch& watch, IItemIdList* list) {
  return watch.list.Get() == list || watch.list->Equals(list, ilcDisplay);
}

} // namespace

TWatchTable::TWatch* TWatchTable::Find(IItemIdList* pItemIdList) {
  const auto found =
      std::find_if(fWatches.begin(), fWatches.end(), [&](const TWatch& watch) { return IsOf(watch, pItemIdList); });
  return found == fWatches.end() ? nullptr : &*found;
}

void TWatchTable::Store(IItemIdList* pItemIdList, const TNotificationDetails& pDetails) {
  TWatch* const standing = Find(pItemIdList);
  if (standing && standing->details.NotificationHandle == 0) {
    standing->details = pDetails;
  } else {
    fWatches.push_back({pItemIdList, pDetails});
  }
}

std::vector<TWatchTable::TWatch> TWatchTable::Remove(IItemIdList* pItemIdList) {
  const auto gone = std::stable_partition(fWatches.begin(), fWatches.end(),
                                          [&](const TWatch& watch) { return !IsOf(watch, pItemIdList); });
  std::vector<TWatch> removed(std::make_move_iterator(gone), std::make_move_iterator(fWatches.end()));
  fWatches.erase(gone, fWatches.end());
  return removed;
}

std::vector<TWatchTable::TWatch> TWatchTable::RemoveAll() {
  return std::exchange(fWatches, {});
}

} // namespace kiv
