// SPDX-License-Identifier: MIT
// The pixel size that an export will have.
#include "setup/geometry.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>

#include "setup/settings.h"
#include "support/globals.h"

namespace {

class Geometry : public testing::Test {
 protected:
  Geometry() {
    std::memset(static_cast<void *>(&record_), 0, sizeof record_);
    setup::useDefaults(record_);
    lpRaster = &record_;
  }

  RasterInfoResult raster(const RasterPictureInfo &picture) {
    RasterInfoResult result = {-7, -7, -7};
    GetRasterInfo(0, &picture, &result);
    return result;
  }

  void fit(double width, double height) { AdjustAspect(pair_, width, height); }

  support::Globals globals_;
  RasterSetup record_;
  double pair_[2] = {-1, -1};
};

// display resolution, unused, picture resolution, picture width, height, display width, height
constexpr RasterPictureInfo kPicture = {96, 0, 100, 800, 400, 1280, 1078};

TEST_F(Geometry, TheDefaultsTakeThePicturesOwnSizeAndResolution) {
  const RasterInfoResult r = raster(kPicture);
  EXPECT_EQ(record_.dWidth, 8.0);
  EXPECT_EQ(record_.dHeight, 4.0);
  EXPECT_EQ(record_.tiff.nXResolution, 100);
  EXPECT_EQ(record_.tiff.nYResolution, 100);
  EXPECT_EQ(r.nWidth, 800);
  EXPECT_EQ(r.nHeight, 400);
  EXPECT_EQ(r.nDepth, 8);
}

TEST_F(Geometry, TheDisplayGivesSizeAndResolution) {
  record_.nSizeMode = RAXEL_STORED_SIZE_DISPLAY;
  record_.nResolutionMode = RAXEL_STORED_RESOLUTION_DISPLAY;
  const RasterInfoResult r = raster({64, 0, 100, 800, 400, 640, 640});
  EXPECT_EQ(record_.dWidth, 10.0);
  EXPECT_EQ(record_.dHeight, 10.0);
  EXPECT_EQ(record_.tiff.nXResolution, 64);
  EXPECT_EQ(record_.tiff.nYResolution, 64);
  // A box of 640 by 640 pixels; p = 801 / 401; the height loses trunc(640 - 640 / p) = 319 pixels.
  EXPECT_EQ(r.nWidth, 640);
  EXPECT_EQ(r.nHeight, 321);
}

TEST_F(Geometry, UserSizeAndResolutionKeepTheRecord) {
  record_.nSizeMode = RAXEL_STORED_SIZE_USER;
  record_.nResolutionMode = RAXEL_STORED_RESOLUTION_USER;
  const RasterInfoResult r = raster({64, 0, 100, 500, 500, 640, 640});
  EXPECT_EQ(record_.dWidth, 6.67);
  EXPECT_EQ(record_.tiff.nXResolution, 96);
  EXPECT_EQ(r.nWidth, 480);
  EXPECT_EQ(r.nHeight, 480);
}

TEST_F(Geometry, ZeroResolutionsOfThePictureAndTheDisplayChangeNothing) {
  RasterInfoResult r = raster({0, 0, 0, 500, 500, 640, 640});
  EXPECT_EQ(record_.dWidth, 6.67);
  EXPECT_EQ(record_.tiff.nXResolution, 96);
  EXPECT_EQ(r.nWidth, 480) << "without a resolution the picture's own size is fitted into the box";
  record_.nSizeMode = RAXEL_STORED_SIZE_DISPLAY;
  record_.nResolutionMode = RAXEL_STORED_RESOLUTION_DISPLAY;
  r = raster({0, 0, 0, 500, 500, 640, 640});
  EXPECT_EQ(record_.dWidth, 6.67);
  EXPECT_EQ(record_.tiff.nXResolution, 96);
}

TEST_F(Geometry, ResolutionsKeepTheirLow16Bits) {
  raster({96, 0, 65536 + 150, 800, 400, 0, 0});
  EXPECT_EQ(record_.tiff.nXResolution, 150);
  raster({96, 0, 65535, 800, 400, 0, 0});
  EXPECT_EQ(record_.tiff.nXResolution, -1);
}

TEST_F(Geometry, PixelsAreRoundedUp) {
  record_.nResolutionMode = RAXEL_STORED_RESOLUTION_USER;
  const RasterInfoResult r = raster({96, 0, 7, 10, 3, 0, 0});
  EXPECT_EQ(r.nWidth, 138);  // 96 * 10 / 7 = 137.14
  EXPECT_EQ(r.nHeight, 42);  // 96 * 3 / 7 = 41.14
}

TEST_F(Geometry, EveryBitmapModeHasItsSignedDepth) {
  struct {
    int mode, depth;
  } const rows[] = {{RAXEL_STORED_MODE_BILEVEL, 1},
                    {RAXEL_STORED_MODE_GREY16, -4},
                    {RAXEL_STORED_MODE_GREY256, -8},
                    {RAXEL_STORED_MODE_COLOR8, 4},
                    {RAXEL_STORED_MODE_COLOR16, 4},
                    {RAXEL_STORED_MODE_COLOR256, 8},
                    {RAXEL_STORED_MODE_RGB, 24},
                    {220, -7},
                    {0, -7},
                    {223, -7}};
  for (const auto &row : rows) {
    record_.nBitmapMode = row.mode;
    EXPECT_EQ(raster(kPicture).nDepth, row.depth) << row.mode;
  }
}

TEST_F(Geometry, SizesPast32BitsAreCut) {
  const RasterInfoResult r = raster({96, 0, 1, INT_MAX, INT_MIN, 0, 0});
  EXPECT_EQ(r.nWidth, INT_MAX);
  EXPECT_EQ(r.nHeight, INT_MIN);
}

TEST_F(Geometry, RecordsMayLieAtAnyAddress) {
  alignas(8) char input[sizeof(RasterPictureInfo) + 1];
  alignas(8) char output[sizeof(RasterInfoResult) + 1];
  std::memcpy(input + 1, &kPicture, sizeof kPicture);
  GetRasterInfo(0, static_cast<RasterPictureInfo *>(static_cast<void *>(input + 1)),
                static_cast<RasterInfoResult *>(static_cast<void *>(output + 1)));
  RasterInfoResult r;
  std::memcpy(&r, output + 1, sizeof r);
  EXPECT_EQ(r.nWidth, 800);
  EXPECT_EQ(r.nDepth, 8);
}

TEST_F(Geometry, MissingRecordsChangeNothing) {
  RasterInfoResult r = {1, 2, 3};
  GetRasterInfo(0, nullptr, &r);
  GetRasterInfo(0, &kPicture, nullptr);
  lpRaster = nullptr;
  GetRasterInfo(0, &kPicture, &r);
  EXPECT_EQ(r.nWidth, 1);
  fit(1, 1);
  EXPECT_EQ(pair_[0], -1);
  lpRaster = &record_;
  AdjustAspect(nullptr, 1, 1);
}

// ---- AdjustAspect, in the default box of 640 by 480 pixels

TEST_F(Geometry, ASquareFillsTheShorterSide) {
  fit(300, 300);
  EXPECT_EQ(pair_[0], 5.0);  // 480 pixels
  EXPECT_EQ(pair_[1], 5.0);
}

TEST_F(Geometry, APartOfANegativePixelIsZeroLikeAnyOther) {
  record_.tiff.nXResolution = 96;
  record_.dWidth = 5.0;
  record_.dHeight = 0.001;
  for (const int16_t resolution : {int16_t{96}, int16_t{-96}}) {
    record_.tiff.nYResolution = resolution;  // 480 pixels by a tenth of one, to either side of zero
    fit(300, 300);
    EXPECT_EQ(pair_[0], 0.0) << resolution;
    EXPECT_EQ(pair_[1], 0.0) << resolution;
  }
}

TEST_F(Geometry, AWiderPictureLosesHeight) {
  fit(1999, 999);  // p = 2000 / 1000 = 2
  EXPECT_EQ(pair_[0], 640.0 / 96);
  EXPECT_EQ(pair_[1], 320.0 / 96);  // 480 - trunc(480 - 640 / 2)
}

TEST_F(Geometry, ANarrowerPictureLosesWidth) {
  fit(999, 1999);                   // p = 0.5
  EXPECT_EQ(pair_[0], 240.0 / 96);  // 640 - trunc(640 - 480 * 0.5)
  EXPECT_EQ(pair_[1], 480.0 / 96);
}

TEST_F(Geometry, EqualProportionsKeepTheBox) {
  fit(639, 479);  // p = 640 / 480, exactly the box
  EXPECT_EQ(pair_[0], 640.0 / 96);
  EXPECT_EQ(pair_[1], 480.0 / 96);
}

TEST_F(Geometry, SidesAreTruncatedAndTakenWithoutSign) {
  fit(-1999.9, 999.9);
  EXPECT_EQ(pair_[1], 320.0 / 96);
}

TEST_F(Geometry, OneMoreThanEachSideKeepsAnEmptyPictureFinite) {
  fit(0, 0);  // p = 1 / 1
  EXPECT_EQ(pair_[0], 5.0);
}

TEST_F(Geometry, OnlyWholePixelsAreTakenOff) {
  fit(2, 6);  // p = 3 / 7: 640 - trunc(640 - 205.71) = 640 - 434 = 206
  EXPECT_EQ(pair_[0], 206.0 / 96);
}

TEST_F(Geometry, NoResolutionYieldsNoNumberAndDoesNotTrap) {
  record_.tiff.nXResolution = 0;
  record_.tiff.nYResolution = 0;
  fit(100, 100);
  EXPECT_TRUE(std::isnan(pair_[0]));
  record_.nResolutionMode = RAXEL_STORED_RESOLUTION_USER;
  record_.nSizeMode = RAXEL_STORED_SIZE_USER;
  const RasterInfoResult r = raster(kPicture);
  EXPECT_EQ(r.nWidth, 0);
  EXPECT_EQ(r.nHeight, 0);
}

TEST_F(Geometry, HugeSidesDoNotTrap) {
  fit(1e300, -1e300);
  EXPECT_EQ(pair_[0], 5.0);
  fit(HUGE_VAL, std::nan(""));
  EXPECT_EQ(pair_[0], 640.0 / 96);
}

}  // namespace
