#include <graphics/Brush.h>

#include <framework/Exceptions.h>
#include <graphics/SharedHandle.h>

namespace kiv {

namespace {

detail::TSharedHandles<TColor, TUniqueBrush>& BrushHandles() {
  static auto* const handles = new detail::TSharedHandles<TColor, TUniqueBrush>; // brushes may outlive the statics
  return *handles;
}

} // namespace

TBrush& TBrush::operator=(const TBrush& pOther) {
  Put(fData, TData(pOther.fData));
  return *this;
}

TBrush::~TBrush() = default;

void TBrush::Assign(const TPersistent* pSource) {
  if (const auto* const brush = dynamic_cast<const TBrush*>(pSource)) {
    *this = *brush;
  } else {
    TGraphicsObject::Assign(pSource);
  }
}

void TBrush::SetColor(TColor pColor) {
  TData data = fData;
  data.color = pColor;
  data.style = pColor == clNone ? TBrushStyle::bsClear : TBrushStyle::bsSolid;
  Put(fData, data);
}

std::shared_ptr<const TUniqueBrush> TBrush::GetSharedHandle() const {
  const TColor wanted = fData.style == TBrushStyle::bsClear ? clNone : ColorToRGB(fData.color);
  if (!fHandle || wanted != fMadeFrom) {
    fHandle = BrushHandles().Get(wanted, [wanted] {
      // Closing a stock object does nothing.
      TUniqueBrush brush(wanted == clNone ? static_cast<HBRUSH>(GetStockObject(NULL_BRUSH))
                                          : CreateSolidBrush(static_cast<COLORREF>(wanted)));
      if (!brush) throw EOSError(GetLastError(), L"The brush can't be made");
      return brush;
    });
    fMadeFrom = wanted;
  }
  return fHandle;
}

} // namespace kiv
