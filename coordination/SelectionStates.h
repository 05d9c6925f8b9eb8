#pragma once

#include <coordination/SelectionDisk.h>
#include <coordination/SelectionEntries.h>
#include <core/SelectionState.h>
#include <framework/ReadWriteLock.h>
#include <platform/Export.h>

#include <atomic>
#include <string>
#include <string_view>

namespace kiv {

/// What of a selection answers for the state of paths: shared by the selection's component and by the work items that
/// ask in the background. Any thread. The disk is asked before the lock is taken: a slow one keeps nobody waiting.
class KIV_EXPORT TSelectionStates final : public ISelectionStateSource {
public:
  explicit TSelectionStates(ISelectionDisk& pDisk) noexcept : fDisk(pDisk) {}

  TKivSelectionState IsPIDLSelected(IItemIdList* pItemIdList, bool& pIsSubItemOf) override;
  TKivSelectionState PathSelected(std::wstring pPath, bool& pIsSubItemOf);

  /// Brings a path to the form of an entry: a file's stays, a folder's gets "\*". Without a "*" at its end if there is
  /// nothing of that path, and the answer is false then.
  bool FormatSelectionPath(std::wstring& pPath) const;
  /// Whether it is a folder that stands for another place: one with a file "target.lnk".
  bool IsLinkedPath(const std::wstring& pPath) const;
  /// That place; empty if the link leads nowhere.
  std::wstring LinkTargetOf(const std::wstring& pPath) const;

  // Of a path in the form of an entry.
  bool IsItemFullSelected(std::wstring_view pEntry);
  TKivSelectionState IsItemSelected(std::wstring_view pEntry, bool& pIsSubItemOf);

  bool GetIsUNCPathSelected();
  bool GetIsLocalPathSelected();
  bool GetDifferentDrivesSelected();

  ISelectionDisk& Disk() const noexcept { return fDisk; }
  TMultiReadExclusiveWriteSynchronizer& Lock() noexcept { return fLockObj; }
  /// Guarded by Lock.
  TSelectionEntries& Entries() noexcept { return fList; }
  bool GetHandleShellLinks() const noexcept { return fHandleShellLinks.load(std::memory_order_relaxed); }
  void SetHandleShellLinks(bool pHandle) noexcept { fHandleShellLinks.store(pHandle, std::memory_order_relaxed); }

private:
  bool CoversByNeighbour(std::wstring_view pEntry, std::size_t pIndex) const;

  ISelectionDisk& fDisk;
  TMultiReadExclusiveWriteSynchronizer fLockObj;
  TSelectionEntries fList;
  std::atomic<bool> fHandleShellLinks{true};
};

namespace detail {

/// A path without the star, and then without the delimiter, at its end.
std::wstring_view WithoutStar(std::wstring_view pPath) noexcept;
std::wstring_view WithoutStarAndDelimiter(std::wstring_view pPath) noexcept;
std::wstring WithDelimiter(std::wstring_view pPath);

} // namespace detail

} // namespace kiv
