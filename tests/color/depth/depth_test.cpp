// SPDX-License-Identifier: MIT
// Depth conversion, pair by pair, with bytes worked by hand.
#include <gtest/gtest.h>

#include "color/pictures.h"

namespace {

using plain::Bytes;
using plain::Table;

Bytes convert(const Bytes &bits, uint32_t width, uint32_t height, int sourceDepth, int depth,
              const Table &source, const Table &table) {
  const runtime::Block from = pictures::block(bits);
  const runtime::Block sourceTable = pictures::block(source);
  const runtime::Block newTable = pictures::block(table);
  const runtime::Block out(rlConvertBitmapDepth(
      from.handle(), width, height, static_cast<int16_t>(sourceDepth), static_cast<int16_t>(depth),
      sourceTable.handle(), newTable.handle(), static_cast<uint16_t>(table.count)));
  EXPECT_EQ(pictures::bytesOf(from.handle()), bits);
  return pictures::bytesOf(out.handle());
}

const Table kRedBlue = pictures::table({255, 0, 0, 0, 0, 255});

TEST(Depth, SameDepthKeepsPixelsAndClearsPadding) {
  EXPECT_EQ(convert({1, 2, 3, 4, 5, 6, 99, 99}, 2, 1, 24, 24, {}, {}), (Bytes{1, 2, 3, 4, 5, 6, 0, 0}));
  EXPECT_EQ(convert({1, 2, 3, 4}, 1, 1, 32, 32, {}, {}), (Bytes{1, 2, 3, 4}));
  // Three pixels 1 0 1 and the rest of the row set: only the pixels go over.
  EXPECT_EQ(convert({0xBF, 0xFF, 0xFF, 0xFF}, 3, 1, 1, 1, kRedBlue, {}), (Bytes{0xA0, 0, 0, 0}));
  const Table sixteen = pictures::table({0, 0, 0, 9, 0, 0, 0, 9, 0, 9, 9, 0});
  EXPECT_EQ(convert({0x12, 0x3F, 0xFF, 0xFF}, 3, 1, 4, 4, sixteen, {}), (Bytes{0x12, 0x30, 0, 0}));
}

TEST(Depth, IndexesGrowWithoutANewTable) {
  EXPECT_EQ(convert({0x60, 0, 0, 0}, 3, 1, 1, 4, kRedBlue, {}), (Bytes{0x01, 0x10, 0, 0}));
  EXPECT_EQ(convert({0x60, 0x80, 0, 0}, 9, 1, 1, 8, kRedBlue, {}),
            (Bytes{0, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0}));
  const Table four = pictures::table({0, 0, 0, 9, 0, 0, 0, 9, 0, 9, 9, 0});
  EXPECT_EQ(convert({0x01, 0x32, 0, 0}, 4, 1, 4, 8, four, {}), (Bytes{0, 1, 3, 2}));
}

TEST(Depth, AnIndexBecomesItsColorsNearestEntryOfTheSameTable) {
  // Entries 0 and 2 are equal, so 2 becomes 0. Entry 3 counts as grey when it is looked for, and the
  // only grey entry is 1.
  const Table table = pictures::table({200, 0, 0, 50, 50, 50, 200, 0, 0, 100, 102, 104});
  EXPECT_EQ(convert({0x01, 0x23, 0, 0}, 4, 1, 4, 8, table, {}), (Bytes{0, 1, 0, 1}));
  EXPECT_EQ(convert({0x01, 0x23, 0, 0}, 4, 1, 4, 4, table, {}), (Bytes{0x01, 0x01, 0, 0}));
}

TEST(Depth, IndexesTakeTheirColorsAt24And32Bits) {
  EXPECT_EQ(convert({0x40, 0, 0, 0}, 2, 1, 1, 24, kRedBlue, {}), (Bytes{255, 0, 0, 0, 0, 255, 0, 0}));
  EXPECT_EQ(convert({0x01, 0, 0, 0}, 2, 1, 4, 24, kRedBlue, {}), (Bytes{255, 0, 0, 0, 0, 255, 0, 0}));
  EXPECT_EQ(convert({0, 1, 0, 0}, 2, 1, 8, 24, kRedBlue, {}), (Bytes{255, 0, 0, 0, 0, 255, 0, 0}));
  EXPECT_EQ(convert({0, 1, 0, 0}, 2, 1, 8, 32, kRedBlue, {}), (Bytes{255, 0, 0, 0, 0, 0, 255, 0}));
  EXPECT_EQ(convert({0x40, 0, 0, 0}, 2, 1, 1, 32, kRedBlue, {}), (Bytes{255, 0, 0, 0, 0, 0, 255, 0}));
}

TEST(Depth, IndexesFindTheNearestEntryOfANewTable) {
  const Table source = pictures::table({250, 10, 10, 10, 10, 250, 90, 90, 90});
  const Table table = pictures::table({0, 0, 0, 0, 0, 255, 255, 0, 0});
  EXPECT_EQ(convert({0, 1, 2, 0}, 4, 1, 8, 4, source, table), (Bytes{0x21, 0x02, 0, 0}));
  EXPECT_EQ(convert({0, 1, 2, 0}, 4, 1, 8, 8, source, table), (Bytes{2, 1, 0, 2}));
  // Only the lowest bit of an index fits in a bilevel pixel.
  EXPECT_EQ(convert({0, 1, 2, 1}, 4, 1, 8, 1, source, table), (Bytes{0x50, 0, 0, 0}));
  EXPECT_EQ(convert({0, 1, 2, 0}, 1, 1, 8, 32, source, table), (Bytes{255, 0, 0, 0}));
}

TEST(Depth, ANewTableAt24BitsIsAskedForRgbWordsAndAnswersBlack) {
  const Table source = pictures::table({250, 10, 10, 0, 0, 0});
  EXPECT_EQ(convert({0, 1, 0, 0}, 2, 1, 8, 24, source, pictures::table({7, 8, 9})),
            (Bytes{0, 0, 0, 7, 8, 9, 0, 0}));
}

TEST(Depth, ASmallRgbWordNamesAnEntryOfALongTable) {
  // The RGB word of (0, 0, 1) is 256.
  const Table source = pictures::table({0, 0, 1});
  Table table{true, Bytes(900, 5), 300};
  EXPECT_EQ(convert({0, 0, 0, 0}, 1, 1, 8, 24, source, table), (Bytes{5, 5, 5, 0}));
  table.count = 256;
  EXPECT_EQ(convert({0, 0, 0, 0}, 1, 1, 8, 24, source, table), (Bytes{0, 0, 0, 0}));
}

TEST(Depth, WithoutTablesIndexesBecome0) {
  EXPECT_EQ(convert({0xFF, 0, 0, 0}, 4, 1, 1, 8, {}, {}), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(convert({1, 2, 3, 4}, 4, 1, 8, 4, kRedBlue, {}), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(convert({9, 0, 0, 0}, 1, 1, 8, 24, {}, {}), (Bytes{0, 0, 0, 0}));
}

TEST(Depth, A24BitPixelFindsItsNearestEntryGreyToGrey) {
  const Table table = pictures::table({0, 0, 0, 100, 110, 120, 128, 128, 128, 255, 0, 0});
  const Bytes bits{100, 104, 104, 100, 105, 104, 240, 20, 30, 64, 64, 64};
  // (100, 104, 104) is grey within 4: 128 is nearer than 0. (100, 105, 104) is a colour. 64 lies
  // between both greys, and the lower index wins.
  EXPECT_EQ(convert(bits, 4, 1, 24, 8, {}, table), (Bytes{2, 1, 3, 0}));
  EXPECT_EQ(convert(bits, 4, 1, 24, 4, {}, table), (Bytes{0x21, 0x30, 0, 0}));
  EXPECT_EQ(convert(bits, 4, 1, 24, 1, {}, table), (Bytes{0x60, 0, 0, 0}));
}

TEST(Depth, RgbPixelsAreCopiedBetween24And32Bits) {
  EXPECT_EQ(convert({1, 2, 3, 4, 5, 6, 0, 0}, 2, 1, 24, 32, {}, {}), (Bytes{1, 2, 3, 0, 4, 5, 6, 0}));
  EXPECT_EQ(convert({1, 2, 3, 99, 4, 5, 6, 98}, 2, 1, 32, 24, {}, {}), (Bytes{1, 2, 3, 4, 5, 6, 0, 0}));
  // A table for the destination leaves the colours, and clears the fourth byte.
  EXPECT_EQ(convert({1, 2, 3, 99}, 1, 1, 32, 32, {}, kRedBlue), (Bytes{1, 2, 3, 0}));
}

TEST(Depth, WithoutATableTheLowByteOfTheValueIsStored) {
  EXPECT_EQ(convert({1, 2, 3, 0}, 1, 1, 24, 8, {}, {}), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(convert({1, 2, 3, 0x5B}, 1, 1, 32, 8, {}, {}), (Bytes{0x5B, 0, 0, 0}));
  EXPECT_EQ(convert({1, 2, 3, 0x5B}, 1, 1, 32, 4, {}, {}), (Bytes{0xB0, 0, 0, 0}));
  EXPECT_EQ(convert({1, 2, 3, 0x5B}, 1, 1, 32, 1, {}, {}), (Bytes{0x80, 0, 0, 0}));
}

TEST(Depth, EveryRowIsConverted) {
  EXPECT_EQ(convert({0x80, 0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0, 0}, 1, 3, 1, 8, kRedBlue, {}),
            (Bytes{1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0}));
}

TEST(Depth, RowsLongerThanAPieceAreConvertedWhole) {
  // 2600 pixels: every third is set.
  const uint32_t width = 2600;
  Bytes bits(plain::lineBytes(width, 1), 0);
  Bytes expected(width, 0);
  for (uint32_t x = 0; x < width; x += 3) {
    bits[x / 8] = static_cast<uint8_t>(bits[x / 8] | 0x80 >> x % 8);
    expected[x] = 1;
  }
  EXPECT_EQ(convert(bits, width, 1, 1, 8, kRedBlue, {}), expected);
  EXPECT_EQ(convert(expected, width, 1, 8, 1, kRedBlue, kRedBlue), bits);
}

}  // namespace
