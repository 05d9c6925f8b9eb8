#include <forms/Control.h>

#include <forms/WinControl.h>
#include <framework/Exceptions.h>
#include <framework/ScaledPixels.h>

#include <algorithm>

namespace kiv {

void TControl::SetBoundsRect(const RECT& pRect) {
  SetBounds(pRect.left, pRect.top, pRect.right - pRect.left, pRect.bottom - pRect.top);
}

void TControl::SetBounds(int pLeft, int pTop, int pWidth, int pHeight) {
  TLayoutBox box{pLeft, pTop, pWidth, pHeight};
  fConstraints.Apply(box.width, box.height);
  if (box == fBox) return;
  Invalidate(); // where it was
  StoreBounds(box);
}

void TControl::StoreBounds(const TLayoutBox& pBox) {
  if (pBox == fBox) return;
  const bool isOtherSize = pBox.width != fBox.width || pBox.height != fBox.height;
  fBox = pBox;
  const bool isPlacedByParent = fParent && fParent->fAligning;
  if (!isPlacedByParent) UpdateAnchorBase();
  const TAliveWatch alive(GetAliveToken());
  Invalidate();
  if (!isPlacedByParent) RequestAlign();
  if (alive.IsAlive() && isOtherSize) Resize();
}

RECT TControl::GetClientRect() const {
  return {0, 0, fBox.width, fBox.height};
}

int TControl::GetClientWidth() const {
  return GetClientRect().right;
}

int TControl::GetClientHeight() const {
  return GetClientRect().bottom;
}

void TControl::SetClientSize(int pWidth, int pHeight) {
  const RECT client = GetClientRect();
  SetBounds(fBox.left, fBox.top, fBox.width + pWidth - client.right, fBox.height + pHeight - client.bottom);
}

void TControl::SetAlign(TAlign pAlign) {
  if (fAlign == pAlign) return;
  fAlign = pAlign;
  UpdateAnchorBase();
  RequestAlign();
}

void TControl::SetAnchors(TAnchors pAnchors) {
  fAnchors = pAnchors;
  UpdateAnchorBase();
}

void TControl::SetMargins(const TMargins& pMargins) {
  if (fMargins == pMargins) return;
  fMargins = pMargins;
  if (fAlignWithMargins) RequestAlign();
}

void TControl::SetAlignWithMargins(bool pAlignWithMargins) {
  if (fAlignWithMargins == pAlignWithMargins) return;
  fAlignWithMargins = pAlignWithMargins;
  RequestAlign();
}

void TControl::SetConstraints(const TSizeConstraints& pConstraints) {
  fConstraints = pConstraints;
  SetBounds(fBox.left, fBox.top, fBox.width, fBox.height);
}

void TControl::UpdateAnchorBase() {
  fAnchorBase.box = fBox;
  if (!fParent) return;
  const RECT client = fParent->GetClientRect();
  fAnchorBase.parentWidth = client.right;
  fAnchorBase.parentHeight = client.bottom;
}

void TControl::RequestAlign() {
  if (fParent && !IsLoading()) fParent->AlignControls(this);
}

void TControl::SetZOrder(bool pTopMost) {
  if (!fParent) return;
  auto& siblings = fParent->fControls;
  siblings.erase(std::find(siblings.begin(), siblings.end(), this));
  siblings.insert(pTopMost ? siblings.end() : siblings.begin(), this);
  Invalidate();
}

POINT TControl::ClientToScreen(POINT pPoint) const {
  if (!fParent) throw EInvalidOperation(L"A control without a parent has no place on the screen");
  return fParent->ClientToScreen({pPoint.x + fBox.left, pPoint.y + fBox.top});
}

POINT TControl::ScreenToClient(POINT pPoint) const {
  if (!fParent) throw EInvalidOperation(L"A control without a parent has no place on the screen");
  const POINT point = fParent->ScreenToClient(pPoint);
  return {point.x - fBox.left, point.y - fBox.top};
}

void TControl::Resize() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnResize, this));
}

// --- scaling --------------------------------------------------------------------------------------------------------

int TControl::ScaledPixels(int pPixels) const noexcept {
  return kiv::ScaledPixels(pPixels, fCurrentPPI);
}

void TControl::ScaleForPPI(int pNewPPI) {
  if (pNewPPI <= 0 || pNewPPI == fCurrentPPI) return;
  const int old = fCurrentPPI;
  fCurrentPPI = pNewPPI;
  const bool isRoot = !fParent;
  ChangeScale(pNewPPI, old, isRoot);
}

void TControl::ChangeScale(int pM, int pD, bool pKeepPlace) {
  const TAliveWatch alive(GetAliveToken());
  const auto scale = [&](int value) { return MulDivRounded(value, pM, pD); };
  fConstraints = {scale(fConstraints.minWidth), scale(fConstraints.minHeight), scale(fConstraints.maxWidth),
                  scale(fConstraints.maxHeight)};
  fMargins = {scale(fMargins.left), scale(fMargins.top), scale(fMargins.right), scale(fMargins.bottom)};
  // The right edge is scaled, not the width: neighbours stay neighbours.
  const auto scaleBox = [&](const TLayoutBox& box) {
    const int left = scale(box.left);
    const int top = scale(box.top);
    return TLayoutBox{left, top, scale(box.Right()) - left, scale(box.Bottom()) - top};
  };
  if (!pKeepPlace) {
    // The parent may have its new size already, or get it later: what counts is where the control was put.
    const TAnchorBase base{scaleBox(fAnchorBase.box), scale(fAnchorBase.parentWidth), scale(fAnchorBase.parentHeight)};
    const TLayoutBox box = scaleBox(fBox);
    SetBounds(box.left, box.top, box.width, box.height);
    if (!alive.IsAlive()) return;
    fAnchorBase = base;
  }
  const bool followed = fFollowsParent;
  fFollowsParent = true; // the same font in another size: the tie to the parent stays
  fFont.ScaleForDpi(fCurrentPPI);
  if (alive.IsAlive()) fFollowsParent = followed;
}

} // namespace kiv
