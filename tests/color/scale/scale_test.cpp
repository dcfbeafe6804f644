// SPDX-License-Identifier: MIT
// Scaling by leaving out and repeating pixels.
#include "color/scale/scale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "color/scale/columns.h"
#include "raxel/color.h"
#include "raxel/memory.h"
#include "support/blocks.h"

namespace {

using Bytes = std::vector<uint8_t>;

Handle blockOf(const Bytes &bytes) {
  const Handle block = support::newBlock(bytes.size());
  if (!bytes.empty()) std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
  return block;
}

Bytes scale(const Bytes &bits, int16_t depth, uint32_t sourceWidth, uint32_t sourceHeight, uint32_t width,
            uint32_t height) {
  const Handle source = blockOf(bits);
  const Handle scaled = rlShrinkBitmap(source, depth, sourceWidth, sourceHeight, width, height);
  EXPECT_NE(scaled, 0u);
  const auto *p = static_cast<const uint8_t *>(GlobalLock(scaled));
  Bytes out(p, p + GlobalSize(scaled));
  const auto *after = static_cast<const uint8_t *>(GlobalLock(source));
  EXPECT_TRUE(std::equal(bits.begin(), bits.end(), after)) << "the source stays as it was";
  // The other entry does the same.
  const Handle other = rlStretchBitmap(source, depth, sourceWidth, sourceHeight, width, height);
  EXPECT_EQ(GlobalSize(other), out.size());
  EXPECT_TRUE(std::equal(out.begin(), out.end(), static_cast<const uint8_t *>(GlobalLock(other))));
  GlobalFree(other);
  GlobalFree(scaled);
  GlobalFree(source);
  return out;
}

TEST(Scale, NarrowingKeepsTheLastPixel) {
  const Bytes row{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0xEE, 0xEE};
  EXPECT_EQ(scale(row, 8, 10, 1, 4, 1), (Bytes{0, 2, 5, 9}));
  EXPECT_EQ(scale(row, 8, 10, 1, 1, 1), (Bytes{9, 0, 0, 0}));
  EXPECT_EQ(scale(row, 8, 10, 1, 3, 1), (Bytes{0, 3, 9, 0}));
}

TEST(Scale, WideningAlignsTheRightEdges) {
  EXPECT_EQ(scale({'A', 'B', 0, 0}, 8, 2, 1, 5, 1), (Bytes{'A', 'A', 'A', 'B', 'B', 0, 0, 0}));
  EXPECT_EQ(scale({'A', 'B', 'C', 0}, 8, 3, 1, 4, 1), (Bytes{'A', 'A', 'B', 'C'}));
}

TEST(Scale, WideningLeavesOutWhatRoundingDoes) {
  // 15.0 / 11 * 11 is a little less than 15, so the leftmost pixel is never reached and stays 0.
  const Bytes row{11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 0};
  EXPECT_EQ(scale(row, 8, 11, 1, 15, 1),
            (Bytes{0, 11, 12, 13, 13, 14, 15, 16, 16, 17, 18, 19, 19, 20, 21, 0}));
  // The same of rows: the top row stays 0.
  Bytes column(44, 0);
  for (size_t y = 0; y < 11; ++y) column[4 * y] = row[y];
  const Bytes tall = scale(column, 8, 1, 11, 1, 15);
  EXPECT_EQ(tall[0], 0);
  EXPECT_EQ(tall[4], 11);
  EXPECT_EQ(tall[4 * 14], 21);
}

TEST(Scale, FewerRowsAreTakenFromTheTop) {
  const Bytes rows{1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0};
  EXPECT_EQ(scale(rows, 8, 1, 3, 1, 1), (Bytes{1, 0, 0, 0}));
  EXPECT_EQ(scale(rows, 8, 1, 3, 1, 2), (Bytes{1, 0, 0, 0, 2, 0, 0, 0}));
}

TEST(Scale, MoreRowsAreFilledFromTheBottom) {
  EXPECT_EQ(scale({1, 0, 0, 0, 2, 0, 0, 0}, 8, 1, 2, 1, 3), (Bytes{1, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0}));
}

TEST(Scale, EqualSizesAreCopiedWithoutTheirPadding) {
  const Bytes bits{1, 2, 3, 0xEE, 4, 5, 6, 0xEE};
  EXPECT_EQ(scale(bits, 8, 3, 2, 3, 2), (Bytes{1, 2, 3, 0, 4, 5, 6, 0}));
  EXPECT_EQ(scale({0xFF, 0xFF, 0xFF, 0xFF}, 1, 11, 1, 11, 1), (Bytes{0xFF, 0xE0, 0, 0}));
  EXPECT_EQ(scale({0xFF, 0xFF, 0xFF, 0xFF}, 4, 3, 1, 3, 1), (Bytes{0xFF, 0xF0, 0, 0}));
  EXPECT_EQ(scale({1, 2, 3, 4}, 8, 4, 1, 4, 1), (Bytes{1, 2, 3, 4}));
}

TEST(Scale, EveryDepthMovesItsPixels) {
  // Pixels 1 0 0 1 1 of one bit to 2: 0 and the last; to 10: each twice.
  EXPECT_EQ(scale({0x98, 0, 0, 0}, 1, 5, 1, 2, 1), (Bytes{0xC0, 0, 0, 0}));
  EXPECT_EQ(scale({0x98, 0, 0, 0}, 1, 5, 1, 10, 1), (Bytes{0xC3, 0xC0, 0, 0}));
  EXPECT_EQ(scale({0x12, 0x30, 0, 0}, 4, 3, 1, 2, 1), (Bytes{0x13, 0, 0, 0}));
  EXPECT_EQ(scale({0x12, 0x30, 0, 0}, 4, 3, 1, 6, 1), (Bytes{0x11, 0x22, 0x33, 0}));
  EXPECT_EQ(scale({1, 2, 3, 4, 5, 6, 7, 8, 9, 0xEE, 0xEE, 0xEE}, 24, 3, 1, 2, 1),
            (Bytes{1, 2, 3, 7, 8, 9, 0, 0}));
  EXPECT_EQ(scale({1, 2, 3, 4, 5, 6, 0xEE, 0xEE}, 24, 2, 1, 3, 1),
            (Bytes{1, 2, 3, 1, 2, 3, 4, 5, 6, 0, 0, 0}));
  EXPECT_EQ(scale({1, 2, 3, 4, 5, 6, 7, 8}, 32, 2, 1, 1, 1), (Bytes{5, 6, 7, 8}));
  EXPECT_EQ(scale({1, 2, 3, 4}, 32, 1, 1, 2, 1), (Bytes{1, 2, 3, 4, 1, 2, 3, 4}));
}

TEST(Scale, OtherDepthsComeOutBlank) {
  EXPECT_EQ(scale(Bytes(64, 0xFF), 16, 4, 4, 2, 3), Bytes(12, 0));
  EXPECT_EQ(scale(Bytes(64, 0xFF), 2, 4, 4, 9, 9), Bytes(36, 0));
  EXPECT_TRUE(scale(Bytes(64, 0xFF), 0, 4, 4, 0xFFFFFFFF, 0xFFFFFFFF).empty());
  EXPECT_TRUE(scale(Bytes(64, 0xFF), -8, 4, 4, 0xFFFFFFFF, 0xFFFFFFFF).empty());
}

TEST(Scale, SidesOfZeroGiveEmptyOrBlankPictures) {
  const Bytes bits(16, 0xFF);
  EXPECT_TRUE(scale(bits, 8, 4, 4, 0, 4).empty());
  EXPECT_TRUE(scale(bits, 8, 4, 4, 4, 0).empty());
  EXPECT_EQ(scale(bits, 8, 0, 4, 4, 2), Bytes(8, 0));
  EXPECT_EQ(scale(bits, 8, 4, 0, 4, 2), Bytes(8, 0));
  EXPECT_TRUE(scale({}, 8, 0, 0, 0, 0).empty());
}

TEST(Scale, WhatABlockLacksIsBlank) {
  // 3 rows of 4 claimed, 6 bytes there.
  EXPECT_EQ(scale({1, 2, 3, 4, 5, 6}, 8, 4, 3, 4, 3), (Bytes{1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(scale({1, 2, 3, 4, 5, 6}, 8, 4, 3, 2, 2), (Bytes{1, 4, 0, 0, 5, 0, 0, 0}));
  EXPECT_EQ(scale({1, 2, 3, 4, 5}, 24, 4, 1, 8, 1),
            (Bytes{1, 2, 3, 1, 2, 3, 4, 5, 0, 4, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(scale({}, 1, 100, 100, 3, 2), Bytes(8, 0));
  EXPECT_EQ(scale({9}, 8, 0xFFFFFFFF, 0xFFFFFFFF, 2, 2), (Bytes{9, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(Scale, ReadsToTheLastByteOfABlockAndNoFurther) {
  // The last pixel ends with the block: no byte after it may be read along.
  const Bytes row{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  EXPECT_EQ(scale(row, 24, 4, 1, 3, 1), (Bytes{1, 2, 3, 4, 5, 6, 10, 11, 12, 0, 0, 0}));
  EXPECT_EQ(scale(row, 24, 4, 1, 4, 1), row);
}

TEST(Scale, SizesThatFitInNoBlockGiveNone) {
  const Handle bits = blockOf(Bytes(4, 1));
  EXPECT_EQ(rlShrinkBitmap(bits, 8, 1, 1, 65536, 65536), 0u);
  EXPECT_EQ(rlStretchBitmap(bits, 32, 1, 1, 0xFFFFFFFF, 0xFFFFFFFF), 0u);
  EXPECT_EQ(rlShrinkBitmap(0, 8, 1, 1, 1, 1), 0u);
  EXPECT_EQ(rlStretchBitmap(0, 8, 1, 1, 1, 1), 0u);
  GlobalFree(bits);
}

TEST(Scale, WidenedSourcesCountAsSignedSixteenBits) {
  // 32767 columns are widened; from 32768 on the number is negative and nothing is.
  Bytes bits(32768, 7);
  bits.back() = 9;
  Bytes wide = scale(bits, 8, 32767, 1, 32768, 1);
  EXPECT_EQ(wide[0], 7);
  EXPECT_EQ(wide[1], 7);
  wide = scale(bits, 8, 32768, 1, 32772, 1);
  EXPECT_EQ(wide, Bytes(32772, 0));
  // Of 65538 columns the number leaves 2: they fill the whole row.
  bits.assign(65540, 7);
  bits[0] = 1;
  bits[1] = 2;
  wide = scale(bits, 8, 65538, 1, 65544, 1);
  EXPECT_EQ(std::count(wide.begin(), wide.end(), 1), 32772);
  EXPECT_EQ(std::count(wide.begin(), wide.end(), 2), 32772);
  // Widening to the same width goes the same way.
  Bytes same(65540, 0);
  EXPECT_EQ(StretchX(bits.data(), same.data(), 8, 65540, 1, 65540), 0);
  Bytes expected(65540);
  for (size_t i = 0; i < expected.size(); ++i) expected[i] = bits[i / 16385];
  EXPECT_EQ(same, expected);
}

TEST(Scale, PositionsDoNotWrap) {
  // Past 16 bits in either direction: 70000 columns or rows.
  Bytes bits(70000);
  for (size_t i = 0; i < bits.size(); ++i) bits[i] = static_cast<uint8_t>(i / 700);
  const Bytes narrow = scale(bits, 8, 70000, 1, 100, 1);
  for (size_t k = 0; k < 100; ++k) EXPECT_EQ(narrow[k], k) << k;
  const Bytes wide = scale({1, 2, 0, 0}, 8, 2, 1, 140000, 1);
  EXPECT_EQ(std::count(wide.begin(), wide.end(), 1), 70000);
  EXPECT_EQ(std::count(wide.begin(), wide.end(), 2), 70000);
  Bytes tall(280000);
  for (size_t y = 0; y < 70000; ++y) tall[4 * y] = static_cast<uint8_t>(y / 700);
  const Bytes low = scale(tall, 8, 1, 70000, 1, 100);
  for (size_t k = 0; k < 100; ++k) EXPECT_EQ(low[4 * k], k) << k;
}

TEST(Scale, RowWorkersKeepWhatIsBesideTheirPixels) {
  const Bytes source{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
  Bytes row(4, 0x00);
  ShrinkX(source.data(), row.data(), 1, 64, 1, 11);
  EXPECT_EQ(row, (Bytes{0xFF, 0xE0, 0, 0}));
  row.assign(4, 0x00);
  ShrinkX(source.data(), row.data(), 4, 5, 1, 5);
  EXPECT_EQ(row, (Bytes{0xFF, 0xFF, 0xF0, 0}));
  row.assign(8, 0x11);
  StretchX(source.data(), row.data(), 24, 1, 1, 2);
  EXPECT_EQ(row, (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x11, 0x11}));
  row.assign(4, 0x11);
  StretchX(source.data(), row.data(), 1, 1, 1, 3);
  EXPECT_EQ(row, (Bytes{0xF1, 0x11, 0x11, 0x11}));
}

TEST(Scale, RowWorkersLeaveOutColumnsWithinAByte) {
  // As above, 11 columns reach only 14 of 15: the first bit keeps its value.
  const Bytes source{0, 0, 0, 0};
  Bytes row(4, 0xFF);
  StretchX(source.data(), row.data(), 1, 11, 1, 15);
  EXPECT_EQ(row, (Bytes{0x80, 0x01, 0xFF, 0xFF}));
}

TEST(Scale, VerticalWorkersRepeatWholeRowsWithTheirPadding) {
  const Bytes source{1, 0xEE, 0xEE, 0xEE};
  Bytes out{0xA0, 0xA1, 0xA2, 0xA3, 0xB0, 0xB1, 0xB2, 0xB3};
  EXPECT_EQ(Stretch(source.data(), out.data(), 8, 1, 1, 1, 2), 0);
  EXPECT_EQ(out, (Bytes{1, 0xB1, 0xB2, 0xB3, 1, 0xB1, 0xB2, 0xB3}));
  out = {0xA0, 0xA1, 0xA2, 0xA3};
  EXPECT_EQ(Shrink(source.data(), out.data(), 8, 1, 1, 1, 1), 0);
  EXPECT_EQ(out, (Bytes{1, 0xA1, 0xA2, 0xA3}));
}

TEST(Scale, RunsOfColumnsMeet) {
  // Longer than the run that is planned at a time, at a depth where columns share bytes.
  Bytes bits(1252);
  for (size_t i = 0; i < bits.size(); ++i) bits[i] = static_cast<uint8_t>(i * 37);
  const Bytes wide = scale(bits, 1, 10001, 1, 20002, 1);
  const Bytes narrow = scale(wide, 1, 20002, 1, 10001, 1);
  bits[1250] &= 0x80;
  bits[1251] = 0;
  EXPECT_EQ(narrow, bits);
}

TEST(Scale, WorkersTakeNullAddresses) {
  uint8_t byte = 0;
  EXPECT_EQ(Shrink(nullptr, &byte, 8, 1, 1, 1, 1), 0);
  EXPECT_EQ(Stretch(&byte, nullptr, 8, 1, 1, 1, 1), 0);
  EXPECT_EQ(ShrinkX(nullptr, &byte, 8, 1, 1, 1), 0);
  EXPECT_EQ(StretchX(&byte, nullptr, 8, 1, 1, 1), 0);
  EXPECT_EQ(Shrink(&byte, nullptr, 8, 1, 1, 1, 1), 0);
  EXPECT_EQ(Stretch(nullptr, &byte, 8, 1, 1, 1, 1), 0);
  EXPECT_EQ(ShrinkX(&byte, nullptr, 8, 1, 1, 1), 0);
  EXPECT_EQ(StretchX(nullptr, &byte, 8, 1, 1, 1), 0);
  EXPECT_EQ(byte, 0);
  EXPECT_EQ(ShrinkX(&byte, &byte, 8, 0, 1, 0), 0);
  EXPECT_EQ(StretchX(&byte, &byte, 8, 0, 1, 1), 0);
}

// What a call prints on standard error above level three.
template <class Call>
std::string printedBy(const Call &call) {
  _debug_color_res = 4;
  testing::internal::CaptureStderr();
  call();
  _debug_color_res = 0;
  return testing::internal::GetCapturedStderr();
}

std::string printed(int16_t depth, uint32_t sourceWidth, uint32_t sourceHeight, uint32_t width,
                    uint32_t height) {
  const Handle source = blockOf(Bytes(48, 1));
  Handle scaled = 0;
  const std::string text =
      printedBy([&] { scaled = rlShrinkBitmap(source, depth, sourceWidth, sourceHeight, width, height); });
  EXPECT_NE(scaled, 0u);
  GlobalFree(scaled);
  GlobalFree(source);
  return text;
}

TEST(Scale, NamesEveryPixelAboveLevelThree) {
  // Depths that hold no pixels are no exception: the places are printed, and nothing is set.
  for (const int depth : {1, 4, 8, 24, 32, 2, 16, 0, -1, -32768}) {
    SCOPED_TRACE(depth);
    const auto bits = static_cast<int16_t>(depth);
    // Rows start anew; the last row of a shrunk picture is written twice.
    EXPECT_EQ(printed(bits, 4, 3, 2, 2), "(0,0): (1,0): (0,0): (1,0): (0,0): (1,0): ");
    // From the right, and only rows that are not copies of the one below.
    EXPECT_EQ(printed(bits, 1, 1, 3, 2), "(2,0): (1,0): (0,0): ");
    EXPECT_EQ(printed(bits, 2, 2, 2, 3), "(0,0): (1,0): (0,0): (1,0): ");
    // Rounding leaves the leftmost of 15 columns out.
    EXPECT_EQ(printed(bits, 11, 1, 15, 2),
              "(14,0): (13,0): (12,0): (11,0): (10,0): (9,0): (8,0): (7,0): (6,0): (5,0): (4,0): (3,0): "
              "(2,0): (1,0): ");
  }
}

TEST(Scale, WorkersNameEveryPixelAboveLevelThree) {
  const Bytes from(48, 1);
  for (const int depth : {8, 16, 0, -3}) {
    SCOPED_TRACE(depth);
    const auto bits = static_cast<int16_t>(depth);
    Bytes to(64, 0);
    EXPECT_EQ(printedBy([&] { Shrink(from.data(), to.data(), bits, 2, 2, 1, 1); }), "(0,0): (0,0): ");
    EXPECT_EQ(printedBy([&] { Stretch(from.data(), to.data(), bits, 1, 1, 2, 3); }), "(1,0): (0,0): ");
    EXPECT_EQ(printedBy([&] { ShrinkX(from.data(), to.data(), bits, 4, 1, 2); }), "(0,0): (1,0): ");
    EXPECT_EQ(printedBy([&] { StretchX(from.data(), to.data(), bits, 2, 1, 3); }), "(2,0): (1,0): (0,0): ");
  }
}

TEST(Scale, RowsOfUnknownPixelsAreStillCopied) {
  // No pixel of 16 bits is set, but a row that repeats is its lower neighbour's copy, byte for byte.
  const Bytes from(4, 1);
  Bytes to{9, 9, 9, 9, 5, 6, 7, 8};
  Stretch(from.data(), to.data(), 16, 2, 1, 2, 2);
  EXPECT_EQ(to, (Bytes{5, 6, 7, 8, 5, 6, 7, 8}));
}

TEST(Scale, LeavesADestinationThatIsTooShort) {
  const Bytes from{1, 2, 3, 4};
  Bytes to(4, 9);
  color::shrink(from, std::span(to).first(3), 8, {4, 1}, {4, 1});
  EXPECT_EQ(to, Bytes(4, 9));
}

TEST(Scale, MapsNoColumnsOfNoWidth) {
  std::vector<uint32_t> columns(3, 999);
  EXPECT_EQ(color::mapColumns(color::Columns::kNarrow, 0, 3, 0, columns), 3u);
  EXPECT_EQ(color::mapColumns(color::Columns::kNarrow, 3, 0, 0, columns), 3u);
  EXPECT_EQ(columns, std::vector<uint32_t>(3, 999));
}

TEST(Scale, MapsColumnsInAnyRun) {
  // Every run of columns on its own gives the columns of the whole row.
  for (const auto &[from, to] :
       {std::pair<uint32_t, uint32_t>{11, 15}, {7, 61}, {61, 7}, {1, 70}, {70, 1}, {5, 5}}) {
    const color::Columns how = color::columnsFor(from, to);
    std::vector<uint32_t> whole(to, 999);
    const size_t left = color::mapColumns(how, from, to, 0, whole);
    for (uint32_t first = 0; first < to; ++first) {
      std::vector<uint32_t> run(to - first, 999);
      const size_t out = color::mapColumns(how, from, to, first, run);
      EXPECT_EQ(out, left > first ? left - first : 0);
      EXPECT_TRUE(std::equal(run.begin() + static_cast<ptrdiff_t>(out), run.end(),
                             whole.begin() + static_cast<ptrdiff_t>(first + out)));
    }
  }
}

}  // namespace
