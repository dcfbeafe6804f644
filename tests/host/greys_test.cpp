// SPDX-License-Identifier: MIT
#include "prepare/greys.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/pictures.h"
#include "support/random.h"

using host_test::Color;
using host_test::prepared;
using host_test::Prepared;
using host_test::request;
using host_test::TestPicture;

namespace {

// The filter's rule, written out once more.
int levelOf(const uint8_t *c) {
  return static_cast<int>(0.3 * c[0] + 0.59 * c[1] + 0.11 * c[2]);
}

void fillRamp(TestPicture &picture) {
  for (uint32_t y = 0; y < picture.view.height; ++y) {
    for (uint32_t x = 0; x < picture.view.width; ++x)
      picture.setIndex(x, y, (x * 255) / (picture.view.width - 1));
  }
}

}  // namespace

TEST(HostGreys, TablesTurnIntoTheirIndicesUnderTheFiltersRule) {
  TestPicture picture(2, 2, 8);
  const Prepared deep = prepared(picture, request(RAXEL_MODE_GREY256));
  ASSERT_EQ(deep.code, RAXEL_HOST_OK);
  int adjusted = 0;
  for (int i = 0; i < 256; ++i) {
    const uint8_t *c = deep.table.data() + 3 * i;
    EXPECT_EQ(levelOf(c), i);
    adjusted += c[0] == i && c[1] == i && c[2] == i ? 0 : 1;
  }
  EXPECT_EQ(adjusted, 67);  // that many greys fall short by the last bit of a double
  const Prepared shallow = prepared(picture, request(RAXEL_MODE_GREY16));
  ASSERT_EQ(shallow.code, RAXEL_HOST_OK);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(levelOf(shallow.table.data() + 3 * i) % 16, i);
}

TEST(HostGreys, KeepsEveryLevelOfAGreyPicture) {
  TestPicture picture(256, 3, 8);
  fillRamp(picture);
  const Prepared made = prepared(picture, request(RAXEL_MODE_GREY256));
  ASSERT_EQ(made.code, RAXEL_HOST_OK);
  EXPECT_EQ(made.plan.notes, unsigned{RAXEL_NOTE_ROW_REPEATED});
  for (uint32_t y = 0; y < 4; ++y) {
    for (uint32_t x = 0; x < 256; ++x) ASSERT_EQ(made.index(x, y), x);
  }
}

TEST(HostGreys, KeepsSixteenLevelsWithoutDithering) {
  TestPicture picture(16, 2, 8);
  for (uint32_t x = 0; x < 16; ++x) picture.setIndex(x, 0, x * 17);
  const Prepared made = prepared(picture, request(RAXEL_MODE_GREY16));
  ASSERT_EQ(made.code, RAXEL_HOST_OK);
  EXPECT_EQ(made.plan.notes, 0u);
  for (uint32_t x = 0; x < 16; ++x) EXPECT_EQ(made.index(x, 0), x);
}

TEST(HostGreys, WithoutDitheringTakesTheNearestLevel) {
  TestPicture picture(4, 2, 8);
  const unsigned levels[4] = {127, 128, 8, 9};
  for (uint32_t x = 0; x < 4; ++x) picture.setIndex(x, 0, levels[x]);
  RaxelRequest wanted = request(RAXEL_MODE_BILEVEL);
  wanted.dither = RAXEL_DITHER_OFF;
  const Prepared two = prepared(picture, wanted);
  EXPECT_EQ(two.index(0, 0), 0u);
  EXPECT_EQ(two.index(1, 0), 1u);
  wanted.mode = RAXEL_MODE_GREY16;
  const Prepared sixteen = prepared(picture, wanted);
  EXPECT_EQ(sixteen.index(2, 0), 0u);
  EXPECT_EQ(sixteen.index(3, 0), 1u);
  EXPECT_EQ(sixteen.plan.notes, unsigned{RAXEL_NOTE_REDUCED});
}

TEST(HostGreys, DitheringKeepsTheBrightnessOfAreas) {
  for (unsigned level : {20u, 64u, 128u, 200u, 240u}) {
    TestPicture picture(64, 64, 8);
    for (uint32_t i = 0; i < 64 * 64; ++i) picture.setIndex(i % 64, i / 64, level);
    for (int mode : {RAXEL_MODE_BILEVEL, RAXEL_MODE_GREY16}) {
      const Prepared made = prepared(picture, request(mode));
      ASSERT_EQ(made.code, RAXEL_HOST_OK);
      const double step = mode == RAXEL_MODE_BILEVEL ? 255 : 17;
      double sum = 0;
      for (uint32_t i = 0; i < 64 * 64; ++i) sum += made.index(i % 64, i / 64) * step;
      // The ditherer drops errors of up to 2 levels.
      EXPECT_NEAR(sum / (64 * 64), level, 2.1) << mode;
      EXPECT_TRUE(made.plan.notes & RAXEL_NOTE_DITHERED);
    }
  }
}

// The ditherer alone copies the pixel before the last; a black column at the right edge would be lost.
TEST(HostGreys, DitheringKeepsTheLastColumn) {
  TestPicture picture(9, 8, 8);
  for (uint32_t y = 0; y < 8; ++y) {
    for (uint32_t x = 0; x < 8; ++x) picture.setIndex(x, y, 250);
    picture.setIndex(8, y, 0);
  }
  for (int mode : {RAXEL_MODE_BILEVEL, RAXEL_MODE_GREY16}) {
    const Prepared made = prepared(picture, request(mode));
    ASSERT_EQ(made.code, RAXEL_HOST_OK);
    for (uint32_t y = 0; y < 8; ++y) EXPECT_EQ(made.index(8, y), 0u) << mode << " row " << y;
  }
}

TEST(HostGreys, TwoColorsBecomeBlackAndWhiteByBrightness) {
  TestPicture picture(2, 2, 1);
  picture.useTable({{255, 255, 0}, {0, 0, 128}});  // blue on yellow
  picture.setIndex(1, 0, 1);
  const Prepared made = prepared(picture, request(RAXEL_MODE_BILEVEL));
  ASSERT_EQ(made.code, RAXEL_HOST_OK);
  EXPECT_EQ(made.index(0, 0), 1u);
  EXPECT_EQ(made.index(1, 0), 0u);
  EXPECT_EQ(made.plan.notes, unsigned{RAXEL_NOTE_REDUCED});
}

TEST(HostGreys, ASingleDarkColorStaysDark) {
  TestPicture picture(2, 2, 1);
  picture.useTable({{60, 60, 60}});
  const Prepared made = prepared(picture, request(RAXEL_MODE_BILEVEL));
  EXPECT_EQ(made.index(0, 0), 0u);
}

TEST(HostGreys, FaxCodesGetTheComplement) {
  TestPicture picture(12, 2, 1);
  picture.setIndex(3, 0, 1);
  const Prepared plain = prepared(picture, request(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_PACKBITS));
  EXPECT_EQ(plain.row(0)[0], 0x10);
  for (int code : {RAXEL_COMPRESS_T4, RAXEL_COMPRESS_T6}) {
    const Prepared fax = prepared(picture, request(RAXEL_MODE_BILEVEL, code));
    EXPECT_EQ(fax.row(0)[0], 0xEF);
    EXPECT_EQ(fax.color(3, 0), (Color{0, 0, 0}));
    EXPECT_EQ(fax.table[0], 0);
    EXPECT_EQ(fax.table[3], 255);
  }
}

TEST(HostGreys, BitsBeyondTheWidthAreZero) {
  TestPicture picture(11, 2, 8);
  for (uint32_t i = 0; i < 22; ++i) picture.setIndex(i % 11, i / 11, 255 - i);
  for (int dither : {RAXEL_DITHER_ON, RAXEL_DITHER_OFF}) {
    RaxelRequest wanted = request(RAXEL_MODE_BILEVEL);
    wanted.dither = dither;
    const Prepared made = prepared(picture, wanted);
    for (uint32_t y = 0; y < 2; ++y) EXPECT_EQ(made.row(y)[1] & 0x1F, 0);
  }
}
