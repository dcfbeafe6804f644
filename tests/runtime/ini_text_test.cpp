// SPDX-License-Identifier: MIT
// What is taken off profile lines before they are compared.
#include <gtest/gtest.h>

#include <string>

#include "raxel/profile.h"

namespace {

std::string clean(std::string text, uint16_t flags) {
  IniCleanLine(text.data(), flags);
  return text.c_str();
}

std::string trim(std::string text, char character) {
  IniTrimChar(text.data(), character);
  return text.c_str();
}

TEST(IniTrimChar, LeavesWhatStandsBehindTheText) {
  char text[] = {' ', 'a', 'b', '\0', 'Z', 'Y'};
  IniTrimChar(text, ' ');
  EXPECT_EQ(std::string(text, sizeof text), std::string("ab\0\0ZY", 6));
}

TEST(IniCleanLine, TakesOffBracketsQuotesAndLineEndings) {
  EXPECT_EQ(clean("[TIF Export]\r\n", 0), "TIF Export");
  EXPECT_EQ(clean("TIF Export", 0), "TIF Export");
  EXPECT_EQ(clean("a\rb\nc", 0), "abc");
  EXPECT_EQ(clean("\"x\" [y]", 0), "x y");
}

TEST(IniCleanLine, FlagsKeepBracketsAndQuotes) {
  EXPECT_EQ(clean("[a]\"b\"", 1), "[a]b");
  EXPECT_EQ(clean("[a]\"b\"", 4), "a\"b\"");
  EXPECT_EQ(clean("[a]\"b\"", 5), "[a]\"b\"");
  EXPECT_EQ(clean("  k=\"v\" \r\n", 5), "k=\"v\"");
}

TEST(IniCleanLine, ADoubledQuoteIsKeptAsOne) {
  EXPECT_EQ(clean("a\"\"b", 0), "a\"b");
  EXPECT_EQ(clean("\"\"\"\"", 0), "\"\"");
  EXPECT_EQ(clean("\"\"\"", 0), "\"");
  EXPECT_EQ(clean("a\"\"b", 4), "a\"\"b") << "where quotes are kept, all are";
}

TEST(IniCleanLine, ASemicolonEndsTheTextAnywhere) {
  EXPECT_EQ(clean("Width=7.5 ; inches", 5), "Width=7.5");
  EXPECT_EQ(clean("; all comment", 0), "");
  EXPECT_EQ(clean("k=\"a;b\"", 5), "k=\"a") << "even between quotes";
  EXPECT_EQ(clean("a;b;c", 0), "a");
}

TEST(IniCleanLine, StripsSpacesButNotTabs) {
  EXPECT_EQ(clean("   a b   ", 0), "a b");
  EXPECT_EQ(clean("\ta\t", 0), "\ta\t");
  EXPECT_EQ(clean("    ", 0), "");
  EXPECT_EQ(clean("", 0), "");
  EXPECT_EQ(clean(" [ a ] ", 0), "a");
}

TEST(IniTrimChar, SpacesGoAllQuotesGoOnce) {
  EXPECT_EQ(trim("  a b ", ' '), "a b");
  EXPECT_EQ(trim("\"\"a\"\"", '"'), "\"a\"");
  EXPECT_EQ(trim("\"a", '"'), "a");
  EXPECT_EQ(trim("a\"", '"'), "a");
  EXPECT_EQ(trim("\"", '"'), "");
  EXPECT_EQ(trim("\"\"", '"'), "");
  EXPECT_EQ(trim("", '"'), "");
  EXPECT_EQ(trim("   ", ' '), "");
  EXPECT_EQ(trim(" \"a\" ", '"'), " \"a\" ");
}

TEST(IniTrimChar, NullTextAndTheZeroCharacterDoNothing) {
  IniTrimChar(nullptr, ' ');
  IniCleanLine(nullptr, 0);
  EXPECT_EQ(trim("abc", 0), "abc");
}

}  // namespace
