#pragma once

#include <platform/Export.h>
#include <platform/fill/DirectoryChange.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace kiv {

/// What was read of one directory handle at once.
struct TDirectoryReport {
  enum class TKind { Records, Overflow, Failed };
  TKind kind = TKind::Failed;
  void* owner = nullptr;    ///< the watch whose handle it is
  std::uint64_t folder = 0; ///< the watch's own name for its folder
  std::vector<TDirectoryRecord> records;
};

/// Reports of all watches that were read, so that the platform's buffers don't overflow, and not looked at.
///
/// They are limited, too: a watch whose report would be too much loses all that it has here, and gets one Overflow of
/// its watched folder instead. That a handle failed is never lost. One thread at a time.
class KIV_EXPORT TUnreadReports {
public:
  static constexpr std::size_t MostRecords = 100'000; ///< a report without records counts as one

  explicit TUnreadReports(std::size_t pMost = MostRecords) : fMost(pMost) {}

  void Add(TDirectoryReport pReport);
  /// The oldest report, or the next `pMost` records of it. False if there is none.
  bool Take(std::size_t pMost, TDirectoryReport& pReport);
  /// Drops what there is of a folder.
  void Drop(const void* pOwner, std::uint64_t pFolder);
  bool HasOf(const void* pOwner) const;
  bool IsEmpty() const noexcept { return fReports.empty(); }

private:
  template <typename F>
  void EraseIf(F&& pIs);

  const std::size_t fMost;
  std::size_t fSize = 0;
  std::size_t fTaken = 0; // records of the first report
  std::deque<TDirectoryReport> fReports;
};

} // namespace kiv
