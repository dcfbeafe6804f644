// SPDX-License-Identifier: MIT
// Choosing a table: the direct one, the median cut, contexts, and what is printed.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "raxel/color.h"
#include "raxel/memory.h"
#include "support/blocks.h"
#include "support/page_end.h"

namespace {

using Bytes = std::vector<uint8_t>;

// A one-row picture of these pixels, three bytes each; the padding is left white, so that counting
// it would show.
Handle rowOf(const Bytes &pixels) {
  const auto width = static_cast<uint32_t>(pixels.size() / 3);
  const Handle bits = support::newBlock(rlCalcNewSize(width, 1, 24));
  std::memset(GlobalLock(bits), 0xFF, GlobalSize(bits));
  std::memcpy(GlobalLock(bits), pixels.data(), pixels.size());
  return bits;
}

struct Reduced {
  Bytes bytes;
  uint16_t count;
};

Reduced reduce(Handle bits, uint32_t width, int16_t height, uint16_t wanted) {
  uint16_t count = wanted;
  const Handle table = rlReduceColorTable(bits, width, height, &count);
  const auto *p = static_cast<const uint8_t *>(GlobalLock(table));
  Reduced out{Bytes(p, p + GlobalSize(table)), count};
  GlobalFree(table);
  return out;
}

Reduced reduceRow(const Bytes &pixels, uint16_t wanted) {
  const Handle bits = rowOf(pixels);
  Reduced table = reduce(bits, static_cast<uint32_t>(pixels.size() / 3), 1, wanted);
  GlobalFree(bits);
  return table;
}

// The first bytes of a table, followed by nothing but zeros.
void expectTable(const Reduced &table, uint16_t wanted, const Bytes &entries) {
  Bytes expected = entries;
  expected.resize(size_t{wanted} * 3);
  EXPECT_EQ(table.bytes, expected);
}

TEST(Reduce, FewColorsAreListedInCellOrder) {
  // Ten distinct cells, out of order, some twice.
  const Bytes pixels{0, 0, 8, 0, 8, 0,   8, 0, 0,  0,  0, 0, 0, 0,  255, 248, 0, 0,
                     1, 2, 3, 0, 0, 248, 0, 9, 15, 16, 0, 0, 0, 16, 31,  128, 0, 0};
  const Reduced table = reduceRow(pixels, 256);
  EXPECT_EQ(table.count, 10);
  // 0 stays 0, 1 of 31 becomes 15, 31 becomes 255.
  expectTable(table, 256, {0, 0,  0,  0,  0, 15, 0,  0, 255, 0,   15, 0, 0,   15, 15,
                           0, 23, 31, 15, 0, 0,  23, 0, 0,   135, 0,  0, 255, 0,  0});
}

TEST(Reduce, NearColorsShareACell) {
  const Reduced table = reduceRow({0x08, 0x0F, 0x08, 0x0F, 0x08, 0x0F, 0x07, 0x00, 0x10}, 8);
  EXPECT_EQ(table.count, 2);
  expectTable(table, 8, {0, 0, 23, 15, 15, 15});
}

TEST(Reduce, AsManyColorsAsWantedAreCut) {
  // Two colours, two wanted: the median cut runs, ends before its first split, and leaves slot 1
  // unused. The mean of (2,0,0) three times and (31,0,0) once is 37/4 = 9: 79.
  const Reduced table = reduceRow({16, 0, 0, 16, 0, 0, 248, 0, 0, 16, 0, 0}, 2);
  EXPECT_EQ(table.count, 2);
  expectTable(table, 2, {79, 0, 0, 0, 0, 0});
}

TEST(Reduce, AsManyColorsAsWantedAreCutAndOneIsLost) {
  // Cells 1, 2 and 3 of blue, once each, three wanted. One split: half of 3 is 1, reached at the first
  // entry, which goes to slot 1 alone; 2 and 3 go to slot 2 with the mean 5/2 = 2. Slot 0 keeps the
  // parent's mean 6/3 = 2: the table has two different colours.
  const Reduced table = reduceRow({0, 0, 8, 0, 0, 16, 0, 0, 24}, 3);
  EXPECT_EQ(table.count, 3);
  expectTable(table, 3, {0, 0, 23, 0, 0, 15, 0, 0, 23});
}

TEST(Reduce, OneWantedColorIsTheMeanOfAll) {
  const Reduced table = reduceRow({16, 0, 0, 16, 0, 0, 248, 0, 0, 16, 0, 0}, 1);
  EXPECT_EQ(table.count, 1);
  expectTable(table, 1, {79, 0, 0});
}

TEST(Reduce, NothingWantedIsNothing) {
  const Reduced table = reduceRow({16, 0, 0, 248, 0, 0}, 0);
  EXPECT_EQ(table.count, 0);
  EXPECT_TRUE(table.bytes.empty());
}

TEST(Reduce, TheLastParentsMeanIsTheLastColor) {
  // Cells 1 to 4 of blue, counts 1, 2, 3, 4. One split: half of 10 is 5, reached at the third entry
  // (1 + 2 + 3), so the lower box holds 1 to 3 with the mean 14/6 = 2 and goes to slot 1, the upper
  // one holds 4 and goes to slot 2. Slot 0 keeps the parent's mean 30/10 = 3.
  Bytes pixels;
  for (int blue = 1; blue <= 4; ++blue) {
    for (int n = 0; n < blue; ++n) pixels.insert(pixels.end(), {0, 0, static_cast<uint8_t>(blue * 8)});
  }
  const Reduced table = reduceRow(pixels, 3);
  EXPECT_EQ(table.count, 3);
  expectTable(table, 3, {0, 0, 31, 0, 0, 23, 0, 0, 39});
}

TEST(Reduce, TheSortTakesAnEntryOfTheNextBox) {
  // The example of src/color/README.md: reds 1 2 3 4 9 10 with 2 1 1 1 3 2 pixels. The second cut's
  // sort takes the 9 into the lower box and gives the 2 away. Means 1, 2 (the last parent), 9 (as
  // measured before), 7.
  Bytes pixels;
  for (const auto &[red, count] : {std::pair<int, int>{1, 2}, {2, 1}, {3, 1}, {4, 1}, {9, 3}, {10, 2}}) {
    for (int n = 0; n < count; ++n) pixels.insert(pixels.end(), {static_cast<uint8_t>(red * 8), 0, 0});
  }
  const Reduced table = reduceRow(pixels, 4);
  EXPECT_EQ(table.count, 4);
  expectTable(table, 4, {15, 0, 0, 23, 0, 0, 79, 0, 0, 63, 0, 0});
}

TEST(Reduce, AnEmptyPictureHasNoColors) {
  for (const auto &[width, height] :
       {std::pair<uint32_t, int16_t>{0, 1}, {1, 0}, {0, 0}, {0xFFFFFFFF, 0}, {1, -1}, {1, -32768}}) {
    const Handle bits = rowOf({9, 9, 9});
    const Reduced table = reduce(bits, width, height, 16);
    EXPECT_EQ(table.count, 0) << width << " by " << height;
    expectTable(table, 16, {});
    GlobalFree(bits);
  }
}

TEST(Reduce, WithoutAPictureTheTableIsZeroAndTheCountStays) {
  const Reduced table = reduce(0, 4, 4, 5);
  EXPECT_EQ(table.count, 5);
  expectTable(table, 5, {});
  EXPECT_EQ(rlReduceColorTable(0, 4, 4, nullptr), 0u);
}

TEST(Reduce, WhatABlockLacksIsBlack) {
  // Two white pixels and one byte of a third where 8 rows of 4 pixels are claimed: the third is
  // (16,0,0), 29 are black. Red is (62 + 16) / 32 = 2, green and blue 62 / 32 = 1.
  const Handle bits = support::newBlock(7);
  std::memcpy(GlobalLock(bits), "\xFF\xFF\xFF\xFF\xFF\xFF\x80", 7);
  expectTable(reduce(bits, 4, 8, 1), 1, {23, 15, 15});
  GlobalFree(bits);
}

TEST(Reduce, LargePicturesAreReadUpToTheirLastByte) {
  const support::PageEnd picture(Bytes(size_t{512} * 256 * 3, 0x80));
  expectTable(reduce(picture.handle(), 512, 256, 1), 1, {135, 135, 135});
}

TEST(Reduce, SizesFarPastTheBlockEndAtOnce) {
  // The block holds 4 bytes: white, and the red of the next pixel.
  const Handle bits = rowOf({255, 255, 255});
  const Reduced table = reduce(bits, 0xFFFFFFFF, 32767, 4);
  EXPECT_EQ(table.count, 3);
  expectTable(table, 4, {0, 0, 0, 255, 0, 0, 255, 255, 255});
  GlobalFree(bits);
}

TEST(Reduce, PrintsTheTableOnStandardError) {
  const Bytes pixels{0, 0, 0, 255, 128, 64};
  const std::string expected =
      "Color Reduction in Process...24bit -> 7 colors\n"
      "  -new color table size: 2\n"
      "   color 0: [0, 0, 0]\n"
      "   color 1: [255, 135, 71]\n";
  for (const uint16_t level : {uint16_t{1}, uint16_t{3}, uint16_t{5}, uint16_t{0x8000}}) {
    _debug_color_res = level;
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    reduceRow(pixels, 7);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), expected) << level;
  }
  _debug_color_res = 0;
}

}  // namespace
