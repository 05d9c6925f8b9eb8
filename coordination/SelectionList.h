#pragma once

#include <coordination/BaseSelectionList.h>
#include <coordination/KivStack.h>
#include <core/FolderSizeSource.h>
#include <core/PathList.h>
#include <platform/Export.h>
#include <threading/Cancellation.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

/// What the check boxes of trees and lists select: files and folders, and with a folder all that lies below it.
///
/// It holds as few entries as can say that: a folder whose children are all selected has one entry for all of them, no
/// entry lies below another one's folder, and a folder of which only a part is selected has none. The disk is asked for
/// what lies in a folder only where selecting completes one and where unselecting breaks one up, and then not further
/// than the answer needs. See docs/selection.md.
///
/// What would surprise you:
/// - A folder that can't be listed is never complete.
/// - What isn't there is ssDisabled, and ssDisabled can't be unselected by its path.
/// - The totals run behind: each change adds to them, or takes away, what the background measures for it.
/// - With a TKivShellLink for its owner it lets the link's controls refresh their boxes at each change, but between
///   BeginUpdate and EndUpdate.
class KIV_EXPORT TKivSelectionList : public TKivBaseSelectionList {
public:
  explicit TKivSelectionList(TComponent* pOwner = nullptr);
  ~TKivSelectionList() override;
  /// The same entries, totals and settings, without events.
  static std::unique_ptr<TKivSelectionList> CreateCopy(const TKivSelectionList& aSelectionList);

  std::wstring ClassName() const override;

  void AddPathToSelection(const std::wstring& sFQPath) override;
  void AddPaths(std::vector<std::wstring> pPaths) override;
  void RemovePathFromSelection(const std::wstring& sFQPath) override;
  void RemovePaths(std::vector<std::wstring> pPaths) override;
  /// Nothing for nil and for what has no path.
  void AddPIDLToSelection(IItemIdList* PIDL);
  void RemovePIDLFromSelection(IItemIdList* PIDL);
  TKivSelectionState PathSelected(const std::wstring& sFQPath, bool& pIsSubItemOf) override;
  TKivSelectionState IsPathSelected(const std::wstring& pPath);
  /// The network and the drives are ssGrayed if anything there is selected, else ssDisabled. Any thread.
  TKivSelectionState IsPIDLSelected(IItemIdList* PIDL, bool& bIsSubItemOf);
  std::wstring CompletePathSelected(const std::wstring& sFQPath) override;
  ComPtr<IItemIdList> CompletePIDLSelected(IItemIdList* PIDL);
  void PathWasRenamed(const std::wstring& pOldPath, const std::wstring& pNewPath) override;
  void Clear() override;

  bool GetIsUNCPathSelected() const { return fStates->GetIsUNCPathSelected(); }
  bool GetIsLocalPathSelected() const { return fStates->GetIsLocalPathSelected(); }
  bool GetDifferentDrivesSelected() const { return fStates->GetDifferentDrivesSelected(); }

  /// Between the two the link's controls aren't told of changes; they nest.
  void BeginUpdate() noexcept { ++fIsUpdating; }
  void EndUpdate() noexcept { fIsUpdating -= fIsUpdating > 0 ? 1 : 0; }

  /// Each selected file once, a file's entry before what lies in folders; empty behind the last one. Junctions and
  /// links are entered with FollowReparsePoint only. A change of the selection starts it over.
  std::wstring FindNext();
  void ResetFindNext();
  /// What FindNext gives from the start, while that stays where it is.
  std::unique_ptr<TKivPathList> GetListOfAllFiles();
  /// All entries, a line each.
  std::wstring ToString() const;

  /// Withdraws what is being calculated; the totals are 0 then.
  void AbortSizeCalculation();

  /// Whether a folder with a file "target.lnk" stands for where that leads; otherwise such a folder is ssDisabled. At
  /// first True.
  bool GetHandleShellLinks() const noexcept { return fStates->GetHandleShellLinks(); }
  void SetHandleShellLinks(bool pHandle) noexcept { fStates->SetHandleShellLinks(pHandle); }
  /// Whether the totals are kept. At first True.
  bool GetCalculateSelectedFiles() const noexcept { return fCalculateSelectedFiles; }
  void SetCalculateSelectedFiles(bool pCalculate) noexcept { fCalculateSelectedFiles = pCalculate; }
  /// At first False.
  bool GetFollowReparsePoint() const noexcept { return fFollowReparsePoint; }
  void SetFollowReparsePoint(bool pFollow) noexcept { fFollowReparsePoint = pFollow; }
  /// Whether a path that isn't there is dropped behind OnInvalidPath, and not kept as it was given. At first True.
  bool GetRemoveInvalidPaths() const noexcept { return fRemoveInvalidPaths; }
  void SetRemoveInvalidPaths(bool pRemove) noexcept { fRemoveInvalidPaths = pRemove; }

  const TNotifyEvent& GetOnCompletedCalculateFiles() const noexcept { return fOnCompletedCalculateFiles; }
  /// The totals have changed: one calculation has ended. Others may run still.
  void SetOnCompletedCalculateFiles(TNotifyEvent pEvent) { fOnCompletedCalculateFiles = std::move(pEvent); }

  static TKivSelectionState BoolToSelectionState(bool pSelected) noexcept {
    return pSelected ? ssChecked : ssUnChecked;
  }
  static std::wstring GetUnicodeAPICallPath(std::wstring_view pPath);
  static std::wstring GetParentPathFromPath(std::wstring_view pPath);
  static bool IsFolderToIgnore(std::wstring_view pName) noexcept;
#if defined(_WIN32)
  // See core/FolderFunctions.h.
  /// The search is the caller's to close; INVALID_HANDLE_VALUE if there is none.
  static HANDLE FindFirst(std::wstring_view pPath, WIN32_FIND_DATAW& pFindData);
  static bool IsFile(std::wstring_view pPath);
  static bool IsFolder(std::wstring_view pPath);
  static bool ForceDirectories(std::wstring_view pFullPath);
  static bool CreateEmptyFile(std::wstring_view pFullPath);
#endif

protected:
  void Edit(const std::function<void()>& pChange) override;
  void DeleteEntry(int pIndex, bool pUpdateSize) override;
  void Changed(const std::wstring& pPath) override;
  void AddAllExclude(const std::wstring& pParent, const std::wstring& pExclude, std::wstring& pTop) override;
  void RemoveSubFolders(const std::wstring& pPath) override;
  bool CompleteChildPathSelected(const std::wstring& pPath) override;
  std::wstring CompletePathSelectedExclude(const std::wstring& pParent, const std::wstring& pExclude) override;
  virtual void DoInvalidPath(const std::wstring& pPath);
  virtual void DoCompletedCalculateFiles();

private:
  /// Positions of the walk.
  struct TWalk {
    std::unique_ptr<IDiskSearch> files; // of the folder on top
    TKivStack folders;
    std::size_t fi = 0;                    // over folder entries
    std::size_t fSelectedFilesCounter = 0; // over file entries
  };

  void Tell(std::function<void()> pEvent);
  bool AddEntry(std::wstring pPath, std::wstring& pEntry);
  void Complete(const std::wstring& pEntry);
  void DissolveAncestor(const std::wstring& pPath, const std::wstring& pParent);
  void EraseEntries(TSelectionEntries::TRange pRange, bool pUpdateSize);
  void PerformSizeCalculation(std::wstring_view pPath, bool pSubtract);
  void StartCalculations();
  void CompletedFolderSize(const TFolderSize& pSize, int pFactor);
  void EnterFolder(const std::wstring& pName);

  TWalk fWalk;
  int fIsUpdating = 0;
  int fEditing = 0;
  bool fCalculateSelectedFiles = true;
  bool fFollowReparsePoint = false;
  bool fRemoveInvalidPaths = true;
  CancellationToken fCancellationToken;
  std::vector<std::wstring> fToAdd; // paths to be measured when the change is complete
  std::vector<std::wstring> fToSubtract;
};

} // namespace kiv
