#include "command/progress.h"

#include <gtest/gtest.h>

TEST(Progress, TheBarFillsUp) {
  EXPECT_EQ(host::bar(0), "[                    ]");
  EXPECT_EQ(host::bar(0.26), "[=====               ]");
  EXPECT_EQ(host::bar(1), "[====================]");
  EXPECT_EQ(host::bar(7), "[====================]");
}

TEST(Progress, LongNamesKeepTheirEnds) {
  EXPECT_EQ(host::endOf("picture.png", 11), "picture.png");
  EXPECT_EQ(host::endOf("folder/picture.png", 11), "...ture.png");
  EXPECT_EQ(host::endOf("folder/picture.png", 0), "...");
  // Of a letter of two bytes not one alone.
  EXPECT_EQ(host::endOf("Größe.png", 9), "...e.png");
}
