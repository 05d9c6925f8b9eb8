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

// Many paths mostly come in order, each behind all others.
std::vector<std::wstring>::const_iterator TSelectionEntries::LowerBound(std::wstring_view pText) const {
  if (fEntries.empty() || Precedes(fEntries.back(), pText)) return fEntries.end();
  return std::lower_bound(fEntries.begin(), fEntries.end(), pText, &Precedes);
}

bool TSelectionEntries::Find(std::wstring_view pEntry, std::size_t& pIndex) const {
  const auto found = LowerBound(pEntry);
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
  const auto first = LowerBound(pPrefix);
  const auto last = std::partition_point(first, fEntries.end(),
                                         [&](const std::wstring& entry) { return StartsText(pPrefix, entry); });
  return {static_cast<std::size_t>(first - fEntries.begin()), static_cast<std::size_t>(last - fEntries.begin())};
}

bool TSelectionEntries::AnyHolds(std::wstring_view pText) const {
  const auto first = LowerBound(pText);
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
  pEntries.erase(std::unique(pEntries.begin(), pEntries.end(), &SameText), pEntries.end());
  const auto at = LowerBound(pEntries.front());
  const bool in_one_gap = at == fEntries.end() || Precedes(pEntries.back(), *at);
  if (in_one_gap) {
    for (const std::wstring& entry : pEntries) Count(entry, true);
  }
  const auto middle = fEntries.insert(in_one_gap ? at : fEntries.cend(), std::make_move_iterator(pEntries.begin()),
                                      std::make_move_iterator(pEntries.end()));
  if (in_one_gap) return;
  std::inplace_merge(fEntries.begin(), middle, fEntries.end(), &Precedes);
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
