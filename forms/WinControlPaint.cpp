#include <forms/WinControl.h>

#include <forms/WindowLink.h>
#include <graphics/BufferedPaint.h>

#include <algorithm>

namespace kiv {

void TWinControl::Invalidate() {
  if (fHandle) InvalidateRect(fHandle, nullptr, !GetControlStyle().Contains(TControlStyleFlag::csOpaque));
}

void TWinControl::Update() {
  if (fHandle) UpdateWindow(fHandle);
}

void TWinControl::Repaint() {
  Invalidate();
  Update();
}

void TWinControl::WMPaint(TMessage& pMessage) {
  if (HasState(TControlStateFlag::csCustomPaint) || HasGraphicControls())
    PaintHandler(pMessage);
  else
    DefaultHandler(pMessage);
}

void TWinControl::PaintHandler(TMessage& pMessage) {
  // A caller may bring its own context ("WM_PRINTCLIENT", double buffering further up).
  const auto given = reinterpret_cast<HDC>(pMessage.WParam);
  PAINTSTRUCT paint{};
  const HDC dc = given ? given : BeginPaint(fHandle, &paint);
  if (!dc) return;
  const HWND window = fHandle;
  const RECT area = given ? GetClientRect() : paint.rcPaint;
  try {
    if (fDoubleBuffered && !given && !IsRectEmpty(&area)) {
      const TBufferedPaint buffer(dc, area);
      PaintBackground(buffer.GetDc(), area);
      PaintAll(buffer.GetDc());
    } else {
      PaintAll(dc);
    }
  } catch (...) {
    // What isn't validated would come again at once, and raise again.
    if (!given) EndPaint(window, &paint);
    throw;
  }
  if (!given) EndPaint(window, &paint);
}

void TWinControl::PaintAll(HDC pDC) {
  const TAliveWatch alive(GetAliveToken());
  const int saved = SaveDC(pDC);
  PaintWindow(pDC);
  if (alive.IsAlive()) PaintControls(pDC);
  RestoreDC(pDC, saved);
}

void TWinControl::PaintWindow(HDC pDC) {
  TMessage message{WM_PAINT, reinterpret_cast<WPARAM>(pDC), 0, 0};
  DefaultHandler(message);
}

void TWinControl::PaintControls(HDC pDC) {
  if (!HasGraphicControls()) return;
  const TAliveWatch alive(GetAliveToken());
  const std::vector<TControl*> controls = fControls;
  for (TControl* control : controls) {
    if (std::find(fControls.begin(), fControls.end(), control) == fControls.end()) continue;
    const bool isWindow = dynamic_cast<TWinControl*>(control) != nullptr;
    if (isWindow || !(control->IsVisible() || control->IsDesigning())) continue;
    const RECT bounds = control->GetBoundsRect();
    if (!RectVisible(pDC, &bounds)) continue;
    const int saved = SaveDC(pDC);
    OffsetViewportOrgEx(pDC, bounds.left, bounds.top, nullptr);
    IntersectClipRect(pDC, 0, 0, control->GetWidth(), control->GetHeight());
    control->Perform(WM_PAINT, reinterpret_cast<WPARAM>(pDC));
    RestoreDC(pDC, saved);
    if (!alive.IsAlive()) return;
  }
}

void TWinControl::PaintBackground(HDC pDC, const RECT& pRect) {
  FillRect(pDC, &pRect, fBrush.GetHandle());
}

void TWinControl::WMEraseBkgnd(TMessage& pMessage) {
  if (fLink && !fLink->isOwnClass) {
    DefaultHandler(pMessage);
    return;
  }
  const auto dc = reinterpret_cast<HDC>(pMessage.WParam);
  if (fDoubleBuffered && HasState(TControlStateFlag::csCustomPaint)) {
    pMessage.Result = 1; // painted together with the rest
    return;
  }
  PaintBackground(dc, GetClientRect());
  pMessage.Result = 1;
}

} // namespace kiv
