#include <framework/StringList.h>

#include <framework/Exceptions.h>
#include <framework/MergeSort.h>
#include <framework/TextCompare.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace kiv {

TStringList::TStringList() = default;
TStringList::~TStringList() = default;

std::wstring TStringList::ClassName() const {
  return L"TStringList";
}

void TStringList::Assign(const TPersistent* pSource) {
  const auto* const source = dynamic_cast<const TStringList*>(pSource);
  if (!source || source == this) {
    TStrings::Assign(pSource);
    return;
  }
  Update([this, source] {
    Clear();
    fCaseSensitive = source->fCaseSensitive;
    fDuplicates = source->fDuplicates;
    // The entries come in their own order; a sorted source may hold equals that this list wouldn't take one by one.
    fSorted = false;
    TStrings::Assign(source);
    SetSorted(source->fSorted);
  });
}

std::size_t TStringList::CheckIndex(int pIndex) const {
  if (pIndex < 0 || pIndex >= GetCount()) RaiseIndexError(pIndex);
  return static_cast<std::size_t>(pIndex);
}

void TStringList::CheckUnsorted() const {
  if (fSorted) throw EStringListError(L"Operation not allowed on sorted list");
}

int TStringList::GetCount() const {
  return static_cast<int>(fEntries.size());
}

const std::wstring& TStringList::Get(int pIndex) const {
  return fEntries[CheckIndex(pIndex)].text;
}

std::intptr_t TStringList::GetObjectAt(int pIndex) const {
  return fEntries[CheckIndex(pIndex)].object;
}

void TStringList::Put(int pIndex, const std::wstring& pText) {
  CheckUnsorted();
  const std::size_t index = CheckIndex(pIndex);
  Changing();
  fEntries[index].text = pText;
  Changed();
}

void TStringList::PutObjectAt(int pIndex, std::intptr_t pObject) {
  const std::size_t index = CheckIndex(pIndex);
  Changing();
  fEntries[index].object = pObject;
  Changed();
}

void TStringList::Clear() {
  if (fEntries.empty()) return;
  Changing();
  fEntries.clear();
  Changed();
}

void TStringList::Delete(int pIndex) {
  const std::size_t index = CheckIndex(pIndex);
  Changing();
  fEntries.erase(fEntries.begin() + static_cast<std::ptrdiff_t>(index));
  Changed();
}

void TStringList::InsertObject(int pIndex, const std::wstring& pText, std::intptr_t pObject) {
  CheckUnsorted();
  if (pIndex != GetCount()) CheckIndex(pIndex);
  InsertEntry(static_cast<std::size_t>(pIndex), pText, pObject);
}

void TStringList::InsertEntry(std::size_t pIndex, const std::wstring& pText, std::intptr_t pObject) {
  if (fEntries.size() >= static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw EStringListError(L"The list is full.");
  }
  // Copied before anything moves: the text may be an entry's own.
  TEntry entry{pText, pObject};
  Changing();
  fEntries.insert(fEntries.begin() + static_cast<std::ptrdiff_t>(pIndex), std::move(entry));
  Changed();
}

// Filling a list in order is the common case.
bool TStringList::MaySkipSearch(std::wstring_view pText) const {
  return fEntries.empty() || CompareStrings(fEntries.back().text, pText) < 0;
}

int TStringList::AddObject(const std::wstring& pText, std::intptr_t pObject) {
  int index = GetCount();
  if (fSorted && !MaySkipSearch(pText) && Find(pText, index)) {
    if (fDuplicates == TDuplicates::dupIgnore) return index;
    if (fDuplicates == TDuplicates::dupError) {
      throw EStringListError(L"String list does not allow duplicates: \"" + pText + L"\"");
    }
    const auto behind = std::upper_bound(
        fEntries.begin() + index, fEntries.end(), std::wstring_view(pText),
        [this](std::wstring_view text, const TEntry& entry) { return CompareStrings(text, entry.text) < 0; });
    index = static_cast<int>(behind - fEntries.begin());
  }
  InsertEntry(static_cast<std::size_t>(index), pText, pObject);
  return index;
}

void TStringList::AddParsed(std::vector<std::wstring> pTexts) {
  if (fSorted) {
    // In the list's own order each goes to the end, or near it if a derived class changes texts as it adds them.
    std::stable_sort(pTexts.begin(), pTexts.end(),
                     [this](const std::wstring& a, const std::wstring& b) { return CompareStrings(a, b) < 0; });
  }
  TStrings::AddParsed(std::move(pTexts));
}

void TStringList::Exchange(int pFirst, int pSecond) {
  CheckUnsorted();
  const std::size_t first = CheckIndex(pFirst);
  const std::size_t second = CheckIndex(pSecond);
  if (first == second) return;
  Changing();
  std::swap(fEntries[first], fEntries[second]);
  Changed();
}

void TStringList::Move(int pFrom, int pTo) {
  CheckUnsorted();
  const auto from = static_cast<std::ptrdiff_t>(CheckIndex(pFrom));
  const auto to = static_cast<std::ptrdiff_t>(CheckIndex(pTo));
  if (from == to) return;
  Changing();
  const auto begin = fEntries.begin();
  if (from < to) {
    std::rotate(begin + from, begin + from + 1, begin + to + 1);
  } else {
    std::rotate(begin + to, begin + from, begin + from + 1);
  }
  Changed();
}

int TStringList::IndexOf(const std::wstring& pText) const {
  if (!fSorted) return TStrings::IndexOf(pText);
  int index = 0;
  return Find(pText, index) ? index : -1;
}

bool TStringList::Find(std::wstring_view pText, int& pIndex) const {
  if (!fSorted) throw EStringListError(L"Operation not allowed on unsorted list");
  const auto found =
      std::lower_bound(fEntries.begin(), fEntries.end(), pText, [this](const TEntry& entry, std::wstring_view text) {
        return CompareStrings(entry.text, text) < 0;
      });
  pIndex = static_cast<int>(found - fEntries.begin());
  return found != fEntries.end() && CompareStrings(found->text, pText) == 0;
}

void TStringList::SortEntries() {
  std::stable_sort(fEntries.begin(), fEntries.end(),
                   [this](const TEntry& a, const TEntry& b) { return CompareStrings(a.text, b.text) < 0; });
}

void TStringList::Sort() {
  Changing();
  SortEntries();
  Changed();
}

void TStringList::CustomSort(const TCompare& pCompare) {
  CheckUnsorted();
  // Sorting indexes keeps the entries in place for the comparison.
  std::vector<int> order(fEntries.size());
  std::iota(order.begin(), order.end(), 0);
  MergeSort(order, [&](int a, int b) { return pCompare(*this, a, b) < 0; });
  Changing();
  std::vector<TEntry> sorted;
  sorted.reserve(fEntries.size());
  for (const int index : order) sorted.push_back(std::move(fEntries[static_cast<std::size_t>(index)]));
  fEntries = std::move(sorted);
  Changed();
}

void TStringList::SetSorted(bool pSorted) {
  if (pSorted == fSorted) return;
  if (!pSorted) {
    fSorted = false;
    return;
  }
  // An OnChanging that raises leaves a list that isn't sorted and doesn't say so.
  Changing();
  SortEntries();
  fSorted = true;
  Changed();
}

void TStringList::SetCaseSensitive(bool pCaseSensitive) {
  if (pCaseSensitive == fCaseSensitive) return;
  if (!fSorted) {
    fCaseSensitive = pCaseSensitive;
    return;
  }
  Changing();
  fCaseSensitive = pCaseSensitive;
  SortEntries();
  Changed();
}

int TStringList::CompareStrings(std::wstring_view pFirst, std::wstring_view pSecond) const {
  return fCaseSensitive ? pFirst.compare(pSecond) : CompareText(pFirst, pSecond);
}

void TStringList::SetUpdateState(bool pUpdating) {
  if (pUpdating) {
    Changing();
  } else {
    Changed();
  }
}

void TStringList::Changed() {
  if (!IsUpdating()) static_cast<void>(FireEvent(fAlive, fOnChange, static_cast<TPersistent*>(this)));
}

void TStringList::Changing() {
  if (!IsUpdating()) static_cast<void>(FireEvent(fAlive, fOnChanging, static_cast<TPersistent*>(this)));
}

} // namespace kiv
