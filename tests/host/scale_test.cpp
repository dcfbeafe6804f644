// SPDX-License-Identifier: MIT
#include "prepare/scale.h"

#include <gtest/gtest.h>

#include "host/pictures.h"

using host_test::Color;
using host_test::TestPicture;
using prepare::Raster;
using prepare::Source;

namespace {

Raster scaled(const TestPicture &picture, uint32_t width, uint32_t height) {
  return prepare::scale(Source(picture.view, RAXEL_TREAT_NONE, nullptr), width, height);
}

}  // namespace

TEST(HostScale, AveragesAreasWhenShrinking) {
  TestPicture picture(4, 2, 8);
  const uint8_t levels[8] = {10, 20, 100, 200, 30, 40, 0, 100};
  for (uint32_t i = 0; i < 8; ++i) picture.setIndex(i % 4, i / 4, levels[i]);
  const Raster result = scaled(picture, 2, 1);
  EXPECT_EQ(result.channels, 1u);
  EXPECT_EQ(result.bytes, (std::vector<uint8_t>{25, 100}));
}

// A row of three becomes two: each takes one whole pixel and half of the middle one.
TEST(HostScale, SharesPixelsThatLieOnAnEdge) {
  TestPicture picture(3, 1, 8);
  picture.setIndex(0, 0, 30);
  picture.setIndex(1, 0, 90);
  picture.setIndex(2, 0, 240);
  EXPECT_EQ(scaled(picture, 2, 1).bytes, (std::vector<uint8_t>{50, 190}));
}

TEST(HostScale, InterpolatesWhenGrowing) {
  TestPicture picture(2, 1, 8);
  picture.setIndex(0, 0, 0);
  picture.setIndex(1, 0, 200);
  EXPECT_EQ(scaled(picture, 4, 1).bytes, (std::vector<uint8_t>{0, 50, 150, 200}));
}

TEST(HostScale, KeepsFlatPicturesExactAtEverySize) {
  for (uint32_t from : {1u, 2u, 3u, 7u, 50u}) {
    TestPicture picture(from, from, 24);
    for (uint32_t i = 0; i < from * from; ++i) picture.setColor(i % from, i / from, {255, 1, 77});
    for (uint32_t to : {1u, 2u, 3u, 5u, 8u, 49u, 51u}) {
      const Raster result = scaled(picture, to, to + 1);
      ASSERT_EQ(result.bytes.size(), size_t{to} * (to + 1) * 3);
      for (size_t i = 0; i < result.bytes.size(); i += 3) {
        ASSERT_EQ(result.bytes[i], 255);
        ASSERT_EQ(result.bytes[i + 1], 1);
        ASSERT_EQ(result.bytes[i + 2], 77);
      }
    }
  }
}

TEST(HostScale, KeepsTheMiddleInTheMiddle) {
  TestPicture picture(9, 9, 8);
  picture.setIndex(4, 4, 255);
  for (uint32_t to : {3u, 5u, 15u, 27u}) {
    const Raster result = scaled(picture, to, to);
    double sum = 0, momentX = 0, momentY = 0;
    for (uint32_t y = 0; y < to; ++y) {
      for (uint32_t x = 0; x < to; ++x) {
        const double v = result.bytes[size_t{to} * y + x];
        sum += v;
        momentX += v * x;
        momentY += v * y;
      }
    }
    EXPECT_NEAR(momentX / sum, (to - 1) / 2.0, 0.05) << to;
    EXPECT_NEAR(momentY / sum, (to - 1) / 2.0, 0.05) << to;
  }
}
