#include <platform/fill/UnreadReports.h>

#include <platform/fill/WatchedTree.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace kiv {

namespace {

std::size_t SizeOf(const TDirectoryReport& report) {
  return std::max<std::size_t>(report.records.size(), 1);
}

} // namespace

template <typename F>
void TUnreadReports::EraseIf(F&& pIs) {
  if (fReports.empty()) return;
  if (pIs(fReports.front())) fTaken = 0;
  std::erase_if(fReports, [&](const TDirectoryReport& report) {
    const bool gone = pIs(report);
    if (gone) fSize -= SizeOf(report);
    return gone;
  });
}

void TUnreadReports::Add(TDirectoryReport pReport) {
  using enum TDirectoryReport::TKind;
  if (fSize + SizeOf(pReport) > fMost && pReport.kind != Failed) {
    EraseIf([&](const TDirectoryReport& report) { return report.owner == pReport.owner && report.kind != Failed; });
    pReport = {Overflow, pReport.owner, TWatchedTree::RootFolder, {}};
  }
  fSize += SizeOf(pReport);
  fReports.push_back(std::move(pReport));
}

bool TUnreadReports::Take(std::size_t pMost, TDirectoryReport& pReport) {
  if (fReports.empty()) return false;
  TDirectoryReport& first = fReports.front();
  const std::size_t end = std::min(first.records.size(), fTaken + pMost);
  pReport = {first.kind, first.owner, first.folder, {}};
  pReport.records.assign(std::make_move_iterator(first.records.begin() + static_cast<std::ptrdiff_t>(fTaken)),
                         std::make_move_iterator(first.records.begin() + static_cast<std::ptrdiff_t>(end)));
  fTaken = end;
  if (fTaken < first.records.size()) return true;
  fSize -= SizeOf(first);
  fTaken = 0;
  fReports.pop_front();
  return true;
}

void TUnreadReports::Drop(const void* pOwner, std::uint64_t pFolder) {
  EraseIf([&](const TDirectoryReport& report) { return report.owner == pOwner && report.folder == pFolder; });
}

bool TUnreadReports::HasOf(const void* pOwner) const {
  return std::any_of(fReports.begin(), fReports.end(), [&](const auto& report) { return report.owner == pOwner; });
}

} // namespace kiv
