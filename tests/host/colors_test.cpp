// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "host/pictures.h"
#include "support/random.h"

using host_test::Color;
using host_test::prepared;
using host_test::Prepared;
using host_test::request;
using host_test::TestPicture;

namespace {

void fillNoise(TestPicture &picture, uint64_t seed) {
  support::Random random(seed);
  for (uint8_t &byte : picture.rows) byte = random.byte();
}

// A smooth picture with more colours than any table holds.
void fillSmooth(TestPicture &picture) {
  const uint32_t w = picture.view.width, h = picture.view.height;
  for (uint32_t y = 0; y < h; ++y) {
    for (uint32_t x = 0; x < w; ++x) {
      picture.setColor(x, y,
                       {static_cast<uint8_t>(x * 255 / (w - 1)), static_cast<uint8_t>(y * 255 / (h - 1)),
                        static_cast<uint8_t>((x + y) * 255 / (w + h - 2))});
    }
  }
}

Color sourceColor(TestPicture &picture, uint32_t x, uint32_t y) {
  const uint8_t *c = picture.row(y) + 3 * x;
  return {c[0], c[1], c[2]};
}

// Root mean square of the difference, all channels.
double rms(TestPicture &picture, const Prepared &made) {
  double sum = 0;
  for (uint32_t y = 0; y < picture.view.height; ++y) {
    for (uint32_t x = 0; x < picture.view.width; ++x) {
      const Color a = sourceColor(picture, x, y), b = made.color(x, y);
      for (size_t c = 0; c < 3; ++c) sum += (a[c] - b[c]) * (a[c] - b[c]);
    }
  }
  return std::sqrt(sum / (3.0 * picture.view.width * picture.view.height));
}

}  // namespace

TEST(HostColors, RgbKeepsEveryPixelAndRepeatsTheLastRow) {
  for (uint32_t width = 1; width <= 40; width += 3) {
    TestPicture picture(width, 5, 24);
    fillNoise(picture, width);
    const Prepared made = prepared(picture, request(RAXEL_MODE_RGB));
    ASSERT_EQ(made.code, RAXEL_HOST_OK);
    for (uint32_t y = 0; y < 6; ++y) {
      for (uint32_t x = 0; x < width; ++x) {
        ASSERT_EQ(made.color(x, y), sourceColor(picture, x, std::min(y, 4u)));
      }
    }
  }
}

TEST(HostColors, IndicesAndTableGoOverAsTheyAre) {
  TestPicture picture(7, 4, 4);
  picture.useTable({{1, 2, 3}, {4, 5, 6}, {4, 5, 6}, {7, 8, 9}});
  for (uint32_t i = 0; i < 28; ++i) picture.setIndex(i % 7, i / 7, i % 4);
  for (int mode : {RAXEL_MODE_COLOR16, RAXEL_MODE_COLOR256}) {
    const Prepared made = prepared(picture, request(mode));
    ASSERT_EQ(made.code, RAXEL_HOST_OK);
    EXPECT_EQ(made.plan.notes, 0u);
    for (uint32_t i = 0; i < 28; ++i) ASSERT_EQ(made.index(i % 7, i / 7), i % 4);
    EXPECT_EQ(made.table[9], 7);
    EXPECT_EQ(made.table[12], 0);
  }
}

TEST(HostColors, EightBitIndicesWithFewColorsFitInto16) {
  TestPicture picture(256, 2, 8);
  std::vector<Color> colors(256);
  for (size_t i = 0; i < 256; ++i) colors[i] = {static_cast<uint8_t>(i % 16 * 3), 0, 9};  // 16 distinct
  picture.useTable(colors);
  for (uint32_t x = 0; x < 256; ++x) picture.setIndex(x, 0, x);
  const Prepared made = prepared(picture, request(RAXEL_MODE_COLOR16));
  ASSERT_EQ(made.code, RAXEL_HOST_OK);
  EXPECT_EQ(made.plan.notes, 0u);
  for (uint32_t x = 0; x < 256; ++x) ASSERT_EQ(made.color(x, 0), colors[x]);
}

TEST(HostColors, TwoHundredAndFiftySixColorsAreKeptAndOneMoreIsNot) {
  TestPicture picture(257, 2, 24);
  for (uint32_t x = 0; x < 257; ++x) {
    picture.setColor(x, 0, {static_cast<uint8_t>(x), static_cast<uint8_t>(x / 2), 7});
    picture.setColor(x, 1, {0, 0, 7});
  }
  picture.setColor(256, 0, {0, 0, 7});
  const Prepared kept = prepared(picture, request(RAXEL_MODE_COLOR256));
  EXPECT_EQ(kept.plan.notes, 0u);
  EXPECT_EQ(rms(picture, kept), 0.0);
  picture.setColor(256, 0, {0, 0, 8});
  const Prepared reduced = prepared(picture, request(RAXEL_MODE_COLOR256));
  ASSERT_EQ(reduced.code, RAXEL_HOST_OK);
  EXPECT_EQ(reduced.plan.notes, unsigned{RAXEL_NOTE_REDUCED});
}

TEST(HostColors, EveryQuantizerStaysNearThePicture) {
  TestPicture picture(200, 150, 24);
  fillSmooth(picture);
  const double most[RAXEL_QUANTIZERS] = {12, 14, 16};
  for (int quantizer = 0; quantizer < RAXEL_QUANTIZERS; ++quantizer) {
    if (!raxelHostHasQuantizer(quantizer)) continue;
    RaxelRequest wanted = request(RAXEL_MODE_COLOR256);
    wanted.quantizer = quantizer;
    const Prepared made = prepared(picture, wanted);
    ASSERT_EQ(made.code, RAXEL_HOST_OK);
    EXPECT_LT(rms(picture, made), most[quantizer]) << quantizer;
    wanted.mode = RAXEL_MODE_COLOR16;
    for (int dither : {RAXEL_DITHER_ON, RAXEL_DITHER_OFF}) {
      wanted.dither = dither;
      const Prepared few = prepared(picture, wanted);
      ASSERT_EQ(few.code, RAXEL_HOST_OK);
      EXPECT_LT(rms(picture, few), 75) << quantizer;
      EXPECT_EQ((few.plan.notes & RAXEL_NOTE_DITHERED) != 0, dither == RAXEL_DITHER_ON);
    }
  }
}

TEST(HostColors, EightColorsAreTheWritersOwn) {
  TestPicture picture(8, 2, 24);
  const Color corners[8] = {{255, 255, 255}, {0, 0, 0},     {0, 0, 255},   {0, 255, 0},
                            {255, 0, 0},     {0, 255, 255}, {255, 0, 255}, {255, 255, 0}};
  for (uint32_t x = 0; x < 8; ++x) picture.setColor(x, 0, corners[x]);
  for (int dither : {RAXEL_DITHER_ON, RAXEL_DITHER_OFF}) {
    RaxelRequest wanted = request(RAXEL_MODE_COLOR8);
    wanted.dither = dither;
    const Prepared made = prepared(picture, wanted);
    ASSERT_EQ(made.code, RAXEL_HOST_OK);
    EXPECT_EQ(made.plan.notes, 0u);
    for (uint32_t x = 0; x < 8; ++x) {
      EXPECT_EQ(made.index(x, 0), x);
      EXPECT_EQ(made.color(x, 0), corners[x]);
    }
    for (size_t i = 24; i < 48; ++i) EXPECT_EQ(made.table[i], 0);
  }
}

TEST(HostColors, DitheringToEightColorsKeepsTheMean) {
  TestPicture picture(64, 64, 24);
  for (uint32_t i = 0; i < 64 * 64; ++i) picture.setColor(i % 64, i / 64, {40, 130, 220});
  const Prepared made = prepared(picture, request(RAXEL_MODE_COLOR8));
  double sum[3] = {};
  for (uint32_t i = 0; i < 64 * 64; ++i) {
    for (size_t c = 0; c < 3; ++c) sum[c] += made.color(i % 64, i / 64)[c];
  }
  EXPECT_NEAR(sum[0] / 4096, 40, 4);
  EXPECT_NEAR(sum[1] / 4096, 130, 4);
  EXPECT_NEAR(sum[2] / 4096, 220, 4);
  EXPECT_EQ(made.plan.notes, unsigned{RAXEL_NOTE_REDUCED | RAXEL_NOTE_DITHERED});
}

TEST(HostColors, WithoutServicesOnlyWhatNeedsThemIsRefused) {
  TestPicture picture(8, 8, 24);
  fillNoise(picture, 5);
  const auto codeWithout = [&](RaxelRequest wanted) {
    RaxelPlan plan;
    EXPECT_EQ(raxelHostPlan(&picture.view, &wanted, &plan), RAXEL_HOST_OK);
    std::vector<uint8_t> pixels(plan.bytes), table(768);
    return raxelHostPrepare(&picture.view, &wanted, nullptr, &plan, pixels.data(), table.data());
  };
  EXPECT_EQ(codeWithout(request(RAXEL_MODE_RGB)), RAXEL_HOST_OK);
  EXPECT_EQ(codeWithout(request(RAXEL_MODE_COLOR8)), RAXEL_HOST_OK);
  EXPECT_EQ(codeWithout(request(RAXEL_MODE_BILEVEL)), RAXEL_HOST_NO_SERVICE);
  RaxelRequest treated = request(RAXEL_MODE_RGB);
  treated.treatment = RAXEL_TREAT_INVERT;
  EXPECT_EQ(codeWithout(treated), RAXEL_HOST_NO_SERVICE);
  RaxelRequest filter = request(RAXEL_MODE_COLOR16);
  filter.quantizer = RAXEL_QUANTIZE_FILTER;
  EXPECT_EQ(codeWithout(filter), RAXEL_HOST_NO_SERVICE);
}

TEST(HostColors, APlanOfAnotherPictureIsRefused) {
  TestPicture small(8, 8, 24), large(9, 9, 24);
  const RaxelRequest wanted = request(RAXEL_MODE_RGB);
  RaxelPlan plan;
  ASSERT_EQ(raxelHostPlan(&small.view, &wanted, &plan), RAXEL_HOST_OK);
  std::vector<uint8_t> pixels(plan.bytes), table(768);
  EXPECT_EQ(raxelHostPrepare(&large.view, &wanted, nullptr, &plan, pixels.data(), table.data()),
            RAXEL_HOST_BAD_ARGUMENT);
}
