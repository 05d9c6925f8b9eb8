#pragma once

#include <framework/Set.h>

#include <cstdint>

namespace kiv {

/// How an item that its owner draws is to look. Each value is numbered as its bit in the platform's `ODS_...` state
/// ("DRAWITEMSTRUCT").
enum class TOwnerDrawStateFlag {
  odSelected = 0,
  odGrayed = 1,
  odDisabled = 2,
  odChecked = 3,
  odFocused = 4,
  odDefault = 5,
  odHotLight = 6,
  odInactive = 7,
  odNoAccel = 8,
  odNoFocusRect = 9,
  odComboBoxEdit = 12
};

using TOwnerDrawState = TSet<TOwnerDrawStateFlag>;

/// The set for the platform's `DRAWITEMSTRUCT::itemState`. Bits without a meaning of their own are left out.
constexpr TOwnerDrawState GetOwnerDrawState(std::uint32_t pState) noexcept {
  constexpr std::uint32_t known = 0x13FF;
  return TOwnerDrawState::FromBits(pState & known);
}

} // namespace kiv
