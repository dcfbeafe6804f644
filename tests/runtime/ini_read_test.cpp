// SPDX-License-Identifier: MIT
// Reading values and key names from profiles.
#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <string>

#include "raxel/profile.h"
#include "support/cases.h"
#include "support/environment.h"
#include "support/random.h"
#include "support/temp_dir.h"

namespace {

struct Profile : testing::Test {
  support::TempDir dir;
  support::Environment noFolder{"INIDIR", nullptr};
  std::string path = dir.file("p.ini");

  void profile(const std::string &text) { support::writeFile(path, text); }

  // The value and the result of one look-up, with `room` bytes of buffer.
  std::string get(const char *section, const char *key, const char *fallback = "", int32_t room = 80) {
    std::string buffer(static_cast<size_t>(room) + 1, '#');
    result = GetPrivateProfileString(section, key, fallback, buffer.data(), room, path.c_str());
    EXPECT_EQ(buffer.back(), '#') << "nothing is written behind the buffer";
    buffer.pop_back();
    raw = buffer;
    return buffer.c_str();
  }
  int32_t number(const char *text, int32_t fallback = -7) {
    profile(std::string("[s]\nk=") + text + "\n");
    return GetPrivateProfileInt("s", "k", fallback, path.c_str());
  }

  int32_t result = -1;
  std::string raw;
};

TEST_F(Profile, KeysMatchInAnyCase) {
  profile("[TIF Export]\nColor Mode=104\n");
  EXPECT_EQ(get("TIF Export", "color mode"), "104");
  EXPECT_EQ(result, 3);
  EXPECT_EQ(get("tif EXPORT", "COLOR MODE"), "104");
  EXPECT_EQ(get("[TIF Export]", "Color Mode"), "104") << "the caller's name is cleaned too";
}

TEST_F(Profile, SpacesBeforeTheEqualsSignKeepAKeyFromMatching) {
  profile("[s]\nColor Mode = 104\n");
  EXPECT_EQ(get("s", "Color Mode", "none"), "none");
  EXPECT_EQ(get("s", "Color Mode "), " 104");
  EXPECT_EQ(GetPrivateProfileInt("s", "Color Mode ", 9, path.c_str()), 0);
}

TEST_F(Profile, AnyLineMayNameASection) {
  profile("s\nk=1\n[t]\nk=2\n");
  EXPECT_EQ(get("s", "k"), "1");
  EXPECT_EQ(get("t", "k"), "2");
  profile("\nk=1\n");
  EXPECT_EQ(get("[]", "k"), "") << "but an empty one, which names none";
  profile("; comment\n\n  \"s\"  ; here\nk=3\n");
  EXPECT_EQ(get("s", "k"), "3");
  // Before any section, a key line names one too.
  profile("k=1\nk=2\n");
  EXPECT_EQ(get("k=1", "k"), "2");
}

TEST_F(Profile, CommentsAndSpacesAreCut) {
  profile("[s]\n  Width=7.5 ; inches\n;Width=8\nHeight=;none\n");
  EXPECT_EQ(get("s", "Width"), "7.5");
  EXPECT_EQ(get("s", "Height", ""), "");
  EXPECT_EQ(result, 0);
}

TEST_F(Profile, ValuesLoseOnePairOfQuotes) {
  profile("[s]\na=\"x y\"\nb=\"\"q\"\"\nc=\"open\nd=u=v\n");
  EXPECT_EQ(get("s", "a"), "x y");
  EXPECT_EQ(get("s", "b"), "\"q\"");
  EXPECT_EQ(get("s", "c"), "open");
  EXPECT_EQ(get("s", "d"), "u=v") << "the first equals sign divides";
}

TEST_F(Profile, AShortValueKeepsTheEndOfTheDefault) {
  profile("[s]\nWidth=8\n");
  EXPECT_EQ(get("s", "Width", "6.67"), "8.67");
  EXPECT_EQ(result, 1);
  EXPECT_EQ(get("s", "Height", "5.0"), "5.0");
  EXPECT_EQ(result, 3);
}

TEST_F(Profile, FullBuffersHaveNoTerminator) {
  profile("[s]\nk=abcdef\n");
  get("s", "k", "", 4);
  EXPECT_EQ(raw, "abcd");
  EXPECT_EQ(result, 4);
  get("s", "absent", "default", 4);
  EXPECT_EQ(raw, "defa");
  EXPECT_EQ(result, 4);
  get("s", "k", "", 6);
  EXPECT_EQ(raw, "abcdef");
}

TEST_F(Profile, TheBufferIsClearedOverItsWholeSize) {
  profile("");
  get("s", "k", "ab", 8);
  EXPECT_EQ(raw, std::string("ab\0\0\0\0\0\0", 8));
}

TEST_F(Profile, RefusedArgumentsTouchNothing) {
  profile("[s]\nk=1\n");
  char buffer[4] = "abc";
  EXPECT_EQ(GetPrivateProfileString(nullptr, "k", "d", buffer, 4, path.c_str()), 0);
  EXPECT_EQ(GetPrivateProfileString("", "k", "d", buffer, 4, path.c_str()), 0);
  EXPECT_EQ(GetPrivateProfileString("s", "k", nullptr, buffer, 4, path.c_str()), 0);
  EXPECT_STREQ(buffer, "abc");
  EXPECT_EQ(GetPrivateProfileString("s", "k", "d", buffer, 0, path.c_str()), 0);
  EXPECT_EQ(GetPrivateProfileString("s", "k", "d", buffer, -1, path.c_str()), 0);
  EXPECT_STREQ(buffer, "abc");
  EXPECT_EQ(GetPrivateProfileString("s", "k", "d", buffer, 4, nullptr), 1);
  EXPECT_STREQ(buffer, "d");
  EXPECT_EQ(GetPrivateProfileInt("s", nullptr, 5, path.c_str()), 5);
  EXPECT_EQ(GetPrivateProfileInt(nullptr, "k", 5, path.c_str()), 5);
  EXPECT_EQ(GetPrivateProfileInt("s", "k", 5, nullptr), 5);
}

TEST_F(Profile, WithoutABufferTheLengthsComeBackAllTheSame) {
  const auto length = [&](const char *key, int32_t size) {
    return GetPrivateProfileString("s", key, "default", nullptr, size, path.c_str());
  };
  for (const int32_t size : {-1, 0, 4, 80}) EXPECT_EQ(length("k", size), 7) << "no file";
  profile("[s]\nk=abcde\n");
  for (const int32_t size : {-1, 0, 4, 80}) EXPECT_EQ(length("absent", size), 7) << "the default's, uncut";
  EXPECT_EQ(length("k", 80), 5) << "the value's";
  EXPECT_EQ(length("k", 4), 4) << "as much of it as the size allows";
  EXPECT_EQ(length("k", 0), 0);
  EXPECT_EQ(length("k", -1), 0);
  EXPECT_EQ(length(nullptr, 80), 7) << "there is nowhere to list keys";
}

TEST_F(Profile, AMissingFileOrFolderLeavesTheDefault) {
  EXPECT_EQ(get("s", "k", "d"), "d");
  path = dir.path();
  EXPECT_EQ(get("s", "k", "d"), "d");
  path = "";
  EXPECT_EQ(get("s", "k", "d"), "d");
}

TEST_F(Profile, LaterSectionsOfTheSameNameAreSearched) {
  profile("[s]\na=1\n[t]\na=2\n[s]\nb=3\n");
  EXPECT_EQ(get("s", "b"), "3");
  EXPECT_EQ(get("s", "a"), "1");
}

TEST_F(Profile, ASectionDirectlyBehindItsNamesakeIsSkipped) {
  profile("[s]\na=1\n[s]\nb=2\n[s]\nc=3\n");
  EXPECT_EQ(get("s", "b", "none"), "none");
  EXPECT_EQ(get("s", "c"), "3");
}

TEST_F(Profile, OnlyABracketInTheFirstPlaceEndsASection) {
  profile("[s]\n [t]\nk=1\n");
  EXPECT_EQ(get("s", "k"), "1");
}

TEST_F(Profile, EveryLineEndingSeparates) {
  for (const char *end : {"\n", "\r\n", "\r"}) {
    profile(std::string("[s]") + end + end + "a=1" + end + "b=2" + end);
    EXPECT_EQ(get("s", "a"), "1");
    EXPECT_EQ(get("s", "b"), "2");
  }
}

TEST_F(Profile, TheLastLineNeedsNoEnding) {
  profile("[s]\nk=end");
  EXPECT_EQ(get("s", "k"), "end");
  profile("[s]\r\rk=end\r");
  EXPECT_EQ(get("s", "k"), "end");
}

TEST_F(Profile, LongLinesAreReadInPieces) {
  // The first 256 bytes are one line; the rest is the next.
  profile("[s]\n" + std::string(250, 'x') + "=12345k=found\n");
  EXPECT_EQ(get("s", "k"), "found");
  EXPECT_EQ(get("s", std::string(250, 'x').c_str()), "12345");
}

TEST_F(Profile, IntegersReadDecimalAndHexadecimal) {
  EXPECT_EQ(number("0x60"), 96);
  EXPECT_EQ(number("0X6f"), 0x6F);
  EXPECT_EQ(number("0xaBcG"), 0xABC);
  EXPECT_EQ(number("96dpi"), 96);
  EXPECT_EQ(number("104"), 104);
  EXPECT_EQ(number(""), -7) << "an empty value reads as the default";
  EXPECT_EQ(number("-5"), 0);
  EXPECT_EQ(number("abc"), 0);
  EXPECT_EQ(number(" 104"), 0);
  EXPECT_EQ(number("0x"), 0);
  EXPECT_EQ(number("\"240\""), 240);
  EXPECT_EQ(number("017"), 17) << "nor is it octal";
  EXPECT_EQ(number("1x5"), 1);
}

TEST_F(Profile, IntegersWrapAtThirtyTwoBits) {
  EXPECT_EQ(number("4294967297"), 1);
  EXPECT_EQ(number("0x123456789"), 0x23456789);
  EXPECT_EQ(number("2147483648"), INT32_MIN);
  EXPECT_EQ(number("0xFFFFFFFF"), -1);
}

TEST_F(Profile, IntegersReadThirtyTwoCharacters) {
  // The 33rd digit is cut off: 32 digits of 0...01 give 1, not 10.
  EXPECT_EQ(number((std::string(31, '0') + "10").c_str()), 1);
}

TEST_F(Profile, ANullKeyListsTheKeys) {
  profile("[s]\nalpha=1\n;x=2\nno equals\nbe=3\n[t]\nz=1\n");
  get("s", nullptr, "", 16);
  EXPECT_EQ(raw, std::string("alpha\0be\0\0\0\0\0\0\0\0", 16));
  EXPECT_EQ(result, 7) << "the lengths of the names alone";
  get("t", nullptr, "", 2);
  EXPECT_EQ(raw, std::string("z\0", 2));
  EXPECT_EQ(result, 1);
}

TEST_F(Profile, AKeyListThatDoesNotFitEndsInTwoZeroBytes) {
  profile("[s]\nabcd=1\nefgh=2\nij=3\n");
  get("s", nullptr, "", 8);
  EXPECT_EQ(raw, std::string("abcd\0e\0\0", 8));
  EXPECT_EQ(result, 7);
  get("s", nullptr, "", 3);
  EXPECT_EQ(raw, std::string("a\0\0", 3));
  EXPECT_EQ(result, 2);
  get("s", nullptr, "", 2);
  EXPECT_EQ(raw, std::string("\0\0", 2));
  EXPECT_EQ(result, 1);
  get("s", nullptr, "default", 1);
  EXPECT_EQ(raw, std::string("\0", 1)) << "of the two zero bytes the one that lies inside";
  EXPECT_EQ(result, 0);
  get("s", nullptr, "", 4);
  EXPECT_EQ(raw, std::string("ab\0\0", 4)) << "a name needs room for its zero byte";
  get("s", nullptr, "", 10);
  EXPECT_EQ(raw, std::string("abcd\0efg\0\0", 10)) << "the third name cuts the second";
  EXPECT_EQ(result, 9);
}

TEST_F(Profile, AnAbsentSectionListsTheDefault) {
  profile("[s]\na=1\n");
  get("u", nullptr, "dd", 8);
  EXPECT_EQ(raw.substr(0, 3), std::string("dd\0", 3));
  EXPECT_EQ(result, 2);
}

TEST_F(Profile, TheDefaultProfileIsFoundInItsFolder) {
  support::writeFile(dir.file("KVL.INI"), "[s]\nk=0x10\n");
  const support::Environment folder("INIDIR", dir.path().c_str());
  char buffer[8];
  EXPECT_EQ(GetProfileString("s", "k", "", buffer, 8), 4);
  EXPECT_STREQ(buffer, "0x10");
  EXPECT_EQ(GetProfileInt("s", "k", 0), 16);
  EXPECT_EQ(GetProfileInt("s", "absent", 3), 3);
}

TEST_F(Profile, HostileBytesNeverLeaveTheBuffer) {
  const std::string pieces[] = {"[s]", "[", "]", "k=", "=", "\n", "\r", ";", "\"", std::string(1, '\0'),
                                "x"};
  support::Random random(41);
  for (size_t i = 0; i < support::cases(60); ++i) {
    std::string text;
    for (int64_t n = random.between(0, 200); n > 0; --n) {
      text += random.chance(70) ? pieces[random.next() % std::size(pieces)]
                                : std::string(1, static_cast<char>(random.byte()));
      if (random.chance(2)) text.append(static_cast<size_t>(random.between(250, 600)), 'y');
    }
    profile(text);
    for (const char *key : {"k", "", static_cast<const char *>(nullptr)}) {
      const auto room = static_cast<int32_t>(random.between(1, 40));
      get("s", key, random.chance(50) ? "" : "default", room);
      EXPECT_GE(result, 0);
      EXPECT_LE(result, room);
    }
  }
}

TEST_F(Profile, LargeProfilesEnd) {
  const size_t size = support::cases(1000000) + 1000;
  for (const std::string &piece : {std::string("x"), std::string("[s]\r"), std::string("\r"),
                                   std::string("\n"), std::string(1, '\0'), std::string("[")}) {
    std::string text;
    while (text.size() < size) text += piece;
    profile(text);
    EXPECT_EQ(get("s", "k", "d"), "d");
  }
}

TEST_F(Profile, AListWithoutRoomStoresNothing) {
  profile("[s]\nkey=1\n");
  char byte = '#';
  EXPECT_EQ(GetPrivateProfileString("s", nullptr, "d", &byte, 0, path.c_str()), 0);
  EXPECT_EQ(byte, '#');
}

// A name that is empty when it is cleaned is no section's, not even that of an empty line.
TEST_F(Profile, AnEmptyNameIsNoSections) {
  profile("\n[]\nk=1\n;\nk=2\n");
  EXPECT_EQ(get("[]", "k", "d"), "d");
  EXPECT_EQ(result, 1);
}

}  // namespace
