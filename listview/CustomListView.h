#pragma once

#include <forms/WinControl.h>
#include <graphics/Canvas.h>
#include <graphics/ImageList.h>
#include <listview/ControlMirror.h>
#include <listview/ListColumns.h>
#include <listview/ListItems.h>
#include <listview/ListItemsHost.h>
#include <listview/ListTypes.h>
#include <platform/Export.h>
#include <platform/Types.h>

#include <commctrl.h>

#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kiv {

/// Makes the rows of a list: what an application names in OnCreateItemClass.
using TListItemClass = std::function<std::unique_ptr<TListItem>(TListItems& pItems)>;

/// What a stage of custom drawing concerns ("About Custom Draw").
enum class TCustomDrawTarget { dtControl, dtItem, dtSubItem };
enum class TCustomDrawStage { cdPrePaint, cdPostPaint, cdPreErase, cdPostErase };
enum class TCustomDrawStateFlag { cdsSelected, cdsGrayed, cdsDisabled, cdsChecked, cdsFocused, cdsDefault, cdsHot };
using TCustomDrawState = TSet<TCustomDrawStateFlag>;

using TListItemEvent = TEvent<TPersistent*, TListItem*>;
using TListChangeEvent = TEvent<TPersistent*, TListItem*, TItemChange>;
using TListSelectEvent = TEvent<TPersistent*, TListItem*, bool>;
using TListEditingEvent = TEvent<TPersistent*, TListItem*, bool&>;
using TListEditedEvent = TEvent<TPersistent*, TListItem*, std::wstring&>;
using TListInfoTipEvent = TEvent<TPersistent*, TListItem*, std::wstring&>;
using TListColumnEvent = TEvent<TPersistent*, TListColumn*>;
using TListColumnPointEvent = TEvent<TPersistent*, TListColumn*, POINT>;
using TListDragEvent = TEvent<TPersistent*, TListItem*, TMouseButton>;
using TListCompareEvent = TEvent<TPersistent*, TListItem*, TListItem*, std::intptr_t, int&>;
using TCreateItemClassEvent = TEvent<TPersistent*, TListItemClass&>;
using TListDrawItemEvent = TEvent<TPersistent*, TListItem*, TCustomDrawState, TCustomDrawStage, bool&>;
using TListDrawSubItemEvent = TEvent<TPersistent*, TListItem*, int, TCustomDrawState, TCustomDrawStage, bool&>;

/// The list view: real rows of our own (TListItems) shown by the platform's list view in its virtual form
/// ("LVS_OWNERDATA"), which asks for what it paints and knows no more than a count.
///
/// **The rows know, the control is written to.** Any change of rows, selection, focus or columns is noted first. The
/// control is brought in step (CatchUp) before it handles the next message of whatever kind, so nobody can tell that it
/// wasn't at once, and a hundred thousand changes cost one. It is never told of an insertion or a deletion: it gets the
/// new count, and the marks that differ.
///
/// **No application code runs inside the platform's.** While the control handles a message (fNativeDepth > 0) its
/// reports are only noted; the events follow when it has done. What is likely to destroy rows, columns or the control
/// (a label's new text, a click on a header, a drag) is posted. The exceptions are asked for an answer: CanEdit and
/// custom draw. Rows may go there as well: the control then finds nothing where it looks, and catches up after.
///
/// **Painting asks for nothing.** A row that is painted for the first time is noted, and its details (GetImageIndex,
/// GetSubItems) are fetched by a posted message, visible rows only.
///
/// Views: icon, small icon, list and report. Main thread only.
class KIV_EXPORT TCustomListView : public TWinControl,
                                   private IListItemsHost,
                                   private IListColumnsHost,
                                   private IRowControl {
public:
  explicit TCustomListView(TComponent* pOwner = nullptr);
  ~TCustomListView() override;
  std::wstring ClassName() const override { return L"TCustomListView"; }

  // --- rows ---
  TListItems& GetItems() noexcept { return *fItems; }
  const TListItems& GetItems() const noexcept { return *fItems; }
  virtual void Clear() { fItems->Clear(); }
  /// The first selected row; setting it selects this one alone, or none.
  TListItem* GetSelected() const noexcept { return fItems->GetFirstSelected(); }
  void SetSelected(TListItem* pItem);
  int GetSelCount() const noexcept { return fItems->GetSelectedCount(); }
  TListItem* GetItemFocused() const noexcept { return fItems->GetFocused(); }
  void SetItemFocused(TListItem* pItem) { fItems->SetFocused(pItem); }
  /// The row that is marked as the target of a drag; one at most is, if it is set here.
  TListItem* GetDropTarget() const noexcept { return fDropTarget; }
  void SetDropTarget(TListItem* pItem);
  virtual void SelectAll() { fItems->SelectAll(); }
  virtual void ClearSelection() { fItems->ClearSelection(); }
  void InvertSelection() { fItems->InvertSelection(); }
  void DeleteSelected() { fItems->DeleteSelected(); }
  TListItem* GetNextItem(const TListItem* pStart, TSearchDirection pDirection, TItemStates pStates) const;
  /// See TListItems::FindCaption.
  virtual TListItem* FindCaption(int pStartIndex, std::wstring_view pText, bool pPartial, bool pInclusive, bool pWrap);
  TListItem* FindData(int pStartIndex, std::intptr_t pData, bool pInclusive, bool pWrap) const;
  /// Sorts once; by OnCompare, else by captions, if no comparison is given.
  void CustomSort(const TListCompare& pCompare, std::intptr_t pData = 0);
  void AlphaSort() { CustomSort({}); }
  /// Memory is asked for that many rows at once. At first 0: as the rows need it.
  int GetAllocBy() const noexcept { return fAllocBy; }
  void SetAllocBy(int pAllocBy);

  // --- columns ---
  TListColumns& GetColumns() noexcept { return *fColumns; }
  const TListColumns& GetColumns() const noexcept { return *fColumns; }
  TListColumn* GetColumn(int pIndex) const { return fColumns->GetItem(pIndex); }
  /// Makes each column with AutoSize take what the others leave of the client area; one column in report style.
  void AutoSizeColumns();
  /// The header's window; null if there is none.
  HWND GetHeaderHandle();
  int GetHeaderHeight();

  // --- look ---
  TViewStyle GetViewStyle() const noexcept { return fViewStyle; }
  /// At first vsIcon.
  virtual void SetViewStyle(TViewStyle pStyle);
  bool IsMultiSelect() const noexcept { return fItems->IsMultiSelect(); }
  /// At first off.
  void SetMultiSelect(bool pMultiSelect);
  virtual bool GetReadOnly() const { return fReadOnly; }
  /// Captions can't be edited. At first off.
  virtual void SetReadOnly(bool pReadOnly);
  bool IsHideSelection() const noexcept { return fHideSelection; }
  /// At first on: the selection doesn't show without the focus.
  void SetHideSelection(bool pHide);
  bool IsRowSelect() const noexcept { return fRowSelect; }
  /// A row of a report is selected over its whole width. At first off.
  void SetRowSelect(bool pRowSelect);
  bool IsGridLines() const noexcept { return fGridLines; }
  void SetGridLines(bool pGridLines);
  bool IsShowColumnHeaders() const noexcept { return fShowColumnHeaders; }
  /// At first on.
  void SetShowColumnHeaders(bool pShow);
  bool IsColumnClick() const noexcept { return fColumnClick; }
  /// Headers are buttons. At first on.
  void SetColumnClick(bool pColumnClick);
  bool IsFullDrag() const noexcept { return fFullDrag; }
  /// Columns can be dragged to another place. At first off.
  void SetFullDrag(bool pFullDrag);
  TBorderStyle GetBorderStyle() const noexcept { return fBorderStyle; }
  void SetBorderStyle(TBorderStyle pStyle);
  bool IsSubItemImages() const noexcept { return fSubItemImages; }
  /// Sub-items can have images (TListItem::SetSubItemImage). At first off.
  void SetSubItemImages(bool pSubItemImages);
  bool IsCheckBoxes() const noexcept { return fCheckBoxes; }
  /// Each row has a check box in front, which shows Checked, CheckMixed and CheckEnabled. State images of the
  /// application's take its place.
  void SetCheckBoxes(bool pCheckBoxes);
  /// Not owned; null for none.
  TCustomImageList* GetLargeImages() const noexcept { return fImages[LVSIL_NORMAL].images; }
  void SetLargeImages(TCustomImageList* pImages) { UseImages(LVSIL_NORMAL, pImages); }
  TCustomImageList* GetSmallImages() const noexcept { return fImages[LVSIL_SMALL].images; }
  void SetSmallImages(TCustomImageList* pImages) { UseImages(LVSIL_SMALL, pImages); }
  TCustomImageList* GetStateImages() const noexcept { return fImages[LVSIL_STATE].images; }
  void SetStateImages(TCustomImageList* pImages) { UseImages(LVSIL_STATE, pImages); }

  // --- on the screen; all of it makes the window if need be ---
  TListItem* GetItemAt(int pX, int pY);
  /// What lies at a point of the client area.
  THitTests GetHitTestInfoAt(int pX, int pY);
  /// The first row that shows; null without rows.
  TListItem* GetTopItem();
  /// How many rows fit into the client area, in list and report style; else all.
  int GetVisibleRowCount();
  /// Where the client area stands in the whole of the list.
  POINT GetViewOrigin();
  void Scroll(int pDX, int pDY);
  void Arrange();
  int StringWidth(const std::wstring& pText);
  /// Paints these rows anew and asks for their images and sub-items again.
  void UpdateItems(int pFirst, int pLast);
  bool IsEditing() const noexcept { return fItems->GetEditing() != nullptr; }
  /// The window in which a caption is edited; null if there is none.
  HWND GetEditControl();

  /// Brings the control in step with the rows now. Nobody needs to call it: it happens by itself.
  void CatchUp();
  /// For tests: whether the control shows what the rows say; what is wrong, if not.
  bool IsConsistent() { return DescribeInconsistency().empty(); }
  std::wstring DescribeInconsistency();

  // --- events ---
  const TListChangeEvent& GetOnChange() const noexcept { return fOnChange; }
  void SetOnChange(TListChangeEvent pEvent) { fOnChange = std::move(pEvent); }
  const TListSelectEvent& GetOnSelectItem() const noexcept { return fOnSelectItem; }
  void SetOnSelectItem(TListSelectEvent pEvent) { fOnSelectItem = std::move(pEvent); }
  const TListItemEvent& GetOnInsert() const noexcept { return fOnInsert; }
  void SetOnInsert(TListItemEvent pEvent) { fOnInsert = std::move(pEvent); }
  const TListItemEvent& GetOnDeletion() const noexcept { return fOnDeletion; }
  void SetOnDeletion(TListItemEvent pEvent) { fOnDeletion = std::move(pEvent); }
  const TListItemEvent& GetOnGetImageIndex() const noexcept { return fOnGetImageIndex; }
  void SetOnGetImageIndex(TListItemEvent pEvent) { fOnGetImageIndex = std::move(pEvent); }
  const TListItemEvent& GetOnItemChecked() const noexcept { return fOnItemChecked; }
  void SetOnItemChecked(TListItemEvent pEvent) { fOnItemChecked = std::move(pEvent); }
  const TListEditingEvent& GetOnEditing() const noexcept { return fOnEditing; }
  void SetOnEditing(TListEditingEvent pEvent) { fOnEditing = std::move(pEvent); }
  const TListEditedEvent& GetOnEdited() const noexcept { return fOnEdited; }
  void SetOnEdited(TListEditedEvent pEvent) { fOnEdited = std::move(pEvent); }
  const TNotifyEvent& GetOnCancelEdit() const noexcept { return fOnCancelEdit; }
  void SetOnCancelEdit(TNotifyEvent pEvent) { fOnCancelEdit = std::move(pEvent); }
  const TListInfoTipEvent& GetOnInfoTip() const noexcept { return fOnInfoTip; }
  void SetOnInfoTip(TListInfoTipEvent pEvent) { fOnInfoTip = std::move(pEvent); }
  const TListColumnEvent& GetOnColumnClick() const noexcept { return fOnColumnClick; }
  void SetOnColumnClick(TListColumnEvent pEvent) { fOnColumnClick = std::move(pEvent); }
  const TListColumnPointEvent& GetOnColumnRightClick() const noexcept { return fOnColumnRightClick; }
  void SetOnColumnRightClick(TListColumnPointEvent pEvent) { fOnColumnRightClick = std::move(pEvent); }
  const TNotifyEvent& GetOnColumnDragged() const noexcept { return fOnColumnDragged; }
  void SetOnColumnDragged(TNotifyEvent pEvent) { fOnColumnDragged = std::move(pEvent); }
  const TListDragEvent& GetOnBeginDrag() const noexcept { return fOnBeginDrag; }
  void SetOnBeginDrag(TListDragEvent pEvent) { fOnBeginDrag = std::move(pEvent); }
  const TListCompareEvent& GetOnCompare() const noexcept { return fOnCompare; }
  void SetOnCompare(TListCompareEvent pEvent) { fOnCompare = std::move(pEvent); }
  const TCreateItemClassEvent& GetOnCreateItemClass() const noexcept { return fOnCreateItemClass; }
  void SetOnCreateItemClass(TCreateItemClassEvent pEvent) { fOnCreateItemClass = std::move(pEvent); }
  const TListDrawItemEvent& GetOnAdvancedCustomDrawItem() const noexcept { return fOnAdvancedCustomDrawItem; }
  void SetOnAdvancedCustomDrawItem(TListDrawItemEvent pEvent) { fOnAdvancedCustomDrawItem = std::move(pEvent); }
  const TListDrawSubItemEvent& GetOnAdvancedCustomDrawSubItem() const noexcept { return fOnAdvancedCustomDrawSubItem; }
  void SetOnAdvancedCustomDrawSubItem(TListDrawSubItemEvent pEvent) {
    fOnAdvancedCustomDrawSubItem = std::move(pEvent);
  }
  /// What the handlers of custom draw draw on; has no context at other times.
  TCanvas& GetCanvas() noexcept { return fCanvas; }

protected:
  /// For constructors of derived classes: collections of classes of their own, made with these hosts, in the place of
  /// those that stand, with which their rows and columns go.
  void UseItems(std::unique_ptr<TListItems> pItems);
  void UseColumns(std::unique_ptr<TListColumns> pColumns);
  IListItemsHost& ItemsHost() noexcept { return *this; }
  IListColumnsHost& ColumnsHost() noexcept { return *this; }

  // --- what derived classes change ---
  /// Makes a row: of the class that OnCreateItemClass names, else a TListItem.
  std::unique_ptr<TListItem> CreateListItem(TListItems& pItems) override;
  std::unique_ptr<TListColumn> CreateListColumn(TListColumns& pColumns) override;
  /// A row's details are wanted, because it shows. Fires OnGetImageIndex; an override sets the row's ImageIndex.
  virtual void GetImageIndex(TListItem* pItem);
  /// The text of a cell, column 0 being the caption. Asked while painting: answers from what the row has.
  virtual std::wstring GetCellText(const TListItem& pItem, int pColumn) const;
  void DoSelectItem(TListItem* pItem, bool pSelected) override;
  /// After any number of rows changed their selection, or the focus went to another: the row with the focus if it is
  /// one of them, else the first of them; null if that has gone.
  void Change(TListItem* pItem, TItemChange pChange) override;
  void InsertItem(TListItem* pItem) override;
  void DeleteItem(TListItem* pItem) override;
  /// Whether this caption may be edited. Fires OnEditing.
  virtual bool CanEdit(TListItem* pItem);
  /// The user has given a new caption. Fires OnEdited, and sets what that leaves.
  virtual void Edit(TListItem* pItem, const std::wstring& pText);
  virtual void DoCancelEdit();
  virtual void DoItemChecked(TListItem* pItem);
  /// The pointer rests on a row. The text comes as the row's caption; what is left is shown if it was changed or
  /// OnInfoTip is set, else the list's own hint.
  virtual void DoInfoTip(TListItem* pItem, std::wstring& pText);
  virtual void ColClick(TListColumn* pColumn);
  /// `pColumn` is null beside all columns; the point counts from the header's top left corner.
  virtual void ColRightClick(TListColumn* pColumn, POINT pPoint);
  virtual void ColumnDragged();
  /// False: the user may not put the column to that position.
  virtual bool CanDragColumn(TListColumn* pColumn, int pPosition);
  virtual void BeginItemDrag(TListItem* pItem, TMouseButton pButton);
  virtual int CompareItems(TListItem& pFirst, TListItem& pSecond, std::intptr_t pData);
  /// Whether custom drawing of the target at a stage is wanted.
  virtual bool IsCustomDrawn(TCustomDrawTarget pTarget, TCustomDrawStage pStage);
  /// The whole control. False: the platform draws nothing.
  virtual bool CustomDraw(const RECT& pRect, TCustomDrawStage pStage);
  /// A row. Colours and style of the canvas' font and brush are taken for what the platform draws. False: it draws
  /// nothing.
  virtual bool CustomDrawItem(TListItem* pItem, TCustomDrawState pState, TCustomDrawStage pStage);
  virtual bool CustomDrawSubItem(TListItem* pItem, int pSubItem, TCustomDrawState pState, TCustomDrawStage pStage);

  // --- framework ---
  void CreateParams(TCreateParams& pParams) override;
  void CreateWnd() override;
  void FollowParentWindow(HWND pParent) override;
  void WMDestroy(TMessage& pMessage) override;
  void WndProc(TMessage& pMessage) override;
  void DefaultHandler(TMessage& pMessage) override;
  void CNNotify(TMessage& pMessage) override;
  /// Of the header.
  void WMNotify(TMessage& pMessage) override;
  void MouseDown(TMouseButton pButton, TShiftState pShift, int pX, int pY) override;
  void MouseMove(TShiftState pShift, int pX, int pY) override;
  void KeyDown(WORD& pKey, TShiftState pShift) override;
  void KeyUp(WORD& pKey, TShiftState pShift) override;
  void WMKillFocus(TMessage& pMessage) override;
  bool DoMouseWheelHorz(TShiftState pShift, int pDelta, POINT pScreen) override;
  void CMHintShow(TMessage& pMessage) override;
  void WMGetObject(TMessage& pMessage) override;
  void CMMouseLeave(TMessage& pMessage) override;
  void CMEnabledChanged(TMessage& pMessage) override;
  void CMColorChanged(TMessage& pMessage) override;
  void CMThemeChanged(TMessage& pMessage) override;
  void ChangeScale(int pM, int pD, bool pKeepPlace) override;
  void WMSize(TMessage& pMessage) override;
  void Notification(TComponent* pComponent, TOperation pOperation) override;

  /// For the head of a destructor of a derived class: ends the window and the rows while its overrides stand.
  void EndListView() noexcept;
  /// Runs by a message of its own, never from inside the platform's code. Dropped if the control goes before.
  void PostAction(std::function<void()> pAction);
  /// Runs now what has been posted: for who lets all rows go, and must hear before that how an edit ended. The control
  /// may be gone then.
  void RunActions();
  bool IsInsideNative() const noexcept { return fNativeDepth > 0; }

private:
  class TNativeScope;
  class TWriteScope;
  class TReopening;

  // IListItemsHost
  TCustomListView* GetListView() noexcept override { return this; }
  void RowsChanging() noexcept override;
  void RowsChanged() noexcept override;
  void RowLeaving(TListItem& pItem) noexcept override;
  void RowsLeaving(const TRowBits& pRows) noexcept override;
  void RowLookChanged(TListItem& pItem) noexcept override;
  void StateChanged() noexcept override;
  void SetUpdateState(bool pUpdating) noexcept override;
  bool IsReportingDeferred() const noexcept override { return fNativeDepth > 0; }
  void CancelEditOf(TListItem& pItem) override;
  bool EditCaptionOf(TListItem& pItem) override;
  void MakeItemVisible(TListItem& pItem, bool pPartialOk) override;
  TRowRect DisplayRectOf(TListItem& pItem, TDisplayCode pCode) override;
  int NeighbourOf(int pIndex, TSearchDirection pDirection) override;
  // IListColumnsHost
  void ColumnsChanged() noexcept override;
  void ColumnLookChanged(TListColumn& pColumn, bool pWidth) noexcept override;
  void ColumnLeaving(TListColumn& pColumn) noexcept override;
  // IRowControl
  void PutCount(int pCount) override;
  void PutSelected(int pIndex, bool pSelected) override;
  void PutAllSelected(bool pSelected) override;
  void PutFocused(int pFormer, int pIndex) override;
  void PutAnchor(int pIndex) override;

  LRESULT Send(UINT pMessage, WPARAM pWParam = 0, LPARAM pLParam = 0);
  LRESULT Query(UINT pMessage, WPARAM pWParam = 0, LPARAM pLParam = 0) const;
  void PutItemState(int pIndex, UINT pState, UINT pMask);
  DWORD StyleBits() const noexcept;
  DWORD ExtendedStyleBits() const noexcept;
  void StyleChanged();
  void ExtendedStyleChanged();
  TListItem* RowAt(int pIndex) const noexcept;

  // in step
  void ForgetRows() noexcept;
  void WakeUp() noexcept;
  void HandleWakeUp();
  void Settle(UINT pMessage);
  bool Reconcile();
  void ReadSelection();
  void FetchDetails();
  void MakeWantedImages();
  void NoteTop() noexcept;
  void RestoreTop();
  void PlaceEdit();
  int FirstVisible() const;
  LVHITTESTINFO HitTest(int pX, int pY);
  RECT RowBounds(int pIndex, int pPart = LVIR_BOUNDS) const;
  void EndWriting();
  void WriteColumns();
  void RequireColumnImage(int pIndex) noexcept;
  void WriteColumnLooks();
  void TakeColumnWidth(int pIndex);
  void RedrawLooks();

  // notifications
  void GetDispInfo(LVITEMW& pItem);
  void PutText(LVITEMW& pItem, std::wstring pText);
  UINT StateBitsOf(const TListItem& pItem) const noexcept;
  void TakeStateReport(int pFirst, int pLast, UINT pOldState, UINT pNewState);
  void PostColumnClick(int pIndex);
  void PostDrag(int pIndex, TMouseButton pButton);
  LRESULT BeginLabelEdit(int pIndex);
  void EndLabelEdit(const wchar_t* pText);
  std::wstring EditText();
  std::pair<DWORD, DWORD> EditSelection();
  void ReopenEdit(TListItem& pItem);
  LRESULT FindRow(const NMLVFINDITEMW& pFind);
  LRESULT HandleCustomDraw(NMLVCUSTOMDRAW& pDraw);
  LRESULT DrawStage(NMLVCUSTOMDRAW& pDraw, TCustomDrawTarget pTarget, TCustomDrawStage pStage);
  LRESULT TakeDrawnLook(NMLVCUSTOMDRAW& pDraw, TCustomDrawTarget pTarget);
  LRESULT NextStages(TCustomDrawTarget pTarget);
  bool HandleHeader(TMessage& pMessage);
  bool RefusesHeader(const NMHEADERW& pHeader);
  bool RefusesWidth(TListColumn& pColumn, int pWidth);
  void ReleaseSwallowedButton(UINT pPressed);
  void ApplyHeaderMode();
  void PutIconSpacing();
  LRESULT DrawHeader(const NMCUSTOMDRAW& pDraw) const;
  void ReadHeaderOrder();

  // images
  struct TImageSlot {
    TCustomImageList* images = nullptr;
    const TComponent* key = nullptr; // the same, for the time when it is no more than that
    TChangeLink link;
  };
  void UseImages(int pKind, TCustomImageList* pImages);
  void PutImages(int pKind);

  // check boxes
  void MakeBoxImages();
  void BoxesChanged();
  int BoxImageOf(const TListItem& pItem) const noexcept;
  TListItem* BoxAt(int pX, int pY);
  void SetHotBox(TListItem* pItem) noexcept;
  void Tick(TListItem& pItem);

  std::unique_ptr<TListItems> fItems;
  std::unique_ptr<TListColumns> fColumns;
  TControlMirror fMirror;
  int fNativeDepth = 0;
  int fWriting = 0;
  int fWrites = 0; // of this round, to see when painting is worth to be held
  bool fRedrawOff = false;
  bool fCatchingUp = false;
  bool fIsReady = false; // the window takes rows and columns
  bool fIsAwake = false; // a wake-up is on its way
  bool fRowsDirty = false;
  bool fStateDirty = false;
  bool fColumnsDirty = false;
  bool fColumnLooksDirty = false;
  bool fLooksDirty = false; // all rows look different, or many
  bool fReportsDue = false;
  bool fTopNoted = false;
  TListItem* fTopRow = nullptr; // stays where it is on the screen; null: the place in the whole stays
  int fTopOffset = 0;
  std::vector<TListItem*> fLooks;
  std::deque<TListItem*> fWanted;
  std::deque<std::function<void()>> fActions;
  std::vector<std::pair<int, int>> fWantedImages; // kind of list and number, of what was painted before it was made
  TListItem* fDropTarget = nullptr;
  TListItem* fHotBox = nullptr;     // the pointer is on its box
  TListItem* fPressedBox = nullptr; // its box was there when the button went down
  bool fIsSpaceDown = false;        // it went down here
  COLORREF fRowText = CLR_DEFAULT;  // of the row whose cells are drawn
  COLORREF fRowBack = CLR_DEFAULT;
  bool fIsReopening = false;          // an edit that was closed in passing
  bool fHasSeenRelease = false;       // since the last press of a button
  bool fIsReleaseTaken = false;       // the window class has had the message at hand
  int fWheelRest = 0;                 // of a turn to the side
  std::array<std::wstring, 8> fTexts; // that the control was given and may still read
  std::size_t fNextText = 0;
  TCanvas fCanvas{nullptr};
  std::shared_ptr<const TUniqueFont> fDrawFont; // in use by the context until the row is drawn

  TViewStyle fViewStyle = TViewStyle::vsIcon;
  TBorderStyle fBorderStyle = TBorderStyle::bsSingle;
  int fAllocBy = 0;
  bool fReadOnly = false;
  bool fHideSelection = true;
  bool fRowSelect = false;
  bool fGridLines = false;
  bool fShowColumnHeaders = true;
  bool fColumnClick = true;
  bool fFullDrag = false;
  bool fSubItemImages = false;
  bool fCheckBoxes = false;
  bool fIsHeaderDark = false;
  bool fIsSpacingScaled = false;
  std::array<TImageSlot, 3> fImages; // by the platform's numbers of them
  std::unique_ptr<TImageList> fBoxImages;

  TListChangeEvent fOnChange;
  TListSelectEvent fOnSelectItem;
  TListItemEvent fOnInsert;
  TListItemEvent fOnDeletion;
  TListItemEvent fOnGetImageIndex;
  TListItemEvent fOnItemChecked;
  TListEditingEvent fOnEditing;
  TListEditedEvent fOnEdited;
  TNotifyEvent fOnCancelEdit;
  TListInfoTipEvent fOnInfoTip;
  TListColumnEvent fOnColumnClick;
  TListColumnPointEvent fOnColumnRightClick;
  TNotifyEvent fOnColumnDragged;
  TListDragEvent fOnBeginDrag;
  TListCompareEvent fOnCompare;
  TCreateItemClassEvent fOnCreateItemClass;
  TListDrawItemEvent fOnAdvancedCustomDrawItem;
  TListDrawSubItemEvent fOnAdvancedCustomDrawSubItem;
};

/// The list view that an application places.
class KIV_EXPORT TListView : public TCustomListView {
public:
  explicit TListView(TComponent* pOwner = nullptr) : TCustomListView(pOwner) {}
  ~TListView() override { EndListView(); }
  std::wstring ClassName() const override;
};

} // namespace kiv
