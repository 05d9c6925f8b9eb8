#pragma once

#include <graphics/Bitmap.h>
#include <graphics/GraphicsObject.h>

#include <string>
#include <utility>

namespace kiv {

/// What an image control shows: a picture that tells when it is exchanged.
class KIV_EXPORT TPicture final : public TGraphicsObject {
public:
  TPicture() = default;
  ~TPicture() override;

  std::wstring ClassName() const override { return L"TPicture"; }
  /// Takes over a TPicture's or TBitmap's content.
  void Assign(const TPersistent* pSource) override;

  const TBitmap& GetBitmap() const noexcept { return fBitmap; }
  void SetBitmap(TBitmap pBitmap);
  /// Raises EInvalidGraphic, and keeps what is there.
  void LoadFromFile(const std::wstring& pPath, int pSize = 0) { SetBitmap(TBitmap::FromFile(pPath, pSize)); }
  bool IsEmpty() const noexcept { return fBitmap.IsEmpty(); }
  int GetWidth() const noexcept { return fBitmap.GetWidth(); }
  int GetHeight() const noexcept { return fBitmap.GetHeight(); }

private:
  TBitmap fBitmap;
};

} // namespace kiv
