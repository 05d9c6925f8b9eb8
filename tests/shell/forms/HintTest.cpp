#include "TestControls.h"

#include <doubles/GuiDriver.h>
#include <forms/CustomControl.h>
#include <forms/Hint.h>
#include <forms/StdControls.h>
#include <framework/Application.h>
#include <graphics/Bitmap.h>
#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <oleacc.h>

#include <memory>

namespace kiv::test {
namespace {

using TLog = std::vector<std::wstring>;

// The text of the hint window; empty if none is up.
std::wstring ShownHint() {
  HWND window = nullptr;
  while ((window = FindWindowExW(nullptr, window, nullptr, nullptr)) != nullptr) {
    TWinControl* const control = FindControl(window);
    if (control && control->ClassName() == L"THintWindow" && IsWindowVisible(window)) return control->GetText();
  }
  return {};
}

TEST(Hint, ComesWhereThePointerRestsAndGoesWithIt) {
  THostWindow host;
  TNotedControl panel;
  panel.SetBounds(0, 0, 200, 100);
  panel.SetHint(L"panel|of the panel");
  panel.SetShowHint(true);
  auto* const child = new TNotedControl(&panel);
  child->SetParent(&panel);
  child->SetBounds(0, 0, 50, 50);
  MoveMouse(PointOf(host.Get(), 300, 250));
  panel.CreateParented(host.Get());
  MoveMouse(PointOf(child->GetHandle(), 10, 10)); // has none of its own
  EXPECT_EQ(Application().GetHint(), L"of the panel");
  EXPECT_EQ(ShownHint(), L"");
  EXPECT_TRUE(PumpUntil([] { return ShownHint() == L"panel"; }));
  PressMouse();
  EXPECT_EQ(ShownHint(), L"");
  ReleaseMouse();
  MoveMouse(PointOf(host.Get(), 300, 250));
  EXPECT_TRUE(PumpUntil([] { return Application().GetHint().empty(); }));
  // The control goes while its hint is up.
  auto mark = std::make_unique<TNotedControl>();
  mark->SetHint(L"mark");
  mark->SetShowHint(true);
  mark->SetBounds(0, 0, 50, 50);
  mark->CreateParented(host.Get());
  mark->BringToFront();
  panel.SetVisible(false);
  MoveMouse(PointOf(mark->GetHandle(), 10, 10));
  EXPECT_TRUE(PumpUntil([] { return ShownHint() == L"mark"; }));
  mark.reset();
  CancelHint();
  EXPECT_EQ(ShownHint(), L"");
}

/// Has a hint for each half, and none of its own.
class TTwoHints : public TNotedControl {
protected:
  void CMHintShow(TMessage& pMessage) override {
    auto& hint = *reinterpret_cast<THintInfo*>(pMessage.LParam);
    POINT point;
    GetCursorPos(&point);
    const bool isRight = ScreenToClient(point).x >= 100;
    hint.text = isRight ? L"right" : L"left";
    hint.area = {isRight ? 100 : 0, 0, isRight ? 200 : 100, 100};
  }
};

TEST(Hint, IsAskedForAnewWhereAnotherAreaBegins) {
  THostWindow host;
  TTwoHints control;
  control.SetBounds(0, 0, 200, 100);
  control.SetShowHint(true);
  MoveMouse(PointOf(host.Get(), 300, 250));
  control.CreateParented(host.Get());
  MoveMouse(PointOf(control.GetHandle(), 50, 50));
  EXPECT_TRUE(PumpUntil([] { return ShownHint() == L"left"; }));
  MoveMouse(PointOf(control.GetHandle(), 90, 60)); // still in the same
  EXPECT_EQ(ShownHint(), L"left");
  MoveMouse(PointOf(control.GetHandle(), 150, 50));
  EXPECT_EQ(ShownHint(), L"");
  EXPECT_TRUE(PumpUntil([] { return ShownHint() == L"right"; }));
  PressMouse();
  ReleaseMouse();
  MoveMouse(PointOf(control.GetHandle(), 152, 52));
  EXPECT_EQ(ShownHint(), L"");
  MoveMouse(PointOf(control.GetHandle(), 50, 50)); // away from the click
  EXPECT_TRUE(PumpUntil([] { return ShownHint() == L"left"; }));
  TellTopLevelWindows(WM_ACTIVATEAPP, FALSE, 0);
  EXPECT_EQ(ShownHint(), L"");
}

/// Notes what would be annotated.
class TAnnotationsFake : public IAccPropServices {
public:
  TLog log;

  // On the test's stack.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  ULONG references = 0;

  HRESULT STDMETHODCALLTYPE SetHwndPropStr(HWND, DWORD, DWORD, MSAAPROPID, LPCWSTR pText) override {
    log.push_back(pText);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE ClearHwndProps(HWND, DWORD, DWORD, const MSAAPROPID*, int) override {
    log.push_back(L"-");
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetPropValue(const BYTE*, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetPropServer(const BYTE*, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                          AnnoScope) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE ClearProps(const BYTE*, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetHwndProp(HWND, DWORD, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetHwndPropServer(HWND, DWORD, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                              AnnoScope) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE ComposeHwndIdentityString(HWND, DWORD, DWORD, BYTE**, DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DecomposeHwndIdentityString(const BYTE*, DWORD, HWND*, DWORD*, DWORD*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SetHmenuProp(HMENU, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetHmenuPropStr(HMENU, DWORD, MSAAPROPID, LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetHmenuPropServer(HMENU, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                               AnnoScope) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE ClearHmenuProps(HMENU, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE ComposeHmenuIdentityString(HMENU, DWORD, BYTE**, DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DecomposeHmenuIdentityString(const BYTE*, DWORD, HMENU*, DWORD*) override {
    return E_NOTIMPL;
  }
};

TEST(AccessibleName, IsAnnotatedForAsLongAsTheWindowStands) {
  static TAnnotationsFake* services;
  TAnnotationsFake fake;
  services = &fake;
  ScopedShellApi api;
  api->CoCreateInstance = [](REFCLSID, LPUNKNOWN, DWORD, REFIID, LPVOID* object) -> HRESULT {
    services->AddRef();
    *object = static_cast<IAccPropServices*>(services);
    return S_OK;
  };
  THostWindow host;
  {
    TNotedControl panel;
    panel.SetAccessibleName(L"Files");
    EXPECT_EQ(fake.log, TLog{});
    panel.CreateParented(host.Get());
    panel.RecreateWnd();
    panel.SetAccessibleName(L"Folders");
    TLabel label;
    label.SetText(L"&Places && more");
    label.SetFocusControl(&panel); // has a name of its own
    panel.SetAccessibleName(L"");
    label.SetFocusControl(nullptr);
  }
  EXPECT_EQ(fake.log, (TLog{L"Files", L"-", L"Files", L"Folders", L"Places & more", L"-"}));
  EXPECT_EQ(fake.references, 0u);
}

/// Paints a half at a time: in between nothing of it may be seen.
class TPaintedControl : public TCustomControl {
public:
  explicit TPaintedControl(TComponent* pOwner = nullptr) : TCustomControl(pOwner) {}
  bool raises = false;
  std::vector<COLORREF> seenWhilePainting;

protected:
  void Paint() override {
    if (raises) throw EException(L"paint");
    RECT rect = GetClientRect();
    GetCanvas().FillRect(rect, clRed);
    seenWhilePainting.push_back(PixelOf(GetHandle(), 1, 1));
    rect.left = rect.right / 2;
    GetCanvas().FillRect(rect, clBlue);
  }
};

TEST(Painting, IsSeenInOnePieceAndMayFail) {
  THostWindow host;
  TPaintedControl control;
  control.SetDoubleBuffered(true);
  control.SetColor(clLime);
  control.SetBounds(0, 0, 40, 20);
  control.CreateParented(host.Get());
  EXPECT_TRUE(PumpUntil([&] { return PixelOf(control.GetHandle(), 30, 10) == RGB(0, 0, 255); }));
  EXPECT_EQ(CountPixels(control.GetHandle(), RGB(255, 0, 0)), 400);
  for (const COLORREF color : control.seenWhilePainting) EXPECT_NE(color, RGB(255, 0, 0));
  // For a picture of the window, and for what stands in it and is transparent.
  TBitmap picture(40, 20);
  control.Perform(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(picture.GetCanvas().GetHandle()), PRF_CLIENT);
  EXPECT_EQ(picture.ScanLine(5)[5] & 0xFFFFFF, 0xFF0000u);
  TLog reported;
  Application().SetOnException([&](std::exception_ptr e) { reported.push_back(DescribeException(e)); });
  control.raises = true;
  control.Repaint();
  PumpMessages();
  EXPECT_EQ(reported, TLog{L"paint"}); // once, not for ever
  Application().SetOnException(nullptr);
}

} // namespace
} // namespace kiv::test
