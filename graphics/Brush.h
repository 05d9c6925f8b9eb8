#pragma once

#include <graphics/Color.h>
#include <graphics/GraphicsObject.h>
#include <platform/Handles.h>

#include <memory>

namespace kiv {

enum class TBrushStyle {
  bsSolid,
  bsClear ///< leaves what is there, also behind text
};

/// What areas are filled with; white unless changed.
class KIV_EXPORT TBrush final : public TGraphicsObject {
public:
  TBrush() = default;
  TBrush(const TBrush&) = default;
  TBrush& operator=(const TBrush& pOther);
  ~TBrush() override;

  std::wstring ClassName() const override { return L"TBrush"; }
  void Assign(const TPersistent* pSource) override;
  friend bool operator==(const TBrush& pA, const TBrush& pB) { return pA.fData == pB.fData; }

  TColor GetColor() const noexcept { return fData.color; }
  /// Makes the brush solid; clNone makes it clear.
  void SetColor(TColor pColor);
  TBrushStyle GetStyle() const noexcept { return fData.style; }
  void SetStyle(TBrushStyle pStyle) { Put(fData.style, pStyle); }

  /// The platform's brush in the colour as it is now. It stays the library's; it is good until a property of this
  /// object or a system colour changes, or the object goes.
  HBRUSH GetHandle() const { return GetSharedHandle()->Get(); }
  std::shared_ptr<const TUniqueBrush> GetSharedHandle() const;

private:
  struct TData {
    TColor color = clWhite;
    TBrushStyle style = TBrushStyle::bsSolid;
    bool operator==(const TData&) const = default;
  };

  TData fData;
  mutable TColor fMadeFrom = clNone; // also for a clear one
  mutable std::shared_ptr<const TUniqueBrush> fHandle;
};

} // namespace kiv
