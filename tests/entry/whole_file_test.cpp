// SPDX-License-Identifier: MIT
// Tiny pictures through the one-call export, every byte of the file worked out by hand from the TIFF
// 6.0 description. All of them are 96 dots per inch.
#include <gtest/gtest.h>

#include "entry/export_host.h"
#include "support/hex.h"

namespace {

using entry_test::Bytes;
using entry_test::ExportHost;
using entry_test::Picture;
using support::hex;

TEST(WholeFile, AnRgbPictureIsTurnedUprightAndRedFirst) {
  ExportHost host;
  // Two by two, bottom row first, blue green red: the top row is red, green.
  Picture picture(24, 2, {{0xFF, 0x00, 0x00, 0x01, 0x02, 0x03}, {0x00, 0x00, 0xFF, 0x00, 0xFF, 0x00}});
  const Bytes expected = hex(R"(
    49 49  2A 00  08 00 00 00                   ; II, 42, directory at 8
    0D 00                                       ; 13 entries
    FE 00  04 00  01 00 00 00  00 00 00 00      ; 254 LONG NewSubfileType 0
    00 01  03 00  01 00 00 00  02 00 00 00      ; 256 SHORT ImageWidth 2
    01 01  03 00  01 00 00 00  02 00 00 00      ; 257 SHORT ImageLength 2
    02 01  03 00  01 00 00 00  08 00 00 00      ; 258 SHORT BitsPerSample 8
    03 01  03 00  01 00 00 00  01 00 00 00      ; 259 SHORT Compression none
    06 01  03 00  01 00 00 00  02 00 00 00      ; 262 SHORT Photometric RGB
    11 01  04 00  01 00 00 00  BA 00 00 00      ; 273 LONG StripOffsets 186
    15 01  03 00  01 00 00 00  03 00 00 00      ; 277 SHORT SamplesPerPixel 3
    16 01  04 00  01 00 00 00  02 00 00 00      ; 278 LONG RowsPerStrip 2
    17 01  04 00  01 00 00 00  0C 00 00 00      ; 279 LONG StripByteCounts 12
    1A 01  05 00  01 00 00 00  AA 00 00 00      ; 282 RATIONAL XResolution at 170
    1B 01  05 00  01 00 00 00  B2 00 00 00      ; 283 RATIONAL YResolution at 178
    28 01  03 00  01 00 00 00  02 00 00 00      ; 296 SHORT ResolutionUnit inch
    00 00 00 00                                 ; no further directory
    60 00 00 00  01 00 00 00                    ; 170: 96/1
    60 00 00 00  01 00 00 00                    ; 178: 96/1
    FF 00 00 00 FF 00                           ; 186: red, green
    00 00 FF 03 02 01                           ; blue, (3, 2, 1)
  )");
  EXPECT_EQ(host.runInMemory(picture), expected);
}

TEST(WholeFile, ABilevelPictureIsInvertedAndPacked) {
  ExportHost host;
  host.settings().nBitmapMode = RAXEL_STORED_MODE_BILEVEL;
  // Ten pixels wide, two rows; entry 0 of the palette is white, so the filter inverts every byte.
  Picture picture(1, 10, {{0x0F, 0x40}, {0xAA, 0x80}}, {255, 255, 255, 0, 0, 0});
  const Bytes expected = hex(R"(
    49 49  2A 00  08 00 00 00                   ; II, 42, directory at 8
    0D 00                                       ; 13 entries
    FE 00  04 00  01 00 00 00  00 00 00 00      ; 254 LONG NewSubfileType 0
    00 01  03 00  01 00 00 00  0A 00 00 00      ; 256 SHORT ImageWidth 10
    01 01  03 00  01 00 00 00  02 00 00 00      ; 257 SHORT ImageLength 2
    02 01  03 00  01 00 00 00  01 00 00 00      ; 258 SHORT BitsPerSample 1
    03 01  03 00  01 00 00 00  01 00 00 00      ; 259 SHORT Compression none
    06 01  03 00  01 00 00 00  01 00 00 00      ; 262 SHORT BlackIsZero
    11 01  04 00  01 00 00 00  BA 00 00 00      ; 273 LONG StripOffsets 186
    15 01  03 00  01 00 00 00  01 00 00 00      ; 277 SHORT SamplesPerPixel 1
    16 01  04 00  01 00 00 00  02 00 00 00      ; 278 LONG RowsPerStrip 2
    17 01  04 00  01 00 00 00  04 00 00 00      ; 279 LONG StripByteCounts 4
    1A 01  05 00  01 00 00 00  AA 00 00 00      ; 282 RATIONAL XResolution at 170
    1B 01  05 00  01 00 00 00  B2 00 00 00      ; 283 RATIONAL YResolution at 178
    28 01  03 00  01 00 00 00  02 00 00 00      ; 296 SHORT ResolutionUnit inch
    00 00 00 00                                 ; no further directory
    60 00 00 00  01 00 00 00                    ; 170: 96/1
    60 00 00 00  01 00 00 00                    ; 178: 96/1
    55 7F                                       ; 186: not AA 80
    F0 BF                                       ; not 0F 40
  )");
  EXPECT_EQ(host.runInMemory(picture), expected);
}

TEST(WholeFile, SixteenColorsCarryTheirMapBeforeTheStrips) {
  ExportHost host;
  host.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR16;
  host.settings().nCompressionMode = RAXEL_STORED_COMPRESS_PACKBITS;
  // Eight pixels wide, two rows of four bytes. A palette of three colours.
  Picture picture(4, 8, {{0x11, 0x11, 0x11, 0x20}, {0x01, 0x20, 0x12, 0x12}},
                  {0x10, 0x20, 0x30, 0xFF, 0x00, 0x80, 0x00, 0x01, 0x02});
  Bytes expected = hex(R"(
    49 49  2A 00  08 00 00 00                   ; II, 42, directory at 8
    0E 00                                       ; 14 entries
    FE 00  04 00  01 00 00 00  00 00 00 00      ; 254 LONG NewSubfileType 0
    00 01  03 00  01 00 00 00  08 00 00 00      ; 256 SHORT ImageWidth 8
    01 01  03 00  01 00 00 00  02 00 00 00      ; 257 SHORT ImageLength 2
    02 01  03 00  01 00 00 00  04 00 00 00      ; 258 SHORT BitsPerSample 4
    03 01  03 00  01 00 00 00  05 80 00 00      ; 259 SHORT PackBits 32773
    06 01  03 00  01 00 00 00  03 00 00 00      ; 262 SHORT Photometric palette
    11 01  04 00  02 00 00 00  26 01 00 00      ; 273 LONG x 2 StripOffsets at 294
    15 01  03 00  01 00 00 00  01 00 00 00      ; 277 SHORT SamplesPerPixel 1
    16 01  04 00  01 00 00 00  01 00 00 00      ; 278 LONG RowsPerStrip 1
    17 01  04 00  02 00 00 00  2E 01 00 00      ; 279 LONG x 2 counts at 302
    1A 01  05 00  01 00 00 00  16 01 00 00      ; 282 RATIONAL XResolution at 278
    1B 01  05 00  01 00 00 00  1E 01 00 00      ; 283 RATIONAL YResolution at 286
    28 01  03 00  01 00 00 00  02 00 00 00      ; 296 SHORT ResolutionUnit inch
    40 01  03 00  30 00 00 00  B6 00 00 00      ; 320 SHORT x 48 ColorMap at 182
    00 00 00 00                                 ; no further directory
  )");
  // 182: the colour map, 16 reds, 16 greens, 16 blues, each byte twice. 13 entries of each are black.
  const auto channel = [&expected](uint8_t first, uint8_t second, uint8_t third) {
    for (uint8_t value : {first, second, third}) expected.insert(expected.end(), {value, value});
    expected.insert(expected.end(), 26, 0x00);
  };
  channel(0x10, 0xFF, 0x00);
  channel(0x20, 0x00, 0x01);
  channel(0x30, 0x80, 0x02);
  const Bytes tail = hex(R"(
    60 00 00 00  01 00 00 00                    ; 278: 96/1
    60 00 00 00  01 00 00 00                    ; 286: 96/1
    36 01 00 00  3B 01 00 00                    ; 294: the strips begin at 310 and 315
    05 00 00 00  04 00 00 00                    ; 302: they have 5 and 4 bytes
    01 01 20 FF 12                              ; 310: two literals 01 20, then 12 twice
    FE 11 00 20                                 ; 315: 11 three times, then the literal 20
  )");
  expected.insert(expected.end(), tail.begin(), tail.end());
  EXPECT_EQ(host.runInMemory(picture), expected);
}

TEST(WholeFile, TwoHundredFiftySixGreysPackBitsOfFourRows) {
  ExportHost host;
  host.settings().nBitmapMode = RAXEL_STORED_MODE_GREY256;
  host.settings().nCompressionMode = RAXEL_STORED_COMPRESS_PACKBITS;
  // One pixel wide, four rows, one strip each (a quarter of the height). The palette is the grey ramp,
  // and its luminance 0.3 v + 0.59 v + 0.11 v, truncated, is one less than v for some of the greys. So
  // the indices are mapped, and mapping moves every byte one place towards the start of the block:
  // each row's pixel becomes what the first padding byte behind it maps to, which is 0.
  Bytes ramp;
  for (int i = 0; i < 256; ++i) ramp.insert(ramp.end(), 3, static_cast<uint8_t>(i));
  Picture picture(8, 1, {{4}, {3}, {2}, {1}}, ramp);
  const Bytes expected = hex(R"(
    49 49  2A 00  08 00 00 00                   ; II, 42, directory at 8
    0D 00                                       ; 13 entries
    FE 00  04 00  01 00 00 00  00 00 00 00      ; 254 LONG NewSubfileType 0
    00 01  03 00  01 00 00 00  01 00 00 00      ; 256 SHORT ImageWidth 1
    01 01  03 00  01 00 00 00  04 00 00 00      ; 257 SHORT ImageLength 4
    02 01  03 00  01 00 00 00  08 00 00 00      ; 258 SHORT BitsPerSample 8
    03 01  03 00  01 00 00 00  05 80 00 00      ; 259 SHORT PackBits 32773
    06 01  03 00  01 00 00 00  01 00 00 00      ; 262 SHORT BlackIsZero
    11 01  04 00  04 00 00 00  BA 00 00 00      ; 273 LONG x 4 offsets at 186
    15 01  03 00  01 00 00 00  01 00 00 00      ; 277 SHORT SamplesPerPixel 1
    16 01  04 00  01 00 00 00  01 00 00 00      ; 278 LONG RowsPerStrip 1
    17 01  04 00  04 00 00 00  CA 00 00 00      ; 279 LONG x 4 counts at 202
    1A 01  05 00  01 00 00 00  AA 00 00 00      ; 282 RATIONAL XResolution at 170
    1B 01  05 00  01 00 00 00  B2 00 00 00      ; 283 RATIONAL YResolution at 178
    28 01  03 00  01 00 00 00  02 00 00 00      ; 296 SHORT ResolutionUnit inch
    00 00 00 00                                 ; no further directory
    60 00 00 00  01 00 00 00                    ; 170: 96/1
    60 00 00 00  01 00 00 00                    ; 178: 96/1
    DA 00 00 00  DC 00 00 00                    ; 186: strips at 218, 220,
    DE 00 00 00  E0 00 00 00                    ; 222, 224
    02 00 00 00  02 00 00 00                    ; 202: two bytes each
    02 00 00 00 02 00 00 00 00 00               ; 218: a literal of one byte, 0
    00 00                                       ; 220
    00 00                                       ; 222
    00 00                                       ; 224
  )");
  EXPECT_EQ(host.runInMemory(picture), expected);
}

}  // namespace
