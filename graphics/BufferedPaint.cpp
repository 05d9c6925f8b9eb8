#include <graphics/BufferedPaint.h>

#include <platform/Lifecycle.h>

#include <algorithm>

namespace kiv {

namespace {

// The platform keeps its buffers between paints from here on.
void InitializeOnce() {
  static bool initialized = false;
  if (initialized) return;
  initialized = SUCCEEDED(BufferedPaintInit());
  if (initialized) {
    AtShutdown([] {
      BufferedPaintUnInit();
      initialized = false;
    });
  }
}

} // namespace

TBufferedPaint::TBufferedPaint(HDC pTarget, const RECT& pRect) : fTarget(pTarget), fRect(pRect) {
  if (pRect.right <= pRect.left || pRect.bottom <= pRect.top) return;
  InitializeOnce();
  // Mirrored contexts: the platform's buffer would show its pictures mirrored.
  if (GetLayout(pTarget) == 0) fBuffer = BeginBufferedPaint(pTarget, &fRect, BPBF_COMPATIBLEBITMAP, nullptr, &fDc);
  if (!fBuffer) BeginOwn();
}

// From the origin on, so that coordinates are the target's without a shift: shifts of mirrored contexts aren't the same
// on all systems.
void TBufferedPaint::BeginOwn() {
  fDc = fTarget; // if all else fails, better flicker than nothing
  if (fRect.left < 0 || fRect.top < 0) return;
  fOwnDc.Reset(CreateCompatibleDC(fTarget));
  fBitmap.Reset(CreateCompatibleBitmap(fTarget, fRect.right, fRect.bottom));
  if (!fOwnDc || !fBitmap) return;
  fOuter = SelectObject(fOwnDc.Get(), fBitmap.Get());
  SetLayout(fOwnDc.Get(), GetLayout(fTarget));
  fDc = fOwnDc.Get();
}

// In pixels as they lie: not every system copies between mirrored contexts.
void TBufferedPaint::CopyOwn() const {
  // Mirrored, the rectangle ends at the buffer's left edge.
  const int left = (GetLayout(fTarget) & LAYOUT_RTL) != 0 ? 0 : fRect.left;
  POINT corners[] = {{fRect.left, fRect.top}, {fRect.right - 1, fRect.bottom - 1}};
  LPtoDP(fTarget, corners, 2);
  const int saved = SaveDC(fTarget);
  for (const HDC dc : {fTarget, fOwnDc.Get()}) {
    SetLayout(dc, 0);
    SetMapMode(dc, MM_TEXT);
    SetWindowOrgEx(dc, 0, 0, nullptr);
    SetViewportOrgEx(dc, 0, 0, nullptr);
  }
  BitBlt(fTarget, std::min(corners[0].x, corners[1].x), corners[0].y, fRect.right - fRect.left,
         fRect.bottom - fRect.top, fOwnDc.Get(), left, fRect.top, SRCCOPY);
  RestoreDC(fTarget, saved);
}

TBufferedPaint::~TBufferedPaint() {
  if (fBuffer) {
    EndBufferedPaint(fBuffer, !fCancelled);
  } else if (fOuter) {
    if (!fCancelled) CopyOwn();
    SelectObject(fOwnDc.Get(), fOuter);
  }
}

} // namespace kiv
