#include <coordination/PidlHistory.h>

#include <framework/Exceptions.h>

namespace kiv {

ComPtr<IItemIdList> TPidlHistory::GetCurrentFolderItemIDList() {
  return fPaths.empty() ? nullptr : fPaths[static_cast<std::size_t>(fPosition)];
}

void TPidlHistory::SetPosition(int pPosition) {
  if (pPosition >= 0 && pPosition < GetCount()) fPosition = pPosition;
}

void TPidlHistory::Add(IItemIdList* pItemIdList) {
  if (!pItemIdList || pItemIdList->IsInvalid()) return;
  const ComPtr<IItemIdList> added(pItemIdList);
  auto kept = static_cast<std::size_t>(fPosition) + 1;
  if (const ComPtr<IItemIdList> current = GetCurrentFolderItemIDList(); !current) {
    kept = 0;
  } else if (current.Get() == pItemIdList || current->CompareTo(pItemIdList, ilcDisplay) == 0 || !current->Reload()) {
    --kept;
  }
  fPaths.resize(kept);
  fPaths.push_back(added);
  fPosition = GetCount() - 1;
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
  return fPaths[static_cast<std::size_t>(pIndex)]->DisplayPath();
}

} // namespace kiv
