#pragma once

#include <platform/Export.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kiv {

/// One bit for each row of a list, in the order of the rows: a bit for a row instead of a byte in each row's object, so
/// that selecting, inverting and comparing a million of them is a walk through 16,000 words. Indexes must be in range.
class KIV_EXPORT TRowBits {
public:
  int GetSize() const noexcept { return fSize; }
  bool Test(int pIndex) const noexcept { return (fWords[WordOf(pIndex)] >> (pIndex & 63) & 1) != 0; }
  void Put(int pIndex, bool pValue) noexcept;
  /// Both ends included.
  void PutRange(int pFirst, int pLast, bool pValue) noexcept;
  void Fill(bool pValue) noexcept;
  void Flip() noexcept;

  /// Asks for memory for one more bit, so that the next Insert can't fail.
  void ReserveOne();
  /// The bits from `pIndex` on move up by one. `pIndex` from 0 to the size.
  void Insert(int pIndex, bool pValue);
  void Erase(int pIndex) noexcept;
  /// New bits at the end are 0.
  void Resize(int pSize);

  int CountSet() const noexcept;
  /// How many bits differ. Both have the same size.
  int CountDifferences(const TRowBits& pOther) const noexcept;
  /// The first one from `pFrom` on that is set; -1 if there is none. `pFrom` from 0 up.
  int FindSet(int pFrom) const noexcept;
  /// The first one from `pFrom` on that differs; -1 if there is none. Both have the same size.
  int FindDifference(const TRowBits& pOther, int pFrom) const noexcept;
  /// The first one from `pIndex` on that isn't set, else the last one before it; -1 if all are set.
  int FindClearNear(int pIndex) const noexcept;

private:
  static constexpr std::size_t WordOf(int pIndex) noexcept { return static_cast<std::size_t>(pIndex) >> 6; }
  static constexpr std::uint64_t BitOf(int pIndex) noexcept { return std::uint64_t{1} << (pIndex & 63); }
  void ClearTail() noexcept;
  template <typename F>
  int FindWord(int pFrom, F&& pWordAt) const noexcept;

  std::vector<std::uint64_t> fWords; // the bits behind the size are 0
  int fSize = 0;
};

} // namespace kiv
