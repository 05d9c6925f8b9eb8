#include <forms/CustomControl.h>

namespace kiv {

namespace {

/// Gives a canvas a context and takes it back, unless the control has gone meanwhile.
class ScopedContext {
public:
  ScopedContext(TControl& control, TCanvas& canvas, HDC dc) : fWatch(control.GetAliveToken()), fCanvas(canvas) {
    fOuter = canvas.GetHandle();
    canvas.SetHandle(dc);
    canvas.GetFont() = control.GetFont();
    canvas.SetRightToLeftText(control.IsRightToLeft());
  }
  ~ScopedContext() {
    if (fWatch.IsAlive()) fCanvas.SetHandle(fOuter);
  }
  ScopedContext(const ScopedContext&) = delete;
  ScopedContext& operator=(const ScopedContext&) = delete;

private:
  TAliveWatch fWatch;
  TCanvas& fCanvas;
  HDC fOuter;
};

} // namespace

TCustomControl::TCustomControl(TComponent* pOwner) : TWinControl(pOwner) {
  PutControlState(TControlStateFlag::csCustomPaint, true);
}

TCustomControl::~TCustomControl() {
  EndWindow();
}

void TCustomControl::PaintWindow(HDC pDC) {
  const ScopedContext context(*this, fCanvas, pDC);
  Paint();
}

TGraphicControl::~TGraphicControl() = default;

void TGraphicControl::WndProc(TMessage& pMessage) {
  if (pMessage.Msg != WM_PAINT) {
    TControl::WndProc(pMessage);
    return;
  }
  if (!pMessage.WParam) return;
  const ScopedContext context(*this, fCanvas, reinterpret_cast<HDC>(pMessage.WParam));
  Paint();
}

} // namespace kiv
