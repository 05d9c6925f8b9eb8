#include <platform/fill/NoticeQueue.h>

#include <algorithm>
#include <utility>

namespace kiv {

TNoticeQueue::TNoticeQueue(std::function<bool()> pWake, std::size_t pCapacity)
    : fWake(std::move(pWake)), fCapacity(pCapacity) {}

void TNoticeQueue::Begin(std::uint32_t pWatch, std::wstring pPath) {
  const std::lock_guard guard(fLock);
  fWatches[pWatch].path = std::move(pPath);
}

void TNoticeQueue::End(std::uint32_t pWatch) {
  const std::lock_guard guard(fLock);
  if (fWatches.erase(pWatch) != 0) std::erase_if(fEntries, [&](const TEntry& entry) { return entry.watch == pWatch; });
}

bool TNoticeQueue::IsWhole(const TWatch& pState, const TDirectoryNotice& pNotice) {
  return pNotice.event == TDirectoryEvent::FolderUpdate && pNotice.path1 == pState.path;
}

// Whoever takes that one looks later than this.
bool TNoticeQueue::IsTold(std::uint32_t pWatch, const TWatch& pState, const TDirectoryNotice& pNotice) const {
  return (IsWhole(pState, pNotice) || pNotice.event == TDirectoryEvent::FileChange) && !fEntries.empty() &&
         fEntries.back().watch == pWatch && fEntries.back().notice == pNotice;
}

void TNoticeQueue::Keep(std::uint32_t pWatch, TWatch& pState, TDirectoryNotice pNotice) {
  if (pState.overflowed || IsTold(pWatch, pState, pNotice)) return;
  if (fEntries.size() >= fCapacity) {
    pState.overflowed = true;
    pNotice = {TDirectoryEvent::FolderUpdate, pState.path, {}};
  }
  fEntries.push_back({pWatch, std::move(pNotice)});
}

bool TNoticeQueue::MarkAwake() {
  return !fEntries.empty() && !std::exchange(fAwake, true);
}

bool TNoticeQueue::WakeTaker(bool pNeeded) {
  if (!pNeeded) return true;
  {
    const std::lock_guard guard(fWakeLock);
    if (!fWake || fWake()) return true;
  }
  const std::lock_guard guard(fLock);
  fAwake = false;
  return false;
}

bool TNoticeQueue::Push(std::uint32_t pWatch, std::vector<TDirectoryNotice> pNotices) {
  bool sleeps = false;
  {
    const std::lock_guard guard(fLock);
    const auto watch = fWatches.find(pWatch);
    if (watch == fWatches.end()) return true;
    for (TDirectoryNotice& notice : pNotices) Keep(pWatch, watch->second, std::move(notice));
    sleeps = MarkAwake();
  }
  return WakeTaker(sleeps);
}

bool TNoticeQueue::Wake() {
  bool sleeps = false;
  {
    const std::lock_guard guard(fLock);
    sleeps = MarkAwake();
  }
  return WakeTaker(sleeps);
}

bool TNoticeQueue::Pop(TEntry& pEntry) {
  const std::lock_guard guard(fLock);
  if (fEntries.empty()) {
    fAwake = false;
    return false;
  }
  pEntry = std::move(fEntries.front());
  fEntries.pop_front();
  const auto watch = fWatches.find(pEntry.watch);
  if (watch == fWatches.end() || !IsWhole(watch->second, pEntry.notice)) return true;
  // From now on the watch is told everything again: whoever takes this lists the folder later than that.
  watch->second.overflowed = false;
  // And later than a renaming that is told behind this: he knows what is in that folder by the new name alone, and
  // mustn't lose it with what stood there before.
  const bool renamed = std::any_of(fEntries.begin(), fEntries.end(), [&](const TEntry& entry) {
    return entry.watch == pEntry.watch && entry.notice.event == TDirectoryEvent::FolderRename;
  });
  if (renamed && !IsTold(pEntry.watch, watch->second, pEntry.notice)) fEntries.push_back(pEntry);
  return true;
}

void TNoticeQueue::Close() {
  {
    const std::lock_guard guard(fWakeLock);
    fWake = nullptr;
  }
  const std::lock_guard guard(fLock);
  fEntries.clear();
  fWatches.clear();
}

} // namespace kiv
