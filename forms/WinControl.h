#pragma once

#include <forms/Control.h>
#include <framework/WindowHandle.h>
#include <graphics/Brush.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kiv {

class TWinControl;
struct TWindowLink;

/// Hands a notification that the platform sent to a control's parent window to the control. False if `pMessage` is
/// none, or the window it tells of is none of the library's.
KIV_EXPORT bool ReflectMessage(HWND pParent, TMessage& pMessage);

/// How a control's window is made: the arguments of "CreateWindowExW". CreateParams fills it.
struct TCreateParams {
  std::wstring className; ///< of the platform; empty for a window class of the library's own
  std::wstring caption;
  DWORD style = 0;
  DWORD exStyle = 0;
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  HWND wndParent = nullptr;
  UINT classStyle = CS_DBLCLKS; ///< of a window class of the library's own
};

/// A control with a window.
///
/// Its parent is another TWinControl, or any window of the host's (SetParentWindow, CreateParented), whose
/// notifications about this control come here all the same. The window is made when it is first needed (GetHandle,
/// HandleNeeded), or when the control is to be seen; it may go and come again (RecreateWnd, a host's window that is
/// destroyed). What a class keeps in its window it sets up in CreateWnd and saves in WMDestroy.
///
/// A class that overrides any of the hooks of the window's end (DestroyWnd, WMDestroy) calls EndWindow first in its
/// destructor: later its overrides are no longer there.
class KIV_EXPORT TWinControl : public TControl, public IWindowOwner {
public:
  explicit TWinControl(TComponent* pOwner = nullptr);
  ~TWinControl() override;
  std::wstring ClassName() const override { return L"TWinControl"; }

  // --- the window ---
  /// The window; made if it isn't there. Raises EInvalidOperation without a parent, and EOSError if the platform
  /// refuses.
  HWND GetHandle();
  void HandleNeeded();
  bool HandleAllocated() const noexcept { return fHandle != nullptr; }
  TWindowHandle AllocatedHandle() const noexcept override { return fHandle; }
  /// Another window with the same content in the place of this one: for properties that can't be changed on a window.
  /// Nothing happens without a window.
  void RecreateWnd();

  /// Any window of the calling thread's, also of a host that knows nothing of this library; null for none. Takes the
  /// control from its parent. Raises EInvalidOperation for a window of another thread.
  void SetParentWindow(HWND pParent);
  HWND GetParentWindow() const noexcept { return fParentWindow; }
  /// SetParentWindow, and the window is made and shown at once.
  void CreateParented(HWND pParent);
  void SetParent(TWinControl* pParent) override;

  // --- what stands in it ---
  /// All children, the back one first.
  const std::vector<TControl*>& GetControls() const noexcept { return fControls; }
  int GetControlCount() const noexcept { return static_cast<int>(fControls.size()); }
  /// True if `pControl` is this one or stands anywhere below it.
  bool ContainsControl(const TControl* pControl) const noexcept;
  /// The foremost child at a point of the client area. Null if there is none.
  TControl* ControlAtPos(POINT pPoint, bool pAllowDisabled, bool pAllowWinControls = false) const;
  /// Room inside the edges that aligned children leave free, in pixels. Scaled with the control.
  const TMargins& GetPadding() const noexcept { return fPadding; }
  void SetPadding(const TMargins& pPadding);
  /// While the count of disables isn't 0 children stay where they are.
  void DisableAlign() noexcept { ++fAlignLevel; }
  void EnableAlign();
  /// Lays out the children now.
  void Realign();
  /// Mirrors the places, alignments and anchors of the children, for languages from right to left; with `pAllLevels`
  /// those of their children as well.
  void FlipChildren(bool pAllLevels);

  // --- focus ---
  bool Focused() const noexcept;
  /// Visible and enabled with all above it.
  virtual bool CanFocus() const;
  /// Gives it the keyboard. Raises EInvalidOperation "Cannot focus a disabled or invisible window" if !CanFocus().
  virtual void SetFocus();
  bool IsTabStop() const noexcept { return fTabStop; }
  void SetTabStop(bool pTabStop);
  /// For a control without a parent: it sees the keys of all controls in it before they do. False at first.
  bool IsKeyPreview() const noexcept { return fKeyPreview; }
  void SetKeyPreview(bool pKeyPreview) noexcept { fKeyPreview = pKeyPreview; }
  /// The place in the order of the Tab key among the parent's windowed children, from 0; -1 without a parent.
  int GetTabOrder() const noexcept;
  void SetTabOrder(int pTabOrder);
  /// All windowed controls below this one, in the order of the Tab key.
  void GetTabOrderList(std::vector<TWinControl*>& pList) const;
  /// The next below this one that can have the focus and wants it by the Tab key. With `pTabStops` all levels count,
  /// else only the children of this one. Null if there is none.
  TWinControl* FindNextControl(TWinControl* pCurrent, bool pForward, bool pTabStops, bool pWrap) const;
  /// Gives that one the focus; false if there is none.
  bool SelectNext(TWinControl* pCurrent, bool pForward, bool pTabStops, bool pWrap);
  /// The control without a parent that this one stands in.
  TWinControl& Root() noexcept;
  /// A key message of this control's window, or of one in it that belongs to no control, before it is translated (see
  /// PreTranslateMessage). True if it is used up.
  virtual bool PreProcessMessage(const MSG& pMessage);

  /// What assistive programs read out as the control's name; empty: what the platform finds, which is the text or the
  /// label in front. They are told of it by "IAccPropServices".
  const std::wstring& GetAccessibleName() const noexcept { return fAccessibleName; }
  void SetAccessibleName(std::wstring pName);
  /// What a label without a window calls this control. It is the name for assistive programs unless AccessibleName is
  /// set: the platform finds labels that are windows only.
  void SetLabelText(std::wstring pText);

  /// Marked letters are underlined here. The platform hides them, and the marks of the focus, in dialogs that nobody
  /// has used the keyboard in ("WM_CHANGEUISTATE").
  bool ShowsAccelChars() const noexcept;

  bool IsDoubleBuffered() const noexcept { return fDoubleBuffered; }
  void SetDoubleBuffered(bool pDoubleBuffered);

  // --- TControl ---
  RECT GetClientRect() const override;
  POINT ClientToScreen(POINT pPoint) const override;
  POINT ScreenToClient(POINT pPoint) const override;
  void SetBounds(int pLeft, int pTop, int pWidth, int pHeight) override;
  bool IsShowing() const override { return fShowing; }
  std::wstring GetText() const override;
  void SetText(const std::wstring& pText) override;
  void Invalidate() override;
  void Update() override;
  void Repaint() override;
  LRESULT Perform(UINT pMessage, WPARAM pWParam = 0, LPARAM pLParam = 0) override;

  // For the window's link: the window stands, and it is gone.
  void AdoptLink(TWindowLink* pLink, HWND pWindow) noexcept;
  void WindowGone() noexcept;

  const TNotifyEvent& GetOnEnter() const noexcept { return fOnEnter; }
  void SetOnEnter(TNotifyEvent pEvent) { fOnEnter = std::move(pEvent); }
  const TNotifyEvent& GetOnExit() const noexcept { return fOnExit; }
  void SetOnExit(TNotifyEvent pEvent) { fOnExit = std::move(pEvent); }
  const TKeyEvent& GetOnKeyDown() const noexcept { return fOnKeyDown; }
  void SetOnKeyDown(TKeyEvent pEvent) { fOnKeyDown = std::move(pEvent); }
  const TKeyPressEvent& GetOnKeyPress() const noexcept { return fOnKeyPress; }
  void SetOnKeyPress(TKeyPressEvent pEvent) { fOnKeyPress = std::move(pEvent); }
  const TKeyEvent& GetOnKeyUp() const noexcept { return fOnKeyUp; }
  void SetOnKeyUp(TKeyEvent pEvent) { fOnKeyUp = std::move(pEvent); }

protected:
  friend class TControl;
  friend struct TWindowLink;

  // --- hooks of the window's life ---
  /// The host has put the window into another one of its own, as those do whose panes can be docked. Overrides call the
  /// base class.
  virtual void FollowParentWindow(HWND pParent);
  /// How the window is made. Overrides call the base class first, then change what they want.
  virtual void CreateParams(TCreateParams& pParams);
  /// Makes the window and sets it up. Overrides call the base class, then give the window what it holds.
  virtual void CreateWnd();
  /// There is a parent to make the window in, or none is needed.
  virtual bool MayExist() const;
  virtual void CreateWindowHandle(const TCreateParams& pParams);
  /// The window is to go, on the library's own wish; overrides call the base class last.
  virtual void DestroyWnd();
  /// CreateWnd, and the window's place among its siblings.
  virtual void CreateHandle();
  void DestroyHandle();
  /// For the head of a destructor: marks the control as going and ends its window while all overrides stand.
  void EndWindow() noexcept;
  /// Asks or tells the window class something that only concerns the two of them: many times faster than a message,
  /// which goes through all that watch the window. 0 without a window.
  LRESULT CallWindowClass(UINT pMessage, WPARAM pWParam = 0, LPARAM pLParam = 0) const;
  /// True from RecreateWnd's beginning to the end of the new window's CreateWnd.
  bool IsRecreating() const noexcept { return HasState(TControlStateFlag::csRecreating); }

  // --- messages ---
  void WndProc(TMessage& pMessage) override;
  void DefaultHandler(TMessage& pMessage) override;
  virtual void WMPaint(TMessage& pMessage);
  virtual void WMEraseBkgnd(TMessage& pMessage);
  virtual void WMWindowPosChanged(TMessage& pMessage);
  virtual void WMSize(TMessage& pMessage);
  /// The window is on the way out, for whatever reason, and still whole: save here what it holds.
  virtual void WMDestroy(TMessage& pMessage);
  virtual void WMGetDlgCode(TMessage& pMessage) { DefaultHandler(pMessage); }
  virtual void WMSetFocus(TMessage& pMessage);
  virtual void WMKillFocus(TMessage& pMessage);
  virtual void WMSetCursor(TMessage& pMessage);
  void WMCaptureChanged(TMessage& pMessage);
  void WMContextMenu(TMessage& pMessage);
  virtual void WMNotify(TMessage& pMessage);
  virtual void WMCommand(TMessage& pMessage);
  virtual void WMParentNotify(TMessage& pMessage) { DefaultHandler(pMessage); }
  /// The platform's notifications about this control's window, for overrides to answer.
  virtual void CNNotify(TMessage& pMessage) { static_cast<void>(pMessage); }
  virtual void CNCommand(TMessage& pMessage) { static_cast<void>(pMessage); }
  virtual void CNDrawItem(TMessage& pMessage) { static_cast<void>(pMessage); }
  virtual void CNMeasureItem(TMessage& pMessage) { static_cast<void>(pMessage); }
  virtual void CNScroll(TMessage& pMessage) { static_cast<void>(pMessage); }
  virtual void CNCtlColor(TMessage& pMessage);
  virtual void CMRecreateWnd(TMessage& pMessage);
  virtual void CMShowingChanged(TMessage& pMessage);
  virtual void WMPrintClient(TMessage& pMessage);
  /// The set of themes that a window of a platform class draws itself with ("SetWindowTheme"); null for the class's
  /// own. By default those of dark windows while dark mode is active.
  virtual const wchar_t* WindowTheme() const;
  virtual void WMGetObject(TMessage& pMessage);
  /// Navigation keys that nobody wanted; each control of the tree is asked.
  virtual void CMDialogKey(TMessage& pMessage);
  void CMDialogChar(TMessage& pMessage) override;
  virtual void CMWantSpecialKey(TMessage& pMessage) { static_cast<void>(pMessage); }
  virtual void CMChildKey(TMessage& pMessage);
  virtual void CMChildFocused(TMessage& pMessage) { static_cast<void>(pMessage); }
  virtual void CMEnter(TMessage&) { DoEnter(); }
  virtual void CMExit(TMessage&) { DoExit(); }
  void CMEnabledChanged(TMessage& pMessage) override;
  void CMVisibleChanged(TMessage& pMessage) override;
  void CMCursorChanged(TMessage& pMessage) override;
  void CMFontChanged(TMessage& pMessage) override;
  void CMColorChanged(TMessage& pMessage) override;
  void CMBiDiModeChanged(TMessage& pMessage) override;
  void CMThemeChanged(TMessage& pMessage) override;

  /// What a key message of the window does: OnKeyDown and the others, of a root that previews keys first. True if the
  /// key is used up or the control has gone. For controls that host a foreign window, with its messages.
  bool DoKeyDown(TMessage& pMessage);
  bool DoKeyPress(TMessage& pMessage);
  bool DoKeyUp(TMessage& pMessage);
  // --- keys; each fires its event. Set the key to 0 to use it up. ---
  virtual void KeyDown(WORD& pKey, TShiftState pShift);
  virtual void KeyPress(wchar_t& pKey);
  virtual void KeyUp(WORD& pKey, TShiftState pShift);
  virtual void DoEnter();
  virtual void DoExit();

  /// True if the key of a message is the short cut of something here, which has been done.
  virtual bool DoShortCut(const TMessage& pMessage);
  /// For a root: the Tab key goes on at the other end. Otherwise it is left to the host there.
  virtual bool WrapsTabOrder() const { return false; }

  // --- painting ---
  /// In the control's colour.
  TBrush& GetBrush() noexcept { return fBrush; }
  /// Paints the control itself, if csCustomPaint is set or it holds controls without a window. The default lets the
  /// window class do it.
  virtual void PaintWindow(HDC pDC);
  /// Fills the area behind everything.
  virtual void PaintBackground(HDC pDC, const RECT& pRect);
  void PaintControls(HDC pDC);

  // --- layout ---
  /// The part of the client area that aligned children share.
  virtual void AdjustClientRect(RECT& pRect) const { static_cast<void>(pRect); }
  virtual void AlignControls(TControl* pControl);
  void ChangeScale(int pM, int pD, bool pKeepPlace) override;
  void SetZOrder(bool pTopMost) override;
  void Loaded() override;

  /// Makes the windows that are to be seen and aren't there, and shows or hides them.
  void UpdateControlState();
  /// The window must be of this resolution: laid out anew if it isn't.
  void AdoptWindowPPI();

private:
  /// Stands around a recreation: the focus is where it was afterwards, and nobody is told that it was gone.
  class ScopedFocusKept {
  public:
    explicit ScopedFocusKept(TWinControl& pRoot);
    ~ScopedFocusKept();
    ScopedFocusKept(const ScopedFocusKept&) = delete;
    ScopedFocusKept& operator=(const ScopedFocusKept&) = delete;

  private:
    TWinControl* fFocused = nullptr;
    std::unique_ptr<TAliveWatch> fWatch;
  };

  void InsertControl(TControl* pControl);
  void RemoveControl(TControl* pControl);
  void UpdateShowing();
  void PlaceAmongSiblings();
  void MarkRecreating();
  void StoreWindowBounds();
  void TakeSystemFont();
  void ApplyFont();
  void UpdateBrush();
  void ForgetFocus() noexcept;
  void GiveFocusAway();
  void ShowCues(WORD pWhich);
  void DestroyWindowHandle() noexcept;
  void ReleaseParentWindow() noexcept;
  bool HandleFocusOrKeys(TMessage& pMessage);
  bool HandleWindowMessage(TMessage& pMessage);
  bool HandleReflected(TMessage& pMessage);
  bool HandleOwnMessage(TMessage& pMessage);
  bool IsControlMouseMessage(TMessage& pMessage);
  void TrackMouse(TMessage& pMessage);
  void SetMouseControl(TControl* pControl);
  void PaintHandler(TMessage& pMessage);
  void CNKey(TMessage& pMessage);
  bool IsShortCutUsed(const TMessage& pMessage);
  void Broadcast(TMessage& pMessage);
  void Navigate(TMessage& pMessage);
  void ApplyAccessibleName();
  void PutName(std::wstring& pPart, std::wstring pName);
  const std::wstring& NameToTell() const noexcept { return fAccessibleName.empty() ? fLabelText : fAccessibleName; }
  void ApplyLook();
  void HandleWheel(TMessage& pMessage);
  void HandleMouseLeave(TMessage& pMessage);
  void HandleLookChange(TMessage& pMessage);
  void HandleCues(TMessage& pMessage);
  static void ApplyScreenCursor();
  void PaintAll(HDC pDC);
  bool PreviewKey(const std::function<void(TWinControl&)>& pShow);
  static void MoveFocus(TWinControl* pTo);
  void NotifyControls(UINT pMessage);
  bool HasGraphicControls() const noexcept;

  HWND fHandle = nullptr;
  TBrush fBrush;
  std::shared_ptr<const TUniqueFont> fWindowFont; // what the window draws with
  HWND fParentWindow = nullptr;
  TWindowLink* fLink = nullptr;
  std::vector<TControl*> fControls;
  std::vector<TWinControl*> fTabList;
  TControl* fMouseControl = nullptr; // child without a window that the pointer is on
  TMargins fPadding;
  int fAlignLevel = 0;
  bool fAlignNeeded = false;
  bool fShowing = false;
  bool fTabStop = false;
  bool fKeyPreview = false;
  bool fDoubleBuffered = false;
  bool fIsMouseInside = false;
  bool fAligning = false;
  bool fRealigning = false;
  std::wstring fAccessibleName;
  std::wstring fLabelText;
  std::wstring fWindowTheme; // as it was set last
  TNotifyEvent fOnEnter;
  TNotifyEvent fOnExit;
  TKeyEvent fOnKeyDown;
  TKeyPressEvent fOnKeyPress;
  TKeyEvent fOnKeyUp;
};

/// The control that a window belongs to; null for windows of others and of other threads.
KIV_EXPORT TWinControl* FindControl(HWND pWindow) noexcept;
/// The same, or the control that the nearest window above belongs to: an editor inside a combo box leads to that.
KIV_EXPORT TWinControl* NearestControl(HWND pWindow) noexcept;

/// True if a character is the one that a caption has marked with "&". Case doesn't count.
KIV_EXPORT bool IsAccel(wchar_t pCharacter, const std::wstring& pCaption);
/// A caption without its marks.
KIV_EXPORT std::wstring StripHotkey(const std::wstring& pCaption);

} // namespace kiv
