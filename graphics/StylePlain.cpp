// The look of elements without themes.
#include <graphics/StyleServices.h>

#include <framework/ScaledPixels.h>

#include <algorithm>
#include <cwchar>

namespace kiv {

namespace {

// The plain look of an element: the platform's own for frame controls, or a shape of ours.
enum class TShape { Unknown, FrameControl, ToolButton, SunkenEdge, GroupBox, ArrowUp, ArrowDown, Plus, Minus, Tip };

struct TPlain {
  TShape shape = TShape::Unknown;
  UINT type = 0;  // DFC_...
  UINT state = 0; // DFCS_...
};

bool Is(const TThemeElement& element, const wchar_t* class_name) {
  return _wcsicmp(element.className, class_name) == 0;
}

// Check boxes and radio buttons have four states for each mark: normal, hot, pressed, disabled.
UINT MarkState(int state) {
  UINT flags = 0;
  const int group = (state - 1) / 4;
  if (group == 1) flags |= DFCS_CHECKED;
  switch ((state - 1) % 4) {
  case 2:
    return flags | DFCS_PUSHED;
  case 3:
    return flags | DFCS_INACTIVE;
  default:
    return flags;
  }
}

TPlain PlainButton(const TThemeElement& element) {
  switch (element.part) {
  case BP_PUSHBUTTON: {
    const UINT state = element.state == PBS_PRESSED    ? static_cast<UINT>(DFCS_PUSHED)
                       : element.state == PBS_DISABLED ? static_cast<UINT>(DFCS_INACTIVE)
                                                       : 0U;
    return {TShape::FrameControl, DFC_BUTTON, DFCS_BUTTONPUSH | state};
  }
  case BP_CHECKBOX: {
    const bool mixed = element.state >= CBS_MIXEDNORMAL && element.state <= CBS_MIXEDDISABLED;
    const UINT kind = mixed ? DFCS_BUTTON3STATE | DFCS_CHECKED : DFCS_BUTTONCHECK;
    return {TShape::FrameControl, DFC_BUTTON, kind | MarkState(element.state)};
  }
  case BP_RADIOBUTTON:
    return {TShape::FrameControl, DFC_BUTTON, DFCS_BUTTONRADIO | MarkState(element.state)};
  case BP_GROUPBOX:
    return {TShape::GroupBox};
  default:
    return {};
  }
}

TPlain PlainLook(const TThemeElement& element) {
  if (Is(element, L"BUTTON")) return PlainButton(element);
  if (Is(element, L"TOOLBAR")) {
    if (element.part == TP_SPLITBUTTONDROPDOWN) return {TShape::ArrowDown};
    return {TShape::ToolButton};
  }
  if (Is(element, L"COMBOBOX")) {
    if (element.part != CP_DROPDOWNBUTTON && element.part != CP_DROPDOWNBUTTONRIGHT) return {TShape::SunkenEdge};
    const UINT state = element.state == CBXS_PRESSED    ? static_cast<UINT>(DFCS_PUSHED | DFCS_FLAT)
                       : element.state == CBXS_DISABLED ? static_cast<UINT>(DFCS_INACTIVE)
                                                        : 0U;
    return {TShape::FrameControl, DFC_SCROLL, DFCS_SCROLLCOMBOBOX | state};
  }
  if (Is(element, L"EDIT")) return {TShape::SunkenEdge};
  if (Is(element, L"HEADER")) {
    if (element.part == HP_HEADERSORTARROW) {
      return {element.state == HSAS_SORTEDUP ? TShape::ArrowUp : TShape::ArrowDown};
    }
    const UINT state = element.state == HIS_PRESSED ? static_cast<UINT>(DFCS_PUSHED | DFCS_FLAT) : 0U;
    return {TShape::FrameControl, DFC_BUTTON, DFCS_BUTTONPUSH | state};
  }
  if (Is(element, L"TREEVIEW") && element.part == TVP_GLYPH) {
    return {element.state == GLPS_OPENED ? TShape::Minus : TShape::Plus};
  }
  if (Is(element, L"TOOLTIP")) return {TShape::Tip};
  return {};
}

// A small triangle in the middle.
void DrawArrow(TCanvas& canvas, const RECT& rect, bool up, int dpi) {
  const int height = ScaledPixels(3, dpi);
  const int x = (rect.left + rect.right) / 2;
  const int y = (rect.top + rect.bottom - height) / 2;
  const int tip = up ? y : y + height;
  const int base = up ? y + height : y;
  const POINT points[] = {{x - height, base}, {x + height, base}, {x, tip}};
  const TColor color = StyleServices().GetSystemColor(clBtnText);
  canvas.GetPen().SetColor(color);
  canvas.GetBrush().SetColor(color);
  canvas.Polygon(points);
}

// The box of a tree's node, with a plus or a minus in it.
void DrawGlyph(TCanvas& canvas, const RECT& rect, bool plus, int dpi) {
  const TStyleServices& style = StyleServices();
  const int half = ScaledPixels(4, dpi);
  const int x = (rect.left + rect.right) / 2;
  const int y = (rect.top + rect.bottom) / 2;
  canvas.GetPen().SetColor(style.GetSystemColor(clBtnShadow));
  canvas.GetBrush().SetColor(style.GetSystemColor(clWindow));
  canvas.Rectangle({x - half, y - half, x + half + 1, y + half + 1});
  canvas.GetPen().SetColor(style.GetSystemColor(clWindowText));
  const int arm = half / 2;
  canvas.Line(x - arm, y, x + arm, y);
  if (plus) canvas.Line(x, y - arm, x, y + arm);
}

void DrawToolButton(TCanvas& canvas, RECT rect, int state) {
  const bool down = state == TS_PRESSED || state == TS_CHECKED || state == TS_HOTCHECKED;
  if (down) {
    DrawEdge(canvas.GetHandle(), &rect, BDR_SUNKENOUTER, BF_RECT);
  } else if (state == TS_HOT) {
    DrawEdge(canvas.GetHandle(), &rect, BDR_RAISEDINNER, BF_RECT);
  }
}

// The platform's own frame controls are light: in the dark they are outlined.
void DrawOutlined(TCanvas& canvas, RECT rect, const TPlain& plain) {
  const TStyleServices& style = StyleServices();
  const bool on = (plain.state & (DFCS_CHECKED | DFCS_PUSHED)) != 0;
  canvas.GetPen().SetColor(style.GetSystemColor((plain.state & DFCS_INACTIVE) != 0 ? clBtnShadow : clGrayText));
  canvas.GetBrush().SetColor(style.GetSystemColor(on && plain.type == DFC_BUTTON ? clHighlight : clBtnFace));
  if (plain.type == DFC_BUTTON && (plain.state & DFCS_BUTTONRADIO) != 0) {
    Ellipse(canvas.GetHandle(), rect.left, rect.top, rect.right, rect.bottom);
    return;
  }
  canvas.Rectangle(rect);
  const bool check = plain.type == DFC_BUTTON && (plain.state & DFCS_CHECKED) != 0;
  if (!check) return;
  canvas.GetPen().SetColor(style.GetSystemColor(clWindowText));
  const int x = rect.left + (rect.right - rect.left) * 2 / 5;
  const int y = rect.top + (rect.bottom - rect.top) * 3 / 4;
  const int arm = (rect.right - rect.left) / 5;
  if ((plain.state & DFCS_BUTTON3STATE) != 0) {
    canvas.Line(x - arm, y - arm, x + 2 * arm, y - arm);
    return;
  }
  canvas.Line(x - arm, y - arm, x, y);
  canvas.Line(x, y, x + 2 * arm, y - 2 * arm);
}

} // namespace

SIZE PlainElementSize(const TThemeElement& pElement) {
  switch (PlainLook(pElement).shape) {
  case TShape::FrameControl:
    if (pElement.part == BP_PUSHBUTTON && Is(pElement, L"BUTTON")) return {75, 23};
    if (Is(pElement, L"COMBOBOX")) return {17, 17};
    return {13, 13};
  case TShape::ArrowUp:
  case TShape::ArrowDown:
    return {11, 7};
  case TShape::Plus:
  case TShape::Minus:
    return {9, 9};
  case TShape::ToolButton:
    return {23, 22};
  default:
    return {};
  }
}

bool DrawPlainElement(TCanvas& pCanvas, const TThemeElement& pElement, const RECT& pRect, int pDpi) {
  const TPlain plain = PlainLook(pElement);
  const TPen pen = pCanvas.GetPen();
  const TBrush brush = pCanvas.GetBrush();
  const TStyleServices& style = StyleServices();
  RECT rect = pRect;
  switch (plain.shape) {
  case TShape::Unknown:
    return false;
  case TShape::FrameControl:
    if (style.IsDarkModeActive()) {
      DrawOutlined(pCanvas, rect, plain);
    } else {
      DrawFrameControl(pCanvas.GetHandle(), &rect, plain.type, plain.state);
    }
    break;
  case TShape::ToolButton:
    DrawToolButton(pCanvas, rect, pElement.state);
    break;
  case TShape::SunkenEdge:
    pCanvas.FillRect(rect, style.GetSystemColor(clWindow));
    if (style.IsDarkModeActive()) {
      pCanvas.GetBrush().SetColor(style.GetSystemColor(clBtnShadow));
      pCanvas.FrameRect(rect);
    } else {
      DrawEdge(pCanvas.GetHandle(), &rect, EDGE_SUNKEN, BF_RECT);
    }
    break;
  case TShape::GroupBox:
    DrawEdge(pCanvas.GetHandle(), &rect, EDGE_ETCHED, BF_RECT);
    break;
  case TShape::ArrowUp:
  case TShape::ArrowDown:
    DrawArrow(pCanvas, rect, plain.shape == TShape::ArrowUp, pDpi);
    break;
  case TShape::Plus:
  case TShape::Minus:
    DrawGlyph(pCanvas, rect, plain.shape == TShape::Plus, pDpi);
    break;
  case TShape::Tip:
    pCanvas.FillRect(rect, style.GetSystemColor(clInfoBk));
    pCanvas.GetBrush().SetColor(style.GetSystemColor(clInfoText));
    pCanvas.FrameRect(rect);
    break;
  }
  pCanvas.GetPen() = pen;
  pCanvas.GetBrush() = brush;
  return true;
}

} // namespace kiv
