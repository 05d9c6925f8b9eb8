#include <folder_view/FolderView.h>

#include <folder_view/CheckImages.h>

#include <framework/Application.h>
#include <graphics/StyleServices.h>
#include <platform/TakeResult.h>
#include <viewstate/SystemImageList.h>

#include <cstring>
#include <utility>

// What the control is to its surroundings: look, link, keys.

namespace kiv::sample {

TFolderView::TFolderView(TComponent* pOwner) : TCustomListView(pOwner) {
  SetViewStyle(TViewStyle::vsReport);
  SetMultiSelect(true);
  SetRowSelect(true);
  SetFullDrag(true);
  SetHideSelection(false);
  SetTabStop(true);
  AddColumn(L"Name", 280, TColumnAlignment::taLeftJustify);
  AddColumn(L"Size", 90, TColumnAlignment::taRightJustify);
  AddColumn(L"Type", 150, TColumnAlignment::taLeftJustify);
  AddColumn(L"Date modified", 150, TColumnAlignment::taLeftJustify);
  ShowSortMarks();
  fChangeTimer.SetEnabled(false);
  fChangeTimer.SetInterval(100);
  fChangeTimer.SetOnTimer([this](TPersistent*) { RunChanges(); });
}

TFolderView::~TFolderView() {
  SetShellLink(nullptr);
  Leave();
  fTyped.Reset();
  fActions.Reset();
  EndListView();
}

void TFolderView::AddColumn(const wchar_t* pCaption, int pWidth, TColumnAlignment pAlignment) {
  TListColumn* const column = GetColumns().Add();
  column->SetCaption(pCaption);
  column->SetWidth(ScaledPixels(pWidth));
  column->SetMinWidth(ScaledPixels(40));
  column->SetAlignment(pAlignment);
}

void TFolderView::CreateWnd() {
  TCustomListView::CreateWnd();
  PutImageLists();
}

void TFolderView::ChangeScale(int pM, int pD, bool pKeepPlace) {
  TCustomListView::ChangeScale(pM, pD, pKeepPlace);
  if (HandleAllocated()) PutImageLists();
}

// The boxes have the theme's look on the list's colour.
void TFolderView::CMThemeChanged(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  TCustomListView::CMThemeChanged(pMessage);
  if (alive.IsAlive() && HandleAllocated()) PutBoxes();
}

void TFolderView::PutImageLists() {
  // The platform's own list where its size is right: it needs no scaling.
  const int width = ScaledPixels(16);
  const bool fits = TKivImageListSizeHelper::GetSize(TKivImageListSize::si_Small) == width;
  SetSmallImages(fits ? TKivSystemImageList::GetInstance(TKivImageListSize::si_Small)
                      : TKivSystemImageList::GetInstance(width));
  if (!fBoxes || fBoxes->GetWidth() != width) PutBoxes();
}

void TFolderView::PutBoxes() {
  auto boxes = MakeCheckImages(ScaledPixels(16), GetCurrentPPI());
  SetStateImages(boxes.get());
  fBoxes = std::move(boxes);
}

// --- texts -----------------------------------------------------------------------------------------------------------

std::wstring TFolderView::GetCellText(const TListItem& pItem, int pColumn) const {
  return static_cast<const TFolderRow&>(pItem).Text(static_cast<TFolderColumn>(pColumn));
}

bool TFolderView::IsCustomDrawn(TCustomDrawTarget pTarget, TCustomDrawStage pStage) {
  const bool message = pTarget == TCustomDrawTarget::dtControl && pStage == TCustomDrawStage::cdPostPaint;
  return message || TCustomListView::IsCustomDrawn(pTarget, pStage);
}

bool TFolderView::CustomDraw(const RECT& pRect, TCustomDrawStage pStage) {
  if (pStage == TCustomDrawStage::cdPostPaint && GetItems().GetCount() == 0 && !fMessage.empty()) {
    RECT rect = GetClientRect();
    InflateRect(&rect, -ScaledPixels(24), 0);
    rect.top += GetHeaderHeight() + ScaledPixels(24);
    TCanvas& canvas = GetCanvas();
    canvas.GetFont().Assign(&GetFont());
    canvas.GetFont().SetColor(StyleServices().GetSystemColor(clGrayText));
    canvas.GetBrush().SetStyle(TBrushStyle::bsClear);
    canvas.TextRect(rect, fEntries.empty() ? fMessage : L"Nothing here passes the filter.",
                    DT_CENTER | DT_WORDBREAK | DT_NOPREFIX);
  }
  return TCustomListView::CustomDraw(pRect, pStage);
}

// --- the link --------------------------------------------------------------------------------------------------------

HRESULT TFolderView::QueryInterface(REFIID pIid, void** pObject) {
  if (!pObject) return E_POINTER;
  *pObject = nullptr;
  if (pIid == IidOf<IKivSupportsFilter>()) {
    *pObject = static_cast<IKivSupportsFilter*>(this);
  } else if (pIid == IidOf<IKivShellControl>() || pIid == IidOf<IUnknown>()) {
    *pObject = static_cast<IKivShellControl*>(this);
  }
  return *pObject ? S_OK : E_NOINTERFACE;
}

void TFolderView::SetShellLink(TKivShellLink* pShellLink) {
  if (fLink == pShellLink) return;
  if (fLink) fLink->UnregisterShellControl(this);
  fLink = pShellLink;
  SetCheckBoxes(fLink != nullptr);
  if (!fLink) return;
  fLink->RegisterShellControl(this);
  if (fLink->GetCurrentFolder()) PathChanged(fLink->GetCurrentFolder().Get());
}

void TFolderView::PathChanged(IItemIdList* pFolder) {
  if (pFolder) Show(pFolder);
}

void TFolderView::FileChanged(IItemIdList*, IItemIdList* pFile) {
  const auto* const file = pFile ? pFile->WindowsPointer() : nullptr;
  if (!file || IsEditing()) return;
  for (int i = 0; i < GetItems().GetCount(); ++i) {
    TFolderRow* const row = GetRow(i);
    const auto* const item = row->Entry()->item->WindowsPointer();
    if (item->mkid.cb != file->mkid.cb || std::memcmp(item, file, file->mkid.cb) != 0) continue;
    const TAliveWatch alive(GetAliveToken());
    const bool told = std::exchange(fTold, true);
    SelectOnly(row);
    if (alive.IsAlive()) fTold = told;
    return;
  }
}

void TFolderView::Change(TListItem* pItem, TItemChange pChange) {
  const TAliveWatch alive(GetAliveToken());
  TCustomListView::Change(pItem, pChange);
  if (!alive.IsAlive()) return;
  if (fLink && !fTold && fFolder.list) {
    const auto* const row = GetSelCount() == 1 ? static_cast<TFolderRow*>(GetSelected()) : nullptr;
    fLink->FileChanged(this, fFolder.list.Get(), row ? row->Entry()->item.Get() : nullptr);
  }
  if (alive.IsAlive()) StatusChanged();
}

void TFolderView::Refresh(TRefreshLevel pLevel, IItemIdList*) {
  if (pLevel == TRefreshLevel::rfCheckboxes) {
    for (int i = 0; i < GetItems().GetCount(); ++i) GetRow(i)->SetStateKnown(false);
    if (GetItems().GetCount() > 0) UpdateItems(0, GetItems().GetCount() - 1);
  } else {
    Reload();
  }
}

bool TFolderView::GoUp() {
  // A list that isn't resolved would have to be found out about first.
  if (!fFolder.list || !fFolder.list->IsResolved() || fFolder.list->IsInvalid()) return false;
  if (fFolder.list->IsSpecialFolder(SF_DESKTOP) || fFolder.list->Depth() == 0) return false;
  const std::wstring name = fFolder.diskPath.substr(fFolder.diskPath.find_last_of(L'\\') + 1);
  const ComPtr<IItemIdList> parent = fFolder.list->GetParent();
  const TAliveWatch alive(GetAliveToken());
  GoTo(parent);
  if (alive.IsAlive() && fFolder.list == parent) SetAwaited(name, false);
  return true;
}

void TFolderView::FilterChanged(const std::wstring& pFilter) {
  if (pFilter == fFilterText) return;
  fFilterText = pFilter;
  const bool has_wildcards = pFilter.find_first_of(L"*?;") != std::wstring::npos;
  fFilter.SetText(pFilter.empty() || has_wildcards ? pFilter : L"*" + pFilter + L"*");
  ShowRows();
}

void TFolderView::SetFilter(const std::wstring& pFilter) {
  if (pFilter == fFilterText) return;
  FilterChanged(pFilter);
  if (fLink) fLink->FilterChanged(this, pFilter);
}

void TFolderView::StatusChanged() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnStatus, this));
}

void TFolderView::Fail(const std::wstring& pText) {
  static_cast<void>(FireEvent(GetAliveToken(), fOnFailure, this, pText));
}

// --- check boxes -----------------------------------------------------------------------------------------------------

void TFolderView::DoItemChecked(TListItem* pItem) {
  TKivSelectionList* const selection = Selection();
  const auto& row = static_cast<const TFolderRow&>(*pItem);
  const std::wstring path = PathOf(*row.Entry());
  if (!selection || path.empty() || row.GetState() == ssDisabled) return;
  if (row.GetState() == ssChecked) {
    selection->RemovePathFromSelection(path);
  } else {
    selection->AddPathToSelection(path);
  }
}

void TFolderView::ToggleSelected() {
  TKivSelectionList* const selection = Selection();
  TFolderRow* const focused = FocusedRow();
  if (!selection || !focused) return;
  if (!focused->GetSelected()) {
    DoItemChecked(focused);
    return;
  }
  const bool add = focused->GetState() != ssChecked;
  std::vector<std::wstring> paths;
  for (int i = 0; i < GetItems().GetCount(); ++i) {
    const TFolderRow* const row = GetRow(i);
    if (row->GetSelected() && !row->IsLeaving()) paths.push_back(PathOf(*row->Entry()));
  }
  std::erase(paths, std::wstring()); // what has no box
  const TAliveWatch alive(GetAliveToken());
  selection->BeginUpdate();
  if (add) {
    selection->AddPaths(std::move(paths)); // which asks once whether their folder is complete
  } else {
    selection->RemovePaths(std::move(paths));
  }
  selection->EndUpdate();
  if (alive.IsAlive() && fLink) fLink->Refresh(TRefreshLevel::rfCheckboxes);
}

// --- keys and mouse --------------------------------------------------------------------------------------------------

void TFolderView::KeyDown(WORD& pKey, TShiftState pShift) {
  const TAliveWatch alive(GetAliveToken());
  TCustomListView::KeyDown(pKey, pShift);
  if (!alive.IsAlive() || pShift.Contains(TShiftStateFlag::ssAlt)) return;
  const WORD key = pKey;
  pKey = 0;
  if (!DoKey(key, pShift.Contains(TShiftStateFlag::ssCtrl))) pKey = key;
}

// The view may be gone behind any of these.
bool TFolderView::DoKey(WORD pKey, bool pCtrl) {
  switch (pKey) {
  case VK_RETURN:
    if (!pCtrl) OpenFocused();
    return !pCtrl;
  case VK_BACK:
    return !pCtrl && GoUp();
  case VK_F2:
    RenameFocused();
    return true;
  case VK_F5:
    Reload();
    return true;
  case VK_DELETE:
    if (!pCtrl) DeleteSelectedObjects();
    return !pCtrl;
  case L'A':
    if (pCtrl) SelectAll();
    return pCtrl;
  case VK_SPACE:
    if (pCtrl || !fLink) return false;
    ToggleSelected();
    return true;
  default:
    return false;
  }
}

// With boxes the space bar is for these, and not for the platform's search, which would change the selection.
void TFolderView::KeyPress(wchar_t& pKey) {
  TCustomListView::KeyPress(pKey);
  if (pKey == L' ' && fLink) pKey = 0;
}

void TFolderView::KeyUp(WORD& pKey, TShiftState pShift) {
  if (pKey == VK_SPACE && fLink) {
    TWinControl::KeyUp(pKey, pShift); // the base class would toggle the box of one row
  } else {
    TCustomListView::KeyUp(pKey, pShift);
  }
}

void TFolderView::DblClick() {
  const TAliveWatch alive(GetAliveToken());
  TCustomListView::DblClick();
  if (!alive.IsAlive()) return;
  POINT point;
  GetCursorPos(&point);
  point = ScreenToClient(point);
  const THitTests hits = GetHitTestInfoAt(point.x, point.y);
  if (!hits.Contains(THitTest::htOnItem) || hits.Contains(THitTest::htOnStateIcon)) return;
  PostAction([this] { OpenFocused(); }); // the rows go
}

} // namespace kiv::sample
