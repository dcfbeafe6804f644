// SPDX-License-Identifier: MIT
// Choosing a table: boxes, rounds and trials, worked by hand.
#include "prepare/clusters.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "prepare/nearest.h"
#include "support/random.h"

using prepare::Color;
using prepare::ColorCount;

namespace {

std::vector<Color> sorted(std::vector<Color> table) {
  std::ranges::sort(table);
  return table;
}

uint64_t errorOf(const std::vector<ColorCount> &colors, const std::vector<Color> &table) {
  uint64_t sum = 0;
  for (const ColorCount &c : colors) {
    const Color &entry = table[prepare::nearestEntry(table, c.mean)];
    for (size_t i = 0; i < 3; ++i) {
      sum += uint64_t{c.count} * static_cast<uint64_t>((c.mean[i] - entry[i]) * (c.mean[i] - entry[i]));
    }
  }
  return sum;
}

TEST(Clusters, ABoxIsCutAtItsMean) {
  // The mean of all is 82 / 6 = 13.7: the cut leaves 0 and 10 on one side, 31 on the other.
  const std::vector<ColorCount> reds{{{0, 0, 0}, 3}, {{10, 0, 0}, 2}, {{62, 0, 0}, 1}};
  EXPECT_EQ(sorted(prepare::cutBoxes(reds, 2)), (std::vector<Color>{{4, 0, 0}, {62, 0, 0}}));
  // Then the box with the larger error, 3 * 16 + 2 * 36 = 120 beside 0.
  EXPECT_EQ(sorted(prepare::cutBoxes(reds, 3)), (std::vector<Color>{{0, 0, 0}, {10, 0, 0}, {62, 0, 0}}));
  EXPECT_EQ(prepare::cutBoxes(reds, 4).size(), 3u);
  EXPECT_EQ(prepare::cutBoxes(reds, 1), (std::vector<Color>{{14, 0, 0}}));
}

TEST(Clusters, ABoxIsCutAcrossItsLongestSpread) {
  // Two bands that run along red = green, 20 apart. Neither channel alone tells them apart, and the spread
  // along them is the longest: the cut falls across the bands, in their middle.
  const std::vector<ColorCount> bands{
      {{0, 20, 0}, 1}, {{20, 0, 0}, 1}, {{100, 120, 0}, 1}, {{120, 100, 0}, 1}};
  EXPECT_EQ(sorted(prepare::cutBoxes(bands, 2)), (std::vector<Color>{{10, 10, 0}, {110, 110, 0}}));
  // Where they are short and far apart, the cut falls between them: along red - green, in one direction and
  // in no channel.
  const std::vector<ColorCount> apart{
      {{0, 100, 0}, 1}, {{40, 140, 0}, 1}, {{100, 0, 0}, 1}, {{140, 40, 0}, 1}};
  EXPECT_EQ(sorted(prepare::cutBoxes(apart, 2)), (std::vector<Color>{{20, 120, 0}, {120, 20, 0}}));
}

TEST(Clusters, ARoundMovesEntriesToTheMeanOfWhatIsNearest) {
  const std::vector<ColorCount> colors{{{0, 0, 0}, 3}, {{8, 0, 0}, 1}, {{200, 200, 200}, 5}};
  std::vector<Color> table{{40, 0, 0}, {180, 180, 180}, {255, 0, 255}};
  prepare::improve(colors, table, 1);
  EXPECT_EQ(table[0], (Color{2, 0, 0}));
  EXPECT_EQ(table[1], (Color{200, 200, 200}));
  EXPECT_EQ(table[2], (Color{255, 0, 255}));  // nothing is near it
}

TEST(Clusters, RoundsNeverRaiseTheErrorByMoreThanRounding) {
  support::Random random(31);
  for (int n = 0; n < 50; ++n) {
    std::vector<ColorCount> colors(static_cast<size_t>(random.between(20, 400)));
    uint64_t pixels = 0;
    for (ColorCount &c : colors) {
      c = {{random.byte(), random.byte(), random.byte()}, static_cast<uint32_t>(random.between(1, 50))};
      pixels += c.count;
    }
    std::vector<Color> table = prepare::cutBoxes(colors, static_cast<uint32_t>(random.between(2, 40)));
    uint64_t before = errorOf(colors, table);
    for (int round = 0; round < 5; ++round) {
      prepare::improve(colors, table, 1);
      const uint64_t after = errorOf(colors, table);
      EXPECT_LE(after,
                before + pixels);  // a mean that is rounded is off by half at most, squared, three times
      before = after;
    }
  }
}

TEST(Clusters, FewColorsAreAllInTheTable) {
  support::Random random(32);
  std::vector<ColorCount> colors(16);
  for (ColorCount &c : colors) {
    c = {{random.byte(), random.byte(), random.byte()}, static_cast<uint32_t>(random.between(1, 1000))};
  }
  for (const uint32_t most : {16u, 256u})
    EXPECT_EQ(errorOf(colors, prepare::chooseColors(colors, most)), 0u);
}

// Rounds leave an entry to which nothing is nearest, and trials come to it: its mean would be no number.
TEST(Clusters, AnEntryWithoutPixelsIsNotDivided) {
  const std::vector<ColorCount> colors{{{9, 0, 0}, 9}, {{8, 2, 0}, 2}, {{8, 0, 0}, 9},
                                       {{7, 0, 0}, 9}, {{6, 1, 0}, 8}, {{8, 3, 0}, 3}};
  for (const Color &entry : prepare::chooseColors(colors, 3)) {
    EXPECT_GE(entry[0], 6);
    EXPECT_LE(entry[0], 9);
    EXPECT_LE(entry[1], 3);
    EXPECT_EQ(entry[2], 0);
  }
}

TEST(Clusters, TrialsFindWhatRoundsAloneCannot) {
  // Four heaps of colours and four entries. Boxes are cut first at the mean of all, through the middle of
  // the heap that most pixels are in, and no round brings the two halves together again.
  support::Random random(33);
  int better = 0;
  for (int n = 0; n < 100; ++n) {
    std::vector<ColorCount> colors;
    for (int heap = 0; heap < 4; ++heap) {
      const Color middle{random.byte(), random.byte(), random.byte()};
      for (int i = 0; i < 20; ++i) {
        Color c = middle;
        for (uint8_t &v : c)
          v = static_cast<uint8_t>(std::clamp<int64_t>(v + random.between(-9, 9), 0, 255));
        colors.push_back({c, static_cast<uint32_t>(random.between(1, 30) * (heap == 0 ? 40 : 1))});
      }
    }
    std::vector<Color> plain = prepare::cutBoxes(colors, 4);
    prepare::improve(colors, plain, 20);
    const uint64_t without = errorOf(colors, plain);
    const uint64_t with = errorOf(colors, prepare::chooseColors(colors, 4));
    EXPECT_LE(with, without + without / 50);
    better += with < without / 2 ? 1 : 0;
  }
  EXPECT_GE(better, 5);
}

}  // namespace
