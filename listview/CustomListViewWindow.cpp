#include <listview/CustomListView.h>
#include <listview/ListAccessible.h>
#include <listview/NativeScope.h>

#include <framework/Application.h>
#include <graphics/StyleServices.h>
#include <platform/DpiAwareness.h>

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
  ApplyHeaderMode();
  fRowsDirty = fStateDirty = fColumnsDirty = fIsReady = true;
  WakeUp();
}

// The platform's list view goes on to notify the window that it was made in.
void TCustomListView::FollowParentWindow(HWND pParent) {
  TWinControl::FollowParentWindow(pParent);
  PostAction([this] {
    if (HandleAllocated()) RecreateWnd();
  });
}

void TCustomListView::WMDestroy(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  // The place is taken over by the next window.
  if (IsRecreating()) NoteTop();
  if (IsEditing()) {
    TListItem* const item = fItems->GetEditing();
    if (IsRecreating()) {
      ReopenEdit(*item);
      fItems->SetEditing(nullptr); // first: nobody is to hear of it
      Query(LVM_CANCELEDITLABEL);
    } else {
      CancelEditOf(*item);
    }
    if (!alive.IsAlive()) return;
  }
  fMirror.Reset();
  fWanted.clear();
  fWantedImages.clear();
  fHotBox = nullptr;
  if (!IsRecreating()) {
    fTopNoted = false;
    fTopRow = nullptr;
  }
  fIsReady = fIsAwake = false;
  fItems->WishDetails(0, fItems->GetCount() - 1);
  TWinControl::WMDestroy(pMessage);
}

void TCustomListView::WMGetObject(TMessage& pMessage) {
  if (static_cast<LONG>(pMessage.LParam) == static_cast<LONG>(OBJID_CLIENT)) {
    if (const ComPtr<IAccessible> object = MakeListAccessible(*this)) {
      pMessage.Result = AnswerWithObject(pMessage.WParam, *object.Get());
      return;
    }
  }
  TWinControl::WMGetObject(pMessage);
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
  CatchUp();
  fTopRow = nullptr; // where a row stood that couldn't be brought back yet says nothing in another view
  fViewStyle = pStyle;
  // Some platforms give a header that isn't seen no new font.
  const HWND header = pStyle == TViewStyle::vsReport ? reinterpret_cast<HWND>(Query(LVM_GETHEADER)) : nullptr;
  if (header != nullptr) SendMessageW(header, WM_SETFONT, static_cast<WPARAM>(Query(WM_GETFONT)), FALSE);
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
  if (pKind == LVSIL_NORMAL) PutIconSpacing();
  InvalidateRect(AllocatedHandle(), nullptr, FALSE);
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
  if (pMessage.Msg != 0) {
    TWinControl::CMColorChanged(pMessage);
    BoxesChanged();
  }
  if (!HandleAllocated()) return;
  const TStyleServices& style = StyleServices();
  const auto color = static_cast<LPARAM>(style.GetSystemColor(GetColor()));
  Query(LVM_SETBKCOLOR, 0, color);
  Query(LVM_SETTEXTBKCOLOR, 0, color);
  Query(LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(style.GetSystemColor(GetFont().GetColor())));
  InvalidateRect(AllocatedHandle(), nullptr, FALSE);
}

void TCustomListView::CMThemeChanged(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  TWinControl::CMThemeChanged(pMessage);
  if (!alive.IsAlive()) return;
  BoxesChanged();
  TMessage color{};
  CMColorChanged(color);
  ApplyHeaderMode();
}

// The platform spaces icons for the system's dots per inch.
void TCustomListView::PutIconSpacing() {
  const int dpi = GetCurrentPPI();
  if (!HandleAllocated() || (dpi == GetSystemDpi() && !fIsSpacingScaled)) return;
  fIsSpacingScaled = true;
  const TCustomImageList* const images = GetLargeImages();
  const int width = images ? images->GetWidth() : GetSystemMetric(SM_CXICON, dpi);
  const int height = images ? images->GetHeight() : GetSystemMetric(SM_CYICON, dpi);
  Query(LVM_SETICONSPACING, 0,
        MAKELPARAM(width + GetSystemMetric(SM_CXICONSPACING, dpi) - GetSystemMetric(SM_CXICON, dpi),
                   height + GetSystemMetric(SM_CYICONSPACING, dpi) - GetSystemMetric(SM_CYICON, dpi)));
}

// The header's theme for lists is dark where it may be; its text isn't, see DrawHeader.
void TCustomListView::ApplyHeaderMode() {
  if (!HandleAllocated()) return;
  const HWND header = reinterpret_cast<HWND>(Query(LVM_GETHEADER));
  const TStyleServices& style = StyleServices();
  if (header == nullptr || (!style.IsDarkModeActive() && !fIsHeaderDark)) return;
  fIsHeaderDark = style.IsDarkModeActive();
  style.ApplyDarkMode(header, false);
  SetWindowTheme(header, fIsHeaderDark ? L"ItemsView" : nullptr, nullptr);
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
  PutIconSpacing();
  BoxesChanged();
}

// Of the client area: a scroll bar that comes takes of it, too.
void TCustomListView::WMSize(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  TWinControl::WMSize(pMessage);
  if (alive.IsAlive()) AutoSizeColumns();
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

void TCustomListView::RequireColumnImage(int pIndex) noexcept {
  if (GetSmallImages() == nullptr) return;
  try {
    GetSmallImages()->Require(pIndex);
  } catch (...) {
    ReportException(std::current_exception());
  }
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
      RequireColumnImage(column.GetImageIndex());
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
