#include <coordination/BaseSelectionList.h>

#include <coordination/SelectionPaths.h>
#include <core/PathUtils.h>
#include <framework/IniFile.h>

#include <utility>

namespace kiv {

int TSelectionPaths::GetCount() const {
  return fSelection.GetCount();
}

const std::wstring& TSelectionPaths::Get(int pIndex) const {
  if (pIndex < 0 || pIndex >= GetCount()) RaiseIndexError(pIndex);
  return fSelection.List().At(static_cast<std::size_t>(pIndex));
}

void TSelectionPaths::Put(int pIndex, const std::wstring& pText) {
  Delete(pIndex);
  fSelection.AddPathToSelection(pText);
}

void TSelectionPaths::Clear() {
  fSelection.Clear();
}

void TSelectionPaths::Delete(int pIndex) {
  if (pIndex < 0 || pIndex >= GetCount()) RaiseIndexError(pIndex);
  fSelection.DeleteEntry(pIndex, true);
}

void TSelectionPaths::InsertObject(int, const std::wstring& pText, std::intptr_t) {
  fSelection.AddPathToSelection(pText);
}

void TSelectionPaths::AddParsed(std::vector<std::wstring> pTexts) {
  fSelection.AddPaths(std::move(pTexts));
}

TKivBaseSelectionList::TKivBaseSelectionList(TComponent* pOwner)
    : TComponent(pOwner), fStates(std::make_shared<TSelectionStates>(SelectionDisk())),
      fPaths(std::make_unique<TSelectionPaths>(*this)) {}

TKivBaseSelectionList::~TKivBaseSelectionList() = default;

std::wstring TKivBaseSelectionList::ClassName() const {
  return L"TKivBaseSelectionList";
}

void TKivBaseSelectionList::Assign(const TPersistent* pSource) {
  const auto* const source = dynamic_cast<const TKivBaseSelectionList*>(pSource);
  if (!source) {
    TComponent::Assign(pSource);
    return;
  }
  if (source == this) return;
  const TAliveWatch watch(GetAliveToken());
  Clear();
  if (!watch.IsAlive()) return;
  Edit([&] {
    List() = source->List();
    FSize = source->FSize;
    FFileCount = source->FFileCount;
    FFolderCount = source->FFolderCount;
    for (const std::wstring& entry : List().All()) Changed(entry);
  });
}

bool TKivBaseSelectionList::IsEmpty() const {
  return List().IsEmpty();
}

int TKivBaseSelectionList::GetCount() const {
  return static_cast<int>(List().Count());
}

std::wstring TKivBaseSelectionList::GetListItem(int pIndex) const {
  return fPaths->Get(pIndex);
}

void TKivBaseSelectionList::SetPaths(const std::vector<std::wstring>& pPaths) {
  const TAliveWatch watch(GetAliveToken());
  Clear();
  if (watch.IsAlive()) AddPaths(pPaths);
}

void TKivBaseSelectionList::SaveToIniFile(const std::wstring& sFileName, const std::wstring& pSection) const {
  TIniFile(TPathUtils::GetUnicodeAPICallPath(sFileName)).WriteSection(pSection, List().All());
}

void TKivBaseSelectionList::LoadFromIniFile(const std::wstring& sFileName, const std::wstring& pSection) {
  SetPaths(TIniFile(TPathUtils::GetUnicodeAPICallPath(sFileName)).ReadSection(pSection));
}

bool TKivBaseSelectionList::FormatSelectionPath(std::wstring& pPath) {
  return fStates->FormatSelectionPath(pPath);
}

bool TKivBaseSelectionList::IsItemFullSelected(const std::wstring& pPath) {
  return fStates->IsItemFullSelected(pPath);
}

TKivSelectionState TKivBaseSelectionList::IsItemSelected(const std::wstring& pPath, bool& pIsSubItemOf) {
  return fStates->IsItemSelected(pPath, pIsSubItemOf);
}

} // namespace kiv
