// SPDX-License-Identifier: MIT
// Pictures exported by a host that knows nothing but the exported names.
#include <gtest/gtest.h>

#include <vector>

#include "library/host.h"
#include "library/library.h"
#include "support/golden.h"
#include "support/tiff_reader.h"

namespace {

using namespace library;

// Three by two pixels, bottom row first, blue, green, red, with three bytes of padding a row.
const Picture kSmall = {24,
                        3,
                        2,
                        {},
                        {
                            30, 20, 10, 31, 21, 11, 32, 22, 12, 0, 0, 0,  // bottom
                            60, 50, 40, 61, 51, 41, 62, 52, 42, 0, 0, 0,  // top
                        }};

TEST(Export, ASmallPictureArrivesUprightAndInItsColors) {
  const Written written = exportPicture(kSmall, {});
  EXPECT_EQ(written.result, 0u);
  EXPECT_EQ(written.progress, std::vector<int32_t>{100});
  const support::TiffFile file = support::readTiff(written.file);
  ASSERT_TRUE(file.ok()) << file.error;
  EXPECT_EQ(file.width(), 3u);
  EXPECT_EQ(file.height(), 2u);
  EXPECT_EQ(file.photometric(), 2u);
  EXPECT_EQ(file.value(282), 100u);
  EXPECT_EQ(support::uncompressedRows(file),
            (std::vector<uint8_t>{40, 50, 60, 41, 51, 61, 42, 52, 62, 10, 20, 30, 11, 21, 31, 12, 22, 32}));
}

TEST(Export, WritesEveryModeTheSameOnEveryMachine) {
  const struct {
    int32_t mode;
    const char *name;
  } modes[] = {{RAXEL_ASK_MODE_BILEVEL, "bilevel"}, {RAXEL_ASK_MODE_GREY16, "grey16"},
               {RAXEL_ASK_MODE_GREY256, "grey256"}, {RAXEL_ASK_MODE_COLOR8, "color8"},
               {RAXEL_ASK_MODE_COLOR16, "color16"}, {RAXEL_ASK_MODE_COLOR256, "color256"},
               {RAXEL_ASK_MODE_RGB, "rgb"}};
  const Picture picture = noise(24, 61, 34, 1);
  for (const auto &[mode, name] : modes) {
    const Written written = exportPicture(picture, {mode, RAXEL_ASK_COMPRESS_NONE});
    EXPECT_EQ(written.result, 0u) << name;
    support::golden(std::string("library/61x34-") + name, written.file);
  }
}

TEST(Export, WritesEveryCompressionTheSameOnEveryMachine) {
  const struct {
    int32_t compression;
    const char *name;
  } codings[] = {{RAXEL_ASK_COMPRESS_PACKBITS, "packbits"},
                 {RAXEL_ASK_COMPRESS_HUFFMAN, "huffman"},
                 {RAXEL_ASK_COMPRESS_LZW, "lzw"},
                 {RAXEL_ASK_COMPRESS_T4, "fax3"},
                 {RAXEL_ASK_COMPRESS_T6, "fax4"}};
  const Picture picture = noise(1, 130, 40, 2);
  for (const auto &[compression, name] : codings) {
    const Written written = exportPicture(picture, {RAXEL_ASK_MODE_BILEVEL, compression});
    EXPECT_EQ(written.result, 0u) << name;
    support::golden(std::string("library/130x40-") + name, written.file);
  }
  const Written tiled =
      exportPicture(noise(1, 700, 300, 3), {RAXEL_ASK_MODE_BILEVEL, RAXEL_ASK_COMPRESS_T6, 100, true});
  EXPECT_EQ(tiled.result, 0u);
  EXPECT_TRUE(support::readTiff(tiled.file).tiled);
  support::golden("library/700x300-fax4-tiles", tiled.file);
}

// One setup serves any number of exports, and leaves nothing behind that changes the next.
TEST(Export, RepeatsWithOneSetup) {
  const Handle setup = LOADED(CreateSetup)(0, "/nonexistent/none.ini", nullptr, nullptr);
  const Written first = exportPicture(kSmall, {}, setup);
  exportPicture(noise(8, 40, 20, 4), {RAXEL_ASK_MODE_COLOR256, RAXEL_ASK_COMPRESS_LZW}, setup);
  const Written again = exportPicture(kSmall, {}, setup);
  EXPECT_EQ(again.file, first.file);
  EXPECT_EQ(LOADED(DestroySetup)(setup), 0);
}

TEST(Export, TheDriverWritesTheSamePicture) {
  const Picture picture = noise(24, 40, 30, 6);
  const Written driven = drivePicture(picture, {RAXEL_ASK_MODE_RGB, RAXEL_ASK_COMPRESS_PACKBITS});
  EXPECT_EQ(driven.result, 0u);
  EXPECT_EQ(driven.file, exportPicture(picture, {RAXEL_ASK_MODE_RGB, RAXEL_ASK_COMPRESS_PACKBITS}).file);
  const Written reduced = drivePicture(noise(8, 40, 30, 5), {RAXEL_ASK_MODE_COLOR16});
  EXPECT_EQ(reduced.result, 0u);
  support::golden("library/40x30-driven-color16", reduced.file);
}

}  // namespace
