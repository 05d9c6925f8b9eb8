#pragma once

#include <core/IItemIdList.h>
#include <framework/PropertyValue.h>
#include <graphics/ImageList.h>
#include <viewstate/SystemImages.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

/// The icons of files and folders as an image list for controls, and the numbers that objects have in it.
///
/// The platform keeps one list for the whole process in each of its sizes, and so does this class: GetInstance gives
/// the one that all share. Of a size that the platform hasn't got, the images are scaled into a list of our own, each
/// when it is first needed (see TCustomImageList::Require). Nobody can add to either.
///
/// The operations that find numbers may be called from any thread with COM, and workers do; all others belong to the
/// main thread. What asks the platform about an object may take as long as the object's drive. A number is the same
/// in all sizes; -1 stands for none.
class KIV_EXPORT TKivSystemImageList : public TCustomImageList {
public:
  /// si_Small.
  explicit TKivSystemImageList(TComponent* pOwner = nullptr);
  explicit TKivSystemImageList(TKivImageListSize pSize, TComponent* pOwner = nullptr);
  /// Images of a height in pixels; with another size than si_FreeScaled the height counts for nothing.
  TKivSystemImageList(int pHeight, TComponent* pOwner, TKivImageListSize pSize);
  /// The images of a size as they are to look at some dots per inch; si_FreeScaled stands for small ones here. Without
  /// an owner the list is the caller's.
  static TKivSystemImageList* CreateScaled(TKivImageListSize pSize, int pDestPPI, TComponent* pOwner);
  ~TKivSystemImageList() override;

  std::wstring ClassName() const override { return L"TKivSystemImageList"; }

  /// What the platform tells of a path ("SHGetFileInfo"). With attributes the object needn't exist: only its name
  /// counts, and whether they have that of a folder.
  static int GetFileInfo(const std::wstring& pFilepath, TKivImageListSize pSize, bool pOpened, DWORD pAttributes);
  /// Of an object; -1 for null and for an invalid list.
  static int GetIndexFromItemIdList(IItemIdList* pAbsoluteItemIdList, TKivImageListSize pSize, bool pOpened);
  /// Of files with an extension, given with its point or without. Remembered: after the first time it costs next to
  /// nothing.
  static int GetIndexFromExtension(std::wstring_view pExtension, TKivImageListSize pSize, bool pOpened);
  /// Of a path, without asking its drive: a folder's, server's or share's if it looks like one, else its extension's.
  static int GetIndexFromPathByExt(const std::wstring& pPath, TKivImageListSize pSize, bool pOpened);
  /// Of a path's object, and if that isn't there, what GetIndexFromPathByExt says.
  static int GetIndexFromPath(const std::wstring& pFullPath, TKivImageListSize pSize, bool pOpened);
  /// Of a plain folder. Found out once: the first call decides for closed and opened ones.
  static int GetFolderIconNumber(bool pOpened);
  /// Of a file that no program is known for.
  static int GetUnknownFileIconNumber();
  /// What the platform calls files with an extension ("Text Document"). Remembered.
  static std::wstring GetFileType(std::wstring_view pExtension);

  /// The list of a size that all share, without a background colour and drawn transparently. The library's.
  static TKivSystemImageList* GetInstance(TKivImageListSize pSize);
  /// The same for a width in pixels, 16 to 256; a width just above that of small icons gives small icons.
  static TKivSystemImageList* GetInstance(int pWidth);
  /// The size whose images suit a height in pixels.
  static TKivImageListSize PixelsToSize(int pPixels);
  static TKivImageListSize DefaultSize() noexcept { return TKivImageListSize::si_Small; }

  /// An image in the middle of a rectangle, as large as that allows, on a colour or on nothing. Empty if there is no
  /// such image or the rectangle has no area.
  static TBitmap GetAsBitmap(int pIndex, int pWidth, int pHeight, TColor pBackground = clNone);
  /// Adds an image to a list, in that list's size. Returns its number there; -1 if there is no such image.
  static int CopySystemImageTo(int pIndex, TCustomImageList& pTarget);
  /// A picture that is the caller's; the platform's bitmap stays as it is.
  static TBitmap BitmapFromHBitmap(HBITMAP pBitmap) { return TBitmap::FromHandle(pBitmap); }
  /// Puts images into a list of their own with 32 bits and alpha, whatever list they were in.
  static void ConvertTo32BitImageList(TCustomImageList& pList);

  using TCustomImageList::SetSize;
  TKivImageListSize GetSize() const noexcept { return fSize; }
  /// Shows the images of another size. si_FreeScaled keeps the height that there is. A list that all share stays as it
  /// is: EInvalidOperation, here and below.
  void SetSize(TKivImageListSize pSize);
  /// Shows the images in a height in pixels: those of a size of the platform's if one fits, else scaled ones.
  void Scale(int pPixels);
  /// Of a special folder; -1 if the system hasn't got it.
  int GetSpecialFolderIcon(TKivShellFolder pFolder) const;

  int GetWidth() const override { return GetHeight(); }
  int GetHeight() const override;
  int GetCount() override;
  /// A list that all share stays as it is: whoever is scaled takes the instance for the new size.
  void ChangeScale(int pMultiplier, int pDivisor) override;
  /// The platform's lists are always shared, and scaled ones never: there is no choice.
  void SetShareImages(bool pShare) override;
  /// Raises EInvalidOperation: the images are the platform's.
  void SetHandle(HIMAGELIST pHandle) override;
  void Require(int pIndex) override;
  bool IsReady(int pIndex) override;

protected:
  void CreateList() override;
  void CheckOwn() const override;
  int OverlayImage(int pOverlay) override;

private:
  void Show(TKivImageListSize pSize, int pHeight);
  void Grow(std::size_t pCount);
  void SyncOverlays();

  TKivImageListSize fSize;
  int fHeight = 16; // of si_FreeScaled
  bool fInstance = false;
  // For si_FreeScaled: one of the platform's lists, which all have the same images, and which images there are here.
  ComPtr<IImageList> fSystem;
  std::vector<bool> fMade;
  std::array<int, 16> fOverlays{}; // by their numbers, 1 and more: the image that our list has, -1 for none
};

template <>
struct TEnumNames<TKivImageListSize> {
  static constexpr TEnumName<TKivImageListSize> Values[] = {
      {TKivImageListSize::si_Large, L"si_Large"},           {TKivImageListSize::si_Small, L"si_Small"},
      {TKivImageListSize::si_ExtraLarge, L"si_ExtraLarge"}, {TKivImageListSize::si_SysSmall, L"si_SysSmall"},
      {TKivImageListSize::si_Jumbo, L"si_Jumbo"},           {TKivImageListSize::si_FreeScaled, L"si_FreeScaled"}};
};

} // namespace kiv
