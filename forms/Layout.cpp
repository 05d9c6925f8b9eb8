#include <forms/Layout.h>

#include <algorithm>
#include <vector>

namespace kiv {

namespace {

// The place in the order of its edge: less is nearer to it.
int Distance(const TLayoutItem& item) noexcept {
  switch (item.align) {
  case TAlign::alTop:
    return item.box.top;
  case TAlign::alBottom:
    return -item.box.Bottom();
  case TAlign::alLeft:
    return item.box.left;
  case TAlign::alRight:
    return -item.box.Right();
  default:
    return 0;
  }
}

void PlaceBox(TLayoutBox& area, TLayoutItem& item) noexcept {
  const bool isAcross = item.align == TAlign::alTop || item.align == TAlign::alBottom;
  const TMargins& free = item.margins;
  const int freeAcross = free.left + free.right;
  const int freeDown = free.top + free.bottom;
  int width = isAcross || item.align == TAlign::alClient ? area.width - freeAcross : item.box.width;
  int height = isAcross ? item.box.height : area.height - freeDown;
  item.constraints.Apply(width, height);
  TLayoutBox box{area.left + free.left, area.top + free.top, width, height};
  if (item.align == TAlign::alRight) box.left = area.Right() - free.right - width;
  if (item.align == TAlign::alBottom) box.top = area.Bottom() - free.bottom - height;
  item.box = box;
  if (item.align == TAlign::alClient) return;
  // What is wider than the area still leaves an area, of nothing.
  if (isAcross) {
    height = std::min(height + freeDown, area.height);
    if (item.align == TAlign::alTop) area.top += height;
    area.height -= height;
  } else {
    width = std::min(width + freeAcross, area.width);
    if (item.align == TAlign::alLeft) area.left += width;
    area.width -= width;
  }
}

void AnchorSpan(int& start, int& size, bool atStart, bool atEnd, int grown) noexcept {
  if (atStart && atEnd) {
    size = std::max(0, size + grown);
  } else if (atEnd) {
    start += grown;
  } else if (!atStart) {
    start += grown / 2;
  }
}

} // namespace

void TSizeConstraints::Apply(int& pWidth, int& pHeight) const noexcept {
  if (maxWidth > 0) pWidth = std::min(pWidth, maxWidth);
  if (maxHeight > 0) pHeight = std::min(pHeight, maxHeight);
  pWidth = std::max({pWidth, minWidth, 0});
  pHeight = std::max({pHeight, minHeight, 0});
}

void AlignBoxes(TLayoutBox& pArea, std::span<TLayoutItem> pItems) {
  std::vector<TLayoutItem*> row;
  for (const TAlign align : {TAlign::alTop, TAlign::alBottom, TAlign::alLeft, TAlign::alRight, TAlign::alClient}) {
    row.clear();
    for (TLayoutItem& item : pItems) {
      if (item.align == align) row.push_back(&item);
    }
    std::stable_sort(row.begin(), row.end(),
                     [](const TLayoutItem* a, const TLayoutItem* b) { return Distance(*a) < Distance(*b); });
    for (TLayoutItem* item : row) PlaceBox(pArea, *item);
  }
}

TLayoutBox AnchorBox(const TAnchorBase& pBase, TAnchors pAnchors, int pParentWidth, int pParentHeight) noexcept {
  TLayoutBox box = pBase.box;
  AnchorSpan(box.left, box.width, pAnchors.Contains(TAnchorKind::akLeft), pAnchors.Contains(TAnchorKind::akRight),
             pParentWidth - pBase.parentWidth);
  AnchorSpan(box.top, box.height, pAnchors.Contains(TAnchorKind::akTop), pAnchors.Contains(TAnchorKind::akBottom),
             pParentHeight - pBase.parentHeight);
  return box;
}

} // namespace kiv
