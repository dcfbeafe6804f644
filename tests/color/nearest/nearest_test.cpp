// SPDX-License-Identifier: MIT
// The nearest entry of a table: greys among greys, colours among colours, ties to the lower index.
#include "color/nearest/nearest.h"

#include <gtest/gtest.h>

#include <vector>

#include "raxel/color.h"

namespace {

using Entries = std::vector<uint8_t>;

int32_t find(int16_t red, int16_t green, int16_t blue, const Entries &table) {
  return rlNearestRGBIndex(red, green, blue, table.data(), static_cast<int16_t>(table.size() / 3));
}

TEST(Nearest, GreyRequestsSkipColors) {
  // Exactly equal bytes make an entry grey; (100,102,104) is no grey entry but a grey request.
  EXPECT_EQ(find(100, 102, 104, {9, 8, 7, 100, 102, 104, 100, 102, 103}), 0);
  EXPECT_EQ(find(100, 102, 104, {9, 8, 7, 100, 102, 104, 0, 0, 0}), 2);
}

TEST(Nearest, ColoredRequestsSkipGreys) {
  EXPECT_EQ(find(100, 150, 200, {0, 0, 0, 150, 150, 150, 255, 255, 255}), 0);
  EXPECT_EQ(find(100, 150, 200, {100, 150, 200, 150, 150, 150}), 0);
  EXPECT_EQ(find(100, 150, 200, {150, 150, 150, 0, 0, 1}), 1);
}

TEST(Nearest, TheToleranceIsFourBetweenEveryPair) {
  const Entries table{0, 0, 0, 1, 2, 3};  // one grey, one colour
  EXPECT_EQ(find(10, 14, 14, table), 0);
  EXPECT_EQ(find(10, 15, 14, table), 1);
  EXPECT_EQ(find(10, 13, 15, table), 1);  // red and blue are 5 apart
  EXPECT_EQ(find(10, 10, 5, table), 1);
  EXPECT_EQ(find(10, 6, 10, table), 0);
}

TEST(Nearest, TiesGoToTheLowerIndex) {
  EXPECT_EQ(find(100, 0, 0, {90, 0, 0, 110, 0, 0}), 0);
  EXPECT_EQ(find(100, 0, 0, {100, 11, 0, 110, 0, 0, 90, 0, 0}), 1);
  EXPECT_EQ(find(100, 0, 0, {100, 0, 1, 100, 0, 0, 100, 0, 0}), 1);
}

TEST(Nearest, DistanceIsPlainSquares) {
  // 12*12 = 144 against 8*8 + 9*9 = 145.
  EXPECT_EQ(find(50, 100, 200, {58, 109, 200, 50, 100, 212}), 1);
}

TEST(Nearest, AnswersZeroForNoEntries) {
  const Entries table{1, 1, 1};
  EXPECT_EQ(rlNearestRGBIndex(1, 1, 1, nullptr, 1), 0);
  EXPECT_EQ(rlNearestRGBIndex(1, 1, 1, table.data(), 0), 0);
  EXPECT_EQ(rlNearestRGBIndex(1, 1, 1, table.data(), -1), 0);
  EXPECT_EQ(rlNearestRGBIndex(1, 1, 1, table.data(), -32768), 0);
}

TEST(Nearest, SearchesNoFurtherThanTheEntriesReaches) {
  const Entries table{5, 5, 5, 1, 1, 1, 9, 9};  // two entries and two bytes
  EXPECT_EQ(color::nearest(9, 9, 9, table, 3), 0);
  EXPECT_EQ(color::nearest(0, 0, 0, table, 32767), 1);
}

TEST(Nearest, RequestsFarOutsideAByteFindNothingPastTheBound) {
  // 2 * 32768 squared is 2^31, past the bound of 0x7fffffff; one such channel stays within it.
  EXPECT_EQ(find(-32768, -32768, 0, {1, 2, 3, 0, 0, 1}), 0);
  EXPECT_EQ(find(-32768, 0, 0, {1, 2, 3, 0, 0, 1}), 1);
  EXPECT_EQ(find(32767, 32767, 32767, {0, 0, 0, 255, 255, 255}), 0);
}

}  // namespace
