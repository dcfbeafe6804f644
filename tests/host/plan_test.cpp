// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "host/pictures.h"

using host_test::request;

namespace {

// A picture of any size whose pixels nobody looks at.
RaxelPicture sized(uint32_t width, uint32_t height, uint32_t bits = 24) {
  static const uint8_t pixel[3] = {};
  return {width, height, bits, pixel, (size_t{width} * bits + 7) / 8, nullptr, 0};
}

int planned(const RaxelPicture &picture, const RaxelRequest &wanted, RaxelPlan &plan) {
  return raxelHostPlan(&picture, &wanted, &plan);
}

int codeOf(const RaxelPicture &picture, const RaxelRequest &wanted) {
  RaxelPlan plan;
  return planned(picture, wanted, plan);
}

}  // namespace

TEST(HostPlan, MakesOddHeightsEvenAndSaysSo) {
  RaxelPlan plan;
  ASSERT_EQ(planned(sized(10, 7), request(RAXEL_MODE_RGB), plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.rows, 7u);
  EXPECT_EQ(plan.height, 8u);
  EXPECT_EQ(plan.notes, unsigned{RAXEL_NOTE_ROW_REPEATED});
  ASSERT_EQ(planned(sized(10, 8), request(RAXEL_MODE_RGB), plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.height, 8u);
  EXPECT_EQ(plan.notes, 0u);
}

TEST(HostPlan, PadsRowsToFourBytes) {
  RaxelPlan plan;
  ASSERT_EQ(planned(sized(5, 2), request(RAXEL_MODE_RGB), plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.stride, 16u);
  EXPECT_EQ(plan.bytes, 32u);
  EXPECT_EQ(plan.colors, 0u);
  ASSERT_EQ(planned(sized(33, 2), request(RAXEL_MODE_BILEVEL), plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.stride, 8u);
  EXPECT_EQ(plan.colors, 2u);
  ASSERT_EQ(planned(sized(9, 2), request(RAXEL_MODE_COLOR16), plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.stride, 8u);
  EXPECT_EQ(plan.colors, 16u);
}

// 29 / 100 * 100 truncates to 28: the size in inches that a host would compute first is not exact.
TEST(HostPlan, ExtentsAreExactAtEverySizeAndResolution) {
  for (int dpi = 32; dpi <= 400; ++dpi) {
    for (uint32_t pixels : {1u, 2u, 28u, 29u, 57u, 58u, 427u, 640u, 3507u, 65534u}) {
      RaxelRequest wanted = request(RAXEL_MODE_BILEVEL);
      wanted.dpiX = wanted.dpiY = dpi;
      RaxelPlan plan;
      ASSERT_EQ(planned(sized(pixels, pixels, 1), wanted, plan), RAXEL_HOST_OK);
      const double across = plan.extentX / 32768.0 * dpi, down = plan.extentY / 32768.0 * dpi;
      ASSERT_EQ(std::trunc(across), plan.width) << pixels << " at " << dpi;
      ASSERT_EQ(static_cast<uint32_t>((std::trunc(down)) + 1) & ~1u, plan.height);
      ASSERT_EQ(std::ceil(plan.queryX / 32768.0 * dpi), plan.width);
      ASSERT_EQ(std::ceil(plan.queryY / 32768.0 * dpi), plan.height);
    }
  }
}

// The filter is told what it takes, and the pixels are those of the true resolution.
TEST(HostPlan, PlansFinishedFilesAtEveryResolution) {
  RaxelRequest wanted = request(RAXEL_MODE_BILEVEL);
  wanted.dpiX = 600;
  wanted.dpiY = 20.5;
  EXPECT_EQ(codeOf(sized(60, 40, 1), wanted), RAXEL_HOST_BAD_RESOLUTION);
  wanted.finish = 1;
  wanted.inchesX = 1;
  wanted.inchesY = 2;
  RaxelPlan plan;
  ASSERT_EQ(planned(sized(60, 40, 1), wanted, plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.width, 600u);
  EXPECT_EQ(plan.rows, 41u);
  EXPECT_EQ(plan.dpiX, 600);
  EXPECT_EQ(plan.dpiY, 20.5);
  EXPECT_EQ(plan.filterDpiX, 400);
  EXPECT_EQ(plan.filterDpiY, 32);
  EXPECT_EQ(std::trunc(plan.extentX / 32768.0 * 400), 600);
  wanted.dpiX = 100001;
  EXPECT_EQ(codeOf(sized(60, 40, 1), wanted), RAXEL_HOST_BAD_RESOLUTION);
  wanted.dpiX = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(codeOf(sized(60, 40, 1), wanted), RAXEL_HOST_BAD_RESOLUTION);
}

TEST(HostPlan, RefusesWaysToFinishThatThereAreNot) {
  for (const auto &[finish, strips] : {std::pair{2, 0}, {-1, 0}, {1, RAXEL_STRIPS_ONE + 1}, {1, -1}}) {
    RaxelRequest wanted = request(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_T6);
    wanted.finish = finish;
    wanted.strips = strips;
    EXPECT_EQ(codeOf(sized(60, 40, 1), wanted), RAXEL_HOST_BAD_ARGUMENT) << finish << " " << strips;
  }
}

TEST(HostPlan, CodesOneStripInFinishedFaxFilesOnly) {
  RaxelRequest wanted = request(RAXEL_MODE_BILEVEL);
  wanted.strips = RAXEL_STRIPS_ONE;
  wanted.compression = RAXEL_COMPRESS_T4;
  EXPECT_EQ(codeOf(sized(60, 40, 1), wanted), RAXEL_HOST_BAD_ARGUMENT);
  wanted.finish = 1;
  EXPECT_EQ(codeOf(sized(60, 40, 1), wanted), RAXEL_HOST_OK);
  wanted.compression = RAXEL_COMPRESS_LZW;
  EXPECT_EQ(codeOf(sized(60, 40, 1), wanted), RAXEL_HOST_ONE_STRIP_NEEDS_FAX);
  wanted.compression = RAXEL_COMPRESS_T6;
  wanted.layout = RAXEL_LAYOUT_TILES;
  EXPECT_EQ(codeOf(sized(60, 40, 1), wanted), RAXEL_HOST_ONE_STRIP_NEEDS_FAX);
}

// Header 8, count 2, 13 entries of 12, next directory 4, rationals 16: 186; a colour map adds an entry.
TEST(HostPlan, KnowsTheSizeWithoutCompression) {
  RaxelPlan plan;
  ASSERT_EQ(planned(sized(10, 4), request(RAXEL_MODE_RGB), plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.uncompressedBytes, 186u + 120);
  ASSERT_EQ(planned(sized(10, 4), request(RAXEL_MODE_COLOR16), plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.uncompressedBytes, 198u + 96 + 20);
  ASSERT_EQ(planned(sized(10, 4), request(RAXEL_MODE_COLOR256), plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.uncompressedBytes, 198u + 1536 + 40);
  ASSERT_EQ(planned(sized(10, 4), request(RAXEL_MODE_BILEVEL), plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.uncompressedBytes, 186u + 8);
}

// The finished directory adds a count of 2, 14 entries of 12, 4 for the next one, two rationals and 12
// bytes of Software; RGB's three depths take 6 more and a colour map's entry 12.
TEST(HostPlan, KnowsTheSizeOfAFinishedFileWithoutCompression) {
  RaxelPlan plan;
  RaxelRequest wanted = request(RAXEL_MODE_GREY256);
  wanted.finish = 1;
  ASSERT_EQ(planned(sized(10, 4), wanted, plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.uncompressedBytes, 186u + 40 + 202);
  wanted.mode = RAXEL_MODE_RGB;
  ASSERT_EQ(planned(sized(10, 4), wanted, plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.uncompressedBytes, 186u + 120 + 208);
  wanted.mode = RAXEL_MODE_COLOR16;
  ASSERT_EQ(planned(sized(9, 3), wanted, plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.uncompressedBytes, 198u + 96 + 20 + 214);
}

TEST(HostPlan, ScalesToTheSizeAskedFor) {
  RaxelRequest wanted = request(RAXEL_MODE_RGB);
  wanted.dpiX = 100;
  wanted.dpiY = 50;
  wanted.inchesX = 2;
  wanted.inchesY = 1;
  RaxelPlan plan;
  ASSERT_EQ(planned(sized(10, 10), wanted, plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.width, 200u);
  EXPECT_EQ(plan.rows, 50u);
  EXPECT_EQ(plan.notes, unsigned{RAXEL_NOTE_SCALED});
  wanted.inchesY = 0;  // the other side follows: 2 inches square
  ASSERT_EQ(planned(sized(10, 10), wanted, plan), RAXEL_HOST_OK);
  EXPECT_EQ(plan.rows, 100u);
  wanted.inchesX = 0.001;
  EXPECT_EQ(codeOf(sized(10, 10), wanted), RAXEL_HOST_BAD_SIZE);
}

TEST(HostPlan, RefusesSizesThatNoFileHolds) {
  EXPECT_EQ(codeOf(sized(65535, 2, 1), request(RAXEL_MODE_BILEVEL)), RAXEL_HOST_OK);
  EXPECT_EQ(codeOf(sized(65536, 2, 1), request(RAXEL_MODE_BILEVEL)), RAXEL_HOST_TOO_WIDE);
  EXPECT_EQ(codeOf(sized(2, 65534, 1), request(RAXEL_MODE_BILEVEL)), RAXEL_HOST_OK);
  EXPECT_EQ(codeOf(sized(2, 65535, 1), request(RAXEL_MODE_BILEVEL)), RAXEL_HOST_TOO_TALL);
  EXPECT_EQ(codeOf(sized(65535, 65534, 1), request(RAXEL_MODE_BILEVEL)), RAXEL_HOST_OK);
  EXPECT_EQ(codeOf(sized(65535, 65534, 1), request(RAXEL_MODE_GREY256)), RAXEL_HOST_TOO_LARGE);
}

TEST(HostPlan, RefusesBadPictures) {
  const RaxelRequest wanted = request(RAXEL_MODE_RGB);
  EXPECT_EQ(codeOf(sized(0, 2), wanted), RAXEL_HOST_BAD_PICTURE);
  EXPECT_EQ(codeOf(sized(2, 0), wanted), RAXEL_HOST_BAD_PICTURE);
  EXPECT_EQ(codeOf(sized(2, 2, 16), wanted), RAXEL_HOST_BAD_PICTURE);
  EXPECT_EQ(codeOf(sized(RAXEL_HOST_LONGEST_SIDE, 1), wanted), RAXEL_HOST_TOO_WIDE);
  EXPECT_EQ(codeOf(sized(RAXEL_HOST_LONGEST_SIDE + 1, 1), wanted), RAXEL_HOST_BAD_PICTURE);
  EXPECT_EQ(codeOf(sized(1, RAXEL_HOST_LONGEST_SIDE), wanted), RAXEL_HOST_TOO_TALL);
  EXPECT_EQ(codeOf(sized(1, RAXEL_HOST_LONGEST_SIDE + 1), wanted), RAXEL_HOST_BAD_PICTURE);
  RaxelPicture narrow = sized(2, 2);
  narrow.stride = 5;
  EXPECT_EQ(codeOf(narrow, wanted), RAXEL_HOST_BAD_PICTURE);
  RaxelPicture none = sized(2, 2);
  none.rows = nullptr;
  EXPECT_EQ(codeOf(none, wanted), RAXEL_HOST_BAD_PICTURE);
}

TEST(HostPlan, RefusesValuesOutsideTheirRange) {
  const RaxelPicture picture = sized(2, 2);
  for (int dpi : {31, 401, 0, -96}) {
    RaxelRequest wanted = request(RAXEL_MODE_RGB);
    wanted.dpiY = dpi;
    EXPECT_EQ(codeOf(picture, wanted), RAXEL_HOST_BAD_RESOLUTION) << dpi;
  }
  for (double inches :
       {-1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    RaxelRequest wanted = request(RAXEL_MODE_RGB);
    wanted.inchesX = inches;
    EXPECT_EQ(codeOf(picture, wanted), RAXEL_HOST_BAD_SIZE);
  }
  for (int32_t RaxelRequest::*field :
       {&RaxelRequest::mode, &RaxelRequest::compression, &RaxelRequest::layout, &RaxelRequest::treatment,
        &RaxelRequest::dither, &RaxelRequest::quantizer}) {
    for (int value : {-1, 77}) {
      RaxelRequest wanted = request(RAXEL_MODE_RGB);
      wanted.*field = value;
      EXPECT_EQ(codeOf(picture, wanted), RAXEL_HOST_BAD_ARGUMENT);
    }
  }
}

TEST(HostPlan, RefusesNullPointersAndClearsThePlan) {
  const RaxelPicture picture = sized(2, 2);
  const RaxelRequest wanted = request(RAXEL_MODE_RGB);
  RaxelPlan plan;
  std::memset(&plan, 0x5A, sizeof plan);
  EXPECT_EQ(raxelHostPlan(nullptr, &wanted, &plan), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(plan.width, 0u);
  EXPECT_EQ(raxelHostPlan(&picture, nullptr, &plan), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(raxelHostPlan(&picture, &wanted, nullptr), RAXEL_HOST_BAD_ARGUMENT);
  raxelHostDefaults(nullptr);
}

TEST(HostPlan, RefusesFaxOfMoreThanOneBit) {
  for (int code : {RAXEL_COMPRESS_HUFFMAN, RAXEL_COMPRESS_T4, RAXEL_COMPRESS_T6}) {
    for (int mode = 0; mode < RAXEL_MODES; ++mode) {
      EXPECT_EQ(codeOf(sized(8, 8), request(mode, code)),
                mode == RAXEL_MODE_BILEVEL ? RAXEL_HOST_OK : RAXEL_HOST_FAX_NEEDS_1_BIT);
    }
  }
  RaxelPlan plan;
  const RaxelPicture picture = sized(8, 8);
  const RaxelRequest wanted = request(RAXEL_MODE_GREY256, RAXEL_COMPRESS_T4);
  EXPECT_EQ(raxelHostPlanAnyway(&picture, &wanted, &plan), RAXEL_HOST_OK);
}

TEST(HostPlan, RefusesTilesThatReadersCannotOpen) {
  RaxelRequest wanted = request(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_T6);
  wanted.layout = RAXEL_LAYOUT_TILES;
  EXPECT_EQ(codeOf(sized(2016, 200), wanted), RAXEL_HOST_OK);
  EXPECT_EQ(codeOf(sized(2017, 200), wanted), RAXEL_HOST_TILES_TOO_WIDE);
  EXPECT_EQ(codeOf(sized(512, 128), wanted), RAXEL_HOST_OK);
  EXPECT_EQ(codeOf(sized(513, 128), wanted), RAXEL_HOST_TILES_TOO_FLAT);
  EXPECT_EQ(codeOf(sized(513, 129), wanted), RAXEL_HOST_OK);
  for (int code : {RAXEL_COMPRESS_NONE, RAXEL_COMPRESS_PACKBITS, RAXEL_COMPRESS_HUFFMAN, RAXEL_COMPRESS_LZW,
                   RAXEL_COMPRESS_T4}) {
    wanted.compression = code;
    EXPECT_EQ(codeOf(sized(512, 128), wanted), RAXEL_HOST_TILES_NEED_T6);
  }
}
