#pragma once

#include <graphics/Bitmap.h>
#include <platform/ComPtr.h>

#include <commctrl.h>
#include <commoncontrols.h>

namespace kiv {

/// A new list of version 6 of the common controls, for images with alpha. Raises EInvalidGraphic.
ComPtr<IImageList> MakeImageList(int pWidth, int pHeight, bool pMasked, int pRoom);

/// The interface of a list of that version, with a reference of its own. Raises EInvalidGraphic for other versions'.
KIV_EXPORT ComPtr<IImageList> ImageListOf(HIMAGELIST pHandle);

/// Draws an image, and over it the image `pOver`, unless that is -1. The size of `pDraw` and its list are filled in.
KIV_EXPORT void DrawImage(IImageList& pList, IMAGELISTDRAWPARAMS pDraw, int pOver);

/// An image of any list with premultiplied alpha, whether it comes from alpha or a mask; with an overlay by the style's
/// bits (`INDEXTOOVERLAYMASK`) or another image over it.
KIV_EXPORT TBitmap ImageOf(IImageList& pList, int pIndex, UINT pOverlay = 0, int pOver = -1);

} // namespace kiv
