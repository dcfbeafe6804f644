// SPDX-License-Identifier: MIT
#include "prepare/predict.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

RaxelPlan planOf(int32_t mode, int32_t compression, uint32_t bits) {
  RaxelPlan plan{};
  plan.mode = mode;
  plan.compression = compression;
  plan.bits = bits;
  plan.finish = 1;
  return plan;
}

}  // namespace

TEST(HostPredict, TakesTheDifferenceToTheSampleOfTheSameChannel) {
  std::vector<uint8_t> grey{10, 12, 9, 255, 0};
  prepare::differenceRow(grey, 1);
  EXPECT_EQ(grey, (std::vector<uint8_t>{10, 2, 253, 246, 1}));
  std::vector<uint8_t> colors{1, 2, 3, 2, 4, 6, 1, 1, 1};
  prepare::differenceRow(colors, 3);
  EXPECT_EQ(colors, (std::vector<uint8_t>{1, 2, 3, 1, 2, 3, 255, 253, 251}));
}

TEST(HostPredict, LeavesOnePixelAndNoneAsTheyAre) {
  std::vector<uint8_t> pixel{7, 8, 9}, none;
  prepare::differenceRow(pixel, 3);
  prepare::differenceRow(none, 3);
  EXPECT_EQ(pixel, (std::vector<uint8_t>{7, 8, 9}));
}

TEST(HostPredict, StartsAnewInEveryRowAndLeavesThePadding) {
  RaxelPlan plan = planOf(RAXEL_MODE_GREY256, RAXEL_COMPRESS_LZW, 8);
  plan.width = 3;
  plan.height = 2;
  plan.stride = 4;
  std::vector<uint8_t> block{5, 6, 7, 0xEE, 9, 9, 8, 0xDD};
  prepare::differenceRows(plan, block.data());
  EXPECT_EQ(block, (std::vector<uint8_t>{5, 1, 1, 0xEE, 9, 0, 255, 0xDD}));
}

TEST(HostPredict, IsForBytesOfGreyAndColourInLzw) {
  EXPECT_TRUE(prepare::mayPredict(planOf(RAXEL_MODE_RGB, RAXEL_COMPRESS_LZW, 24)));
  EXPECT_TRUE(prepare::mayPredict(planOf(RAXEL_MODE_GREY256, RAXEL_COMPRESS_LZW, 8)));
  EXPECT_FALSE(prepare::mayPredict(planOf(RAXEL_MODE_COLOR256, RAXEL_COMPRESS_LZW, 8)));
  EXPECT_FALSE(prepare::mayPredict(planOf(RAXEL_MODE_GREY16, RAXEL_COMPRESS_LZW, 4)));
  EXPECT_FALSE(prepare::mayPredict(planOf(RAXEL_MODE_RGB, RAXEL_COMPRESS_PACKBITS, 24)));
  RaxelPlan filters = planOf(RAXEL_MODE_RGB, RAXEL_COMPRESS_LZW, 24);
  filters.finish = 0;
  EXPECT_FALSE(prepare::mayPredict(filters));
}
