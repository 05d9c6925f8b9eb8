#include <forms/ExtControls.h>

#include <forms/Cursors.h>
#include <framework/ScaledPixels.h>
#include <graphics/StyleServices.h>

#include <algorithm>

namespace kiv {

// --- TCustomPanel ---------------------------------------------------------------------------------------------------

TCustomPanel::TCustomPanel(TComponent* pOwner) : TCustomControl(pOwner) {
  IncludeStyle(TControlStyleFlag::csAcceptsControls);
  TCustomControl::SetBounds(0, 0, ScaledPixels(185), ScaledPixels(41));
}

TCustomPanel::~TCustomPanel() {
  EndWindow();
}

TPanel::~TPanel() {
  EndWindow();
}

void TCustomPanel::CreateParams(TCreateParams& pParams) {
  TCustomControl::CreateParams(pParams);
  if (fBorderStyle == TBorderStyle::bsSingle) pParams.exStyle |= WS_EX_CLIENTEDGE;
}

void TCustomPanel::SetAlignment(TAlignment pAlignment) {
  fAlignment = pAlignment;
  Invalidate();
}

void TCustomPanel::SetBevelOuter(TBevelCut pBevel) {
  fBevelOuter = pBevel;
  Realign();
  Invalidate();
}

void TCustomPanel::SetBorderWidth(int pWidth) {
  fBorderWidth = std::max(0, pWidth);
  Realign();
  Invalidate();
}

void TCustomPanel::SetBorderStyle(TBorderStyle pStyle) {
  if (fBorderStyle == pStyle) return;
  fBorderStyle = pStyle;
  RecreateWnd();
}

void TCustomPanel::SetShowCaption(bool pShowCaption) {
  fShowCaption = pShowCaption;
  Invalidate();
}

void TCustomPanel::AdjustClientRect(RECT& pRect) const {
  const int edge = ScaledPixels(fBorderWidth) + (fBevelOuter == TBevelCut::bvNone ? 0 : 1);
  InflateRect(&pRect, -edge, -edge);
}

void TCustomPanel::Paint() {
  RECT rect = GetClientRect();
  TCanvas& canvas = GetCanvas();
  if (fBevelOuter != TBevelCut::bvNone && StyleServices().IsDarkModeActive()) {
    // The platform's edges are light.
    canvas.GetBrush().SetColor(StyleServices().GetSystemColor(clBtnShadow));
    canvas.FrameRect(rect);
    InflateRect(&rect, -1, -1);
  } else if (fBevelOuter != TBevelCut::bvNone) {
    const UINT edge =
        fBevelOuter == TBevelCut::bvRaised ? static_cast<UINT>(BDR_RAISEDINNER) : static_cast<UINT>(BDR_SUNKENOUTER);
    DrawEdge(canvas.GetHandle(), &rect, edge, BF_RECT | BF_ADJUST);
  }
  const std::wstring caption = GetText();
  if (!fShowCaption || caption.empty()) return;
  canvas.GetBrush().SetStyle(TBrushStyle::bsClear);
  canvas.GetFont().SetColor(StyleServices().GetSystemColor(IsEnabled() ? GetFont().GetColor() : clGrayText));
  TAlignment alignment = fAlignment;
  if (UseRightToLeftAlignment() && alignment != TAlignment::taCenter) {
    alignment = alignment == TAlignment::taLeftJustify ? TAlignment::taRightJustify : TAlignment::taLeftJustify;
  }
  static constexpr UINT sides[] = {DT_LEFT, DT_RIGHT, DT_CENTER};
  canvas.TextRect(rect, caption, sides[static_cast<int>(alignment)] | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS);
}

// --- TSplitter ------------------------------------------------------------------------------------------------------

TSplitter::TSplitter(TComponent* pOwner) : TGraphicControl(pOwner) {
  TGraphicControl::SetBounds(0, 0, ScaledPixels(4), ScaledPixels(100));
  SetAlign(TAlign::alLeft);
}

TSplitter::~TSplitter() = default;

void TSplitter::SetAlign(TAlign pAlign) {
  TGraphicControl::SetAlign(pAlign);
  SetCursor(IsUpright() ? crHSplit : crVSplit);
}

// The neighbour on the side of the edge that both are aligned to.
TControl* TSplitter::FindResized() const {
  POINT point{GetLeft(), GetTop()};
  switch (GetAlign()) {
  case TAlign::alLeft:
    --point.x;
    break;
  case TAlign::alRight:
    point.x += GetWidth();
    break;
  case TAlign::alTop:
    --point.y;
    break;
  case TAlign::alBottom:
    point.y += GetHeight();
    break;
  default:
    return nullptr;
  }
  for (TControl* control : GetParent()->GetControls()) {
    const RECT bounds = control->GetBoundsRect();
    if (control != this && control->IsVisible() && PtInRect(&bounds, point)) return control;
  }
  return nullptr;
}

void TSplitter::MouseDown(TMouseButton pButton, TShiftState pShift, int pX, int pY) {
  if (pButton == TMouseButton::mbLeft && GetParent()) {
    fResized = FindResized();
    if (fResized) {
      fResizedKey = fResized;
      fResized->FreeNotification(this);
      GetCursorPos(&fStart);
      fStartSize = IsUpright() ? fResized->GetWidth() : fResized->GetHeight();
    }
  }
  TGraphicControl::MouseDown(pButton, pShift, pX, pY);
}

void TSplitter::MouseMove(TShiftState pShift, int pX, int pY) {
  const TAliveWatch alive(GetAliveToken());
  TGraphicControl::MouseMove(pShift, pX, pY);
  if (!alive.IsAlive() || !fResized || !GetParent()) return;
  POINT now;
  GetCursorPos(&now);
  const bool upright = IsUpright();
  int moved = upright ? now.x - fStart.x : now.y - fStart.y;
  if (GetAlign() == TAlign::alRight || GetAlign() == TAlign::alBottom) moved = -moved;
  const int size = upright ? fResized->GetWidth() : fResized->GetHeight();
  // What the client-aligned rest can give.
  int rest = upright ? GetParent()->GetClientWidth() : GetParent()->GetClientHeight();
  for (const TControl* control : GetParent()->GetControls()) {
    if (control->IsVisible() && control->GetAlign() == TAlign::alClient)
      rest = upright ? control->GetWidth() : control->GetHeight();
  }
  const int least = ScaledPixels(fMinSize);
  const int most = std::max(least, size + rest - least);
  const int wanted = std::clamp(fStartSize + moved, least, most);
  if (wanted == size) return;
  RECT bounds = fResized->GetBoundsRect();
  if (GetAlign() == TAlign::alRight) bounds.left = bounds.right - wanted;
  if (GetAlign() == TAlign::alLeft) bounds.right = bounds.left + wanted;
  if (GetAlign() == TAlign::alBottom) bounds.top = bounds.bottom - wanted;
  if (GetAlign() == TAlign::alTop) bounds.bottom = bounds.top + wanted;
  fResized->SetBoundsRect(bounds);
  if (alive.IsAlive()) Update();
}

void TSplitter::MouseUp(TMouseButton pButton, TShiftState pShift, int pX, int pY) {
  const bool wasMoved = fResized && (IsUpright() ? fResized->GetWidth() : fResized->GetHeight()) != fStartSize;
  fResized = nullptr;
  const TAliveWatch alive(GetAliveToken());
  TGraphicControl::MouseUp(pButton, pShift, pX, pY);
  if (wasMoved && alive.IsAlive()) static_cast<void>(FireEvent(GetAliveToken(), fOnMoved, this));
}

void TSplitter::CaptureLost() {
  fResized = nullptr;
  TGraphicControl::CaptureLost();
}

void TSplitter::Notification(TComponent* pComponent, TOperation pOperation) {
  if (pOperation == TOperation::opRemove && pComponent == fResizedKey) {
    fResized = nullptr;
    fResizedKey = nullptr;
  }
  TGraphicControl::Notification(pComponent, pOperation);
}

void TSplitter::Paint() {
  GetCanvas().FillRect(GetClientRect(), StyleServices().GetSystemColor(GetColor()));
}

// --- TScrollBox -----------------------------------------------------------------------------------------------------

TScrollBox::TScrollBox(TComponent* pOwner) : TWinControl(pOwner) {
  IncludeStyle(TControlStyleFlag::csAcceptsControls);
  TWinControl::SetBounds(0, 0, ScaledPixels(185), ScaledPixels(41));
}

TScrollBox::~TScrollBox() {
  EndWindow();
}

void TScrollBox::CreateParams(TCreateParams& pParams) {
  TWinControl::CreateParams(pParams);
  if (fBorderStyle == TBorderStyle::bsSingle) pParams.exStyle |= WS_EX_CLIENTEDGE;
}

void TScrollBox::CreateWnd() {
  TWinControl::CreateWnd();
  UpdateScrollBars();
}

void TScrollBox::SetBorderStyle(TBorderStyle pStyle) {
  if (fBorderStyle == pStyle) return;
  fBorderStyle = pStyle;
  RecreateWnd();
}

// From the corner of the content to the farthest edge of what stands in it unaligned.
SIZE TScrollBox::ContentSize() const {
  SIZE size{};
  for (const TControl* control : GetControls()) {
    if (!control->IsVisible() || control->GetAlign() != TAlign::alNone) continue;
    const RECT bounds = control->GetBoundsRect();
    size.cx = std::max(size.cx, bounds.right + fPosition.x);
    size.cy = std::max(size.cy, bounds.bottom + fPosition.y);
  }
  return size;
}

void TScrollBox::AlignControls(TControl* pControl) {
  const TAliveWatch alive(GetAliveToken());
  TWinControl::AlignControls(pControl);
  if (alive.IsAlive() && !fUpdating) UpdateScrollBars();
}

void TScrollBox::UpdateScrollBars() {
  if (!HandleAllocated() || fUpdating) return;
  fUpdating = true;
  const SIZE content = ContentSize();
  const TAliveWatch alive(GetAliveToken());
  // One bar takes room from the other: the second round settles it.
  for (int round = 0; round < 2; ++round) {
    const RECT client = GetClientRect();
    for (const int bar : {SB_HORZ, SB_VERT}) {
      SCROLLINFO info{};
      info.cbSize = sizeof(info);
      info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
      info.nMax = static_cast<int>(bar == SB_HORZ ? content.cx : content.cy) - 1;
      info.nPage = static_cast<UINT>(bar == SB_HORZ ? client.right : client.bottom);
      info.nPos = static_cast<int>(bar == SB_HORZ ? fPosition.x : fPosition.y);
      if (info.nMax < static_cast<int>(info.nPage)) info.nMax = 0;
      SetScrollInfo(GetHandle(), bar, &info, TRUE);
      if (!alive.IsAlive()) return;
    }
  }
  fUpdating = false;
  ScrollTo(fPosition.x, fPosition.y);
}

void TScrollBox::ScrollTo(int pX, int pY) {
  const SIZE content = ContentSize();
  const RECT client = GetClientRect();
  const POINT wanted{std::clamp<LONG>(pX, 0, std::max<LONG>(0, content.cx - client.right)),
                     std::clamp<LONG>(pY, 0, std::max<LONG>(0, content.cy - client.bottom))};
  const int dx = static_cast<int>(fPosition.x - wanted.x);
  const int dy = static_cast<int>(fPosition.y - wanted.y);
  if ((dx == 0 && dy == 0) || !HandleAllocated()) return;
  const TAliveWatch alive(GetAliveToken());
  fPosition = wanted;
  fUpdating = true; // while some have moved and others not the content has no size
  DisableAlign();
  const std::vector<TControl*> controls = GetControls();
  for (TControl* control : controls) {
    const auto& now = GetControls();
    if (std::find(now.begin(), now.end(), control) == now.end() || control->GetAlign() != TAlign::alNone) continue;
    control->SetBounds(control->GetLeft() + dx, control->GetTop() + dy, control->GetWidth(), control->GetHeight());
    if (!alive.IsAlive()) return;
  }
  EnableAlign();
  if (!alive.IsAlive()) return;
  fUpdating = false;
  SetScrollPos(GetHandle(), SB_HORZ, static_cast<int>(wanted.x), TRUE);
  SetScrollPos(GetHandle(), SB_VERT, static_cast<int>(wanted.y), TRUE);
  Invalidate();
}

// The children's places are scaled, and so what they have been moved by.
void TScrollBox::ChangeScale(int pM, int pD, bool pKeepPlace) {
  const TAliveWatch alive(GetAliveToken());
  fUpdating = true;
  TWinControl::ChangeScale(pM, pD, pKeepPlace);
  if (!alive.IsAlive()) return;
  fUpdating = false;
  fPosition = {MulDivRounded(static_cast<int>(fPosition.x), pM, pD),
               MulDivRounded(static_cast<int>(fPosition.y), pM, pD)};
  UpdateScrollBars();
}

void TScrollBox::CMChildFocused(TMessage& pMessage) {
  ScrollInView(*reinterpret_cast<const TControl*>(pMessage.LParam));
}

void TScrollBox::ScrollInView(const TControl& pControl) {
  const RECT client = GetClientRect();
  const POINT corner = ScreenToClient(pControl.ClientToScreen({0, 0}));
  const LONG right = corner.x + pControl.GetWidth();
  const LONG bottom = corner.y + pControl.GetHeight();
  // The near edges count more than the far ones.
  const LONG dx = corner.x < 0 ? corner.x : std::max<LONG>(0, std::min<LONG>(right - client.right, corner.x));
  const LONG dy = corner.y < 0 ? corner.y : std::max<LONG>(0, std::min<LONG>(bottom - client.bottom, corner.y));
  ScrollTo(static_cast<int>(fPosition.x + dx), static_cast<int>(fPosition.y + dy));
}

void TScrollBox::HandleScroll(int pBar, UINT pRequest) {
  SCROLLINFO info{};
  info.cbSize = sizeof(info);
  info.fMask = SIF_ALL;
  GetScrollInfo(GetHandle(), pBar, &info);
  const int line = ScaledPixels(20);
  int position = info.nPos;
  switch (pRequest) {
  case SB_LINEUP:
    position -= line;
    break;
  case SB_LINEDOWN:
    position += line;
    break;
  case SB_PAGEUP:
    position -= static_cast<int>(info.nPage);
    break;
  case SB_PAGEDOWN:
    position += static_cast<int>(info.nPage);
    break;
  case SB_THUMBTRACK:
  case SB_THUMBPOSITION:
    position = info.nTrackPos;
    break;
  case SB_TOP:
    position = 0;
    break;
  case SB_BOTTOM:
    position = info.nMax;
    break;
  default:
    return;
  }
  if (pBar == SB_HORZ)
    ScrollTo(position, static_cast<int>(fPosition.y));
  else
    ScrollTo(static_cast<int>(fPosition.x), position);
}

void TScrollBox::WndProc(TMessage& pMessage) {
  const bool isScroll = pMessage.Msg == WM_HSCROLL || pMessage.Msg == WM_VSCROLL;
  if (isScroll && pMessage.LParam == 0) {
    HandleScroll(pMessage.Msg == WM_HSCROLL ? SB_HORZ : SB_VERT, LOWORD(pMessage.WParam));
    return;
  }
  TWinControl::WndProc(pMessage);
}

bool TScrollBox::DoMouseWheel(TShiftState pShift, int pDelta, POINT pScreen) {
  if (TWinControl::DoMouseWheel(pShift, pDelta, pScreen)) return true;
  const int distance = TakeWheelDistance(fWheelRest, pDelta, false, ScaledPixels(20), GetClientHeight());
  ScrollTo(static_cast<int>(fPosition.x), static_cast<int>(fPosition.y) - distance);
  return true;
}

bool TScrollBox::DoMouseWheelHorz(TShiftState pShift, int pDelta, POINT pScreen) {
  if (TWinControl::DoMouseWheelHorz(pShift, pDelta, pScreen)) return true;
  const int distance = TakeWheelDistance(fTiltRest, pDelta, true, ScaledPixels(20), GetClientWidth());
  ScrollTo(static_cast<int>(fPosition.x) + distance, static_cast<int>(fPosition.y));
  return true;
}

} // namespace kiv
