#include <forms/PreTranslate.h>

#include <forms/WinControl.h>
#include <framework/Application.h>

#include <exception>

namespace kiv {

namespace {

bool IsTranslated(const MSG& message) {
  TWinControl* const control = NearestControl(message.hwnd);
  if (!control) return false;
  // A window that a control's own code has made, such as the edit of a label: Enter and Delete are the label's then.
  if (!FindControl(message.hwnd) && message.message == WM_KEYDOWN &&
      (SendMessageW(message.hwnd, WM_GETDLGCODE, message.wParam, reinterpret_cast<LPARAM>(&message)) &
       DLGC_WANTALLKEYS) != 0) {
    return false;
  }
  const TAliveWatch alive(control->GetAliveToken());
  if (control->PreProcessMessage(message)) return true;
  // A control that has gone has used its key.
  if (!alive.IsAlive()) return true;
  return control->Perform(CN_BASE + message.message, message.wParam, message.lParam) != 0;
}

} // namespace

bool PreTranslateMessage(const MSG& pMessage) {
  if (pMessage.message < WM_KEYFIRST || pMessage.message > WM_KEYLAST) return false;
  try {
    return IsTranslated(pMessage);
  } catch (...) {
    ReportException(std::current_exception());
    return true;
  }
}

} // namespace kiv
