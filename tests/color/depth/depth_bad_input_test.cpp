// SPDX-License-Identifier: MIT
// Requests that no host should send: nothing outside a block is touched, and the answer is defined. All
// blocks end where a page does that nobody can touch.
#include <gtest/gtest.h>

#include "color/pictures.h"
#include "support/page_end.h"

namespace {

using pictures::kDepths;
using plain::Bytes;

TEST(DepthBadInput, NullHandlesAndPointersAnswer0) {
  Handle table = 0;
  uint16_t count = 7;
  const support::PageEnd bits(Bytes(64, 3));
  EXPECT_EQ(rlConvertBitmapDepth(0, 4, 4, 24, 8, 0, 0, 0), 0u);
  EXPECT_EQ(rlChangeColorResolution(0, 4, 4, 24, 8, &table), 0u);
  EXPECT_EQ(rlChangeColorResolution(bits.handle(), 4, 4, 24, 8, nullptr), 0u);
  EXPECT_EQ(rlDitherBitmap(0, 4, 4, 24, 4, 0, &table), 0u);
  EXPECT_EQ(rlDitherBitmap(bits.handle(), 4, 4, 24, 4, 0, nullptr), 0u);
  EXPECT_EQ(rlDitherGivenCT(0, 4, 4, 24, 4, 0, 0, 0), 0u);
  rlDitherGetCT(0, 4, 4, 24, 4, 0, &table, &count);
  EXPECT_EQ(table, 0u);
  EXPECT_EQ(count, 0);
  rlDitherGetCT(bits.handle(), 4, 4, 24, 4, 0, nullptr, &count);
  rlDitherGetCT(bits.handle(), 4, 4, 24, 4, 0, &table, nullptr);
  EXPECT_EQ(table, 0u);
}

TEST(DepthBadInput, AnEmptyPictureIsAnEmptyBlock) {
  const support::PageEnd bits(Bytes(64, 3));
  struct Size {
    uint32_t width;
    uint32_t height;
  };
  for (const Size size : {Size{0, 5}, Size{5, 0}, Size{0, 0}, Size{0, 0xFFFFFFFF}}) {
    for (int16_t from : kDepths) {
      for (int16_t to : kDepths) {
        const runtime::Block out(
            rlConvertBitmapDepth(bits.handle(), size.width, size.height, from, to, 0, 0, 0));
        EXPECT_TRUE(out) << from << " to " << to;
        EXPECT_TRUE(out.bytes().empty());
      }
      if (size.height > 5) continue;
      for (int16_t to : {int16_t{1}, int16_t{4}, int16_t{8}}) {
        Handle table = 0;
        const runtime::Block out(
            rlDitherBitmap(bits.handle(), size.width, size.height, from, to, 0, &table));
        const runtime::Block owned(table);
        EXPECT_TRUE(out) << from << " to " << to;
        EXPECT_TRUE(out.bytes().empty());
      }
    }
  }
}

TEST(DepthBadInput, SizesPast32BitsAnswer0) {
  const support::PageEnd bits(Bytes(64, 3));
  EXPECT_EQ(rlConvertBitmapDepth(bits.handle(), 65535, 65535, 8, 24, 0, 0, 0), 0u);
  EXPECT_EQ(rlConvertBitmapDepth(bits.handle(), 0xFFFFFFFF, 0xFFFFFFFF, 1, 1, 0, 0, 0), 0u);
  // The result would fit, the source cannot.
  EXPECT_EQ(rlConvertBitmapDepth(bits.handle(), 65535, 65535, 24, 1, 0, 0, 0), 0u);
  EXPECT_EQ(rlConvertBitmapDepth(bits.handle(), 0xFFFFFFFF, 1, 24, 1, 0, 0, 0), 0u);
  Handle table = 0;
  uint16_t count = 7;
  EXPECT_EQ(rlDitherBitmap(bits.handle(), 65535, 65535, 1, 4, 0, &table), 0u);
  EXPECT_EQ(rlDitherGivenCT(bits.handle(), 65535, 65535, 1, 4, 0, 0, 0), 0u);
  rlDitherGetCT(bits.handle(), 65535, 65535, 1, 4, 0, &table, &count);
  EXPECT_EQ(table, 0u);
  EXPECT_EQ(count, 0);
}

TEST(DepthBadInput, DepthsThatCannotBeWrittenGiveZeros) {
  const support::PageEnd bits(Bytes(64, 3));
  const runtime::Block two(rlConvertBitmapDepth(bits.handle(), 5, 2, 8, 2, 0, 0, 0));
  EXPECT_EQ(pictures::bytesOf(two.handle()), Bytes(8, 0));
  const runtime::Block sixteen(rlConvertBitmapDepth(bits.handle(), 3, 2, 24, 16, 0, 0, 0));
  EXPECT_EQ(pictures::bytesOf(sixteen.handle()), Bytes(16, 0));
  for (int16_t depth : {int16_t{0}, int16_t{-1}, int16_t{-32768}}) {
    const runtime::Block none(rlConvertBitmapDepth(bits.handle(), 5, 2, 8, depth, 0, 0, 0));
    EXPECT_TRUE(none.bytes().empty()) << depth;
  }
}

TEST(DepthBadInput, DepthsThatCannotBeReadReadAs0) {
  const support::PageEnd bits(Bytes(64, 0xFF));
  const support::PageEnd table(Bytes{9, 9, 9, 0, 0, 0});
  for (int16_t depth : {int16_t{-3}, int16_t{0}, int16_t{16}, int16_t{33}, int16_t{32767}}) {
    const runtime::Block wide(rlConvertBitmapDepth(bits.handle(), 2, 1, depth, 24, table.handle(), 0, 0));
    EXPECT_EQ(pictures::bytesOf(wide.handle()), Bytes(8, 0)) << depth;
    const runtime::Block index(rlConvertBitmapDepth(bits.handle(), 2, 1, depth, 8, 0, table.handle(), 2));
    EXPECT_EQ(pictures::bytesOf(index.handle()), (Bytes{1, 1, 0, 0})) << depth;
  }
}

TEST(DepthBadInput, DitheringRefusesOtherDepths) {
  const support::PageEnd bits(Bytes(64, 3));
  const support::PageEnd own(Bytes(48, 3));
  for (int16_t depth : {int16_t{-1}, int16_t{0}, int16_t{2}, int16_t{3}, int16_t{16}, int16_t{24}}) {
    Handle table = own.handle();
    uint16_t count = 7;
    EXPECT_EQ(rlDitherBitmap(bits.handle(), 2, 2, 24, depth, 0, &table), 0u) << depth;
    EXPECT_EQ(rlDitherGivenCT(bits.handle(), 2, 2, 24, depth, 0, own.handle(), 16), 0u) << depth;
    rlDitherGetCT(bits.handle(), 2, 2, 24, depth, 0, &table, &count);
    EXPECT_EQ(table, own.handle()) << depth;
    EXPECT_EQ(count, 0) << depth;
  }
}

TEST(DepthBadInput, WhatABlockLacksReadsAsZeros) {
  // 3 x 2 pixels need 24 bytes; the block ends inside the second row's first pixel.
  const Bytes bits{1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 10};
  const support::PageEnd from(bits);
  const runtime::Block out(rlConvertBitmapDepth(from.handle(), 3, 2, 24, 24, 0, 0, 0));
  EXPECT_EQ(pictures::bytesOf(out.handle()),
            (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(DepthBadInput, TablesShorterThanTheirDepthReadAsBlack) {
  const support::PageEnd bits(Bytes{0, 1, 2, 255});
  const support::PageEnd table(Bytes{9, 8, 7, 6});
  const runtime::Block out(rlConvertBitmapDepth(bits.handle(), 4, 1, 8, 24, table.handle(), 0, 0));
  EXPECT_EQ(pictures::bytesOf(out.handle()), (Bytes{9, 8, 7, 6, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(DepthBadInput, CountsAreCutAtTheTable) {
  const support::PageEnd bits(Bytes{255, 0, 0, 0});
  const support::PageEnd table(Bytes{0, 0, 0, 255, 0, 0});
  for (uint16_t count : {uint16_t{2}, uint16_t{3}, uint16_t{32767}}) {
    const runtime::Block out(rlConvertBitmapDepth(bits.handle(), 1, 1, 24, 8, 0, table.handle(), count));
    EXPECT_EQ(pictures::bytesOf(out.handle()), (Bytes{1, 0, 0, 0})) << count;
  }
  // As a signed 16-bit number 32768 is below 0: nothing is searched.
  const runtime::Block none(rlConvertBitmapDepth(bits.handle(), 1, 1, 24, 8, 0, table.handle(), 32768));
  EXPECT_EQ(pictures::bytesOf(none.handle()), (Bytes{0, 0, 0, 0}));
  const runtime::Block dithered(rlDitherGivenCT(bits.handle(), 1, 1, 24, 4, 0, table.handle(), 65535));
  EXPECT_EQ(pictures::bytesOf(dithered.handle()), (Bytes{0, 0, 0, 0}));
}

TEST(DepthBadInput, TablesOf32768EntriesAndMoreGiveZeros) {
  support::Random random(61);
  const support::PageEnd bits(random.bytes(size_t{plain::lineBytes(40, 24)} * 40));
  const support::PageEnd table(random.bytes(3 * 65535));
  for (uint16_t count : {uint16_t{32768}, uint16_t{40000}, uint16_t{65535}}) {
    for (int16_t depth : {int16_t{1}, int16_t{4}, int16_t{8}}) {
      const runtime::Block out(rlDitherGivenCT(bits.handle(), 40, 40, 24, depth, 0, table.handle(), count));
      EXPECT_EQ(pictures::bytesOf(out.handle()), Bytes(rlCalcNewSize(40, 40, depth), 0)) << count;
    }
  }
  // One fewer, and all of them are searched.
  const runtime::Block out(rlDitherGivenCT(bits.handle(), 8, 8, 24, 8, 0, table.handle(), 32767));
  EXPECT_NE(pictures::bytesOf(out.handle()), Bytes(64, 0));
}

TEST(DepthBadInput, LongLinesAndColumnsAreServed) {
  for (uint32_t length : {32767u, 32768u, 65535u}) {
    const support::PageEnd bits(Bytes(100, 0x5A));
    const runtime::Block line(rlConvertBitmapDepth(bits.handle(), length, 1, 1, 8, 0, 0, 0));
    EXPECT_EQ(line.bytes().size(), (size_t{length} + 3) / 4 * 4);
    const runtime::Block column(rlConvertBitmapDepth(bits.handle(), 1, length, 24, 1, 0, 0, 0));
    EXPECT_EQ(column.bytes().size(), size_t{length} * 4);
    Handle table = 0;
    const runtime::Block dithered(rlDitherBitmap(bits.handle(), 1, length, 24, 4, 0, &table));
    const runtime::Block owned(table);
    EXPECT_EQ(dithered.bytes().size(), size_t{length} * 4);
  }
}

}  // namespace
