#include <forms/PopupMenu.h>

#include <forms/WinControl.h>
#include <framework/Exceptions.h>
#include <framework/Screen.h>
#include <platform/DpiAwareness.h>

namespace kiv {

namespace {

/// The window that a menu belongs to while it is up: gets its messages.
class TMenuWindow : public TWinControl {
public:
  explicit TMenuWindow(TMenu& menu) : fMenu(menu), fWatch(menu.GetAliveToken()) {}
  ~TMenuWindow() override { EndWindow(); }
  std::wstring ClassName() const override { return L"TMenuWindow"; }

protected:
  bool MayExist() const override { return true; }
  void CreateParams(TCreateParams& pParams) override {
    TWinControl::CreateParams(pParams);
    pParams.style = WS_POPUP;
    pParams.exStyle = WS_EX_TOOLWINDOW;
    pParams.width = pParams.height = 0;
    pParams.wndParent = nullptr;
  }
  void WndProc(TMessage& pMessage) override {
    if (fWatch.IsAlive() && fMenu.HandleMessage(pMessage)) return;
    TWinControl::WndProc(pMessage);
  }

private:
  TMenu& fMenu;
  TAliveWatch fWatch;
};

struct TMenuCloser {
  HMENU handle;
  ~TMenuCloser() { DestroyMenu(handle); }
};

} // namespace

TPopupMenu::TPopupMenu(TComponent* pOwner) : TMenu(pOwner) {}

TPopupMenu::~TPopupMenu() {
  BeginDestruction();
  CloseMenu();
}

void TPopupMenu::SetPopupComponent(TComponent* pComponent) {
  if (fPopupComponent == pComponent) return;
  if (fPopupComponent) fPopupComponent->RemoveFreeNotification(this);
  fPopupComponent = pComponent;
  if (pComponent) pComponent->FreeNotification(this);
}

void TPopupMenu::Notification(TComponent* pComponent, TOperation pOperation) {
  if (pOperation == TOperation::opRemove && pComponent == fPopupComponent) fPopupComponent = nullptr;
  TMenu::Notification(pComponent, pOperation);
}

void TPopupMenu::DoPopup() {
  static_cast<void>(FireEvent(GetAliveToken(), fOnPopup, this));
}

UINT TPopupMenu::TrackFlags() const noexcept {
  UINT flags = TPM_RETURNCMD | (fTrackRight ? TPM_RIGHTBUTTON : TPM_LEFTBUTTON);
  if (fAlignment == TPopupAlignment::paCenter)
    flags |= TPM_CENTERALIGN;
  else if ((fAlignment == TPopupAlignment::paRight) != IsRightToLeft())
    flags |= TPM_RIGHTALIGN;
  if (IsRightToLeft()) flags |= TPM_LAYOUTRTL;
  return flags;
}

void TPopupMenu::Popup(int pX, int pY) {
  if (fIsUp) return; // asked for from inside its own loop
  fPopupPoint = {pX, pY};
  const TAliveWatch alive(GetAliveToken());
  DoPopup();
  if (!alive.IsAlive()) return;
  auto* const control = dynamic_cast<TControl*>(fPopupComponent);
  const TMenuCloser menu{CreateHandle(control ? control->GetCurrentPPI() : GetSystemDpi())};
  TMenuWindow window(*this);
  window.HandleNeeded();
  const HWND focused = GetFocus();
  // From the background a click elsewhere wouldn't dismiss the menu ("TrackPopupMenu").
  const DWORD foreground = GetWindowThreadProcessId(GetForegroundWindow(), nullptr);
  if (foreground != GetCurrentThreadId()) SetForegroundWindow(window.GetHandle());
  TPMPARAMS exclude{sizeof(TPMPARAMS), fExclude};
  WORD command = 0;
  {
    const TScreen::ScopedModal modal;
    fIsUp = true;
    const BOOL chosen = TrackPopupMenuEx(menu.handle, TrackFlags(), pX, pY, window.GetHandle(),
                                         IsRectEmpty(&fExclude) ? nullptr : &exclude);
    command = static_cast<WORD>(chosen);
  }
  PostMessageW(window.GetHandle(), WM_NULL, 0, 0);
  if (IsWindow(focused) && GetFocus() != focused) ::SetFocus(focused);
  if (!alive.IsAlive()) return;
  fIsUp = false;
  if (!FireEvent(GetAliveToken(), fOnClose, this)) return;
  // The item of that number may have gone meanwhile.
  TMenuItem* const item = command != 0 ? FindCommand(command) : nullptr;
  if (item) item->Click();
}

void TPopupMenu::CloseMenu() {
  if (fIsUp) EndMenu();
}

// --- of a control ---------------------------------------------------------------------------------------------------

void TControl::SetPopupMenu(TPopupMenu* pMenu) {
  if (fPopupMenu == pMenu) return;
  if (fPopupMenu) fPopupMenu->RemoveFreeNotification(this);
  fPopupMenu = pMenu;
  fPopupKey = pMenu;
  if (pMenu) pMenu->FreeNotification(this);
}

void TControl::Notification(TComponent* pComponent, TOperation pOperation) {
  if (pOperation == TOperation::opRemove && pComponent == fPopupKey) {
    fPopupMenu = nullptr;
    fPopupKey = nullptr;
  }
  TComponent::Notification(pComponent, pOperation);
}

bool TControl::ShowPopupMenu(POINT pPoint) {
  if (!fPopupMenu || !fPopupMenu->IsAutoPopup()) return false;
  const RECT client = GetClientRect();
  // By the keyboard: in the corner.
  if (pPoint.x == -1 && pPoint.y == -1) pPoint = {client.left, client.top};
  const POINT screen = ClientToScreen(pPoint);
  fPopupMenu->SetPopupComponent(this);
  fPopupMenu->Popup(screen.x, screen.y);
  return true;
}

bool TWinControl::DoShortCut(const TMessage& pMessage) {
  return GetPopupMenu() && GetPopupMenu()->IsShortCut(pMessage);
}

} // namespace kiv
