#pragma once

#include <platform/Export.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kiv {

/// The entries of a selection: full paths, sorted ignoring case, each once. A folder's ends in "\*".
///
/// Because of the order, all that lies below a folder stands together, and a question about a path costs one or two
/// binary searches, however many entries there are. Changes of many entries at once move the others once.
class KIV_EXPORT TSelectionEntries {
public:
  /// From the first, up to but without the second.
  using TRange = std::pair<std::size_t, std::size_t>;

  std::size_t Count() const noexcept { return fEntries.size(); }
  bool IsEmpty() const noexcept { return fEntries.empty(); }
  const std::wstring& At(std::size_t pIndex) const { return fEntries[pIndex]; }
  const std::vector<std::wstring>& All() const noexcept { return fEntries; }

  /// Sets the index to the first entry that isn't below the text, and says whether that one equals it.
  bool Find(std::wstring_view pEntry, std::size_t& pIndex) const;
  bool Contains(std::wstring_view pEntry) const;
  /// The same for one question after the other in about the order of the entries: `pHint`, 0 at first, is where the
  /// next answer may be.
  bool ContainsNear(std::wstring_view pEntry, std::size_t& pHint) const;
  /// All that start with the text, ignoring case.
  TRange StartingWith(std::wstring_view pPrefix) const;
  /// Whether any entry holds the text, at its start or anywhere else, ignoring case.
  bool AnyHolds(std::wstring_view pText) const;

  /// False if it is there.
  bool Insert(std::wstring pEntry);
  /// Takes texts in any order; those that are there stay once.
  void InsertAll(std::vector<std::wstring> pEntries);
  void Erase(TRange pRange);
  void Clear() noexcept;

  /// An entry may have come in below another one's folder. Until Clear.
  void SetMayNest() noexcept { fMayNest = true; }
  bool MayNest() const noexcept { return fMayNest; }

private:
  std::vector<std::wstring>::const_iterator LowerBound(std::wstring_view pText) const;
  void Count(const std::wstring& pEntry, bool pIn) noexcept;

  std::vector<std::wstring> fEntries;
  std::size_t fWithRootInside = 0;
  bool fMayNest = false;
};

} // namespace kiv
