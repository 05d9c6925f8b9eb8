#pragma once

#include <forms/WinControl.h>
#include <graphics/Canvas.h>

namespace kiv {

/// A control with a window of the library's own that paints itself.
class KIV_EXPORT TCustomControl : public TWinControl {
public:
  explicit TCustomControl(TComponent* pOwner = nullptr);
  ~TCustomControl() override;
  std::wstring ClassName() const override { return L"TCustomControl"; }

protected:
  /// Where Paint draws; with a context during Paint only, and with the control's font then.
  TCanvas& GetCanvas() noexcept { return fCanvas; }
  /// Paints the control over its background.
  virtual void Paint() {}
  void PaintWindow(HDC pDC) override;

private:
  TCanvas fCanvas;
};

/// A control without a window that paints itself.
class KIV_EXPORT TGraphicControl : public TControl {
public:
  explicit TGraphicControl(TComponent* pOwner = nullptr) : TControl(pOwner) {}
  ~TGraphicControl() override;
  std::wstring ClassName() const override { return L"TGraphicControl"; }

protected:
  TCanvas& GetCanvas() noexcept { return fCanvas; }
  virtual void Paint() {}
  void WndProc(TMessage& pMessage) override;

private:
  TCanvas fCanvas;
};

} // namespace kiv
