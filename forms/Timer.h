#pragma once

#include <framework/Component.h>
#include <platform/Types.h>

namespace kiv {

/// Fires an event at an interval, through the message loop of the thread that made it ("SetTimer"): when nothing else
/// is to be done. Main thread only.
class KIV_EXPORT TTimer : public TComponent {
public:
  /// Enabled, one second.
  explicit TTimer(TComponent* pOwner = nullptr) : TComponent(pOwner) {}
  ~TTimer() override;
  std::wstring ClassName() const override { return L"TTimer"; }

  bool IsEnabled() const noexcept { return fEnabled; }
  /// Switching it off and on begins the interval anew.
  void SetEnabled(bool pEnabled);
  /// Milliseconds; the platform makes less than 10 of them 10. 0 stops it. Begins the interval anew.
  int GetInterval() const noexcept { return fInterval; }
  void SetInterval(int pInterval);
  const TNotifyEvent& GetOnTimer() const noexcept { return fOnTimer; }
  /// Without a listener no timer runs.
  void SetOnTimer(TNotifyEvent pEvent);

protected:
  /// The interval is over. Fires OnTimer.
  virtual void Timer();

private:
  static void CALLBACK Elapsed(HWND pWindow, UINT pMessage, UINT_PTR pId, DWORD pTime);
  void Stop() noexcept;
  void Start();

  bool fEnabled = true;
  int fInterval = 1000;
  UINT_PTR fId = 0;
  TNotifyEvent fOnTimer;
};

} // namespace kiv
