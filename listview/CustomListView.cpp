#include <listview/CustomListView.h>

#include <framework/Exceptions.h>
#include <framework/TextCompare.h>

#include <algorithm>
#include <utility>

namespace kiv {

TCustomListView::TCustomListView(TComponent* pOwner)
    : TWinControl(pOwner), fItems(std::make_unique<TListItems>(static_cast<IListItemsHost&>(*this))),
      fColumns(std::make_unique<TListColumns>(static_cast<IListColumnsHost&>(*this))) {
  // The platform's list view keeps the mouse itself, and fills its area.
  SetControlStyle({TControlStyleFlag::csClickEvents, TControlStyleFlag::csOpaque, TControlStyleFlag::csDoubleClicks});
  SetBounds(GetLeft(), GetTop(), 250, 150);
  SetTabStop(true);
  SetParentColor(false);
  SetColor(clWindow);
  for (int kind : {LVSIL_NORMAL, LVSIL_SMALL, LVSIL_STATE}) {
    fImages[static_cast<std::size_t>(kind)].link.SetOnChange([this, kind](TPersistent*) { PutImages(kind); });
  }
}

TCustomListView::~TCustomListView() {
  EndListView();
}

void TCustomListView::EndListView() noexcept {
  EndWindow();
  fActions.clear();
  ForgetRows();
  fItems = std::make_unique<TListItems>(static_cast<IListItemsHost&>(*this));
}

void TCustomListView::UseItems(std::unique_ptr<TListItems> pItems) {
  if (!pItems || HandleAllocated())
    throw EInvalidOperation(L"The rows of a list are chosen before its window is made.");
  ForgetRows();
  fItems = std::move(pItems);
}

void TCustomListView::UseColumns(std::unique_ptr<TListColumns> pColumns) {
  if (!pColumns || HandleAllocated()) throw EInvalidOperation(L"The columns of a list are chosen before its window.");
  fColumns = std::move(pColumns);
}

// --- rows ------------------------------------------------------------------------------------------------------------

std::unique_ptr<TListItem> TCustomListView::CreateListItem(TListItems& pItems) {
  if (fOnCreateItemClass) {
    TListItemClass itemClass;
    const TAliveWatch alive(GetAliveToken());
    const TCreateItemClassEvent event = fOnCreateItemClass;
    event(this, itemClass);
    if (!alive.IsAlive()) throw EAbort();
    if (itemClass) return itemClass(pItems);
  }
  return std::make_unique<TListItem>(&pItems);
}

void TCustomListView::SetSelected(TListItem* pItem) {
  const ScopedRowUpdate update(*fItems);
  fItems->ClearSelection();
  if (pItem != nullptr) pItem->SetSelected(true);
}

void TCustomListView::SetDropTarget(TListItem* pItem) {
  if (fDropTarget == pItem) return;
  if (fDropTarget != nullptr) fDropTarget->SetDropTarget(false);
  fDropTarget = pItem;
  if (pItem != nullptr) pItem->SetDropTarget(true);
}

TListItem* TCustomListView::GetNextItem(const TListItem* pStart, TSearchDirection pDirection,
                                        TItemStates pStates) const {
  return fItems->GetNextItem(pStart, pDirection, pStates);
}

TListItem* TCustomListView::FindCaption(int pStartIndex, std::wstring_view pText, bool pPartial, bool pInclusive,
                                        bool pWrap) {
  return fItems->FindCaption(pStartIndex, pText, pPartial, pInclusive, pWrap);
}

TListItem* TCustomListView::FindData(int pStartIndex, std::intptr_t pData, bool pInclusive, bool pWrap) const {
  return fItems->FindData(pStartIndex, pData, pInclusive, pWrap);
}

int TCustomListView::CompareItems(TListItem& pFirst, TListItem& pSecond, std::intptr_t pData) {
  int result = CompareText(pFirst.GetCaption(), pSecond.GetCaption());
  static_cast<void>(FireEvent(GetAliveToken(), fOnCompare, this, &pFirst, &pSecond, pData, result));
  return result;
}

void TCustomListView::CustomSort(const TListCompare& pCompare, std::intptr_t pData) {
  if (pCompare) {
    fItems->CustomSort(pCompare, pData);
    return;
  }
  fItems->CustomSort(
      [this](TListItem& first, TListItem& second, std::intptr_t data) { return CompareItems(first, second, data); },
      pData);
}

void TCustomListView::SetAllocBy(int pAllocBy) {
  fAllocBy = std::max(pAllocBy, 0);
  fItems->Reserve(fAllocBy);
}

TListItem* TCustomListView::RowAt(int pIndex) const noexcept {
  return pIndex >= 0 && pIndex < fItems->GetCount() ? fItems->GetItem(pIndex) : nullptr;
}

// --- events ----------------------------------------------------------------------------------------------------------

void TCustomListView::GetImageIndex(TListItem* pItem) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnGetImageIndex, this, pItem));
}

std::wstring TCustomListView::GetCellText(const TListItem& pItem, int pColumn) const {
  if (pColumn == 0) return pItem.GetCaption();
  const TStrings* const texts = pItem.GetExistingSubItems();
  return texts != nullptr && pColumn <= texts->GetCount() ? texts->Get(pColumn - 1) : std::wstring();
}

void TCustomListView::DoSelectItem(TListItem* pItem, bool pSelected) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnSelectItem, this, pItem, pSelected));
}

void TCustomListView::Change(TListItem* pItem, TItemChange pChange) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnChange, this, pItem, pChange));
}

void TCustomListView::InsertItem(TListItem* pItem) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnInsert, this, pItem));
}

void TCustomListView::DeleteItem(TListItem* pItem) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnDeletion, this, pItem));
}

bool TCustomListView::CanEdit(TListItem* pItem) {
  bool allow = !GetReadOnly();
  if (!allow || !fOnEditing) return allow;
  return FireEvent(GetAliveToken(), fOnEditing, this, pItem, allow) && allow;
}

void TCustomListView::Edit(TListItem* pItem, const std::wstring& pText) {
  std::wstring text = pText;
  const TAliveWatch row(pItem->GetAliveToken());
  if (!FireEvent(GetAliveToken(), fOnEdited, this, pItem, text)) return;
  if (row.IsAlive()) pItem->SetCaption(text);
}

void TCustomListView::DoCancelEdit() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnCancelEdit, this));
}

void TCustomListView::DoItemChecked(TListItem* pItem) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnItemChecked, this, pItem));
}

void TCustomListView::DoInfoTip(TListItem* pItem, std::wstring& pText) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnInfoTip, this, pItem, pText));
}

void TCustomListView::ColClick(TListColumn* pColumn) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnColumnClick, this, pColumn));
}

void TCustomListView::ColRightClick(TListColumn* pColumn, POINT pPoint) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnColumnRightClick, this, pColumn, pPoint));
}

void TCustomListView::ColumnDragged() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnColumnDragged, this));
}

bool TCustomListView::CanDragColumn(TListColumn*, int) {
  return true;
}

void TCustomListView::BeginItemDrag(TListItem* pItem, TMouseButton pButton) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnBeginDrag, this, pItem, pButton));
}

// --- on the screen ---------------------------------------------------------------------------------------------------

LVHITTESTINFO TCustomListView::HitTest(int pX, int pY) {
  HandleNeeded();
  CatchUp();
  LVHITTESTINFO hit{};
  hit.pt = {pX, pY};
  hit.iItem = -1;
  Query(LVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
  return hit;
}

TListItem* TCustomListView::GetItemAt(int pX, int pY) {
  const LVHITTESTINFO hit = HitTest(pX, pY);
  return (hit.flags & LVHT_ONITEM) != 0 ? RowAt(hit.iItem) : nullptr;
}

THitTests TCustomListView::GetHitTestInfoAt(int pX, int pY) {
  const LVHITTESTINFO hit = HitTest(pX, pY);
  using enum THitTest;
  THitTests hits;
  // One of the marks of an item has the same bit as "above"; it is given with no other.
  const bool isOnItem = hit.iItem >= 0;
  hits.Put(htNowhere, !isOnItem && (hit.flags & LVHT_NOWHERE) != 0);
  hits.Put(htAbove, !isOnItem && (hit.flags & LVHT_ABOVE) != 0);
  hits.Put(htBelow, !isOnItem && (hit.flags & LVHT_BELOW) != 0);
  hits.Put(htToLeft, !isOnItem && (hit.flags & LVHT_TOLEFT) != 0);
  hits.Put(htToRight, !isOnItem && (hit.flags & LVHT_TORIGHT) != 0);
  hits.Put(htOnItem, isOnItem);
  hits.Put(htOnIcon, isOnItem && (hit.flags & LVHT_ONITEMICON) != 0);
  hits.Put(htOnLabel, isOnItem && (hit.flags & LVHT_ONITEMLABEL) != 0);
  hits.Put(htOnStateIcon, isOnItem && (hit.flags & LVHT_ONITEMSTATEICON) != 0);
  return hits;
}

TListItem* TCustomListView::GetTopItem() {
  HandleNeeded();
  CatchUp();
  return RowAt(FirstVisible());
}

int TCustomListView::GetVisibleRowCount() {
  return static_cast<int>(Send(LVM_GETCOUNTPERPAGE));
}

POINT TCustomListView::GetViewOrigin() {
  POINT origin{};
  Send(LVM_GETORIGIN, 0, reinterpret_cast<LPARAM>(&origin));
  return origin;
}

void TCustomListView::Scroll(int pDX, int pDY) {
  Send(LVM_SCROLL, static_cast<WPARAM>(pDX), pDY);
}

void TCustomListView::Arrange() {
  Send(LVM_ARRANGE, LVA_DEFAULT);
}

int TCustomListView::StringWidth(const std::wstring& pText) {
  return static_cast<int>(Send(LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(pText.c_str())));
}

void TCustomListView::UpdateItems(int pFirst, int pLast) {
  fItems->WishDetails(pFirst, pLast);
  fLooksDirty = true;
  WakeUp();
}

HWND TCustomListView::GetEditControl() {
  return HandleAllocated() ? reinterpret_cast<HWND>(Query(LVM_GETEDITCONTROL)) : nullptr;
}

bool TCustomListView::EditCaptionOf(TListItem& pItem) {
  if (!HandleAllocated() || fItems->IsUpdating()) return false;
  const TAliveWatch alive(GetAliveToken());
  const TAliveWatch row(pItem.GetAliveToken());
  CatchUp();
  // The platform edits only in a list that has the focus.
  if (CanFocus() && !Focused()) SetFocus();
  if (!alive.IsAlive() || !row.IsAlive() || !HandleAllocated()) return false;
  CatchUp();
  const auto index = static_cast<WPARAM>(pItem.GetIndex());
  return Send(LVM_EDITLABELW, index) != 0 && alive.IsAlive();
}

void TCustomListView::CancelEditOf(TListItem& pItem) {
  if (fItems->GetEditing() != &pItem) return;
  const TAliveWatch alive(GetAliveToken());
  if (HandleAllocated()) Send(LVM_CANCELEDITLABEL);
  if (alive.IsAlive()) fItems->SetEditing(nullptr);
}

void TCustomListView::MakeItemVisible(TListItem& pItem, bool pPartialOk) {
  if (!HandleAllocated()) return;
  CatchUp();
  if (fRowsDirty) return; // inside an update there is nothing to be seen yet
  Send(LVM_ENSUREVISIBLE, static_cast<WPARAM>(pItem.GetIndex()), pPartialOk ? TRUE : FALSE);
}

TRowRect TCustomListView::DisplayRectOf(TListItem& pItem, TDisplayCode pCode) {
  if (!HandleAllocated()) return {};
  CatchUp();
  if (fRowsDirty) return {};
  constexpr int parts[] = {LVIR_BOUNDS, LVIR_ICON, LVIR_LABEL, LVIR_SELECTBOUNDS};
  const RECT rect = RowBounds(pItem.GetIndex(), parts[static_cast<int>(pCode)]);
  return {rect.left, rect.top, rect.right, rect.bottom};
}

int TCustomListView::NeighbourOf(int pIndex, TSearchDirection pDirection) {
  if (!HandleAllocated()) return -1;
  CatchUp();
  UINT flags = LVNI_ALL;
  if (pDirection == TSearchDirection::sdLeft) flags = LVNI_TOLEFT;
  if (pDirection == TSearchDirection::sdRight) flags = LVNI_TORIGHT;
  if (pDirection == TSearchDirection::sdAbove) flags = LVNI_ABOVE;
  if (pDirection == TSearchDirection::sdBelow) flags = LVNI_BELOW;
  return static_cast<int>(Query(LVM_GETNEXTITEM, static_cast<WPARAM>(pIndex), MAKELPARAM(flags, 0)));
}

} // namespace kiv
