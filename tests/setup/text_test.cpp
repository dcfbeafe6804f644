// SPDX-License-Identifier: MIT
// Bounded copies, and numbers as text in the C locale.
#include "setup/text.h"

#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "support/random.h"

namespace {

std::string general(double value, int digits) {
  char text[40];
  setup::writeGeneral(text, value, digits);
  return text;
}

std::string integer(int32_t value) {
  char text[16];
  setup::writeInteger(text, value);
  return text;
}

TEST(CopyText, CutsAtTheRoomAndTerminates) {
  std::array<char, 6> room;
  setup::copyText(room, "abcde");
  EXPECT_STREQ(room.data(), "abcde");
  setup::copyText(room, "abcdef");
  EXPECT_STREQ(room.data(), "abcde");
  setup::copyText(room, "");
  EXPECT_STREQ(room.data(), "");
  setup::copyText(room, "x");
  setup::copyText(room, nullptr);
  EXPECT_STREQ(room.data(), "");
}

TEST(CopyText, WholeTextsFitOrLeaveNothing) {
  std::array<char, 6> room;
  EXPECT_TRUE(setup::copyWholeText(room, "abcde"));
  EXPECT_STREQ(room.data(), "abcde");
  EXPECT_FALSE(setup::copyWholeText(room, "abcdef"));
  EXPECT_STREQ(room.data(), "");
  EXPECT_TRUE(setup::copyWholeText(room, nullptr));
}

TEST(ReadDecimal, ReadsTheNumberAtTheStart) {
  EXPECT_EQ(setup::readDecimal("6.67"), 6.67);
  EXPECT_EQ(setup::readDecimal("  8.67 inches"), 8.67);
  EXPECT_EQ(setup::readDecimal(".36.67"), 0.36);
  EXPECT_EQ(setup::readDecimal("+2"), 2.0);
  EXPECT_EQ(setup::readDecimal("-2.5e1x"), -25.0);
  EXPECT_EQ(setup::readDecimal("5."), 5.0);
  EXPECT_EQ(setup::readDecimal("3067"), 3067.0);
  EXPECT_EQ(setup::readDecimal(" \t\n\v\f\r1.5"), 1.5) << "white space of every kind";
  EXPECT_EQ(setup::readDecimal("0e999"), 0.0);
}

TEST(ReadDecimal, AnythingElseIsZero) {
  for (const char *text : {"", " ", "abc", "inf", "nan", "-inf", ".", "-", "+-1", "e5", ".e5"}) {
    EXPECT_EQ(setup::readDecimal(text), 0.0) << text;
  }
  EXPECT_EQ(setup::readDecimal("0x10"), 0.0) << "the hexadecimal form is no decimal number";
}

TEST(ReadDecimal, NumbersTooLargeForADoubleAreInfinite) {
  for (const char *text : {"1e999", "1e+309", "0.001e400", "12345e99999999999999999999x"}) {
    EXPECT_EQ(setup::readDecimal(text), HUGE_VAL) << text;
  }
  EXPECT_EQ(setup::readDecimal("-1e999"), -HUGE_VAL);
  EXPECT_EQ(setup::readDecimal(std::string(400, '7').c_str()), HUGE_VAL);
  EXPECT_EQ(setup::readDecimal((std::string(2000, '7') + "e-1600").c_str()), HUGE_VAL);
}

TEST(ReadDecimal, NumbersTooSmallForADoubleAreZero) {
  for (const char *text : {"1e-400", "123.4E-400", "0.0001e-340", ".1e-99999999999999999999"}) {
    EXPECT_EQ(setup::readDecimal(text), 0.0) << text;
  }
  EXPECT_TRUE(std::signbit(setup::readDecimal("-1e-400")));
  EXPECT_EQ(setup::readDecimal(("0." + std::string(400, '0') + "7").c_str()), 0.0);
  EXPECT_EQ(setup::readDecimal(("0." + std::string(800, '0') + "7e400").c_str()), 0.0) << "7e-401";
  EXPECT_EQ(setup::readDecimal(("0." + std::string(2000, '0') + "7e1600").c_str()), 0.0) << "7e-401";
}

TEST(WriteGeneral, KeepsSignificantDigitsAndNoZerosBehind) {
  EXPECT_EQ(general(6.67, 3), "6.67");
  EXPECT_EQ(general(6.667, 3), "6.67");
  EXPECT_EQ(general(22.0, 3), "22");
  EXPECT_EQ(general(0.03125, 3), "0.0312");  // a tie, to the even digit
  EXPECT_EQ(general(0.03125, 6), "0.03125");
  EXPECT_EQ(general(1234567.0, 6), "1.23457e+06");
}

TEST(WriteGeneral, AgreesWithTheCLibraryInTheCLocale) {
  support::Random random(11);
  for (int i = 0; i < 2000; ++i) {
    const double value = static_cast<double>(random.between(3125, 2200000)) / 100000.0;
    for (int digits : {3, 6}) {
      char expected[64];
      std::snprintf(expected, sizeof expected, "%.*g", digits, value);
      ASSERT_EQ(general(value, digits), expected);
    }
  }
}

TEST(WriteInteger, WritesEveryInteger) {
  EXPECT_EQ(integer(0), "0");
  EXPECT_EQ(integer(-400), "-400");
  EXPECT_EQ(integer(INT32_MIN), "-2147483648");
  EXPECT_EQ(integer(INT32_MAX), "2147483647");
}

TEST(Writing, WithoutRoomTheTextIsEmpty) {
  std::array<char, 4> room;
  room.fill('#');
  setup::writeInteger(room, 1234);
  EXPECT_STREQ(room.data(), "");
  room.fill('#');
  setup::writeInteger(room, 12345);
  EXPECT_STREQ(room.data(), "");
  setup::writeInteger(room, 123);
  EXPECT_STREQ(room.data(), "123");
}

TEST(Locale, ADecimalCommaOfTheHostChangesNothing) {
  for (const char *name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "C.UTF-8"}) {
    if (std::setlocale(LC_ALL, name) == nullptr) continue;
    EXPECT_EQ(general(6.67, 3), "6.67") << name;
    EXPECT_EQ(setup::readDecimal("6.67"), 6.67) << name;
  }
  std::setlocale(LC_ALL, "C");
}

}  // namespace
