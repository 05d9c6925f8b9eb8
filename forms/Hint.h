#pragma once

#include <forms/Control.h>
#include <forms/WinControl.h>

#include <string>

namespace kiv {

/// The small window that shows a hint.
class KIV_EXPORT THintWindow : public TWinControl {
public:
  explicit THintWindow(TComponent* pOwner = nullptr);
  ~THintWindow() override;
  std::wstring ClassName() const override { return L"THintWindow"; }

  /// The size for a text, broken at `pMaxWidth` pixels unless that is 0. The rectangle begins at (0, 0).
  virtual RECT CalcHintRect(int pMaxWidth, const std::wstring& pHint);
  /// Shows a text in a rectangle of the screen, which is moved so that it can be seen whole.
  virtual void ActivateHint(const RECT& pRect, const std::wstring& pHint);
  void ReleaseHint();

protected:
  void CreateParams(TCreateParams& pParams) override;
  void PaintWindow(HDC pDC) override;
  void WndProc(TMessage& pMessage) override;
};

/// The part of a hint in front of its first "|", for the hint window; without one all of it.
KIV_EXPORT std::wstring GetShortHint(const std::wstring& pHint);
/// The part behind it, for the status bar; without one all of it.
KIV_EXPORT std::wstring GetLongHint(const std::wstring& pHint);

/// A control tells of a mouse message of its own: moves, buttons, and that the pointer left. Controls that host foreign
/// windows call it for these. Once the pointer has rested for the time of a double click, the control is asked for its
/// hint (CM_HINTSHOW, with GetHint as the text) if it shows hints, then its parents until one has a text. The hint goes
/// when the pointer leaves the area that it is for.
KIV_EXPORT void HintMouseMessage(TControl& pControl, const TMessage& pMessage);
/// Takes the hint away and forgets what was about to be shown.
KIV_EXPORT void CancelHint() noexcept;

} // namespace kiv
