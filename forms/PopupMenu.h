#pragma once

#include <forms/Menu.h>

namespace kiv {

class TControl;

enum class TPopupAlignment { paLeft, paRight, paCenter };

/// A menu that comes up at a point. A control shows its own (PopupMenu) when the right button or the menu key asks for
/// it, and takes its short cuts where the focus is in the control (see PreTranslateMessage).
class KIV_EXPORT TPopupMenu : public TMenu {
public:
  explicit TPopupMenu(TComponent* pOwner = nullptr);
  ~TPopupMenu() override;
  std::wstring ClassName() const override { return L"TPopupMenu"; }

  /// Shows it at a point of the screen until the user has chosen or dismissed it, and does what he chose. Closures that
  /// wait for the main thread run meanwhile. Any handler may destroy the menu.
  virtual void Popup(int pX, int pY);
  /// Dismisses it if it is up.
  void CloseMenu();

  /// The side of the point; mirrored for languages from right to left.
  TPopupAlignment GetAlignment() const noexcept { return fAlignment; }
  void SetAlignment(TPopupAlignment pAlignment) noexcept { fAlignment = pAlignment; }
  /// False: controls don't show it by themselves.
  bool IsAutoPopup() const noexcept { return fAutoPopup; }
  void SetAutoPopup(bool pAutoPopup) noexcept { fAutoPopup = pAutoPopup; }
  /// The right button chooses as well.
  bool IsRightButtonTracked() const noexcept { return fTrackRight; }
  void SetRightButtonTracked(bool pTracked) noexcept { fTrackRight = pTracked; }
  /// Not covered by the menu, on the screen; empty: none. For drop-downs.
  void SetExcludeRect(const RECT& pRect) noexcept { fExclude = pRect; }
  /// What it came up for; null if a program asked for it, and when that component has gone.
  TComponent* GetPopupComponent() const noexcept { return fPopupComponent; }
  void SetPopupComponent(TComponent* pComponent);
  /// Where it came up.
  POINT GetPopupPoint() const noexcept { return fPopupPoint; }

  /// Before it is shown: the time to set up its items.
  const TNotifyEvent& GetOnPopup() const noexcept { return fOnPopup; }
  void SetOnPopup(TNotifyEvent pEvent) { fOnPopup = std::move(pEvent); }
  /// It is down, before what was chosen is done.
  const TNotifyEvent& GetOnClose() const noexcept { return fOnClose; }
  void SetOnClose(TNotifyEvent pEvent) { fOnClose = std::move(pEvent); }

protected:
  virtual void DoPopup();
  void Notification(TComponent* pComponent, TOperation pOperation) override;

private:
  UINT TrackFlags() const noexcept;

  TPopupAlignment fAlignment = TPopupAlignment::paLeft;
  bool fAutoPopup = true;
  bool fTrackRight = false;
  bool fIsUp = false;
  RECT fExclude{};
  POINT fPopupPoint{-1, -1};
  TComponent* fPopupComponent = nullptr;
  TNotifyEvent fOnPopup;
  TNotifyEvent fOnClose;
};

} // namespace kiv
