#pragma once

#include <core/IItemIdList.h>
#include <notification/NotificationEvent.h>
#include <platform/Export.h>

#include <atomic>
#include <cstdint>
#include <mutex>

namespace kiv {

/// Lets each deletion of a file and each coming and going of a drive or medium through once, which some shells announce
/// several times.
///
/// One of these is a duplicate if the last event of all was one of them, not 3 seconds old, and its object the same.
/// For the deletion of a file that means the same letters: two files may differ in case alone. A duplicate doesn't
/// prolong the time. Any thread.
class KIV_EXPORT TDuplicateFilter {
public:
  static constexpr std::uint64_t Span = 3000; // milliseconds

  bool Passes(TNotificationEvent pEvent, IItemIdList* pItemIdList);
  /// From now on everything passes.
  void Close();

private:
  bool IsDuplicate(TNotificationEvent pEvent, IItemIdList* pItemIdList);

  // Taken again by this thread where a shell extension, asked about a list, lets messages in.
  std::recursive_mutex fDuplicationLock;
  bool fClosed = false;
  std::uint64_t fPrevTicks = 0;
  ComPtr<IItemIdList> fLastDriveRemoveItemIdList;
};

} // namespace kiv
