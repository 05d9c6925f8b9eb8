#pragma once

#include <framework/Component.h>
#include <framework/PropertyValue.h>
#include <graphics/Bitmap.h>
#include <platform/ComPtr.h>

#include <commctrl.h>
#include <commoncontrols.h>

#include <array>
#include <vector>

namespace kiv {

class TCustomImageList;

/// How images are mixed with a colour or their background.
enum class TDrawingStyle {
  dsFocus,      ///< mixed with a quarter of the blend colour
  dsSelected,   ///< mixed with half of it
  dsNormal,     ///< over the background colour, if there is one
  dsTransparent ///< over what is there
};

/// What an image tells of its object beyond its looks.
enum class TImageEffect {
  ieNone,
  ieCut,     ///< on its way to another place, or hidden: faded
  ieDisabled ///< without colours, and faded
};

/// A listener to an image list: a control's member. It goes away by itself when either end does.
class KIV_EXPORT TChangeLink {
public:
  TChangeLink() = default;
  TChangeLink(const TChangeLink&) = delete;
  TChangeLink& operator=(const TChangeLink&) = delete;
  ~TChangeLink();

  /// Called after images, sizes or colours have changed, with the list. May destroy anything.
  const TNotifyEvent& GetOnChange() const noexcept { return fOnChange; }
  void SetOnChange(TNotifyEvent pEvent) { fOnChange = std::move(pEvent); }
  /// Null if it isn't registered, or if the list has gone.
  TCustomImageList* GetSender() const noexcept { return fSender; }

private:
  friend class TCustomImageList;

  TCustomImageList* fSender = nullptr;
  TNotifyEvent fOnChange;
};

/// Images of one size with alpha, known by their numbers from 0 on, in a list of the platform's ("IImageList") that
/// its controls take as it is.
///
/// The list is made when it is first needed. Main thread only.
///
/// **Shared.** With ShareImages the list is somebody else's, such as the system's own list of icons. It is never added
/// to, scaled, coloured or destroyed then: what would change it raises EInvalidOperation, and the background colour is
/// used by our own drawing only.
class KIV_EXPORT TCustomImageList : public TComponent {
public:
  /// 16 by 16 pixels.
  explicit TCustomImageList(TComponent* pOwner = nullptr);
  ~TCustomImageList() override;

  /// Registers the class's properties, once. A derived class calls it before it publishes its own: both happen while
  /// the library is loaded, in no order that could be relied upon.
  static void PublishProperties();

  std::wstring ClassName() const override { return L"TCustomImageList"; }
  /// Copies the images of another list into a list of this one's own.
  void Assign(const TPersistent* pSource) override;

  /// The platform's list; good until images of another size or another handle come. Raises EInvalidGraphic if it can't
  /// be made.
  HIMAGELIST GetHandle();
  bool HandleAllocated() const noexcept { return static_cast<bool>(fList); }
  /// Takes a list of version 6 of the common controls: as the owner, or, if ShareImages is set, as a guest. Null lets
  /// go of what is there. Raises EInvalidGraphic for lists of other versions.
  virtual void SetHandle(HIMAGELIST pHandle);

  /// The size of all images, at least 1.
  virtual int GetWidth() const { return fWidth; }
  virtual int GetHeight() const { return fHeight; }
  /// Removes all images if it is a change.
  void SetSize(int pWidth, int pHeight);
  void SetWidth(int pWidth) { SetSize(pWidth, GetHeight()); }
  void SetHeight(int pHeight) { SetSize(GetWidth(), pHeight); }
  virtual int GetCount();

  /// Adds a picture of the list's size, or a strip of several side by side. Returns the number of the first. Raises
  /// EInvalidGraphic for another size.
  int Add(const TBitmap& pImages);
  /// The same for pictures without alpha: one colour in them is transparent; clDefault: that of the lower left corner.
  int AddMasked(const TBitmap& pImages, TColor pTransparent);
  /// An icon of any size.
  int AddIcon(HICON pIcon);
  /// All images of another list, scaled if need be.
  void AddImages(TCustomImageList& pSource);
  /// Numbers outside of the list raise EInvalidGraphic, here and below.
  void Replace(int pIndex, const TBitmap& pImage);
  void ReplaceIcon(int pIndex, HICON pIcon);
  /// The images behind it move down by one.
  void Delete(int pIndex);
  void Clear();
  /// Makes an image available as overlay 1..15.
  void Overlay(int pIndex, int pOverlay);

  /// An image with premultiplied alpha, as it is drawn with an overlay (0: none) and without any mixing. Empty for a
  /// number outside of the list.
  TBitmap GetBitmap(int pIndex, int pOverlay = 0);
  /// The same as an icon; null for a number outside of the list.
  TUniqueIcon GetIcon(int pIndex);

  /// Draws in the list's drawing style. Numbers outside of the list draw nothing.
  void Draw(TCanvas& pCanvas, int pX, int pY, int pIndex, bool pEnabled = true);
  void Draw(TCanvas& pCanvas, int pX, int pY, int pIndex, TDrawingStyle pStyle, TImageEffect pEffect, int pOverlay = 0);

  /// A control is about to show an image through the handle: a list that makes its images one by one makes it now.
  virtual void Require(int pIndex);
  /// Whether what Require makes is there. For numbers outside of the list true as well. Cheap: asked while painting.
  virtual bool IsReady(int pIndex);

  /// Brings all images to another scale, from those that were added: there and back leaves no trace. A shared list
  /// can't be scaled; nothing happens to it.
  virtual void ChangeScale(int pMultiplier, int pDivisor);

  /// Between the two listeners aren't told of each change, but once in the end. They nest.
  void BeginUpdate() noexcept { ++fUpdates; }
  void EndUpdate();
  void RegisterChanges(TChangeLink* pLink);
  void UnregisterChanges(TChangeLink* pLink) noexcept;

  bool GetShareImages() const noexcept { return fShareImages; }
  virtual void SetShareImages(bool pShare);
  /// The platform keeps a mask with each image, for functions that don't know of alpha. True unless changed, which
  /// removes all images.
  bool GetMasked() const noexcept { return fMasked; }
  void SetMasked(bool pMasked);
  TColor GetBkColor() const noexcept { return fBkColor; }
  void SetBkColor(TColor pColor);
  TColor GetBlendColor() const noexcept { return fBlendColor; }
  void SetBlendColor(TColor pColor);
  TDrawingStyle GetDrawingStyle() const noexcept { return fDrawingStyle; }
  void SetDrawingStyle(TDrawingStyle pStyle);
  const TNotifyEvent& GetOnChange() const noexcept { return fOnChange; }
  void SetOnChange(TNotifyEvent pEvent) { fOnChange = std::move(pEvent); }

protected:
  /// The list, made now if it isn't there.
  IImageList& List();
  /// Makes the list when it is first needed. An override that knows one calls UseList.
  virtual void CreateList();
  /// Takes a list as it is, with its size. Nobody is told.
  void UseList(ComPtr<IImageList> pList);
  /// Lets the list go; the next use makes one anew. Listeners are told.
  void DropList();
  void Change();
  /// Raises EInvalidOperation if the list's images aren't the caller's to change.
  virtual void CheckOwn() const;
  /// Puts a picture of the list's size in the place of an image that is there; with -1 adds it. Nobody is told.
  void Put(int pIndex, const TBitmap& pImage);
  /// The image that stands for an overlay and is drawn by us; -1: there is none, or the platform draws it.
  virtual int OverlayImage(int pOverlay);

private:
  void CheckSize(const TBitmap& pImages, bool pStrip) const;
  void CheckIndex(int pIndex);
  void ForgetList() noexcept;
  void PutImages(TCustomImageList& pSource);
  void PassBkColor();
  void Fill(ComPtr<IImageList> pFrom);
  void SetOverlays(const std::array<int, 16>& pOverlays);
  UINT OverlayBits(int pOverlay) const noexcept;

  ComPtr<IImageList> fList;
  ComPtr<IImageList> fUnscaled;  // what the present images were made from, if they are scaled
  std::array<int, 16> fOverlays; // image of each overlay, -1 for none
  std::vector<TChangeLink*> fLinks;
  TNotifyEvent fOnChange;
  int fWidth = 16;
  int fHeight = 16;
  int fUpdates = 0;
  bool fChanged = false;
  bool fShareImages = false;
  bool fMasked = true;
  TColor fBkColor = clNone;
  TColor fBlendColor = clNone;
  TDrawingStyle fDrawingStyle = TDrawingStyle::dsNormal;
};

/// An image list for applications to place: publishes the properties of its base class.
class KIV_EXPORT TImageList : public TCustomImageList {
public:
  using TCustomImageList::TCustomImageList;
  ~TImageList() override;

  std::wstring ClassName() const override { return L"TImageList"; }
};

template <>
struct TEnumNames<TDrawingStyle> {
  static constexpr TEnumName<TDrawingStyle> Values[] = {{TDrawingStyle::dsFocus, L"dsFocus"},
                                                        {TDrawingStyle::dsSelected, L"dsSelected"},
                                                        {TDrawingStyle::dsNormal, L"dsNormal"},
                                                        {TDrawingStyle::dsTransparent, L"dsTransparent"}};
};

} // namespace kiv
