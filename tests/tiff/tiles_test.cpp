// SPDX-License-Identifier: MIT
// Cutting tiles out of packed rows, with the edges repeated.
#include <gtest/gtest.h>

#include <vector>

#include "raxel/tiff.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes tile(const Bytes &chunk, uint32_t tileRowBytes, uint32_t tileRows, uint32_t chunkRowBytes,
           uint32_t chunkRows, uint32_t column) {
  Bytes out(tileRowBytes * tileRows, 0xA5);
  GetTileFromStrip(out.data(), chunk.data(), tileRowBytes, chunkRowBytes, tileRows, chunkRows, column);
  return out;
}

TEST(Tiles, WholeTileIsCopied) {
  const Bytes chunk = {1, 2, 3, 4,  //
                       5, 6, 7, 8};
  EXPECT_EQ(tile(chunk, 2, 2, 4, 2, 0), (Bytes{1, 2, 5, 6}));
  EXPECT_EQ(tile(chunk, 2, 2, 4, 2, 1), (Bytes{3, 4, 7, 8}));
}

TEST(Tiles, LastByteOfARowIsRepeated) {
  const Bytes chunk = {1, 2, 3, 4, 5,  //
                       6, 7, 8, 9, 10};
  EXPECT_EQ(tile(chunk, 4, 2, 5, 2, 1), (Bytes{5, 5, 5, 5, 10, 10, 10, 10}));
  EXPECT_EQ(tile(chunk, 3, 2, 5, 2, 1), (Bytes{4, 5, 5, 9, 10, 10}));
}

TEST(Tiles, LastRowIsRepeated) {
  EXPECT_EQ(tile({1, 2, 3, 4}, 2, 4, 2, 2, 0), (Bytes{1, 2, 3, 4, 3, 4, 3, 4}));
  EXPECT_EQ(tile({1, 2}, 3, 3, 2, 1, 0), (Bytes{1, 2, 2, 1, 2, 2, 1, 2, 2}));
}

// 600 bilevel pixels are 75 bytes: the second tile has 11 of them, and repeats byte 10.
TEST(Tiles, RightEdgeOfSixHundredPixels) {
  Bytes chunk(75);
  for (size_t i = 0; i < chunk.size(); ++i) chunk[i] = static_cast<uint8_t>(i);
  Bytes expected;
  for (int row = 0; row < 128; ++row) {
    for (uint8_t i = 64; i < 75; ++i) expected.push_back(i);
    expected.insert(expected.end(), 53, 74);
  }
  EXPECT_EQ(tile(chunk, 64, 128, 75, 1, 1), expected);
}

TEST(Tiles, NothingToCopyGivesZeros) {
  EXPECT_EQ(tile({1, 2, 3, 4}, 2, 2, 4, 1, 2), Bytes(4));
  EXPECT_EQ(tile({1, 2, 3, 4}, 2, 2, 4, 1, 0x80000000), Bytes(4));
  EXPECT_EQ(tile({1, 2, 3, 4}, 2, 2, 4, 0, 0), Bytes(4));
  EXPECT_EQ(tile({}, 2, 2, 0, 1, 0), Bytes(4));
}

TEST(Tiles, RowsOfNoBytesAreNotTouched) {
  const Bytes chunk = {1, 2, 3, 4};
  Bytes out(4, 0xA5);
  GetTileFromStrip(out.data(), chunk.data(), 0, 2, 2, 2, 0);
  EXPECT_EQ(out, Bytes(4, 0xA5));
}

TEST(Tiles, RowsPastTheTileAreLeftOut) {
  EXPECT_EQ(tile({1, 2, 3, 4}, 1, 2, 1, 4, 0), (Bytes{1, 2}));
}

TEST(Tiles, MissingBlocksDoNoHarm) {
  GetTileFromStrip(nullptr, nullptr, 64, 64, 128, 1, 0);
  Bytes out(4, 0xA5);
  GetTileFromStrip(out.data(), nullptr, 2, 2, 2, 2, 0);
  EXPECT_EQ(out, Bytes(4));
}

}  // namespace
