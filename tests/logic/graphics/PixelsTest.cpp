#include <graphics/Pixels.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <vector>

namespace kiv {
namespace {

std::vector<TPixel> Scale(const std::vector<TPixel>& source, int width, int target_width, int target_height,
                          bool premultiplied = true) {
  std::vector<TPixel> target(static_cast<std::size_t>(target_width) * static_cast<std::size_t>(target_height));
  ResamplePixels(source.data(), width, static_cast<int>(source.size()) / width, target.data(), target_width,
                 target_height, premultiplied);
  return target;
}

TEST(Pixels, MultiplyThereAndBack) {
  // Every colour at every alpha comes back as near as the alpha's steps allow.
  for (TPixel alpha = 1; alpha < 256; ++alpha) {
    for (TPixel color = 0; color < 256; ++color) {
      TPixel pixel[] = {alpha << 24 | color << 16 | color};
      Premultiply(pixel);
      ASSERT_LE(pixel[0] & 0xFF, alpha);
      const TPixel once = pixel[0];
      Unpremultiply(pixel);
      ASSERT_NEAR(static_cast<double>(pixel[0] & 0xFF), color, 0.5 + 128.0 / alpha) << alpha;
      Premultiply(pixel);
      ASSERT_EQ(pixel[0], once);
    }
  }
  TPixel odd[] = {0x00123456, 0x10FFFFFF}; // colours without alpha, or above it
  Unpremultiply(odd);
  EXPECT_EQ(odd[0], 0U);
  EXPECT_EQ(odd[1], 0x10FFFFFFU);
}

TEST(Pixels, TellAlphaByItsLooks) {
  const TPixel none[] = {0x00FFFFFF, 0x00123456};
  const TPixel straight[] = {0x00000000, 0x80FF0000};
  const TPixel premultiplied[] = {0x00000000, 0x80800000};
  EXPECT_EQ(DetectAlpha(none), TAlphaFormat::afIgnored);
  EXPECT_EQ(DetectAlpha(straight), TAlphaFormat::afDefined);
  EXPECT_EQ(DetectAlpha(premultiplied), TAlphaFormat::afPremultiplied);
  EXPECT_EQ(DetectAlpha({}), TAlphaFormat::afIgnored);
}

TEST(Pixels, AreScaledWithoutAChangeOfFlatAreas) {
  const int sizes[][2] = {{1, 1}, {3, 7}, {16, 16}, {64, 5}, {200, 201}};
  for (const TPixel color : {0xFFFFFFFFU, 0x80402010U, 0U}) {
    for (const auto& from : sizes) {
      const std::vector<TPixel> source(static_cast<std::size_t>(from[0] * from[1]), color);
      for (const auto& to : sizes) {
        for (const TPixel pixel : Scale(source, from[0], to[0], to[1])) ASSERT_EQ(pixel, color);
      }
    }
  }
}

TEST(Pixels, KeepTheirSizeUnchanged) {
  std::mt19937 random(7);
  std::vector<TPixel> source(13 * 9);
  for (TPixel& pixel : source) pixel = static_cast<TPixel>(random());
  EXPECT_EQ(Scale(source, 13, 13, 9, false), source);
}

TEST(Pixels, ThatShrinkCountAllOfThePicture) {
  // Thin lines and a fine check pattern: picking single pixels would lose them or show stripes.
  std::vector<TPixel> check(64 * 64);
  for (std::size_t i = 0; i < check.size(); ++i) check[i] = (i % 64 + i / 64) % 2 == 0 ? 0xFFFFFFFF : 0xFF000000;
  for (const TPixel pixel : Scale(check, 64, 9, 9)) EXPECT_NEAR(static_cast<int>(pixel & 0xFF), 127, 12);
}

TEST(Pixels, OfTransparentBordersDontDarkenEdges) {
  // A white disc's half on nothing: whatever is left of it stays white, since premultiplied colours equal the alpha.
  std::vector<TPixel> source(32 * 32);
  for (std::size_t i = 0; i < source.size(); ++i) source[i] = i % 32 < 13 ? 0xFFFFFFFF : 0;
  for (const int size : {7, 16, 48}) {
    bool between = false;
    for (const TPixel pixel : Scale(source, 32, size, size)) {
      ASSERT_EQ(pixel & 0xFF, pixel >> 24);
      between = between || (pixel != 0 && pixel != 0xFFFFFFFF);
    }
    EXPECT_TRUE(between);
  }
}

TEST(Pixels, StayWhereTheyAreInThePicture) {
  // One bright quarter: mirrored, shifted or transposed results would show it elsewhere.
  std::vector<TPixel> source(20 * 10, 0xFF000000);
  for (std::size_t y = 0; y < 5; ++y) {
    for (std::size_t x = 10; x < 20; ++x) source[y * 20 + x] = 0xFF0000FF;
  }
  const auto scaled = Scale(source, 20, 40, 60);
  for (std::size_t y = 0; y < 60; ++y) {
    for (std::size_t x = 0; x < 40; ++x) {
      if (y > 25 && y < 35) continue;
      if (x > 17 && x < 22) continue;
      ASSERT_NEAR(static_cast<int>(scaled[y * 40 + x] & 0xFF), x >= 20 && y < 30 ? 255 : 0, 25) << x << ' ' << y;
    }
  }
}

} // namespace
} // namespace kiv
