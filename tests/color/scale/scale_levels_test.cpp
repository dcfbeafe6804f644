// SPDX-License-Identifier: MIT
// Scaling at every level of vector instructions, beside the plain form: enough rows that moves are
// planned, and widths and ratios on both sides of all that a plan depends on.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "color/levels.h"
#include "color/pictures.h"
#include "color/reference/pixels.h"
#include "color/reference/scale.h"
#include "color/scale/column_run.h"
#include "raxel/color.h"
#include "runtime/blocks.h"
#include "support/cases.h"
#include "support/page_end.h"
#include "support/random.h"

namespace {

using pictures::kDepths;
using reference::Bytes;

struct Widths {
  uint32_t from;
  uint32_t to;
};

// From one width to another, by a factor from a ninth to nine.
Widths anyWidths(support::Random &random) {
  constexpr uint32_t kPercent[] = {11,  12,  13,  14,  15,  17,  20,  25,  33,  40,  48,  49,
                                   50,  51,  53,  60,  75,  90,  98,  99,  101, 102, 105, 111,
                                   115, 120, 133, 150, 190, 200, 201, 290, 400, 900};
  const auto last = static_cast<int64_t>(std::size(kPercent)) - 1;
  const auto longest = random.chance(80) ? 700 : 20000;
  const auto from = static_cast<uint32_t>(random.between(1, longest));
  const uint32_t percent = random.chance(10) ? 100 : kPercent[random.between(0, last)];
  const uint32_t to = from * percent / 100 + static_cast<uint32_t>(random.between(0, 2));
  return {from, std::clamp(to, 1u, 20000u)};
}

TEST(ScaleLevels, GiveTheSamePictures) {
  support::Random random(121);
  for (size_t n = 0; n < support::cases(1500); ++n) {
    const int16_t depth = kDepths[n % 5];
    const Widths w = anyWidths(random);
    const auto height = static_cast<uint32_t>(random.between(1, 5));
    const auto newHeight = static_cast<uint32_t>(random.between(1, 6));
    // Now and then the block ends early: in the middle of its last row, or long before.
    const size_t size = size_t{reference::lineBytes(w.from, depth)} * height;
    Bytes bits = random.bytes(size);
    const size_t held = random.chance(80) ? size : size - static_cast<size_t>(random.next() % (size + 1));
    std::fill(bits.begin() + static_cast<ptrdiff_t>(held), bits.end(), uint8_t{0});
    const Bytes expected = reference::scale(bits, depth, w.from, height, w.to, newHeight);
    bits.resize(held);
    const support::PageEnd source(bits);
    for (const color::Vectors level : levels::all()) {
      const levels::AtMost limit(level);
      const runtime::Block scaled(rlShrinkBitmap(source.handle(), depth, w.from, height, w.to, newHeight));
      const auto bytes = scaled.bytes();
      ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), expected.begin(), expected.end()))
          << "case " << n << " at level " << levels::number(level) << ": " << depth << " bits, " << w.from
          << "x" << height << " to " << w.to << "x" << newHeight;
    }
  }
}

TEST(ScaleLevels, KeepWhatLiesBesideTheirPixels) {
  // Both pictures end with their memory. Of as many rows, each comes from the row of the same number.
  support::Random random(122);
  for (size_t n = 0; n < support::cases(1000); ++n) {
    const int16_t depth = kDepths[n % 5];
    const Widths w = anyWidths(random);
    constexpr uint32_t kRows = 4;
    const uint32_t sourceLine = reference::lineBytes(w.from, depth);
    const uint32_t line = reference::lineBytes(w.to, depth);
    const support::PageEnd source(random.bytes(size_t{sourceLine} * kRows));
    const Bytes before = random.bytes(size_t{line} * kRows);
    Bytes expected = before;
    for (uint32_t y = 0; y < kRows; ++y) {
      const auto row = w.to > w.from ? reference::stretchRow : reference::shrinkRow;
      row(source.data() + size_t{sourceLine} * y, expected.data() + size_t{line} * y, depth, w.from, w.to);
    }
    for (const color::Vectors level : levels::all()) {
      const levels::AtMost limit(level);
      const support::PageEnd scaled(before);
      Shrink(source.data(), scaled.data(), depth, w.from, kRows, w.to, kRows);
      ASSERT_TRUE(scaled.bytes() == expected) << "case " << n << " at level " << levels::number(level)
                                              << ": " << depth << " bits, " << w.from << " to " << w.to;
    }
  }
}

TEST(ScaleLevels, TakeEveryFactorUpToTen) {
  // Through all the factors at which groups of pixels get shorter, and past those at which plans end:
  // the last column reaches further than the others, so that the last group may be the one to fail.
  support::Random random(123);
  constexpr uint32_t kRows = 3;
  constexpr uint32_t kScaledWidth = 144;
  const auto step = static_cast<uint32_t>(1400 / support::cases(1400));
  for (const int16_t depth : kDepths) {
    for (uint32_t from = 1; from < 10 * kScaledWidth; from += step) {
      const Bytes bits = random.bytes(size_t{reference::lineBytes(from, depth)} * kRows);
      const Bytes expected = reference::scale(bits, depth, from, kRows, kScaledWidth, kRows);
      Bytes scaled(expected.size());
      for (const color::Vectors level : levels::all()) {
        const levels::AtMost limit(level);
        std::fill(scaled.begin(), scaled.end(), uint8_t{0});
        Shrink(bits.data(), scaled.data(), depth, from, kRows, kScaledWidth, kRows);
        ASSERT_TRUE(scaled == expected)
            << depth << " bits, from " << from << ", level " << levels::number(level);
      }
    }
  }
}

TEST(ScaleLevels, MeetWhereAPlanIsFull) {
  // As many pixels as make runs end before their longest: groups are short, or bits need many indexes.
  support::Random random(124);
  constexpr uint32_t kRows = 3;
  constexpr Widths kWidths[] = {{65000, 8125}, {48000, 8190}, {16400, 8200}, {2100, 8300}, {700, 25000}};
  for (size_t n = 0; n < support::cases(25); ++n) {
    const int16_t depth = kDepths[n % 5];
    const Widths w = kWidths[n / 5 % std::size(kWidths)];
    const Bytes bits = random.bytes(size_t{reference::lineBytes(w.from, depth)} * kRows);
    const Bytes expected = reference::scale(bits, depth, w.from, kRows, w.to, kRows);
    const support::PageEnd source(bits);
    for (const color::Vectors level : levels::all()) {
      const levels::AtMost limit(level);
      const runtime::Block scaled(rlShrinkBitmap(source.handle(), depth, w.from, kRows, w.to, kRows));
      const auto bytes = scaled.bytes();
      ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), expected.begin(), expected.end()))
          << depth << " bits, " << w.from << " to " << w.to << ", level " << levels::number(level);
    }
  }
}

TEST(ScaleLevels, WriteNothingBesideARun) {
  support::Random random(125);
  color::ColumnRun run;
  for (const int16_t depth : kDepths) {
    const Bytes source = random.bytes(reference::lineBytes(20000, depth));
    const Bytes before = random.bytes(reference::lineBytes(20000, depth));
    for (const color::Vectors level : levels::all()) {
      const levels::AtMost limit(level);
      for (const uint32_t width : {19000u, 10000u, 9000u}) {
        color::planRun(run, {color::Columns::kNarrow, depth, 20000, width, 9}, 0);
        ASSERT_LT(run.end, width) << "a run that has others behind it";
        Bytes row = before;
        color::copyRun(run, source, row);
        const size_t end = size_t{run.end} * static_cast<size_t>(depth) / 8;
        EXPECT_TRUE(std::equal(row.begin() + static_cast<ptrdiff_t>(end), row.end(),
                               before.begin() + static_cast<ptrdiff_t>(end)))
            << depth << " bits, level " << levels::number(level);
        EXPECT_FALSE(std::equal(row.begin(), row.begin() + static_cast<ptrdiff_t>(end), before.begin()));
      }
    }
  }
}

TEST(ScaleLevels, MoveManyPixelsAtOnce) {
  // What plans are for: a slow way would give the same bytes.
  if (color::processorVectors() < color::Vectors::kAvx512) return;
  color::ColumnRun run;
  const auto groups = [&run](int16_t depth, uint32_t from, uint32_t to, size_t left = 0) {
    const color::Columns how = color::columnsFor(from, to);
    color::planRun(run, {how, depth, from, to, 9}, 0);
    EXPECT_EQ(run.move.columns, to - left);
    return run.move.groups;
  };
  // Bits: 512 in a group, or 64 where every second one and more are left out.
  for (const uint32_t to : {512u * 4, 512u * 7, 512u * 10}) EXPECT_EQ(groups(1, 2000, to), to / 512);
  for (const uint32_t from : {2080u, 2500u, 3000u, 3500u}) EXPECT_EQ(groups(1, from, 2048), 4u);
  EXPECT_EQ(groups(1, 3000, 2041), 4u);  // the last byte of a row in part, its pixels nearer than in others
  for (const uint32_t from : {4096u, 8192u, 14000u}) EXPECT_EQ(groups(1, from, 2048), 32u);
  // 128 nibbles from 64 bytes where rows are widened, and from 128 where every second one is left out.
  EXPECT_EQ(groups(4, 1000, 1280), 10u);
  EXPECT_EQ(groups(4, 2560, 1280), 10u);
  EXPECT_EQ(groups(4, 100, 129), 2u);
  // Of every twelfth one 22, as many times as a plan has groups.
  EXPECT_EQ(groups(4, 98280, 8190, 8190 - 256 * 22), 256u);
  // Whole bytes 16 at a time: 16, 5 and 4 pixels. Groups of three bytes need a pixel behind them.
  EXPECT_EQ(groups(8, 1000, 1280), 80u);
  EXPECT_EQ(groups(24, 1000, 1260, 5), 251u);
  EXPECT_EQ(groups(32, 1000, 1280), 320u);
  EXPECT_EQ(groups(8, 2560, 1280), 80u);
  EXPECT_EQ(groups(24, 2520, 1260, 5), 251u);
  EXPECT_EQ(groups(32, 2560, 1280), 320u);
}

TEST(ScaleLevels, StopAtTheLimit) {
  // What a machine has does not depend on the limit; what it uses does.
  const color::Vectors best = color::processorVectors();
  const auto *fastest = &color::kernels();
  {
    const levels::AtMost limit(color::Vectors::kNone);
    EXPECT_EQ(color::processorVectors(), best);
    EXPECT_EQ(&color::kernels() == fastest, best == color::Vectors::kNone);
  }
  EXPECT_EQ(&color::kernels(), fastest);
}

}  // namespace
