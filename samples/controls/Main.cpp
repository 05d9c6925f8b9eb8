// The small controls, a menu and a modal form, in a program that knows nothing of the library but these: its own window
// class, its own message loop.
//
//   controls [--dpi N] [--rtl] [--dark] [--form] [--menu]
//
// --dpi N shows all windows as on a monitor of N dots per inch. --dark shows the library's dark colours also where the
// platform has no dark controls.

#include <forms/CheckListBox.h>
#include <forms/Form.h>
#include <forms/PopupMenu.h>
#include <forms/PreTranslate.h>
#include <forms/StdControls.h>
#include <framework/Application.h>
#include <graphics/StyleServices.h>
#include <platform/DpiAwareness.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <platform/ShellApi.h>

#include <ole2.h>

#include <memory>
#include <string>

namespace {

using namespace kiv;

struct TOptions {
  int dpi = 0;
  bool rtl = false;
  bool dark = false;
  bool form = false;
  bool menu = false;
};

template <typename T>
T* Place(TWinControl& pParent, const wchar_t* pText, int pLeft, int pTop, int pWidth, int pHeight) {
  auto* const control = new T(&pParent);
  control->SetParent(&pParent);
  control->SetBounds(pParent.ScaledPixels(pLeft), pParent.ScaledPixels(pTop), pParent.ScaledPixels(pWidth),
                     pParent.ScaledPixels(pHeight));
  control->SetText(pText);
  return control;
}

/// A picture that paints itself: the colours of the look in use.
class TColors : public TCustomControl {
public:
  explicit TColors(TComponent* pOwner) : TCustomControl(pOwner) { SetDoubleBuffered(true); }

protected:
  void Paint() override {
    static constexpr TColor colors[] = {clWindow, clBtnFace, clHighlight, clWindowText, clGrayText, clInfoBk};
    RECT rect = GetClientRect();
    const int width = GetClientWidth() / static_cast<int>(std::size(colors));
    for (const TColor color : colors) {
      rect.right = rect.left + width;
      GetCanvas().FillRect(rect, StyleServices().GetSystemColor(color));
      rect.left = rect.right;
    }
  }
};

class TPage : public TCustomPanel {
public:
  explicit TPage(TComponent* pOwner = nullptr) : TCustomPanel(pOwner) {
    SetBevelOuter(TBevelCut::bvNone);
    SetShowCaption(false);
    SetBounds(0, 0, ScaledPixels(480), ScaledPixels(380)); // anchors count from here
    BuildMenu();
    BuildSide();
    BuildCenter();
    SetShowHint(true);
  }
  ~TPage() override { EndWindow(); }
  std::wstring ClassName() const override { return L"TPage"; }

  void ShowForm() {
    TForm form(this);
    form.SetBorderStyle(TFormBorderStyle::fbDialog);
    form.SetPosition(TFormPosition::poOwnerFormCenter);
    form.SetText(L"A modal form");
    form.SetBiDiMode(GetBiDiMode());
    form.HandleNeeded(); // lengths count in pixels of its monitor
    form.SetClientSize(ScaledPixels(260), ScaledPixels(110));
    Place<TLabel>(form, L"&Name:", 12, 15, 60, 17)->SetFocusControl(Place<TEdit>(form, L"New Folder", 80, 12, 168, 23));
    auto* const ok = Place<TButton>(form, L"OK", 88, 72, 75, 25);
    ok->SetDefault(true);
    ok->SetModalResult(mrOk);
    auto* const cancel = Place<TButton>(form, L"Cancel", 172, 72, 75, 25);
    cancel->SetCancel(true);
    cancel->SetModalResult(mrCancel);
    fStatus->SetText(form.ShowModal() == mrOk ? L"OK" : L"Cancelled");
  }
  void ShowMenu() {
    const POINT point = ClientToScreen({ScaledPixels(200), ScaledPixels(60)});
    fMenu->Popup(point.x, point.y);
  }

protected:
  void ChangeScale(int pM, int pD, bool pKeepPlace) override {
    fImages->ChangeScale(pM, pD);
    TCustomPanel::ChangeScale(pM, pD, pKeepPlace);
  }
  void CMBiDiModeChanged(TMessage& pMessage) override {
    fMenu->SetRightToLeft(IsRightToLeft());
    TCustomPanel::CMBiDiModeChanged(pMessage);
  }

private:
  TMenuItem* AddItem(TMenuItem& pParent, const wchar_t* pCaption, const wchar_t* pKeys = L"") {
    auto* const item = new TMenuItem;
    item->SetCaption(pCaption);
    item->SetShortCut(TextToShortCut(pKeys));
    item->SetOnClick([this, pCaption](TPersistent*) { fStatus->SetText(pCaption); });
    pParent.Add(item);
    return item;
  }

  void BuildMenu() {
    fMenu = new TPopupMenu(this);
    fImages = new TImageList(this);
    fImages->SetSize(ScaledPixels(16), ScaledPixels(16));
    for (const wchar_t* const icon : {IDI_INFORMATION, IDI_WARNING, IDI_QUESTION}) {
      fImages->AddIcon(LoadIconW(nullptr, icon));
    }
    fMenu->SetImages(fImages);
    TMenuItem& root = fMenu->GetItems();
    auto* const open = AddItem(root, L"&Open", L"Enter");
    open->SetDefault(true);
    open->SetImageIndex(0);
    AddItem(root, L"&Delete", L"Del")->SetImageIndex(1);
    root.AddSeparator();
    auto* const view = AddItem(root, L"&View");
    for (const wchar_t* const caption : {L"&Icons", L"&List", L"&Report"}) {
      auto* const item = AddItem(*view, caption);
      item->SetRadioItem(true);
      item->SetAutoCheck(true);
      item->SetChecked(view->GetCount() == 2);
    }
    auto* const hidden = AddItem(root, L"&Hidden files", L"Ctrl+H");
    hidden->SetAutoCheck(true);
    hidden->SetChecked(true);
    AddItem(root, L"&Paste", L"Ctrl+V")->SetEnabled(false);
    SetPopupMenu(fMenu);
  }

  void BuildSide() {
    auto* const side = Place<TPanel>(*this, L"", 0, 0, 150, 100);
    side->SetAlign(TAlign::alLeft);
    side->SetBorderWidth(6);
    auto* const list = Place<TCheckListBox>(*side, L"", 0, 0, 100, 100);
    list->SetAlign(TAlign::alClient);
    for (const wchar_t* const text : {L"Name", L"Size", L"Type", L"Date modified", L"Attributes"}) {
      list->Add(text, list->GetCount() < 3);
    }
    list->SetItemEnabled(0, false);
    list->SetItemIndex(1);
    auto* const splitter = new TSplitter(this);
    splitter->SetParent(this);
    splitter->SetBounds(side->GetWidth(), 0, ScaledPixels(4), 10);
    splitter->SetAlign(TAlign::alLeft);
    fStatus = Place<TLabel>(*this, L"Ready", 0, 400, 100, 17);
    fStatus->SetAlign(TAlign::alBottom);
  }

  void BuildCenter() {
    auto* const box = Place<TScrollBox>(*this, L"", 0, 0, 300, 300);
    box->SetAlign(TAlign::alClient);
    auto* const label = Place<TLabel>(*box, L"&Text:", 12, 16, 60, 17);
    auto* const edit = Place<TEdit>(*box, L"Some text", 80, 12, 150, 23);
    label->SetFocusControl(edit);
    edit->SetAnchors({TAnchorKind::akLeft, TAnchorKind::akTop, TAnchorKind::akRight});
    edit->SetHint(L"An edit field|Type what you like");
    Place<TEdit>(*box, L"", 80, 42, 150, 23)->SetTextHint(L"Search");
    Place<TCheckBox>(*box, L"A &check box", 80, 74, 150, 17)->SetChecked(true);
    auto* const button = Place<TButton>(*box, L"&Modal form...", 80, 100, 110, 27);
    button->SetOnClick([this](TPersistent*) { ShowForm(); });
    Place<TButton>(*box, L"Disabled", 200, 100, 80, 27)->SetEnabled(false);
    auto* const colors = Place<TColors>(*box, L"", 12, 140, 268, 40);
    colors->SetHint(L"The colours of this look");
    auto* const wrapped = Place<TLabel>(*box, L"", 12, 190, 268, 50);
    wrapped->SetWordWrap(true);
    wrapped->SetWidth(ScaledPixels(268));
    wrapped->SetText(L"A longer text that is broken into lines where the label ends, and grows downwards with them.");
    Place<TButton>(*box, L"Far down", 12, 420, 110, 27);
  }

  TPopupMenu* fMenu = nullptr;
  TImageList* fImages = nullptr;
  TLabel* fStatus = nullptr;
};

LRESULT CALLBACK HostProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const HWND page = GetWindow(window, GW_CHILD);
  switch (message) {
  case WM_SIZE:
    if (page) SetWindowPos(page, nullptr, 0, 0, LOWORD(lParam), HIWORD(lParam), SWP_NOZORDER | SWP_NOACTIVATE);
    return 0;
  case WM_SETFOCUS:
    if (page) SetFocus(page);
    return 0;
  case WM_DESTROY:
    PostQuitMessage(0);
    return 0;
  default:
    return DefWindowProcW(window, message, wParam, lParam);
  }
}

HWND CreateHost(HINSTANCE instance, const TOptions& options) {
  WNDCLASSW info{};
  info.lpfnWndProc = &HostProc;
  info.hInstance = instance;
  info.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  info.lpszClassName = L"ControlsSample";
  RegisterClassW(&info);
  const int dpi = options.dpi > 0 ? options.dpi : GetSystemDpi();
  return CreateWindowExW(0, info.lpszClassName, L"Controls", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 40, 40,
                         MulDiv(480, dpi, 96), MulDiv(380, dpi, 96), nullptr, nullptr, instance, nullptr);
}

// The platform as the options want it.
class ScopedPlatform {
public:
  explicit ScopedPlatform(const TOptions& options) {
    gDpi = static_cast<UINT>(options.dpi);
    if (gDpi > 0) fApi->GetDpiForWindow = [](HWND) { return gDpi; };
    if (!options.dark || IsDarkModeSupported()) return;
    fApi->AllowDarkModeForWindow = [](HWND, bool) { return true; };
    fApi->ShouldAppsUseDarkMode = [] { return true; };
  }

private:
  static inline UINT gDpi = 0;
  ScopedShellApi fApi;
};

void Run(HINSTANCE instance, int show, const TOptions& options) {
  const ScopedPlatform platform(options);
  Application();
  if (options.dark) StyleServices().SetDarkMode(TDarkMode::dmDark);
  const HWND host = CreateHost(instance, options);
  Application().SetHandle(host);
  RECT client{};
  GetClientRect(host, &client);
  TPage page;
  page.SetParentWindow(host);
  page.SetBounds(0, 0, client.right, client.bottom);
  if (options.rtl) {
    page.SetBiDiMode(TBiDiMode::bdRightToLeft);
    page.FlipChildren(true);
  }
  ShowWindow(host, show);
  if (options.form) MainThread::Queue([&page] { page.ShowForm(); });
  if (options.menu) MainThread::Queue([&page] { page.ShowMenu(); });
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    if (PreTranslateMessage(message)) continue;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

} // namespace

int WINAPI wWinMain(HINSTANCE pInstance, HINSTANCE, wchar_t*, int pShow) {
  TOptions options;
  for (int i = 1; i < __argc; ++i) {
    const std::wstring argument = __wargv[i];
    if (argument == L"--rtl") options.rtl = true;
    if (argument == L"--dark") options.dark = true;
    if (argument == L"--form") options.form = true;
    if (argument == L"--menu") options.menu = true;
    if (argument == L"--dpi" && i + 1 < __argc) options.dpi = static_cast<int>(std::wcstol(__wargv[++i], nullptr, 10));
  }
  // What a manifest would say as well.
  SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
  OleInitialize(nullptr);
  Run(pInstance, pShow, options);
  Shutdown();
  OleUninitialize();
  return 0;
}
