#pragma once

#include <forms/Messages.h>
#include <forms/ShortCut.h>
#include <framework/Component.h>
#include <framework/OwnerDrawState.h>
#include <graphics/Canvas.h>
#include <graphics/ImageList.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kiv {

class TMenu;
class TMenuItem;

/// Draw an item in a rectangle of the canvas; set the last to false if the menu shall do it all the same.
using TMenuDrawItemEvent = TEvent<TPersistent*, TCanvas&, const RECT&, TOwnerDrawState>;
/// The size of an item, in pixels, that its menu proposes.
using TMenuMeasureItemEvent = TEvent<TPersistent*, TCanvas&, int&, int&>;

enum class TMenuBreak {
  mbNone,
  mbBreak,   ///< begins a column
  mbBarBreak ///< the same, behind a line
};

/// What TMenu::FindItem is given.
enum class TFindItemKind {
  fkCommand, ///< TMenuItem::GetCommand
  fkHandle   ///< the platform's handle of the menu that an item opens
};

/// One entry of a menu, with the entries below it if it opens another menu. Its caption "-" makes it a line.
///
/// An item without an owner belongs to the item that it is added to. Changes show when the menu opens the next time.
/// Main thread only.
class KIV_EXPORT TMenuItem : public TComponent {
public:
  explicit TMenuItem(TComponent* pOwner = nullptr);
  ~TMenuItem() override;
  std::wstring ClassName() const override { return L"TMenuItem"; }

  const std::wstring& GetCaption() const noexcept { return fCaption; }
  void SetCaption(std::wstring pCaption) { fCaption = std::move(pCaption); }
  bool IsLine() const noexcept { return fCaption == L"-"; }
  bool IsEnabled() const noexcept { return fEnabled; }
  void SetEnabled(bool pEnabled) noexcept { fEnabled = pEnabled; }
  bool IsVisible() const noexcept { return fVisible; }
  void SetVisible(bool pVisible) noexcept { fVisible = pVisible; }
  bool IsChecked() const noexcept { return fChecked; }
  /// Takes the mark from the others of its radio group.
  void SetChecked(bool pChecked);
  /// A click changes the check mark.
  bool IsAutoCheck() const noexcept { return fAutoCheck; }
  void SetAutoCheck(bool pAutoCheck) noexcept { fAutoCheck = pAutoCheck; }
  /// One of the items of its group in the same menu has the mark, a dot.
  bool IsRadioItem() const noexcept { return fRadioItem; }
  void SetRadioItem(bool pRadioItem) noexcept { fRadioItem = pRadioItem; }
  int GetGroupIndex() const noexcept { return fGroupIndex; }
  void SetGroupIndex(int pGroup) noexcept { fGroupIndex = pGroup; }
  /// Drawn in bold, and done by a double click on what the menu is for.
  bool IsDefault() const noexcept { return fDefault; }
  /// Takes it from the others of the same menu.
  void SetDefault(bool pDefault);
  TMenuBreak GetBreak() const noexcept { return fBreak; }
  void SetBreak(TMenuBreak pBreak) noexcept { fBreak = pBreak; }
  TShortCut GetShortCut() const noexcept { return fShortCut; }
  void SetShortCut(TShortCut pShortCut) noexcept { fShortCut = pShortCut; }
  /// In the images of the menu, or of the parent item's SubMenuImages; -1 for none. A check mark takes its place.
  int GetImageIndex() const noexcept { return fImageIndex; }
  void SetImageIndex(int pIndex) noexcept { fImageIndex = pIndex; }
  /// A picture of its own.
  void SetBitmap(TBitmap pBitmap) { fBitmap = std::move(pBitmap); }
  /// Images of the items below, if not the menu's. Not owned.
  TCustomImageList* GetSubMenuImages() const noexcept { return fSubMenuImages; }
  void SetSubMenuImages(TCustomImageList* pImages);
  /// Becomes the application's hint while the item is lit.
  const std::wstring& GetHint() const noexcept { return fHint; }
  void SetHint(std::wstring pHint) { fHint = std::move(pHint); }

  // --- items below ---
  int GetCount() const noexcept { return static_cast<int>(fItems.size()); }
  /// Raises EArgumentOutOfRange for a number outside.
  TMenuItem* GetItem(int pIndex) const;
  /// Raises EInvalidOperation for an item that stands in a menu already.
  void Add(TMenuItem* pItem) { Insert(GetCount(), pItem); }
  void Insert(int pIndex, TMenuItem* pItem);
  /// Takes an item out; it stays its owner's, and if that is this item it is handed to the caller.
  void Remove(TMenuItem* pItem);
  void Delete(int pIndex) { Remove(GetItem(pIndex)); }
  /// Takes all items out and destroys those that this item owns.
  void Clear();
  int IndexOf(const TMenuItem* pItem) const noexcept;
  /// Among all below; null if there is none.
  TMenuItem* Find(const std::wstring& pCaption) const;
  /// A line, if there is none at the end already.
  void AddSeparator();
  TMenuItem* GetParent() const noexcept { return fParent; }
  /// The menu that it stands in, at whatever depth; null if it stands in none.
  TMenu* GetParentMenu() const noexcept;
  /// The number by which the platform knows it. No two items have the same.
  WORD GetCommand() const noexcept { return fCommand; }

  /// What choosing it does: changes the check mark, fires OnClick. Nothing if it isn't enabled. For an item with others
  /// below it comes before that menu opens.
  virtual void Click();
  const TNotifyEvent& GetOnClick() const noexcept { return fOnClick; }
  void SetOnClick(TNotifyEvent pEvent) { fOnClick = std::move(pEvent); }
  /// With one of these, or OwnerDraw of its menu, the item is drawn by the application.
  const TMenuDrawItemEvent& GetOnDrawItem() const noexcept { return fOnDrawItem; }
  void SetOnDrawItem(TMenuDrawItemEvent pEvent) { fOnDrawItem = std::move(pEvent); }
  const TMenuMeasureItemEvent& GetOnMeasureItem() const noexcept { return fOnMeasureItem; }
  void SetOnMeasureItem(TMenuMeasureItemEvent pEvent) { fOnMeasureItem = std::move(pEvent); }

protected:
  friend class TMenu;
  /// The default draws image, text and short cut in the platform's colours.
  virtual void DrawItem(TCanvas& pCanvas, const RECT& pRect, TOwnerDrawState pState, int pDpi);
  virtual void MeasureItem(TCanvas& pCanvas, int& pWidth, int& pHeight, int pDpi);
  void Notification(TComponent* pComponent, TOperation pOperation) override;

private:
  TCustomImageList* Images() const noexcept;
  TBitmap Picture() const;

  TMenuItem* fParent = nullptr;
  TMenu* fMenu = nullptr; // of the root item
  std::vector<TMenuItem*> fItems;
  std::wstring fCaption;
  std::wstring fHint;
  WORD fCommand;
  TShortCut fShortCut = scNone;
  int fImageIndex = -1;
  int fGroupIndex = 0;
  TMenuBreak fBreak = TMenuBreak::mbNone;
  bool fEnabled = true;
  bool fVisible = true;
  bool fChecked = false;
  bool fAutoCheck = false;
  bool fRadioItem = false;
  bool fDefault = false;
  TBitmap fBitmap;
  TCustomImageList* fSubMenuImages = nullptr;
  const TComponent* fImagesKey = nullptr;
  TNotifyEvent fOnClick;
  TMenuDrawItemEvent fOnDrawItem;
  TMenuMeasureItemEvent fOnMeasureItem;
};

/// A tree of items and how it becomes the platform's menus.
class KIV_EXPORT TMenu : public TComponent {
public:
  explicit TMenu(TComponent* pOwner = nullptr);
  ~TMenu() override;
  std::wstring ClassName() const override { return L"TMenu"; }

  /// The root, whose items are the first level.
  TMenuItem& GetItems() noexcept { return fItems; }
  const TMenuItem& GetItems() const noexcept { return fItems; }
  /// Not owned.
  TCustomImageList* GetImages() const noexcept { return fImages; }
  void SetImages(TCustomImageList* pImages);
  /// The items draw themselves, in the platform's look unless OnDrawItem says otherwise.
  bool IsOwnerDraw() const noexcept { return fOwnerDraw; }
  void SetOwnerDraw(bool pOwnerDraw) noexcept { fOwnerDraw = pOwnerDraw; }
  bool IsRightToLeft() const noexcept { return fRightToLeft; }
  void SetRightToLeft(bool pRightToLeft) noexcept { fRightToLeft = pRightToLeft; }

  /// By what the platform's messages name an item with; null if it is none of this menu's.
  TMenuItem* FindItem(std::uintptr_t pValue, TFindItemKind pKind) const;
  TMenuItem* FindCommand(WORD pCommand) const { return FindItem(pCommand, TFindItemKind::fkCommand); }
  /// An enabled item whose short cut is a key message is clicked; false if there is none.
  bool IsShortCut(const TMessage& pMessage);
  /// A platform menu of the items as they are now, which the caller destroys before this menu.
  HMENU CreateHandle(int pDpi);
  /// What the window of a menu does with its messages: opens levels, draws, tells hints. False if it is none for here.
  bool HandleMessage(TMessage& pMessage);

protected:
  void Notification(TComponent* pComponent, TOperation pOperation) override;

private:
  void Fill(HMENU pHandle, const TMenuItem& pItem);
  void AppendItem(HMENU pHandle, TMenuItem& pItem, UINT pPosition);
  void SetPicture(MENUITEMINFOW& pInfo, TMenuItem& pItem);
  bool IsDrawn(const TMenuItem& pItem) const;
  bool HandleInit(HMENU pHandle);
  void HandleSelect(const TMessage& pMessage);
  bool HandleMeasure(TMessage& pMessage);
  bool HandleDraw(TMessage& pMessage);
  bool HandleChar(TMessage& pMessage);

  TMenuItem fItems;
  TCustomImageList* fImages = nullptr;
  const TComponent* fImagesKey = nullptr;
  std::map<HMENU, WORD> fLevels;           // of the platform's menu that was made last: what opens each
  std::map<WORD, TUniqueBitmap> fPictures; // which it shows
  HMENU fTopLevel = nullptr;
  int fDpi = USER_DEFAULT_SCREEN_DPI;
  bool fOwnerDraw = false;
  bool fRightToLeft = false;
};

} // namespace kiv
