#include <graphics/Font.h>

#include <framework/Exceptions.h>
#include <framework/ScaledPixels.h>
#include <graphics/SharedHandle.h>
#include <platform/DpiAwareness.h>

#include <algorithm>
#include <cstring>

namespace kiv {

namespace {

constexpr int PointsPerInch = 72;

// All bytes of it, those behind the name's end included, are set by GetLogFont.
struct TByBytes {
  LOGFONTW font;
  friend bool operator<(const TByBytes& a, const TByBytes& b) {
    return std::memcmp(&a.font, &b.font, sizeof(LOGFONTW)) < 0;
  }
};

detail::TSharedHandles<TByBytes, TUniqueFont>& FontHandles() {
  static auto* const handles = new detail::TSharedHandles<TByBytes, TUniqueFont>; // fonts may outlive the statics
  return *handles;
}

} // namespace

TFont::TFont() {
  fData.dpi = fData.givenDpi = GetSystemDpi();
  fData.height = fData.givenHeight = -MulDivRounded(9, fData.dpi, PointsPerInch);
}

TFont::TFont(const LOGFONTW& pFont, int pDpi) {
  fData.name = pFont.lfFaceName;
  fData.height = fData.givenHeight = pFont.lfHeight;
  fData.dpi = fData.givenDpi = std::max(pDpi, 1);
  if (pFont.lfWeight >= FW_BOLD) {
    fData.style.Include(TFontStyle::fsBold);
  } else if (pFont.lfWeight != FW_DONTCARE) {
    fData.weight = pFont.lfWeight;
  }
  fData.style.Put(TFontStyle::fsItalic, pFont.lfItalic != 0);
  fData.style.Put(TFontStyle::fsUnderline, pFont.lfUnderline != 0);
  fData.style.Put(TFontStyle::fsStrikeOut, pFont.lfStrikeOut != 0);
  fData.charset = pFont.lfCharSet;
  if (pFont.lfQuality <= CLEARTYPE_NATURAL_QUALITY) fData.quality = static_cast<TFontQuality>(pFont.lfQuality);
}

TFont& TFont::operator=(const TFont& pOther) {
  Put(fData, TData(pOther.fData)); // a copy: the handler may change the other one
  return *this;
}

TFont::~TFont() = default;

void TFont::Assign(const TPersistent* pSource) {
  if (const auto* const font = dynamic_cast<const TFont*>(pSource)) {
    *this = *font;
  } else {
    TGraphicsObject::Assign(pSource);
  }
}

void TFont::SetHeight(int pHeight) {
  TData data = fData;
  data.height = data.givenHeight = pHeight;
  data.givenDpi = data.dpi;
  Put(fData, data);
}

int TFont::GetSize() const noexcept {
  return -MulDivRounded(fData.height, PointsPerInch, fData.dpi);
}

void TFont::SetSize(int pPoints) {
  SetHeight(-MulDivRounded(pPoints, fData.dpi, PointsPerInch));
}

void TFont::ScaleForDpi(int pDpi) {
  if (pDpi < 1) return;
  TData data = fData;
  data.dpi = pDpi;
  data.height = MulDivRounded(data.givenHeight, pDpi, data.givenDpi);
  Put(fData, data);
}

LOGFONTW TFont::GetLogFont() const {
  LOGFONTW font{};
  font.lfHeight = fData.height;
  font.lfWeight = fData.style.Contains(TFontStyle::fsBold) ? FW_BOLD : fData.weight;
  font.lfItalic = fData.style.Contains(TFontStyle::fsItalic);
  font.lfUnderline = fData.style.Contains(TFontStyle::fsUnderline);
  font.lfStrikeOut = fData.style.Contains(TFontStyle::fsStrikeOut);
  font.lfCharSet = fData.charset;
  font.lfQuality = static_cast<BYTE>(fData.quality);
  fData.name.copy(font.lfFaceName, LF_FACESIZE - 1);
  return font;
}

std::shared_ptr<const TUniqueFont> TFont::GetSharedHandle() const {
  const LOGFONTW wanted = GetLogFont();
  if (!fHandle || std::memcmp(&wanted, &fMadeFrom, sizeof(wanted)) != 0) {
    fHandle = FontHandles().Get({wanted}, [&wanted] {
      TUniqueFont font(CreateFontIndirectW(&wanted));
      if (!font) throw EOSError(GetLastError(), L"The font can't be made");
      return font;
    });
    fMadeFrom = wanted;
  }
  return fHandle;
}

} // namespace kiv
