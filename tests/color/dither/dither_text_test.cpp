// SPDX-License-Identifier: MIT
// What dithering prints at each diagnostics level, to the letter: its own lines on standard output,
// those of the conversions and of the median cut on standard error.
#include <gtest/gtest.h>

#include <string>

#include "color/printed.h"

namespace {

using plain::Bytes;
using printed::kAllocated24;
using printed::kComplete;
using printed::kHeader;
using printed::Printed;

const Bytes kTwoColors{0, 0, 0, 255, 255, 255};

Printed dither(int level) {
  const runtime::Block bits = pictures::block(Bytes(24, 200));
  const runtime::Block table = pictures::block(kTwoColors);
  return printed::run(level,
                      [&] { return rlDitherGivenCT(bits.handle(), 2, 3, 24, 1, 0, table.handle(), 2); });
}

const std::string kTableText =
    "Dithering to the following colortable:\ncolor 0: [0, 0, 0]\ncolor 1: [255, 255, 255]\n";
const std::string kAllocated12 = "Allocated 12 bytes of new memory for the destination bitmap\n";

TEST(DitherText, Level0PrintsNothing) {
  EXPECT_EQ(dither(0).out, "");
  EXPECT_EQ(dither(0).err, "");
}

TEST(DitherText, TableAndMarksGoToStandardOutput) {
  for (int level : {1, 2, -1}) {
    EXPECT_EQ(dither(level).out, kTableText + "Dithering...each(.) represents one scan line\n...\n")
        << level;
    // The picture is widened first and packed last, and both conversions report themselves.
    EXPECT_EQ(dither(level).err,
              kAllocated24 + kHeader + "..." + kComplete + kAllocated12 + kHeader + "..." + kComplete)
        << level;
  }
}

TEST(DitherText, Level3PrintsSummariesOnly) {
  EXPECT_EQ(dither(3).out, kTableText);
  EXPECT_EQ(dither(3).err, kAllocated24 + kComplete + kAllocated12 + kComplete);
}

TEST(DitherText, LevelsAbove3PrintThePlacesOfBothConversions) {
  const std::string places = "(0,0): (1,0): (0,1): (1,1): (0,2): (1,2): ";
  EXPECT_EQ(dither(4).out, kTableText);
  EXPECT_EQ(dither(4).err, kAllocated24 + places + kComplete + kAllocated12 + places + kComplete);
}

TEST(DitherText, GetCtPrintsTheTableItChose) {
  const runtime::Block bits = pictures::block(Bytes{255, 0, 0, 0});
  Handle table = 0;
  const Printed what = printed::run(3, [&] {
    uint16_t count = 0;
    rlDitherGetCT(bits.handle(), 1, 1, 24, 4, 0, &table, &count);
    return Handle{0};
  });
  const runtime::Block owned(table);
  EXPECT_EQ(what.out,
            "Dithering to the following colortable:\n"
            "color 0: [255, 0, 0]\n"
            "color 1: [255, 255, 255]\n"
            "color 2: [255, 255, 0]\n"
            "color 3: [255, 0, 255]\n"
            "color 4: [0, 255, 255]\n"
            "color 5: [255, 0, 0]\n"
            "color 6: [0, 255, 0]\n"
            "color 7: [0, 0, 255]\n"
            "color 8: [0, 0, 0]\n"
            "color 9: [0, 0, 0]\n"
            "color 10: [0, 0, 0]\n"
            "color 11: [0, 0, 0]\n"
            "color 12: [0, 0, 0]\n"
            "color 13: [0, 0, 0]\n"
            "color 14: [0, 0, 0]\n"
            "color 15: [0, 0, 0]\n");
  EXPECT_EQ(what.err, "Allocated 4 bytes of new memory for the destination bitmap\n" + kComplete +
                          "Color Reduction in Process...24bit -> 8 colors\n"
                          "  -new color table size: 1\n"
                          "   color 0: [255, 0, 0]\n");
}

TEST(DitherText, AMissingTableHasNoLines) {
  const runtime::Block bits = pictures::block(Bytes(4, 1));
  const Printed what =
      printed::run(3, [&] { return rlDitherGivenCT(bits.handle(), 1, 1, 24, 1, 0, 0, 8); });
  EXPECT_EQ(what.out, "Dithering to the following colortable:\n");
}

TEST(DitherText, EveryLevelGivesTheSamePixels) {
  support::Random random(77);
  for (int depth : {1, 4, 8}) {
    const plain::Picture picture = pictures::picture(random, 23, 17, 24);
    const runtime::Block bits = pictures::block(picture.bits);
    Bytes silent;
    for (int level : {0, 1, 3, 4}) {
      Handle table = 0;
      const Printed what = printed::run(level, [&] {
        return rlDitherBitmap(bits.handle(), 23, 17, 24, static_cast<int16_t>(depth), 0, &table);
      });
      const runtime::Block owned(table);
      if (level == 0) silent = what.bits;
      EXPECT_EQ(what.bits, silent) << depth << " bits, level " << level;
    }
  }
}

}  // namespace
