#include <listview/CustomListView.h>

#include <framework/Application.h>
#include <graphics/StyleServices.h>

#include <exception>

// Custom draw: what derived classes and applications paint themselves, or paint differently.

namespace kiv {

namespace {

TCustomDrawState StateOf(UINT bits, bool isSelected) noexcept {
  using enum TCustomDrawStateFlag;
  TCustomDrawState state;
  // The platform says "selected" of rows that aren't, where the selection always shows.
  state.Put(cdsSelected, isSelected);
  state.Put(cdsGrayed, (bits & CDIS_GRAYED) != 0);
  state.Put(cdsDisabled, (bits & CDIS_DISABLED) != 0);
  state.Put(cdsChecked, (bits & CDIS_CHECKED) != 0);
  state.Put(cdsFocused, (bits & CDIS_FOCUS) != 0);
  state.Put(cdsDefault, (bits & CDIS_DEFAULT) != 0);
  state.Put(cdsHot, (bits & CDIS_HOT) != 0);
  return state;
}

} // namespace

bool TCustomListView::IsCustomDrawn(TCustomDrawTarget pTarget, TCustomDrawStage) {
  if (pTarget == TCustomDrawTarget::dtItem) return static_cast<bool>(fOnAdvancedCustomDrawItem);
  return pTarget == TCustomDrawTarget::dtSubItem && fOnAdvancedCustomDrawSubItem;
}

bool TCustomListView::CustomDraw(const RECT&, TCustomDrawStage) {
  return true;
}

bool TCustomListView::CustomDrawItem(TListItem* pItem, TCustomDrawState pState, TCustomDrawStage pStage) {
  bool byDefault = true;
  static_cast<void>(FireEvent(GetAliveToken(), fOnAdvancedCustomDrawItem, this, pItem, pState, pStage, byDefault));
  return byDefault;
}

bool TCustomListView::CustomDrawSubItem(TListItem* pItem, int pSubItem, TCustomDrawState pState,
                                        TCustomDrawStage pStage) {
  bool byDefault = true;
  static_cast<void>(
      FireEvent(GetAliveToken(), fOnAdvancedCustomDrawSubItem, this, pItem, pSubItem, pState, pStage, byDefault));
  return byDefault;
}

// Which stages the platform is to ask for next.
LRESULT TCustomListView::NextStages(TCustomDrawTarget pTarget) {
  using enum TCustomDrawTarget;
  using enum TCustomDrawStage;
  LRESULT next = CDRF_DODEFAULT;
  if (IsCustomDrawn(pTarget, cdPostPaint)) next |= CDRF_NOTIFYPOSTPAINT;
  const bool hasSubItems = IsCustomDrawn(dtSubItem, cdPrePaint) || IsCustomDrawn(dtSubItem, cdPostPaint);
  if (pTarget == dtControl) {
    const bool hasItems = IsCustomDrawn(dtItem, cdPrePaint) || IsCustomDrawn(dtItem, cdPostPaint);
    if (hasItems || hasSubItems) next |= CDRF_NOTIFYITEMDRAW;
  } else if (pTarget == dtItem && hasSubItems && fViewStyle == TViewStyle::vsReport) {
    next |= CDRF_NOTIFYSUBITEMDRAW;
  }
  return next;
}

LRESULT TCustomListView::HandleCustomDraw(NMLVCUSTOMDRAW& pDraw) {
  using enum TCustomDrawTarget;
  using enum TCustomDrawStage;
  switch (pDraw.nmcd.dwDrawStage) {
  case CDDS_PREPAINT:
    return DrawStage(pDraw, dtControl, cdPrePaint);
  case CDDS_POSTPAINT:
    return DrawStage(pDraw, dtControl, cdPostPaint);
  case CDDS_ITEMPREPAINT:
    return DrawStage(pDraw, dtItem, cdPrePaint);
  case CDDS_ITEMPOSTPAINT:
    return DrawStage(pDraw, dtItem, cdPostPaint);
  case CDDS_ITEMPREPAINT | CDDS_SUBITEM:
    return DrawStage(pDraw, dtSubItem, cdPrePaint);
  case CDDS_ITEMPOSTPAINT | CDDS_SUBITEM:
    return DrawStage(pDraw, dtSubItem, cdPostPaint);
  default:
    return CDRF_DODEFAULT;
  }
}

LRESULT TCustomListView::DrawStage(NMLVCUSTOMDRAW& pDraw, TCustomDrawTarget pTarget, TCustomDrawStage pStage) {
  const TAliveWatch alive(GetAliveToken());
  const bool isBefore = pStage == TCustomDrawStage::cdPrePaint;
  if (isBefore && pTarget == TCustomDrawTarget::dtItem) {
    fRowText = pDraw.clrText;
    fRowBack = pDraw.clrTextBk;
  } else if (isBefore && pTarget == TCustomDrawTarget::dtSubItem) {
    // Platforms leave what one cell was given to the next.
    pDraw.clrText = fRowText;
    pDraw.clrTextBk = fRowBack;
  }
  if (!IsCustomDrawn(pTarget, pStage)) return isBefore ? NextStages(pTarget) : CDRF_DODEFAULT;
  const int index = static_cast<int>(pDraw.nmcd.dwItemSpec);
  // Its numbers are those of rows that it knew when it began to paint.
  TListItem* const item = pTarget != TCustomDrawTarget::dtControl && !fRowsDirty ? RowAt(index) : nullptr;
  if (pTarget != TCustomDrawTarget::dtControl && item == nullptr) return CDRF_DODEFAULT;
  fCanvas.SetHandle(pDraw.nmcd.hdc);
  fCanvas.GetFont() = GetFont();
  fCanvas.GetBrush().SetColor(GetColor());
  bool byDefault = true;
  try {
    if (item == nullptr) {
      RECT client = GetClientRect();
      byDefault = CustomDraw(client, pStage);
    } else {
      const TCustomDrawState state = StateOf(pDraw.nmcd.uItemState, item->GetSelected());
      byDefault = pTarget == TCustomDrawTarget::dtItem ? CustomDrawItem(item, state, pStage)
                                                       : CustomDrawSubItem(item, pDraw.iSubItem, state, pStage);
    }
  } catch (...) {
    ReportException(std::current_exception());
  }
  if (!alive.IsAlive()) return CDRF_SKIPDEFAULT;
  fCanvas.SetHandle(nullptr);
  if (!isBefore) return CDRF_DODEFAULT;
  if (!byDefault) return CDRF_SKIPDEFAULT;
  return item == nullptr ? NextStages(pTarget) : TakeDrawnLook(pDraw, pTarget);
}

// What a handler has left in the canvas is taken for what the platform draws.
LRESULT TCustomListView::TakeDrawnLook(NMLVCUSTOMDRAW& pDraw, TCustomDrawTarget pTarget) {
  const LRESULT result = NextStages(pTarget);
  const TFont& font = fCanvas.GetFont();
  if (font.GetColor() != GetFont().GetColor()) {
    pDraw.clrText = static_cast<COLORREF>(StyleServices().GetSystemColor(font.GetColor()));
  }
  if (fCanvas.GetBrush().GetColor() != GetColor()) {
    pDraw.clrTextBk = static_cast<COLORREF>(StyleServices().GetSystemColor(fCanvas.GetBrush().GetColor()));
  }
  if (pTarget == TCustomDrawTarget::dtItem) {
    fRowText = pDraw.clrText;
    fRowBack = pDraw.clrTextBk;
  }
  if (font == GetFont()) return result;
  fDrawFont = font.GetSharedHandle();
  SelectObject(pDraw.nmcd.hdc, fDrawFont->Get());
  return result | CDRF_NEWFONT;
}

LRESULT TCustomListView::DrawHeader(const NMCUSTOMDRAW& pDraw) const {
  if (pDraw.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
  if (pDraw.dwDrawStage == CDDS_ITEMPREPAINT) {
    SetTextColor(pDraw.hdc, static_cast<COLORREF>(StyleServices().GetSystemColor(clWindowText)));
  }
  return CDRF_DODEFAULT;
}

} // namespace kiv
