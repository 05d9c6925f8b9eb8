#include <listview/CustomListView.h>

#include <graphics/Bitmap.h>
#include <graphics/ImageListApi.h>
#include <graphics/StyleServices.h>

#include <algorithm>
#include <array>
#include <utility>

// The check boxes in front of the rows.

namespace kiv {

namespace {

// The images of the boxes, by mark and then by look.
enum TMark { Unchecked, Checked, Mixed };
enum TLook { Normal, Hot, Disabled };
constexpr std::array<std::array<TThemeElement, 3>, 3> Boxes{{
    {tbCheckBoxUncheckedNormal, tbCheckBoxUncheckedHot, tbCheckBoxUncheckedDisabled},
    {tbCheckBoxCheckedNormal, tbCheckBoxCheckedHot, tbCheckBoxCheckedDisabled},
    {tbCheckBoxMixedNormal, tbCheckBoxMixedNormal.In(CBS_MIXEDHOT), tbCheckBoxMixedNormal.In(CBS_MIXEDDISABLED)},
}};

// A box in the middle of nothing, over a colour where it isn't solid itself.
TBitmap PaintBox(const TThemeElement& element, int size, int dpi, TColor background) {
  TBitmap bitmap(size, size);
  const SIZE best = StyleServices().GetElementSize(element, dpi);
  const int width = std::min(static_cast<int>(best.cx), size);
  const int height = std::min(static_cast<int>(best.cy), size);
  RECT box{(size - width) / 2, (size - height) / 2, 0, 0};
  box.right = box.left + width;
  box.bottom = box.top + height;
  bitmap.GetCanvas().FillRect(box, background);
  StyleServices().DrawElement(bitmap.GetCanvas(), element, box, dpi);
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      TPixel& pixel = bitmap.ScanLine(y)[x];
      pixel = PtInRect(&box, {x, y}) ? pixel | 0xFF000000U : 0U;
    }
  }
  bitmap.DeclareAlphaFormat(TAlphaFormat::afPremultiplied);
  return bitmap;
}

// Whether the platform turns images over in a window that is mirrored, which not all do.
bool TurnsImagesOver() {
  static const bool turns = [] {
    TImageList list;
    list.SetSize(2, 1);
    TBitmap image(2, 1);
    image.ScanLine(0)[0] = PixelOf(clRed);
    image.ScanLine(0)[1] = PixelOf(clBlue);
    list.Add(image);
    TBitmap screen(2, 1);
    const HDC dc = screen.GetCanvas().GetHandle();
    SetLayout(dc, LAYOUT_RTL);
    IMAGELISTDRAWPARAMS draw{};
    draw.hdcDst = dc;
    draw.rgbBk = CLR_NONE;
    DrawImage(*ImageListOf(list.GetHandle()).Get(), draw, -1);
    SetLayout(dc, 0);
    return (screen.ScanLine(0)[0] | 0xFF000000U) == PixelOf(clBlue);
  }();
  return turns;
}

} // namespace

void TCustomListView::SetCheckBoxes(bool pCheckBoxes) {
  if (fCheckBoxes == pCheckBoxes) return;
  fCheckBoxes = pCheckBoxes;
  fHotBox = nullptr;
  PutImages(LVSIL_STATE);
}

void TCustomListView::MakeBoxImages() {
  if (fBoxImages) return;
  const int size = ScaledPixels(16);
  auto images = std::make_unique<TImageList>();
  images->SetSize(size, size);
  const TColor background = StyleServices().GetSystemColor(GetColor());
  const bool isTurned = UseRightToLeftAlignment() && TurnsImagesOver();
  for (const auto& looks : Boxes) {
    for (const TThemeElement& element : looks) {
      TBitmap box = PaintBox(element, size, GetCurrentPPI(), background);
      for (int y = 0; y < size && isTurned; ++y) std::reverse(box.ScanLine(y), box.ScanLine(y) + size);
      images->Add(box);
    }
  }
  fBoxImages = std::move(images);
}

// Theme, colour or scale: the boxes are painted anew.
void TCustomListView::BoxesChanged() {
  const std::unique_ptr<TImageList> former = std::move(fBoxImages); // the control's until it has others
  if (fCheckBoxes) PutImages(LVSIL_STATE);
}

int TCustomListView::BoxImageOf(const TListItem& pItem) const noexcept {
  const TMark mark = pItem.GetCheckMixed() ? Mixed : pItem.GetChecked() ? Checked : Unchecked;
  const bool isDisabled = !pItem.GetCheckEnabled() || !IsEnabled();
  return mark * 3 + (isDisabled ? Disabled : &pItem == fHotBox ? Hot : Normal);
}

// The row on whose box a point is.
TListItem* TCustomListView::BoxAt(int pX, int pY) {
  if (!fCheckBoxes || !GetHitTestInfoAt(pX, pY).Contains(THitTest::htOnStateIcon)) return nullptr;
  return GetItemAt(pX, pY);
}

void TCustomListView::SetHotBox(TListItem* pItem) noexcept {
  if (fHotBox == pItem) return;
  TListItem* const former = std::exchange(fHotBox, pItem);
  if (former != nullptr) RowLookChanged(*former);
  if (pItem != nullptr) RowLookChanged(*pItem);
}

void TCustomListView::Tick(TListItem& pItem) {
  if (!pItem.GetCheckEnabled()) return;
  const TAliveWatch alive(GetAliveToken());
  const TAliveWatch row(pItem.GetAliveToken());
  pItem.SetChecked(pItem.GetCheckMixed() || !pItem.GetChecked());
  if (!alive.IsAlive() || !row.IsAlive()) return;
  if (HandleAllocated())
    NotifyWinEvent(EVENT_OBJECT_STATECHANGE, AllocatedHandle(), OBJID_CLIENT, pItem.GetIndex() + 1);
  DoItemChecked(&pItem);
}

void TCustomListView::MouseDown(TMouseButton pButton, TShiftState pShift, int pX, int pY) {
  const TAliveWatch alive(GetAliveToken());
  if (pButton == TMouseButton::mbLeft) {
    // What the press itself has led to may have moved the rows since.
    TListItem* const item = std::exchange(fPressedBox, nullptr);
    if (item != nullptr) Tick(*item);
    if (!alive.IsAlive()) return;
  }
  TWinControl::MouseDown(pButton, pShift, pX, pY);
}

void TCustomListView::MouseMove(TShiftState pShift, int pX, int pY) {
  if (fCheckBoxes) SetHotBox(BoxAt(pX, pY));
  TWinControl::MouseMove(pShift, pX, pY);
}

void TCustomListView::CMMouseLeave(TMessage& pMessage) {
  SetHotBox(nullptr);
  TWinControl::CMMouseLeave(pMessage);
}

void TCustomListView::CMEnabledChanged(TMessage& pMessage) {
  const TAliveWatch alive(GetAliveToken());
  TWinControl::CMEnabledChanged(pMessage);
  if (alive.IsAlive() && fCheckBoxes && HandleAllocated()) InvalidateRect(AllocatedHandle(), nullptr, FALSE);
}

void TCustomListView::KeyDown(WORD& pKey, TShiftState pShift) {
  const TAliveWatch alive(GetAliveToken());
  TWinControl::KeyDown(pKey, pShift);
  // A handler may have been modal, and the release somebody else's.
  if (alive.IsAlive() && pKey == VK_SPACE) fIsSpaceDown = Focused();
}

void TCustomListView::WMKillFocus(TMessage& pMessage) {
  fIsSpaceDown = false;
  TWinControl::WMKillFocus(pMessage);
}

void TCustomListView::KeyUp(WORD& pKey, TShiftState pShift) {
  const bool isPress = pKey == VK_SPACE && std::exchange(fIsSpaceDown, false);
  const TAliveWatch alive(GetAliveToken());
  TWinControl::KeyUp(pKey, pShift);
  if (!alive.IsAlive() || !isPress || pKey != VK_SPACE || !fCheckBoxes || IsEditing()) return;
  TListItem* const item = GetItemFocused();
  if (item == nullptr || pShift.Contains(TShiftStateFlag::ssCtrl) || pShift.Contains(TShiftStateFlag::ssShift)) return;
  Tick(*item);
}

} // namespace kiv
