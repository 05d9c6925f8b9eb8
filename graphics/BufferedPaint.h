#pragma once

#include <platform/Export.h>
#include <platform/Handles.h>

#include <uxtheme.h>

namespace kiv {

/// Painting without flicker: what is drawn on GetDc comes to the target in one piece when the object goes. Uses the
/// platform's buffer ("BeginBufferedPaint"), or one of its own where there is none. Main thread only.
class KIV_EXPORT TBufferedPaint {
public:
  /// The buffer covers `pRect` of the target, in the target's coordinates, and is mirrored if the target is. An empty
  /// rectangle draws nowhere. Its pixels are undefined until they are drawn.
  TBufferedPaint(HDC pTarget, const RECT& pRect);
  ~TBufferedPaint();
  TBufferedPaint(const TBufferedPaint&) = delete;
  TBufferedPaint& operator=(const TBufferedPaint&) = delete;

  /// Null for an empty rectangle.
  HDC GetDc() const noexcept { return fDc; }
  /// Nothing comes to the target.
  void Cancel() noexcept { fCancelled = true; }

private:
  void BeginOwn();
  void CopyOwn() const;

  HDC fTarget;
  RECT fRect;
  HDC fDc = nullptr;
  HPAINTBUFFER fBuffer = nullptr;
  TUniqueMemoryDc fOwnDc;
  TUniqueBitmap fBitmap;
  HGDIOBJ fOuter = nullptr;
  bool fCancelled = false;
};

} // namespace kiv
