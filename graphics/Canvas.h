#pragma once

#include <graphics/Brush.h>
#include <graphics/Color.h>
#include <graphics/Font.h>
#include <graphics/Pen.h>
#include <platform/Handles.h>

#include <memory>
#include <span>
#include <string_view>

namespace kiv {

class TBitmap;

/// Draws on a device context that belongs to somebody else: a window's in WM_PAINT or in custom draw, a bitmap's.
///
/// When the canvas goes, or gets another context, the context is as it was: objects, colours, modes, clipping. Each
/// operation selects what it needs itself, so code that draws on the context by the platform's functions in between
/// does no harm.
///
/// A context can be mirrored for right-to-left layout ("SetLayout"). Coordinates then count from the right; pictures
/// are drawn unmirrored all the same.
class KIV_EXPORT TCanvas {
public:
  explicit TCanvas(HDC pDc = nullptr) { SetHandle(pDc); }
  TCanvas(const TCanvas&) = delete;
  TCanvas& operator=(const TCanvas&) = delete;
  ~TCanvas() { SetHandle(nullptr); }

  /// The context, null if there is none. Drawing without one does nothing.
  HDC GetHandle() const noexcept { return fDc; }
  void SetHandle(HDC pDc) noexcept;

  TFont& GetFont() noexcept { return fFont; }
  TPen& GetPen() noexcept { return fPen; }
  /// Also the background of text; a clear brush leaves what is behind it.
  TBrush& GetBrush() noexcept { return fBrush; }

  bool IsMirrored() const noexcept;
  /// Text reads from right to left: punctuation at its ends goes to the other side. Doesn't move it.
  bool IsRightToLeftText() const noexcept { return fRightToLeftText; }
  void SetRightToLeftText(bool pRightToLeft) noexcept { fRightToLeftText = pRightToLeft; }

  /// One line of text, its top left corner at (x, y). At most 8192 characters are drawn.
  void TextAt(int pX, int pY, std::wstring_view pText);
  /// The same, with nothing outside of a rectangle, whose whole area gets the brush's colour.
  void TextAt(const RECT& pClip, int pX, int pY, std::wstring_view pText);
  /// Text laid out in a rectangle, with `DT_...` flags ("DrawText"). Returns its height.
  int TextRect(const RECT& pRect, std::wstring_view pText, UINT pFlags);
  /// Size of one line in the canvas's font.
  SIZE TextExtent(std::wstring_view pText) const;
  /// Size of text that TextRect would lay out in a width.
  SIZE TextExtent(std::wstring_view pText, int pWidth, UINT pFlags) const;
  int TextWidth(std::wstring_view pText) const { return TextExtent(pText).cx; }
  int TextHeight(std::wstring_view pText) const { return TextExtent(pText).cy; }

  /// With the brush: the area, or a frame inside of it that is one pixel wide.
  void FillRect(const RECT& pRect);
  void FrameRect(const RECT& pRect);
  /// With a colour, whatever the brush is; clNone draws nothing.
  void FillRect(const RECT& pRect, TColor pColor);

  /// With the pen: both ends are drawn.
  void Line(int pX1, int pY1, int pX2, int pY2);
  /// Outlined with the pen and filled with the brush.
  void Rectangle(const RECT& pRect);
  void Polygon(std::span<const POINT> pPoints);
  /// The dotted frame of what has the focus. Drawn a second time it goes.
  void DrawFocusRect(const RECT& pRect);

  /// A picture, blended if it has alpha, in its own size or, well filtered, in that of a rectangle. `pOpacity`, 0..255,
  /// fades all of it. A picture without alpha leaves its upper bits on a target with 32 bits.
  void Draw(int pX, int pY, const TBitmap& pBitmap, int pOpacity = 255);
  void Draw(const RECT& pRect, const TBitmap& pBitmap, int pOpacity = 255);
  /// An icon in the size given.
  void DrawIcon(const RECT& pRect, HICON pIcon);

  /// Narrows where drawing shows for as long as it stands.
  class KIV_EXPORT ScopedClip {
  public:
    ScopedClip(TCanvas& pCanvas, const RECT& pRect);
    ~ScopedClip();
    ScopedClip(const ScopedClip&) = delete;
    ScopedClip& operator=(const ScopedClip&) = delete;

  private:
    HDC fDc;
    TUniqueRegion fOuter; // null: there was none
  };

  /// Pictures are drawn as they are on a mirrored context, for as long as it stands.
  class KIV_EXPORT ScopedUnmirroredPictures {
  public:
    explicit ScopedUnmirroredPictures(HDC pDc) noexcept;
    ~ScopedUnmirroredPictures();
    ScopedUnmirroredPictures(const ScopedUnmirroredPictures&) = delete;
    ScopedUnmirroredPictures& operator=(const ScopedUnmirroredPictures&) = delete;

  private:
    HDC fDc;
    DWORD fLayout;
  };

private:
  void Select(const std::shared_ptr<const TUniqueFont>& pFont) const;
  void SelectShapeTools();
  void SelectTextTools();

  HDC fDc = nullptr;
  int fSaved = 0;
  TFont fFont;
  TPen fPen;
  TBrush fBrush;
  bool fRightToLeftText = false;
  // What is selected mustn't be closed.
  mutable std::shared_ptr<const TUniqueFont> fSelectedFont;
  std::shared_ptr<const TUniquePen> fSelectedPen;
  std::shared_ptr<const TUniqueBrush> fSelectedBrush;
};

} // namespace kiv
