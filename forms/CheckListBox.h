#pragma once

#include <forms/WinControl.h>

#include <string>
#include <vector>

namespace kiv {

/// A list of texts with a check box each.
class KIV_EXPORT TCheckListBox : public TWinControl {
public:
  explicit TCheckListBox(TComponent* pOwner = nullptr);
  ~TCheckListBox() override;
  std::wstring ClassName() const override { return L"TCheckListBox"; }

  int GetCount() const noexcept { return static_cast<int>(fItems.size()); }
  /// Returns the new item's index.
  int Add(std::wstring pText, bool pChecked = false);
  void Clear();
  /// Numbers outside of the list raise EArgumentOutOfRange, here and below.
  const std::wstring& GetItem(int pIndex) const;
  bool IsChecked(int pIndex) const;
  void SetChecked(int pIndex, bool pChecked);
  /// An item that isn't enabled can't be checked by the user.
  bool IsItemEnabled(int pIndex) const;
  void SetItemEnabled(int pIndex, bool pEnabled);
  /// Moves an item and keeps it selected, if it was.
  void Move(int pFrom, int pTo);
  /// -1 for none.
  int GetItemIndex() const;
  void SetItemIndex(int pIndex);
  /// The user has changed a check.
  const TNotifyEvent& GetOnClickCheck() const noexcept { return fOnClickCheck; }
  void SetOnClickCheck(TNotifyEvent pEvent) { fOnClickCheck = std::move(pEvent); }

protected:
  void CreateParams(TCreateParams& pParams) override;
  void CreateWnd() override;
  void WMDestroy(TMessage& pMessage) override;
  void CNCommand(TMessage& pMessage) override;
  void CNDrawItem(TMessage& pMessage) override;
  void CNMeasureItem(TMessage& pMessage) override;
  void CMFontChanged(TMessage& pMessage) override;
  void MouseDown(TMouseButton pButton, TShiftState pShift, int pX, int pY) override;
  void KeyPress(wchar_t& pKey) override;

private:
  struct TItem {
    std::wstring text;
    bool checked = false;
    bool enabled = true;
  };
  TItem& At(int pIndex);
  const TItem& At(int pIndex) const;
  void Toggle(int pIndex);
  void InsertText(int pIndex, const std::wstring& pText);
  void InvalidateItem(int pIndex);
  int ItemHeight() const;
  int CheckWidth() const;

  std::vector<TItem> fItems;
  int fItemIndex = -1; // without a window
  TNotifyEvent fOnClickCheck;
};

} // namespace kiv
