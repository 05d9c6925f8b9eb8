#pragma once

#include <coordination/ShellControl.h>
#include <coordination/ShellLink.h>
#include <folder_view/FolderRow.h>
#include <folder_view/FolderWork.h>
#include <forms/Timer.h>
#include <graphics/ImageList.h>
#include <listview/CustomListView.h>
#include <notification/ChangeNotifier.h>
#include <walker/NameFilter.h>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace kiv::sample {

/// What went wrong, for people; empty when it is over.
using TFailureEvent = TEvent<TPersistent*, const std::wstring&>;

/// A list of one folder, built on the walker: what an application does that wants a control of its own.
///
/// The road of a navigation; one token (fNavigation) withdraws all of it:
///   1. Main thread: the old rows go, and the link is told. Nothing is asked of the new folder here.
///   2. A worker opens it (OpenFolder). Back comes how it is called, or why it can't be shown.
///   3. A folder of a disk is listed by the same worker, any other by a worker that begins when it is watched
///      (ListFolder): it is bound anew, read, sorted, and about ten times a second all that is known so far is
///      delivered.
///   4. Main thread: entries become rows (ShowRows). A row that is painted asks for its icon, type and check box, by a
///      work item of its own.
///   5. Main thread, behind the rows: a folder of a disk is watched. If its time of change says that something came or
///   went
///      since the listing began, it is listed again.
/// A folder that never answers holds its worker, and nothing else.
///
/// Changes on the disk come as names. What has become of a name is read by a worker, so that late, doubled and
/// shuffled reports do no harm; too many names, and reports of more than names, list the folder again, and the result
/// is merged by identity: rows stay, with selection, focus, place on the screen. Nothing of it happens while a label is
/// edited; it is made up for afterwards.
///
/// Main thread only.
class TFolderView : public TCustomListView, public IKivShellControl, public IKivSupportsFilter {
public:
  explicit TFolderView(TComponent* pOwner = nullptr);
  ~TFolderView() override;
  std::wstring ClassName() const override { return L"TFolderView"; }

  // --- the folder ---
  /// Goes there, if the link lets it, and tells the link.
  void GoTo(const ComPtr<IItemIdList>& pFolder);
  /// Goes to what a user has typed, once a worker has found it; if there is no such folder, OnFailure says so and this
  /// one stays.
  void GoToText(const std::wstring& pText);
  /// What was typed and isn't found yet isn't wanted any more.
  void WithdrawText();
  /// Whether a worker looks for what was typed.
  bool IsFinding() const noexcept { return fFinding; }
  /// The list is known from the beginning, the rest when the folder has been opened.
  const TOpenedFolder& GetFolder() const noexcept { return fFolder; }
  /// What stands in the place of rows when there are none.
  const std::wstring& GetMessageText() const noexcept { return fMessage; }
  bool IsListing() const noexcept { return fListing || fUnfinished; }
  /// All objects, those that the filter holds back included.
  int GetObjectCount() const noexcept { return static_cast<int>(fEntries.size()); }
  const TEntries& GetEntries() const noexcept { return fEntries; }
  TFolderRow* GetRow(int pIndex) const { return static_cast<TFolderRow*>(GetItems().GetItem(pIndex)); }
  TFolderRow* FindRow(std::wstring_view pName) const;

  // --- how it is shown ---
  TFolderOrder GetOrder() const noexcept { return fOrder; }
  void SetOrder(const TFolderOrder& pOrder);
  const std::wstring& GetFilter() const noexcept { return fFilterText; }
  /// Patterns as TNameFilter has them; a text without any is looked for anywhere in the names. Folders are filtered
  /// as well. Tells the link.
  void SetFilter(const std::wstring& pFilter);

  // --- what a user does ---
  void OpenFocused();
  void RenameFocused();
  /// Whether one can be made in this folder, as far as is known.
  bool CanMakeFolder() const noexcept { return fOpened && fFolder.takesFolders; }
  /// Makes one and lets the user name it.
  void MakeNewFolder();
  /// Asks first.
  void DeleteSelectedObjects();
  void Reload();
  /// Selects, or takes from, the shared selection all selected rows; by the state of the focused one.
  void ToggleSelected();
  std::vector<ComPtr<IItemIdList>> GetSelectedItemIdLists() const;

  // --- IKivShellControl, IKivSupportsFilter ---
  void SetShellLink(TKivShellLink* pShellLink) override;
  TKivShellLink* GetShellLink() override { return fLink; }
  void PathChanged(IItemIdList* pFolder) override;
  void FileChanged(IItemIdList* pFolder, IItemIdList* pFile) override;
  void SelectAll() override { TCustomListView::SelectAll(); }
  void Refresh(TRefreshLevel pLevel, IItemIdList* pItemIdList) override;
  bool GoUp() override;
  void FilterChanged(const std::wstring& pFilter) override;
  // The life of a component isn't counted.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID pIid, void** pObject) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(-1); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(-1); }

  // --- events ---
  /// Another folder, or more is known of it.
  void SetOnFolder(TNotifyEvent pEvent) { fOnFolder = std::move(pEvent); }
  /// Rows or selection have changed, or a listing has ended.
  void SetOnStatus(TNotifyEvent pEvent) { fOnStatus = std::move(pEvent); }
  void SetOnFailure(TFailureEvent pEvent) { fOnFailure = std::move(pEvent); }

protected:
  void CreateWnd() override;
  void GetImageIndex(TListItem* pItem) override;
  std::wstring GetCellText(const TListItem& pItem, int pColumn) const override;
  void Change(TListItem* pItem, TItemChange pChange) override;
  bool CanEdit(TListItem* pItem) override;
  void Edit(TListItem* pItem, const std::wstring& pText) override;
  void DoCancelEdit() override;
  void DoItemChecked(TListItem* pItem) override;
  void ColClick(TListColumn* pColumn) override;
  bool IsCustomDrawn(TCustomDrawTarget pTarget, TCustomDrawStage pStage) override;
  bool CustomDraw(const RECT& pRect, TCustomDrawStage pStage) override;
  void KeyDown(WORD& pKey, TShiftState pShift) override;
  void KeyPress(wchar_t& pKey) override;
  void KeyUp(WORD& pKey, TShiftState pShift) override;
  void DblClick() override;
  void ChangeScale(int pM, int pD, bool pKeepPlace) override;
  void CMThemeChanged(TMessage& pMessage) override;

private:
  struct THints;
  class TTurn;
  /// What a listing came to.
  struct TListAnswer {
    TFailure failure;
    TFileTime since = 0; ///< when the folder had last changed before
    bool listed = false; ///< with the opening
  };

  void AddColumn(const wchar_t* pCaption, int pWidth, TColumnAlignment pAlignment);
  void ShowSortMarks();
  void PutImageLists();
  void PutBoxes();

  // the road of a navigation
  void Leave();
  void Show(const ComPtr<IItemIdList>& pFolder);
  void TakeOpened(const TOpenedFolder& pFolder, bool pIsBeingListed);
  std::function<void(const TOpenedFolder&)> MakeLister(const std::shared_ptr<TListAnswer>& pAnswer);
  void StartListing(bool pAgain);
  void TakeEntries(TMerged pMerged, const TFolderOrder& pOrder);
  static void LetGo(TEntries pEntries);
  void TakeListed(const TListAnswer& pAnswer);
  void EndListing(const TFailure& pFailure);
  void LookForMissedChanges();
  void Run(CancellationToken& pToken, std::function<void()> pWork, std::function<void()> pDone);
  void Fail(const std::wstring& pText);

  // rows
  void ShowRows();
  bool IsWanted(const TFolderEntry& pEntry) const;
  int RankRows(const TEntries& pWanted, const TTurn& pTurn);
  void KeepFocusNear();
  void GoToAwaited();
  void EndAwaiting();
  void EndAwaitingWhatWontCome();
  bool SelectOnly(TFolderRow* pRow);
  void SortLater();
  void StatusChanged();

  // changes on the disk
  void Watch();
  void TakeHints();
  void NoteRename(const std::wstring& pName, const std::wstring& pNewName);
  void RunChanges();
  void TakeReread(const std::vector<TReread>& pObjects);
  void SetAwaited(const std::wstring& pName, bool pEdit);
  void RunWhatWasHeldUp();
  /// A row has a name that isn't the disk's, or the disk's isn't its own yet: what was read can't be put together with
  /// the rows.
  bool IsNameOpen() const { return IsEditing() || fRenaming > 0; }
  void ListBehindTheEdit();

  // what the user does
  using TActed = std::function<void(bool pSucceeded, bool pIsHere)>;
  void Act(std::function<TFailure()> pAction, TActed pDone);

  /// Empty for what isn't on a disk; never asked of the shell.
  std::wstring PathOf(const TFolderEntry& pEntry) const;
  bool DoKey(WORD pKey, bool pCtrl);
  TKivSelectionList* Selection() const noexcept { return fLink ? fLink->GetSelectionList() : nullptr; }
  TFolderRow* FocusedRow() const { return static_cast<TFolderRow*>(GetItemFocused()); }

  TKivShellLink* fLink = nullptr;
  TOpenedFolder fFolder;
  CancellationToken fNavigation; // all that runs for the folder
  CancellationToken fTyped;      // the search for what was typed
  bool fFinding = false;         // that search runs
  CancellationToken fActions;    // what the user wants done, for as long as the view lives
  TEntries fEntries;             // in order
  unsigned fVersion = 0;         // of fEntries
  bool fOpened = false;          // and can be shown
  bool fListing = false;
  TFileTime fListedSince = 0; // when the folder had last changed before the first listing
  bool fAgain = false;        // the listing that runs is of the folder that is shown
  bool fUnfinished = false;   // the next turns make and delete the rest of the rows
  bool fTurnQueued = false;   // the first of these
  bool fSorting = false;      // a worker does
  bool fReading = false;      // a worker reads names again
  int fRenaming = 0;          // names that were typed for objects of this folder, on their way to the disk
  bool fNameCame = false;     // one of these arrived while the disk was read: what was read may have the old name
  std::wstring fMessage;      // in the place of rows
  TFolderOrder fOrder;
  std::wstring fFilterText;
  TNameFilter fFilter;
  std::wstring fAwaited; // the key of the object that is to get the focus when it comes
  bool fEditAwaited = false;
  bool fTold = false; // the link told us, and isn't told back

  TTimer fChangeTimer;
  std::set<std::wstring> fNames;                 // to be read again
  std::map<std::wstring, std::wstring> fRenamed; // from key to key
  std::map<std::wstring, std::wstring> fMoved;   // those that the worker's answer will tell of
  bool fRelist = false;
  std::shared_ptr<THints> fHints;
  std::unique_ptr<TKivShellChangeNotifier> fNotifier;
  std::unique_ptr<TImageList> fBoxes;

  TNotifyEvent fOnFolder;
  TNotifyEvent fOnStatus;
  TFailureEvent fOnFailure;
};

} // namespace kiv::sample
