// The properties that fonts and image lists publish.
#include <framework/PropertyRegistry.h>
#include <graphics/Font.h>
#include <graphics/ImageList.h>

namespace kiv {

TImageList::~TImageList() = default;

template <>
struct TEnumNames<TFontStyle> {
  static constexpr TEnumName<TFontStyle> Values[] = {{TFontStyle::fsBold, L"fsBold"},
                                                     {TFontStyle::fsItalic, L"fsItalic"},
                                                     {TFontStyle::fsUnderline, L"fsUnderline"},
                                                     {TFontStyle::fsStrikeOut, L"fsStrikeOut"}};
};

template <>
struct TEnumNames<TFontQuality> {
  static constexpr TEnumName<TFontQuality> Values[] = {{TFontQuality::fqDefault, L"fqDefault"},
                                                       {TFontQuality::fqDraft, L"fqDraft"},
                                                       {TFontQuality::fqProof, L"fqProof"},
                                                       {TFontQuality::fqNonAntialiased, L"fqNonAntialiased"},
                                                       {TFontQuality::fqAntialiased, L"fqAntialiased"},
                                                       {TFontQuality::fqClearType, L"fqClearType"},
                                                       {TFontQuality::fqClearTypeNatural, L"fqClearTypeNatural"}};
};

namespace {

bool Publish() {
  // Points, not pixels: what is saved on one screen is read on another.
  PublishClass<TFont, TPersistent>(L"TFont", L"A font.")
      .Property(L"Name", &TFont::GetFontName, &TFont::SetFontName, L"Segoe UI", L"Name of the typeface.")
      .Property(L"Size", &TFont::GetSize, &TFont::SetSize, 9, L"Height of letters in points; negative: that of a line.")
      .Property(L"Style", &TFont::GetStyle, &TFont::SetStyle, TFontStyles(), L"Bold, italic and the like.")
      .Property(L"Color", &TFont::GetColor, &TFont::SetColor, clWindowText, L"Colour of text.")
      .Property(L"Charset", &TFont::GetCharset, &TFont::SetCharset, BYTE{DEFAULT_CHARSET}, L"The platform's number.")
      .Property(L"Quality", &TFont::GetQuality, &TFont::SetQuality, TFontQuality::fqDefault,
                L"How letters are smoothed.");
  PublishClass<TCustomImageList>(L"TCustomImageList", L"Images of one size.")
      .Property(L"DrawingStyle", &TCustomImageList::GetDrawingStyle, &TCustomImageList::SetDrawingStyle,
                TDrawingStyle::dsNormal, L"How images are mixed with a colour or their background.")
      .Property(L"BkColor", &TCustomImageList::GetBkColor, &TCustomImageList::SetBkColor, clNone,
                L"Colour behind the images.")
      .Property(L"ShareImages", &TCustomImageList::GetShareImages, &TCustomImageList::SetShareImages, false,
                L"The platform's list belongs to somebody else.");
  PublishClass<TImageList, TCustomImageList>(L"TImageList", L"Images of one size for controls.")
      .Property(L"Width", &TImageList::GetWidth, &TImageList::SetWidth, 16, L"Of each image, in pixels.")
      .Property(L"Height", &TImageList::GetHeight, &TImageList::SetHeight, 16, L"Of each image, in pixels.")
      .Property(L"Masked", &TImageList::GetMasked, &TImageList::SetMasked, true,
                L"Keeps a mask with each image, for functions that don't know of alpha.")
      .Property(L"BlendColor", &TImageList::GetBlendColor, &TImageList::SetBlendColor, clNone,
                L"What selected images are mixed with.");
  return true;
}
[[maybe_unused]] const bool gPublished = Publish();

} // namespace

} // namespace kiv
