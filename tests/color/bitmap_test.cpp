// SPDX-License-Identifier: MIT
// Row arithmetic, and single pixels read and set at every depth.
#include "color/bitmap.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "raxel/color.h"

namespace {

using Bytes = std::vector<uint8_t>;

constexpr int16_t kOddDepths[] = {-32768, -8, -1, 0, 2, 3, 7, 9, 15, 16, 23, 25, 31, 33, 64, 32767};

TEST(Rows, ArePaddedToFourBytes) {
  EXPECT_EQ(rlBytesPerLine(1, 1), 4);
  EXPECT_EQ(rlBytesPerLine(32, 1), 4);
  EXPECT_EQ(rlBytesPerLine(33, 1), 8);
  EXPECT_EQ(rlBytesPerLine(5, 4), 4);
  EXPECT_EQ(rlBytesPerLine(9, 4), 8);
  EXPECT_EQ(rlBytesPerLine(3, 24), 12);
  EXPECT_EQ(rlBytesPerLine(4, 24), 12);
  EXPECT_EQ(rlBytesPerLine(5, 24), 16);
  EXPECT_EQ(rlBytesPerLine(0, 8), 0);
  EXPECT_EQ(rlBytesPerLine(7, 32), 28);
  EXPECT_EQ(rlBytesPerLine(3, 2), 4);
  EXPECT_EQ(rlBytesPerLine(3, 16), 8);
}

TEST(Rows, MakeTheBlockTogether) {
  EXPECT_EQ(rlCalcNewSize(33, 3, 1), 24u);
  EXPECT_EQ(rlCalcNewSize(5, 7, 24), 112u);
  EXPECT_EQ(rlCalcNewSize(5, 0, 24), 0u);
  EXPECT_EQ(rlCalcNewSize(65535, 65535, 8), 65536u * 65535u);
}

TEST(Rows, PastThirtyTwoBitsAnswerTheNumberModulo) {
  EXPECT_EQ(rlBytesPerLine(0x40000001, 32), 4);  // 2^32 + 4 bytes
  EXPECT_EQ(rlBytesPerLine(0x10000000, 32), 0x40000000);
  EXPECT_EQ(rlCalcNewSize(0x10001, 0x10000, 8), 0x40000u);  // (2^16 + 4) rows of 2^16
  EXPECT_EQ(color::bytesPerLine(0xFFFFFFFF, 32), 0x3FFFFFFFCu);
  EXPECT_EQ(color::bitmapSize(0x10001, 0x10000, 8), 0x100040000u);
  EXPECT_EQ(color::bitmapSize(0xFFFFFFFF, 0xFFFFFFFF, 32767), UINT64_MAX);
}

TEST(Rows, HaveNoBytesAtDepthsBelowOne) {
  for (const int16_t depth : std::to_array<int16_t>({0, -1, -8, -32768}))
    EXPECT_EQ(rlBytesPerLine(100, depth), 0) << depth;
}

TEST(Pixels, OneBitLiesMostSignificantFirst) {
  Bytes row(4, 0);
  EXPECT_EQ(rlSetPixel(row.data(), 4, 0, 0, 1, 1, nullptr, nullptr, 0), 0);
  rlSetPixel(row.data(), 4, 9, 0, 1, 1, nullptr, nullptr, 0);
  EXPECT_EQ(row, (Bytes{0x80, 0x40, 0, 0}));
  EXPECT_EQ(rlGetPixel(row.data(), 4, 0, 0, 1), 1u);
  EXPECT_EQ(rlGetPixel(row.data(), 4, 9, 0, 1), 1u);
  EXPECT_EQ(rlGetPixel(row.data(), 4, 8, 0, 1), 0u);
  Bytes full(4, 0xFF);
  rlSetPixel(full.data(), 4, 9, 0, 1, 2, nullptr, nullptr, 0);  // only the lowest bit counts
  EXPECT_EQ(full, (Bytes{0xFF, 0xBF, 0xFF, 0xFF}));
}

TEST(Pixels, FourBitsPutTheLeftPixelHigh) {
  Bytes row{0x12, 0x34, 0x56, 0x78};
  EXPECT_EQ(rlGetPixel(row.data(), 4, 2, 0, 4), 3u);
  EXPECT_EQ(rlGetPixel(row.data(), 4, 3, 0, 4), 4u);  // the low nibble of byte 1
  rlSetPixel(row.data(), 4, 3, 0, 4, 0xFA, nullptr, nullptr, 0);
  rlSetPixel(row.data(), 4, 0, 0, 4, 0xF9, nullptr, nullptr, 0);
  EXPECT_EQ(row, (Bytes{0x92, 0x3A, 0x56, 0x78}));
}

TEST(Pixels, EightBitsAreTheIndex) {
  Bytes block(8, 0);
  rlSetPixel(block.data(), 4, 2, 1, 8, 0x1FE, nullptr, nullptr, 0);
  EXPECT_EQ(block, (Bytes{0, 0, 0, 0, 0, 0, 0xFE, 0}));
  EXPECT_EQ(rlGetPixel(block.data(), 4, 2, 1, 8), 0xFEu);
}

TEST(Pixels, DeepPixelsTravelAsRedOnTop) {
  Bytes block{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  EXPECT_EQ(rlGetPixel(block.data(), 12, 1, 0, 24), 0x04050600u);
  EXPECT_EQ(rlGetPixel(block.data(), 12, 1, 0, 32), 0x05060708u);
  rlSetPixel(block.data(), 12, 0, 0, 24, 0xA1B2C3D4, nullptr, nullptr, 0);
  rlSetPixel(block.data(), 12, 2, 0, 32, 0xA1B2C3D4, nullptr, nullptr, 0);
  EXPECT_EQ(block, (Bytes{0xA1, 0xB2, 0xC3, 4, 5, 6, 7, 8, 0xA1, 0xB2, 0xC3, 0xD4}));
}

TEST(Pixels, OtherDepthsReadZeroAndWriteNothing) {
  Bytes block(64, 0xA5);
  for (int16_t depth : kOddDepths) {
    EXPECT_EQ(rlGetPixel(block.data(), 16, 0, 1, depth), 0u) << depth;
    EXPECT_EQ(rlSetPixel(block.data(), 16, 0, 1, depth, 0, nullptr, nullptr, 0), 0) << depth;
  }
  EXPECT_EQ(block, Bytes(64, 0xA5));
}

// Two colours and one grey: (255,0,0), (0,0,255), (8,8,8).
constexpr uint8_t kTable[] = {255, 0, 0, 0, 0, 255, 8, 8, 8};

TEST(Pixels, WithoutAMapTakeTheNearestEntryOfTheTable) {
  Bytes row(4, 0);
  rlSetPixel(row.data(), 4, 0, 0, 8, 0x20308000, nullptr, kTable, 3);
  rlSetPixel(row.data(), 4, 1, 0, 8, 0xF0F1F200, nullptr, kTable, 3);  // grey, so the only grey
  rlSetPixel(row.data(), 4, 4, 0, 4, 0x0000F000, nullptr, kTable, 3);
  EXPECT_EQ(row, (Bytes{1, 2, 0x10, 0}));
}

TEST(Pixels, AMapGoesBeforeTheTable) {
  constexpr uint32_t map[] = {2, 1, 0x2FF};
  Bytes row(4, 0);
  rlSetPixel(row.data(), 4, 0, 0, 8, 0, map, kTable, 3);
  rlSetPixel(row.data(), 4, 1, 0, 8, 2, map, nullptr, 0);
  EXPECT_EQ(row, (Bytes{2, 0xFF, 0, 0}));
}

TEST(Pixels, DeepDestinationsTakeTheEntryThatTheMapNames) {
  constexpr uint32_t map[] = {1, 3, 0xFF00FF00};
  Bytes block(16, 0x77);
  rlSetPixel(block.data(), 16, 0, 0, 24, 0, map, kTable, 3);
  rlSetPixel(block.data(), 16, 1, 0, 24, 1, map, kTable, 3);  // no entry 3: black
  rlSetPixel(block.data(), 16, 2, 0, 24, 2, map, kTable, 3);  // an RGB word is no entry
  rlSetPixel(block.data(), 16, 3, 0, 24, 2, map, nullptr, 0);
  EXPECT_EQ(block, (Bytes{0, 0, 255, 0, 0, 0, 0, 0, 0, 0xFF, 0, 0xFF, 0x77, 0x77, 0x77, 0x77}));
  rlSetPixel(block.data(), 16, 0, 0, 32, 0, map, kTable, 3);
  rlSetPixel(block.data(), 16, 1, 0, 32, 1, map, kTable, 3);
  rlSetPixel(block.data(), 16, 2, 0, 32, 1, map, nullptr, 0);
  rlSetPixel(block.data(), 16, 3, 0, 32, 0x01020304, nullptr, kTable, 3);  // no map: the value's bytes
  EXPECT_EQ(block, (Bytes{0, 0, 255, 0, 0, 0, 0, 0, 0, 0, 0, 3, 1, 2, 3, 0}));
}

TEST(Pixels, EntriesPastTheCountAreBlack) {
  constexpr uint32_t map[] = {1, 2};
  Bytes block(8, 0x77);
  color::setPixel(block, 0, 24, 0, {.map = map, .table = kTable, .count = 2});
  color::setPixel(block, 1, 24, 1, {.map = map, .table = kTable, .count = 2});
  EXPECT_EQ(block, (Bytes{0, 0, 255, 0, 0, 0, 0x77, 0x77}));
  color::setPixel(block, 6, 8, 2, {.map = map, .table = {}, .count = 0});  // and what the map lacks is 0
  EXPECT_EQ(block, (Bytes{0, 0, 255, 0, 0, 0, 0, 0x77}));
}

TEST(Pixels, ATableOfMoreThan32767EntriesMatchesNothing) {
  // The count is a signed number to the search.
  const Bytes table(size_t{40000} * 3, 9);
  Bytes row(4, 0xAA);
  rlSetPixel(row.data(), 4, 0, 0, 8, 0x09090900, nullptr, table.data(), 40000);
  EXPECT_EQ(row[0], 0);
}

TEST(Pixels, NullAddressesAreLeftAlone) {
  EXPECT_EQ(rlGetPixel(nullptr, 4, 0, 0, 8), 0u);
  EXPECT_EQ(rlSetPixel(nullptr, 4, 0, 0, 8, 1, nullptr, nullptr, 0), 0);
}

TEST(Pixels, RowsMayRunBackwards) {
  Bytes block{1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(rlGetPixel(block.data() + 4, -4, 1, 1, 8), 2u);
}

TEST(Pixels, EndWithTheBlock) {
  Bytes block{1, 2, 3, 4, 5};
  const std::span<uint8_t> row(block);
  EXPECT_EQ(color::getPixel(row, 1, 24), 0x04050000u);
  EXPECT_EQ(color::getPixel(row, 2, 24), 0u);
  EXPECT_EQ(color::getPixel(row, 0xFFFFFFFF, 32), 0u);
  color::setPixel(row, 1, 24, 0xA1A2A3A4, {});
  color::setPixel(row, 0xFFFFFFFF, 1, 1, {});
  EXPECT_EQ(block, (Bytes{1, 2, 3, 0xA1, 0xA2}));
  EXPECT_EQ(color::rowAt(row, 4, 1).size(), 1u);
  EXPECT_TRUE(color::rowAt(row, 4, 2).empty());
  EXPECT_TRUE(color::rowAt(row, UINT64_MAX, 0xFFFFFFFF).empty());
}

TEST(Pixels, AreNamedOnStandardErrorAboveLevelThree) {
  Bytes row(4, 0);
  for (const auto &[level, expected] : {std::pair<uint16_t, const char *>{0, ""},
                                        {1, ""},
                                        {3, ""},
                                        {0xFFFF, ""},
                                        {0x8004, ""},
                                        {4, "(2,7): (-1,0): "},
                                        {0x7FFF, "(2,7): (-1,0): "}}) {
    _debug_color_res = level;
    testing::internal::CaptureStderr();
    rlSetPixel(row.data(), 0, 2, 7, 8, 1, nullptr, nullptr, 0);
    rlSetPixel(row.data(), 0, 0xFFFFFFFF, 0, 16, 1, nullptr, nullptr, 0);  // stores nothing, is named
    EXPECT_EQ(testing::internal::GetCapturedStderr(), expected) << level;
    _debug_color_res = 0;
  }
}

}  // namespace
