#pragma once

#include <graphics/Bitmap.h>
#include <graphics/ImageListApi.h>
#include <platform/ComPtr.h>
#include <platform/Export.h>

namespace kiv {

/// The sizes in which the platform keeps the icons of files and folders ("SHGetImageList"). An icon has the same number
/// in all of them.
enum class TKivImageListSize {
  si_Large,      ///< 32 pixels at 96 dots per inch
  si_Small,      ///< 16
  si_ExtraLarge, ///< 48
  si_SysSmall,   ///< as small as icons in title bars
  si_Jumbo,      ///< 256
  si_FreeScaled  ///< any size, scaled from one of the others
};

class KIV_EXPORT TKivImageListSizeHelper {
public:
  TKivImageListSizeHelper() = delete;

  /// The platform's number (`SHIL_...`); -1 for si_FreeScaled.
  static int ToInt(TKivImageListSize pSize) noexcept;
  /// Pixels at 96 dots per inch; -1 for si_FreeScaled.
  static int GetDefaultHeight(TKivImageListSize pSize) noexcept;
  /// The real size of the icons, asked of the platform; the default height where it doesn't say.
  static int GetSize(TKivImageListSize pSize);
};

/// The platform's own list of a size, which must never be changed; null if there is none, as for si_FreeScaled. Any
/// thread with COM.
KIV_EXPORT ComPtr<IImageList> SystemImages(TKivImageListSize pSize);

/// An icon in any size, at least 1, scaled from the list that suits it best. Empty if there is no such icon.
KIV_EXPORT TBitmap SystemImage(int pIndex, int pSize);

} // namespace kiv
