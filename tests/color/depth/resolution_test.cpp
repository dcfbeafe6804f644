// SPDX-License-Identifier: MIT
// Which road rlChangeColorResolution takes, and what becomes of the caller's table handle.
#include <gtest/gtest.h>

#include "color/pictures.h"

namespace {

using plain::Bytes;

struct Changed {
  Bytes bits;
  Bytes table;
  bool hasTable;
};

Changed change(const Bytes &bits, uint32_t width, uint32_t height, int sourceDepth, int depth,
               const plain::Table &source) {
  const runtime::Block from = pictures::block(bits);
  const runtime::Block old = pictures::block(source);
  Handle table = old.handle();
  const runtime::Block out(rlChangeColorResolution(from.handle(), width, height,
                                                   static_cast<int16_t>(sourceDepth),
                                                   static_cast<int16_t>(depth), &table));
  const Changed changed{pictures::bytesOf(out.handle()), pictures::bytesOf(table), table != 0};
  EXPECT_TRUE(table == 0 || table != old.handle()) << "the old table stays the caller's";
  if (table != 0) GlobalFree(table);
  return changed;
}

TEST(Resolution, FewColorsAt8BitsAreAllInTheTable) {
  // Four pixels, three 15-bit colours (1, 2, 3), (1, 2, 4) and (31, 0, 0): in this order they are
  // raised to (15, 23, 31), (15, 23, 39) and (255, 0, 0).
  const Bytes bits{255, 0, 0, 8, 16, 24, 15, 23, 39, 12, 20, 28};
  const Changed out = change(bits, 4, 1, 24, 8, {});
  ASSERT_TRUE(out.hasTable);
  Bytes table{15, 23, 31, 15, 23, 39, 255, 0, 0};
  table.resize(768);
  EXPECT_EQ(out.table, table) << "the colours that there are, and room for the rest";
  // (12, 20, 28) is nearest to the first.
  EXPECT_EQ(out.bits, (Bytes{2, 0, 1, 0}));
}

TEST(Resolution, From32768RowsOnTheTableIsBlack) {
  // The median cut takes heights as signed 16-bit numbers, and finds no colours to choose from.
  Bytes bits(size_t{4} * 32768);
  for (size_t i = 0; i < bits.size(); i += 4) bits[i] = 200;
  const Changed out = change(bits, 1, 32768, 24, 8, {});
  EXPECT_EQ(out.table, Bytes(768, 0));
  EXPECT_EQ(out.bits, Bytes(size_t{4} * 32768, 0));
  // One row fewer, and there is one, (25, 0, 0) of 15 bits.
  const Changed fewer = change(bits, 1, 32767, 24, 8, {});
  EXPECT_EQ(fewer.table[0], 207);
}

TEST(Resolution, DeeperAndEqualDepthsSetTheTableHandleTo0) {
  const plain::Table table = pictures::table({10, 20, 30, 40, 50, 60});
  const Changed out = change({0, 1, 0, 0}, 2, 1, 8, 24, table);
  EXPECT_FALSE(out.hasTable);
  EXPECT_EQ(out.bits, (Bytes{10, 20, 30, 40, 50, 60, 0, 0}));
  EXPECT_FALSE(change({0, 1, 0, 0}, 2, 1, 8, 8, table).hasTable);
}

TEST(Resolution, FourToEightBitsConverts) {
  const Changed out = change({0x10, 0, 0, 0}, 2, 1, 4, 8, pictures::table({9, 0, 0, 0, 0, 9}));
  EXPECT_FALSE(out.hasTable);
  EXPECT_EQ(out.bits, (Bytes{1, 0, 0, 0}));
}

// The result of the dither for the same request.
Changed dithered(const Bytes &bits, uint32_t width, uint32_t height, int sourceDepth, int depth,
                 const plain::Table &source) {
  const runtime::Block from = pictures::block(bits);
  const runtime::Block sourceTable = pictures::block(source);
  Handle table = 0;
  const runtime::Block out(rlDitherBitmap(from.handle(), width, height, static_cast<int16_t>(sourceDepth),
                                          static_cast<int16_t>(depth), sourceTable.handle(), &table));
  const runtime::Block owned(table);
  return {pictures::bytesOf(out.handle()), pictures::bytesOf(table), table != 0};
}

TEST(Resolution, FewerThan8BitsAreAlwaysDithered) {
  support::Random random(5);
  const plain::Table table = pictures::table(random, 256);
  struct Pair {
    int from;
    int to;
  };
  for (const Pair pair : {Pair{24, 4}, Pair{24, 1}, Pair{8, 4}, Pair{8, 1}, Pair{4, 1}}) {
    const Bytes bits = random.bytes(size_t{plain::lineBytes(13, pair.from)} * 6);
    const Changed expected = dithered(bits, 13, 6, pair.from, pair.to, table);
    const Changed out = change(bits, 13, 6, pair.from, pair.to, table);
    EXPECT_EQ(out.bits, expected.bits) << pair.from << " to " << pair.to;
    EXPECT_EQ(out.table, expected.table) << pair.from << " to " << pair.to;
    EXPECT_EQ(out.table.size(), pair.to == 1 ? 24u : 48u);
  }
}

TEST(Resolution, ThirtyTwoBitsCanOnlyStay) {
  const runtime::Block bits = pictures::block(Bytes{1, 2, 3, 4});
  const runtime::Block old = pictures::block(Bytes{5, 6, 7});
  for (int16_t depth : {int16_t{1}, int16_t{4}, int16_t{8}, int16_t{24}}) {
    Handle table = old.handle();
    EXPECT_EQ(rlChangeColorResolution(bits.handle(), 1, 1, 32, depth, &table), 0u) << depth;
    EXPECT_EQ(table, old.handle()) << depth;
  }
  Handle table = old.handle();
  const runtime::Block same(rlChangeColorResolution(bits.handle(), 1, 1, 32, 32, &table));
  EXPECT_EQ(pictures::bytesOf(same.handle()), (Bytes{1, 2, 3, 4}));
  EXPECT_EQ(table, 0u);
}

TEST(Resolution, RefusedDepthsLeaveTheTableHandle) {
  const runtime::Block bits = pictures::block(Bytes(64, 1));
  const runtime::Block old = pictures::block(Bytes{5, 6, 7});
  for (int16_t depth : {int16_t{-8}, int16_t{0}, int16_t{2}, int16_t{3}, int16_t{7}}) {
    Handle table = old.handle();
    EXPECT_EQ(rlChangeColorResolution(bits.handle(), 2, 2, 24, depth, &table), 0u) << depth;
    EXPECT_EQ(table, old.handle()) << depth;
  }
}

TEST(Resolution, TooLargeAPictureLeavesTheTableHandle) {
  const runtime::Block bits = pictures::block(Bytes(64, 1));
  const runtime::Block old = pictures::block(Bytes{5, 6, 7});
  for (int16_t depth : {int16_t{1}, int16_t{8}, int16_t{24}, int16_t{32}}) {
    Handle table = old.handle();
    EXPECT_EQ(rlChangeColorResolution(bits.handle(), 65535, 65535, 24, depth, &table), 0u) << depth;
    EXPECT_EQ(table, old.handle()) << depth;
  }
}

}  // namespace
