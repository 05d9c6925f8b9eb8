#include <forms/WinControl.h>

#include <forms/WindowLink.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <graphics/StyleServices.h>
#include <platform/DpiAwareness.h>
#include <platform/ShellApi.h>

#include <oleacc.h>
#include <uxtheme.h>

#include <algorithm>
#include <exception>

namespace kiv {

TWinControl::TWinControl(TComponent* pOwner) : TControl(pOwner) {
  StoreColor(clBtnFace);
}

TWinControl::~TWinControl() {
  EndWindow();
  ForgetFocus();
  while (!fControls.empty()) {
    TControl* const control = fControls.back();
    try {
      RemoveControl(control);
    } catch (...) {
      ReportException(std::current_exception());
    }
  }
}

void TWinControl::EndWindow() noexcept {
  BeginDestruction();
  try {
    DestroyHandle();
  } catch (...) {
    ReportException(std::current_exception());
  }
  if (fLink) DestroyWindowHandle(); // a hook of the end raised before it got there
  ReleaseParentWindow();
}

void TWinControl::Loaded() {
  const TAliveWatch alive(GetAliveToken());
  TControl::Loaded();
  if (!alive.IsAlive()) return;
  UpdateControlState();
  if (alive.IsAlive()) Realign();
}

// --- parents and children -------------------------------------------------------------------------------------------

void TWinControl::SetParent(TWinControl* pParent) {
  const TAliveWatch alive(GetAliveToken());
  if (pParent && fParentWindow) SetParentWindow(nullptr);
  if (alive.IsAlive()) TControl::SetParent(pParent);
}

void TWinControl::SetParentWindow(HWND pParent) {
  if (pParent == fParentWindow) return;
  if (pParent && GetWindowThreadProcessId(pParent, nullptr) != GetCurrentThreadId()) {
    throw EInvalidOperation(L"A control can't stand in a window of another thread");
  }
  const TAliveWatch alive(GetAliveToken());
  if (GetParent()) SetParent(nullptr);
  if (alive.IsAlive()) DestroyHandle();
  if (!alive.IsAlive() || GetParent()) return; // a handler may have found it another place
  ReleaseParentWindow();
  if (!pParent) return;
  WatchParentWindow(pParent);
  fParentWindow = pParent;
  ScaleForPPI(GetWindowDpi(pParent));
  if (alive.IsAlive() && IsParentFont()) TakeSystemFont();
  if (alive.IsAlive()) UpdateControlState();
}

void TWinControl::CreateParented(HWND pParent) {
  if (!pParent) throw EInvalidArgument(L"CreateParented: there is no window");
  const TAliveWatch alive(GetAliveToken());
  SetParentWindow(pParent);
  if (alive.IsAlive()) HandleNeeded();
}

void TWinControl::FollowParentWindow(HWND pParent) {
  if (GetWindowThreadProcessId(pParent, nullptr) != GetCurrentThreadId()) return;
  WatchParentWindow(pParent);
  ReleaseParentWindow();
  fParentWindow = pParent;
}

void TWinControl::ReleaseParentWindow() noexcept {
  if (!fParentWindow) return;
  if (IsWindow(fParentWindow)) UnwatchParentWindow(fParentWindow);
  fParentWindow = nullptr;
}

void TWinControl::InsertControl(TControl* pControl) {
  auto* const window = dynamic_cast<TWinControl*>(pControl);
  fControls.push_back(pControl);
  if (window) fTabList.push_back(window);
  pControl->fParent = this;
  const TAliveWatch alive(pControl->GetAliveToken());
  const auto stillThere = [&] { return alive.IsAlive() && pControl->GetParent() == this; };
  pControl->ScaleForPPI(GetCurrentPPI());
  for (const UINT change :
       {CM_PARENTFONTCHANGED, CM_PARENTCOLORCHANGED, CM_PARENTSHOWHINTCHANGED, CM_PARENTBIDIMODECHANGED}) {
    if (!stillThere()) return;
    if (!pControl->IsLoading()) pControl->Perform(change);
  }
  if (!stillThere()) return;
  pControl->UpdateAnchorBase();
  if (window)
    window->UpdateControlState();
  else
    pControl->Invalidate();
  if (stillThere()) AlignControls(pControl);
}

void TWinControl::RemoveControl(TControl* pControl) {
  const auto found = std::find(fControls.begin(), fControls.end(), pControl);
  if (found == fControls.end()) return;
  // By address only: it may be on the way out.
  const auto tab = std::find_if(fTabList.begin(), fTabList.end(),
                                [&](TWinControl* one) { return static_cast<TControl*>(one) == pControl; });
  TWinControl* const window = tab == fTabList.end() ? nullptr : *tab;
  if (window) {
    fTabList.erase(tab);
    // Who hears that the focus goes may do anything, to both.
    const TAliveWatch alive(GetAliveToken());
    if (!window->IsDestroying()) window->DestroyHandle();
    if (!alive.IsAlive()) return;
  } else {
    pControl->Invalidate();
  }
  if (fMouseControl == pControl) fMouseControl = nullptr;
  const auto place = std::find(fControls.begin(), fControls.end(), pControl);
  if (place == fControls.end()) return;
  fControls.erase(place);
  pControl->fParent = nullptr;
  if (!IsDestroying()) AlignControls(nullptr);
}

bool TWinControl::ContainsControl(const TControl* pControl) const noexcept {
  for (; pControl; pControl = pControl->GetParent()) {
    if (pControl == this) return true;
  }
  return false;
}

TControl* TWinControl::ControlAtPos(POINT pPoint, bool pAllowDisabled, bool pAllowWinControls) const {
  for (auto one = fControls.rbegin(); one != fControls.rend(); ++one) {
    TControl* const control = *one;
    const bool isWindow = dynamic_cast<TWinControl*>(control) != nullptr;
    if (isWindow && !pAllowWinControls) continue;
    const bool isSeen = control->IsVisible() || control->IsDesigning();
    if (!isSeen || (!control->IsEnabled() && !pAllowDisabled)) continue;
    const RECT bounds = control->GetBoundsRect();
    if (!PtInRect(&bounds, pPoint)) continue;
    const LPARAM point = MAKELPARAM(pPoint.x - bounds.left, pPoint.y - bounds.top);
    if (isWindow || control->Perform(CM_HITTEST, 0, point) != 0) return control;
  }
  return nullptr;
}

void TWinControl::NotifyControls(UINT pMessage) {
  const TAliveWatch alive(GetAliveToken());
  const std::vector<TControl*> controls = fControls;
  for (TControl* control : controls) {
    // One of them may have taken another along.
    if (std::find(fControls.begin(), fControls.end(), control) == fControls.end()) continue;
    control->Perform(pMessage);
    if (!alive.IsAlive()) return;
  }
}

bool TWinControl::HasGraphicControls() const noexcept {
  return fControls.size() > fTabList.size();
}

// --- text, look -----------------------------------------------------------------------------------------------------

std::wstring TWinControl::GetText() const {
  if (!fHandle) return StoredText();
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(fHandle)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(GetWindowTextW(fHandle, text.data(), static_cast<int>(text.size()))));
  return text;
}

void TWinControl::SetText(const std::wstring& pText) {
  if (GetText() == pText) return;
  StoreText(pText);
  const TAliveWatch alive(GetAliveToken());
  if (fHandle) SetWindowTextW(fHandle, pText.c_str());
  if (alive.IsAlive()) Perform(CM_TEXTCHANGED);
}

void TWinControl::TakeSystemFont() {
  GetFont() = TFont::System(TSystemFont::sfMessage, GetCurrentPPI());
  RestoreParentFont();
}

void TWinControl::SetDoubleBuffered(bool pDoubleBuffered) {
  if (fDoubleBuffered == pDoubleBuffered) return;
  fDoubleBuffered = pDoubleBuffered;
  Invalidate();
}

void TWinControl::CMFontChanged(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  ApplyFont();
  TControl::CMFontChanged(pMessage);
  if (alive.IsAlive()) NotifyControls(CM_PARENTFONTCHANGED);
}

void TWinControl::ApplyFont() {
  if (!fHandle) return;
  // The window goes on using the handle: it must last as long.
  const auto former = std::exchange(fWindowFont, GetFont().GetSharedHandle());
  SendMessageW(fHandle, WM_SETFONT, reinterpret_cast<WPARAM>(fWindowFont->Get()), TRUE);
}

// A system colour isn't the same in the dark.
void TWinControl::UpdateBrush() {
  fBrush.SetColor(GetColor() == clNone ? clNone : StyleServices().GetSystemColor(GetColor()));
}

void TWinControl::CMColorChanged(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  UpdateBrush();
  TControl::CMColorChanged(pMessage);
  if (alive.IsAlive()) NotifyControls(CM_PARENTCOLORCHANGED);
}

void TWinControl::CMBiDiModeChanged(TMessage&) {
  const TAliveWatch alive(GetAliveToken());
  RecreateWnd();
  if (alive.IsAlive()) NotifyControls(CM_PARENTBIDIMODECHANGED);
}

const wchar_t* TWinControl::WindowTheme() const {
  return StyleServices().IsDarkModeActive() ? L"DarkMode_Explorer" : nullptr;
}

void TWinControl::ApplyLook() {
  if (!fHandle) return;
  StyleServices().ApplyDarkMode(fHandle, !GetParent() && !fParentWindow);
  const wchar_t* const name = WindowTheme();
  std::wstring wanted = name ? name : L"";
  if (fWindowTheme == wanted) return;
  fWindowTheme = std::move(wanted);
  SetWindowTheme(fHandle, name, nullptr);
}

void TWinControl::CMThemeChanged(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  UpdateBrush();
  ApplyLook();
  if (!alive.IsAlive()) return;
  TControl::CMThemeChanged(pMessage);
  if (alive.IsAlive()) NotifyControls(CM_THEMECHANGED);
}

// --- accessibility --------------------------------------------------------------------------------------------------

namespace {

// "CLSID_AccPropServices", "IID_IAccPropServices", "PROPID_ACC_NAME" ("Dynamic Annotation API").
constexpr CLSID AccPropServices = {0xb5f8350b, 0x0548, 0x48b1, {0xa6, 0xee, 0x88, 0xbd, 0x00, 0xb4, 0xa5, 0xe7}};
constexpr IID AccPropServicesId = {0x6e26e776, 0x04f0, 0x495d, {0x80, 0xe4, 0x33, 0x30, 0x35, 0x2e, 0x31, 0x69}};
constexpr GUID AccName = {0x608d3df8, 0x8128, 0x4aa7, {0xa4, 0x28, 0xf5, 0x5e, 0x49, 0x26, 0x72, 0x91}};

} // namespace

void TWinControl::SetAccessibleName(std::wstring pName) {
  PutName(fAccessibleName, std::move(pName));
}

void TWinControl::SetLabelText(std::wstring pText) {
  PutName(fLabelText, std::move(pText));
}

void TWinControl::PutName(std::wstring& pPart, std::wstring pName) {
  const std::wstring former = NameToTell();
  pPart = std::move(pName);
  if (fHandle && NameToTell() != former) ApplyAccessibleName();
}

// A platform without the service has no name of ours; nothing else depends on it.
void TWinControl::ApplyAccessibleName() {
  ComPtr<IAccPropServices> services;
  const auto create = ShellApi().CoCreateInstance;
  const HRESULT made = create ? create(AccPropServices, nullptr, CLSCTX_INPROC_SERVER, AccPropServicesId,
                                       reinterpret_cast<void**>(services.ReleaseAndGetAddressOf()))
                              : E_FAIL;
  if (FAILED(made) || !services) return;
  const auto object = static_cast<DWORD>(OBJID_CLIENT);
  if (NameToTell().empty()) {
    GUID property = AccName;
    services->ClearHwndProps(fHandle, object, CHILDID_SELF, &property, 1);
  } else {
    services->SetHwndPropStr(fHandle, object, CHILDID_SELF, AccName, NameToTell().c_str());
  }
}

// --- state of the window --------------------------------------------------------------------------------------------

void TWinControl::CMEnabledChanged(TMessage&) {
  const TAliveWatch alive(GetAliveToken());
  const bool takesInput = IsEnabled() || IsDesigning();
  if (!takesInput) GiveFocusAway();
  if (alive.IsAlive() && fHandle) EnableWindow(fHandle, takesInput);
}

void TWinControl::CMVisibleChanged(TMessage&) {
  UpdateControlState();
}

void TWinControl::CMCursorChanged(TMessage&) {
  POINT point;
  if (!fHandle || !GetCursorPos(&point) || WindowFromPoint(point) != fHandle) return;
  SendMessageW(fHandle, WM_SETCURSOR, reinterpret_cast<WPARAM>(fHandle), MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
}

} // namespace kiv
