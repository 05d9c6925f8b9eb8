#pragma once

#include <forms/WinControl.h>

#include <string>
#include <utility>
#include <vector>

namespace kiv::test {

/// A control on a window class of its own that writes down what happens to it.
class TNotedControl : public TWinControl {
public:
  explicit TNotedControl(TComponent* pOwner = nullptr, std::wstring pMark = {})
      : TWinControl(pOwner), fMark(std::move(pMark)) {
    IncludeStyle(TControlStyleFlag::csAcceptsControls);
  }
  ~TNotedControl() override { EndWindow(); }
  std::wstring ClassName() const override { return L"TNotedControl"; }

  std::vector<std::wstring>* log = nullptr;

  using TWinControl::GetControlState;
  using TWinControl::IsRecreating;

protected:
  void Note(const wchar_t* pWhat) const {
    if (log) log->push_back(fMark + pWhat);
  }
  void CreateWnd() override {
    TWinControl::CreateWnd();
    Note(IsRecreating() ? L"create again" : L"create");
  }
  void WMDestroy(TMessage& pMessage) override {
    Note(IsDestroying() ? L"end" : L"destroy");
    TWinControl::WMDestroy(pMessage);
  }
  void DoEnter() override {
    Note(L"enter");
    TWinControl::DoEnter();
  }
  void DoExit() override {
    Note(L"exit");
    TWinControl::DoExit();
  }

private:
  std::wstring fMark;
};

/// A control on a window class of the platform.
class TPlatformControl : public TWinControl {
public:
  explicit TPlatformControl(TComponent* pOwner, std::wstring pClass, DWORD pStyle = 0)
      : TWinControl(pOwner), fClass(std::move(pClass)), fStyle(pStyle) {
    SetBounds(10, 10, 100, 30);
    SetTabStop(true);
    // The class has the mouse and makes clicks itself.
    SetControlStyle({TControlStyleFlag::csDoubleClicks});
  }
  ~TPlatformControl() override { EndWindow(); }
  std::wstring ClassName() const override { return L"TPlatformControl"; }

  std::vector<UINT> commands;
  std::vector<UINT> notifications;
  TNotifyEvent onCommand;

protected:
  void CreateParams(TCreateParams& pParams) override {
    TWinControl::CreateParams(pParams);
    pParams.className = fClass;
    pParams.style |= fStyle;
  }
  void CNCommand(TMessage& pMessage) override {
    commands.push_back(HIWORD(pMessage.WParam));
    static_cast<void>(FireEvent(GetAliveToken(), onCommand, this));
  }
  void CNNotify(TMessage& pMessage) override {
    notifications.push_back(reinterpret_cast<const NMHDR*>(pMessage.LParam)->code);
  }

private:
  std::wstring fClass;
  DWORD fStyle;
};

} // namespace kiv::test
