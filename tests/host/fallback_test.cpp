// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "host/pictures.h"
#include "raxel/tiff.h"
#include "support/random.h"

using host_test::prepared;
using host_test::Prepared;
using host_test::request;
using host_test::TestPicture;

namespace {

int compressionFor(uint32_t width, uint32_t height, int mode, int wanted) {
  TestPicture picture(width, height, 1);
  return prepared(picture, request(mode, wanted)).plan.compression;
}

// Bits that the filter's own tables give a row of black and white pixels, white first.
uint32_t codedBits(const std::vector<bool> &row) {
  uint32_t bits = 0;
  size_t x = 0;
  for (bool color = true; x < row.size(); color = !color) {
    size_t run = 0;
    while (x < row.size() && row[x] == color) ++x, ++run;
    bits += (color ? ::white : ::black)[run].length;
  }
  return bits;
}

}  // namespace

TEST(HostFallback, LzwStripsOfOneByteGoOutAsPackBits) {
  // Up to 7 rows a strip is one row.
  EXPECT_EQ(compressionFor(8, 6, RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_LZW), RAXEL_COMPRESS_PACKBITS);
  EXPECT_EQ(compressionFor(9, 6, RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_LZW), RAXEL_COMPRESS_LZW);
  EXPECT_EQ(compressionFor(8, 8, RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_LZW), RAXEL_COMPRESS_LZW);
  EXPECT_EQ(compressionFor(2, 1, RAXEL_MODE_COLOR16, RAXEL_COMPRESS_LZW), RAXEL_COMPRESS_PACKBITS);
  EXPECT_EQ(compressionFor(3, 1, RAXEL_MODE_COLOR16, RAXEL_COMPRESS_LZW), RAXEL_COMPRESS_LZW);
  EXPECT_EQ(compressionFor(1, 5, RAXEL_MODE_GREY256, RAXEL_COMPRESS_LZW), RAXEL_COMPRESS_PACKBITS);
  EXPECT_EQ(compressionFor(1, 7, RAXEL_MODE_GREY256, RAXEL_COMPRESS_LZW), RAXEL_COMPRESS_LZW);
  EXPECT_EQ(compressionFor(1, 1, RAXEL_MODE_RGB, RAXEL_COMPRESS_LZW), RAXEL_COMPRESS_LZW);
}

TEST(HostFallback, TellsInANoteThatPackBitsWasTaken) {
  TestPicture picture(1, 1, 1);
  EXPECT_TRUE(prepared(picture, request(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_LZW)).plan.notes &
              RAXEL_NOTE_LZW_AS_PACKBITS);
  EXPECT_TRUE(prepared(picture, request(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_HUFFMAN)).plan.notes &
              RAXEL_NOTE_HUFFMAN_AS_PACKBITS);
}

// What is black in the picture goes out as white runs, or in a finished file what is white. The filter's
// code tables decide independently.
TEST(HostFallback, HuffmanGoesOutAsPackBitsWhenTheLastRowFitsInAByte) {
  support::Random random(3);
  int small = 0, large = 0;
  for (uint32_t width = 1; width <= 70; ++width) {
    for (int round = 0; round < 40; ++round) {
      TestPicture picture(width, 4, 1);
      std::vector<bool> dark(width);
      // Few changes: rows that code short.
      const auto changes = random.between(0, 3);
      for (int c = 0; c < changes; ++c) {
        for (size_t x = static_cast<size_t>(random.between(0, width - 1)); x < width; ++x)
          dark[x] = !dark[x];
      }
      if (random.chance(50)) dark.flip();
      for (uint32_t x = 0; x < width; ++x) picture.setIndex(x, 3, dark[x] ? 0 : 1);
      RaxelRequest wanted = request(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_HUFFMAN);
      wanted.finish = round % 2;
      std::vector<bool> asWhite = dark;
      if (wanted.finish != 0) asWhite.flip();
      const bool fits = width < 64 && codedBits(asWhite) <= 8;
      const int got = prepared(picture, wanted).plan.compression;
      ASSERT_EQ(got, fits ? RAXEL_COMPRESS_PACKBITS : RAXEL_COMPRESS_HUFFMAN) << width;
      ++(fits ? small : large);
    }
  }
  EXPECT_GT(small, 100);
  EXPECT_GT(large, 100);
}

namespace {

// A picture of 5 by 16 pixels, striped but for one row, which is white.
int withWhiteRow(uint32_t at, int strips) {
  TestPicture picture(5, 16, 1);
  for (uint32_t y = 0; y < 16; ++y) {
    for (uint32_t x = 0; x < 5; ++x) picture.setIndex(x, y, y == at || x % 2 == 1 ? 1 : 0);
  }
  RaxelRequest wanted = request(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_HUFFMAN);
  wanted.finish = 1;
  wanted.strips = strips;
  return prepared(picture, wanted).plan.compression;
}

}  // namespace

// Readers lose the last row of any strip that has several.
TEST(HostFallback, HuffmanGoesOutAsPackBitsWhenTheLastRowOfAStripFitsInAByte) {
  for (uint32_t at = 0; at < 16; ++at) {
    EXPECT_EQ(withWhiteRow(at, RAXEL_STRIPS_QUARTERS),
              at % 4 == 3 ? RAXEL_COMPRESS_PACKBITS : RAXEL_COMPRESS_HUFFMAN)
        << at;
    EXPECT_EQ(withWhiteRow(at, RAXEL_STRIPS_ONE),
              at == 15 ? RAXEL_COMPRESS_PACKBITS : RAXEL_COMPRESS_HUFFMAN)
        << at;
  }
}

TEST(HostFallback, APackBitsFallbackIsNotComplemented) {
  TestPicture picture(4, 2, 1);
  const Prepared made = prepared(picture, request(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_HUFFMAN));
  ASSERT_EQ(made.plan.compression, RAXEL_COMPRESS_PACKBITS);
  EXPECT_EQ(made.row(0)[0], 0x00);
}

TEST(HostFallback, FaxCodesOfFinishedFilesAreNotComplemented) {
  TestPicture picture(8, 2, 1);
  for (uint32_t x = 0; x < 8; ++x) {
    for (uint32_t y = 0; y < 2; ++y) picture.setIndex(x, y, x < 3 ? 0 : 1);
  }
  RaxelRequest wanted = request(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_T6);
  EXPECT_EQ(prepared(picture, wanted).row(0)[0], 0xE0);
  wanted.finish = 1;
  EXPECT_EQ(prepared(picture, wanted).row(0)[0], 0x1F);
}

namespace {

// A picture of two rows, white but for the upper one: its pixels alternate from `first` (1: white) on.
int alternating(uint32_t width, unsigned first, int compression, uint32_t spoilt = UINT32_MAX,
                int32_t finish = 0) {
  TestPicture picture(width, 2, 1);
  for (uint32_t x = 0; x < width; ++x) {
    picture.setIndex(x, 0, (first + x + (x == spoilt ? 1 : 0)) % 2);
    picture.setIndex(x, 1, 1);
  }
  RaxelRequest wanted = request(RAXEL_MODE_BILEVEL, compression);
  wanted.finish = finish;
  return prepared(picture, wanted).plan.compression;
}

}  // namespace

// What is white in the picture goes out as black runs, and with an empty white run before them a row of n
// pixels has n + 1 runs. Readers with room for n of them, rounded up to 32, refuse it.
TEST(HostFallback, RowsOfMoreRunsThanPixelsGoOutAsT6) {
  for (int code : {RAXEL_COMPRESS_HUFFMAN, RAXEL_COMPRESS_T4}) {
    for (uint32_t width : {32u, 64u, 96u, 640u, 65504u}) {
      EXPECT_EQ(alternating(width, 1, code), RAXEL_COMPRESS_T6) << width;
      EXPECT_EQ(alternating(width, 0, code), code) << width;
      EXPECT_EQ(alternating(width, 1, code, width - 1), code) << width;
      EXPECT_EQ(alternating(width, 1, code, 0), code) << width;
      // In a finished file what is white goes out as white runs, of which the lower row is a single one.
      if (code == RAXEL_COMPRESS_HUFFMAN && width < 64) continue;
      EXPECT_EQ(alternating(width, 0, code, UINT32_MAX, 1), RAXEL_COMPRESS_T6) << width;
      EXPECT_EQ(alternating(width, 1, code, UINT32_MAX, 1), code) << width;
    }
    for (uint32_t width : {16u, 31u, 33u, 48u, 63u, 65u}) {
      if (code == RAXEL_COMPRESS_HUFFMAN && width < 32) continue;
      EXPECT_EQ(alternating(width, 1, code), code) << width;
    }
  }
  for (int code : {RAXEL_COMPRESS_NONE, RAXEL_COMPRESS_PACKBITS, RAXEL_COMPRESS_LZW, RAXEL_COMPRESS_T6}) {
    EXPECT_EQ(alternating(32, 1, code), code);
  }
}

TEST(HostFallback, ARowInAnyPlaceCountsAndTheLastOneIsSeenInTheRowAdded) {
  for (uint32_t at = 0; at < 5; ++at) {
    TestPicture picture(32, 5, 1);
    for (uint32_t x = 0; x < 32; x += 2) picture.setIndex(x, at, 1);
    const Prepared made = prepared(picture, request(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_T4));
    EXPECT_EQ(made.plan.compression, RAXEL_COMPRESS_T6) << at;
    EXPECT_TRUE(made.plan.notes & RAXEL_NOTE_RUNS_AS_T6) << at;
    // It is a fax code, too: the pixels are exchanged.
    EXPECT_EQ(made.row(at)[0], 0x55) << at;
  }
}
