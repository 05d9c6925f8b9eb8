#include <coordination/SelectionEntries.h>

#include <core/PathFunctions.h>
#include <framework/TextCompare.h>

#include <algorithm>
#include <iterator>

namespace kiv {

namespace {

bool Precedes(std::wstring_view a, std::wstring_view b) {
  return CompareText(a, b) < 0;
}

// A drive's ":" or the "\\" of a share further inside, where a path from a root on can begin once more.
bool HasRootInside(std::wstring_view entry) {
  return entry.find(L':', 2) != std::wstring_view::npos || entry.find(LR"(\\)", 1) != std::wstring_view::npos;
}

bool BeginsWithRoot(std::wstring_view text) {
  return text.starts_with(LR"(\\)") || (text.size() > 1 && text[1] == L':');
}

} // namespace

bool TSelectionEntries::Find(std::wstring_view pEntry, std::size_t& pIndex) const {
  const auto found = std::lower_bound(fEntries.begin(), fEntries.end(), pEntry, &Precedes);
  pIndex = static_cast<std::size_t>(found - fEntries.begin());
  return found != fEntries.end() && SameText(*found, pEntry);
}

bool TSelectionEntries::Contains(std::wstring_view pEntry) const {
  std::size_t index = 0;
  return Find(pEntry, index);
}

bool TSelectionEntries::ContainsNear(std::wstring_view pEntry, std::size_t& pHint) const {
  const bool found = (pHint < fEntries.size() && SameText(fEntries[pHint], pEntry)) || Find(pEntry, pHint);
  if (found) ++pHint;
  return found;
}

TSelectionEntries::TRange TSelectionEntries::StartingWith(std::wstring_view pPrefix) const {
  const auto first = std::lower_bound(fEntries.begin(), fEntries.end(), pPrefix, &Precedes);
  const auto last = std::partition_point(first, fEntries.end(),
                                         [&](const std::wstring& entry) { return StartsText(pPrefix, entry); });
  return {static_cast<std::size_t>(first - fEntries.begin()), static_cast<std::size_t>(last - fEntries.begin())};
}

bool TSelectionEntries::AnyHolds(std::wstring_view pText) const {
  const auto first = std::lower_bound(fEntries.begin(), fEntries.end(), pText, &Precedes);
  if (first != fEntries.end() && StartsText(pText, *first)) return true;
  // What begins with a root is found further inside only of entries that have another one there.
  if (fWithRootInside == 0 && BeginsWithRoot(pText)) return false;
  return std::any_of(fEntries.begin(), fEntries.end(),
                     [&](const std::wstring& entry) { return KivPosEx(pText, entry) > 0; });
}

bool TSelectionEntries::Insert(std::wstring pEntry) {
  std::size_t index = 0;
  if (Find(pEntry, index)) return false;
  Count(pEntry, true);
  fEntries.insert(fEntries.begin() + static_cast<std::ptrdiff_t>(index), std::move(pEntry));
  return true;
}

void TSelectionEntries::InsertAll(std::vector<std::wstring> pEntries) {
  if (pEntries.empty()) return;
  if (!std::is_sorted(pEntries.begin(), pEntries.end(), &Precedes)) {
    std::sort(pEntries.begin(), pEntries.end(), &Precedes);
  }
  const auto at = std::lower_bound(fEntries.begin(), fEntries.end(), pEntries.front(), &Precedes);
  const bool in_one_gap = at == fEntries.end() || Precedes(pEntries.back(), *at);
  const auto middle = fEntries.insert(in_one_gap ? at : fEntries.end(), std::make_move_iterator(pEntries.begin()),
                                      std::make_move_iterator(pEntries.end()));
  if (!in_one_gap) std::inplace_merge(fEntries.begin(), middle, fEntries.end(), &Precedes);
  fEntries.erase(std::unique(fEntries.begin(), fEntries.end(), &SameText), fEntries.end());
  fWithRootInside = static_cast<std::size_t>(std::count_if(fEntries.begin(), fEntries.end(), &HasRootInside));
}

void TSelectionEntries::Erase(TRange pRange) {
  const auto begin = fEntries.begin();
  const auto first = begin + static_cast<std::ptrdiff_t>(pRange.first);
  const auto last = begin + static_cast<std::ptrdiff_t>(pRange.second);
  std::for_each(first, last, [this](const std::wstring& entry) { Count(entry, false); });
  fEntries.erase(first, last);
}

void TSelectionEntries::Clear() noexcept {
  fEntries.clear();
  fWithRootInside = 0;
  fMayNest = false;
}

void TSelectionEntries::Count(const std::wstring& pEntry, bool pIn) noexcept {
  if (HasRootInside(pEntry)) fWithRootInside += pIn ? 1 : static_cast<std::size_t>(-1);
}

} // namespace kiv
