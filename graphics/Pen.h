#pragma once

#include <graphics/Color.h>
#include <graphics/GraphicsObject.h>
#include <platform/Handles.h>

#include <compare>
#include <memory>

namespace kiv {

/// Numbered as the platform's `PS_...` ("CreatePen").
enum class TPenStyle {
  psSolid = 0,
  psDash = 1,
  psDot = 2,
  psClear = 5 ///< draws nothing
};

/// What lines are drawn with; black and one pixel wide unless changed.
class KIV_EXPORT TPen final : public TGraphicsObject {
public:
  TPen() = default;
  TPen(const TPen&) = default;
  TPen& operator=(const TPen& pOther);
  ~TPen() override;

  std::wstring ClassName() const override { return L"TPen"; }
  void Assign(const TPersistent* pSource) override;
  friend bool operator==(const TPen& pA, const TPen& pB) { return pA.fData == pB.fData; }

  TColor GetColor() const noexcept { return fData.color; }
  void SetColor(TColor pColor) { Put(fData.color, pColor); }
  /// In pixels. Dashes and dots are for a width of 1; wider pens are solid.
  int GetWidth() const noexcept { return fData.width; }
  void SetWidth(int pWidth) { Put(fData.width, pWidth); }
  TPenStyle GetStyle() const noexcept { return fData.style; }
  void SetStyle(TPenStyle pStyle) { Put(fData.style, pStyle); }

  /// The platform's pen in the colour as it is now. It stays the library's; it is good until a property of this object
  /// or a system colour changes, or the object goes.
  HPEN GetHandle() const { return GetSharedHandle()->Get(); }
  std::shared_ptr<const TUniquePen> GetSharedHandle() const;

private:
  struct TData {
    TColor color = clBlack;
    int width = 1;
    TPenStyle style = TPenStyle::psSolid;
    auto operator<=>(const TData&) const = default;
  };

  TData fData;
  mutable TData fMadeFrom;
  mutable std::shared_ptr<const TUniquePen> fHandle;
};

} // namespace kiv
