#include <notification/WatchTable.h>

#include <algorithm>
#include <utility>

namespace kiv {

namespace {

bool IsOf(const TWatchTable::TWatch& watch, IItemIdList* list) {
  return watch.list.Get() == list || watch.list->Equals(list, ilcDisplay);
}

} // namespace

std::vector<TWatchTable::TWatch> TWatchTable::All() const {
  const std::lock_guard guard(fListLock);
  return fWatches;
}

int TWatchTable::Count() const {
  const std::lock_guard guard(fListLock);
  return static_cast<int>(fWatches.size());
}

std::optional<TWatchTable::TWatch> TWatchTable::Find(IItemIdList* pItemIdList) const {
  for (TWatch& watch : All()) {
    if (IsOf(watch, pItemIdList)) return std::move(watch);
  }
  return std::nullopt;
}

void TWatchTable::Add(IItemIdList* pItemIdList, const TNotificationDetails& pDetails) {
  const std::lock_guard guard(fListLock);
  fWatches.push_back({++fLastId, pItemIdList, pDetails});
}

bool TWatchTable::Change(std::uint32_t pId, const TNotificationDetails& pDetails) {
  const std::lock_guard guard(fListLock);
  const auto found = std::find_if(fWatches.begin(), fWatches.end(), [&](const TWatch& watch) {
    return watch.id == pId && watch.details.NotificationHandle == 0;
  });
  if (found == fWatches.end()) return false;
  found->details = pDetails;
  return true;
}

std::vector<TWatchTable::TWatch> TWatchTable::Remove(IItemIdList* pItemIdList) {
  std::vector<TWatch> removed;
  for (const TWatch& watch : All()) {
    if (!IsOf(watch, pItemIdList)) continue;
    const std::lock_guard guard(fListLock);
    const auto found =
        std::find_if(fWatches.begin(), fWatches.end(), [&](const TWatch& w) { return w.id == watch.id; });
    if (found == fWatches.end()) continue;
    removed.push_back(std::move(*found));
    fWatches.erase(found);
  }
  return removed;
}

std::vector<TWatchTable::TWatch> TWatchTable::RemoveAll() {
  const std::lock_guard guard(fListLock);
  return std::exchange(fWatches, {});
}

std::vector<TWatchTable::TWatch> TWatchTable::TakeHandles() {
  const std::lock_guard guard(fListLock);
  std::vector<TWatch> taken = fWatches;
  for (TWatch& watch : fWatches) watch.details.NotificationHandle = 0;
  return taken;
}

} // namespace kiv
