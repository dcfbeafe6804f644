// SPDX-License-Identifier: MIT
// Coded pictures in strips: whole files, the end-of-line codes of T.4, bands, and a host's view.
#include <gtest/gtest.h>

#include "runtime/unaligned.h"
#include "support/front.h"
#include "support/hex.h"
#include "support/tiff_reader.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::hex;
using support::InUse;
using support::kBlackWhite;
using support::Pixels;

uint32_t nextStrip(Handle descriptor) {
  return runtime::load<uint32_t>(static_cast<uint8_t *>(GlobalLock(descriptor)) + 257);
}

// 16 by 9 bilevel pixels with black first, bottom row first.
const char kSixteenByNine[] = R"(
  55 55 00 00     ; 8
  45 46 00 00     ; 7
  44 44 00 00     ; 6
  34 35 00 00     ; 5
  33 33 00 00     ; 4
  23 24 00 00     ; 3
  22 22 00 00     ; 2
  12 13 00 00     ; 1
  11 11 00 00     ; the top row, 0
)";

TEST(Strips, PackBitsFileByteForByte) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_PACKBITS);
  support::HostOutput out;
  const Pixels block(hex(kSixteenByNine));
  EXPECT_EQ(support::writePicture(out.file, {16, 9, 1, {}, kBlackWhite}, block.handle()), 0);
  const Bytes front = support::frontOf({.width = 16,
                                        .length = 9,
                                        .compression = RAXEL_TIFF_PACKBITS,
                                        .rowsPerStrip = 2,
                                        .offsets = {0xE2, 0xE7, 0xEC, 0xF1, 0xF6},
                                        .counts = {5, 5, 5, 5, 2}});
  EXPECT_EQ(out.bytes(), support::joined(front, hex(R"(
    FF 11  01 12 13                             ; E2 rows 0 and 1
    FF 22  01 23 24                             ; E7 rows 2 and 3
    FF 33  01 34 35                             ; EC rows 4 and 5
    FF 44  01 45 46                             ; F1 rows 6 and 7
    FF 55                                       ; F6 row 8, a short strip
  )")));
}

// Each patch is a tell, a seek, four writes and a seek back; each piece of up to 127 bytes one write.
TEST(Strips, AHostSeesPatchesAndPieces) {
  InUse use(RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_COMPRESS_PACKBITS);
  support::HostOutput out;
  const Pixels block(Bytes(300 * 5));
  Handle descriptor = 0;
  const Bytes palette(768);
  BeginCellBitmap(out.file, 300, 5, 8, palette.data(), &descriptor);
  out.host.clearLog();
  WriteCellBits(out.file, block.handle(), 300, 1, 8, 1, descriptor);
  EndCellBitmap(out.file, descriptor);
  // 5 strips: the front is 8 + 2 + 14 * 12 + 4 + 1536 + 16 bytes, then two arrays of 20.
  EXPECT_EQ(out.host.log(),
            "seek 0 from 1 = 1774\n"
            "seek 1734 from 0 = 1734\n"
            "write 1 x 4\n"
            "seek 1774 from 0 = 1774\n"
            "write 2 x 3\n"  // 127, 127 and 46 equal bytes
            "seek 0 from 1 = 1780\n"
            "seek 1754 from 0 = 1754\n"
            "write 1 x 4\n"
            "seek 1780 from 0 = 1780\n");
}

TEST(Strips, LzwAndT6AreOneWriteAStripAndFaxRowsOneEach) {
  const struct {
    int32_t mode;
    std::vector<size_t> sizes;
  } rows[] = {
      // All white, 8 pixels: the run 8 is 10011, and T.4 adds an EOL.
      {RAXEL_STORED_COMPRESS_HUFFMAN, {1, 1}},
      {RAXEL_STORED_COMPRESS_T4, {2, 3, 3, 2, 2, 2, 2, 2}},
      {RAXEL_STORED_COMPRESS_T6, {1}},   // two V0
      {RAXEL_STORED_COMPRESS_LZW, {5}},  // Clear, FF, FF, End: 36 bits
  };
  for (const auto &row : rows) {
    InUse use(RAXEL_STORED_MODE_BILEVEL, row.mode);
    support::HostOutput out;
    const Pixels block(Bytes(4 * 8, 0xFF));
    Handle descriptor = 0;
    BeginCellBitmap(out.file, 8, 8, 1, kBlackWhite.data(), &descriptor);
    out.host.clearLog();
    EXPECT_EQ(WriteCellBits(out.file, block.handle(), 8, 8, 1, 1, descriptor), 0);
    EndCellBitmap(out.file, descriptor);
    std::vector<size_t> expected;
    for (int strip = 0; strip < 4; ++strip) {
      expected.insert(expected.end(), 4, 1);
      expected.insert(expected.end(), row.sizes.begin(), row.sizes.end());
      expected.insert(expected.end(), 4, 1);
    }
    EXPECT_EQ(out.host.writeSizes(), expected) << row.mode;
  }
}

// A T.4 strip begins with an EOL and ends with six; its byte count has them all.
TEST(Strips, T4StripsBeginWithAnEolAndEndWithSix) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T4);
  support::HostOutput out;
  const Pixels block(Bytes(4 * 5, 0xFF));
  EXPECT_EQ(support::writePicture(out.file, {8, 5, 1, {}, kBlackWhite}, block.handle()), 0);
  const support::TiffFile file = support::readTiff(out.bytes());
  ASSERT_EQ(file.pieces.size(), 5u);
  for (size_t i = 0; i < 5; ++i) {
    const auto piece = file.piece(i);
    EXPECT_EQ(Bytes(piece.begin(), piece.end()), hex("0001  98 0001  0001 0001 0001 0001 0001")) << i;
  }
}

TEST(Strips, LzwStripsStandAlone) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_LZW);
  support::HostOutput out;
  const Pixels block(
      hex("42 00 00 00  41 00 00 00  42 00 00 00  41 00 00 00  42 00 00 00  41 00 00 00"
          "42 00 00 00  41 00 00 00"));
  EXPECT_EQ(support::writePicture(out.file, {8, 8, 1, {}, kBlackWhite}, block.handle()), 0);
  const support::TiffFile file = support::readTiff(out.bytes());
  ASSERT_EQ(file.pieces.size(), 4u);
  for (size_t i = 0; i < 4; ++i) {
    const auto piece = file.piece(i);
    // Clear 100000000, 'A' 001000001, 'B' 001000010, End 100000001, then fill.
    EXPECT_EQ(Bytes(piece.begin(), piece.end()), hex("80 10 48 50 10")) << i;
  }
}

// LZW and T.6 take the rows packed: 9 pixels are two bytes, whatever the padding holds.
TEST(Strips, WholeStripsArePackedWithoutPadding) {
  InUse use(RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_COMPRESS_LZW);
  support::HostOutput out;
  const Pixels block(hex("43 EE EE EE  42 EE EE EE  41 EE EE EE"));
  const Bytes palette(768);
  Handle descriptor = 0;
  BeginCellBitmap(out.file, 1, 12, 8, palette.data(), &descriptor);
  // Three rows of a picture of twelve: strips of one row each are one byte, which LZW leaves out.
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 1, 3, 8, 1, descriptor), 0);
  EXPECT_EQ(nextStrip(descriptor), 4u);
  EndCellBitmap(out.file, descriptor);
  EXPECT_EQ(support::slice(out.bytes(), out.bytes().size() - 9, 9), hex("80 40 40  80 40 40  80 40 40"));
}

// 24-bit rows are swapped before they are coded, in place, also in the strips of LZW.
TEST(Strips, RgbIsSwappedBeforeItIsCoded) {
  for (const int32_t mode : {RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_STORED_COMPRESS_LZW}) {
    InUse use(RAXEL_STORED_MODE_RGB, mode);
    support::HostOutput out;
    const Pixels block(hex("010203 00  040506 00"));
    EXPECT_EQ(support::writePicture(out.file, {1, 2, 24, {}, {}}, block.handle()), 0);
    EXPECT_EQ(block.bytes(), hex("030201 00  060504 00"));
    if (mode == RAXEL_STORED_COMPRESS_PACKBITS) {
      EXPECT_EQ(support::slice(out.bytes(), out.bytes().size() - 8, 8), hex("02 060504  02 030201"));
    }
  }
}

// Strips are numbered on from band to band. Bands whose quarters are shorter than the picture's make
// more strips than the directory has room for, and the surplus numbers land behind the arrays.
TEST(Strips, BandsCountOnPastTheArrays) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_PACKBITS);
  support::HostOutput out;
  Handle descriptor = 0;
  BeginCellBitmap(out.file, 8, 8, 1, kBlackWhite.data(), &descriptor);  // 4 strips of 2 rows
  const Pixels band(hex("44 00 00 00  33 00 00 00  22 00 00 00  11 00 00 00"));
  EXPECT_EQ(WriteCellBits(out.file, band.handle(), 8, 4, 1, 1, descriptor), 0);
  EXPECT_EQ(nextStrip(descriptor), 5u);
  // The offsets are at BA, the byte counts at CA, the data at DA.
  EXPECT_EQ(support::slice(out.bytes(), 0xBA, 99), hex(R"(
    DA 00 00 00  DC 00 00 00  DE 00 00 00  E0 00 00 00
    02 00 00 00  02 00 00 00  02 00 00 00  02 00 00 00
    00 11  00 22  00 33  00 44
  )"));
  EXPECT_EQ(WriteCellBits(out.file, band.handle(), 8, 4, 1, 1, descriptor), 0);
  EXPECT_EQ(nextStrip(descriptor), 9u);
  // Offset 5 is where byte count 1 was, and byte count 5 where the data begin.
  EXPECT_EQ(support::slice(out.bytes(), 0xBA, 99), hex(R"(
    DA 00 00 00  DC 00 00 00  DE 00 00 00  E0 00 00 00
    E2 00 00 00  E4 00 00 00  E6 00 00 00  E8 00 00 00
    02 00 00 00  02 00 00 00
    02 00 00 00  02 00 00 00
  )"));
  EndCellBitmap(out.file, descriptor);
}

// Tiles are cut for T.6 alone. Any other compression codes its rows under a directory of tiles, and
// nothing is patched.
TEST(Strips, TiledLayoutWithAnotherCompressionPatchesNothing) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_STORED_LAYOUT_TILES);
  support::HostOutput out;
  const Pixels block(hex(kSixteenByNine));
  Handle descriptor = 0;
  BeginCellBitmap(out.file, 16, 9, 1, kBlackWhite.data(), &descriptor);
  use.setup.tiff.nStripBytes = 1000;
  out.host.clearLog();
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 16, 9, 1, 1, descriptor), 0);
  EXPECT_EQ(nextStrip(descriptor), 1u);
  EXPECT_EQ(use.setup.tiff.nStripBytes, 1022u);  // counted on, not reset
  EndCellBitmap(out.file, descriptor);
  EXPECT_EQ(out.host.log(),
            "write 2\nwrite 3\nwrite 2\nwrite 3\nwrite 2\nwrite 3\nwrite 2\nwrite 3\nwrite 2\n");
}

TEST(Strips, TiledLayoutWithLzwCodesAChunkAtOnce) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_LZW, RAXEL_STORED_LAYOUT_TILES);
  support::HostOutput out;
  const Pixels block(Bytes(4 * 200));
  Handle descriptor = 0;
  BeginCellBitmap(out.file, 16, 200, 1, kBlackWhite.data(), &descriptor);
  out.host.clearLog();
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 16, 200, 1, 1, descriptor), 0);
  EndCellBitmap(out.file, descriptor);
  EXPECT_EQ(out.host.writeSizes().size(), 2u);  // 128 rows, then 72
}

TEST(Strips, TiledT4StillWritesItsEols) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T4, RAXEL_STORED_LAYOUT_TILES);
  support::HostOutput out;
  const Pixels block(Bytes(4 * 2, 0xFF));
  Handle descriptor = 0;
  BeginCellBitmap(out.file, 8, 2, 1, kBlackWhite.data(), &descriptor);
  out.host.clearLog();
  use.setup.tiff.nStripBytes = 1000;
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 8, 2, 1, 1, descriptor), 0);
  EXPECT_EQ(out.host.log(), "write 2\nwrite 3 x 2\nwrite 2 x 5\n");
  EXPECT_EQ(use.setup.tiff.nStripBytes, 18u);
  EndCellBitmap(out.file, descriptor);
}

// Fax codes take bits as they come, also where a pixel has more of them: of each row its first `width`
// bits, in T.6 strips rows of that many bits one after the other.
TEST(Strips, FaxCodesOfDeeperPixels) {
  for (const int32_t mode :
       {RAXEL_STORED_MODE_COLOR16, RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_MODE_RGB}) {
    support::Picture picture{8, 8, support::depthOfMode(mode), {}, Bytes(768)};
    Bytes row(picture.stride(), 0xFF);
    row[1] = 0;
    for (int i = 0; i < 8; ++i) picture.pixels.insert(picture.pixels.end(), row.begin(), row.end());
    const auto end = [&](int32_t compression, size_t count) {
      support::InUse use(mode, compression);
      support::HostOutput out;
      const support::Pixels pixels(picture.pixels);
      EXPECT_EQ(support::writePicture(out.file, picture, pixels.handle()), 0);
      return support::slice(out.bytes(), out.bytes().size() - count, count);
    };
    // White 8 is 10011, and a row ends with its byte. Four strips of two rows.
    EXPECT_EQ(end(RAXEL_STORED_COMPRESS_HUFFMAN, 8), Bytes(8, 0x98)) << mode;
    EXPECT_EQ(end(RAXEL_STORED_COMPRESS_T4, 18),
              hex("00 01  98 00 01  98 00 01  00 01 00 01 00 01 00 01 00 01"));
    // FF, then 00: V0, and horizontal with white 0 and black 8: 1 001 00110101 000101.
    EXPECT_EQ(end(RAXEL_STORED_COMPRESS_T6, 12), hex("93 51 40  93 51 40  93 51 40  93 51 40")) << mode;
  }
}

}  // namespace
