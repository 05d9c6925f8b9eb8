#pragma once

#include <forms/CustomControl.h>

namespace kivexplorer {

enum class TGlyph { Back, Forward, Up, Refresh, NewFolder };

/// A flat button with a picture that is drawn, so that it suits any resolution and any colours.
class TToolButton : public kiv::TCustomControl {
public:
  TToolButton(kiv::TComponent* pOwner, TGlyph pGlyph);
  ~TToolButton() override { EndWindow(); }
  std::wstring ClassName() const override { return L"TToolButton"; }

protected:
  void Paint() override;
  void KeyDown(WORD& pKey, kiv::TShiftState pShift) override;
  void WMGetDlgCode(kiv::TMessage& pMessage) override;
  void WMSetFocus(kiv::TMessage& pMessage) override;
  void WMKillFocus(kiv::TMessage& pMessage) override;
  void CMEnabledChanged(kiv::TMessage& pMessage) override;
  void MouseDown(kiv::TMouseButton pButton, kiv::TShiftState pShift, int pX, int pY) override;
  void MouseUp(kiv::TMouseButton pButton, kiv::TShiftState pShift, int pX, int pY) override;
  void CMMouseEnter(kiv::TMessage& pMessage) override;
  void CMMouseLeave(kiv::TMessage& pMessage) override;

private:
  void DrawGlyph(const RECT& pBox, kiv::TColor pColor);
  void DrawLines(const RECT& pBox, const std::vector<POINT>& pPoints);

  TGlyph fGlyph;
  bool fHot = false;
  bool fDown = false;
};

} // namespace kivexplorer
