#pragma once

#include <framework/Set.h>
#include <graphics/Color.h>
#include <graphics/GraphicsObject.h>
#include <platform/Handles.h>

#include <memory>
#include <string>

namespace kiv {

enum class TFontStyle { fsBold, fsItalic, fsUnderline, fsStrikeOut };
using TFontStyles = TSet<TFontStyle>;

/// How letters are smoothed, numbered as the platform's `lfQuality` ("LOGFONT").
enum class TFontQuality {
  fqDefault,
  fqDraft,
  fqProof,
  fqNonAntialiased,
  fqAntialiased,
  fqClearType,
  fqClearTypeNatural
};

/// The fonts that the user has chosen for parts of windows.
enum class TSystemFont {
  sfMessage, ///< dialogs and most controls
  sfIconTitle,
  sfMenu,
  sfStatus, ///< status bars and hints
  sfCaption
};

/// A font: "Segoe UI" of 9 points in the colour of text in windows, unless changed.
class KIV_EXPORT TFont final : public TGraphicsObject {
public:
  TFont();
  /// Takes over a font of the platform's, given as pixels at `pDpi` dots per inch.
  TFont(const LOGFONTW& pFont, int pDpi);
  TFont(const TFont&) = default;
  TFont& operator=(const TFont& pOther);
  ~TFont() override;

  /// A font of the user's choice in the size for `pDpi` dots per inch ("NONCLIENTMETRICS").
  static TFont System(TSystemFont pWhich, int pDpi);
  /// True if the system has fonts of a name. Case doesn't count.
  static bool IsInstalled(const std::wstring& pName);

  std::wstring ClassName() const override { return L"TFont"; }
  void Assign(const TPersistent* pSource) override;
  /// The same look; who listens doesn't count.
  friend bool operator==(const TFont& pA, const TFont& pB) { return pA.fData == pB.fData; }

  const std::wstring& GetFontName() const noexcept { return fData.name; }
  /// The platform takes at most 31 characters; more are cut off when the handle is made.
  void SetFontName(const std::wstring& pName) { Put(fData.name, pName); }

  /// In pixels at GetPixelsPerInch(): negative for the height of letters, positive for that of a line. 0: the
  /// platform's default.
  int GetHeight() const noexcept { return fData.height; }
  void SetHeight(int pHeight);
  /// The height in points (1/72 inch), negative for that of a line.
  int GetSize() const noexcept;
  void SetSize(int pPoints);
  /// The dots per inch that the height is meant for.
  int GetPixelsPerInch() const noexcept { return fData.dpi; }
  /// Keeps the size on the screen while the dots per inch change. Going back gives the former height again, however
  /// often. Values below 1 are ignored.
  void ScaleForDpi(int pDpi);

  TFontStyles GetStyle() const noexcept { return fData.style; }
  void SetStyle(TFontStyles pStyle) { Put(fData.style, pStyle); }
  TColor GetColor() const noexcept { return fData.color; }
  void SetColor(TColor pColor) { Put(fData.color, pColor); }
  /// `..._CHARSET` ("LOGFONT").
  BYTE GetCharset() const noexcept { return fData.charset; }
  void SetCharset(BYTE pCharset) { Put(fData.charset, pCharset); }
  TFontQuality GetQuality() const noexcept { return fData.quality; }
  void SetQuality(TFontQuality pQuality) { Put(fData.quality, pQuality); }

  LOGFONTW GetLogFont() const;
  /// The platform's font. It stays the library's; it is good until a property of this object changes or the object
  /// goes. Raises EOSError if the platform makes none.
  HFONT GetHandle() const { return GetSharedHandle()->Get(); }
  /// For whoever needs the handle longer, such as a window that it was set for.
  std::shared_ptr<const TUniqueFont> GetSharedHandle() const;

private:
  struct TData {
    std::wstring name = L"Segoe UI";
    int height = 0;
    int dpi = 0;
    // What the height was set to, so that scaling doesn't add up its roundings.
    int givenHeight = 0;
    int givenDpi = 0;
    LONG weight = FW_NORMAL; // of what isn't bold
    TFontStyles style;
    TColor color = clWindowText;
    BYTE charset = DEFAULT_CHARSET;
    TFontQuality quality = TFontQuality::fqDefault;

    bool operator==(const TData&) const = default;
  };

  TData fData;
  mutable LOGFONTW fMadeFrom{};
  mutable std::shared_ptr<const TUniqueFont> fHandle;
};

} // namespace kiv
