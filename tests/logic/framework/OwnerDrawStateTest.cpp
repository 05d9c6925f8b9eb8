#include <framework/OwnerDrawState.h>

#include <gtest/gtest.h>

namespace kiv {
namespace {

using enum TOwnerDrawStateFlag;

TEST(OwnerDrawState, FollowsThePlatformsBits) {
  const struct {
    std::uint32_t state;
    TOwnerDrawState flags;
  } cases[] = {
      {0, {}},
      {0x0001 | 0x0010, {odSelected, odFocused}},
      {0x0002 | 0x0004 | 0x0008, {odGrayed, odDisabled, odChecked}},
      {0x0020 | 0x0040 | 0x0080, {odDefault, odHotLight, odInactive}},
      {0x0100 | 0x0200, {odNoAccel, odNoFocusRect}},
      {0x1000, {odComboBoxEdit}},
      {0xFFFFEC00, {}},
  };
  for (const auto& c : cases) EXPECT_EQ(GetOwnerDrawState(c.state), c.flags) << c.state;
}

} // namespace
} // namespace kiv
