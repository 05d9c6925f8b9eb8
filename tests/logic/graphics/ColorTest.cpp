#include <framework/ScaledPixels.h>
#include <graphics/Color.h>

#include <gtest/gtest.h>

namespace kiv {
namespace {

// Numbers that stored settings and other components rely on.
TEST(Color, HasTheNumbersThatOthersStore) {
  EXPECT_EQ(clWindowText, -16777208);
  EXPECT_EQ(clNone, 536870911);
  EXPECT_EQ(clBlue, 16711680);
  EXPECT_TRUE(IsSystemColor(clMenuBar) && !IsSystemColor(clWhite) && !IsSystemColor(clNone) &&
              !IsSystemColor(clDefault));
}

TEST(Color, MixesEachPart) {
  EXPECT_EQ(MixColors(clRed, clBlue, 255), clRed);
  EXPECT_EQ(MixColors(clRed, clBlue, 0), clBlue);
  EXPECT_EQ(MixColors(RgbColor(10, 200, 0), RgbColor(20, 100, 255), 51), RgbColor(18, 120, 204));
  EXPECT_TRUE(IsDarkColor(clBlue) && IsDarkColor(clRed) && !IsDarkColor(clLime) && !IsDarkColor(clSilver));
}

TEST(ScaledPixels, RoundsHalvesAwayFromZero) {
  const struct {
    int pixels, dpi, scaled;
  } cases[] = {{16, 96, 16}, {16, 144, 24}, {1, 144, 2}, {-1, 144, -2}, {3, 120, 4},
               {2, 120, 3},  {-2, 120, -3}, {0, 192, 0}, {1, 48, 1},    {5, 48, 3}};
  for (const auto& each : cases) EXPECT_EQ(ScaledPixels(each.pixels, each.dpi), each.scaled) << each.pixels;
  EXPECT_EQ(MulDivRounded(2'000'000'000, 96, 192), 1'000'000'000);
  EXPECT_EQ(MulDivRounded(7, 2, -4), -4);
}

} // namespace
} // namespace kiv
