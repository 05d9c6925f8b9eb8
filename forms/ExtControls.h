#pragma once

#include <forms/CustomControl.h>

namespace kiv {

enum class TAlignment { taLeftJustify, taRightJustify, taCenter };
enum class TBevelCut { bvNone, bvLowered, bvRaised };

/// A surface that holds other controls.
class KIV_EXPORT TCustomPanel : public TCustomControl {
public:
  explicit TCustomPanel(TComponent* pOwner = nullptr);
  ~TCustomPanel() override;
  std::wstring ClassName() const override { return L"TCustomPanel"; }

  TAlignment GetAlignment() const noexcept { return fAlignment; }
  void SetAlignment(TAlignment pAlignment);
  /// A frame inside the edges, which aligned children leave free.
  TBevelCut GetBevelOuter() const noexcept { return fBevelOuter; }
  void SetBevelOuter(TBevelCut pBevel);
  /// Room inside the frame that aligned children leave free as well, in pixels at 96 dots per inch.
  int GetBorderWidth() const noexcept { return fBorderWidth; }
  void SetBorderWidth(int pWidth);
  TBorderStyle GetBorderStyle() const noexcept { return fBorderStyle; }
  void SetBorderStyle(TBorderStyle pStyle);
  /// The caption is drawn.
  bool GetShowCaption() const noexcept { return fShowCaption; }
  void SetShowCaption(bool pShowCaption);

protected:
  void CreateParams(TCreateParams& pParams) override;
  void AdjustClientRect(RECT& pRect) const override;
  void Paint() override;

private:
  TAlignment fAlignment = TAlignment::taCenter;
  TBevelCut fBevelOuter = TBevelCut::bvRaised;
  TBorderStyle fBorderStyle = TBorderStyle::bsNone;
  int fBorderWidth = 0;
  bool fShowCaption = true;
};

/// A panel for applications to place.
class KIV_EXPORT TPanel : public TCustomPanel {
public:
  using TCustomPanel::TCustomPanel;
  ~TPanel() override;
  std::wstring ClassName() const override { return L"TPanel"; }
};

/// The border between an aligned control and what takes the rest: drags its edge. Stands at the same alignment as that
/// control, next to it.
class KIV_EXPORT TSplitter : public TGraphicControl {
public:
  explicit TSplitter(TComponent* pOwner = nullptr);
  ~TSplitter() override;
  std::wstring ClassName() const override { return L"TSplitter"; }

  void SetAlign(TAlign pAlign) override;
  /// What both sides keep at least, in pixels at 96 dots per inch.
  int GetMinSize() const noexcept { return fMinSize; }
  void SetMinSize(int pMinSize) noexcept { fMinSize = pMinSize; }
  const TNotifyEvent& GetOnMoved() const noexcept { return fOnMoved; }
  void SetOnMoved(TNotifyEvent pEvent) { fOnMoved = std::move(pEvent); }

protected:
  void MouseDown(TMouseButton pButton, TShiftState pShift, int pX, int pY) override;
  void MouseMove(TShiftState pShift, int pX, int pY) override;
  void MouseUp(TMouseButton pButton, TShiftState pShift, int pX, int pY) override;
  void CaptureLost() override;
  void Notification(TComponent* pComponent, TOperation pOperation) override;
  void Paint() override;

private:
  TControl* FindResized() const;
  bool IsUpright() const noexcept { return GetAlign() == TAlign::alLeft || GetAlign() == TAlign::alRight; }

  TControl* fResized = nullptr; // while its edge is dragged
  const TComponent* fResizedKey = nullptr;
  POINT fStart{};
  int fStartSize = 0;
  int fMinSize = 30;
  TNotifyEvent fOnMoved;
};

/// A surface with scroll bars for what doesn't fit in.
class KIV_EXPORT TScrollBox : public TWinControl {
public:
  explicit TScrollBox(TComponent* pOwner = nullptr);
  ~TScrollBox() override;
  std::wstring ClassName() const override { return L"TScrollBox"; }

  TBorderStyle GetBorderStyle() const noexcept { return fBorderStyle; }
  void SetBorderStyle(TBorderStyle pStyle);
  /// How far the content is scrolled, in pixels.
  POINT GetScrollPosition() const noexcept { return fPosition; }
  void ScrollTo(int pX, int pY);
  /// Scrolls until a control in it can be seen.
  void ScrollInView(const TControl& pControl);

protected:
  void CreateParams(TCreateParams& pParams) override;
  void CreateWnd() override;
  void WndProc(TMessage& pMessage) override;
  void AlignControls(TControl* pControl) override;
  bool DoMouseWheel(TShiftState pShift, int pDelta, POINT pScreen) override;
  bool DoMouseWheelHorz(TShiftState pShift, int pDelta, POINT pScreen) override;
  void ChangeScale(int pM, int pD, bool pKeepPlace) override;
  void CMChildFocused(TMessage& pMessage) override;

private:
  SIZE ContentSize() const;
  void UpdateScrollBars();
  void HandleScroll(int pBar, UINT pRequest);

  TBorderStyle fBorderStyle = TBorderStyle::bsSingle;
  POINT fPosition{};
  int fWheelRest = 0;
  int fTiltRest = 0;
  bool fUpdating = false;
};

} // namespace kiv
