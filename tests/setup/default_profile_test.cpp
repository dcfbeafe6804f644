// SPDX-License-Identifier: MIT
// The profile that goes by the library's name.
#include "setup/default_profile.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "support/globals.h"

namespace {

std::string stem(const char *path) {
  std::array<char, 32> room;
  setup::fileStem(room, path);
  return room.data();
}

TEST(FileStem, FollowsTheLastBackslashSlashOrColon) {
  EXPECT_EQ(stem("a:\\dir\\file.tif"), "file");
  EXPECT_EQ(stem("name.ini"), "name");
  EXPECT_EQ(stem("/usr/lib/raxel.so"), "raxel");
  EXPECT_EQ(stem("c:raxel.dll"), "raxel");
  EXPECT_EQ(stem("dir\\a/b.c"), "a/b") << "a backslash goes before a slash";
  EXPECT_EQ(stem("raxel"), "raxel");
  EXPECT_EQ(stem("x.so"), "x");
  EXPECT_EQ(stem("raxel.so.2"), "raxel.so");
  EXPECT_EQ(stem("/usr/lib/"), "");
  EXPECT_EQ(stem("/opt/v1.2/raxel"), "raxel");
}

TEST(FileStem, WhatDoesNotFitIsNoName) {
  EXPECT_EQ(stem(std::string(31, 'x').c_str()), std::string(31, 'x'));
  EXPECT_EQ(stem(std::string(32, 'x').c_str()), "");
}

class DefaultProfile : public testing::Test {
 protected:
  std::string profile(const std::string &library) {
    std::memset(export_szDLLName, 0, sizeof export_szDLLName);
    std::memcpy(export_szDLLName, library.data(), std::min(library.size(), sizeof export_szDLLName));
    std::array<char, 144> room;
    setup::defaultProfile(room);
    return room.data();
  }
  support::Globals globals_;
};

TEST_F(DefaultProfile, IsTheStemUpToItsFirstPoint) {
  EXPECT_EQ(profile("raxel"), "raxel.ini");
  EXPECT_EQ(profile("raxel.so"), "raxel.ini");
  EXPECT_EQ(profile("raxel.so.2"), "raxel.ini");
  EXPECT_EQ(profile("/usr/lib/raxel.1.so"), "raxel.ini");
  EXPECT_EQ(profile(".so"), ".ini");
}

TEST_F(DefaultProfile, NamesThatDoNotFitAreNone) {
  EXPECT_EQ(profile(std::string(139, 'x')), std::string(139, 'x') + ".ini");
  EXPECT_EQ(profile(std::string(140, 'x')), "");
  EXPECT_EQ(profile(std::string(260, 'x')), "") << "a buffer filled to its last byte";
}

}  // namespace
