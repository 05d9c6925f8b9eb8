#pragma once

#include <platform/Export.h>
#include <platform/fill/WatchedTree.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace kiv {

/// Notices on their way from the thread that watches to the one that tells of them.
///
/// It wakes the taker when the first notice comes into an empty queue, and not again until the taker has asked for
/// more than there is. A queue that the taker doesn't get to keeps a limited number: a watch that is told more loses
/// the rest, and gets one FolderUpdate of its folder behind what it kept. A write to the file whose write is the newest
/// notice is in that one, and so is a FolderUpdate of the watch's own folder; once that has been taken it is told anew.
/// A FolderUpdate that is taken while a renamed folder is told behind it comes once more behind that. Any thread.
class KIV_EXPORT TNoticeQueue {
public:
  static constexpr std::size_t DefaultCapacity = 100'000;

  struct TEntry {
    std::uint32_t watch = 0;
    TDirectoryNotice notice;
  };

  /// `pWake` is called on the thread that pushes, and mustn't call the queue. False if the taker can't be woken now.
  explicit TNoticeQueue(std::function<bool()> pWake, std::size_t pCapacity = DefaultCapacity);

  /// A watch's path is what its FolderUpdate would be of.
  void Begin(std::uint32_t pWatch, std::wstring pPath);
  /// What a watch has in the queue goes, and nothing more comes in.
  void End(std::uint32_t pWatch);
  /// In their order. False if the taker should be woken and can't be.
  bool Push(std::uint32_t pWatch, std::vector<TDirectoryNotice> pNotices);
  /// Tries once more to wake the taker, if it should be; false as above.
  bool Wake();
  /// The next one; false if there is none.
  bool Pop(TEntry& pEntry);
  /// Drops everything; the taker isn't woken any more.
  void Close();

private:
  struct TWatch {
    std::wstring path;
    bool overflowed = false;
  };

  static bool IsWhole(const TWatch& pState, const TDirectoryNotice& pNotice);
  bool IsTold(std::uint32_t pWatch, const TWatch& pState, const TDirectoryNotice& pNotice) const;
  void Keep(std::uint32_t pWatch, TWatch& pState, TDirectoryNotice pNotice);
  bool MarkAwake();
  bool WakeTaker(bool pNeeded);

  // Not the lock of the rest: who wakes the taker would be interrupted by it, and it wait for him.
  std::mutex fWakeLock;
  std::function<bool()> fWake; // under fWakeLock
  std::mutex fLock;            // of what follows
  const std::size_t fCapacity;
  std::deque<TEntry> fEntries;
  std::map<std::uint32_t, TWatch> fWatches;
  bool fAwake = false;
};

} // namespace kiv
