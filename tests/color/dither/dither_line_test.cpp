// SPDX-License-Identifier: MIT
// Error diffusion of one row, with numbers worked by hand.
#include <gtest/gtest.h>

#include "color/reference/plain_depth.h"
#include "raxel/color.h"

namespace {

using plain::Bytes;

const Bytes kBlackWhite{0, 0, 0, 255, 255, 255};

Bytes greys(std::initializer_list<int> levels) {
  Bytes out;
  for (int level : levels) out.insert(out.end(), 3, static_cast<uint8_t>(level));
  return out;
}

void dither(Bytes &current, Bytes *next, const Bytes &table) {
  _rlDitherOneLine(current.data(), next != nullptr ? next->data() : nullptr, table.data(),
                   static_cast<uint32_t>(current.size() / 3), static_cast<int16_t>(table.size() / 3));
}

TEST(DitherLine, SpreadsTheErrorRightAndToThreePixelsBelow) {
  // x 0: 100 becomes 0, error 100: 7 * 100 / 16 = 43 to the right, below 43 - 12 = 31, below right
  //      43 - 36 = 7. There is no pixel below left.
  // x 1: 90 + 43 = 133 becomes 255, error -122: -53 to the right, below -53 + 15 = -38, below left
  //      -53 + 30 = -23, below right -53 + 45 = -8.
  // x 2: the last pixel repeats 255.
  Bytes current = greys({100, 90, 200});
  Bytes next = greys({10, 100, 128});
  dither(current, &next, kBlackWhite);
  EXPECT_EQ(current, greys({0, 255, 255}));
  EXPECT_EQ(next, greys({10 + 31 - 23, 100 + 7 - 38, 128 - 8}));
}

TEST(DitherLine, ClampsAtEveryAdditionNotAtTheEnd) {
  // As above, but 250 + 7 stops at 255 before 38 is taken off: 217, where the sum at the end would
  // be 219.
  Bytes current = greys({100, 90, 200});
  Bytes next = greys({10, 250, 128});
  dither(current, &next, kBlackWhite);
  EXPECT_EQ(next, greys({18, 217, 120}));

  // x 0: 140 becomes 255, error -115: -50 right, below -50 + 14 = -36, below right -50 + 42 = -8.
  // x 1: 150 - 50 = 100 becomes 0, error 100: below 31, below left 43 - 24 = 19, below right 7.
  // The first pixel below: 10 - 36 stops at 0, then 19. The second: 3 - 8 stops at 0, then 31.
  current = greys({140, 150, 0});
  next = greys({10, 3, 128});
  dither(current, &next, kBlackWhite);
  EXPECT_EQ(current, greys({255, 0, 0}));
  EXPECT_EQ(next, greys({19, 31, 135}));
}

TEST(DitherLine, ClampsTheRightNeighbourBeforeItIsSearched) {
  // 127 becomes 0 and sends 55 right: 230 + 55 stops at 255, so the next error is 0, not 30.
  Bytes current = greys({127, 230, 0});
  Bytes next = greys({0, 0, 0});
  dither(current, &next, kBlackWhite);
  EXPECT_EQ(current, greys({0, 255, 255}));
  // Below: 55 - 15 = 40 and 55 - 45 = 10; nothing from the second pixel.
  EXPECT_EQ(next, greys({40, 10, 0}));
}

TEST(DitherLine, QuotientsAreTruncatedTowardZero) {
  // Error -1: both quotients are 0 (rounding down would give -1). Error -9: -63 / 16 = -3, -9 / 8 = -1.
  Bytes current = greys({254, 246, 0});
  Bytes next = greys({100, 100, 100});
  dither(current, &next, kBlackWhite);
  // x 0 spreads nothing; x 1 spreads below -3 + 1 = -2, below left -3 + 2 = -1, below right 0.
  EXPECT_EQ(next, greys({99, 98, 100}));
}

TEST(DitherLine, ChannelsSpreadTheirOwnErrors) {
  // (200, 40, 90) is nearest to (255, 0, 0): errors -55, 40, 90, to the right -24, 17, 39.
  const Bytes table{255, 0, 0, 0, 255, 0, 0, 0, 255};
  Bytes current{200, 40, 90, 100, 100, 200, 0, 0, 0};
  Bytes next(9, 100);
  dither(current, &next, table);
  // (76, 117, 239) is nearest to blue: errors 76, 117, -16.
  EXPECT_EQ(current, (Bytes{255, 0, 0, 0, 0, 255, 0, 0, 255}));
  const Bytes expected{
      // below, then below left of the second: red -24 + 6, 33 - 18; green 17 - 5, 51 - 28;
      // blue 39 - 11, -7 + 4
      100 - 18 + 15, 100 + 12 + 23, 100 + 28 - 3,
      // below right of the first, then below: red -24 + 18, 33 - 9; green 17 - 15, 51 - 14;
      // blue 39 - 33, -7 + 2
      100 - 6 + 24, 100 + 2 + 37, 100 + 6 - 5,
      // below right of the second: 33 - 27, 51 - 42, -7 + 6
      100 + 6, 100 + 9, 100 - 1};
  EXPECT_EQ(next, expected);
}

TEST(DitherLine, OnePixelBecomesEntry0AndSpreadsNothing) {
  Bytes current = greys({255});
  Bytes next = greys({77});
  dither(current, &next, {10, 20, 30, 255, 255, 255});
  EXPECT_EQ(current, (Bytes{10, 20, 30}));
  EXPECT_EQ(next, greys({77}));
}

TEST(DitherLine, TheLastPixelIsNotSearched) {
  Bytes current = greys({0, 255});
  dither(current, nullptr, kBlackWhite);
  EXPECT_EQ(current, greys({0, 0}));
}

TEST(DitherLine, OneEntryIsATable) {
  Bytes current = greys({100, 90, 200});
  dither(current, nullptr, {9, 9, 9});
  EXPECT_EQ(current, greys({9, 9, 9}));
}

TEST(DitherLine, GreysMatchOnlyGreys) {
  // (100, 102, 104) would be nearest to the second entry, but counts as grey.
  Bytes current{100, 102, 104, 0, 0, 0};
  dither(current, nullptr, {0, 0, 0, 100, 110, 120});
  EXPECT_EQ(current, greys({0, 0}));
}

TEST(DitherLine, WithoutEntriesPixelsBecomeBlackAndSpreadAllTheyHold) {
  for (int16_t count : {int16_t{0}, int16_t{-5}}) {
    Bytes current = greys({16, 0, 9});
    Bytes next = greys({0, 0, 0});
    const Bytes table{9, 9, 9};
    _rlDitherOneLine(current.data(), next.data(), table.data(), 3, count);
    EXPECT_EQ(current, greys({0, 0, 0})) << count;
    // 16 spreads 7 right, 5 below, 1 below right; 7 spreads 3 below, 3 below left, 3 below right.
    EXPECT_EQ(next, greys({8, 4, 3})) << count;
  }
  Bytes current = greys({16, 0, 9});
  _rlDitherOneLine(current.data(), nullptr, nullptr, 3, 2);
  EXPECT_EQ(current, greys({0, 0, 0}));
}

TEST(DitherLine, NoRowOrNoWidthDoesNothing) {
  Bytes next = greys({1, 2});
  _rlDitherOneLine(nullptr, next.data(), kBlackWhite.data(), 2, 2);
  EXPECT_EQ(next, greys({1, 2}));
  Bytes current = greys({50});
  _rlDitherOneLine(current.data(), next.data(), kBlackWhite.data(), 0, 2);
  EXPECT_EQ(current, greys({50}));
}

}  // namespace
