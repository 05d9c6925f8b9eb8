#include <forms/WindowLink.h>

#include <forms/Hint.h>
#include <framework/Application.h>
#include <platform/ActivationContext.h>
#include <platform/Lifecycle.h>
#include <platform/ThisModule.h>

#include <array>
#include <atomic>
#include <cwchar>
#include <exception>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kiv {

LRESULT CALLBACK WindowLinkProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR link);

namespace {

constexpr UINT_PTR SubclassId = 1;

/// The window being made on this thread: the first one of its class belongs to the link. Others come in between, such
/// as those of input methods.
struct TCreation {
  TWindowLink* link;
  const wchar_t* className;
  TCreation* outer;
};
TCreation* gCreation = nullptr; // controls belong to one thread

/// The links by their windows: each notification asks for one, and the platform's own memory of them is slow to ask
/// ("GetWindowSubclass"). Of the one thread that makes controls; others see none.
std::unordered_map<HWND, TWindowLink*>& Links() {
  static auto& links = *new std::unordered_map<HWND, TWindowLink*>; // windows may outlive every static
  return links;
}
std::atomic<DWORD> gLinksThread = 0;

// The controls in windows of hosts hear what the platform tells top-level windows only ("WM_SYSCOLORCHANGE"). The
// host's own would be another one whenever it docks a pane elsewhere, so there is one for all of them.
HWND gListener = nullptr;

void TellHosted(UINT message, WPARAM wParam, LPARAM lParam) {
  std::vector<HWND> windows;
  for (const auto& entry : Links()) windows.push_back(entry.first);
  for (const HWND window : windows) {
    TWinControl* const control = FindControl(window);
    if (control && control->GetParentWindow()) SendMessageW(window, message, wParam, lParam);
  }
}

LRESULT CALLBACK ListenerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_ACTIVATEAPP && wParam == FALSE) CancelHint(); // it would stand in front of the other program
  if (message == WM_NCDESTROY) gListener = nullptr;               // whoever closed it
  try {
    if (message == WM_SYSCOLORCHANGE || message == WM_SETTINGCHANGE) TellHosted(message, wParam, lParam);
  } catch (...) {
    ReportException(std::current_exception());
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

void MakeListener() {
  if (gListener) return;
  WNDCLASSEXW info{};
  info.cbSize = sizeof(info);
  info.lpfnWndProc = &ListenerProc;
  info.hInstance = ThisModule();
  info.lpszClassName = L"Kiv.SettingsListener";
  RegisterClassExW(&info);
  gListener = CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, info.lpszClassName, nullptr, WS_POPUP, 0, 0, 0, 0,
                              nullptr, nullptr, ThisModule(), nullptr);
  AtShutdown([] {
    if (gListener) DestroyWindow(gListener);
  });
}

void Attach(TWindowLink& link, HWND window) {
  const auto former = Links().find(window);
  if (former != Links().end()) former->second->Bury(); // the number is in use again
  if (!CommonControlsApi().SetWindowSubclass(window, &WindowLinkProc, SubclassId, reinterpret_cast<DWORD_PTR>(&link))) {
    return;
  }
  link.window = window;
  gLinksThread = GetCurrentThreadId();
  Links()[window] = &link;
}

LRESULT CALLBACK CreationHook(int code, WPARAM wParam, LPARAM lParam) {
  if (code == HCBT_CREATEWND && gCreation && gCreation->link && !gCreation->link->window) {
    std::array<wchar_t, 128> name{};
    const HWND window = reinterpret_cast<HWND>(wParam);
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (_wcsicmp(name.data(), gCreation->className) == 0) {
      gCreation->link->control->AdoptLink(gCreation->link, window);
      Attach(*gCreation->link, window);
    }
  }
  return CallNextHookEx(nullptr, code, wParam, lParam);
}

/// One window class of ours for each kind of control and style, so that other programs can tell windows apart.
std::wstring OwnClass(const std::wstring& name, UINT style) {
  std::array<wchar_t, 16> suffix{};
  std::swprintf(suffix.data(), suffix.size(), L".%X", style);
  std::wstring className = L"Kiv." + name + suffix.data();
  WNDCLASSEXW info{};
  info.cbSize = sizeof(info);
  if (GetClassInfoExW(ThisModule(), className.c_str(), &info)) return className;
  info = {};
  info.cbSize = sizeof(info);
  info.style = style;
  info.lpfnWndProc = &DefWindowProcW; // the link takes the messages
  info.hInstance = ThisModule();
  info.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  info.lpszClassName = className.c_str();
  RegisterClassExW(&info); // what goes wrong shows when the window is made
  return className;
}

// A control's number for its parent window, where the platform's messages go by number.
WORD NextControlId() noexcept {
  static WORD last = 0x1000;
  last = static_cast<WORD>(last < 0x7FFF ? last + 1 : 0x1000);
  return last;
}

TWinControl* MeasuredControl(HWND parent, UINT id) {
  const HWND window = GetDlgItem(parent, static_cast<int>(id));
  if (TWinControl* const control = window ? FindControl(window) : nullptr) return control;
  // Asked while the window is being made, before its parent knows it.
  return gCreation && gCreation->link ? gCreation->link->control : nullptr;
}

// The control that a notification tells of; null if it is none.
TWinControl* NotifyingControl(HWND parent, const TMessage& message) {
  const auto of = [](auto window) { return window ? FindControl(reinterpret_cast<HWND>(window)) : nullptr; };
  switch (message.Msg) {
  case WM_COMMAND:
  case WM_HSCROLL:
  case WM_VSCROLL:
  case WM_CTLCOLORMSGBOX:
  case WM_CTLCOLOREDIT:
  case WM_CTLCOLORLISTBOX:
  case WM_CTLCOLORBTN:
  case WM_CTLCOLORSCROLLBAR:
  case WM_CTLCOLORSTATIC:
    return of(message.LParam);
  case WM_NOTIFYFORMAT:
    return message.LParam == NF_QUERY ? of(message.WParam) : nullptr;
  case WM_NOTIFY:
    return message.LParam ? FindControl(reinterpret_cast<const NMHDR*>(message.LParam)->hwndFrom) : nullptr;
  case WM_DRAWITEM: {
    const auto* item = reinterpret_cast<const DRAWITEMSTRUCT*>(message.LParam);
    return item && item->CtlType != ODT_MENU ? FindControl(item->hwndItem) : nullptr;
  }
  case WM_DELETEITEM:
    return message.LParam ? FindControl(reinterpret_cast<const DELETEITEMSTRUCT*>(message.LParam)->hwndItem) : nullptr;
  case WM_COMPAREITEM:
    return message.LParam ? FindControl(reinterpret_cast<const COMPAREITEMSTRUCT*>(message.LParam)->hwndItem) : nullptr;
  case WM_MEASUREITEM: {
    const auto* item = reinterpret_cast<const MEASUREITEMSTRUCT*>(message.LParam);
    return item && item->CtlType != ODT_MENU ? MeasuredControl(parent, item->CtlID) : nullptr;
  }
  default:
    return nullptr;
  }
}

LRESULT CALLBACK ParentWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
  const TCommonControlsApi& api = CommonControlsApi();
  if (message == WM_NCDESTROY) api.RemoveWindowSubclass(window, &ParentWindowProc, SubclassId);
  TMessage reflected{message, wParam, lParam, 0};
  try {
    if (ReflectMessage(window, reflected)) return reflected.Result;
  } catch (...) {
    ReportException(std::current_exception());
    return 0;
  }
  return api.DefSubclassProc(window, message, wParam, lParam);
}

} // namespace

LRESULT CALLBACK WindowLinkProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR data) {
  auto* const link = reinterpret_cast<TWindowLink*>(data);
  const bool isLast = message == WM_NCDESTROY;
  if (isLast) CommonControlsApi().RemoveWindowSubclass(window, &WindowLinkProc, SubclassId);
  const LRESULT result = link->Deliver({message, wParam, lParam, 0});
  if (isLast) {
    Links().erase(window);
    link->window = nullptr;
    if (link->control) link->control->WindowGone();
    link->control = nullptr;
  }
  link->LetGo();
  return result;
}

// A message has been handled: a window whose control has gone goes now, if it was the outermost one.
void TWindowLink::LetGo() {
  if (depth > 0 || control) return;
  // Its own last message deletes the link.
  if (window)
    DestroyWindow(window);
  else {
    for (TCreation* creation = gCreation; creation; creation = creation->outer) {
      if (creation->link == this) creation->link = nullptr; // it ended while it was made
    }
    delete this;
  }
}

TWindowLink* TWindowLink::Create(TWinControl& pControl, const TCreateParams& pParams) {
  CommonControlsApi(); // registers the classes
  if (pControl.GetParentWindow()) MakeListener();
  auto owner = std::make_unique<TWindowLink>();
  owner->control = &pControl;
  owner->isOwnClass = pParams.className.empty();
  const std::wstring className =
      owner->isOwnClass ? OwnClass(pControl.ClassName(), pParams.classStyle) : pParams.className;
  TCreation creation{owner.get(), className.c_str(), gCreation};
  const HHOOK hook = SetWindowsHookExW(WH_CBT, &CreationHook, nullptr, GetCurrentThreadId());
  gCreation = &creation;
  const bool isChild = (pParams.style & WS_CHILD) != 0;
  HWND window = nullptr;
  DWORD error = 0;
  {
    const ScopedCommonControls scope;
    window = CreateWindowExW(pParams.exStyle, className.c_str(), pParams.caption.c_str(), pParams.style, pParams.x,
                             pParams.y, pParams.width, pParams.height, pParams.wndParent,
                             isChild ? reinterpret_cast<HMENU>(static_cast<UINT_PTR>(NextControlId())) : nullptr,
                             ThisModule(), nullptr);
    error = GetLastError();
  }
  gCreation = creation.outer;
  if (hook) UnhookWindowsHookEx(hook);
  // A window that has told its end has ended its link as well, and perhaps its control.
  static_cast<void>(owner.release());
  TWindowLink* const link = creation.link;
  if (!link || (!window && !link->window)) {
    delete link;
    SetLastError(error);
    return nullptr;
  }
  if (!link->window) {
    pControl.AdoptLink(link, window);
    Attach(*link, window);
  }
  return link;
}

void TWindowLink::Abandon() noexcept {
  control = nullptr;
  if (!window) return;
  if (depth == 0 || isOwnClass) {
    DestroyWindow(window);
    return;
  }
  ShowWindow(window, SW_HIDE);
  ::SetParent(window, HWND_MESSAGE);
}

void TWindowLink::Bury() noexcept {
  Links().erase(window);
  window = nullptr;
  if (TWinControl* const former = std::exchange(control, nullptr)) former->WindowGone();
  LetGo();
}

// Another window may have its number. That it is this one the platform's memory of subclasses knows, but that is slow
// to ask, and windows that end without a word are rare.
bool TWindowLink::Stands() const noexcept {
  if (depth > 0) return true;
  if (GetWindowThreadProcessId(window, nullptr) != GetCurrentThreadId()) return false;
  DWORD_PTR link = 0;
  return !hasEnded || (CommonControlsApi().GetWindowSubclass(window, &WindowLinkProc, SubclassId, &link) &&
                       link == reinterpret_cast<DWORD_PTR>(this));
}

LRESULT TWindowLink::CallDefault(const TMessage& pMessage) const {
  // Outside of a message of the window's own there is no next procedure to be asked.
  if (frames == 0 || !window) return 0;
  return CommonControlsApi().DefSubclassProc(window, pMessage.Msg, pMessage.WParam, pMessage.LParam);
}

LRESULT TWindowLink::CallClass(UINT pMessage, WPARAM pWParam, LPARAM pLParam) {
  if (!window) return 0;
  const auto procedure = reinterpret_cast<WNDPROC>(GetClassLongPtrW(window, GCLP_WNDPROC));
  if (!procedure) return 0; // it has gone without a word
  ++depth;
  const LRESULT result = CallWindowProcW(procedure, window, pMessage, pWParam, pLParam);
  --depth;
  LetGo();
  return result;
}

LRESULT TWindowLink::Deliver(const TMessage& pMessage) {
  ++depth;
  ++frames;
  if (pMessage.Msg == WM_DESTROY) hasEnded = true;
  TMessage message = pMessage;
  if (!control) {
    message.Result = CallDefault(message);
  } else {
    try {
      control->WndProc(message);
    } catch (...) {
      ReportException(std::current_exception());
    }
  }
  --frames;
  --depth;
  return message.Result;
}

TWindowLink* TWindowLink::Of(HWND pWindow) noexcept {
  if (!pWindow || gLinksThread != GetCurrentThreadId()) return nullptr;
  const auto found = Links().find(pWindow);
  if (found == Links().end()) return nullptr;
  TWindowLink* const link = found->second;
  if (link->Stands()) return link;
  link->Bury();
  return nullptr;
}

void WatchParentWindow(HWND pParent) {
  DWORD_PTR count = 0;
  const TCommonControlsApi& api = CommonControlsApi();
  if (!api.GetWindowSubclass(pParent, &ParentWindowProc, SubclassId, &count)) count = 0;
  api.SetWindowSubclass(pParent, &ParentWindowProc, SubclassId, count + 1);
}

void UnwatchParentWindow(HWND pParent) noexcept {
  DWORD_PTR count = 0;
  const TCommonControlsApi& api = CommonControlsApi();
  if (!api.GetWindowSubclass(pParent, &ParentWindowProc, SubclassId, &count)) return;
  if (count > 1)
    api.SetWindowSubclass(pParent, &ParentWindowProc, SubclassId, count - 1);
  else
    api.RemoveWindowSubclass(pParent, &ParentWindowProc, SubclassId);
}

TWinControl* FindControl(HWND pWindow) noexcept {
  const TWindowLink* const link = TWindowLink::Of(pWindow);
  return link ? link->control : nullptr;
}

bool ReflectMessage(HWND pParent, TMessage& pMessage) {
  TWinControl* const control = NotifyingControl(pParent, pMessage);
  if (!control) return false;
  if (pMessage.Msg == WM_NOTIFYFORMAT) {
    pMessage.Result = NFR_UNICODE;
    return true;
  }
  pMessage.Result = control->Perform(CN_BASE + pMessage.Msg, pMessage.WParam, pMessage.LParam);
  // A control that has no brush of its own leaves the colours to its parent.
  const bool isColor = pMessage.Msg >= WM_CTLCOLORMSGBOX && pMessage.Msg <= WM_CTLCOLORSTATIC;
  return !isColor || pMessage.Result != 0;
}

} // namespace kiv
