// SPDX-License-Identifier: MIT
// What bitmap the settings ask for: size, resolution and depth.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "tiff/writer_fixture.h"

namespace {

using support::InUse;

struct Answer {
  double width;
  double height;
  uint16_t bits = 77;
  uint32_t resolution;
};

Answer query(double width, double height, uint32_t resolution) {
  Answer a{width, height, 77, resolution};
  uint16_t colorSpace = 0xABCD;
  uint8_t flags[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  EXPECT_EQ(QueryCellFormat(&a.width, &a.height, &a.bits, &a.resolution, &colorSpace, flags), 0);
  EXPECT_EQ(colorSpace, 0xABCD);
  for (int i = 0; i < 9; ++i) EXPECT_EQ(flags[i], i + 1);
  return a;
}

class CellFormat : public testing::Test {
 protected:
  void SetUp() override {
    unsetenv("DISPLAYINFO");
    SetDisplayInfo(0, 0, 0, 0);
    use.setup.nSizeMode = RAXEL_STORED_SIZE_PICTURE;
    use.setup.nResolutionMode = RAXEL_STORED_RESOLUTION_PICTURE;
    use.setup.dWidth = 6.67;
    use.setup.dHeight = 5.0;
  }
  void TearDown() override { SetDisplayInfo(0, 0, 0, 0); }

  InUse use{RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_COMPRESS_NONE};
};

TEST_F(CellFormat, PictureKeepsItsOwnSizeAndResolution) {
  const Answer a = query(8.0, 4.0, 100);
  EXPECT_EQ(a.width, 800.0);
  EXPECT_EQ(a.height, 400.0);
  EXPECT_EQ(a.resolution, 100u);
  EXPECT_EQ(a.bits, 8);
  EXPECT_EQ(use.setup.dWidth, 8.0);
  EXPECT_EQ(use.setup.dHeight, 4.0);
  EXPECT_EQ(use.setup.tiff.nXResolution, 100);
  EXPECT_EQ(use.setup.tiff.nYResolution, 100);
}

// 29 pixels at 100 dots per inch come back as 28.999..., which is 28 whole pixels.
TEST_F(CellFormat, SizesAreNotRounded) {
  const Answer a = query(29 / 100.0, 57 / 100.0, 100);
  EXPECT_LT(a.width, 29.0);
  EXPECT_EQ(std::trunc(a.width), 28.0);
  EXPECT_EQ(std::trunc(a.height), 56.0);
}

TEST_F(CellFormat, DepthsOfTheBitmapModes) {
  const struct {
    int32_t mode;
    uint16_t bits;
  } rows[] = {{RAXEL_STORED_MODE_BILEVEL, 1},
              {RAXEL_STORED_MODE_GREY16, 4},
              {RAXEL_STORED_MODE_GREY256, 8},
              {RAXEL_STORED_MODE_COLOR8, 4},
              {RAXEL_STORED_MODE_COLOR16, 4},
              {RAXEL_STORED_MODE_COLOR256, 8},
              {RAXEL_STORED_MODE_RGB, 24},
              {0, 77},
              {214, 77},
              {220, 77},
              {223, 77},
              {-1, 77}};
  for (const auto &row : rows) {
    use.setup.nBitmapMode = row.mode;
    EXPECT_EQ(query(1, 1, 96).bits, row.bits) << row.mode;
  }
}

// Without a resolution the picture's extents say nothing about inches: only its proportions count.
TEST_F(CellFormat, ResolutionZeroFitsTheProportionsIntoTheConfiguredSize) {
  const Answer a = query(300, 300, 0);
  EXPECT_EQ(a.width, 480.0);
  EXPECT_EQ(a.height, 480.0);
  EXPECT_EQ(a.resolution, 96u);
  EXPECT_EQ(use.setup.dWidth, 6.67);
}

TEST_F(CellFormat, ResolutionAbsentTakesTheConfiguredSize) {
  double width = 300;
  double height = 100;
  uint16_t bits = 0;
  QueryCellFormat(&width, &height, &bits, nullptr, nullptr, nullptr);
  EXPECT_EQ(width, 6.67 * 96);
  EXPECT_EQ(height, 480.0);
  EXPECT_EQ(use.setup.tiff.nXResolution, 96);
}

TEST_F(CellFormat, TheDisplayGivesSizeAndResolution) {
  use.setup.nSizeMode = RAXEL_STORED_SIZE_DISPLAY;
  use.setup.nResolutionMode = RAXEL_STORED_RESOLUTION_DISPLAY;
  SetDisplayInfo(1024, 768, 72, 80);
  const Answer a = query(4.0, 3.0, 300);
  EXPECT_EQ(use.setup.dWidth, 1024.0 / 72);
  EXPECT_EQ(use.setup.dHeight, 768.0 / 80);
  EXPECT_EQ(use.setup.tiff.nXResolution, 72);  // the horizontal one for both axes
  EXPECT_EQ(use.setup.tiff.nYResolution, 72);
  EXPECT_EQ(a.resolution, 72u);
  // 1024 by trunc(691.2) dots; the picture's 4:3 box is narrower.
  EXPECT_EQ(std::lround(a.height), 691);
  EXPECT_EQ(std::lround(a.width), 1024 - 102);
}

// A display that reports a resolution of 0 is not asked for anything.
TEST_F(CellFormat, DisplayWithoutResolutionIsPassedOver) {
  use.setup.nSizeMode = RAXEL_STORED_SIZE_DISPLAY;
  use.setup.nResolutionMode = RAXEL_STORED_RESOLUTION_DISPLAY;
  setenv("DISPLAYINFO", "1024 768 0 0", 1);
  query(4.0, 3.0, 300);
  unsetenv("DISPLAYINFO");
  EXPECT_EQ(use.setup.dWidth, 6.67);
  EXPECT_EQ(use.setup.tiff.nXResolution, 96);
}

TEST_F(CellFormat, UserSizeAndResolutionAreKept) {
  use.setup.nSizeMode = RAXEL_STORED_SIZE_USER;
  use.setup.nResolutionMode = RAXEL_STORED_RESOLUTION_USER;
  use.setup.tiff.nXResolution = 100;
  use.setup.tiff.nYResolution = 50;
  use.setup.dWidth = 4.0;
  use.setup.dHeight = 8.0;
  const Answer a = query(1.0, 1.0, 300);
  EXPECT_EQ(a.width, 400.0);
  EXPECT_EQ(a.height, 400.0);
  EXPECT_EQ(a.resolution, 100u);
}

TEST_F(CellFormat, ResolutionKeepsSixteenBits) {
  EXPECT_EQ(query(1.0, 1.0, 65536 + 150).resolution, 150u);
  const Answer a = query(1.0, 1.0, 32768);
  EXPECT_EQ(use.setup.tiff.nXResolution, -32768);
  EXPECT_EQ(a.width, -32768.0);
  EXPECT_EQ(a.resolution, 0xFFFF8000u);
}

TEST_F(CellFormat, ResolutionZeroInTheRecordLeavesTheExtents) {
  use.setup.nResolutionMode = RAXEL_STORED_RESOLUTION_USER;
  use.setup.tiff.nXResolution = 0;
  const Answer a = query(4.0, 3.0, 300);
  EXPECT_EQ(a.width, 4.0);
  EXPECT_EQ(a.height, 3.0);
  EXPECT_EQ(a.resolution, 300u);
}

TEST_F(CellFormat, NothingInUseDoesNothing) {
  lpRaster = nullptr;
  EXPECT_EQ(query(8.0, 4.0, 100).width, 8.0);
  double pair[2] = {1, 2};
  RasterAdjustAspect(pair, 3, 4);
  EXPECT_EQ(pair[0], 1);
}

TEST_F(CellFormat, MissingArgumentsDoNothing) {
  double side = 3.0;
  uint32_t resolution = 100;
  QueryCellFormat(nullptr, &side, nullptr, &resolution, nullptr, nullptr);
  QueryCellFormat(&side, nullptr, nullptr, &resolution, nullptr, nullptr);
  EXPECT_EQ(side, 3.0);
  EXPECT_EQ(use.setup.dWidth, 6.67);
  QueryCellFormat(&side, &side, nullptr, &resolution, nullptr, nullptr);
  EXPECT_EQ(side, 300.0);
  RasterAdjustAspect(nullptr, 3, 4);
  ScaleImageSize(nullptr, &side);
  ScaleImageSize(&side, nullptr);
  EXPECT_EQ(side, 300.0);
}

TEST_F(CellFormat, AspectOfASquareReducesTheWidth) {
  double pair[2];
  RasterAdjustAspect(pair, 7, 7);  // the box is 640 by 480
  EXPECT_EQ(pair[0], 5.0);
  EXPECT_EQ(pair[1], 5.0);
}

// 640 by 480 and three to one: 480 - 213.33 = 266.67, and only 266 of it go.
TEST_F(CellFormat, AspectOfAWidePictureReducesTheHeight) {
  double pair[2];
  RasterAdjustAspect(pair, 3, 1);
  EXPECT_EQ(pair[0], 640.0 / 96);
  EXPECT_EQ(pair[1], 214.0 / 96);
}

TEST_F(CellFormat, AspectOfTheBoxItselfChangesNothing) {
  double pair[2];
  RasterAdjustAspect(pair, 640, 480);
  EXPECT_EQ(pair[0], 640.0 / 96);
  EXPECT_EQ(pair[1], 5.0);
}

// A height of 0 makes an infinite proportion, 0 by 0 none at all: neither may trap.
TEST_F(CellFormat, AspectOfEmptyPictures) {
  double pair[2];
  RasterAdjustAspect(pair, 3, 0);
  EXPECT_EQ(pair[1], 0.0);
  RasterAdjustAspect(pair, 0, 3);
  EXPECT_EQ(pair[0], 0.0);
  RasterAdjustAspect(pair, 0, 0);
  EXPECT_EQ(pair[0], 640.0 / 96);
  use.setup.tiff.nXResolution = 0;
  RasterAdjustAspect(pair, 4, 3);
  EXPECT_TRUE(std::isnan(pair[0]));
}

// 480 pixels by a tenth of one, to either side of zero.
TEST_F(CellFormat, APartOfANegativePixelIsZeroLikeAnyOther) {
  use.setup.dWidth = 5.0;
  use.setup.dHeight = 0.001;
  for (const int16_t resolution : {int16_t{96}, int16_t{-96}}) {
    use.setup.tiff.nYResolution = resolution;
    double pair[2];
    RasterAdjustAspect(pair, 7, 7);
    EXPECT_EQ(pair[0], 0.0) << resolution;
    EXPECT_EQ(pair[1], 0.0) << resolution;
  }
}

TEST(ScaleImageSize, CapsTheLongerSideAt22Inches) {
  const auto scaled = [](double w, double h) {
    ScaleImageSize(&w, &h);
    return std::pair(w, h);
  };
  EXPECT_EQ(scaled(10, 5), std::pair(10.0, 5.0));
  EXPECT_EQ(scaled(5, 10), std::pair(5.0, 10.0));
  EXPECT_EQ(scaled(30, 44), std::pair(15.0, 22.0));
  EXPECT_EQ(scaled(44, 11), std::pair(22.0, 5.5));
  EXPECT_EQ(scaled(11, 44), std::pair(5.5, 22.0));
  EXPECT_EQ(scaled(30, 30), std::pair(22.0, 30 * (22.0 / 30)));
  EXPECT_EQ(scaled(22, 3), std::pair(22.0, 3.0));
  EXPECT_EQ(scaled(3, 22), std::pair(3.0, 22.0));
  EXPECT_EQ(scaled(1, 2), std::pair(1.0, 2.0));
}

}  // namespace
