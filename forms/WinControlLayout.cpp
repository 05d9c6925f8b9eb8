#include <forms/WinControl.h>

#include <forms/WindowLink.h>
#include <framework/Exceptions.h>
#include <framework/ScaledPixels.h>

#include <algorithm>

namespace kiv {

namespace {

TLayoutBox BoxOf(const RECT& rect) noexcept {
  return {static_cast<int>(rect.left), static_cast<int>(rect.top), static_cast<int>(rect.right - rect.left),
          static_cast<int>(rect.bottom - rect.top)};
}

} // namespace

RECT TWinControl::GetClientRect() const {
  RECT rect{};
  if (fHandle) {
    ::GetClientRect(fHandle, &rect);
    return rect;
  }
  // What its window will have.
  TCreateParams params;
  const_cast<TWinControl*>(this)->CreateParams(params);
  RECT frame{};
  AdjustWindowRectEx(&frame, params.style & ~static_cast<DWORD>(WS_VSCROLL | WS_HSCROLL), FALSE, params.exStyle);
  rect.right = std::max<LONG>(0, GetWidth() - (frame.right - frame.left));
  rect.bottom = std::max<LONG>(0, GetHeight() - (frame.bottom - frame.top));
  return rect;
}

void TWinControl::SetBounds(int pLeft, int pTop, int pWidth, int pHeight) {
  if (!fHandle) {
    TControl::SetBounds(pLeft, pTop, pWidth, pHeight);
    if (fControls.empty()) return;
    AlignControls(nullptr);
    return;
  }
  int width = pWidth;
  int height = pHeight;
  GetConstraints().Apply(width, height);
  const bool isSame = pLeft == GetLeft() && pTop == GetTop() && width == GetWidth() && height == GetHeight();
  if (isSame) return;
  // What the window makes of it comes back by WM_WINDOWPOSCHANGED.
  SetWindowPos(fHandle, nullptr, pLeft, pTop, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

void TWinControl::StoreWindowBounds() {
  if (!fHandle || IsIconic(fHandle)) return;
  RECT rect{};
  GetWindowRect(fHandle, &rect);
  const bool isChild = (GetWindowLongW(fHandle, GWL_STYLE) & WS_CHILD) != 0;
  const HWND parent = isChild ? GetAncestor(fHandle, GA_PARENT) : nullptr;
  if (parent) MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
  StoreBounds(BoxOf(rect));
}

void TWinControl::WMWindowPosChanged(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  DefaultHandler(pMessage);
  if (!alive.IsAlive() || !fHandle) return;
  const auto& position = *reinterpret_cast<const WINDOWPOS*>(pMessage.LParam);
  if ((position.flags & (SWP_NOMOVE | SWP_NOSIZE)) != (SWP_NOMOVE | SWP_NOSIZE)) StoreWindowBounds();
}

void TWinControl::WMSize(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  DefaultHandler(pMessage);
  if (alive.IsAlive() && pMessage.WParam != SIZE_MINIMIZED) Realign();
}

void TWinControl::SetPadding(const TMargins& pPadding) {
  if (fPadding == pPadding) return;
  fPadding = pPadding;
  Realign();
}

void TWinControl::EnableAlign() {
  if (fAlignLevel > 0) --fAlignLevel;
  if (fAlignLevel == 0 && fAlignNeeded) Realign();
}

void TWinControl::Realign() {
  AlignControls(nullptr);
}

void TWinControl::AlignControls(TControl*) {
  if (fAlignLevel > 0 || fAligning) {
    fAlignNeeded = true;
    return;
  }
  fAlignNeeded = false;
  if (fControls.empty() || IsLoading() || IsDestroying()) return;
  RECT client = GetClientRect();
  const int parentWidth = client.right;
  const int parentHeight = client.bottom;
  AdjustClientRect(client);
  client = {client.left + fPadding.left, client.top + fPadding.top, client.right - fPadding.right,
            client.bottom - fPadding.bottom};
  std::vector<TControl*> controls;
  std::vector<TLayoutItem> items;
  for (TControl* control : fControls) {
    if (!control->IsVisible() && !control->IsDesigning()) continue;
    const TLayoutBox box{control->GetLeft(), control->GetTop(), control->GetWidth(), control->GetHeight()};
    controls.push_back(control);
    const TMargins margins = control->IsAlignWithMargins() ? control->GetMargins() : TMargins{};
    items.push_back({control->GetAlign(), box, control->GetConstraints(), margins});
  }
  TLayoutBox area = BoxOf(client);
  area.width = std::max(0, area.width);
  area.height = std::max(0, area.height);
  AlignBoxes(area, items);
  const TAliveWatch alive(GetAliveToken());
  fAligning = true;
  for (std::size_t i = 0; i < controls.size(); ++i) {
    TControl* const control = controls[i];
    // The resizing of another one may have taken it away.
    if (std::find(fControls.begin(), fControls.end(), control) == fControls.end()) continue;
    TLayoutBox box = items[i].box;
    const bool isFree = control->GetAlign() == TAlign::alNone && !control->IsLoading();
    if (isFree) box = AnchorBox(control->fAnchorBase, control->GetAnchors(), parentWidth, parentHeight);
    control->SetBounds(box.left, box.top, box.width, box.height);
    if (!alive.IsAlive()) return;
  }
  fAligning = false;
  // A control that took another size than it was given, or one that came or went meanwhile.
  if (fAlignNeeded && !fRealigning) {
    fRealigning = true;
    AlignControls(nullptr);
    if (alive.IsAlive()) fRealigning = false;
  }
}

void TWinControl::FlipChildren(bool pAllLevels) {
  const TAliveWatch alive(GetAliveToken());
  const int width = GetClientWidth();
  DisableAlign();
  const std::vector<TControl*> controls = fControls;
  for (TControl* control : controls) {
    if (std::find(fControls.begin(), fControls.end(), control) == fControls.end()) continue;
    const TAnchors anchors = control->GetAnchors();
    TAnchors flipped = anchors;
    flipped.Put(TAnchorKind::akLeft, anchors.Contains(TAnchorKind::akRight));
    flipped.Put(TAnchorKind::akRight, anchors.Contains(TAnchorKind::akLeft));
    const TAlign align = control->GetAlign();
    const int left = width - control->GetLeft() - control->GetWidth();
    control->SetBounds(left, control->GetTop(), control->GetWidth(), control->GetHeight());
    if (!alive.IsAlive()) return;
    control->SetAnchors(flipped);
    if (align == TAlign::alLeft) control->SetAlign(TAlign::alRight);
    if (align == TAlign::alRight) control->SetAlign(TAlign::alLeft);
    auto* const window = dynamic_cast<TWinControl*>(control);
    if (pAllLevels && window) window->FlipChildren(true);
    if (!alive.IsAlive()) return;
  }
  EnableAlign();
}

void TWinControl::ChangeScale(int pM, int pD, bool pKeepPlace) {
  const TAliveWatch alive(GetAliveToken());
  DisableAlign();
  const std::vector<TControl*> controls = fControls;
  for (TControl* control : controls) {
    if (std::find(fControls.begin(), fControls.end(), control) == fControls.end()) continue;
    control->ScaleForPPI(GetCurrentPPI());
    if (!alive.IsAlive()) return;
  }
  const auto scale = [&](int value) { return MulDivRounded(value, pM, pD); };
  fPadding = {scale(fPadding.left), scale(fPadding.top), scale(fPadding.right), scale(fPadding.bottom)};
  TControl::ChangeScale(pM, pD, pKeepPlace);
  if (alive.IsAlive()) EnableAlign();
}

void TWinControl::SetZOrder(bool pTopMost) {
  if (fHandle) {
    SetWindowPos(fHandle, pTopMost ? HWND_TOP : HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
  }
  TControl::SetZOrder(pTopMost);
}

POINT TWinControl::ClientToScreen(POINT pPoint) const {
  const_cast<TWinControl*>(this)->HandleNeeded();
  ::ClientToScreen(fHandle, &pPoint);
  return pPoint;
}

POINT TWinControl::ScreenToClient(POINT pPoint) const {
  const_cast<TWinControl*>(this)->HandleNeeded();
  ::ScreenToClient(fHandle, &pPoint);
  return pPoint;
}

} // namespace kiv
