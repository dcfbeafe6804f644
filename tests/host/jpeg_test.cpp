// SPDX-License-Identifier: MIT
// clang-format off
#include <cstddef>
#include <cstdio>
#include <jpeglib.h>
// clang-format on

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>

#include "pictures/picture.h"

namespace {

using host::Picture;
using Bytes = std::vector<uint8_t>;

struct Jpeg {
  uint32_t width, height;
  int channels;
  J_COLOR_SPACE space;
  Bytes rows;
  int dpi = 0;
  Bytes exif{};
};

Bytes encode(const Jpeg &jpeg) {
  jpeg_compress_struct info;
  jpeg_error_mgr errors;
  info.err = jpeg_std_error(&errors);
  jpeg_create_compress(&info);
  unsigned char *buffer = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&info, &buffer, &size);
  info.image_width = jpeg.width;
  info.image_height = jpeg.height;
  info.input_components = jpeg.channels;
  info.in_color_space = jpeg.space;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, 100, TRUE);
  if (jpeg.dpi) {
    info.density_unit = 1;
    info.X_density = info.Y_density = static_cast<UINT16>(jpeg.dpi);
  }
  jpeg_start_compress(&info, TRUE);
  if (!jpeg.exif.empty()) {
    jpeg_write_marker(&info, JPEG_APP0 + 1, jpeg.exif.data(), static_cast<unsigned>(jpeg.exif.size()));
  }
  Bytes rows = jpeg.rows;
  while (info.next_scanline < info.image_height) {
    JSAMPROW row =
        rows.data() + size_t{jpeg.width} * static_cast<size_t>(jpeg.channels) * info.next_scanline;
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  jpeg_destroy_compress(&info);
  const Bytes file(buffer, buffer + size);
  std::free(buffer);
  return file;
}

// An Exif block that says nothing but an orientation, in either byte order.
Bytes exifOf(uint8_t orientation, bool little) {
  Bytes block{'E', 'x', 'i', 'f', 0, 0};
  const Bytes tiff = little ? Bytes{'I', 'I', 42, 0, 8, 0,           0, 0, 1, 0, 0x12, 1, 3,
                                    0,   1,   0,  0, 0, orientation, 0, 0, 0, 0, 0,    0, 0}
                            : Bytes{'M', 'M', 0, 42, 0, 0, 0,           8, 0, 1, 1, 0x12, 0,
                                    3,   0,   0, 0,  1, 0, orientation, 0, 0, 0, 0, 0,    0};
  block.insert(block.end(), tiff.begin(), tiff.end());
  return block;
}

// 16 by 8 greys, darkening from left to right in the upper half only.
Jpeg greyPicture() {
  Jpeg jpeg{16, 8, 1, JCS_GRAYSCALE, Bytes(16 * 8, 200)};
  for (size_t y = 0; y < 4; ++y) {
    for (size_t x = 0; x < 16; ++x) jpeg.rows[16 * y + x] = static_cast<uint8_t>(200 - 10 * x);
  }
  return jpeg;
}

}  // namespace

TEST(Jpeg, GreyStaysGreyAndKnowsItsResolution) {
  Jpeg jpeg = greyPicture();
  jpeg.dpi = 150;
  Picture picture;
  host::readJpeg(encode(jpeg), picture);
  EXPECT_EQ(picture.view.bits, 8u);
  EXPECT_EQ(picture.view.width, 16u);
  EXPECT_EQ(picture.dpiX, 150);
  for (size_t i = 0; i < jpeg.rows.size(); ++i) EXPECT_NEAR(picture.view.rows[i], jpeg.rows[i], 3);
}

TEST(Jpeg, ColorsComeAsRedGreenBlue) {
  Bytes rows;
  for (int i = 0; i < 64; ++i) rows.insert(rows.end(), {220, 120, 20});
  Picture picture;
  host::readJpeg(encode({8, 8, 3, JCS_RGB, rows}), picture);
  EXPECT_EQ(picture.view.bits, 24u);
  EXPECT_NEAR(picture.view.rows[0], 220, 4);
  EXPECT_NEAR(picture.view.rows[1], 120, 4);
  EXPECT_NEAR(picture.view.rows[2], 20, 4);
}

// Adobe's files store 255 - ink: full cyan ink is 0, and paper stays where the other inks are 255.
TEST(Jpeg, InksBecomeColorsOnPaper) {
  Bytes rows;
  for (int i = 0; i < 64; ++i) rows.insert(rows.end(), {0, 255, 255, 255});
  Picture picture;
  host::readJpeg(encode({8, 8, 4, JCS_CMYK, rows}), picture);
  EXPECT_EQ(picture.view.bits, 24u);
  EXPECT_NEAR(picture.view.rows[0], 0, 4);
  EXPECT_NEAR(picture.view.rows[1], 255, 4);
  EXPECT_NEAR(picture.view.rows[2], 255, 4);
}

TEST(Jpeg, ExifTurnsThePictureUpright) {
  for (bool little : {true, false}) {
    Jpeg jpeg = greyPicture();
    jpeg.exif = exifOf(6, little);
    Picture picture;
    host::readJpeg(encode(jpeg), picture);
    ASSERT_EQ(picture.view.width, 8u);
    ASSERT_EQ(picture.view.height, 16u);
    // Turned clockwise: the stored left edge is on top, the stored upper half on the right.
    EXPECT_NEAR(picture.view.rows[7], 200, 5);
    EXPECT_NEAR(picture.view.rows[8 * 15 + 7], 50, 5);
    EXPECT_NEAR(picture.view.rows[8 * 15], 200, 5);
  }
}

namespace {

// An Exif block with the resolutions 600/2 and 150/1 and their unit.
Bytes exifWithResolution(uint8_t unit) {
  return {'E', 'x',  'i', 'f', 0, 0,                        //
          'M', 'M',  0,   42,  0, 0, 0, 8, 0, 3,            //
          1,   0x1A, 0,   5,   0, 0, 0, 1, 0, 0,    0, 50,  //
          1,   0x1B, 0,   5,   0, 0, 0, 1, 0, 0,    0, 58,  //
          1,   0x28, 0,   3,   0, 0, 0, 1, 0, unit, 0, 0,   //
          0,   0,    0,   0,                                //
          0,   0,    2,   88,  0, 0, 0, 2, 0, 0,    0, 150, 0, 0, 0, 1};
}

std::array<double, 2> resolutionOf(uint8_t exifUnit, int dpi) {
  Jpeg jpeg = greyPicture();
  jpeg.dpi = dpi;
  jpeg.exif = exifWithResolution(exifUnit);
  Picture picture;
  host::readJpeg(encode(jpeg), picture);
  return {picture.dpiX, picture.dpiY};
}

}  // namespace

TEST(Jpeg, TheResolutionOfExifCountsWhereJfifHasNone) {
  using Pair = std::array<double, 2>;
  EXPECT_EQ(resolutionOf(2, 0), (Pair{300, 150}));
  EXPECT_EQ(resolutionOf(3, 0), (Pair{762, 381}));  // centimetres
  EXPECT_EQ(resolutionOf(1, 0), (Pair{0, 0}));      // no unit
  EXPECT_EQ(resolutionOf(2, 72), (Pair{72, 72}));
}

TEST(Jpeg, DamagedExifIsIgnored) {
  const Bytes whole = exifOf(6, true);
  for (size_t length = 0; length < whole.size(); ++length) {
    Jpeg jpeg = greyPicture();
    jpeg.exif = Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
    Picture picture;
    host::readJpeg(encode(jpeg), picture);
    if (length < 28) {
      EXPECT_EQ(picture.view.width, 16u) << length;
    }
  }
  for (size_t at = 0; at < whole.size(); ++at) {
    for (uint8_t value : {uint8_t{0}, uint8_t{0xFF}, uint8_t{9}}) {
      Jpeg jpeg = greyPicture();
      jpeg.exif = whole;
      jpeg.exif[at] = value;
      Picture picture;
      host::readJpeg(encode(jpeg), picture);
      EXPECT_EQ(picture.view.width * picture.view.height, 128u);
    }
  }
}

TEST(Jpeg, TruncatedPicturesAreRefused) {
  const Bytes file = encode(greyPicture());
  for (size_t length = 0; length + 4 < file.size(); ++length) {
    const Bytes part(file.begin(), file.begin() + static_cast<ptrdiff_t>(length));
    Picture picture;
    EXPECT_THROW(host::readJpeg(part, picture), host::Unreadable) << length << " of " << file.size();
  }
}

// Pages of memory that this process has in use.
long residentPages() {
  long size = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> size >> resident;
  return resident;
}

// A short file can promise any size: it is believed only as far as its data go.
TEST(Jpeg, PromisesOfPixelsCostNothing) {
  const auto refusal = [](uint8_t high) {
    Bytes file = encode({16, 8, 3, JCS_RGB, Bytes(16 * 8 * 3, 200)});
    const uint8_t frame[] = {0xFF, 0xC0};  // then a length, the depth, the height and the width
    const auto at =
        std::search(file.begin(), file.end(), std::begin(frame), std::end(frame)) - file.begin();
    for (const ptrdiff_t byte : {5, 7}) file[static_cast<size_t>(at + byte)] = high;
    Picture picture;
    const long before = residentPages();
    try {
      host::readJpeg(file, picture);
    } catch (const host::Unreadable &why) {
      EXPECT_LT(residentPages(), before + 4000);  // of some 200000
      return std::string(why.what());
    }
    return std::string();
  };
  EXPECT_EQ(refusal(0x40).substr(0, 10), "is damaged");  // 16400 by 16392
  EXPECT_EQ(refusal(0xFF), "is too large: 65296 by 65288 pixels");
}

// One of 4 GiB of pixels takes twice as much until the first of them is whole.
TEST(Jpeg, AProgressivePictureMayBeTooLarge) {
  Bytes file = encode({16, 8, 1, JCS_GRAYSCALE, Bytes(16 * 8, 200)});
  const uint8_t frame[] = {0xFF, 0xC0};
  const auto at = static_cast<size_t>(
      std::search(file.begin(), file.end(), std::begin(frame), std::end(frame)) - file.begin());
  file[at + 1] = 0xC2;
  for (const size_t byte : {size_t{5}, size_t{7}}) {
    file[at + byte] = 0xFD;
    file[at + byte + 1] = 0xE8;
  }
  file.resize(size_t{9} << 20);  // a bit for each block, and more
  Picture picture;
  try {
    host::readJpeg(file, picture);
    ADD_FAILURE() << "was read";
  } catch (const host::Unreadable &why) {
    EXPECT_STREQ(why.what(),
                 "is too large: 65000 by 65000 pixels, which as a progressive JPEG take too much memory");
  }
}

TEST(Jpeg, DamagedBytesAreReadOrRefused) {
  const Bytes file = encode(greyPicture());
  for (size_t at = 0; at < file.size(); ++at) {
    Bytes damaged = file;
    damaged[at] ^= 0x55;
    Picture picture;
    try {
      host::readJpeg(damaged, picture);
    } catch (const host::Unreadable &) {
    }
  }
}
