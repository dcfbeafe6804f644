// SPDX-License-Identifier: MIT
// What depth conversions print at each diagnostics level, to the letter.
#include <gtest/gtest.h>

#include <string>

#include "color/printed.h"

namespace {

using plain::Bytes;
using printed::kAllocated24;
using printed::kComplete;
using printed::kHeader;
using printed::Printed;

Printed convert(int level) {
  const runtime::Block bits = pictures::block(Bytes(12, 0));
  return printed::run(level, [&] { return rlConvertBitmapDepth(bits.handle(), 2, 3, 8, 24, 0, 0, 0); });
}

TEST(DepthText, Level0PrintsNothing) {
  EXPECT_EQ(convert(0).err, "");
  EXPECT_EQ(convert(0).out, "");
}

TEST(DepthText, Levels1And2PrintAMarkForEachRow) {
  for (int level : {1, 2, -1, -32768}) {
    EXPECT_EQ(convert(level).err, kAllocated24 + kHeader + "..." + kComplete) << level;
    EXPECT_EQ(convert(level).out, "") << level;
  }
}

TEST(DepthText, Level3PrintsSummariesOnly) {
  EXPECT_EQ(convert(3).err, kAllocated24 + kComplete);
}

TEST(DepthText, LevelsAbove3PrintThePlaceOfEachPixel) {
  for (int level : {4, 32767}) {
    EXPECT_EQ(convert(level).err, kAllocated24 + "(0,0): (1,0): (0,1): (1,1): (0,2): (1,2): " + kComplete)
        << level;
  }
}

TEST(DepthText, RowsWithoutPixelsHaveTheirMarks) {
  const runtime::Block bits = pictures::block(Bytes(12, 0));
  const Printed what =
      printed::run(1, [&] { return rlConvertBitmapDepth(bits.handle(), 0, 2, 8, 24, 0, 0, 0); });
  EXPECT_EQ(what.err,
            "Allocated 0 bytes of new memory for the destination bitmap\n" + kHeader + ".." + kComplete);
}

TEST(DepthText, DepthsThatCannotBeWrittenPrintAsOthersDo) {
  const runtime::Block bits = pictures::block(Bytes(12, 0));
  const Printed what =
      printed::run(4, [&] { return rlConvertBitmapDepth(bits.handle(), 1, 2, 8, 16, 0, 0, 0); });
  EXPECT_EQ(what.err,
            "Allocated 8 bytes of new memory for the destination bitmap\n(0,0): (0,1): " + kComplete);
}

TEST(DepthText, TooLargeAPictureStillPrintsItsEnd) {
  const runtime::Block bits = pictures::block(Bytes(12, 0));
  const Printed what =
      printed::run(1, [&] { return rlConvertBitmapDepth(bits.handle(), 65536, 65536, 8, 8, 0, 0, 0); });
  EXPECT_EQ(what.err, "Allocated 0 bytes of new memory for the destination bitmap\n" + kHeader + kComplete);
  EXPECT_EQ(what.bits, Bytes{});
}

}  // namespace
