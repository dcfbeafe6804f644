// SPDX-License-Identifier: MIT
#include "prepare/cut.h"

#include <gtest/gtest.h>

#include "host/pictures.h"

using host_test::prepared;
using host_test::Prepared;
using host_test::request;
using host_test::TestPicture;

namespace {

RaxelRequest cutRequest(int threshold, int level = 0) {
  RaxelRequest wanted = request(RAXEL_MODE_BILEVEL);
  wanted.threshold = threshold;
  wanted.thresholdLevel = level;
  return wanted;
}

// A page that gets darker from left to right, from 250 to 100, with strokes at half its brightness.
void drawShadedPage(TestPicture &page) {
  for (uint32_t y = 0; y < page.view.height; ++y) {
    for (uint32_t x = 0; x < page.view.width; ++x) {
      const uint32_t paper = 250 - x * 150 / page.view.width;
      page.setIndex(x, y, x % 16 < 3 ? paper / 2 : paper);
    }
  }
}

}  // namespace

TEST(HostCut, WhatIsBelowTheLevelIsBlack) {
  TestPicture ramp(256, 2, 8);
  for (uint32_t x = 0; x < 256; ++x) ramp.setIndex(x, 0, x), ramp.setIndex(x, 1, x);
  for (const uint32_t level : {0u, 1u, 100u, 255u}) {
    const Prepared made = prepared(ramp, cutRequest(RAXEL_THRESHOLD_LEVEL, static_cast<int>(level)));
    ASSERT_EQ(made.code, RAXEL_HOST_OK);
    EXPECT_EQ(made.plan.threshold, static_cast<int>(level));
    for (uint32_t x = 0; x < 256; ++x) ASSERT_EQ(made.index(x, 0), x < level ? 0u : 1u) << x;
  }
}

TEST(HostCut, HoldsForPicturesOfTwoGreysAsWell) {
  TestPicture greys(2, 2, 1);
  greys.useTable({{100, 100, 100}, {200, 200, 200}});
  greys.setIndex(1, 0, 1);
  EXPECT_EQ(prepared(greys, request(RAXEL_MODE_BILEVEL)).index(0, 0), 0u);
  EXPECT_EQ(prepared(greys, cutRequest(RAXEL_THRESHOLD_LEVEL, 50)).index(0, 0), 1u);
  EXPECT_EQ(prepared(greys, cutRequest(RAXEL_THRESHOLD_LEVEL, 201)).index(1, 0), 0u);
}

TEST(HostCut, ScalesGreysBeforeItCutsThem) {
  // Columns of 0, 0, 0, 255 become one of 64.
  TestPicture bars(16, 4, 1);
  for (uint32_t y = 0; y < 4; ++y) {
    for (uint32_t x = 3; x < 16; x += 4) bars.setIndex(x, y, 1);
  }
  RaxelRequest wanted = cutRequest(RAXEL_THRESHOLD_LEVEL, 64);
  wanted.inchesX = 4 / 96.0;
  wanted.inchesY = 4 / 96.0;
  EXPECT_EQ(prepared(bars, wanted).index(1, 1), 1u);
  wanted.thresholdLevel = 65;
  EXPECT_EQ(prepared(bars, wanted).index(1, 1), 0u);
}

TEST(HostCut, HoldsOnAPageAsWell) {
  // Two rows of 8 pixels in the middle of 21 by 5: from pixel 6 on, which is a byte of its own, 0.
  TestPicture picture(8, 2, 8);
  RaxelRequest wanted = cutRequest(RAXEL_THRESHOLD_LEVEL, 10);
  wanted.pageWidth = 21;
  wanted.pageHeight = 5;
  const Prepared made = prepared(picture, wanted);
  ASSERT_EQ(made.code, RAXEL_HOST_OK);
  EXPECT_EQ(made.plan.width, 21u);
  EXPECT_EQ(made.plan.rows, 5u);
  EXPECT_EQ(made.plan.pictureWidth, 8u);
  EXPECT_EQ(made.plan.pictureRows, 2u);
  EXPECT_EQ(made.plan.threshold, 10);
  for (uint32_t y = 0; y < 5; ++y) {
    for (uint32_t x = 0; x < 21; ++x) EXPECT_EQ(made.index(x, y), (y == 1 || y == 2) && x < 8 ? 0u : 1u);
  }
  wanted.pageWidth = 7;  // no room
  EXPECT_EQ(prepared(picture, wanted).code, RAXEL_HOST_BAD_SIZE);
}

TEST(HostCut, OtsuFindsALevelBetweenTheTones) {
  TestPicture page(64, 64, 8);
  for (uint32_t y = 0; y < 64; ++y) {
    for (uint32_t x = 0; x < 64; ++x) page.setIndex(x, y, x % 8 == 0 ? 150 + y % 4 : 230 + y % 5);
  }
  const Prepared made = prepared(page, cutRequest(RAXEL_THRESHOLD_OTSU));
  ASSERT_EQ(made.code, RAXEL_HOST_OK);
  EXPECT_GT(made.plan.threshold, 153);
  EXPECT_LE(made.plan.threshold, 230);
  for (uint32_t x = 0; x < 64; ++x) ASSERT_EQ(made.index(x, 3), x % 8 == 0 ? 0u : 1u);
}

TEST(HostCut, AnAdaptiveCutSeesStrokesInTheShade) {
  TestPicture page(403, 100, 8);
  drawShadedPage(page);
  const Prepared made = prepared(page, cutRequest(RAXEL_THRESHOLD_ADAPTIVE));
  ASSERT_EQ(made.code, RAXEL_HOST_OK);
  EXPECT_EQ(made.plan.threshold, -1);
  for (uint32_t x = 0; x < 403; ++x) ASSERT_EQ(made.index(x, 50), x % 16 < 3 ? 0u : 1u) << x;
  // No level for all of the page could: the paper on the right is darker than the ink on the left.
  const Prepared level = prepared(page, cutRequest(RAXEL_THRESHOLD_OTSU));
  int wrong = 0;
  for (uint32_t x = 0; x < 403; ++x) wrong += level.index(x, 50) != (x % 16 < 3 ? 0u : 1u);
  EXPECT_GT(wrong, 20);
}

TEST(HostCut, AnAdaptiveCutOfAFewPixelsIsOneOfALevel) {
  for (const uint32_t side : {1u, 2u, 6u, 7u, 20u}) {
    TestPicture page(side, side, 8);
    for (uint32_t x = 0; x < side; ++x) page.setIndex(x, x, 200);
    EXPECT_EQ(prepared(page, cutRequest(RAXEL_THRESHOLD_ADAPTIVE)).code, RAXEL_HOST_OK) << side;
  }
}

TEST(HostCut, RefusesWhatItDoesNotKnow) {
  TestPicture page(8, 8, 8);
  const auto code = [&](int threshold, int level, int dither) {
    RaxelRequest wanted = cutRequest(threshold, level);
    wanted.dither = dither;
    return prepared(page, wanted).code;
  };
  EXPECT_EQ(code(RAXEL_THRESHOLD_LEVEL, 255, RAXEL_DITHER_OFF), RAXEL_HOST_OK);
  EXPECT_EQ(code(RAXEL_THRESHOLD_LEVEL, 256, RAXEL_DITHER_AUTO), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(code(RAXEL_THRESHOLD_LEVEL, -1, RAXEL_DITHER_AUTO), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(code(RAXEL_THRESHOLDS, 0, RAXEL_DITHER_AUTO), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(code(RAXEL_THRESHOLD_OTSU, 0, RAXEL_DITHER_ON), RAXEL_HOST_BAD_ARGUMENT);
}
