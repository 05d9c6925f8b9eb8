#include "ToolButton.h"

#include <graphics/StyleServices.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace kivexplorer {

using namespace kiv;

namespace {

constexpr int Grid = 16; // glyphs are written down in such a square

} // namespace

TToolButton::TToolButton(TComponent* pOwner, TGlyph pGlyph) : TCustomControl(pOwner), fGlyph(pGlyph) {
  SetTabStop(true);
  SetDoubleBuffered(true);
  IncludeStyle(TControlStyleFlag::csClickEvents);
  IncludeStyle(TControlStyleFlag::csCaptureMouse);
  ExcludeStyle(TControlStyleFlag::csDoubleClicks);
}

void TToolButton::Paint() {
  TCanvas& canvas = GetCanvas();
  TStyleServices& style = StyleServices();
  const RECT client = GetClientRect();
  if (IsEnabled() && (fHot || fDown)) {
    style.DrawElement(canvas, fDown ? ttbButtonPressed : ttbButtonHot, client, GetCurrentPPI());
  }
  const TColor color = style.GetSystemColor(IsEnabled() ? clBtnText : clGrayText);
  const int size = this->ScaledPixels(Grid);
  const int top = (GetClientHeight() - size) / 2;
  const int left = GetText().empty() ? (GetClientWidth() - size) / 2 : this->ScaledPixels(6);
  DrawGlyph({left, top, left + size, top + size}, color);
  if (!GetText().empty()) {
    RECT text = client;
    text.left = left + size + this->ScaledPixels(6);
    canvas.GetFont().SetColor(color);
    canvas.GetBrush().SetStyle(TBrushStyle::bsClear);
    canvas.TextRect(text, GetText(), DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
  }
  if (Focused()) {
    RECT frame = client;
    InflateRect(&frame, -this->ScaledPixels(2), -this->ScaledPixels(2));
    canvas.DrawFocusRect(frame);
  }
}

void TToolButton::DrawLines(const RECT& pBox, const std::vector<POINT>& pPoints) {
  const auto place = [&](const POINT& point) {
    return POINT{pBox.left + MulDiv(point.x, pBox.right - pBox.left, Grid * 4),
                 pBox.top + MulDiv(point.y, pBox.bottom - pBox.top, Grid * 4)};
  };
  for (std::size_t i = 1; i < pPoints.size(); ++i) {
    const POINT from = place(pPoints[i - 1]);
    const POINT to = place(pPoints[i]);
    GetCanvas().Line(from.x, from.y, to.x, to.y);
  }
}

// In quarters of the grid's units.
void TToolButton::DrawGlyph(const RECT& pBox, TColor pColor) {
  TPen& pen = GetCanvas().GetPen();
  pen.SetColor(pColor);
  pen.SetWidth(std::max(this->ScaledPixels(2), 1));
  switch (fGlyph) {
  case TGlyph::Back:
    DrawLines(pBox, {{54, 32}, {10, 32}});
    DrawLines(pBox, {{30, 12}, {10, 32}, {30, 52}});
    break;
  case TGlyph::Forward:
    DrawLines(pBox, {{10, 32}, {54, 32}});
    DrawLines(pBox, {{34, 12}, {54, 32}, {34, 52}});
    break;
  case TGlyph::Up:
    DrawLines(pBox, {{32, 54}, {32, 10}});
    DrawLines(pBox, {{12, 30}, {32, 10}, {52, 30}});
    break;
  case TGlyph::Refresh: {
    std::vector<POINT> arc;
    for (int degrees = -60; degrees <= 220; degrees += 10) {
      const double angle = degrees * std::numbers::pi / 180;
      arc.push_back({std::lround(32 + 20 * std::sin(angle)), std::lround(34 - 20 * std::cos(angle))});
    }
    std::reverse(arc.begin(), arc.end());
    DrawLines(pBox, arc);
    DrawLines(pBox, {{12, 8}, {14, 24}, {30, 22}});
    break;
  }
  case TGlyph::NewFolder:
    DrawLines(pBox, {{6, 52}, {6, 12}, {24, 12}, {30, 20}, {56, 20}, {56, 30}});
    DrawLines(pBox, {{6, 52}, {34, 52}});
    DrawLines(pBox, {{48, 36}, {48, 60}});
    DrawLines(pBox, {{36, 48}, {60, 48}});
    break;
  }
}

void TToolButton::WMGetDlgCode(TMessage& pMessage) {
  pMessage.Result = DLGC_WANTMESSAGE;
  // Tab goes on.
  if (const auto* const message = reinterpret_cast<const MSG*>(pMessage.LParam)) {
    const bool mine = message->message == WM_KEYDOWN && (message->wParam == VK_RETURN || message->wParam == VK_SPACE);
    if (!mine) pMessage.Result = DLGC_BUTTON;
  } else {
    pMessage.Result = DLGC_BUTTON;
  }
}

void TToolButton::KeyDown(WORD& pKey, TShiftState pShift) {
  const TAliveWatch alive(GetAliveToken());
  TCustomControl::KeyDown(pKey, pShift);
  if (!alive.IsAlive() || (pKey != VK_SPACE && pKey != VK_RETURN) || pShift.Contains(TShiftStateFlag::ssAlt)) return;
  pKey = 0;
  Click();
}

void TToolButton::WMSetFocus(TMessage& pMessage) {
  TCustomControl::WMSetFocus(pMessage);
  Invalidate();
}

void TToolButton::WMKillFocus(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  TCustomControl::WMKillFocus(pMessage);
  if (alive.IsAlive()) Invalidate();
}

void TToolButton::CMEnabledChanged(TMessage& pMessage) {
  TCustomControl::CMEnabledChanged(pMessage);
  Invalidate();
}

void TToolButton::MouseDown(TMouseButton pButton, TShiftState pShift, int pX, int pY) {
  fDown = pButton == TMouseButton::mbLeft;
  Invalidate();
  TCustomControl::MouseDown(pButton, pShift, pX, pY);
}

void TToolButton::MouseUp(TMouseButton pButton, TShiftState pShift, int pX, int pY) {
  fDown = false;
  Invalidate();
  TCustomControl::MouseUp(pButton, pShift, pX, pY);
}

void TToolButton::CMMouseEnter(TMessage& pMessage) {
  fHot = true;
  Invalidate();
  TCustomControl::CMMouseEnter(pMessage);
}

void TToolButton::CMMouseLeave(TMessage& pMessage) {
  fHot = false;
  Invalidate();
  TCustomControl::CMMouseLeave(pMessage);
}

} // namespace kivexplorer
