#pragma once

#include <framework/Exceptions.h>
#include <graphics/Canvas.h>
#include <graphics/Pixels.h>
#include <platform/ComPtr.h>
#include <platform/Handles.h>

#include <objidl.h>

#include <memory>
#include <optional>
#include <span>
#include <string>

namespace kiv {

/// A picture can't be read, written or made. ErrorCode() is an HRESULT.
class KIV_EXPORT EInvalidGraphic : public EOSError {
public:
  EInvalidGraphic(HRESULT pCode, const std::wstring& pWhat);
  ~EInvalidGraphic() override;
};

enum class TImageFileFormat { iffPng, iffJpeg, iffBmp };

/// A picture with 32 bits a pixel, its rows from the top down: a section of memory that both the platform's drawing
/// functions and our own code work on.
///
/// Moved, not copied; Assign and Clone copy. Used by one thread at a time. Sizes are in pixels.
class KIV_EXPORT TBitmap final : public TPersistent {
public:
  /// No pixels.
  TBitmap();
  /// All pixels 0: black if the alpha is ignored, else transparent. Raises EInvalidGraphic if there is no memory for
  /// it or if a size is negative; one of 0 gives an empty picture.
  TBitmap(int pWidth, int pHeight, TAlphaFormat pAlpha = TAlphaFormat::afIgnored);
  TBitmap(TBitmap&& pOther) noexcept;
  TBitmap& operator=(TBitmap&& pOther) noexcept;
  ~TBitmap() override;

  /// Copies a bitmap of the platform's, of any kind and row order, that isn't selected into a context. Without
  /// `pAlpha` it is looked at: see DetectAlpha.
  static TBitmap FromHandle(HBITMAP pBitmap, std::optional<TAlphaFormat> pAlpha = std::nullopt);
  /// The picture of an icon, with alpha; `pSize` scales it, 0 keeps its own size.
  static TBitmap FromIcon(HICON pIcon, int pSize = 0);
  /// Reads a picture of any format that the platform has a decoder for ("Windows Imaging Component"), with
  /// premultiplied alpha if the format has any. Of several in it, the smallest that isn't smaller than `pSize`; else
  /// the largest. The stream is read from where it stands. Raises EInvalidGraphic.
  static TBitmap FromStream(IStream* pStream, int pSize = 0);
  static TBitmap FromFile(const std::wstring& pPath, int pSize = 0);

  std::wstring ClassName() const override { return L"TBitmap"; }
  void Assign(const TPersistent* pSource) override;
  TBitmap Clone() const;

  bool IsEmpty() const noexcept { return fWidth == 0; }
  int GetWidth() const noexcept { return fWidth; }
  int GetHeight() const noexcept { return fHeight; }
  /// Keeps what is in the top left corner; what comes to it is 0, or filled with a colour.
  void SetSize(int pWidth, int pHeight, TColor pFill = clNone);

  TAlphaFormat GetAlphaFormat() const noexcept { return fAlpha; }
  /// Converts the pixels between the two kinds of alpha. From ignored alpha they become opaque; to ignored alpha they
  /// stay as they are.
  void SetAlphaFormat(TAlphaFormat pAlpha);
  /// What the alpha means, without a change of the pixels.
  void DeclareAlphaFormat(TAlphaFormat pAlpha) noexcept { fAlpha = pAlpha; }

  /// All pixels, row by row. Drawing on the canvas before is in them.
  std::span<TPixel> Pixels() noexcept;
  std::span<const TPixel> Pixels() const noexcept;
  TPixel* ScanLine(int pRow) noexcept { return Pixels().data() + RowOffset(pRow); }
  const TPixel* ScanLine(int pRow) const noexcept { return Pixels().data() + RowOffset(pRow); }
  /// Sets the alpha of all pixels to 255: the platform's text and line functions leave 0 in what they draw.
  void MakeOpaque() noexcept { kiv::MakeOpaque(Pixels()); }

  /// Draws on the picture. The object stays for the bitmap's life, without a context after GetHandle was called and
  /// until the next call of GetCanvas.
  TCanvas& GetCanvas();

  /// The platform's bitmap, not selected into a context; null for an empty picture. It stays this object's.
  HBITMAP GetHandle();
  /// Hands the platform's bitmap to the caller. This picture is empty then.
  [[nodiscard]] TUniqueBitmap Release();
  /// An icon of the picture's size. Raises EInvalidGraphic if the picture is empty.
  TUniqueIcon ToIcon() const;

  /// The picture in another size, well filtered; the alpha's format stays. Sizes are at least 1.
  TBitmap Scaled(int pWidth, int pHeight) const;
  /// The same within a square or rectangle, in its own proportions; never larger than it is.
  TBitmap ScaledDownTo(int pMostWidth, int pMostHeight) const;

  /// Writes at the stream's position. `pQuality`, 1..100, is for JPEG, where what is transparent becomes white.
  /// Raises EInvalidGraphic.
  void SaveToStream(IStream* pStream, TImageFileFormat pFormat, int pQuality = 90) const;
  /// A file that stands is replaced; one that can't be written whole is not left behind.
  void SaveToFile(const std::wstring& pPath, TImageFileFormat pFormat = TImageFileFormat::iffPng,
                  int pQuality = 90) const;

private:
  friend class TCanvas;
  struct TDrawing;

  std::size_t RowOffset(int pRow) const noexcept {
    return static_cast<std::size_t>(pRow) * static_cast<std::size_t>(fWidth);
  }

  TUniqueBitmap fHandle;
  TPixel* fBits = nullptr;
  int fWidth = 0;
  int fHeight = 0;
  TAlphaFormat fAlpha = TAlphaFormat::afIgnored;
  std::unique_ptr<TDrawing> fDrawing;
};

} // namespace kiv
