// SPDX-License-Identifier: MIT
// Lines in and out of streams.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "raxel/memory.h"
#include "raxel/stream.h"
#include "support/temp_dir.h"

namespace {

struct Lines : testing::Test {
  support::TempDir dir;
  std::string path = dir.file("text");
  Handle h = 0;

  Handle open(const std::string &text) {
    support::writeFile(path, text);
    return h = kvlOpen(path.c_str(), nullptr, KVL_READ);
  }
  void TearDown() override {
    if (h != 0) {
      EXPECT_EQ(kvlClose(h), 0);
    }
  }
  std::string line(int32_t max = 64) {
    std::string buffer(static_cast<size_t>(max) + 1, '#');
    result = kvlReadLine(h, buffer.data(), max);
    EXPECT_EQ(buffer.back(), '#');
    buffer.back() = 0;
    return buffer.c_str();
  }
  std::string written(int32_t format, const char *text, int32_t length) {
    const Handle out = kvlOpen(path.c_str(), nullptr, KVL_OUTPUT);
    EXPECT_EQ(kvlSetLineFormat(out, format), 0);
    result = kvlWriteLine(out, text, length);
    EXPECT_EQ(kvlClose(out), 0);
    return support::readText(path);
  }
  int32_t result = -99;
};

TEST_F(Lines, EndAtEveryKindOfEnding) {
  open("one\ntwo\r\nthree\rfour\n\n\r\rlast\n");
  for (const char *want : {"one", "two", "three", "four", "", "", "", "last"}) {
    EXPECT_EQ(line(), want);
    EXPECT_EQ(result, static_cast<int32_t>(std::strlen(want)));
  }
  EXPECT_EQ(line(), "");
  EXPECT_EQ(result, -1);
}

TEST_F(Lines, TheLastLineWithoutAnEndingComesWithMinusOne) {
  open("one\ntail");
  EXPECT_EQ(line(), "one");
  EXPECT_EQ(line(), "tail");
  EXPECT_EQ(result, -1);
}

TEST_F(Lines, ACarriageReturnAtTheEndReadsOnIntoIt) {
  open("tail\r");
  EXPECT_EQ(line(), "tail");
  EXPECT_EQ(result, -1);
}

TEST_F(Lines, LongLinesComeInPiecesWithoutTerminator) {
  open("abcdefgh\nx\n");
  EXPECT_EQ(line(3), "abc");
  EXPECT_EQ(result, 3);
  EXPECT_EQ(line(8), "defgh");
  EXPECT_EQ(result, 5);
  EXPECT_EQ(line(1), "x");
  EXPECT_EQ(line(1), "") << "the ending of a line that just fitted is an empty line";
  EXPECT_EQ(result, 0);
}

TEST_F(Lines, TheByteAfterACarriageReturnIsPushedBackAcrossWindows) {
  for (size_t at : {12286u, 12287u, 12288u}) {
    open(std::string(at, 'a') + "\rb\n");
    std::string longLine(at, 0);
    EXPECT_EQ(kvlReadLine(h, longLine.data(), static_cast<int32_t>(at) + 5), static_cast<int32_t>(at));
    EXPECT_EQ(line(), "b");
    EXPECT_EQ(kvlClose(h), 0);
  }
  h = 0;
}

TEST_F(Lines, ZeroBytesAreKept) {
  open(std::string("a\0b\n", 4));
  char buffer[8] = "#######";
  EXPECT_EQ(kvlReadLine(h, buffer, 8), 3);
  EXPECT_EQ(std::string(buffer, 4), std::string("a\0b\0", 4));
}

TEST_F(Lines, RefusedArgumentsMoveNothing) {
  open("one\n");
  char buffer[4] = "###";
  EXPECT_EQ(kvlReadLine(h, nullptr, 4), 0);
  EXPECT_EQ(kvlReadLine(h, buffer, 0), 0);
  EXPECT_EQ(kvlReadLine(h, buffer, -1), 0);
  EXPECT_STREQ(buffer, "###");
  EXPECT_EQ(kvlReadLine(0, buffer, 4), -1);
  EXPECT_EQ(kvlWriteLine(0, "a", 1), 0);
  EXPECT_EQ(kvlSetLineFormat(0, KVL_LINE_CR), 0);
  EXPECT_EQ(kvlGetLineFormat(0), -1);
  EXPECT_EQ(line(), "one") << "nothing was read on the way";
}

TEST_F(Lines, AreWrittenWithTheChosenEnding) {
  EXPECT_EQ(written(2, "ab", 2), "ab\n");
  EXPECT_EQ(written(1, "ab", 2), "ab\r");
  EXPECT_EQ(written(0, "ab", 2), "ab\r\n");
  EXPECT_EQ(written(7, "ab", 2), "ab\r\n");
  EXPECT_EQ(written(-1, "ab", 2), "ab\r\n") << "what data without a line end are classified as";
  EXPECT_EQ(written(2, "abc", 1), "a\n");
  EXPECT_EQ(result, 1);
  EXPECT_EQ(written(2, "", 0), "\n");
  EXPECT_EQ(result, 0);
}

TEST_F(Lines, AFailingEndingIsTheResult) {
  const std::string full(12288, 'x');
  const Handle out = kvlOpen("/dev/full", nullptr, KVL_OUTPUT);
  EXPECT_EQ(kvlWriteLine(out, full.data(), 12288), -1);
  EXPECT_EQ(kvlWriteLine(out, full.data(), 12288), 0) << "no second try";
  EXPECT_EQ(kvlClose(out), -1);
}

TEST_F(Lines, TheFormatIsThatOfTheFirstEnding) {
  const struct {
    const char *text;
    int32_t format;
  } cases[] = {{"a\nb\r\n", 2}, {"a\r\nb\n", 0}, {"a\rb\n", 1}, {"a\r", 1}, {"\r\r\n", 1},
               {"abc", -1},     {"", -1},        {"\n", 2},     {"\r\n", 0}};
  for (const auto &c : cases) {
    open(c.text);
    EXPECT_EQ(kvlGetLineFormat(h), c.format) << c.text;
    EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_POSITION), 0) << "back at the start";
    EXPECT_EQ(kvlClose(h), 0);
  }
  h = 0;
}

TEST_F(Lines, TheFormatIsLookedForFromThePosition) {
  open("a\nb\rc");
  EXPECT_EQ(kvlSeek(h, 2, KVL_FROM_START), 2);
  EXPECT_EQ(kvlGetLineFormat(h), 1);
}

}  // namespace
