#pragma once

#include <framework/Event.h>
#include <framework/Persistent.h>
#include <framework/StringList.h>
#include <listview/ListTypes.h>
#include <platform/Export.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kiv {

class TCustomListView;
class TListItems;

/// A row of a list view: a real object, of a class that the application may choose (TCustomListView's
/// OnCreateItemClass), behind a control that itself knows only how many rows there are. It belongs to its list.
///
/// Until its details are wanted a row is its caption and a few numbers. The list asks for details through GetSubItems,
/// GetImageIndex of the list and the like only once the row has been painted, and never from inside the painting.
/// Main thread only.
class KIV_EXPORT TListItem : public TPersistent {
public:
  explicit TListItem(TListItems* pOwner);
  TListItem(const TListItem&) = delete;
  TListItem& operator=(const TListItem&) = delete;
  ~TListItem() override;

  std::wstring ClassName() const override;
  /// Caption, images, marks, data and sub-items of another row; not its place, focus or selection.
  void Assign(const TPersistent* pSource) override;

  TListItems* GetOwner() const noexcept { return fOwner; }
  /// The control; null if the rows have none.
  TCustomListView* GetListView() const noexcept;
  /// From 0; -1 once the row has left the list.
  int GetIndex() const noexcept;

  /// The text of the first column. The base holds it; a class that makes it up answers from what it has, and quickly:
  /// it is asked while the row is painted.
  virtual std::wstring GetCaption() const { return fCaption; }
  virtual void SetCaption(const std::wstring& pCaption);

  /// The texts of the other columns. An override may fill the list when it is asked; painting asks
  /// GetExistingSubItems instead. A change of the list repaints the row.
  virtual TStrings& GetSubItems();
  virtual void SetSubItems(const TStrings& pSubItems);
  /// Null while nobody has asked for sub-items.
  const TStrings* GetExistingSubItems() const noexcept;
  /// The images of the other columns, -1 for none; `pIndex` counts sub-items, from 0.
  int GetSubItemImage(int pIndex) const noexcept;
  void SetSubItemImage(int pIndex, int pImage);

  /// In the list's image lists; -1 for none.
  int GetImageIndex() const noexcept { return fImageIndex; }
  void SetImageIndex(int pIndex);
  /// The overlay that is drawn over the image, 0 to 14; -1 for none.
  int GetOverlayIndex() const noexcept { return fOverlayIndex; }
  void SetOverlayIndex(int pIndex);
  /// In the list's state images, 0 to 14; -1 for none.
  int GetStateIndex() const noexcept { return fStateIndex; }
  void SetStateIndex(int pIndex);
  /// In widths of a small image. At first 0.
  int GetIndent() const noexcept { return fIndent; }
  void SetIndent(int pIndent);

  virtual bool GetChecked() const { return fChecked; }
  /// Ends CheckMixed.
  virtual void SetChecked(bool pChecked);
  /// Its box shows that it is neither: it stands for several. Ticking it gives it its mark. At first false.
  bool GetCheckMixed() const noexcept { return fCheckMixed; }
  void SetCheckMixed(bool pMixed);
  /// The user can tick it. At first true.
  bool GetCheckEnabled() const noexcept { return !fCheckDisabled; }
  void SetCheckEnabled(bool pEnabled);

  bool GetCut() const noexcept { return fCut; }
  void SetCut(bool pCut);
  bool GetDropTarget() const noexcept { return fDropTarget; }
  void SetDropTarget(bool pDropTarget);
  bool GetSelected() const noexcept;
  void SetSelected(bool pSelected);
  bool GetFocused() const noexcept;
  /// Takes the focus from the row that has it.
  void SetFocused(bool pFocused);
  TItemStates GetStates() const noexcept;

  /// Free for the application.
  std::intptr_t GetData() const noexcept { return fData; }
  void SetData(std::intptr_t pData) noexcept { fData = pData; }

  /// Takes the row from its list and destroys it. Nothing of it may be touched after.
  void Delete();
  /// Starts the editing of the caption. False if the list or its application refuses.
  bool EditCaption();
  void CancelEdit();
  void MakeVisible(bool pPartialOk);
  /// In the list's client area. Empty if the list has no window.
  TRowRect DisplayRect(TDisplayCode pCode);
  /// Repaints the row, and asks for its image anew.
  void Update();

  /// For callers that come back to this row after foreign code has run.
  const TAliveToken& GetAliveToken() const noexcept { return fAlive; }

private:
  friend class TListItems;
  class TSubItems;

  void LookChanged() noexcept;
  template <typename T>
  void PutLook(T& pField, T pValue) noexcept;

  TListItems* fOwner;
  TAliveToken fAlive;
  std::wstring fCaption;
  std::unique_ptr<TSubItems> fSubItems;
  std::intptr_t fData = 0;
  mutable int fIndex = -1; // exact below the owner's fExact
  int fImageIndex = -1;
  std::int16_t fIndent = 0;
  std::int8_t fOverlayIndex = -1;
  std::int8_t fStateIndex = -1;
  bool fChecked : 1 = false;
  bool fCheckMixed : 1 = false;
  bool fCheckDisabled : 1 = false;
  bool fCut : 1 = false;
  bool fDropTarget : 1 = false;
  bool fInList : 1 = false;
  bool fDetailsAsked : 1 = false;
  bool fPainted : 1 = false;
};

} // namespace kiv
