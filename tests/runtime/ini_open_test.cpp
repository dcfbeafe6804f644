// SPDX-License-Identifier: MIT
// Where profiles are found: by name, under INIDIR, and after the module's own name.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <string>

#include "raxel/profile.h"
#include "raxel/stream.h"
#include "support/environment.h"
#include "support/temp_dir.h"

namespace {

struct Folder : testing::Test {
  support::TempDir dir;
  support::Environment inidir{"INIDIR", dir.path().c_str()};

  // A record's name of 144 bytes, and what the search makes of it.
  int32_t find(const std::string &given, const char *module = nullptr) {
    record = {};
    given.copy(record.data(), 143);
    return GetProfileDirectory(record.data(), module);
  }
  std::string text() const { return record.data(); }

  std::array<char, 144> record;
};

TEST_F(Folder, OpensUnderTheFolderAndTellsThePath) {
  support::writeFile(dir.file("p.ini"), "x");
  char room[260] = "p.ini";
  const Handle h = INIopen(room, sizeof room, KVL_READ);
  ASSERT_NE(h, 0u);
  EXPECT_EQ(room, dir.file("p.ini"));
  EXPECT_EQ(INIclose(h), 0);
}

TEST_F(Folder, NameAsGivenComesFirstAndStays) {
  support::writeFile(dir.file("p.ini"), "x");
  char room[260] = {};
  dir.file("p.ini").copy(room, 259);
  const Handle h = INIopen(room, sizeof room, KVL_READ);
  ASSERT_NE(h, 0u);
  EXPECT_EQ(room, dir.file("p.ini"));
  EXPECT_EQ(INIclose(h), 0);
}

TEST_F(Folder, CopiesNoMoreThanTheRoom) {
  support::writeFile(dir.file("p.ini"), "x");
  char name[12] = "p.ini";
  name[11] = '#';
  const Handle h = INIopen(name, 10, KVL_READ);
  ASSERT_NE(h, 0u);
  EXPECT_EQ(name, dir.file("p.ini").substr(0, 9));
  EXPECT_EQ(name[11], '#');
  INIclose(h);
  char untouched[] = "p.ini";
  for (int32_t room : {0, -1}) {
    INIclose(INIopen(untouched, room, KVL_READ));
    EXPECT_STREQ(untouched, "p.ini");
  }
}

TEST_F(Folder, AFolderThatEndsInASlashGetsNoSecondOne) {
  support::writeFile(dir.file("p.ini"), "x");
  const support::Environment slash("INIDIR", (dir.path() + "/").c_str());
  char name[260] = "p.ini";
  const Handle h = INIopen(name, sizeof name, KVL_READ);
  EXPECT_NE(h, 0u);
  EXPECT_EQ(name, dir.file("p.ini"));
  INIclose(h);
  EXPECT_EQ(find("p.ini"), 0);
  EXPECT_EQ(text(), dir.file("p.ini"));
}

TEST_F(Folder, NothingOpensWithoutAFile) {
  char name[260] = "absent.ini";
  EXPECT_EQ(INIopen(name, sizeof name, KVL_READ), 0u);
  EXPECT_STREQ(name, "absent.ini");
  char empty[260] = "";
  EXPECT_EQ(INIopen(empty, sizeof empty, KVL_READ), 0u) << "the folder itself is no profile";
  EXPECT_EQ(INIopen(nullptr, 0, KVL_READ), 0u);
  EXPECT_EQ(INIclose(0), 0);
  for (const char *folder : {"", static_cast<const char *>(nullptr)}) {
    const support::Environment none("INIDIR", folder);
    EXPECT_EQ(INIopen(name, sizeof name, KVL_READ), 0u);
  }
}

TEST_F(Folder, ProfileIsFoundUnderTheFolderFirst) {
  support::writeFile(dir.file("p.ini"), "x");
  EXPECT_EQ(find("p.ini"), 0);
  EXPECT_EQ(text(), dir.file("p.ini"));
  EXPECT_EQ(find(dir.file("p.ini")), 0) << "then under the name as given";
  EXPECT_EQ(text(), dir.file("p.ini"));
}

TEST_F(Folder, AProfileThatIsNowhereLeavesTheName) {
  EXPECT_EQ(find("absent.ini"), 1);
  EXPECT_EQ(text(), "absent.ini");
  EXPECT_EQ(find(""), 1);
  EXPECT_EQ(text(), "");
  EXPECT_EQ(find("", "/opt/lib/absent.so"), 1);
  EXPECT_EQ(text(), "");
  EXPECT_EQ(GetProfileDirectory(nullptr, "x"), 1);
}

TEST_F(Folder, AnEmptyNameBecomesTheModulesName) {
  support::writeFile(dir.file("filter.ini"), "x");
  EXPECT_EQ(find("", "/opt/lib/filter.so"), 0);
  EXPECT_EQ(text(), dir.file("filter.ini"));
  EXPECT_EQ(find("", "C:\\lib\\filter.dll"), 0);
  EXPECT_EQ(find("", "filter"), 0);
}

TEST_F(Folder, PathsThatDoNotFitTheRecordAreNotFound) {
  // 143 characters fit with their terminator, 144 do not.
  const size_t used = dir.path().size() + 1;
  const std::string fits(143 - used, 'n');
  support::writeFile(dir.file(fits), "x");
  EXPECT_EQ(find(fits), 0);
  EXPECT_EQ(text().size(), 143u);
  const std::string tooLong(144 - used, 'n');
  support::writeFile(dir.file(tooLong), "x");
  EXPECT_EQ(find(tooLong), 1);
  EXPECT_EQ(text(), tooLong);
  EXPECT_EQ(find("", (std::string(300, 'm') + ".so").c_str()), 1);
  EXPECT_EQ(find("", (std::string(140, 'm') + ".so").c_str()), 1);
}

TEST_F(Folder, NamesThatDoNotFitTheRecordAreNotFoundWithoutTheFolderEither) {
  const support::Environment none("INIDIR", nullptr);
  for (const size_t length : {143u, 144u, 200u}) {
    std::string path = dir.file(std::string(length - dir.path().size() - 1, 'n'));
    ASSERT_EQ(path.size(), length);
    support::writeFile(path, "x");
    const std::string before = path;
    EXPECT_EQ(GetProfileDirectory(path.data(), nullptr), length == 143 ? 0 : 1) << length;
    EXPECT_EQ(path, before);
  }
}

TEST_F(Folder, AFolderOfAHundredAndFortyFourCharactersIsNotUsed) {
  const std::string deep = dir.file(std::string(144 - dir.path().size() - 1, 'd'));
  ASSERT_EQ(mkdir(deep.c_str(), 0700), 0);
  support::writeFile(deep + "/p", "x");
  const support::Environment folder("INIDIR", deep.c_str());
  EXPECT_EQ(find("p"), 1);
  char name[260] = "p";
  const Handle h = INIopen(name, sizeof name, KVL_READ);
  EXPECT_NE(h, 0u) << "opening itself has no such limit";
  INIclose(h);
}

TEST_F(Folder, NamesOfAnyLengthAreSafe) {
  for (size_t length : {143u, 144u, 300u, 5000u}) {
    std::string name(length, 'x');
    EXPECT_EQ(INIopen(name.data(), static_cast<int32_t>(length), KVL_READ), 0u);
    const support::Environment folder("INIDIR", std::string(length, 'd').c_str());
    EXPECT_EQ(INIopen(name.data(), static_cast<int32_t>(length), KVL_READ), 0u);
    EXPECT_EQ(GetPrivateProfileInt("s", "k", 5, name.c_str()), 5);
    WritePrivateProfileString("s", "k", nullptr, name.c_str());
  }
}

TEST_F(Folder, TheModulesNameIsFoundInTheWorkingFolderToo) {
  const support::Environment noFolder("INIDIR", nullptr);
  const std::filesystem::path before = std::filesystem::current_path();
  support::writeFile(dir.file("module.ini"), "x");
  std::filesystem::current_path(dir.path());
  const int32_t found = find("", "/lib/module.so");
  std::filesystem::current_path(before);
  EXPECT_EQ(found, 0);
  EXPECT_EQ(text(), "module.ini");
}

}  // namespace
