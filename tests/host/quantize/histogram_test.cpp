// SPDX-License-Identifier: MIT
// Counting a picture's colours.
#include "prepare/histogram.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "host/pictures.h"

using host_test::TestPicture;
using prepare::Color;
using prepare::ColorCount;

namespace {

std::vector<ColorCount> histogram(const TestPicture &picture) {
  return prepare::histogramOf(prepare::Source(picture.view, RAXEL_TREAT_NONE, nullptr));
}

TEST(Histogram, TellsColorsApartWhereThereAreFewCubes) {
  TestPicture picture(4, 2, 24);
  for (uint32_t x = 0; x < 4; ++x) {
    picture.setColor(x, 0, {static_cast<uint8_t>(8 + x), 8, 11});
    picture.setColor(x, 1, {255, 254, 253});
  }
  const auto found = histogram(picture);
  ASSERT_EQ(found.size(), 5u);
  for (uint8_t x = 0; x < 4; ++x) {
    EXPECT_EQ(found[x].count, 1u);
    EXPECT_EQ(found[x].mean, (Color{static_cast<uint8_t>(8 + x), 8, 11}));
  }
  EXPECT_EQ(found[4].count, 4u);
  EXPECT_EQ(found[4].mean, (Color{255, 254, 253}));
}

TEST(Histogram, CountsCubesAndKeepsTheirMeansWhereThereAreMany) {
  // 2048 cubes, two pixels in each, and two more in the first: 0 0 0 and 3 3 1.
  TestPicture picture(65, 64, 24);
  for (uint32_t i = 0; i < 2048; ++i) {
    const auto red = static_cast<uint8_t>(i >> 6 << 2), blue = static_cast<uint8_t>((i & 63) << 2);
    picture.setColor(i % 64, i / 64 * 2, {red, 0, blue});
    picture.setColor(i % 64, i / 64 * 2 + 1, {static_cast<uint8_t>(red + 3), 1, blue});
  }
  for (uint32_t y = 0; y < 64; ++y) picture.setColor(64, y, {124, 0, 252});
  picture.setColor(64, 0, {0, 0, 0});
  picture.setColor(64, 1, {3, 3, 1});
  const auto found = histogram(picture);
  ASSERT_EQ(found.size(), 2048u);
  EXPECT_EQ(found[0].count, 4u);
  EXPECT_EQ(found[0].mean, (Color{2, 1, 0}));  // 6 / 4 and 4 / 4 and 1 / 4
  EXPECT_EQ(found[1].count, 2u);
  EXPECT_EQ(found[1].mean, (Color{2, 1, 4}));  // 1.5, rounded up
  EXPECT_EQ(found[2047].count, 64u);
  EXPECT_EQ(found[2047].mean, (Color{124, 0, 252}));
}

TEST(Histogram, LooksAtEveryColumnOfALargePicture) {
  // More than four million pixels: every second one is looked at, and each column has a colour of its own.
  TestPicture picture(2050, 2048, 24);
  for (uint32_t x = 0; x < 2050; ++x) {
    picture.setColor(x, 0, {static_cast<uint8_t>(x), static_cast<uint8_t>(x >> 8), 0});
  }
  for (uint32_t y = 1; y < 2048; ++y) std::copy_n(picture.row(0), picture.view.stride, picture.row(y));
  const auto found = histogram(picture);
  ASSERT_EQ(found.size(), 2050u);
  uint64_t pixels = 0;
  for (const ColorCount &c : found) {
    EXPECT_EQ(c.count, 1024u);
    pixels += c.count;
  }
  EXPECT_EQ(pixels, 2050u * 1024u);
}

TEST(Histogram, LargerCubesKeepCountsAndMeans) {
  const std::vector<ColorCount> fine{
      {{0, 7, 9}, 1}, {{4, 3, 15}, 3}, {{8, 0, 8}, 2}, {{255, 250, 248}, 4000000000}};
  const auto found = prepare::inLargerCubes(fine);
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(found[0].count, 4u);
  EXPECT_EQ(found[0].mean, (Color{3, 4, 14}));  // 12 / 4, 16 / 4, 54 / 4 rounded up
  EXPECT_EQ(found[1].count, 2u);
  EXPECT_EQ(found[2].mean, (Color{255, 250, 248}));
}

}  // namespace
