// SPDX-License-Identifier: MIT
// Header and directory as whole files, each byte worked out by hand from TIFF 6.0.
#include <gtest/gtest.h>

#include "support/front.h"
#include "support/hex.h"
#include "support/tiff_reader.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::hex;
using Numbers = std::vector<uint32_t>;

// A bilevel picture of 600 by 100 in one strip, at 96 by 72 dots per inch.
TiffWriterState oneStrip(Handle file) {
  TiffWriterState state{};
  state.hTiffFile = file;
  state.nWriterKind = RAXEL_WRITER_CELLS;
  state.nImageWidth = 600;
  state.nImageLength = 100;
  state.nBitsPerSample = 1;
  state.nCompression = RAXEL_TIFF_UNCOMPRESSED;
  state.nPhotometric = RAXEL_TIFF_BLACK_IS_ZERO;
  state.nStripsDown = 1;
  state.nTilesAcross = 1;
  state.nSamplesPerPixel = 1;
  state.nRowsPerStrip = 100;
  state.nXResolution = 96;
  state.nYResolution = 72;
  state.wLayoutMode = RAXEL_STORED_LAYOUT_STRIPS;
  state.nColors = 2;
  return state;
}

void writeFront(TiffWriterState &state) {
  EXPECT_EQ(WriteTiffHdr(&state), 0);
  EXPECT_EQ(WriteTiffDir(&state), 0);
}

TEST(Directory, OneStripKeepsItsNumbersInTheEntries) {
  support::HostOutput out;
  TiffWriterState state = oneStrip(out.file);
  writeFront(state);
  EXPECT_EQ(out.bytes(), hex(R"(
    49 49  2A 00  08 00 00 00                   ; 00 "II", 42, directory at 8
    0D 00                                       ; 08 13 entries
    FE 00  04 00  01 00 00 00  00 00 00 00      ; 0A NewSubfileType 0
    00 01  03 00  01 00 00 00  58 02 00 00      ; 16 ImageWidth 600
    01 01  03 00  01 00 00 00  64 00 00 00      ; 22 ImageLength 100
    02 01  03 00  01 00 00 00  01 00 00 00      ; 2E BitsPerSample 1
    03 01  03 00  01 00 00 00  01 00 00 00      ; 3A Compression none
    06 01  03 00  01 00 00 00  01 00 00 00      ; 46 Photometric BlackIsZero
    11 01  04 00  01 00 00 00  00 00 00 00      ; 52 StripOffsets, its value at 5A
    15 01  03 00  01 00 00 00  01 00 00 00      ; 5E SamplesPerPixel 1
    16 01  04 00  01 00 00 00  64 00 00 00      ; 6A RowsPerStrip 100
    17 01  04 00  01 00 00 00  00 00 00 00      ; 76 StripByteCounts, its value at 7E
    1A 01  05 00  01 00 00 00  AA 00 00 00      ; 82 XResolution at AA
    1B 01  05 00  01 00 00 00  B2 00 00 00      ; 8E YResolution at B2
    28 01  03 00  01 00 00 00  02 00 00 00      ; 9A ResolutionUnit inch
    00 00 00 00                                 ; A6 no further directory
    60 00 00 00  01 00 00 00                    ; AA 96/1
    48 00 00 00  01 00 00 00                    ; B2 72/1
  )"));
  EXPECT_EQ(support::frontOf({.width = 600, .length = 100, .rowsPerStrip = 100, .yResolution = 72}),
            out.bytes());
  EXPECT_EQ(state.nOffsetsEntryPos, 0u);
  EXPECT_EQ(state.nOffsetsPos, 0x5Au);
  EXPECT_EQ(state.nCountsEntryPos, 0u);
  EXPECT_EQ(state.nCountsPos, 0x7Eu);
  EXPECT_EQ(out.host.position(), 0xBAu);  // where the pixels begin
}

TEST(Directory, SeveralStripsGetTwoArraysOfZeros) {
  support::HostOutput out;
  TiffWriterState state = oneStrip(out.file);
  state.nImageLength = 9;
  state.nCompression = RAXEL_TIFF_PACKBITS;
  state.nStripsDown = 5;
  state.nRowsPerStrip = 2;
  writeFront(state);
  EXPECT_EQ(out.bytes(), support::frontOf({.width = 600,
                                           .length = 9,
                                           .compression = RAXEL_TIFF_PACKBITS,
                                           .rowsPerStrip = 2,
                                           .yResolution = 72,
                                           .offsets = Numbers(5),
                                           .counts = Numbers(5)}));
  EXPECT_EQ(state.nOffsetsEntryPos, 0x5Au);
  EXPECT_EQ(state.nOffsetsPos, 0xBAu);
  EXPECT_EQ(state.nCountsEntryPos, 0x7Eu);
  EXPECT_EQ(state.nCountsPos, 0xCEu);
  EXPECT_EQ(out.host.position(), 0xE2u);
}

// Two columns and two rows of tiles: 324 stands before 277, and 322 and 323 before 325.
TEST(Directory, TilesKeepTheirOrderOfEntries) {
  support::HostOutput out;
  TiffWriterState state = oneStrip(out.file);
  state.nImageLength = 200;
  state.nCompression = RAXEL_TIFF_T6;
  state.wLayoutMode = RAXEL_STORED_LAYOUT_TILES;
  state.nTilesAcross = 2;
  state.nStripsDown = 2;
  state.nRowsPerStrip = 128;
  writeFront(state);
  EXPECT_EQ(out.bytes(), hex(R"(
    49 49  2A 00  08 00 00 00                   ; 00 "II", 42, directory at 8
    0E 00                                       ; 08 14 entries
    FE 00  04 00  01 00 00 00  00 00 00 00      ; 0A NewSubfileType 0
    00 01  03 00  01 00 00 00  58 02 00 00      ; 16 ImageWidth 600
    01 01  03 00  01 00 00 00  C8 00 00 00      ; 22 ImageLength 200
    02 01  03 00  01 00 00 00  01 00 00 00      ; 2E BitsPerSample 1
    03 01  03 00  01 00 00 00  04 00 00 00      ; 3A Compression T.6
    06 01  03 00  01 00 00 00  01 00 00 00      ; 46 Photometric BlackIsZero
    44 01  04 00  04 00 00 00  C6 00 00 00      ; 52 TileOffsets, 4 at C6
    15 01  03 00  01 00 00 00  01 00 00 00      ; 5E SamplesPerPixel 1
    42 01  04 00  01 00 00 00  00 02 00 00      ; 6A TileWidth 512
    43 01  04 00  01 00 00 00  80 00 00 00      ; 76 TileLength 128
    45 01  04 00  04 00 00 00  D6 00 00 00      ; 82 TileByteCounts, 4 at D6
    1A 01  05 00  01 00 00 00  B6 00 00 00      ; 8E XResolution at B6
    1B 01  05 00  01 00 00 00  BE 00 00 00      ; 9A YResolution at BE
    28 01  03 00  01 00 00 00  02 00 00 00      ; A6 ResolutionUnit inch
    00 00 00 00                                 ; B2 no further directory
    60 00 00 00  01 00 00 00                    ; B6 96/1
    48 00 00 00  01 00 00 00                    ; BE 72/1
    00 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00    ; C6 offsets
    00 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00    ; D6 byte counts
  )"));
  EXPECT_EQ(support::frontOf({.width = 600,
                              .length = 200,
                              .compression = RAXEL_TIFF_T6,
                              .yResolution = 72,
                              .offsets = Numbers(4),
                              .counts = Numbers(4)}),
            out.bytes());
  EXPECT_EQ(state.nOffsetsPos, 0xC6u);
  EXPECT_EQ(state.nCountsPos, 0xD6u);
}

// Four bits: 16 reds, 16 greens, 16 blues, each byte times 257. RGB photometric apart, the entries
// before the map are those of one strip.
TEST(Directory, ColorMapFollowsTheNextDirectoryOffset) {
  support::HostOutput out;
  TiffWriterState state = oneStrip(out.file);
  state.nBitsPerSample = 4;
  state.nPhotometric = RAXEL_TIFF_PALETTE;
  state.nColors = 16;
  for (uint8_t i = 0; i < 16; ++i) {
    state.abColorMap[i][0] = i;
    state.abColorMap[i][1] = static_cast<uint8_t>(0x40 + i);
    state.abColorMap[i][2] = static_cast<uint8_t>(0xFF - i);
  }
  writeFront(state);
  EXPECT_EQ(support::slice(out.bytes(), 8, 2), hex("0E 00"));  // 14 entries
  EXPECT_EQ(support::slice(out.bytes(), 0x82, 0x1000), hex(R"(
    1A 01  05 00  01 00 00 00  16 01 00 00      ; 82 XResolution at 116
    1B 01  05 00  01 00 00 00  1E 01 00 00      ; 8E YResolution at 11E
    28 01  03 00  01 00 00 00  02 00 00 00      ; 9A ResolutionUnit inch
    40 01  03 00  30 00 00 00  B6 00 00 00      ; A6 ColorMap, 48 at B6
    00 00 00 00                                 ; B2 no further directory
    00 00  01 01  02 02  03 03  04 04  05 05  06 06  07 07    ; B6 red
    08 08  09 09  0A 0A  0B 0B  0C 0C  0D 0D  0E 0E  0F 0F
    40 40  41 41  42 42  43 43  44 44  45 45  46 46  47 47    ; D6 green
    48 48  49 49  4A 4A  4B 4B  4C 4C  4D 4D  4E 4E  4F 4F
    FF FF  FE FE  FD FD  FC FC  FB FB  FA FA  F9 F9  F8 F8    ; F6 blue
    F7 F7  F6 F6  F5 F5  F4 F4  F3 F3  F2 F2  F1 F1  F0 F0
    60 00 00 00  01 00 00 00                    ; 116 96/1
    48 00 00 00  01 00 00 00                    ; 11E 72/1
  )"));
}

TEST(Directory, EightBitsHaveAMapOf768Words) {
  support::HostOutput out;
  TiffWriterState state = oneStrip(out.file);
  state.nBitsPerSample = 8;
  state.nPhotometric = RAXEL_TIFF_PALETTE;
  for (int i = 0; i < 256; ++i) state.abColorMap[i][2] = static_cast<uint8_t>(i);
  writeFront(state);
  const support::TiffFile file = support::readTiff(out.bytes());
  const support::TiffEntry *map = file.find(320);
  ASSERT_NE(map, nullptr);
  EXPECT_EQ(map->count, 768u);
  EXPECT_EQ(map->valuesAt, 0xB6u);
  for (uint32_t i = 0; i < 256; ++i) {
    EXPECT_EQ(map->values[i], 0u);
    EXPECT_EQ(map->values[256 + i], 0u);
    EXPECT_EQ(map->values[512 + i], i * 257);
  }
  EXPECT_EQ(out.bytes().size(), 0xB6u + 1536 + 16);
}

// The map holds 256 colours; a sample of more bits has zeros for the rest.
TEST(Directory, ColorMapPast256EntriesIsZeros) {
  support::HostOutput out;
  TiffWriterState state = oneStrip(out.file);
  state.nBitsPerSample = 9;
  state.nPhotometric = RAXEL_TIFF_PALETTE;
  std::memset(state.abColorMap, 0xFF, sizeof state.abColorMap);
  writeFront(state);
  EXPECT_EQ(out.bytes().size(), 0xB6u + 3 * 512 * 2 + 16);
  EXPECT_EQ(support::slice(out.bytes(), 0xB6 + 510, 4), hex("FF FF 00 00"));
  EXPECT_EQ(support::slice(out.bytes(), 0xB6 + 1022, 4), hex("00 00 FF FF"));
}

TEST(Directory, WidthAndLengthAreCutToSixteenBits) {
  support::HostOutput out;
  TiffWriterState state = oneStrip(out.file);
  state.nImageWidth = 65536 + 7;
  state.nImageLength = 0x12340000;
  writeFront(state);
  EXPECT_EQ(support::slice(out.bytes(), 0x1E, 4), hex("07 00 00 00"));
  EXPECT_EQ(support::slice(out.bytes(), 0x2A, 4), hex("00 00 00 00"));
}

// A palette far into a file lies where no 16 bits could tell.
TEST(Directory, ColorMapMayLiePast65535) {
  support::HostOutput out;
  const Bytes before(70000);
  kvlWrite(out.file, before.data(), 70000);
  TiffWriterState state = oneStrip(out.file);
  state.nBitsPerSample = 4;
  state.nPhotometric = RAXEL_TIFF_PALETTE;
  writeFront(state);
  EXPECT_EQ(support::slice(out.bytes(), 70000 + 0xA6, 12), hex("40 01 03 00  30 00 00 00  26 12 01 00"));
}

TEST(Directory, ResolutionsAreSignExtended) {
  support::HostOutput out;
  TiffWriterState state = oneStrip(out.file);
  state.nXResolution = -2;
  state.nYResolution = -32768;
  writeFront(state);
  EXPECT_EQ(support::slice(out.bytes(), 0xAA, 16),
            hex("FE FF FF FF  01 00 00 00  00 80 FF FF  01 00 00 00"));
}

TEST(Directory, WriterKindThreeForcesOneStrip) {
  support::HostOutput out;
  TiffWriterState state = oneStrip(out.file);
  state.nWriterKind = RAXEL_WRITER_ONE_STRIP;
  state.nStripsDown = 5;
  writeFront(state);
  EXPECT_EQ(state.nStripsDown, 1u);
  EXPECT_EQ(out.bytes().size(), 0xBAu);
}

// Every offset in the file counts from the header, wherever that stands.
TEST(Directory, OffsetsCountFromTheHeader) {
  support::HostOutput out;
  for (int i = 0; i < 25; ++i) WriteLong(out.file, 0xEEEEEEEE);
  TiffWriterState state = oneStrip(out.file);
  state.dwTiffBase = 100;
  state.nStripsDown = 5;
  writeFront(state);

  support::HostOutput plain;
  TiffWriterState other = oneStrip(plain.file);
  other.nStripsDown = 5;
  writeFront(other);
  EXPECT_EQ(support::slice(out.bytes(), 100, 1000), plain.bytes());
  EXPECT_EQ(support::slice(out.bytes(), 0, 100), Bytes(100, 0xEE));
  EXPECT_EQ(state.nOffsetsPos, 0xBAu);
  EXPECT_EQ(state.nCountsPos, 0xCEu);
}

TEST(Directory, AHostSeesOneTellForEachPositionAndOneSeekForEachPatch) {
  support::HostOutput out;
  TiffWriterState state = oneStrip(out.file);
  state.nBitsPerSample = 4;
  state.nPhotometric = RAXEL_TIFF_PALETTE;
  state.nStripsDown = 2;
  writeFront(state);
  EXPECT_EQ(out.host.log(),
            "write 1 x 82\n"
            "seek 0 from 1 = 82\n"  // the offsets' entry
            "write 1 x 36\n"
            "seek 0 from 1 = 118\n"  // the byte counts' entry
            "write 1 x 12\n"
            "seek 0 from 1 = 130\n"  // XResolution
            "write 1 x 36\n"
            "seek 0 from 1 = 166\n"  // the colour map's entry
            "write 1 x 112\n"
            "seek 0 from 1 = 278\n"  // the resolutions
            "seek 8 from 0 = 8\n"
            "write 1 x 2\n"
            "seek 138 from 0 = 138\n"
            "write 1 x 4\n"
            "seek 150 from 0 = 150\n"
            "write 1 x 4\n"
            "seek 278 from 0 = 278\n"
            "write 1 x 16\n"
            "seek 0 from 1 = 294\n"  // the offsets
            "seek 90 from 0 = 90\n"
            "write 1 x 4\n"
            "seek 294 from 0 = 294\n"
            "write 1 x 8\n"
            "seek 0 from 1 = 302\n"  // the byte counts
            "seek 126 from 0 = 126\n"
            "write 1 x 4\n"
            "seek 302 from 0 = 302\n"
            "write 1 x 8\n");
}

TEST(Directory, FailingWritesAreNotReported) {
  for (size_t n = 1; n < 280; ++n) {
    support::HostOutput out;
    out.host.failAt(n);
    TiffWriterState state = oneStrip(out.file);
    state.nStripsDown = 5;
    writeFront(state);
  }
}

TEST(Directory, NoStateIsNoHarm) {
  EXPECT_EQ(WriteTiffHdr(nullptr), 0);
  EXPECT_EQ(WriteTiffDir(nullptr), 0);
}

// Two to the power of 32 is 0 in 32 bits: a map of no words, and the resolutions in its place.
TEST(Directory, ThirtyTwoBitsHaveAMapOfNothing) {
  support::HostOutput out;
  TiffWriterState state = oneStrip(out.file);
  state.nBitsPerSample = 32;
  state.nPhotometric = RAXEL_TIFF_PALETTE;
  writeFront(state);
  EXPECT_EQ(support::slice(out.bytes(), 0x82, 0x1000), hex(R"(
    1A 01  05 00  01 00 00 00  B6 00 00 00      ; 82 XResolution at B6
    1B 01  05 00  01 00 00 00  BE 00 00 00      ; 8E YResolution at BE
    28 01  03 00  01 00 00 00  02 00 00 00      ; 9A ResolutionUnit inch
    40 01  03 00  00 00 00 00  B6 00 00 00      ; A6 ColorMap, none at B6
    00 00 00 00                                 ; B2 no further directory
    60 00 00 00  01 00 00 00                    ; B6 96/1
    48 00 00 00  01 00 00 00                    ; BE 72/1
  )"));
}

}  // namespace
