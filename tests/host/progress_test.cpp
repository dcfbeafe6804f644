// SPDX-License-Identifier: MIT
#include "command/progress.h"

#include <gtest/gtest.h>

TEST(Progress, TheBarFillsUp) {
  EXPECT_EQ(host::bar(0), "[                    ]");
  EXPECT_EQ(host::bar(0.26), "[=====               ]");
  EXPECT_EQ(host::bar(1), "[====================]");
  EXPECT_EQ(host::bar(7), "[====================]");
}

TEST(Progress, TellsATimeLeftOnlyWhenItKnowsEnough) {
  using host::progressText;
  EXPECT_EQ(progressText(0.5, 5000000, 2), "[==========          ]  50%  2.5 MB/s  0:02 left");
  EXPECT_EQ(progressText(0.02, 1000000, 5), "[                    ]   2%  0.2 MB/s  4:05 left");
  EXPECT_EQ(progressText(0.5, 0, 119.7), "[==========          ]  50%  0.0 MB/s  2:00 left");
  EXPECT_EQ(progressText(1, 20000000, 4), "[====================] 100%  5.0 MB/s  0:00 left");
  // A first row of very many.
  EXPECT_EQ(progressText(0.00002, 3000, 0.5), "[                    ]   0%  0.0 MB/s");
  EXPECT_EQ(progressText(0.019, 3000000, 100), "[                    ]   2%  0.0 MB/s");
  EXPECT_EQ(progressText(0.3, 3000000, 0.4), "[======              ]  30%  7.5 MB/s");
  EXPECT_EQ(progressText(0.3, 3000000, 0.001), "[======              ]  30%");
}

TEST(Progress, LongNamesKeepTheirEnds) {
  EXPECT_EQ(host::endOf("picture.png", 11), "picture.png");
  EXPECT_EQ(host::endOf("folder/picture.png", 11), "...ture.png");
  EXPECT_EQ(host::endOf("folder/picture.png", 0), "...");
  // Of a letter of two bytes not one alone.
  EXPECT_EQ(host::endOf("Größe.png", 9), "...e.png");
}
