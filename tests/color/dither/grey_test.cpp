// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "color/reference/plain_depth.h"
#include "raxel/color.h"

namespace {

using plain::Bytes;

Bytes revised(Bytes row, int32_t mode) {
  rev_rgb(static_cast<uint32_t>(row.size() / 3), row.data(), mode);
  return row;
}

TEST(Grey, Mode1InvertsEveryChannel) {
  EXPECT_EQ(revised({0, 100, 255, 1, 2, 3}, 1), (Bytes{255, 155, 0, 254, 253, 252}));
}

TEST(Grey, Mode2InvertsPixelsWhoseChannelsAreWithinTen) {
  EXPECT_EQ(revised({100, 110, 105}, 2), (Bytes{155, 145, 150}));
  EXPECT_EQ(revised({100, 111, 105}, 2), (Bytes{100, 111, 105}));
  // Each neighbour within ten is not enough: red and blue are eleven apart.
  EXPECT_EQ(revised({100, 106, 111}, 2), (Bytes{100, 106, 111}));
  EXPECT_EQ(revised({50, 50, 50, 0, 255, 0}, 2), (Bytes{205, 205, 205, 0, 255, 0}));
}

TEST(Grey, Mode3WeighsThreeSixOneAndRoundsDown) {
  // (300 + 600 + 30) / 10 = 93; (3 * 255) / 10 = 76; (6 * 255) / 10 = 153; 255 / 10 = 25.
  EXPECT_EQ(revised({100, 100, 30}, 3), (Bytes{93, 93, 93}));
  EXPECT_EQ(revised({255, 0, 0, 0, 255, 0, 0, 0, 255}, 3), (Bytes{76, 76, 76, 153, 153, 153, 25, 25, 25}));
  EXPECT_EQ(revised({255, 255, 255, 0, 0, 9}, 3), (Bytes{255, 255, 255, 0, 0, 0}));
}

TEST(Grey, Mode4IsTheComplementOfMode3) {
  EXPECT_EQ(revised({100, 100, 30, 255, 255, 255}, 4), (Bytes{162, 162, 162, 0, 0, 0}));
}

TEST(Grey, OtherModesDoNothing) {
  for (int32_t mode : {-1, 0, 5, 100}) EXPECT_EQ(revised({1, 2, 3}, mode), (Bytes{1, 2, 3})) << mode;
}

TEST(Grey, NoRowAndNoPixelsAreLeftAlone) {
  rev_rgb(5, nullptr, 1);
  Bytes row{1, 2, 3};
  rev_rgb(0, row.data(), 1);
  EXPECT_EQ(row, (Bytes{1, 2, 3}));
}

TEST(Grey, EveryLevelOfEachChannelIsWeighedAlike) {
  for (int v = 0; v < 256; ++v) {
    for (int other = 0; other < 256; other += 51) {
      const auto level = static_cast<uint8_t>(v);
      const auto rest = static_cast<uint8_t>(other);
      const auto grey = static_cast<uint8_t>((3 * other + 6 * v + other) / 10);
      EXPECT_EQ(revised({rest, level, rest}, 3), (Bytes{grey, grey, grey}));
    }
  }
}

}  // namespace
