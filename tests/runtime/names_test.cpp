// SPDX-License-Identifier: MIT
// Parts of file names, and temporary names.
#include "runtime/names.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <set>
#include <string>

#include "raxel/stream.h"
#include "support/disk.h"
#include "support/temp_dir.h"

namespace {

std::string nameOf(const char *path) {
  char out[400] = "#";
  EXPECT_EQ(s_getname(out, path), out);
  return out;
}

std::string pathOf(const char *path) {
  char out[400] = "#";
  EXPECT_EQ(s_getpath(out, path), out);
  return out;
}

TEST(Names, TheNameLosesItsFolderAndItsExtension) {
  EXPECT_EQ(nameOf("a:\\dir\\file.tif"), "file");
  EXPECT_EQ(nameOf("name.ini"), "name");
  EXPECT_EQ(nameOf("/usr/lib/raxel.so"), "raxel");
  EXPECT_EQ(nameOf("a:file.tif"), "file");
  EXPECT_EQ(nameOf("archive.tar.gz"), "archive.tar") << "the last dot";
  EXPECT_EQ(nameOf("plain"), "plain");
  EXPECT_EQ(nameOf(".ini"), "");
  EXPECT_EQ(nameOf("/dir.d/"), "");
  EXPECT_EQ(nameOf(""), "");
}

TEST(Names, ABackslashComesBeforeASlashAndThatBeforeAColon) {
  EXPECT_EQ(nameOf("c:\\a/b.x"), "a/b");
  EXPECT_EQ(nameOf("/a:b.x"), "a:b");
  EXPECT_EQ(nameOf("/a/b\\"), "");
}

TEST(Names, ThePathEndsBehindItsLastSeparator) {
  EXPECT_EQ(pathOf("a:\\dir\\file.tif"), "a:\\dir\\");
  EXPECT_EQ(pathOf("/usr/lib/raxel.so"), "/usr/lib/");
  EXPECT_EQ(pathOf("c:\\a/b"), "c:\\") << "backslashes come first";
  EXPECT_EQ(pathOf("bare"), "");
  EXPECT_EQ(pathOf("a:bare"), "") << "a colon is no separator here";
  EXPECT_EQ(pathOf(""), "");
}

TEST(Names, MayBeTakenInPlace) {
  char path[] = "/usr/lib/raxel.so";
  EXPECT_STREQ(s_getname(path, path), "raxel");
  char other[] = "/usr/lib/raxel.so";
  EXPECT_STREQ(s_getpath(other, other), "/usr/lib/");
}

TEST(Names, NullPointersDoNothing) {
  char out[4] = "abc";
  EXPECT_EQ(s_getname(nullptr, "x"), nullptr);
  EXPECT_EQ(s_getpath(nullptr, "x"), nullptr);
  EXPECT_EQ(s_getname(out, nullptr), out);
  EXPECT_EQ(s_getpath(out, nullptr), out);
  EXPECT_STREQ(out, "abc");
}

TEST(TemporaryName, LiesInTmpAndIsFree) {
  std::set<std::string> seen;
  for (int i = 0; i < 100; ++i) {
    char out[144];
    std::memset(out, '#', sizeof out);
    ASSERT_EQ(KVLGetTempFileName(0, "ignored", 7, out), 1);
    EXPECT_EQ(out[18], '#') << "behind its terminator nothing is stored";
    EXPECT_EQ(std::string(out).substr(0, 5), "/tmp/");
    EXPECT_EQ(std::string(out).size(), 17u);
    EXPECT_EQ(std::string(out).find('/', 5), std::string::npos);
    EXPECT_NE(access(out, F_OK), 0) << "nothing is created";
    seen.insert(out);
  }
  EXPECT_EQ(seen.size(), 100u);
  // Of 1,200 letters, one of 32 is missing once in 10^15 times.
  std::set<char> letters;
  for (const std::string &name : seen) letters.insert(name.begin() + 5, name.end());
  EXPECT_EQ(letters.size(), 32u) << "every letter carries five bits";
  EXPECT_EQ(KVLGetTempFileName(0, nullptr, 0, nullptr), 0);
}

TEST(BoundedNames, AreCutAndTerminated) {
  char room[6];
  EXPECT_TRUE(runtime::copyText(room, "12345"));
  EXPECT_FALSE(runtime::copyText(room, "123456"));
  EXPECT_STREQ(room, "12345");
  EXPECT_FALSE(runtime::copyText({}, ""));
  const char endless[6] = {'a', 'b', 'c', 'd', 'e', 'f'};  // no zero byte to be looked for behind it
  EXPECT_FALSE(runtime::copyText(room, endless));
  EXPECT_STREQ(room, "abcde");
  EXPECT_TRUE(runtime::joinPath(room, "a", "bcd"));
  EXPECT_STREQ(room, "a/bcd");
  EXPECT_TRUE(runtime::joinPath(room, "a/", "bcd"));
  EXPECT_STREQ(room, "a/bcd");
  EXPECT_FALSE(runtime::joinPath(room, "a", "bcde"));
  EXPECT_FALSE(runtime::joinPath(room, "12345", ""));
  EXPECT_FALSE(runtime::joinPath(room, "123456", ""));
  room[0] = 0;
  EXPECT_FALSE(runtime::appendRandomName(room));
}

TEST(TemporaryName, ThatIsTakenIsNotGiven) {
  const support::Chance same(static_cast<uint32_t>(getpid()));
  char name[144] = {};
  ASSERT_EQ(KVLGetTempFileName(0, nullptr, 0, name), 1);
  support::writeFile(name, "somebody's");
  char other[144] = "as it was";
  EXPECT_EQ(KVLGetTempFileName(0, nullptr, 0, other), 0);
  EXPECT_STREQ(other, "as it was");
  unlink(name);
  EXPECT_EQ(KVLGetTempFileName(0, nullptr, 0, other), 1);
  EXPECT_STREQ(other, name);
}

TEST(TemporaryName, IsNotGuessedWhereThereIsNoChance) {
  const support::Chance none(std::nullopt);
  char name[144] = "as it was";
  EXPECT_EQ(KVLGetTempFileName(0, nullptr, 0, name), 0);
  EXPECT_STREQ(name, "as it was");
}

TEST(TemporaryName, NeedsRoomForTwelveLettersAndTheZero) {
  char room[18] = "/tmp/";
  EXPECT_FALSE(runtime::appendRandomName({room, 17}));
  EXPECT_STREQ(room, "/tmp/");
  EXPECT_TRUE(runtime::appendRandomName(room));
  EXPECT_EQ(std::strlen(room), 17u);
}

TEST(JoinedPaths, HaveOneSlashBetweenTheirParts) {
  char room[8];
  EXPECT_TRUE(runtime::joinPath(room, "ab", "cdef"));
  EXPECT_STREQ(room, "ab/cdef");
  EXPECT_TRUE(runtime::joinPath(room, "ab/", "cdef"));
  EXPECT_STREQ(room, "ab/cdef");
  EXPECT_TRUE(runtime::joinPath(room, "", "cdef"));
  EXPECT_STREQ(room, "/cdef");
  EXPECT_FALSE(runtime::joinPath(room, "ab", "cdefg"));
  EXPECT_FALSE(runtime::joinPath(room, "abcdefg", "h"));
  EXPECT_FALSE(runtime::joinPath(room, "abcdefgh", "i"));
}

}  // namespace
