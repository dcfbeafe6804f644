// SPDX-License-Identifier: MIT
// String and number helpers: letter case, comparison order, rounding and tolerance.
#include "raxel/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

TEST(Text, CapitalsAndSmallLettersAreAsciiOnly) {
  // Every byte from 1 to 255, so that nothing but the 26 letters may change.
  for (int c = 1; c < 256; ++c) {
    char up[] = {static_cast<char>(c), 0};
    char down[] = {static_cast<char>(c), 0};
    const int wantUp = c >= 0x61 && c <= 0x7A ? c - 0x20 : c;
    const int wantDown = c >= 0x41 && c <= 0x5A ? c + 0x20 : c;
    EXPECT_EQ(static_cast<uint8_t>(*strupr(up)), wantUp);
    EXPECT_EQ(static_cast<uint8_t>(*strlower(down)), wantDown);
  }
}

TEST(Text, ConversionWorksInPlaceAndReturnsTheString) {
  char text[] = "raxel 2.0 TiF";
  EXPECT_EQ(strupr(text), text);
  EXPECT_STREQ(text, "RAXEL 2.0 TIF");
  EXPECT_EQ(strlwr(text), text);
  EXPECT_STREQ(text, "raxel 2.0 tif");
  char empty[] = "";
  EXPECT_EQ(strupr(empty), empty);
  EXPECT_STREQ(empty, "");
}

TEST(Text, ComparisonIsPositiveWhenTheFirstSortsBefore) {
  EXPECT_GT(stricmp("abc", "ABD"), 0);
  EXPECT_LT(stricmp("abd", "ABC"), 0);
  EXPECT_EQ(stricmp("TIF", "tif"), 0);
  EXPECT_EQ(stricmp("", ""), 0);
  EXPECT_EQ(stricmp("a", "c"), 2);
}

TEST(Text, ComparisonWithALongerStringGivesItsNextCapital) {
  EXPECT_EQ(stricmp("ab", "abc"), 'C');
  EXPECT_EQ(stricmp("abc", "ab"), -'C');
}

TEST(Text, HighBytesCompareAsNegativeNumbers) {
  EXPECT_EQ(stricmp("\xFF", "\x80"), -127);
  EXPECT_EQ(stricmp("\xE4", "A"), 'A' + 28);
  EXPECT_NE(stricmp("\xE4", "\xC4"), 0) << "Latin-1 letters have no case here";
}

TEST(Text, CountedComparisonRunsPastTheTerminator) {
  const char a[] = {'a', 0, 'x'};
  const char b[] = {'A', 0, 'z'};
  EXPECT_EQ(strnicmp(a, b, 2), 0);
  EXPECT_EQ(strnicmp(a, b, 3), 2);
  EXPECT_EQ(strnicmp(a, b, 0), 0);
  EXPECT_EQ(strnicmp(a, b, -5), 0);
  EXPECT_EQ(strnicmp("abX", "ABY", 2), 0);
  EXPECT_GT(strnicmp("abX", "ABY", 3), 0);
}

TEST(Text, NullStringsDoNothing) {
  EXPECT_EQ(strupr(nullptr), nullptr);
  EXPECT_EQ(strlower(nullptr), nullptr);
  EXPECT_EQ(strlwr(nullptr), nullptr);
  EXPECT_EQ(stricmp(nullptr, "a"), 0);
  EXPECT_EQ(stricmp("a", nullptr), 0);
  EXPECT_EQ(strnicmp(nullptr, "a", 1), 0);
  EXPECT_EQ(strnicmp("a", nullptr, 1), 0);
}

TEST(Numbers, RoundsHalvesAwayFromZero) {
  EXPECT_EQ(roundd(2.5), 3);
  EXPECT_EQ(roundd(-2.5), -3);
  EXPECT_EQ(roundd(0.0), 0);
  EXPECT_EQ(roundd(-0.4), 0);
  EXPECT_EQ(roundd(0.49), 0);
  EXPECT_EQ(roundd(-0.5), -1);
  // The sum is rounded before it is cut: the largest double below one half becomes 1.
  EXPECT_EQ(roundd(0.49999999999999994), 1);
}

TEST(Numbers, RoundingSaturates) {
  EXPECT_EQ(roundd(1e20), 2147483647);
  EXPECT_EQ(roundd(-1e20), -2147483647 - 1);
  EXPECT_EQ(roundd(2147483646.5), 2147483647);
  EXPECT_EQ(roundd(std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_EQ(roundd(std::numeric_limits<double>::infinity()), 2147483647);
}

TEST(Numbers, AbsoluteValueNegatesWhatIsNotAboveZero) {
  EXPECT_EQ(dabs(3.25), 3.25);
  EXPECT_EQ(dabs(-3.25), 3.25);
  EXPECT_TRUE(std::signbit(dabs(0.0)));
  EXPECT_FALSE(std::signbit(dabs(-0.0)));
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(std::isnan(dabs(nan)));
  EXPECT_NE(std::signbit(dabs(nan)), std::signbit(nan));
}

TEST(Numbers, ToleranceIncludesItsEnd) {
  EXPECT_EQ(feqi(100, 104, 4), 1);
  EXPECT_EQ(feqi(100, 105, 4), 0);
  EXPECT_EQ(feqi(104, 100, 4), 1);
  EXPECT_EQ(feqi(5, 5, 0), 1);
  EXPECT_EQ(feqi(5, 6, 0), 0);
}

TEST(Numbers, ToleranceComparesUnsigned) {
  const int32_t lowest = -2147483647 - 1;
  EXPECT_EQ(feqi(0, 1000, -1), 1) << "a negative tolerance is a huge one";
  EXPECT_EQ(feqi(lowest, 0, 2147483647), 0) << "2^31 apart";
  EXPECT_EQ(feqi(lowest, 0, lowest), 1);
  EXPECT_EQ(feqi(lowest, 2147483647, 1), 1) << "the difference wraps to 1";
}

}  // namespace
