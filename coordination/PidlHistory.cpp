#include <coordination/PidlHistory.h>

#include <coordination/ShellQuestions.h>
#include <framework/Exceptions.h>

#include <algorithm>
#include <memory>

namespace kiv {

ComPtr<IItemIdList> TPidlHistory::GetCurrentFolderItemIDList() {
  return fPaths.empty() ? nullptr : fPaths[static_cast<std::size_t>(fPosition)].list;
}

void TPidlHistory::SetPosition(int pPosition) {
  if (pPosition >= 0 && pPosition < GetCount()) fPosition = pPosition;
}

void TPidlHistory::TQuestion::Ask() {
  valid = !added->IsInvalid();
  if (valid && current) stays = current->CompareTo(added.Get(), ilcDisplay) != 0 && current->Reload();
}

void TPidlHistory::Add(IItemIdList* pItemIdList) {
  if (!pItemIdList) return;
  const auto asked = std::make_shared<TQuestion>();
  asked->added = pItemIdList;
  asked->current = GetCurrentFolderItemIDList();
  if (asked->current) asked->currentNumber = fPaths[static_cast<std::size_t>(fPosition)].number;
  asked->addedNumber = ++fLastNumber;
  TQuestion now = *asked;
  IShellQuestions& questions = ShellQuestions();
  if (asked->current && questions.IsPlainlySame(*asked->current.Get(), *pItemIdList)) {
    now.stays = false; // and valid, as the one that it takes the place of
  } else {
    const auto late = [self = ComPtr<TPidlHistory>(this), asked] { self->TakeLate(*asked); };
    if (questions.Ask([asked] { asked->Ask(); }, late)) now = *asked;
  }
  if (!now.valid) return;
  const std::size_t kept = !now.current ? 0 : static_cast<std::size_t>(fPosition) + (now.stays ? 1 : 0);
  fPaths.resize(kept);
  fPaths.push_back({now.added, now.addedNumber});
  fPosition = GetCount() - 1;
}

void TPidlHistory::TakeLate(const TQuestion& pQuestion) {
  if (!pQuestion.valid) TakeOut(pQuestion.addedNumber, true);
  if (!pQuestion.stays) TakeOut(pQuestion.currentNumber, false);
}

void TPidlHistory::TakeOut(unsigned pNumber, bool pAlsoCurrent) {
  const auto at = std::find_if(fPaths.begin(), fPaths.end(), [&](const TEntry& e) { return e.number == pNumber; });
  const auto place = static_cast<int>(at - fPaths.begin());
  if (at == fPaths.end() || (place == fPosition && !pAlsoCurrent)) return;
  fPaths.erase(at);
  if (place <= fPosition && fPosition > 0) --fPosition;
}

void TPidlHistory::Clear() {
  fPaths.clear();
  fPosition = 0;
}

bool TPidlHistory::IsMovePossible(int pDelta) {
  return pDelta >= -fPosition && pDelta < GetCount() - fPosition;
}

void TPidlHistory::Move(int pDelta) {
  if (IsMovePossible(pDelta)) fPosition += pDelta;
}

std::wstring TPidlHistory::GetPaths(int pIndex) {
  if (pIndex < 0 || pIndex >= GetCount()) {
    throw EListError(L"List index out of bounds (" + std::to_wstring(pIndex) + L")");
  }
  return fPaths[static_cast<std::size_t>(pIndex)].list->DisplayPath();
}

} // namespace kiv
