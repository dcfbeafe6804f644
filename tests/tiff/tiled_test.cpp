// SPDX-License-Identifier: MIT
// T.6 in tiles of 512 by 128 pixels: whole files and the edges.
#include <gtest/gtest.h>

#include "runtime/unaligned.h"
#include "support/front.h"
#include "support/tiff_reader.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::InUse;
using support::kBlackWhite;
using support::Pixels;

struct Tiled {
  int32_t code;
  Bytes file;
  uint32_t nextTile;
};

Tiled writeTiled(uint32_t width, uint32_t height, const Bytes &pixels) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6, RAXEL_STORED_LAYOUT_TILES);
  support::HostOutput out;
  const Pixels block(pixels);
  Handle descriptor = 0;
  BeginCellBitmap(out.file, width, height, 1, kBlackWhite.data(), &descriptor);
  const int32_t code = WriteCellBits(out.file, block.handle(), width, height, 1, 1, descriptor);
  const auto next = runtime::load<uint32_t>(static_cast<uint8_t *>(GlobalLock(descriptor)) + 257);
  EndCellBitmap(out.file, descriptor);
  return {code, out.bytes(), next};
}

// 600 by 200 white pixels: two columns and two rows of tiles, each row of a tile one bit (V0).
TEST(TiledT6, WhiteFileByteForByte) {
  const Tiled tiled = writeTiled(600, 200, Bytes(76 * 200, 0xFF));
  EXPECT_EQ(tiled.code, 0);
  EXPECT_EQ(tiled.nextTile, 5u);
  const Bytes front = support::frontOf({.width = 600,
                                        .length = 200,
                                        .compression = RAXEL_TIFF_T6,
                                        .offsets = {0xE6, 0xF6, 0x106, 0x116},
                                        .counts = {16, 16, 16, 16}});
  EXPECT_EQ(tiled.file, support::joined(front, Bytes(4 * 16, 0xFF))) << "four tiles of 128 times V0";
}

// The last column of a tile's row at the right edge goes on to the tile's edge, and the last row of
// the picture to the tile's end: a picture that is black throughout makes tiles that are.
TEST(TiledT6, EdgesAreRepeatedNotFilledWithWhite) {
  const Tiled tiled = writeTiled(600, 3, Bytes(76 * 3));
  const support::TiffFile file = support::readTiff(tiled.file);
  // The first row of a tile, black: horizontal 001, white 0 00110101, black 512 0000001101100 and 0
  // 0000110111; 34 bits. The other 127 rows: two V0 each, at pixel 0 and at 512.
  const Bytes expected = [] {
    std::string bits =
        "001"
        "00110101"
        "0000001101100"
        "0000110111";
    for (int row = 1; row < 128; ++row) bits += "11";
    bits.resize((bits.size() + 7) / 8 * 8, '0');
    Bytes out;
    for (size_t i = 0; i < bits.size(); i += 8) {
      out.push_back(static_cast<uint8_t>(std::stoi(bits.substr(i, 8), nullptr, 2)));
    }
    return out;
  }();
  const auto first = file.piece(0);
  EXPECT_EQ(Bytes(first.begin(), first.end()), expected);
  // The second tile follows it, though a single row of tiles gets only its first tile patched.
  EXPECT_EQ(support::slice(tiled.file, 0xD6 + expected.size(), 999), expected);
}

TEST(TiledT6, OneRowOfTilesPatchesTheFirstOnly) {
  const Tiled tiled = writeTiled(1030, 10, Bytes(132 * 10, 0xFF));
  EXPECT_EQ(tiled.code, 0);
  EXPECT_EQ(tiled.nextTile, 4u);
  const support::TiffFile file = support::readTiff(tiled.file);
  EXPECT_EQ(file.find(324)->values, (std::vector<uint32_t>{0xDE, 0, 0}));
  EXPECT_EQ(file.find(325)->values, (std::vector<uint32_t>{16, 0, 0}));
  EXPECT_EQ(tiled.file.size(), 0xDEu + 48);
}

TEST(TiledT6, ASingleTileIsPatchedIntoItsEntries) {
  const Tiled tiled = writeTiled(512, 128, Bytes(64 * 128, 0xFF));
  const support::TiffFile file = support::readTiff(tiled.file);
  EXPECT_EQ(file.value(324), 0xC6u);
  EXPECT_EQ(file.value(325), 16u);
  EXPECT_EQ(tiled.file.size(), 0xC6u + 16);
}

// Rows wider than 2016 pixels make chunks of fewer than 128 rows, each a row of tiles of its own: more
// tiles than the directory counts.
TEST(TiledT6, WideRowsMakeMoreTilesThanTheDirectoryHas) {
  const uint32_t width = 2048;  // 256 bytes: 127 rows a chunk
  const Tiled tiled = writeTiled(width, 256, Bytes(256 * 256, 0xFF));
  EXPECT_EQ(tiled.code, 0);
  EXPECT_EQ(tiled.nextTile, 1 + 3 * 4u);
  const support::TiffFile file = support::readTiff(tiled.file);
  EXPECT_EQ(file.find(324)->count, 8u);
}

TEST(TiledT6, ChunksAre128RowsUpTo2016Pixels) {
  EXPECT_EQ(writeTiled(2017, 256, Bytes(256 * 256, 0xFF)).nextTile,
            1 + 3 * 4u);  // 253 bytes, padded to 256
  EXPECT_EQ(writeTiled(2016, 256, Bytes(252 * 256, 0xFF)).nextTile, 1 + 2 * 4u);
  EXPECT_EQ(writeTiled(8, 300, Bytes(4 * 300, 0xFF)).nextTile, 1 + 3u);
}

// Columns that the rows do not reach are tiles of zeros.
TEST(TiledT6, ColumnsPastTheRowsAreBlack) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6, RAXEL_STORED_LAYOUT_TILES);
  support::HostOutput out;
  const Pixels block(Bytes(4 * 8, 0xFF));
  Handle descriptor = 0;
  BeginCellBitmap(out.file, 600, 200, 1, kBlackWhite.data(), &descriptor);
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 8, 8, 1, 1, descriptor), 0);
  EndCellBitmap(out.file, descriptor);
  const support::TiffFile file = support::readTiff(out.bytes());
  EXPECT_EQ(file.pieces[0].byteCount, 16u);
  EXPECT_EQ(file.pieces[1].byteCount, 36u);  // 34 bits and 127 times two
}

}  // namespace
