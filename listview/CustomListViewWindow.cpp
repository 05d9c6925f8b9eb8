#include <listview/CustomListView.h>
#include <listview/NativeScope.h>

#include <graphics/Bitmap.h>

#include <algorithm>
#include <utility>

// The window: its styles, images and columns.

namespace kiv {

namespace {

constexpr DWORD OwnStyles =
    LVS_TYPEMASK | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_EDITLABELS | LVS_NOCOLUMNHEADER | LVS_NOSORTHEADER;

int AlignmentBits(TColumnAlignment alignment) noexcept {
  switch (alignment) {
  case TColumnAlignment::taRightJustify:
    return LVCFMT_RIGHT;
  case TColumnAlignment::taCenter:
    return LVCFMT_CENTER;
  default:
    return LVCFMT_LEFT;
  }
}

int SortBits(TSortMark mark) noexcept {
  if (mark == TSortMark::None) return 0;
  return mark == TSortMark::Up ? HDF_SORTUP : HDF_SORTDOWN;
}

} // namespace

DWORD TCustomListView::StyleBits() const noexcept {
  constexpr DWORD views[] = {LVS_ICON, LVS_SMALLICON, LVS_LIST, LVS_REPORT};
  DWORD style = views[static_cast<int>(fViewStyle)];
  if (!IsMultiSelect()) style |= LVS_SINGLESEL;
  if (!fHideSelection) style |= LVS_SHOWSELALWAYS;
  if (!fReadOnly) style |= LVS_EDITLABELS;
  if (!fShowColumnHeaders) style |= LVS_NOCOLUMNHEADER;
  if (!fColumnClick) style |= LVS_NOSORTHEADER;
  return style;
}

DWORD TCustomListView::ExtendedStyleBits() const noexcept {
  DWORD style = LVS_EX_LABELTIP;
  // What is painted into a buffer in a mirrored window, not all platforms bring back the right way round.
  if (!UseRightToLeftAlignment()) style |= LVS_EX_DOUBLEBUFFER;
  if (fRowSelect) style |= LVS_EX_FULLROWSELECT;
  if (fGridLines) style |= LVS_EX_GRIDLINES;
  if (fFullDrag) style |= LVS_EX_HEADERDRAGDROP;
  if (fSubItemImages) style |= LVS_EX_SUBITEMIMAGES;
  return style;
}

void TCustomListView::CreateParams(TCreateParams& pParams) {
  TWinControl::CreateParams(pParams);
  pParams.className = WC_LISTVIEWW;
  pParams.style |= StyleBits() | LVS_OWNERDATA | LVS_SHAREIMAGELISTS | WS_CLIPCHILDREN;
  if (fBorderStyle == TBorderStyle::bsSingle) pParams.exStyle |= WS_EX_CLIENTEDGE;
  if (UseRightToLeftAlignment()) {
    // The platform mirrors the whole control; what the base class does for plain windows would be undone by it.
    pParams.exStyle &= ~static_cast<DWORD>(WS_EX_RIGHT | WS_EX_RTLREADING | WS_EX_LEFTSCROLLBAR);
    pParams.exStyle |= WS_EX_LAYOUTRTL;
  }
}

void TCustomListView::CreateWnd() {
  fMirror.Reset();
  fIsReady = fIsAwake = false;
  TWinControl::CreateWnd();
  if (!HandleAllocated()) return;
  {
    const TWriteScope scope(*this);
    SendMessageW(AllocatedHandle(), CCM_SETUNICODEFORMAT, TRUE, 0);
    SendMessageW(AllocatedHandle(), LVM_SETEXTENDEDLISTVIEWSTYLE, 0, static_cast<LPARAM>(ExtendedStyleBits()));
    SendMessageW(AllocatedHandle(), LVM_SETCALLBACKMASK,
                 LVIS_CUT | LVIS_DROPHILITED | LVIS_OVERLAYMASK | LVIS_STATEIMAGEMASK, 0);
  }
  for (const int kind : {LVSIL_NORMAL, LVSIL_SMALL, LVSIL_STATE}) PutImages(kind);
  TMessage color{};
  CMColorChanged(color);
  fRowsDirty = fStateDirty = fColumnsDirty = fIsReady = true;
  WakeUp();
}

void TCustomListView::WMDestroy(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  // The place is taken over by the next window.
  if (IsRecreating()) NoteTop();
  if (IsEditing()) {
    TListItem* const item = fItems->GetEditing();
    const HWND edit = GetEditControl();
    std::wstring text(static_cast<std::size_t>(edit ? GetWindowTextLengthW(edit) : 0) + 1, L'\0');
    if (edit) text.resize(static_cast<std::size_t>(GetWindowTextW(edit, text.data(), static_cast<int>(text.size()))));
    CancelEditOf(*item);
    if (alive.IsAlive() && edit && IsRecreating()) {
      // Not the watched row's own business: it may go before its turn.
      const TAliveWatch row(item->GetAliveToken());
      fActions.push_back([this, item, row, text] {
        if (!row.IsAlive() || item->GetIndex() < 0 || !item->EditCaption()) return;
        if (const HWND next = GetEditControl()) SetWindowTextW(next, text.c_str());
      });
    }
  }
  fMirror.Reset();
  fWanted.clear();
  if (!IsRecreating()) {
    fTopNoted = false;
    fTopRow = nullptr;
  }
  fIsReady = fIsAwake = false;
  fItems->WishDetails(0, fItems->GetCount() - 1);
  TWinControl::WMDestroy(pMessage);
}

void TCustomListView::StyleChanged() {
  if (!HandleAllocated()) return;
  const auto style = static_cast<DWORD>(GetWindowLongW(AllocatedHandle(), GWL_STYLE));
  const DWORD wanted = (style & ~OwnStyles) | StyleBits();
  if (wanted == style) return;
  const TWriteScope scope(*this);
  SetWindowLongW(AllocatedHandle(), GWL_STYLE, static_cast<LONG>(wanted));
  InvalidateRect(AllocatedHandle(), nullptr, TRUE);
}

void TCustomListView::ExtendedStyleChanged() {
  if (HandleAllocated()) Query(LVM_SETEXTENDEDLISTVIEWSTYLE, 0, static_cast<LPARAM>(ExtendedStyleBits()));
}

void TCustomListView::SetViewStyle(TViewStyle pStyle) {
  if (fViewStyle == pStyle) return;
  fViewStyle = pStyle;
  CatchUp();
  StyleChanged();
  fItems->WishDetails(0, fItems->GetCount() - 1);
}

void TCustomListView::SetMultiSelect(bool pMultiSelect) {
  const TAliveWatch alive(GetAliveToken());
  fItems->SetMultiSelect(pMultiSelect);
  if (!alive.IsAlive()) return;
  CatchUp();
  StyleChanged();
}

void TCustomListView::SetReadOnly(bool pReadOnly) {
  fReadOnly = pReadOnly;
  StyleChanged();
}

void TCustomListView::SetHideSelection(bool pHide) {
  fHideSelection = pHide;
  StyleChanged();
}

void TCustomListView::SetRowSelect(bool pRowSelect) {
  fRowSelect = pRowSelect;
  ExtendedStyleChanged();
}

void TCustomListView::SetGridLines(bool pGridLines) {
  fGridLines = pGridLines;
  ExtendedStyleChanged();
}

void TCustomListView::SetFullDrag(bool pFullDrag) {
  fFullDrag = pFullDrag;
  ExtendedStyleChanged();
}

void TCustomListView::SetSubItemImages(bool pSubItemImages) {
  fSubItemImages = pSubItemImages;
  ExtendedStyleChanged();
}

void TCustomListView::SetShowColumnHeaders(bool pShow) {
  fShowColumnHeaders = pShow;
  StyleChanged();
}

// The header takes this one over only when it is made.
void TCustomListView::SetColumnClick(bool pColumnClick) {
  if (fColumnClick == pColumnClick) return;
  fColumnClick = pColumnClick;
  RecreateWnd();
}

void TCustomListView::SetBorderStyle(TBorderStyle pStyle) {
  if (fBorderStyle == pStyle) return;
  fBorderStyle = pStyle;
  RecreateWnd();
}

// --- images ----------------------------------------------------------------------------------------------------------

void TCustomListView::UseImages(int pKind, TCustomImageList* pImages) {
  TImageSlot& slot = fImages[static_cast<std::size_t>(pKind)];
  if (slot.images == pImages) return;
  if (slot.images != nullptr) slot.images->UnregisterChanges(&slot.link);
  slot.images = pImages;
  slot.key = pImages;
  if (pImages != nullptr) {
    pImages->FreeNotification(this);
    pImages->RegisterChanges(&slot.link);
  }
  PutImages(pKind);
}

void TCustomListView::PutImages(int pKind) {
  if (!HandleAllocated()) return;
  TCustomImageList* images = fImages[static_cast<std::size_t>(pKind)].images;
  if (pKind == LVSIL_STATE && images == nullptr && fCheckBoxes) {
    MakeBoxImages();
    images = fBoxImages.get();
  }
  Query(LVM_SETIMAGELIST, static_cast<WPARAM>(pKind),
        reinterpret_cast<LPARAM>(images != nullptr ? images->GetHandle() : nullptr));
  InvalidateRect(AllocatedHandle(), nullptr, FALSE);
}

void TCustomListView::SetCheckBoxes(bool pCheckBoxes) {
  if (fCheckBoxes == pCheckBoxes) return;
  fCheckBoxes = pCheckBoxes;
  PutImages(LVSIL_STATE);
}

// A box without a mark, and one with.
void TCustomListView::MakeBoxImages() {
  const int size = ScaledPixels(16);
  if (fBoxImages && fBoxImages->GetWidth() == size) return;
  auto images = std::make_unique<TImageList>();
  images->SetSize(size, size);
  for (const bool isChecked : {false, true}) {
    TBitmap bitmap(size, size);
    const HDC dc = bitmap.GetCanvas().GetHandle();
    RECT box{0, 0, size, size};
    FillRect(dc, &box, GetSysColorBrush(COLOR_WINDOW));
    InflateRect(&box, -ScaledPixels(1), -ScaledPixels(1));
    DrawFrameControl(dc, &box, DFC_BUTTON, DFCS_BUTTONCHECK | DFCS_FLAT | (isChecked ? DFCS_CHECKED : 0U));
    bitmap.MakeOpaque();
    images->Add(bitmap);
  }
  fBoxImages = std::move(images);
}

void TCustomListView::Notification(TComponent* pComponent, TOperation pOperation) {
  if (pOperation == TOperation::opRemove) {
    for (const int kind : {LVSIL_NORMAL, LVSIL_SMALL, LVSIL_STATE}) {
      TImageSlot& slot = fImages[static_cast<std::size_t>(kind)];
      if (slot.key != pComponent) continue;
      slot.images = nullptr;
      slot.key = nullptr;
      PutImages(kind);
    }
  }
  TWinControl::Notification(pComponent, pOperation);
}

void TCustomListView::CMColorChanged(TMessage& pMessage) {
  if (pMessage.Msg != 0) TWinControl::CMColorChanged(pMessage);
  if (!HandleAllocated()) return;
  const TColor color = ColorToRGB(GetColor());
  Query(LVM_SETBKCOLOR, 0, color);
  Query(LVM_SETTEXTBKCOLOR, 0, color);
  Query(LVM_SETTEXTCOLOR, 0, ColorToRGB(GetFont().GetColor()));
  InvalidateRect(AllocatedHandle(), nullptr, FALSE);
}

void TCustomListView::CMThemeChanged(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  TWinControl::CMThemeChanged(pMessage);
  if (!alive.IsAlive()) return;
  fBoxImages.reset();
  if (fCheckBoxes) PutImages(LVSIL_STATE);
  TMessage color{};
  CMColorChanged(color);
}

void TCustomListView::ChangeScale(int pM, int pD, bool pKeepPlace) {
  const TAliveWatch alive(GetAliveToken());
  TWinControl::ChangeScale(pM, pD, pKeepPlace);
  if (!alive.IsAlive() || pM == pD) return;
  fColumns->BeginUpdate();
  for (int i = 0; i < fColumns->GetCount(); ++i) {
    TListColumn& column = *fColumns->GetItem(i);
    const int width = column.GetWidth();
    column.SetMaxWidth(MulDiv(column.GetMaxWidth(), pM, pD));
    column.SetMinWidth(MulDiv(column.GetMinWidth(), pM, pD));
    column.SetWidth(MulDiv(width, pM, pD));
  }
  fColumns->EndUpdate();
  if (fCheckBoxes) PutImages(LVSIL_STATE);
}

void TCustomListView::Resize() {
  AutoSizeColumns();
  TWinControl::Resize();
}

// --- columns ---------------------------------------------------------------------------------------------------------

std::unique_ptr<TListColumn> TCustomListView::CreateListColumn(TListColumns& pColumns) {
  return std::make_unique<TListColumn>(&pColumns);
}

void TCustomListView::ColumnsChanged() noexcept {
  fColumnsDirty = true;
  WakeUp();
}

void TCustomListView::ColumnLookChanged(TListColumn&, bool) noexcept {
  fColumnLooksDirty = true;
  WakeUp();
}

void TCustomListView::ColumnLeaving(TListColumn&) noexcept {}

void TCustomListView::WriteColumns() {
  if (std::exchange(fColumnsDirty, false)) {
    while (SendMessageW(AllocatedHandle(), LVM_DELETECOLUMN, 0, 0)) {
    }
    for (int i = 0; i < fColumns->GetCount(); ++i) {
      LVCOLUMNW info{};
      info.mask = LVCF_WIDTH | LVCF_SUBITEM;
      info.iSubItem = i;
      SendMessageW(AllocatedHandle(), LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&info));
    }
    fColumnLooksDirty = true;
    fLooksDirty = true;
    const std::vector<int>& order = fColumns->GetOrder();
    WriteColumnLooks();
    SendMessageW(AllocatedHandle(), LVM_SETCOLUMNORDERARRAY, order.size(), reinterpret_cast<LPARAM>(order.data()));
    return;
  }
  if (fColumnLooksDirty) WriteColumnLooks();
}

void TCustomListView::WriteColumnLooks() {
  fColumnLooksDirty = false;
  const HWND header = reinterpret_cast<HWND>(SendMessageW(AllocatedHandle(), LVM_GETHEADER, 0, 0));
  for (int i = 0; i < fColumns->GetCount(); ++i) {
    const TListColumn& column = *fColumns->GetItem(i);
    std::wstring caption = column.GetCaption();
    LVCOLUMNW info{};
    info.mask = LVCF_TEXT | LVCF_FMT;
    info.pszText = caption.data();
    info.fmt = AlignmentBits(column.GetAlignment());
    if (column.GetImageIndex() >= 0) {
      info.mask |= LVCF_IMAGE;
      info.fmt |= LVCFMT_IMAGE;
      info.iImage = column.GetImageIndex();
    }
    const int width = column.GetVisible() ? column.GetWidth() : 0;
    if (width != static_cast<int>(SendMessageW(AllocatedHandle(), LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(i), 0))) {
      info.mask |= LVCF_WIDTH;
      info.cx = width;
    }
    SendMessageW(AllocatedHandle(), LVM_SETCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&info));
    if (header == nullptr) continue;
    HDITEMW item{};
    item.mask = HDI_FORMAT;
    SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
    const int format = (item.fmt & ~(HDF_SORTUP | HDF_SORTDOWN)) | SortBits(column.GetSortMark());
    if (format == item.fmt) continue;
    item.fmt = format;
    SendMessageW(header, HDM_SETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
  }
  InvalidateRect(AllocatedHandle(), nullptr, FALSE);
}

void TCustomListView::AutoSizeColumns() {
  if (!HandleAllocated() || fViewStyle != TViewStyle::vsReport) return;
  int taken = 0;
  int shares = 0;
  for (int i = 0; i < fColumns->GetCount(); ++i) {
    const TListColumn& column = *fColumns->GetItem(i);
    if (!column.GetVisible()) continue;
    if (column.IsAutoSize())
      ++shares;
    else
      taken += column.GetWidth();
  }
  int rest = std::max(GetClientWidth() - taken, 0);
  for (int i = 0; i < fColumns->GetCount() && shares > 0; ++i) {
    TListColumn& column = *fColumns->GetItem(i);
    if (!column.GetVisible() || !column.IsAutoSize()) continue;
    column.SetWidth(rest / shares--);
    rest = std::max(rest - column.GetWidth(), 0);
  }
}

HWND TCustomListView::GetHeaderHandle() {
  return reinterpret_cast<HWND>(Send(LVM_GETHEADER));
}

int TCustomListView::GetHeaderHeight() {
  const HWND header = fViewStyle == TViewStyle::vsReport && fShowColumnHeaders ? GetHeaderHandle() : nullptr;
  RECT rect{};
  if (header != nullptr) GetWindowRect(header, &rect);
  return rect.bottom - rect.top;
}

} // namespace kiv
