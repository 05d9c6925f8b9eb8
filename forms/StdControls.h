#pragma once

#include <forms/ExtControls.h>

namespace kiv {

/// Where a text that doesn't fit is shortened.
enum class TEllipsisPosition { epNone, epPathEllipsis, epEndEllipsis, epWordEllipsis };

/// A text without a window. A letter that it marks with "&" gives the focus to FocusControl.
class KIV_EXPORT TLabel : public TGraphicControl {
public:
  explicit TLabel(TComponent* pOwner = nullptr);
  ~TLabel() override;
  std::wstring ClassName() const override { return L"TLabel"; }

  TAlignment GetAlignment() const noexcept { return fAlignment; }
  void SetAlignment(TAlignment pAlignment);
  /// The size follows the text. True at first.
  bool IsAutoSize() const noexcept { return fAutoSize; }
  void SetAutoSize(bool pAutoSize);
  bool IsWordWrap() const noexcept { return fWordWrap; }
  void SetWordWrap(bool pWordWrap);
  /// For a label whose size doesn't follow its text.
  TEllipsisPosition GetEllipsisPosition() const noexcept { return fEllipsis; }
  void SetEllipsisPosition(TEllipsisPosition pPosition);
  /// "&" marks a letter. True at first.
  bool GetShowAccelChar() const noexcept { return fShowAccelChar; }
  void SetShowAccelChar(bool pShow);
  /// Not owned.
  TWinControl* GetFocusControl() const noexcept { return fFocusControl; }
  void SetFocusControl(TWinControl* pControl);

protected:
  void Paint() override;
  void CMTextChanged(TMessage& pMessage) override;
  void CMFontChanged(TMessage& pMessage) override;
  void CMDialogChar(TMessage& pMessage) override;
  void Notification(TComponent* pComponent, TOperation pOperation) override;
  void Loaded() override;
  void AdjustSize() override;

private:
  UINT TextFlags() const noexcept;

  TAlignment fAlignment = TAlignment::taLeftJustify;
  bool fAutoSize = true;
  TEllipsisPosition fEllipsis = TEllipsisPosition::epNone;
  bool fWordWrap = false;
  bool fShowAccelChar = true;
  TWinControl* fFocusControl = nullptr;
  const TComponent* fFocusKey = nullptr;
};

/// The platform's button.
class KIV_EXPORT TButton : public TWinControl {
public:
  explicit TButton(TComponent* pOwner = nullptr);
  ~TButton() override;
  std::wstring ClassName() const override { return L"TButton"; }
  /// Fires OnClick, and ends a modal form by ModalResult.
  void Click() override;

  /// Enter presses it from anywhere in its form.
  bool IsDefault() const noexcept { return fDefault; }
  void SetDefault(bool pDefault);
  /// Esc presses it.
  bool IsCancel() const noexcept { return fCancel; }
  void SetCancel(bool pCancel) noexcept { fCancel = pCancel; }
  /// What a modal form ends with when it is pressed; 0: it doesn't. See TForm::ShowModal.
  int GetModalResult() const noexcept { return fModalResult; }
  void SetModalResult(int pResult) noexcept { fModalResult = pResult; }

protected:
  void CreateParams(TCreateParams& pParams) override;
  void CNCommand(TMessage& pMessage) override;
  void CMDialogKey(TMessage& pMessage) override;
  void CMDialogChar(TMessage& pMessage) override;

private:
  bool fDefault = false;
  bool fCancel = false;
  int fModalResult = 0;
};

/// The platform's check box.
class KIV_EXPORT TCheckBox : public TWinControl {
public:
  explicit TCheckBox(TComponent* pOwner = nullptr);
  ~TCheckBox() override;
  std::wstring ClassName() const override { return L"TCheckBox"; }
  bool IsChecked() const noexcept { return fChecked; }
  /// A change fires OnClick, as the user's does.
  void SetChecked(bool pChecked);

protected:
  void CreateParams(TCreateParams& pParams) override;
  void CreateWnd() override;
  void CNCommand(TMessage& pMessage) override;
  void CMDialogChar(TMessage& pMessage) override;

private:
  bool fChecked = false;
};

/// The platform's edit field of one line.
class KIV_EXPORT TCustomEdit : public TWinControl {
public:
  explicit TCustomEdit(TComponent* pOwner = nullptr);
  ~TCustomEdit() override;
  std::wstring ClassName() const override { return L"TCustomEdit"; }

  TBorderStyle GetBorderStyle() const noexcept { return fBorderStyle; }
  void SetBorderStyle(TBorderStyle pStyle);
  bool IsReadOnly() const noexcept { return fReadOnly; }
  void SetReadOnly(bool pReadOnly);
  /// Shown in grey while there is no text ("EM_SETCUEBANNER").
  const std::wstring& GetTextHint() const noexcept { return fTextHint; }
  void SetTextHint(const std::wstring& pHint);
  /// In characters; 0: the platform's own limit.
  int GetMaxLength() const noexcept { return fMaxLength; }
  void SetMaxLength(int pLength);
  bool IsModified() const;
  void SetModified(bool pModified);
  void SelectAll();
  int GetSelStart() const;
  int GetSelLength() const;
  void Select(int pStart, int pLength);
  /// Replaces the selection, as if it was typed.
  void SetSelText(const std::wstring& pText);
  /// Fires at each change of the text, whoever makes it.
  const TNotifyEvent& GetOnChange() const noexcept { return fOnChange; }
  void SetOnChange(TNotifyEvent pEvent) { fOnChange = std::move(pEvent); }

protected:
  void CreateParams(TCreateParams& pParams) override;
  void CreateWnd() override;
  void WMDestroy(TMessage& pMessage) override;
  void CNCommand(TMessage& pMessage) override;
  virtual void Change();

private:
  TBorderStyle fBorderStyle = TBorderStyle::bsSingle;
  bool fReadOnly = false;
  bool fCreating = false;
  bool fModified = false;
  int fMaxLength = 0;
  DWORD fSelStart = 0;
  DWORD fSelEnd = 0;
  std::wstring fTextHint;
  TNotifyEvent fOnChange;
};

class KIV_EXPORT TEdit : public TCustomEdit {
public:
  using TCustomEdit::TCustomEdit;
  ~TEdit() override;
  std::wstring ClassName() const override { return L"TEdit"; }
};

} // namespace kiv
