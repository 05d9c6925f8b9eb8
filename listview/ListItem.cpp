#include <listview/ListItem.h>

#include <framework/Exceptions.h>
#include <listview/ListItems.h>
#include <listview/ListItemsHost.h>

namespace kiv {

// The texts of a row's other columns: a change repaints the row.
class TListItem::TSubItems : public TStringList {
public:
  explicit TSubItems(TListItem* pItem) : fItem(pItem) {}

  std::vector<int> fImages;

protected:
  void Changed() override {
    fItem->LookChanged();
    TStringList::Changed();
  }

private:
  TListItem* fItem;
};

TListItem::TListItem(TListItems* pOwner) : fOwner(pOwner) {
  if (pOwner == nullptr) throw EInvalidArgument(L"A row needs the list that it is made for.");
}

TListItem::~TListItem() = default;

std::wstring TListItem::ClassName() const {
  return L"TListItem";
}

void TListItem::Assign(const TPersistent* pSource) {
  const auto* source = dynamic_cast<const TListItem*>(pSource);
  if (source == nullptr) {
    TPersistent::Assign(pSource);
    return;
  }
  if (source == this) return;
  SetCaption(source->GetCaption());
  fData = source->fData;
  fImageIndex = source->fImageIndex;
  fIndent = source->fIndent;
  fOverlayIndex = source->fOverlayIndex;
  fStateIndex = source->fStateIndex;
  fChecked = source->fChecked;
  fCheckMixed = source->fCheckMixed;
  fCheckDisabled = source->fCheckDisabled;
  fCut = source->fCut;
  fSubItems.reset();
  if (source->fSubItems) {
    SetSubItems(*source->fSubItems);
    fSubItems->fImages = source->fSubItems->fImages;
  }
  LookChanged();
}

TCustomListView* TListItem::GetListView() const noexcept {
  return fOwner->GetListView();
}

int TListItem::GetIndex() const noexcept {
  return fOwner->IndexOf(this);
}

void TListItem::SetCaption(const std::wstring& pCaption) {
  if (fCaption == pCaption) return;
  fCaption = pCaption;
  LookChanged();
}

TStrings& TListItem::GetSubItems() {
  if (!fSubItems) fSubItems = std::make_unique<TSubItems>(this);
  return *fSubItems;
}

void TListItem::SetSubItems(const TStrings& pSubItems) {
  if (!fSubItems) fSubItems = std::make_unique<TSubItems>(this);
  fSubItems->Assign(&pSubItems);
}

const TStrings* TListItem::GetExistingSubItems() const noexcept {
  return fSubItems.get();
}

int TListItem::GetSubItemImage(int pIndex) const noexcept {
  if (!fSubItems || pIndex < 0 || pIndex >= static_cast<int>(fSubItems->fImages.size())) return -1;
  return fSubItems->fImages[static_cast<std::size_t>(pIndex)];
}

void TListItem::SetSubItemImage(int pIndex, int pImage) {
  if (pIndex < 0) throw EArgumentOutOfRange(L"Sub-items count from 0.");
  if (GetSubItemImage(pIndex) == pImage) return;
  if (!fSubItems) fSubItems = std::make_unique<TSubItems>(this);
  auto& images = fSubItems->fImages;
  if (images.size() <= static_cast<std::size_t>(pIndex)) images.resize(static_cast<std::size_t>(pIndex) + 1, -1);
  images[static_cast<std::size_t>(pIndex)] = pImage;
  LookChanged();
}

template <typename T>
void TListItem::PutLook(T& pField, T pValue) noexcept {
  if (pField == pValue) return;
  pField = pValue;
  LookChanged();
}

void TListItem::SetImageIndex(int pIndex) {
  PutLook(fImageIndex, pIndex);
}

void TListItem::SetOverlayIndex(int pIndex) {
  if (pIndex < -1 || pIndex > 14) throw EArgumentOutOfRange(L"There are 15 overlays, counted from 0.");
  PutLook(fOverlayIndex, static_cast<std::int8_t>(pIndex));
}

void TListItem::SetStateIndex(int pIndex) {
  if (pIndex < -1 || pIndex > 14) throw EArgumentOutOfRange(L"There are 15 state images, counted from 0.");
  PutLook(fStateIndex, static_cast<std::int8_t>(pIndex));
}

void TListItem::SetIndent(int pIndent) {
  if (pIndent < 0 || pIndent > INT16_MAX) throw EArgumentOutOfRange(L"An indent is a small number from 0 up.");
  PutLook(fIndent, static_cast<std::int16_t>(pIndent));
}

void TListItem::SetChecked(bool pChecked) {
  if (fChecked == pChecked && !fCheckMixed) return;
  fChecked = pChecked;
  fCheckMixed = false;
  LookChanged();
}

void TListItem::SetCheckMixed(bool pMixed) {
  if (fCheckMixed == pMixed) return;
  fCheckMixed = pMixed;
  LookChanged();
}

void TListItem::SetCheckEnabled(bool pEnabled) {
  if (fCheckDisabled != pEnabled) return;
  fCheckDisabled = !pEnabled;
  LookChanged();
}

void TListItem::SetCut(bool pCut) {
  if (fCut == pCut) return;
  fCut = pCut;
  LookChanged();
}

void TListItem::SetDropTarget(bool pDropTarget) {
  if (fDropTarget == pDropTarget) return;
  fDropTarget = pDropTarget;
  LookChanged();
}

bool TListItem::GetSelected() const noexcept {
  return fInList && fOwner->IsSelected(GetIndex());
}

void TListItem::SetSelected(bool pSelected) {
  if (fInList) fOwner->SetSelected(GetIndex(), pSelected);
}

bool TListItem::GetFocused() const noexcept {
  return fInList && fOwner->GetFocused() == this;
}

void TListItem::SetFocused(bool pFocused) {
  if (fInList && pFocused != GetFocused()) fOwner->SetFocused(pFocused ? this : nullptr);
}

TItemStates TListItem::GetStates() const noexcept {
  TItemStates states;
  states.Put(TItemStateFlag::isCut, fCut);
  states.Put(TItemStateFlag::isDropHilited, fDropTarget);
  states.Put(TItemStateFlag::isFocused, GetFocused());
  states.Put(TItemStateFlag::isSelected, GetSelected());
  return states;
}

void TListItem::Delete() {
  if (fInList) fOwner->Delete(GetIndex());
}

bool TListItem::EditCaption() {
  return fInList && fOwner->GetHost().EditCaptionOf(*this);
}

void TListItem::CancelEdit() {
  if (fInList) fOwner->GetHost().CancelEditOf(*this);
}

void TListItem::MakeVisible(bool pPartialOk) {
  if (fInList) fOwner->GetHost().MakeItemVisible(*this, pPartialOk);
}

TRowRect TListItem::DisplayRect(TDisplayCode pCode) {
  return fInList ? fOwner->GetHost().DisplayRectOf(*this, pCode) : TRowRect();
}

void TListItem::Update() {
  fDetailsAsked = false;
  LookChanged();
}

void TListItem::LookChanged() noexcept {
  if (fInList) fOwner->GetHost().RowLookChanged(*this);
}

} // namespace kiv
