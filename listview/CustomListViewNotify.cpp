#include <listview/CustomListView.h>
#include <listview/NativeScope.h>

#include <framework/Application.h>

#include <windowsx.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <utility>

// What the platform's list view asks and reports. All of it comes from inside its code.

namespace kiv {

void TCustomListView::CNNotify(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  const TNativeScope scope(*this);
  auto* const header = reinterpret_cast<NMHDR*>(pMessage.LParam);
  switch (header->code) {
  case LVN_GETDISPINFOW:
    GetDispInfo(reinterpret_cast<NMLVDISPINFOW*>(header)->item);
    return;
  case LVN_ITEMCHANGED: {
    const auto& change = *reinterpret_cast<const NMLISTVIEW*>(header);
    if ((change.uChanged & LVIF_STATE) == 0) return;
    const bool all = change.iItem < 0;
    TakeStateReport(all ? 0 : change.iItem, all ? fMirror.GetCount() - 1 : change.iItem, change.uOldState,
                    change.uNewState);
    return;
  }
  case LVN_ODSTATECHANGED: {
    const auto& change = *reinterpret_cast<const NMLVODSTATECHANGE*>(header);
    TakeStateReport(change.iFrom, change.iTo, change.uOldState, change.uNewState);
    return;
  }
  case LVN_ODFINDITEMW:
    pMessage.Result = FindRow(*reinterpret_cast<const NMLVFINDITEMW*>(header));
    return;
  case LVN_BEGINLABELEDITW:
    pMessage.Result = BeginLabelEdit(reinterpret_cast<const NMLVDISPINFOW*>(header)->item.iItem);
    return;
  case LVN_ENDLABELEDITW:
    EndLabelEdit(reinterpret_cast<const NMLVDISPINFOW*>(header)->item.pszText);
    return;
  case LVN_COLUMNCLICK:
    PostColumnClick(reinterpret_cast<const NMLISTVIEW*>(header)->iSubItem);
    return;
  case LVN_BEGINDRAG:
  case LVN_BEGINRDRAG:
    PostDrag(reinterpret_cast<const NMLISTVIEW*>(header)->iItem,
             header->code == LVN_BEGINDRAG ? TMouseButton::mbLeft : TMouseButton::mbRight);
    return;
  case NM_CUSTOMDRAW:
    pMessage.Result = HandleCustomDraw(*reinterpret_cast<NMLVCUSTOMDRAW*>(header));
    return;
  default:
    TWinControl::CNNotify(pMessage);
  }
}

// --- painting --------------------------------------------------------------------------------------------------------

UINT TCustomListView::StateBitsOf(const TListItem& pItem) const noexcept {
  UINT state = 0;
  if (pItem.GetCut()) state |= LVIS_CUT;
  if (pItem.GetDropTarget()) state |= LVIS_DROPHILITED;
  if (pItem.GetOverlayIndex() >= 0) state |= static_cast<UINT>(INDEXTOOVERLAYMASK(pItem.GetOverlayIndex() + 1));
  int image = pItem.GetStateIndex();
  if (image < 0 && fCheckBoxes && GetStateImages() == nullptr) image = BoxImageOf(pItem);
  if (image >= 0) state |= static_cast<UINT>(INDEXTOSTATEIMAGEMASK(image + 1));
  return state;
}

void TCustomListView::PutText(LVITEMW& pItem, std::wstring pText) {
  if (pItem.pszText != nullptr && static_cast<std::size_t>(std::max(pItem.cchTextMax, 0)) > pText.size()) {
    std::wmemcpy(pItem.pszText, pText.c_str(), pText.size() + 1);
    return;
  }
  // Longer than the buffer that came with the question: the control reads it from here, after this call.
  std::wstring& kept = fTexts[fNextText++ % fTexts.size()];
  kept = std::move(pText);
  pItem.pszText = kept.data();
}

void TCustomListView::GetDispInfo(LVITEMW& pItem) {
  TListItem* const item = RowAt(pItem.iItem);
  if (item == nullptr) {
    // Rows have gone while it paints.
    if ((pItem.mask & LVIF_TEXT) != 0) PutText(pItem, {});
    if ((pItem.mask & LVIF_IMAGE) != 0) pItem.iImage = I_IMAGENONE;
    return;
  }
  // What we ask of the control ourselves may lead it here as well: to the text of a row that it measures.
  const bool isPainted = fWriting == 0;
  if ((pItem.mask & LVIF_IMAGE) != 0) {
    const int image = pItem.iSubItem == 0 ? item->GetImageIndex() : item->GetSubItemImage(pItem.iSubItem - 1);
    pItem.iImage = image < 0 ? I_IMAGENONE : image;
    const int kind = fViewStyle == TViewStyle::vsIcon ? LVSIL_NORMAL : LVSIL_SMALL;
    TCustomImageList* const images = fImages[static_cast<std::size_t>(kind)].images;
    if (isPainted && image >= 0 && images != nullptr && !images->IsReady(image)) {
      fWantedImages.emplace_back(kind, image);
      WakeUp();
    }
  }
  if ((pItem.mask & LVIF_INDENT) != 0) pItem.iIndent = item->GetIndent();
  if ((pItem.mask & LVIF_STATE) != 0) pItem.state = StateBitsOf(*item) & pItem.stateMask;
  if (isPainted && (pItem.mask & (LVIF_IMAGE | LVIF_TEXT)) != 0 && fItems->TakeDetailsWish(*item)) {
    fWanted.push_back(item);
    WakeUp();
  }
  if ((pItem.mask & LVIF_TEXT) == 0) return;
  // Last, since it is a derived class that answers.
  std::wstring text;
  try {
    text = GetCellText(*item, pItem.iSubItem);
  } catch (...) {
    ReportException(std::current_exception());
  }
  PutText(pItem, std::move(text));
}

// --- reports ---------------------------------------------------------------------------------------------------------

void TCustomListView::TakeStateReport(int pFirst, int pLast, UINT pOldState, UINT pNewState) {
  if (fWriting > 0) return; // it tells us what we wrote
  const UINT changed = pOldState ^ pNewState;
  // What it numbers are the rows that it knows; while those have moved, ours stand and are written to it after.
  const bool isInStep = !fRowsDirty;
  if ((changed & LVIS_SELECTED) != 0) {
    const bool isSelected = (pNewState & LVIS_SELECTED) != 0;
    fMirror.TakeSelected(pFirst, pLast, isSelected);
    if (isInStep && !fIsReopening) fItems->TakeSelection(pFirst, pLast, isSelected);
  }
  if ((changed & LVIS_FOCUSED) != 0 && pFirst == pLast) {
    const bool isFocused = (pNewState & LVIS_FOCUSED) != 0;
    if (isFocused || fMirror.GetFocused() == pFirst) {
      fMirror.TakeFocused(isFocused ? pFirst : -1);
      if (isInStep) fItems->TakeFocus(isFocused ? RowAt(pFirst) : nullptr);
    }
  }
  if (changed == 0) return;
  fReportsDue = true;
  WakeUp();
}

void TCustomListView::PostColumnClick(int pIndex) {
  if (fColumnsDirty || pIndex < 0 || pIndex >= fColumns->GetCount()) return;
  PostAction([this, id = fColumns->GetItem(pIndex)->GetID()] {
    if (TListColumn* const column = fColumns->FindItemID(id)) ColClick(column);
  });
}

void TCustomListView::PostDrag(int pIndex, TMouseButton pButton) {
  TListItem* const item = fRowsDirty ? nullptr : RowAt(pIndex);
  if (item == nullptr) return;
  PostAction([this, item, pButton, row = TAliveWatch(item->GetAliveToken())] {
    if (row.IsAlive() && item->GetIndex() >= 0) BeginItemDrag(item, pButton);
  });
}

LRESULT TCustomListView::FindRow(const NMLVFINDITEMW& pFind) {
  constexpr UINT partial = LVFI_PARTIAL | 4; // "LVFI_SUBSTRING": the same by another name
  if ((pFind.lvfi.flags & (LVFI_STRING | partial)) == 0 || pFind.lvfi.psz == nullptr) return -1;
  const bool isPartial = (pFind.lvfi.flags & partial) != 0;
  const TListItem* found = FindCaption(pFind.iStart, pFind.lvfi.psz, isPartial, true, false);
  if (found == nullptr && (pFind.lvfi.flags & LVFI_WRAP) != 0) {
    found = FindCaption(0, pFind.lvfi.psz, isPartial, true, false);
  }
  return fItems->IndexOf(found);
}

// --- editing ---------------------------------------------------------------------------------------------------------

// 0 allows it.
LRESULT TCustomListView::BeginLabelEdit(int pIndex) {
  TListItem* const item = fRowsDirty ? nullptr : RowAt(pIndex);
  if (item == nullptr) return TRUE;
  const TAliveWatch alive(GetAliveToken());
  const TAliveWatch row(item->GetAliveToken());
  const HWND window = AllocatedHandle();
  const bool allow = fIsReopening || CanEdit(item); // it was allowed when it began
  // A handler may have moved the rows, so that the platform would edit another one, or replaced the window.
  if (!alive.IsAlive() || !row.IsAlive() || !allow || item->GetIndex() != pIndex) return TRUE;
  if (window != AllocatedHandle()) return TRUE;
  fItems->SetEditing(item);
  return FALSE;
}

std::wstring TCustomListView::EditText() {
  const HWND edit = GetEditControl();
  std::wstring text(static_cast<std::size_t>(edit ? GetWindowTextLengthW(edit) : 0) + 1, L'\0');
  text.resize(static_cast<std::size_t>(edit ? GetWindowTextW(edit, text.data(), static_cast<int>(text.size())) : 0));
  return text;
}

std::pair<DWORD, DWORD> TCustomListView::EditSelection() {
  std::pair<DWORD, DWORD> selected;
  if (const HWND edit = GetEditControl()) {
    SendMessageW(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&selected.first),
                 reinterpret_cast<LPARAM>(&selected.second));
  }
  return selected;
}

class TCustomListView::TReopening {
public:
  explicit TReopening(TCustomListView& pView) : fView(pView), fWatch(pView.GetAliveToken()) {
    fView.fIsReopening = true;
  }
  TReopening(const TReopening&) = delete;
  TReopening& operator=(const TReopening&) = delete;
  ~TReopening() {
    if (fWatch.IsAlive()) fView.fIsReopening = false;
  }

private:
  TCustomListView& fView;
  TAliveWatch fWatch;
};

// The edit that is about to be closed, though nobody wants that, comes back with what it holds.
void TCustomListView::ReopenEdit(TListItem& pItem) {
  PostAction(
      [this, item = &pItem, row = TAliveWatch(pItem.GetAliveToken()), text = EditText(), selected = EditSelection()] {
        if (!row.IsAlive() || item->GetIndex() < 0) {
          DoCancelEdit();
          return;
        }
        const TAliveWatch alive(GetAliveToken());
        bool isOpen = false;
        {
          // The platform selects a row that is edited, and no other.
          const TReopening reopening(*this);
          isOpen = item->EditCaption();
          if (!alive.IsAlive()) return;
          StateChanged();
          CatchUp();
        }
        const HWND edit = isOpen ? GetEditControl() : nullptr;
        if (edit == nullptr) {
          DoCancelEdit();
          return;
        }
        SetWindowTextW(edit, text.c_str());
        SendMessageW(edit, EM_SETSEL, static_cast<WPARAM>(selected.first), static_cast<LPARAM>(selected.second));
      });
}

void TCustomListView::EndLabelEdit(const wchar_t* pText) {
  TListItem* const item = fItems->GetEditing();
  if (item == nullptr) return;
  // A platform may close the edit when the rows are counted anew. One that does so again at once has its way.
  const bool isUnwanted = fWriting > 0 && !fIsReopening;
  if (isUnwanted) ReopenEdit(*item);
  fItems->SetEditing(nullptr);
  if (fTopNoted) WakeUp();
  if (isUnwanted) return;
  if (pText == nullptr) {
    PostAction([this] { DoCancelEdit(); });
    return;
  }
  PostAction([this, item, row = TAliveWatch(item->GetAliveToken()), text = std::wstring(pText)] {
    if (row.IsAlive() && item->GetIndex() >= 0) Edit(item, text);
  });
}

// --- the header ------------------------------------------------------------------------------------------------------

void TCustomListView::WMNotify(TMessage& pMessage) {
  const auto* const header = reinterpret_cast<const NMHDR*>(pMessage.LParam);
  const bool isHeader =
      HandleAllocated() && header->hwndFrom == reinterpret_cast<HWND>(Query(LVM_GETHEADER)) && fWriting == 0;
  if (!isHeader || !HandleHeader(pMessage)) TWinControl::WMNotify(pMessage);
}

// True if the platform's list view isn't to hear of it.
bool TCustomListView::HandleHeader(TMessage& pMessage) {
  const auto& notice = *reinterpret_cast<const NMHEADERW*>(pMessage.LParam);
  switch (notice.hdr.code) {
  case HDN_BEGINTRACKW:
  case HDN_ITEMCHANGINGW:
  case HDN_ENDDRAG:
    if (RefusesHeader(notice)) {
      pMessage.Result = TRUE;
      return true;
    }
    if (notice.hdr.code == HDN_ENDDRAG) PostAction([this] { ReadHeaderOrder(); });
    return false;
  case NM_CUSTOMDRAW:
    if (!fIsHeaderDark) return false;
    pMessage.Result = DrawHeader(*reinterpret_cast<const NMCUSTOMDRAW*>(pMessage.LParam));
    return true;
  case HDN_ITEMCHANGEDW:
    if (notice.pitem != nullptr && (notice.pitem->mask & HDI_WIDTH) != 0) TakeColumnWidth(notice.iItem);
    return false;
  case NM_RCLICK: {
    const DWORD position = GetMessagePos();
    HDHITTESTINFO hit{};
    hit.pt = {GET_X_LPARAM(position), GET_Y_LPARAM(position)};
    ::ScreenToClient(notice.hdr.hwndFrom, &hit.pt);
    const auto index =
        static_cast<int>(SendMessageW(notice.hdr.hwndFrom, HDM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
    const int id = index >= 0 && index < fColumns->GetCount() ? fColumns->GetItem(index)->GetID() : -1;
    PostAction([this, id, point = hit.pt] { ColRightClick(id < 0 ? nullptr : fColumns->FindItemID(id), point); });
    return false;
  }
  default:
    return false;
  }
}

bool TCustomListView::RefusesHeader(const NMHEADERW& pHeader) {
  if (fColumnsDirty || pHeader.iItem < 0 || pHeader.iItem >= fColumns->GetCount()) return false;
  TListColumn& column = *fColumns->GetItem(pHeader.iItem);
  switch (pHeader.hdr.code) {
  case HDN_BEGINTRACKW:
    return !column.GetVisible();
  case HDN_ITEMCHANGINGW: {
    if (pHeader.pitem == nullptr || (pHeader.pitem->mask & HDI_WIDTH) == 0) return false;
    return RefusesWidth(column, pHeader.pitem->cxy);
  }
  default: {
    if (pHeader.pitem == nullptr || (pHeader.pitem->mask & HDI_ORDER) == 0) return false;
    const TAliveWatch alive(GetAliveToken());
    return !CanDragColumn(&column, pHeader.pitem->iOrder) || !alive.IsAlive();
  }
  }
}

bool TCustomListView::RefusesWidth(TListColumn& pColumn, int pWidth) {
  if (!pColumn.GetVisible()) return pWidth != 0;
  if (pColumn.Limit(pWidth) == pWidth) return false;
  // As far as it may go, which the pointer may have skipped.
  pColumn.SetWidth(pWidth);
  return true;
}

void TCustomListView::TakeColumnWidth(int pIndex) {
  if (fColumnsDirty || fColumnLooksDirty || pIndex < 0 || pIndex >= fColumns->GetCount()) return;
  TListColumn& column = *fColumns->GetItem(pIndex);
  const int width = static_cast<int>(Query(LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(pIndex)));
  if (!column.GetVisible() || width < 0) return;
  column.TakeWidth(width);
  if (!column.IsAutoSize()) AutoSizeColumns();
}

void TCustomListView::ReadHeaderOrder() {
  if (fColumnsDirty || !HandleAllocated()) return;
  std::vector<int> order(static_cast<std::size_t>(fColumns->GetCount()));
  if (!Query(LVM_GETCOLUMNORDERARRAY, order.size(), reinterpret_cast<LPARAM>(order.data()))) return;
  if (order == fColumns->GetOrder()) return;
  fColumns->TakeOrder(order);
  ColumnDragged();
}

// --- mouse, hints ----------------------------------------------------------------------------------------------------

// The window class may wait for the release of the button in a loop of its own and keep it to itself.
void TCustomListView::ReleaseSwallowedButton(UINT pPressed) {
  const bool isLeft = pPressed == WM_LBUTTONDOWN;
  if (fHasSeenRelease || GetKeyState(isLeft ? VK_LBUTTON : VK_RBUTTON) < 0 || !HandleAllocated()) return;
  const DWORD position = GetMessagePos();
  const POINT point = ScreenToClient({GET_X_LPARAM(position), GET_Y_LPARAM(position)});
  fIsReleaseTaken = true;
  TMessage message{isLeft ? static_cast<UINT>(WM_LBUTTONUP) : static_cast<UINT>(WM_RBUTTONUP), 0,
                   MAKELPARAM(point.x, point.y), 0};
  const TAliveWatch alive(GetAliveToken());
  TWinControl::WndProc(message);
  if (alive.IsAlive()) fIsReleaseTaken = false; // nobody may have passed it on
}

// Not all platforms' list views know of it.
bool TCustomListView::DoMouseWheelHorz(TShiftState pShift, int pDelta, POINT pScreen) {
  if (TWinControl::DoMouseWheelHorz(pShift, pDelta, pScreen)) return true;
  SCROLLINFO info{};
  info.cbSize = sizeof(info);
  info.fMask = SIF_RANGE | SIF_PAGE;
  const bool hasBar = HandleAllocated() && GetScrollInfo(AllocatedHandle(), SB_HORZ, &info) != 0;
  if (!hasBar || info.nMax - info.nMin < static_cast<int>(info.nPage)) return false;
  int distance = TakeWheelDistance(fWheelRest, pDelta, true, ScaledPixels(20), GetClientWidth());
  if (UseRightToLeftAlignment()) distance = -distance;                          // the window is mirrored
  if (fViewStyle == TViewStyle::vsList) distance = std::clamp(distance, -1, 1); // counted in columns
  if (distance != 0) Scroll(distance, 0);
  return true;
}

void TCustomListView::CMHintShow(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  TWinControl::CMHintShow(pMessage);
  if (!alive.IsAlive() || !HandleAllocated()) return;
  auto& hint = *reinterpret_cast<THintInfo*>(pMessage.LParam);
  POINT point;
  GetCursorPos(&point);
  point = ScreenToClient(point);
  TListItem* const item = GetItemAt(point.x, point.y);
  if (item == nullptr) return;
  const RECT area = RowBounds(item->GetIndex());
  const std::wstring caption = item->GetCaption();
  std::wstring text = caption;
  const bool isHeard = static_cast<bool>(fOnInfoTip);
  DoInfoTip(item, text);
  if (!isHeard && text == caption) return;
  // The hint is the caller's, whatever became of the row.
  hint.text = std::move(text);
  hint.area = area;
}

} // namespace kiv
