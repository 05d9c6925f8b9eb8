#include <listview/RowBits.h>

#include <bit>

namespace kiv {

void TRowBits::Put(int pIndex, bool pValue) noexcept {
  std::uint64_t& word = fWords[WordOf(pIndex)];
  word = pValue ? word | BitOf(pIndex) : word & ~BitOf(pIndex);
}

void TRowBits::PutRange(int pFirst, int pLast, bool pValue) noexcept {
  for (int i = pFirst; i <= pLast;) {
    if ((i & 63) == 0 && pLast - i >= 63) {
      fWords[WordOf(i)] = pValue ? ~std::uint64_t{0} : 0;
      i += 64;
    } else {
      Put(i++, pValue);
    }
  }
}

void TRowBits::Fill(bool pValue) noexcept {
  for (std::uint64_t& word : fWords) word = pValue ? ~std::uint64_t{0} : 0;
  ClearTail();
}

void TRowBits::Flip() noexcept {
  for (std::uint64_t& word : fWords) word = ~word;
  ClearTail();
}

void TRowBits::ReserveOne() {
  if ((fSize & 63) == 0 && fWords.size() == fWords.capacity()) fWords.reserve(fWords.size() * 2 + 1);
}

void TRowBits::Insert(int pIndex, bool pValue) {
  if ((fSize & 63) == 0) fWords.push_back(0);
  ++fSize;
  const std::size_t at = WordOf(pIndex);
  for (std::size_t i = fWords.size() - 1; i > at; --i) fWords[i] = fWords[i] << 1 | fWords[i - 1] >> 63;
  const std::uint64_t below = BitOf(pIndex) - 1;
  fWords[at] = (fWords[at] & below) | (fWords[at] & ~below) << 1;
  Put(pIndex, pValue);
}

void TRowBits::Erase(int pIndex) noexcept {
  const std::size_t at = WordOf(pIndex);
  const std::uint64_t below = BitOf(pIndex) - 1;
  fWords[at] = (fWords[at] & below) | (fWords[at] >> 1 & ~below);
  for (std::size_t i = at + 1; i < fWords.size(); ++i) {
    fWords[i - 1] |= fWords[i] << 63;
    fWords[i] >>= 1;
  }
  --fSize;
  if ((fSize & 63) == 0) fWords.pop_back();
}

void TRowBits::Resize(int pSize) {
  fWords.resize((static_cast<std::size_t>(pSize) + 63) / 64);
  fSize = pSize;
  ClearTail();
}

int TRowBits::CountSet() const noexcept {
  int count = 0;
  for (const std::uint64_t word : fWords) count += std::popcount(word);
  return count;
}

int TRowBits::CountDifferences(const TRowBits& pOther) const noexcept {
  int count = 0;
  for (std::size_t i = 0; i < fWords.size(); ++i) count += std::popcount(fWords[i] ^ pOther.fWords[i]);
  return count;
}

template <typename F>
int TRowBits::FindWord(int pFrom, F&& pWordAt) const noexcept {
  if (pFrom >= fSize) return -1;
  std::size_t at = WordOf(pFrom);
  std::uint64_t word = pWordAt(at) & ~(BitOf(pFrom) - 1);
  while (word == 0) {
    if (++at == fWords.size()) return -1;
    word = pWordAt(at);
  }
  return static_cast<int>(at * 64) + std::countr_zero(word);
}

int TRowBits::FindSet(int pFrom) const noexcept {
  return FindWord(pFrom, [this](std::size_t at) { return fWords[at]; });
}

int TRowBits::FindDifference(const TRowBits& pOther, int pFrom) const noexcept {
  return FindWord(pFrom, [this, &pOther](std::size_t at) { return fWords[at] ^ pOther.fWords[at]; });
}

int TRowBits::FindClearNear(int pIndex) const noexcept {
  const int next = FindWord(pIndex, [this](std::size_t at) { return ~fWords[at]; });
  if (next >= 0 && next < fSize) return next;
  while (pIndex >= 0 && Test(pIndex)) --pIndex;
  return pIndex;
}

void TRowBits::ClearTail() noexcept {
  if ((fSize & 63) != 0) fWords.back() &= BitOf(fSize) - 1;
}

} // namespace kiv
