#include <folder_view/FolderRow.h>

#include <framework/FileNames.h>
#include <framework/TextCompare.h>
#include <viewstate/SystemImageList.h>

#include <utility>

namespace kiv::sample {

TFolderRow::TFolderRow(TListItems* pOwner, TEntry pEntry) : TListItem(pOwner), fEntry(std::move(pEntry)) {
  Show(-1);
}

TFolderRow::~TFolderRow() {
  fToken.Reset();
  if (fEntry->row == this) fEntry->row = nullptr;
}

void TFolderRow::SetEntry(TEntry pEntry) {
  if (fEntry == pEntry) return;
  if (fEntry->row == this) fEntry->row = nullptr;
  fToken.Reset();
  // Until it is asked anew, it looks as it did.
  const bool same_kind =
      fEntry->IsFolder() == pEntry->IsFolder() && SameText(ExtractFileExt(fEntry->name), ExtractFileExt(pEntry->name));
  const int image = GetImageIndex();
  fEntry = std::move(pEntry);
  fHasTexts = false;
  if (!same_kind) fTexts[static_cast<int>(TFolderColumn::Type)].clear();
  Show(same_kind ? image : -1);
  Update();
}

void TFolderRow::Show(int pFormerImage) {
  fEntry->row = this;
  fHasLook = fEntry->image >= 0;
  // Both are known by the time that a folder has been listed.
  SetImageIndex(fHasLook             ? fEntry->image
                : pFormerImage >= 0  ? pFormerImage
                : fEntry->IsFolder() ? TKivSystemImageList::GetFolderIconNumber(false)
                                     : TKivSystemImageList::GetUnknownFileIconNumber());
  SetCut(fEntry->flags.Contains(TObjectFlag::Hidden));
}

const std::wstring& TFolderRow::Text(TFolderColumn pColumn) const {
  if (!std::exchange(fHasTexts, true)) {
    fTexts[static_cast<int>(TFolderColumn::Name)] = fEntry->name;
    fTexts[static_cast<int>(TFolderColumn::Size)] = fEntry->IsFolder() ? std::wstring() : SizeText(fEntry->size);
    fTexts[static_cast<int>(TFolderColumn::Changed)] = TimeText(fEntry->changed);
    if (!fEntry->type.empty()) fTexts[static_cast<int>(TFolderColumn::Type)] = fEntry->type;
  }
  return fTexts[static_cast<int>(pColumn)];
}

void TFolderRow::SetState(TKivSelectionState pState) {
  fState = pState;
  fStateKnown = true;
  SetStateIndex(static_cast<int>(pState) - 1); // no box for ssUnused
}

void TFolderRow::TakeLook(int pImage, std::wstring pType) {
  static_cast<void>(Text(TFolderColumn::Type)); // those that it has are made before
  fTexts[static_cast<int>(TFolderColumn::Type)] = std::move(pType);
  fHasLook = true;
  if (pImage >= 0) SetImageIndex(pImage);
}

} // namespace kiv::sample
