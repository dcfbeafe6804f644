// SPDX-License-Identifier: MIT
// What the display and the printer are taken to be.
#include "setup/display.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/globals.h"

namespace {

using support::Environment;

struct Device {
  double width = -1.0;
  double height = -1.0;
  int16_t x = -1;
  int16_t y = -1;
};

Device display() {
  Device d;
  EXPECT_EQ(GetDisplayInfo(&d.width, &d.height, &d.x, &d.y), 0);
  return d;
}

class Display : public testing::Test {
 protected:
  support::Globals globals_;
};

TEST_F(Display, NothingSetIs1280By1078DotsAt96) {
  const Device d = display();
  EXPECT_EQ(d.width, 1280.0 / 96);   // 13.333
  EXPECT_EQ(d.height, 1078.0 / 96);  // 11.229
  EXPECT_EQ(d.x, 96);
  EXPECT_EQ(d.y, 96);
}

TEST_F(Display, TheEnvironmentGivesAllFour) {
  const Environment info("DISPLAYINFO", "1024 768 72 72");
  const Device d = display();
  EXPECT_EQ(d.width, 1024.0 / 72);  // 14.222
  EXPECT_EQ(d.height, 768.0 / 72);  // 10.667
  EXPECT_EQ(d.x, 72);
  EXPECT_EQ(d.y, 72);
}

TEST_F(Display, EnvironmentGoesBeforeWhatTheHostSet) {
  SetDisplayInfo(800, 600, 100, 100);
  const Environment info("DISPLAYINFO", "1024x768x72x36");
  const Device d = display();
  EXPECT_EQ(d.width, 1024.0 / 72);
  EXPECT_EQ(d.height, 768.0 / 36);
  EXPECT_EQ(d.x, 72);
  EXPECT_EQ(d.y, 36);
}

TEST_F(Display, EmptyEnvironmentCountsAsNone) {
  const Environment info("DISPLAYINFO", "");
  EXPECT_EQ(display().x, 96);
}

TEST_F(Display, HostSettingsReplaceTheDefaultsFieldByField) {
  SetDisplayInfo(0.0, 0.0, 120, 120);
  Device d = display();
  EXPECT_EQ(d.width, 1280.0 / 120);   // 10.667
  EXPECT_EQ(d.height, 1078.0 / 120);  // 8.983
  SetDisplayInfo(640.0, 0.0, 0, 50);
  d = display();
  EXPECT_EQ(d.width, 640.0 / 96);
  EXPECT_EQ(d.height, 1078.0 / 50);
  EXPECT_EQ(d.x, 96);
  EXPECT_EQ(d.y, 50);
}

TEST_F(Display, MissingNumbersAreZeroAndNotTheDefaults) {
  const Environment info("DISPLAYINFO", "640 480");
  const Device d = display();
  EXPECT_EQ(d.x, 0);
  EXPECT_EQ(d.y, 0);
  EXPECT_TRUE(std::isinf(d.width));
  EXPECT_TRUE(std::isinf(d.height));
}

TEST_F(Display, NothingBelievableIsNoNumberAtAll) {
  const Environment info("DISPLAYINFO", "0");
  const Device d = display();
  EXPECT_TRUE(std::isnan(d.width));
  EXPECT_TRUE(std::isnan(d.height));
}

TEST_F(Display, OutputsMayBeMissing) {
  EXPECT_EQ(GetDisplayInfo(nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(GetPrinterInfo(nullptr, nullptr, nullptr, nullptr), 0);
  int16_t y = 0;
  GetDisplayInfo(nullptr, nullptr, nullptr, &y);
  EXPECT_EQ(y, 96);
}

TEST_F(Display, ThePrinterIsHandedBackAsStored) {
  Device p;
  EXPECT_EQ(GetPrinterInfo(&p.width, &p.height, &p.x, &p.y), 0);
  EXPECT_EQ(p.width, 0.0);
  EXPECT_EQ(p.height, 0.0);
  EXPECT_EQ(p.x, 0);
  EXPECT_EQ(p.y, 0);
  SetPrinterInfo(8.27, 11.69, 300, 150);
  GetPrinterInfo(&p.width, &p.height, &p.x, &p.y);
  EXPECT_EQ(p.width, 8.27);
  EXPECT_EQ(p.height, 11.69);
  EXPECT_EQ(p.x, 300);
  EXPECT_EQ(p.y, 150);
  EXPECT_EQ(display().x, 96) << "the printer leaves the display alone";
}

TEST_F(Display, ColorInfoIsAPlaceholder) {
  EXPECT_EQ(GetDisplayColorInfo(1), 0);
}

// ---- The four numbers of the environment variable

setup::DeviceInfo parse(const char *text) {
  return setup::parseDisplayInfo(text);
}

TEST(DisplayInfoText, NumbersAreSeparatedByExactlyOneCharacter) {
  // After "10" and one space stands another space: it reads as the number 5 and, being no digit, is
  // the one character stepped over. The number is then read once more.
  const auto plus = parse("+10 5 7");  // a sign is such a character as well
  EXPECT_EQ(plus.dWidth, 10);
  EXPECT_EQ(plus.dHeight, 10);
  EXPECT_EQ(plus.nXRes, 5);
  EXPECT_EQ(plus.nYRes, 7);
  const auto info = parse("10  5 7");
  EXPECT_EQ(info.dWidth, 10);
  EXPECT_EQ(info.dHeight, 5);
  EXPECT_EQ(info.nXRes, 5);
  EXPECT_EQ(info.nYRes, 7);
}

TEST(DisplayInfoText, ASignIsReadAndThenStepsOverItself) {
  const auto info = parse("-8 9 3");
  EXPECT_EQ(info.dWidth, -8);
  EXPECT_EQ(info.dHeight, 8);
  EXPECT_EQ(info.nXRes, 9);
  EXPECT_EQ(info.nYRes, 3);
}

TEST(DisplayInfoText, WordsAreZerosLetterByLetter) {
  const auto info = parse("ab12x3");
  EXPECT_EQ(info.dWidth, 0);
  EXPECT_EQ(info.dHeight, 0);
  EXPECT_EQ(info.nXRes, 12);
  EXPECT_EQ(info.nYRes, 3);
}

TEST(DisplayInfoText, HugeNumbersAreClampedAndResolutionsCut) {
  const auto info = parse("99999999999999999999 -99999999999999999999 65632 70000");
  EXPECT_EQ(info.dWidth, 2147483647.0);
  EXPECT_EQ(info.dHeight, -2147483648.0);
  // The minus sign is the character stepped over, so the third number is the second once more,
  // without its sign: 2147483647 keeps its low 16 bits, 0xFFFF.
  EXPECT_EQ(info.nXRes, -1);
  EXPECT_EQ(info.nYRes, 96);  // 65632 - 65536
}

TEST(DisplayInfoText, NothingIsReadPastTheEnd) {
  for (const char *text : {"", "1", "1 ", "1 2", "1 2 ", "1 2 3", "1 2 3 "}) {
    EXPECT_EQ(parse(text).nYRes, 0) << text;
  }
}

}  // namespace
