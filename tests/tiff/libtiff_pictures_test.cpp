// SPDX-License-Identifier: MIT
// libtiff opens whole files of the writer and finds the pixels that went in: upright, in the file's
// colour order, with the right palette, polarity and resolution.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <string>

#include "support/cases.h"
#include "support/random.h"
#include "support/temp_dir.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::InUse;
using support::Pixels;

int errors = 0;
int warnings = 0;
void countError(const char *, const char *, va_list) {
  ++errors;
}
void countWarning(const char *, const char *, va_list) {
  ++warnings;
}

// Counts libtiff's complaints instead of printing them.
class Complaints {
 public:
  Complaints() : error_(TIFFSetErrorHandler(countError)), warning_(TIFFSetWarningHandler(countWarning)) {
    errors = warnings = 0;
  }
  ~Complaints() {
    TIFFSetErrorHandler(error_);
    TIFFSetWarningHandler(warning_);
  }
  Complaints(const Complaints &) = delete;
  Complaints &operator=(const Complaints &) = delete;

 private:
  TIFFErrorHandler error_;
  TIFFErrorHandler warning_;
};

template <class T>
T field(TIFF *tiff, uint32_t tag) {
  T value{};
  TIFFGetFieldDefaulted(tiff, tag, &value);
  return value;
}

Bytes readStrips(TIFF *tiff) {
  Bytes rows;
  for (uint32_t strip = 0; strip < TIFFNumberOfStrips(tiff); ++strip) {
    Bytes part(static_cast<size_t>(TIFFStripSize(tiff)));
    const tmsize_t n = TIFFReadEncodedStrip(tiff, strip, part.data(), static_cast<tmsize_t>(part.size()));
    if (n < 0) return {};
    rows.insert(rows.end(), part.begin(), part.begin() + n);
  }
  return rows;
}

// The rows of a tiled bilevel picture, put together again.
Bytes readTiles(TIFF *tiff, const support::Picture &picture) {
  Bytes rows(size_t{picture.rowBytes()} * picture.height);
  Bytes tile(static_cast<size_t>(TIFFTileSize(tiff)));
  for (uint32_t y = 0; y < picture.height; y += 128) {
    for (uint32_t x = 0; x < picture.width; x += 512) {
      if (TIFFReadTile(tiff, tile.data(), x, y, 0, 0) < 0) return {};
      for (uint32_t row = 0; row < 128 && y + row < picture.height; ++row) {
        for (uint32_t i = 0; i < 64 && x / 8 + i < picture.rowBytes(); ++i) {
          rows[size_t{y + row} * picture.rowBytes() + x / 8 + i] = tile[row * 64 + i];
        }
      }
    }
  }
  return rows;
}

// The rows that a reader must find: top row first, without padding, red before green and blue. Bits
// past the width of a bilevel row say nothing.
Bytes expectedRows(const support::Picture &picture, bool invert) {
  Bytes rows;
  for (uint32_t row = picture.height; row-- > 0;) {
    const size_t at = size_t{row} * picture.stride();
    Bytes bytes = support::slice(picture.pixels, at, picture.rowBytes());
    for (size_t i = 0; picture.bits == 24 && i + 3 <= bytes.size(); i += 3)
      std::swap(bytes[i], bytes[i + 2]);
    for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(invert ? ~byte : byte);
    rows.insert(rows.end(), bytes.begin(), bytes.end());
  }
  return rows;
}

void clearPadBits(Bytes &rows, const support::Picture &picture) {
  const uint32_t used = picture.width * picture.bits % 8;
  if (used == 0) return;
  for (size_t last = picture.rowBytes() - 1; last < rows.size(); last += picture.rowBytes()) {
    rows[last] = static_cast<uint8_t>(rows[last] & (0xFF00 >> used));
  }
}

void checkPalette(TIFF *tiff, const support::Picture &picture) {
  uint16_t *channels[3] = {};
  ASSERT_EQ(TIFFGetField(tiff, TIFFTAG_COLORMAP, &channels[0], &channels[1], &channels[2]), 1);
  for (size_t i = 0; i < size_t{1} << picture.bits; ++i) {
    for (size_t c = 0; c < 3; ++c) ASSERT_EQ(channels[c][i], picture.palette[3 * i + c] * 257);
  }
}

void check(const support::Picture &picture, int32_t mode, int32_t compression, uint16_t layout) {
  const support::TempDir dir;
  const std::string name = dir.file("picture.tif");
  InUse use(mode, compression, layout);
  use.setup.tiff.nXResolution = 300;
  use.setup.tiff.nYResolution = 72;
  const Handle file = kvlOpen(name.c_str(), nullptr, KVL_OUTPUT);
  {
    const Pixels block(picture.pixels);
    ASSERT_EQ(support::writePicture(file, picture, block.handle()), 0);
  }
  ASSERT_EQ(kvlClose(file), 0);

  const Complaints complaints;
  TIFF *tiff = TIFFOpen(name.c_str(), "r");
  ASSERT_NE(tiff, nullptr);
  EXPECT_EQ(field<uint32_t>(tiff, TIFFTAG_IMAGEWIDTH), picture.width);
  EXPECT_EQ(field<uint32_t>(tiff, TIFFTAG_IMAGELENGTH), picture.height);
  EXPECT_EQ(field<uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL), picture.bits == 24 ? 3 : 1);
  EXPECT_EQ(field<uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE), picture.bits == 24 ? 8 : picture.bits);
  EXPECT_EQ(field<float>(tiff, TIFFTAG_XRESOLUTION), 300.0F);
  EXPECT_EQ(field<float>(tiff, TIFFTAG_YRESOLUTION), 72.0F);
  EXPECT_EQ(field<uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT), RESUNIT_INCH);
  const bool fax = compression != RAXEL_STORED_COMPRESS_NONE &&
                   compression != RAXEL_STORED_COMPRESS_PACKBITS &&
                   compression != RAXEL_STORED_COMPRESS_LZW;
  Bytes expected = expectedRows(picture, picture.bits == 1 && (picture.palette[0] == 255) != fax);
  Bytes found = layout == RAXEL_STORED_LAYOUT_TILES ? readTiles(tiff, picture) : readStrips(tiff);
  clearPadBits(expected, picture);
  clearPadBits(found, picture);
  EXPECT_EQ(found, expected);
  if (mode == RAXEL_STORED_MODE_COLOR16 || mode == RAXEL_STORED_MODE_COLOR256) checkPalette(tiff, picture);
  TIFFClose(tiff);
  EXPECT_EQ(errors, 0);
  // The entries of a tiled file are not in ascending order, and of RGB's three samples one has its bits
  // stated.
  if (layout == RAXEL_STORED_LAYOUT_STRIPS && mode != RAXEL_STORED_MODE_RGB) {
    EXPECT_EQ(warnings, 0);
  }
}

support::Picture randomPicture(support::Random &random, int32_t mode, uint32_t width, uint32_t height) {
  support::Picture picture{width, height, support::depthOfMode(mode), {}, {}};
  picture.pixels = random.bytes(size_t{picture.stride()} * height);
  if (random.chance(50)) {
    for (size_t i = 1; i < picture.pixels.size(); ++i) {
      if (random.chance(80)) picture.pixels[i] = picture.pixels[i - 1];
    }
  }
  picture.palette = random.bytes(768);
  const uint8_t first = random.chance(50) ? 255 : 0;
  if (picture.bits == 1) std::fill_n(picture.palette.begin(), 3, first);
  return picture;
}

TEST(LibtiffOpens, RandomPicturesOfEveryModeAndCoderShowTheirPixels) {
  support::Random random(5);
  for (size_t n = support::cases(150); n > 0; --n) {
    const int32_t modes[] = {RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_MODE_COLOR16,
                             RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_MODE_RGB};
    const int32_t mode = modes[random.between(0, 3)];
    const int32_t all[] = {RAXEL_STORED_COMPRESS_NONE, RAXEL_STORED_COMPRESS_PACKBITS,
                           RAXEL_STORED_COMPRESS_LZW,  RAXEL_STORED_COMPRESS_HUFFMAN,
                           RAXEL_STORED_COMPRESS_T4,   RAXEL_STORED_COMPRESS_T6};
    const int32_t compression = all[random.between(0, mode == RAXEL_STORED_MODE_BILEVEL ? 5 : 2)];
    // libtiff misreads modified Huffman strips whose last row is one byte, and LZW writes no pixel for a
    // strip of one byte.
    const auto width =
        static_cast<uint32_t>(random.between(compression == RAXEL_STORED_COMPRESS_HUFFMAN ? 64 : 9, 300));
    const auto height = static_cast<uint32_t>(random.between(1, 40));
    SCOPED_TRACE(testing::Message() << mode << " " << compression << " " << width << "x" << height);
    ASSERT_NO_FATAL_FAILURE(
        check(randomPicture(random, mode, width, height), mode, compression, RAXEL_STORED_LAYOUT_STRIPS));
    if (HasFailure()) return;
  }
}

// Two rows of tiles or more, and rows of at most 2016 pixels, make files that readers can show.
TEST(LibtiffOpens, TiledPicturesShowTheirPixels) {
  support::Random random(6);
  for (size_t n = support::cases(15); n > 0; --n) {
    const auto width = static_cast<uint32_t>(random.between(1, 2016));
    const auto height = static_cast<uint32_t>(random.between(129, 400));
    SCOPED_TRACE(testing::Message() << width << "x" << height);
    ASSERT_NO_FATAL_FAILURE(check(randomPicture(random, RAXEL_STORED_MODE_BILEVEL, width, height),
                                  RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6,
                                  RAXEL_STORED_LAYOUT_TILES));
    if (HasFailure()) return;
  }
}

// Greys whose palette has luminance i at index i are not remapped, and come out as they went in.
TEST(LibtiffOpens, GreysThatAreNotRemappedStayWhereTheyAre) {
  support::Random random(8);
  Bytes palette;
  for (int32_t i = 0; i < 256; ++i) {
    const int32_t blue = MapColors(i, i, i, nullptr, 256, 0) == i ? i : i + 1;
    const int32_t green = MapColors(i, i, blue, nullptr, 256, 0) == i ? i : i + 1;
    palette.insert(palette.end(), {static_cast<uint8_t>(i), static_cast<uint8_t>(green),
                                   static_cast<uint8_t>(green == i ? blue : i)});
  }
  for (const int32_t mode : {RAXEL_STORED_MODE_GREY16, RAXEL_STORED_MODE_GREY256}) {
    for (const int32_t compression :
         {RAXEL_STORED_COMPRESS_NONE, RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_STORED_COMPRESS_LZW}) {
      support::Picture picture = randomPicture(random, mode, 33, 17);
      picture.palette = palette;
      SCOPED_TRACE(mode);
      check(picture, mode, compression, RAXEL_STORED_LAYOUT_STRIPS);
    }
  }
}

}  // namespace
