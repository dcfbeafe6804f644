// SPDX-License-Identifier: MIT
#include "prepare/source.h"

#include <gtest/gtest.h>

#include <vector>

#include "host/pictures.h"
#include "support/random.h"

using host_test::Color;
using host_test::TestPicture;
using prepare::Source;

TEST(HostSource, ReadsIndicesOfEveryDepthAndWidth) {
  support::Random random(1);
  for (uint32_t bits : {1u, 2u, 4u, 8u}) {
    for (uint32_t width = 1; width <= 19; ++width) {
      TestPicture picture(width, 2, bits);
      std::vector<uint8_t> expected(width), got(width, 99);
      for (uint32_t x = 0; x < width; ++x) {
        expected[x] = static_cast<uint8_t>(random.between(0, (1 << bits) - 1));
        picture.setIndex(x, 1, expected[x]);
      }
      Source(picture.view, RAXEL_TREAT_NONE, nullptr).readIndices(1, got.data());
      EXPECT_EQ(got, expected) << bits << " bits, " << width << " wide";
    }
  }
}

TEST(HostSource, WithoutATableIndicesAreGreysFromBlackToWhite) {
  TestPicture picture(4, 1, 2);
  for (uint32_t x = 0; x < 4; ++x) picture.setIndex(x, 0, x);
  const Source source(picture.view, RAXEL_TREAT_NONE, nullptr);
  EXPECT_TRUE(source.grey());
  std::vector<uint8_t> greys(4), colors(12);
  source.readGrey(0, greys.data());
  source.readColors(0, colors.data());
  EXPECT_EQ(greys, (std::vector<uint8_t>{0, 85, 170, 255}));
  EXPECT_EQ(colors, (std::vector<uint8_t>{0, 0, 0, 85, 85, 85, 170, 170, 170, 255, 255, 255}));
}

TEST(HostSource, IndicesBeyondTheTableAreBlack) {
  TestPicture picture(2, 1, 8);
  picture.useTable({{10, 20, 30}});
  picture.setIndex(1, 0, 200);
  const Source source(picture.view, RAXEL_TREAT_NONE, nullptr);
  std::vector<uint8_t> colors(6);
  source.readColors(0, colors.data());
  EXPECT_EQ(colors, (std::vector<uint8_t>{10, 20, 30, 0, 0, 0}));
  EXPECT_FALSE(source.grey());
}

TEST(HostSource, BrightnessOfGreysIsTheirLevel) {
  for (unsigned v = 0; v < 256; ++v) EXPECT_EQ(prepare::brightness(v, v, v), v);
  EXPECT_EQ(prepare::brightness(255, 0, 0), 76);
  EXPECT_EQ(prepare::brightness(0, 255, 0), 150);
  EXPECT_EQ(prepare::brightness(0, 0, 255), 29);
}

TEST(HostSource, TreatsTablesAndRowsAlike) {
  const RaxelServices filter = host_test::services();
  const std::vector<Color> colors{{10, 200, 60}, {100, 104, 96}, {255, 0, 0}};
  TestPicture indexed(3, 1, 4), direct(3, 1, 24);
  indexed.useTable(colors);
  for (uint32_t x = 0; x < 3; ++x) {
    indexed.setIndex(x, 0, x);
    direct.setColor(x, 0, colors[x]);
  }
  const std::vector<std::vector<uint8_t>> expected{
      {245, 55, 195, 155, 151, 159, 0, 255, 255},     // all inverted
      {10, 200, 60, 155, 151, 159, 255, 0, 0},        // only the near-grey one
      {129, 129, 129, 102, 102, 102, 76, 76, 76},     // (3 red + 6 green + blue) / 10
      {126, 126, 126, 153, 153, 153, 179, 179, 179},  // 255 less that
  };
  for (int treatment = RAXEL_TREAT_INVERT; treatment < RAXEL_TREATMENTS; ++treatment) {
    std::vector<uint8_t> a(9), b(9);
    Source(indexed.view, treatment, &filter).readColors(0, a.data());
    Source(direct.view, treatment, &filter).readColors(0, b.data());
    EXPECT_EQ(a, expected[static_cast<size_t>(treatment) - 1]) << treatment;
    EXPECT_EQ(b, expected[static_cast<size_t>(treatment) - 1]) << treatment;
  }
}

TEST(HostSource, PacksRowsFromTheLeftWithZerosAtTheEnd) {
  std::vector<uint8_t> out(2, 0xFF);
  prepare::packRow(std::vector<uint8_t>{1, 0, 1, 1, 0, 0, 0, 0, 1}, 1, out.data());
  EXPECT_EQ(out, (std::vector<uint8_t>{0xB0, 0x80}));
  prepare::packRow(std::vector<uint8_t>{1, 2, 15}, 4, out.data());
  EXPECT_EQ(out, (std::vector<uint8_t>{0x12, 0xF0}));
}

TEST(HostSource, AHueInTheLastPixelIsSeen) {
  TestPicture picture(3, 3, 24);
  const Source source(picture.view, RAXEL_TREAT_NONE, nullptr);
  EXPECT_TRUE(prepare::isGreyPicture(source));
  picture.setColor(2, 2, {0, 0, 1});
  EXPECT_FALSE(prepare::isGreyPicture(source));
}
