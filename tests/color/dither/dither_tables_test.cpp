// SPDX-License-Identifier: MIT
// The fixed tables of error diffusion, entry by entry.
#include <gtest/gtest.h>

#include "raxel/color.h"

namespace {

TEST(DitherTables, ClampIsFlatThenRisesByOneThenFlat) {
  for (int i = 0; i <= 128; ++i) EXPECT_EQ(BOUNDARY_CHK[i], 0) << i;
  for (int i = 129; i <= 382; ++i) EXPECT_EQ(BOUNDARY_CHK[i], i - 128) << i;
  for (int i = 383; i <= 511; ++i) EXPECT_EQ(BOUNDARY_CHK[i], 255) << i;
}

TEST(DitherTables, MonoTableHoldsEightGreysInItsOwnOrder) {
  const int levels[8] = {0, 255, 64, 128, 160, 192, 208, 224};
  for (int i = 0; i < 8; ++i) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(MonoTable[i][c], levels[i]) << i;
  }
  EXPECT_EQ(sizeof MonoTable, 24u);
}

TEST(DitherTables, FixedColorsAreTheCornersOfTheCubeFromWhiteToBlack) {
  // Per entry whether red, green and blue are full: white, yellow, magenta, cyan, red, green, blue,
  // black.
  const char *const corners[8] = {"rgb", "rg-", "r-b", "-gb", "r--", "-g-", "--b", "---"};
  for (int i = 0; i < 8; ++i) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(must_have_colors[i][c], corners[i][c] == '-' ? 0 : 255) << i;
  }
}

}  // namespace
