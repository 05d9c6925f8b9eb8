#pragma once

#include <forms/CustomControl.h>

namespace kiv {

/// The frame of a top-level window.
enum class TFormBorderStyle {
  fbNone,
  fbSingle,
  fbSizeable,
  fbDialog, ///< without minimizing and maximizing
  fbToolWindow,
  fbSizeToolWin
};
/// Where a form comes up.
enum class TFormPosition {
  poDesigned,     ///< where its bounds say
  poDefault,      ///< where the platform puts it
  poScreenCenter, ///< in the middle of the monitor that the active window is on
  poOwnerFormCenter
};
enum class TCloseAction {
  caNone, ///< stays
  caHide,
  caFree, ///< is destroyed, later; for a form made by "new"
  caMinimize
};

/// What a modal form ends with. The numbers are the platform's ("MessageBox").
enum TModalResult : int {
  mrNone = 0,
  mrOk = 1,
  mrCancel = 2,
  mrAbort = 3,
  mrRetry = 4,
  mrIgnore = 5,
  mrYes = 6,
  mrNo = 7
};

using TCloseEvent = TEvent<TPersistent*, TCloseAction&>;
using TCloseQueryEvent = TEvent<TPersistent*, bool&>;

/// A top-level window. Not visible at first. Its message loop is the host's, except while it is modal.
///
/// Given a parent it is a control like others, without a frame.
class KIV_EXPORT TForm : public TCustomControl {
public:
  explicit TForm(TComponent* pOwner = nullptr);
  ~TForm() override;
  std::wstring ClassName() const override { return L"TForm"; }

  TFormBorderStyle GetBorderStyle() const noexcept { return fBorderStyle; }
  void SetBorderStyle(TFormBorderStyle pStyle);
  TFormPosition GetPosition() const noexcept { return fPosition; }
  void SetPosition(TFormPosition pPosition) noexcept { fPosition = pPosition; }
  /// The window that this one stays in front of. If none is set: for a modal form the one that is active when it comes
  /// up, else the application's.
  void SetPopupParent(HWND pWindow);
  HWND GetPopupParent() const noexcept { return fPopupParent; }

  /// Shows it in front and gives it the keyboard.
  void ShowForm();
  /// Asks CloseQuery, then OnClose, and does what that says. A modal form ends with mrCancel.
  void Close();
  /// False: it may not be closed now. Fires OnCloseQuery.
  virtual bool CloseQuery();
  /// Destroys the form when the messages under way have been handled. For a form made by "new".
  void Release();

  /// Shows it, keeps the thread's other windows from input, and runs a loop until ModalResult is set or the application
  /// ends. Returns the result. Raises EInvalidOperation if it is visible or disabled.
  int ShowModal();
  bool IsModal() const noexcept { return fModal; }
  int GetModalResult() const noexcept { return fModalResult; }
  void SetModalResult(int pResult);

  /// The control that has the focus in here, or gets it when the form is activated. Null: the first of the tab order.
  TWinControl* GetActiveControl() const noexcept { return fActiveControl; }
  void SetActiveControl(TWinControl* pControl);

  bool CanFocus() const override;
  const TNotifyEvent& GetOnShow() const noexcept { return fOnShow; }
  void SetOnShow(TNotifyEvent pEvent) { fOnShow = std::move(pEvent); }
  const TNotifyEvent& GetOnHide() const noexcept { return fOnHide; }
  void SetOnHide(TNotifyEvent pEvent) { fOnHide = std::move(pEvent); }
  const TNotifyEvent& GetOnActivate() const noexcept { return fOnActivate; }
  void SetOnActivate(TNotifyEvent pEvent) { fOnActivate = std::move(pEvent); }
  const TNotifyEvent& GetOnDeactivate() const noexcept { return fOnDeactivate; }
  void SetOnDeactivate(TNotifyEvent pEvent) { fOnDeactivate = std::move(pEvent); }
  const TCloseEvent& GetOnClose() const noexcept { return fOnClose; }
  void SetOnClose(TCloseEvent pEvent) { fOnClose = std::move(pEvent); }
  const TCloseQueryEvent& GetOnCloseQuery() const noexcept { return fOnCloseQuery; }
  void SetOnCloseQuery(TCloseQueryEvent pEvent) { fOnCloseQuery = std::move(pEvent); }

protected:
  void CreateParams(TCreateParams& pParams) override;
  void CreateWnd() override;
  void WMDestroy(TMessage& pMessage) override;
  bool MayExist() const override { return true; }
  bool WrapsTabOrder() const override { return true; }
  void ChangeScale(int pM, int pD, bool pKeepPlace) override;
  void WndProc(TMessage& pMessage) override;
  void CMShowingChanged(TMessage& pMessage) override;
  void CMRecreateWnd(TMessage& pMessage) override;
  void WMSetFocus(TMessage& pMessage) override;
  void Notification(TComponent* pComponent, TOperation pOperation) override;
  virtual void DoShow();
  virtual void DoHide();
  virtual void DoClose(TCloseAction& pAction);

private:
  bool IsTopLevel() const noexcept { return !GetParent() && !GetParentWindow(); }
  void HandleActivate(TMessage& pMessage);
  void HandleDpiChanged(TMessage& pMessage);
  void HandleMinMaxInfo(TMessage& pMessage);
  HWND WindowBehind() const;
  void StandInFrontOfActive();
  void PlaceForShow();
  void FocusInside();
  void RunModalLoop();
  static void CancelCapture() noexcept;

  TFormBorderStyle fBorderStyle = TFormBorderStyle::fbSizeable;
  TFormPosition fPosition = TFormPosition::poDesigned;
  HWND fPopupParent = nullptr;
  HWND fModalOwner = nullptr;
  TWinControl* fActiveControl = nullptr;
  const TComponent* fActiveKey = nullptr;
  WINDOWPLACEMENT fPlacement{}; // of the window whose place another one takes
  bool fIsReplacing = false;    // that one is about to be shown, as the other was
  bool fModal = false;
  int fModalResult = mrNone;
  TNotifyEvent fOnShow;
  TNotifyEvent fOnHide;
  TNotifyEvent fOnActivate;
  TNotifyEvent fOnDeactivate;
  TCloseEvent fOnClose;
  TCloseQueryEvent fOnCloseQuery;
};

} // namespace kiv
