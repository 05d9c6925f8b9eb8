#pragma once

#include <forms/ControlTypes.h>
#include <forms/Messages.h>
#include <framework/Component.h>
#include <framework/Screen.h>
#include <graphics/Color.h>
#include <graphics/Font.h>

#include <string>

namespace kiv {

class TControl;
class TPopupMenu;
class TWinControl;

/// What is to be shown as a control's hint, for CM_HINTSHOW to change.
struct THintInfo {
  TControl* control = nullptr;
  std::wstring text;
  POINT position{}; ///< of the hint window, on the screen
  RECT area{};      ///< of the control's client area: the hint stays while the pointer is in it, then it is asked anew
  int maxWidth = 0; ///< the text is broken there; 0 for one line
};

/// Base of everything that is seen: a place in a parent, a text, mouse events. A TControl that is no TWinControl has no
/// window of its own; its parent paints it and passes it the mouse.
///
/// The parent is where a control is shown, the owner who frees it. A parent that goes leaves its controls behind
/// without a parent, except those that it owns, which go with it.
///
/// All coordinates are pixels, those of a control's place are in its parent's client area. Main thread only.
///
/// Any event and any override may destroy the control it belongs to. The library looks after each call of foreign code
/// whether the control still lives, and touches nothing of it if not; an override that goes on after such a call does
/// the same with a TAliveWatch.
class KIV_EXPORT TControl : public TComponent {
public:
  explicit TControl(TComponent* pOwner = nullptr);
  ~TControl() override;
  std::wstring ClassName() const override;
  void SetName(const std::wstring& pName) override;

  TWinControl* GetParent() const noexcept { return fParent; }
  /// Null takes the control from the screen. Raises EInvalidOperation if `pParent` stands below this control.
  virtual void SetParent(TWinControl* pParent);

  // --- place ---
  int GetLeft() const noexcept { return fBox.left; }
  int GetTop() const noexcept { return fBox.top; }
  int GetWidth() const noexcept { return fBox.width; }
  int GetHeight() const noexcept { return fBox.height; }
  void SetLeft(int pLeft) { SetBounds(pLeft, fBox.top, fBox.width, fBox.height); }
  void SetTop(int pTop) { SetBounds(fBox.left, pTop, fBox.width, fBox.height); }
  void SetWidth(int pWidth) { SetBounds(fBox.left, fBox.top, pWidth, fBox.height); }
  virtual void SetHeight(int pHeight) { SetBounds(fBox.left, fBox.top, fBox.width, pHeight); }
  RECT GetBoundsRect() const noexcept { return {fBox.left, fBox.top, fBox.Right(), fBox.Bottom()}; }
  void SetBoundsRect(const RECT& pRect);
  /// All setters of the place come here. Negative sizes count as 0, Constraints apply; the alignment may overrule it.
  virtual void SetBounds(int pLeft, int pTop, int pWidth, int pHeight);
  virtual RECT GetClientRect() const;
  int GetClientWidth() const;
  int GetClientHeight() const;
  /// Changes the size by what the client area lacks.
  void SetClientSize(int pWidth, int pHeight);

  TAlign GetAlign() const noexcept { return fAlign; }
  virtual void SetAlign(TAlign pAlign);
  TAnchors GetAnchors() const noexcept { return fAnchors; }
  void SetAnchors(TAnchors pAnchors);
  /// Room that an aligned control leaves free around itself, if AlignWithMargins is set; 3 pixels at 96 dots per inch
  /// at first. Scaled with the control.
  const TMargins& GetMargins() const noexcept { return fMargins; }
  void SetMargins(const TMargins& pMargins);
  bool IsAlignWithMargins() const noexcept { return fAlignWithMargins; }
  void SetAlignWithMargins(bool pAlignWithMargins);
  const TSizeConstraints& GetConstraints() const noexcept { return fConstraints; }
  void SetConstraints(const TSizeConstraints& pConstraints);
  void BringToFront() { SetZOrder(true); }
  void SendToBack() { SetZOrder(false); }

  /// Of a point of the control's client area, and back. Raises EInvalidOperation without a parent window.
  virtual POINT ClientToScreen(POINT pPoint) const;
  virtual POINT ScreenToClient(POINT pPoint) const;

  // --- state ---
  bool IsVisible() const noexcept { return fVisible; }
  void SetVisible(bool pVisible);
  void Show() { SetVisible(true); }
  void Hide() { SetVisible(false); }
  /// Visible with all above it.
  virtual bool IsShowing() const;
  /// Its own property; a control below one that is disabled gets no input either.
  bool IsEnabled() const noexcept { return fEnabled; }
  virtual void SetEnabled(bool pEnabled);

  /// The text that the control shows; for most controls their caption. Changes raise CM_TEXTCHANGED.
  virtual std::wstring GetText() const { return fText; }
  virtual void SetText(const std::wstring& pText);
  std::wstring GetCaption() const { return GetText(); }
  void SetCaption(const std::wstring& pText) { SetText(pText); }

  TControlStyle GetControlStyle() const noexcept { return fControlStyle; }
  TControlState GetControlState() const noexcept { return fControlState; }

  TCursor GetCursor() const noexcept { return fCursor; }
  void SetCursor(TCursor pCursor);

  // --- look ---
  /// The control's own font. A change of it ends ParentFont.
  TFont& GetFont() noexcept { return fFont; }
  const TFont& GetFont() const noexcept { return fFont; }
  void SetFont(const TFont& pFont);
  /// The font is the parent's. True at first.
  bool IsParentFont() const noexcept { return fParentFont; }
  virtual void SetParentFont(bool pParentFont);
  /// What of the control a style other than the platform's may draw. All at first.
  TStyleElements GetStyleElements() const noexcept { return fStyleElements; }
  void SetStyleElements(TStyleElements pElements);
  TColor GetColor() const noexcept { return fColor; }
  /// Ends ParentColor.
  void SetColor(TColor pColor);
  bool IsParentColor() const noexcept { return fParentColor; }
  void SetParentColor(bool pParentColor);
  TBiDiMode GetBiDiMode() const noexcept { return fBiDiMode; }
  /// Ends ParentBiDiMode.
  virtual void SetBiDiMode(TBiDiMode pMode);
  bool IsParentBiDiMode() const noexcept { return fParentBiDiMode; }
  void SetParentBiDiMode(bool pParentBiDiMode);
  bool IsRightToLeft() const noexcept { return fBiDiMode != TBiDiMode::bdLeftToRight; }
  /// Order and alignment go from right to left as well, not only the reading.
  bool UseRightToLeftAlignment() const noexcept { return fBiDiMode == TBiDiMode::bdRightToLeft; }
  bool UseRightToLeftScrollBar() const noexcept {
    return fBiDiMode == TBiDiMode::bdRightToLeft || fBiDiMode == TBiDiMode::bdRightToLeftNoAlign;
  }

  /// Shown in a small window while the pointer rests on the control. What follows a "|" isn't shown there, but goes to
  /// the application's hint, which a status bar can show.
  const std::wstring& GetHint() const noexcept { return fHint; }
  void SetHint(std::wstring pHint) { fHint = std::move(pHint); }
  bool GetShowHint() const noexcept { return fShowHint; }
  /// Ends ParentShowHint.
  void SetShowHint(bool pShowHint);
  bool IsParentShowHint() const noexcept { return fParentShowHint; }
  void SetParentShowHint(bool pParentShowHint);

  /// Comes up when a menu is wanted; not owned.
  TPopupMenu* GetPopupMenu() const noexcept { return fPopupMenu; }
  void SetPopupMenu(TPopupMenu* pMenu);

  /// Dots per inch of the monitor that the control is laid out for: its window's, else its parent's, else the
  /// system's.
  int GetCurrentPPI() const noexcept { return fCurrentPPI; }
  /// A length that is `pPixels` at 96 dots per inch.
  int ScaledPixels(int pPixels) const noexcept;
  /// Lays the control and what it holds out for another resolution. Calls ChangeScale.
  void ScaleForPPI(int pNewPPI);

  // --- painting ---
  /// Asks for painting, with what stands behind it if the control isn't opaque.
  virtual void Invalidate();
  /// Paints now what waits for painting.
  virtual void Update();
  virtual void Repaint();
  void Refresh() { Repaint(); }

  // --- messages ---
  /// Sends a message straight to this control: the library's own to WndProc, those of the platform to the window if
  /// there is one. The answer is the message's result; 0 if the control died of it.
  virtual LRESULT Perform(UINT pMessage, WPARAM pWParam = 0, LPARAM pLParam = 0);
  bool GetMouseCapture() const;
  /// Mouse messages come to this control wherever the pointer is, until it is set to false or the system takes it away.
  void SetMouseCapture(bool pCapture);
  /// What a click does. Fires OnClick.
  virtual void Click();

  const TNotifyEvent& GetOnClick() const noexcept { return fOnClick; }
  void SetOnClick(TNotifyEvent pEvent) { fOnClick = std::move(pEvent); }
  const TNotifyEvent& GetOnDblClick() const noexcept { return fOnDblClick; }
  void SetOnDblClick(TNotifyEvent pEvent) { fOnDblClick = std::move(pEvent); }
  const TMouseEvent& GetOnMouseDown() const noexcept { return fOnMouseDown; }
  void SetOnMouseDown(TMouseEvent pEvent) { fOnMouseDown = std::move(pEvent); }
  const TMouseMoveEvent& GetOnMouseMove() const noexcept { return fOnMouseMove; }
  void SetOnMouseMove(TMouseMoveEvent pEvent) { fOnMouseMove = std::move(pEvent); }
  const TMouseEvent& GetOnMouseUp() const noexcept { return fOnMouseUp; }
  void SetOnMouseUp(TMouseEvent pEvent) { fOnMouseUp = std::move(pEvent); }
  const TNotifyEvent& GetOnMouseEnter() const noexcept { return fOnMouseEnter; }
  void SetOnMouseEnter(TNotifyEvent pEvent) { fOnMouseEnter = std::move(pEvent); }
  const TNotifyEvent& GetOnMouseLeave() const noexcept { return fOnMouseLeave; }
  void SetOnMouseLeave(TNotifyEvent pEvent) { fOnMouseLeave = std::move(pEvent); }
  const TMouseWheelEvent& GetOnMouseWheel() const noexcept { return fOnMouseWheel; }
  void SetOnMouseWheel(TMouseWheelEvent pEvent) { fOnMouseWheel = std::move(pEvent); }
  /// The wheel is tilted: above 0 to the right.
  const TMouseWheelEvent& GetOnMouseWheelHorz() const noexcept { return fOnMouseWheelHorz; }
  void SetOnMouseWheelHorz(TMouseWheelEvent pEvent) { fOnMouseWheelHorz = std::move(pEvent); }
  const TContextPopupEvent& GetOnContextPopup() const noexcept { return fOnContextPopup; }
  void SetOnContextPopup(TContextPopupEvent pEvent) { fOnContextPopup = std::move(pEvent); }
  const TNotifyEvent& GetOnResize() const noexcept { return fOnResize; }
  void SetOnResize(TNotifyEvent pEvent) { fOnResize = std::move(pEvent); }

protected:
  friend class TWinControl;

  /// All messages come here first. An override handles what it wants and leaves the rest to the base class.
  virtual void WndProc(TMessage& pMessage);
  /// What remains when nobody has handled a message: for a window, its class's procedure.
  virtual void DefaultHandler(TMessage& pMessage);

  // One handler for each message of the library's own. Overrides call the base class unless they replace it.
  virtual void CMEnabledChanged(TMessage& pMessage);
  virtual void CMVisibleChanged(TMessage& pMessage);
  virtual void CMTextChanged(TMessage& pMessage);
  virtual void CMFontChanged(TMessage& pMessage);
  virtual void CMColorChanged(TMessage& pMessage);
  virtual void CMBiDiModeChanged(TMessage& pMessage);
  virtual void CMParentFontChanged(TMessage& pMessage);
  virtual void CMParentColorChanged(TMessage& pMessage);
  virtual void CMParentBiDiModeChanged(TMessage& pMessage);
  virtual void CMParentShowHintChanged(TMessage& pMessage);
  virtual void CMHintShow(TMessage&) {}
  /// An Alt character went through the window; see CM_DIALOGCHAR.
  virtual void CMDialogChar(TMessage&) {}
  virtual void CMCursorChanged(TMessage&) {}
  virtual void CMMouseEnter(TMessage& pMessage);
  virtual void CMMouseLeave(TMessage& pMessage);
  virtual void CMHitTest(TMessage& pMessage) { pMessage.Result = 1; }
  virtual void CMDesignHitTest(TMessage& pMessage) { pMessage.Result = 0; }
  virtual void CMThemeChanged(TMessage& pMessage);

  // What the mouse does. Each fires its event.
  virtual void MouseDown(TMouseButton pButton, TShiftState pShift, int pX, int pY);
  virtual void MouseMove(TShiftState pShift, int pX, int pY);
  virtual void MouseUp(TMouseButton pButton, TShiftState pShift, int pX, int pY);
  virtual void DblClick();
  /// The mouse that SetMouseCapture held was taken away, by a dialog, a menu or another program: what a press had begun
  /// is over without its release.
  virtual void CaptureLost();
  /// True if the turn of the wheel is used up here; else it goes to the parent.
  virtual bool DoMouseWheel(TShiftState pShift, int pDelta, POINT pScreen);
  /// The same for a tilt to the right, or with `pDelta` below 0 to the left.
  virtual bool DoMouseWheelHorz(TShiftState pShift, int pDelta, POINT pScreen);
  /// A menu is wanted. Fires OnContextPopup.
  virtual void DoContextPopup(POINT pPoint, bool& pHandled);
  /// The size has changed. Fires OnResize.
  virtual void Resize();
  /// All pixel sizes of the control times `pM` / `pD`; its place as well unless `pKeepPlace`.
  virtual void ChangeScale(int pM, int pD, bool pKeepPlace);
  /// StyleElements have changed. Repaints; overrides pass them on to what they are made of.
  virtual void UpdateStyleElements() { Invalidate(); }
  /// Where the alignment's user may change what the parent wants; no by default.
  virtual void AdjustSize() {}

  void Loaded() override;
  void Notification(TComponent* pComponent, TOperation pOperation) override;
  void SetControlStyle(TControlStyle pStyle) noexcept { fControlStyle = pStyle; }
  void IncludeStyle(TControlStyleFlag pFlag) noexcept { fControlStyle.Include(pFlag); }
  void ExcludeStyle(TControlStyleFlag pFlag) noexcept { fControlStyle.Exclude(pFlag); }
  void PutControlState(TControlStateFlag pFlag, bool pIn) noexcept { fControlState.Put(pFlag, pIn); }
  bool HasState(TControlStateFlag pFlag) const noexcept { return fControlState.Contains(pFlag); }
  /// Takes over what the window reports of its place.
  void StoreBounds(const TLayoutBox& pBox);
  /// Puts the control into its parent's list and window.
  virtual void SetZOrder(bool pTopMost);
  const std::wstring& StoredText() const noexcept { return fText; }
  void StoreText(std::wstring pText) { fText = std::move(pText); }
  /// For constructors: the class's own colour, which the parent's may replace.
  void StoreColor(TColor pColor) noexcept { fColor = pColor; }
  void RestoreParentFont() noexcept { fParentFont = true; }
  void RequestAlign();
  /// Forgets the base of the anchors: the control was put, or its parent is another.
  void UpdateAnchorBase();

private:
  void HandleMouseButton(TMessage& pMessage);
  void HandleButtonDown(TMessage& pMessage, TMouseButton pButton, bool pDouble);
  void HandleButtonUp(TMessage& pMessage, TMouseButton pButton);
  void HandleContextMenu(TMessage& pMessage);
  bool ShowPopupMenu(POINT pPoint);
  bool DispatchOwn(TMessage& pMessage);
  bool IgnoresMouseWhileDesigning(const TMessage& pMessage);
  void InvalidateInParent();
  bool HasHintAbove() const noexcept;
  void ForgetCapture() noexcept;
  void FontChanged();

  TWinControl* fParent = nullptr;
  TLayoutBox fBox;
  TAnchorBase fAnchorBase;
  TSizeConstraints fConstraints;
  TMargins fMargins;
  TAlign fAlign = TAlign::alNone;
  bool fAlignWithMargins = false;
  TStyleElements fStyleElements{TStyleElement::seFont, TStyleElement::seClient, TStyleElement::seBorder};
  TAnchors fAnchors{TAnchorKind::akLeft, TAnchorKind::akTop};
  bool fVisible = true;
  bool fEnabled = true;
  TControlStyle fControlStyle;
  TControlState fControlState;
  std::wstring fText;
  TCursor fCursor = crDefault;
  int fCurrentPPI;
  TFont fFont;
  TColor fColor = clWindow;
  TBiDiMode fBiDiMode = TBiDiMode::bdLeftToRight;
  bool fParentFont = true;
  bool fParentColor = true;
  bool fParentBiDiMode = true;
  bool fParentShowHint = true;
  bool fShowHint = false;
  bool fFollowsParent = false; // a property is being taken over from the parent
  std::wstring fHint;
  TPopupMenu* fPopupMenu = nullptr;
  const TComponent* fPopupKey = nullptr; // the same, for the time when it is no more than that
  TNotifyEvent fOnClick;
  TNotifyEvent fOnDblClick;
  TMouseEvent fOnMouseDown;
  TMouseMoveEvent fOnMouseMove;
  TMouseEvent fOnMouseUp;
  TNotifyEvent fOnMouseEnter;
  TNotifyEvent fOnMouseLeave;
  TMouseWheelEvent fOnMouseWheel;
  TMouseWheelEvent fOnMouseWheelHorz;
  TContextPopupEvent fOnContextPopup;
  TNotifyEvent fOnResize;
};

/// The control that has the mouse (SetMouseCapture); null if none of the library's has.
KIV_EXPORT TControl* GetCaptureControl() noexcept;

/// The keys and buttons in the platform's `MK_...` bits, with Alt as it is now.
KIV_EXPORT TShiftState KeysToShiftState(WPARAM pKeys) noexcept;
/// How far whole turns of the wheel scroll, in pixels, by the user's choice ("SPI_GETWHEELSCROLLLINES",
/// "SPI_GETWHEELSCROLLCHARS"): in steps of `pStep`, or in pages. What is left of a turn stays in `pRest`.
KIV_EXPORT int TakeWheelDistance(int& pRest, int pDelta, bool pSideways, int pStep, int pPage) noexcept;
/// Shift, Ctrl and Alt as they are at the message being handled ("GetKeyState").
KIV_EXPORT TShiftState KeyboardShiftState() noexcept;

} // namespace kiv
