#include <forms/Control.h>

#include <forms/WinControl.h>

#include <utility>

namespace kiv {

namespace {

/// Stands around the takeover of a property from the parent: the setters end the tie otherwise.
class ScopedFollow {
public:
  ScopedFollow(const TAliveToken& token, bool& flag) : fWatch(token), fFlag(flag), fOuter(std::exchange(flag, true)) {}
  ~ScopedFollow() {
    if (fWatch.IsAlive()) fFlag = fOuter;
  }
  ScopedFollow(const ScopedFollow&) = delete;
  ScopedFollow& operator=(const ScopedFollow&) = delete;

private:
  TAliveWatch fWatch;
  bool& fFlag;
  bool fOuter;
};

} // namespace

void TControl::SetFont(const TFont& pFont) {
  fFont = pFont;
}

void TControl::FontChanged() {
  if (!fFollowsParent) fParentFont = false;
  Perform(CM_FONTCHANGED);
}

void TControl::SetParentFont(bool pParentFont) {
  if (fParentFont == pParentFont) return;
  fParentFont = pParentFont;
  if (fParent && !IsLoading()) Perform(CM_PARENTFONTCHANGED);
}

void TControl::SetColor(TColor pColor) {
  if (!fFollowsParent) fParentColor = false;
  if (fColor == pColor) return;
  fColor = pColor;
  Perform(CM_COLORCHANGED);
}

void TControl::SetParentColor(bool pParentColor) {
  if (fParentColor == pParentColor) return;
  fParentColor = pParentColor;
  if (fParent && !IsLoading()) Perform(CM_PARENTCOLORCHANGED);
}

void TControl::SetStyleElements(TStyleElements pElements) {
  if (fStyleElements == pElements) return;
  fStyleElements = pElements;
  UpdateStyleElements();
}

void TControl::SetBiDiMode(TBiDiMode pMode) {
  if (!fFollowsParent) fParentBiDiMode = false;
  if (fBiDiMode == pMode) return;
  fBiDiMode = pMode;
  Perform(CM_BIDIMODECHANGED);
}

void TControl::SetParentBiDiMode(bool pParentBiDiMode) {
  if (fParentBiDiMode == pParentBiDiMode) return;
  fParentBiDiMode = pParentBiDiMode;
  if (fParent && !IsLoading()) Perform(CM_PARENTBIDIMODECHANGED);
}

void TControl::SetShowHint(bool pShowHint) {
  fParentShowHint = false;
  if (fShowHint == pShowHint) return;
  fShowHint = pShowHint;
  if (auto* const self = dynamic_cast<TWinControl*>(this)) self->NotifyControls(CM_PARENTSHOWHINTCHANGED);
}

void TControl::SetParentShowHint(bool pParentShowHint) {
  if (fParentShowHint == pParentShowHint) return;
  fParentShowHint = pParentShowHint;
  if (fParent && !IsLoading()) Perform(CM_PARENTSHOWHINTCHANGED);
}

void TControl::CMFontChanged(TMessage&) {
  Invalidate();
}

void TControl::CMColorChanged(TMessage&) {
  Invalidate();
}

void TControl::CMBiDiModeChanged(TMessage&) {
  Invalidate();
}

void TControl::CMParentFontChanged(TMessage&) {
  if (!fParentFont || !fParent) return;
  const ScopedFollow follow(GetAliveToken(), fFollowsParent);
  fFont = fParent->GetFont();
}

void TControl::CMParentColorChanged(TMessage&) {
  if (!fParentColor || !fParent) return;
  const ScopedFollow follow(GetAliveToken(), fFollowsParent);
  SetColor(fParent->GetColor());
}

void TControl::CMParentBiDiModeChanged(TMessage&) {
  if (!fParentBiDiMode || !fParent) return;
  const ScopedFollow follow(GetAliveToken(), fFollowsParent);
  SetBiDiMode(fParent->GetBiDiMode());
}

void TControl::CMParentShowHintChanged(TMessage&) {
  if (!fParentShowHint || !fParent) return;
  SetShowHint(fParent->GetShowHint());
  fParentShowHint = true;
}

} // namespace kiv
