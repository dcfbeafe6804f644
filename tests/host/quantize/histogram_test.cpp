// SPDX-License-Identifier: MIT
// Counting a picture's colours.
#include "prepare/histogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>

#include "host/pictures.h"
#include "support/random.h"

using host_test::TestPicture;
using prepare::Color;
using prepare::ColorCount;

namespace {

std::vector<ColorCount> histogram(const TestPicture &picture) {
  return prepare::histogramOf(prepare::Source(picture.view, RAXEL_TREAT_NONE, nullptr));
}

// The same by a map: cubes of 4 by 4 by 4, or colours where they fill fewer than 2048 cubes.
std::vector<ColorCount> plainHistogram(const TestPicture &picture) {
  struct Sums {
    uint64_t count = 0, channels[3] = {};
  };
  std::map<Color, Sums> cubes, colors;
  for (uint32_t y = 0; y < picture.view.height; ++y) {
    for (uint32_t x = 0; x < picture.view.width; ++x) {
      const uint8_t *c = picture.view.rows + y * picture.view.stride + 3 * x;
      for (Sums *sums : {&cubes[{static_cast<uint8_t>(c[0] / 4), static_cast<uint8_t>(c[1] / 4),
                                 static_cast<uint8_t>(c[2] / 4)}],
                         &colors[{c[0], c[1], c[2]}]}) {
        ++sums->count;
        for (size_t k = 0; k < 3; ++k) sums->channels[k] += c[k];
      }
    }
  }
  std::vector<ColorCount> found;
  for (const auto &[key, sums] : cubes.size() < 2048 ? colors : cubes) {
    Color mean{};
    for (size_t k = 0; k < 3; ++k)
      mean[k] = static_cast<uint8_t>((sums.channels[k] + sums.count / 2) / sums.count);
    found.push_back({mean, static_cast<uint32_t>(sums.count)});
  }
  // Colours side by side by cube.
  const auto cubeOf = [](const ColorCount &c) {
    return Color{static_cast<uint8_t>(c.mean[0] / 4), static_cast<uint8_t>(c.mean[1] / 4),
                 static_cast<uint8_t>(c.mean[2] / 4)};
  };
  std::ranges::stable_sort(found,
                           [&](const ColorCount &a, const ColorCount &b) { return cubeOf(a) < cubeOf(b); });
  return found;
}

bool same(const std::vector<ColorCount> &some, const std::vector<ColorCount> &others) {
  return std::ranges::equal(some, others, [](const ColorCount &a, const ColorCount &b) {
    return a.mean == b.mean && a.count == b.count;
  });
}

TEST(Histogram, IsTheSameOfSmallAndOfLargePictures) {
  support::Random random(61);
  // On both sides of 16384 pixels, of few colours, of many in few cubes and of many cubes.
  for (uint32_t width : {1u, 7u, 60u, 127u, 128u, 129u, 200u}) {
    for (unsigned mask : {0xC0u, 0x1Fu, 0x3Fu, 0xFFu}) {
      TestPicture picture(width, 128, 24);
      for (uint32_t y = 0; y < 128; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
          picture.setColor(
              x, y,
              {static_cast<uint8_t>(random.byte() & mask), static_cast<uint8_t>(random.byte() & mask),
               static_cast<uint8_t>(random.byte() & mask)});
        }
      }
      ASSERT_TRUE(same(histogram(picture), plainHistogram(picture))) << width << ' ' << mask;
    }
  }
}

TEST(Histogram, LargerCubesAreTheSameOfFewColorsAndOfMany) {
  support::Random random(62);
  for (size_t count : {size_t{1}, size_t{2}, size_t{511}, size_t{512}, size_t{513}, size_t{3000}}) {
    std::vector<ColorCount> colors(count);
    for (ColorCount &c : colors)
      c = {{random.byte(), static_cast<uint8_t>(random.byte() & 15), random.byte()}, random.byte() + 1u};
    std::map<unsigned, std::array<uint64_t, 4>> cubes;
    for (const ColorCount &c : colors) {
      auto &sums = cubes[static_cast<unsigned>(c.mean[0] / 8 * 1024 + c.mean[1] / 8 * 32 + c.mean[2] / 8)];
      for (size_t k = 0; k < 3; ++k) sums[k] += uint64_t{c.mean[k]} * c.count;
      sums[3] += c.count;
    }
    std::vector<ColorCount> plain;
    for (const auto &[cube, sums] : cubes) {
      const auto mean = [&sums = sums](size_t k) {
        return static_cast<uint8_t>((sums[k] + sums[3] / 2) / sums[3]);
      };
      plain.push_back({{mean(0), mean(1), mean(2)}, static_cast<uint32_t>(sums[3])});
    }
    ASSERT_TRUE(same(prepare::inLargerCubes(colors), plain)) << count;
  }
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
