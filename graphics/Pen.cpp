#include <graphics/Pen.h>

#include <framework/Exceptions.h>
#include <graphics/SharedHandle.h>

namespace kiv {

TPen& TPen::operator=(const TPen& pOther) {
  Put(fData, TData(pOther.fData));
  return *this;
}

TPen::~TPen() = default;

void TPen::Assign(const TPersistent* pSource) {
  if (const auto* const pen = dynamic_cast<const TPen*>(pSource)) {
    *this = *pen;
  } else {
    TGraphicsObject::Assign(pSource);
  }
}

std::shared_ptr<const TUniquePen> TPen::GetSharedHandle() const {
  static auto* const handles = new detail::TSharedHandles<TData, TUniquePen>; // pens may outlive the statics
  TData wanted = fData;
  wanted.color = ColorToRGB(fData.color);
  if (!fHandle || wanted != fMadeFrom) {
    fHandle = handles->Get(wanted, [&wanted] {
      TUniquePen pen(CreatePen(static_cast<int>(wanted.style), wanted.width, static_cast<COLORREF>(wanted.color)));
      if (!pen) throw EOSError(GetLastError(), L"The pen can't be made");
      return pen;
    });
    fMadeFrom = wanted;
  }
  return fHandle;
}

} // namespace kiv
