// SPDX-License-Identifier: MIT
// The settings record: its defaults, and the limits of resolutions and sizes.
#include "setup/settings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "support/globals.h"

namespace {

class Settings : public testing::Test {
 protected:
  Settings() { std::memset(static_cast<void *>(&record_), 0, sizeof record_); }

  // The record after LimitCheck, and its answer.
  int32_t check(int16_t x, int16_t y, double width, double height) {
    record_.tiff.nXResolution = x;
    record_.tiff.nYResolution = y;
    record_.dWidth = width;
    record_.dHeight = height;
    lpRaster = &record_;
    return LimitCheck();
  }

  support::Globals globals_;
  RasterSetup record_;
};

TEST_F(Settings, DefaultsFillTheRecord) {
  std::memset(static_cast<void *>(&record_), 0x55, sizeof record_);
  std::strcpy(record_.szAppName, "application");
  record_.nLineMode = 7;
  std::strcpy(szFilter, "RAXEL");
  EXPECT_EQ(UseDefaultSettings(&record_), 0);
  EXPECT_STREQ(record_.szAppName, "application");
  EXPECT_EQ(record_.nLineMode, 7);
  EXPECT_EQ(record_.szModeName[0], 0);
  EXPECT_EQ(record_.szModeName[1], 0x55) << "only the first byte is cleared";
  EXPECT_EQ(record_.szProfilePath[0], 0);
  EXPECT_EQ(record_.szReserved[0], 0);
  EXPECT_STREQ(record_.szDriverName, "RAXEL.1");
  EXPECT_EQ(record_.dwReserved1, 0u);
  EXPECT_EQ(record_.dwEditData, 0u);
  EXPECT_EQ(record_.dwUserData, 0u);
  EXPECT_EQ(record_.nColorMode, RAXEL_STORED_COLORS);
  EXPECT_EQ(record_.dwReserved2, 0u);
  EXPECT_EQ(record_.nSizeMode, RAXEL_STORED_SIZE_PICTURE);
  EXPECT_EQ(record_.nResolutionMode, RAXEL_STORED_RESOLUTION_PICTURE);
  EXPECT_EQ(record_.nBitmapMode, RAXEL_STORED_MODE_COLOR256);
  EXPECT_EQ(record_.nCompressionMode, RAXEL_STORED_COMPRESS_NONE);
  EXPECT_EQ(record_.tiff.wLayoutMode, RAXEL_STORED_LAYOUT_STRIPS);
  EXPECT_EQ(record_.tiff.nXResolution, 96);
  EXPECT_EQ(record_.tiff.nYResolution, 96);
  EXPECT_EQ(record_.dWidth, 6.67);
  EXPECT_EQ(record_.dHeight, 5.0);
}

TEST_F(Settings, DriverNameIsCutToItsField) {
  char *const before = szFilter;
  char longName[] = "FIFTEENLETTERSX";
  szFilter = longName;
  UseDefaultSettings(&record_);
  EXPECT_STREQ(record_.szDriverName, "FIFTEENLETTE");
  char elevenLetters[] = "ELEVENLETTE";
  szFilter = elevenLetters;
  UseDefaultSettings(&record_);
  EXPECT_STREQ(record_.szDriverName, "ELEVENLETTE.");
  szFilter = nullptr;
  UseDefaultSettings(&record_);
  EXPECT_STREQ(record_.szDriverName, ".1");
  szFilter = before;
}

TEST_F(Settings, NullRecordsAreLeftAlone) {
  EXPECT_EQ(UseDefaultSettings(nullptr), 0);
  lpRaster = nullptr;
  EXPECT_EQ(LimitCheck(), 0);
}

TEST_F(Settings, LimitsAreIncluded) {
  EXPECT_EQ(check(32, 400, 0.03125, 22.0), 0);
  EXPECT_EQ(record_.tiff.nXResolution, 32);
  EXPECT_EQ(record_.tiff.nYResolution, 400);
  EXPECT_EQ(record_.dWidth, 0.03125);
  EXPECT_EQ(record_.dHeight, 22.0);
  EXPECT_EQ(check(400, 32, 22.0, 0.03125), 0);
}

TEST_F(Settings, ResolutionsOutsideTheirRangeBecome96) {
  for (int16_t wrong : {int16_t{31}, int16_t{401}, int16_t{0}, int16_t{-96}}) {
    EXPECT_EQ(check(wrong, 100, 1.0, 1.0), RAXEL_RESOLUTION_REPAIRED);
    EXPECT_EQ(record_.tiff.nXResolution, 96);
    EXPECT_EQ(record_.tiff.nYResolution, 100);
    EXPECT_EQ(check(100, wrong, 1.0, 1.0), RAXEL_RESOLUTION_REPAIRED);
    EXPECT_EQ(record_.tiff.nXResolution, 100);
    EXPECT_EQ(record_.tiff.nYResolution, 96);
  }
}

TEST_F(Settings, SizesOutsideTheirRangeBecomeTheDefaults) {
  for (double wrong : {0.03124, 22.001, 0.0, -3.0, HUGE_VAL}) {
    EXPECT_EQ(check(96, 96, wrong, 1.0), RAXEL_SIZE_REPAIRED);
    EXPECT_EQ(record_.dWidth, 6.67);
    EXPECT_EQ(check(96, 96, 1.0, wrong), RAXEL_SIZE_REPAIRED);
    EXPECT_EQ(record_.dHeight, 5.0);
  }
}

TEST_F(Settings, ARepairedSizeHidesARepairedResolution) {
  EXPECT_EQ(check(10, 96, 30.0, 5.0), RAXEL_SIZE_REPAIRED);
  EXPECT_EQ(record_.tiff.nXResolution, 96);
  EXPECT_EQ(record_.dWidth, 6.67);
  EXPECT_EQ(check(10, 500, 30.0, 0.0), RAXEL_SIZE_REPAIRED);
  EXPECT_EQ(record_.tiff.nYResolution, 96);
  EXPECT_EQ(record_.dHeight, 5.0);
}

TEST_F(Settings, NoNumberIsNeitherTooSmallNorTooLarge) {
  EXPECT_EQ(check(96, 96, std::nan(""), 1.0), 0);
  EXPECT_TRUE(std::isnan(record_.dWidth));
}

}  // namespace
