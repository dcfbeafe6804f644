// SPDX-License-Identifier: MIT
// Exports of pictures whose depth nobody reads: every pixel has index 0, and what that looks like depends
// on the palette that the output has.
#include <gtest/gtest.h>

#include "entry/export_host.h"
#include "support/tiff_reader.h"

namespace {

using entry_test::Bytes;
using entry_test::ExportHost;
using entry_test::Picture;

const Bytes kWhiteFirst = {255, 255, 255, 1, 2, 3};
const Bytes kRedFirst = {255, 0, 0, 1, 2, 3};

// A file and the pixels in it.
struct Written {
  Bytes bytes;
  support::TiffFile file;
  Bytes rows;
};

// Two by two pixels that claim to have some depth, none of them 0 in its block.
Written exported(int bits, int32_t mode, const Bytes &palette) {
  ExportHost host;
  host.settings().nBitmapMode = mode;
  Picture picture(8, 2, {{1, 2}, {3, 4}}, palette);
  picture.record().nBits = static_cast<uint16_t>(bits);
  Written out;
  out.bytes = host.runInMemory(picture);
  out.file = support::readTiff(out.bytes);
  out.rows = support::uncompressedRows(out.file);
  return out;
}

// Red, green and blue of an entry in the file's colour map, of 16 bits each.
std::vector<uint32_t> mapped(const support::TiffFile &file, size_t entry) {
  const size_t entries = size_t{1} << file.bitsPerSample();
  return {file.value(320, 1, entry), file.value(320, 1, entries + entry),
          file.value(320, 1, 2 * entries + entry)};
}

TEST(UnreadableDepth, IsBlackInRgb) {
  for (const int bits : {0, 2, 3, 16, 31, 33, 65535}) {
    for (const Bytes &palette : {kWhiteFirst, kRedFirst}) {
      EXPECT_EQ(exported(bits, RAXEL_STORED_MODE_RGB, palette).rows, Bytes(12, 0)) << bits;
    }
  }
}

TEST(UnreadableDepth, HasTheFirstColorWhereTheOutputTakesThePaletteOver) {
  for (const int bits : {0, 2, 3}) {
    for (const int32_t mode : {RAXEL_STORED_MODE_COLOR16, RAXEL_STORED_MODE_COLOR256}) {
      const Written red = exported(bits, mode, kRedFirst);
      EXPECT_EQ(red.rows, Bytes(mode == RAXEL_STORED_MODE_COLOR16 ? 2 : 4, 0))
          << bits << " bits, mode " << mode;
      EXPECT_EQ(mapped(red.file, 0), (std::vector<uint32_t>{0xFFFF, 0, 0})) << bits << ", mode " << mode;
      EXPECT_EQ(mapped(exported(bits, mode, kWhiteFirst).file, 0),
                (std::vector<uint32_t>{0xFFFF, 0xFFFF, 0xFFFF}));
    }
  }
}

TEST(UnreadableDepth, HasTheGreyOfTheFirstColor) {
  // Red has the luminance 0.3 * 255 = 76, which is 12 of 16 greys: they are counted modulo 16.
  for (const int bits : {0, 2, 3}) {
    EXPECT_EQ(exported(bits, RAXEL_STORED_MODE_GREY256, kRedFirst).rows, Bytes(4, 76)) << bits;
    EXPECT_EQ(exported(bits, RAXEL_STORED_MODE_GREY16, kRedFirst).rows, Bytes(2, 0xCC)) << bits;
  }
}

TEST(UnreadableDepth, IsWhiteWhereABilevelPaletteBeginsWithWhite) {
  // Only a depth of 0 is not above the output's; its palette has one entry. All bits of a bilevel
  // picture are inverted when its entry 0 is white, those past its width too.
  EXPECT_EQ(exported(0, RAXEL_STORED_MODE_BILEVEL, kWhiteFirst).rows, Bytes(2, 0xFF));
  EXPECT_EQ(exported(0, RAXEL_STORED_MODE_BILEVEL, kRedFirst).rows, Bytes(2, 0xFF))
      << "only the red byte is looked at";
  EXPECT_EQ(exported(0, RAXEL_STORED_MODE_BILEVEL, {254, 255, 255}).rows, Bytes(2, 0));
}

TEST(UnreadableDepth, AboveTheOutputsHasABlackPalette) {
  for (const auto &[bits, mode] : {std::pair<int, int32_t>{5, RAXEL_STORED_MODE_COLOR16},
                                   {16, RAXEL_STORED_MODE_COLOR16},
                                   {9, RAXEL_STORED_MODE_COLOR256},
                                   {65535, RAXEL_STORED_MODE_COLOR256}}) {
    const Written out = exported(bits, mode, kRedFirst);
    EXPECT_EQ(out.rows, Bytes(mode == RAXEL_STORED_MODE_COLOR16 ? 2 : 4, 0)) << bits;
    const support::TiffEntry *map = out.file.find(320);
    ASSERT_NE(map, nullptr) << bits;
    EXPECT_EQ(map->values, std::vector<uint32_t>(mode == RAXEL_STORED_MODE_COLOR16 ? 48 : 768, 0)) << bits;
  }
  EXPECT_EQ(exported(2, RAXEL_STORED_MODE_BILEVEL, kWhiteFirst).rows, Bytes(2, 0));
  EXPECT_EQ(exported(16, RAXEL_STORED_MODE_GREY256, kRedFirst).rows, Bytes(4, 0));
}

TEST(UnreadableDepth, LeavesTheHostsPixels) {
  ExportHost host;
  Picture picture(8, 2, {{1, 2}, {3, 4}}, kRedFirst);
  const Bytes before = picture.pixels();
  picture.record().nBits = 2;
  for (const int32_t mode :
       {RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_MODE_GREY256, RAXEL_STORED_MODE_COLOR16,
        RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_MODE_RGB}) {
    host.settings().nBitmapMode = mode;
    host.runInMemory(picture);
    EXPECT_EQ(picture.pixels(), before) << mode;
  }
}

}  // namespace
