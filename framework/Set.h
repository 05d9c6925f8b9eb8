#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <type_traits>

namespace kiv {

/// A set of the values of an enumeration with at most 64 values numbered from 0. A plain value: 8 bytes, constexpr.
template <typename E>
  requires std::is_enum_v<E>
class TSet {
public:
  constexpr TSet() noexcept = default;
  constexpr TSet(std::initializer_list<E> pValues) noexcept {
    for (const E value : pValues) Include(value);
  }

  /// Set from its bits, bit n for the value numbered n.
  static constexpr TSet FromBits(std::uint64_t pBits) noexcept {
    TSet set;
    set.fBits = pBits;
    return set;
  }
  constexpr std::uint64_t Bits() const noexcept { return fBits; }

  constexpr void Include(E pValue) noexcept { fBits |= BitOf(pValue); }
  constexpr void Exclude(E pValue) noexcept { fBits &= ~BitOf(pValue); }
  constexpr void Put(E pValue, bool pIn) noexcept { pIn ? Include(pValue) : Exclude(pValue); }
  constexpr bool Contains(E pValue) const noexcept { return (fBits & BitOf(pValue)) != 0; }
  constexpr bool ContainsAll(TSet pOther) const noexcept { return (fBits & pOther.fBits) == pOther.fBits; }
  constexpr bool Intersects(TSet pOther) const noexcept { return (fBits & pOther.fBits) != 0; }
  constexpr bool IsEmpty() const noexcept { return fBits == 0; }

  friend constexpr TSet operator|(TSet a, TSet b) noexcept { return FromBits(a.fBits | b.fBits); }
  friend constexpr TSet operator&(TSet a, TSet b) noexcept { return FromBits(a.fBits & b.fBits); }
  friend constexpr TSet operator-(TSet a, TSet b) noexcept { return FromBits(a.fBits & ~b.fBits); }
  friend constexpr bool operator==(TSet, TSet) noexcept = default;

private:
  static constexpr std::uint64_t BitOf(E pValue) noexcept {
    return std::uint64_t{1} << static_cast<std::underlying_type_t<E>>(pValue);
  }

  std::uint64_t fBits = 0;
};

} // namespace kiv
