// SPDX-License-Identifier: MIT
// Palettes and the mapping of colours onto them.
#include "tiff/colors.h"

#include <gtest/gtest.h>

#include <set>

#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;

TEST(ColorDirect, HoldsTheEightFixedColorsAndEightMore) {
  const uint8_t expected[16][3] = {{255, 255, 255}, {0, 0, 0},     {0, 0, 255},   {0, 255, 0},
                                   {255, 0, 0},     {0, 255, 255}, {255, 0, 255}, {255, 255, 0},
                                   {192, 192, 192}, {64, 64, 64},  {0, 0, 128},   {0, 128, 0},
                                   {128, 0, 0},     {0, 128, 128}, {128, 0, 128}, {128, 128, 0}};
  for (int i = 0; i < 16; ++i) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(ColorDirect[i][c], expected[i][c]) << i;
  }
}

int32_t nearest(int32_t red, int32_t green, int32_t blue, const Bytes &table) {
  return MapColors(red, green, blue, table.data(), static_cast<int32_t>(table.size() / 3), 1);
}

TEST(MapColors, NearestFindsEachFixedColor) {
  for (int32_t i = 0; i < 8; ++i) {
    EXPECT_EQ(MapColors(ColorDirect[i][0], ColorDirect[i][1], ColorDirect[i][2], ColorDirect[0], 8, 1), i);
  }
}

TEST(MapColors, TiesKeepTheLowestIndex) {
  EXPECT_EQ(nearest(100, 0, 0, {110, 0, 0, 90, 0, 0}), 0);
  EXPECT_EQ(nearest(100, 0, 0, {120, 0, 0, 90, 0, 0, 110, 0, 0}), 1);
  EXPECT_EQ(nearest(100, 0, 0, {100, 0, 1, 100, 0, 0, 100, 0, 0}), 1);
}

// A grey asks for greys and a colour for colours, with channels within 4 of each other on both sides.
TEST(MapColors, GreysAndColorsDoNotMix) {
  EXPECT_EQ(nearest(100, 104, 100, {100, 105, 100, 0, 4, 0}), 1);
  EXPECT_EQ(nearest(100, 105, 100, {100, 104, 100, 0, 5, 0}), 1);
  EXPECT_EQ(nearest(100, 100, 105, {100, 100, 104, 9, 9, 0}), 1);
  EXPECT_EQ(nearest(105, 100, 102, {102, 102, 102, 9, 0, 9}), 1);
  EXPECT_EQ(nearest(100, 104, 108, {104, 104, 104, 9, 0, 9}), 1);
}

TEST(MapColors, NoEntryOfItsKindGivesZero) {
  EXPECT_EQ(nearest(100, 150, 200, {1, 1, 1, 2, 2, 2}), 0);
  EXPECT_EQ(nearest(100, 100, 100, {255, 0, 0, 0, 255, 0}), 0);
}

TEST(MapColors, GreyIsLuminanceModuloTheCount) {
  EXPECT_EQ(MapColors(200, 200, 200, nullptr, 16, 0), 8);
  EXPECT_EQ(MapColors(200, 200, 200, nullptr, 256, 0), 200);
  EXPECT_EQ(MapColors(255, 255, 255, nullptr, 16, 0), 15);
  EXPECT_EQ(MapColors(100, 0, 0, nullptr, 256, 0), 30);
  EXPECT_EQ(MapColors(0, 100, 0, nullptr, 256, 0), 59);
  EXPECT_EQ(MapColors(0, 0, 100, nullptr, 256, 0), 11);
  EXPECT_EQ(MapColors(255, 0, 0, nullptr, 256, 0), 76);  // 76.5
}

// 0.3 v + 0.59 v + 0.11 v, summed from the left, falls just short of v for these greys.
TEST(MapColors, LuminanceIsSummedFromTheLeft) {
  const std::set<int32_t> fallShort = {1,   2,   4,   5,   8,   10,  16,  20,  21,  31,  32,  39,  40,  41,
                                       42,  55,  57,  59,  61,  62,  63,  64,  78,  80,  82,  84,  101, 103,
                                       105, 107, 109, 110, 114, 118, 122, 124, 126, 128, 139, 143, 156, 160,
                                       164, 168, 181, 185, 189, 193, 202, 206, 210, 214, 218, 219, 220, 223,
                                       228, 231, 236, 237, 239, 243, 244, 245, 248, 252, 253};
  for (int32_t v = 0; v < 256; ++v) {
    EXPECT_EQ(MapColors(v, v, v, nullptr, 256, 0), v - (fallShort.count(v) != 0 ? 1 : 0)) << v;
  }
}

TEST(MapColors, CountZeroGivesZero) {
  EXPECT_EQ(MapColors(9, 9, 9, ColorDirect[0], 0, 1), 0);
  EXPECT_EQ(MapColors(9, 9, 9, ColorDirect[0], 0, 0), 0);
  EXPECT_EQ(MapColors(9, 9, 9, ColorDirect[0], -1, 0), 0);
  EXPECT_EQ(MapColors(9, 9, 9, nullptr, 8, 1), 0);
}

TEST(MapColors, ChannelsOutsideAByteDoNotOverflow) {
  EXPECT_EQ(MapColors(INT32_MIN, INT32_MAX, INT32_MIN, ColorDirect[0], 8, 1), 0);
  EXPECT_EQ(MapColors(INT32_MAX, INT32_MAX, INT32_MAX, nullptr, 16, 0), 15);
}

Bytes remapped(Bytes rows, uint8_t after, bool nibbles) {
  uint8_t table[256];
  for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i + 100);
  tiff::remapRows(rows, after, table, nibbles);
  return rows;
}

// Each byte receives the mapping of the byte after it.
TEST(RemapRows, LeadsByOneByte) {
  EXPECT_EQ(remapped({1, 2, 3}, 9, false), (Bytes{102, 103, 109}));
  EXPECT_EQ(remapped({7}, 9, false), (Bytes{109}));
  EXPECT_EQ(remapped({}, 9, false), (Bytes{}));
}

TEST(RemapRows, NibblesAreMappedOneByOne) {
  Bytes rows = {0x00, 0x12, 0x3F};
  uint8_t table[256] = {};
  for (uint8_t i = 0; i < 16; ++i) table[i] = static_cast<uint8_t>(15 - i);
  tiff::remapRows(rows, 0xF0, table, true);
  EXPECT_EQ(rows, (Bytes{0xED, 0xC0, 0x0F}));
}

// An output index of more than four bits spills over, and the sum is cut to a byte.
TEST(RemapRows, NibbleSumIsCutToAByte) {
  Bytes rows = {0x00};
  uint8_t table[256] = {};
  table[1] = 0x25;
  table[2] = 0x33;
  tiff::remapRows(rows, 0x12, table, true);
  EXPECT_EQ(rows, (Bytes{0x83}));  // 0x250 + 0x33 = 0x283
}

// Greys are multiples of 256 / their number, the last of them white; without any nothing is set.
TEST(SettleColorMap, GreysOfEveryNumber) {
  const tiff::Palette palette(nullptr, 8);
  for (const uint32_t colors : {0u, 1u, 3u, 16u, 256u}) {
    TiffWriterState state{};
    state.nPhotometric = RAXEL_TIFF_BLACK_IS_ZERO;
    state.nColors = static_cast<uint16_t>(colors);
    std::memset(state.abColorMap, 0xA5, sizeof state.abColorMap);
    tiff::settleColorMap(state, palette);
    for (uint32_t i = 0; i < 256; ++i) {
      const uint32_t grey = i >= colors ? 0xA5 : i + 1 == colors ? 255 : i * (256u / colors);
      for (uint32_t c = 0; c < 3; ++c) EXPECT_EQ(state.abColorMap[i][c], grey) << colors << ", " << i;
    }
  }
}

}  // namespace
