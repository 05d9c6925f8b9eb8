#include <notification/DuplicateFilter.h>

#include <core/DebugLog.h>
#include <platform/Threads.h>

#include <string>
#include <utility>

namespace kiv {

namespace {

constexpr TNotificationEvents Filtered = {neFileDelete, neDriveAdd, neDriveRemove, neMediaInsert};

void Log(const wchar_t* message, const std::wstring& what) {
  TDebugLog::LogDebugVerboseMessage(message + what);
}

} // namespace

bool TDuplicateFilter::Passes(TNotificationEvent pEvent, IItemIdList* pItemIdList) {
  ComPtr<IItemIdList> last; // released without the lock
  const std::lock_guard guard(fDuplicationLock);
  if (fClosed) return true;
  if (!Filtered.Contains(pEvent)) {
    last = std::move(fLastDriveRemoveItemIdList);
    fLastDriveRemoveItemIdList.Reset();
    return true;
  }
  const std::uint64_t now = ThreadApi().tickCount();
  const std::uint64_t span = now - fPrevTicks;
  if (span >= Span) {
    Log(L"Duplicate change event NOT filtered , Tick Count time span: ", std::to_wstring(span));
  } else if (IsDuplicate(pEvent, pItemIdList)) {
    return false;
  } else if (fClosed) { // by what was asked
    return true;
  }
  fPrevTicks = now;
  last = std::move(fLastDriveRemoveItemIdList);
  fLastDriveRemoveItemIdList = pItemIdList;
  return true;
}

bool TDuplicateFilter::IsDuplicate(TNotificationEvent pEvent, IItemIdList* pItemIdList) {
  if (!pItemIdList) return false;
  const std::wstring path = pItemIdList->Path();
  const ComPtr<IItemIdList> last = fLastDriveRemoveItemIdList;
  const bool same =
      last && pItemIdList->Equals(last.Get(), ilcDisplay) && (pEvent != neFileDelete || last->Path() == path);
  Log(same ? L"Duplicate change event filtered for: " : L"Duplicate change event NOT filtered for: ", path);
  return same;
}

void TDuplicateFilter::Close() {
  ComPtr<IItemIdList> last;
  const std::lock_guard guard(fDuplicationLock);
  fClosed = true;
  last = std::move(fLastDriveRemoveItemIdList);
}

} // namespace kiv
