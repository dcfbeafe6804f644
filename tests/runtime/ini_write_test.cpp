// SPDX-License-Identifier: MIT
// Rewriting profiles: what changes, what stays, and that the old profile is never lost.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "raxel/profile.h"
#include "raxel/stream.h"
#include "runtime/file_limit.h"
#include "support/cases.h"
#include "support/disk.h"
#include "support/environment.h"
#include "support/random.h"
#include "support/temp_dir.h"

namespace {

struct Rewrite : testing::Test {
  support::TempDir dir;
  support::Environment noFolder{"INIDIR", nullptr};
  std::string path = dir.file("p.ini");

  // The profile after one write.
  std::string after(const std::string &before, const char *section, const char *key, const char *value) {
    support::writeFile(path, before);
    EXPECT_EQ(WritePrivateProfileString(section, key, value, path.c_str()), 0);
    return support::readText(path);
  }
  // Only the profile is in its folder: no temporary file stays behind.
  size_t filesBeside() const {
    size_t n = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator(dir.path())) ++n;
    return n;
  }
};

TEST_F(Rewrite, ReplacesAKeyInPlace) {
  EXPECT_EQ(after("[s]\na=1\nk=2\nb=3\n", "s", "k", "9"), "[s]\na=1\nk=9\nb=3\n");
  EXPECT_EQ(after("[S]\nK=2\n", "s", "k", "9"), "[S]\nk=9\n");
  EXPECT_EQ(filesBeside(), 1u);
}

TEST_F(Rewrite, KeepsTheByteThatAloneIsLeftToCopy) {
  std::string rest;  // 4097 bytes in all, and a block of 4096 is copied at once
  for (int i = 0; i < 29; ++i) rest += ";" + std::string(139, 'x') + "\n";
  EXPECT_EQ(after("[s]\nk=1\n" + rest, "s", "k", "9"), "[s]\nk=9\n" + rest);
}

TEST_F(Rewrite, ReplacesEveryLineOfTheKey) {
  EXPECT_EQ(after("[s]\nk=1\nb=2\nk=3\n", "s", "k", "9"), "[s]\nk=9\nb=2\nk=9\n");
}

TEST_F(Rewrite, SpacesAroundTheKeyDoNotMatterHere) {
  EXPECT_EQ(after("[s]\n  Color Mode  = 104\n", "s", "Color Mode", "103"), "[s]\nColor Mode=103\n");
}

TEST_F(Rewrite, CommentedKeysStay) {
  EXPECT_EQ(after("[s]\n;k=1\nx;k=2\nk=3 ; old\n", "s", "k", "9"), "[s]\n;k=1\nx;k=2\nk=9\n");
  EXPECT_EQ(after("[s]\nk\n", "s", "k", "9"), "[s]\nk\nk=9\n") << "no equals sign, no key";
}

TEST_F(Rewrite, AKeyEndsAtTheEqualsSignBeforeItsCommentIsCut) {
  EXPECT_EQ(after("[s]\nk ; once x=2\n", "s", "k", "9"), "[s]\nk=9\n");
}

TEST_F(Rewrite, AddsAKeyAtTheEndOfItsSection) {
  EXPECT_EQ(after("[s]\na=1\n[t]\nb=2\n", "s", "k", "9"), "[s]\na=1\nk=9\n[t]\nb=2\n");
  EXPECT_EQ(after("[s]\na=1\n\n[t]\n", "s", "k", "9"), "[s]\na=1\n\nk=9\n[t]\n");
  EXPECT_EQ(after("[s]\n", "s", "k", "9"), "[s]\nk=9\n");
}

TEST_F(Rewrite, AppendsAMissingSectionAfterAnEmptyLine) {
  EXPECT_EQ(after("[t]\nb=2\n", "[s]", "k", "9"), "[t]\nb=2\n\n[s]\nk=9\n");
  EXPECT_EQ(after("s\nk=1\n", "s", "k", "9"), "s\nk=1\n\n[s]\nk=9\n") << "a bare line is no header here";
}

TEST_F(Rewrite, DeletesAKey) {
  EXPECT_EQ(after("[s]\na=1\nk=2\nk=3\n[t]\n", "s", "k", nullptr), "[s]\na=1\n[t]\n");
  EXPECT_EQ(after("[s]\nk=2\na=1\n", "s", "k", nullptr), "[s]\na=1\n");
  EXPECT_EQ(after("[s]\na=1\n", "s", "k", nullptr), "[s]\na=1\n");
}

TEST_F(Rewrite, DeletingTheOnlyKeyRemovesTheHeader) {
  EXPECT_EQ(after("[r]\n[s]\nk=2\n[t]\nb=1\n", "s", "k", nullptr), "[r]\n[t]\nb=1\n");
  EXPECT_EQ(after("[s]\nk=2\n", "s", "k", nullptr), "");
  EXPECT_EQ(after("[s]\nk=2\n\n", "s", "k", nullptr), "[s]\n\n") << "an empty line stays, and its header";
}

TEST_F(Rewrite, DeletesASection) {
  EXPECT_EQ(after("[r]\nx=1\n[s]\nk=2\n\n;c\n[t]\nb=1\n", "s", nullptr, "v"), "[r]\nx=1\n[t]\nb=1\n");
  EXPECT_EQ(after("[s]\nk=2", "s", nullptr, nullptr), "");
}

TEST_F(Rewrite, DeletingFromAMissingSectionAddsNothing) {
  EXPECT_EQ(after("[t]\nb=2\n", "s", "k", nullptr), "[t]\nb=2\n");
  EXPECT_EQ(after("[t]\nb=2\n", "s", nullptr, "v"), "[t]\nb=2\n");
  EXPECT_EQ(unlink(path.c_str()), 0);
  EXPECT_EQ(WritePrivateProfileString("s", "k", nullptr, path.c_str()), 0);
  EXPECT_EQ(filesBeside(), 0u);
}

TEST_F(Rewrite, LaterSectionsOfTheSameNameAreTreatedToo) {
  EXPECT_EQ(after("[s]\nk=1\n[t]\n[s]\na=1\n", "s", "k", "9"), "[s]\nk=9\n[t]\n[s]\na=1\nk=9\n");
}

TEST_F(Rewrite, ASectionDirectlyBehindItsNamesakeIsNot) {
  EXPECT_EQ(after("[s]\nk=1\n[s]\nk=2\n", "s", "k", "9"), "[s]\nk=9\n[s]\nk=2\n");
  EXPECT_EQ(after("[s]\nk=1\n[s]\nk=2\n", "s", nullptr, nullptr), "[s]\nk=2\n");
}

TEST_F(Rewrite, LineEndingsAreThoseOfTheFirstLine) {
  EXPECT_EQ(after("[s]\r\nk=1\r\n", "s", "k", "9"), "[s]\r\nk=9\r\n");
  EXPECT_EQ(after("[s]\rk=1\r", "s", "k", "9"), "[s]\rk=9\r");
  EXPECT_EQ(after("[s]\nk=1\r\n", "s", "k", "9"), "[s]\nk=9\n");
  EXPECT_EQ(after("", "s", "k", "9"), "\r\n[s]\r\nk=9\r\n") << "a file without any line end";
  EXPECT_EQ(after("[s]", "s", "k", "9"), "[s]\r\nk=9\r\n");
}

TEST_F(Rewrite, TheLastLineGetsAnEnding) {
  EXPECT_EQ(after("[s]\nk=1\nb=2", "s", "k", "9"), "[s]\nk=9\nb=2\n");
  EXPECT_EQ(after("[s]\nk=1", "s", "k", "9"), "[s]\nk=9\n");
}

TEST_F(Rewrite, ZeroBytesInOtherLinesStay) {
  const std::string line("a\0b=\0c", 6);
  EXPECT_EQ(after("[t]\n" + line + "\n[s]\nk=1\n" + line, "s", "k", "9"),
            "[t]\n" + line + "\n[s]\nk=9\n" + line + "\n");
}

TEST_F(Rewrite, PiecesOfLongLinesBecomeLines) {
  const std::string longLine(600, 'x');
  EXPECT_EQ(after("[t]\n" + longLine + "\n[s]\nk=1\n", "s", "k", "9"),
            "[t]\n" + longLine.substr(0, 256) + "\n" + longLine.substr(0, 256) + "\n" +
                longLine.substr(0, 88) + "\n[s]\nk=9\n");
}

TEST_F(Rewrite, ValuesOfAnyLengthAreWritten) {
  const std::string value(100000, 'v');
  EXPECT_EQ(after("[s]\n", "s", "k", value.c_str()), "[s]\nk=" + value + "\n");
}

TEST_F(Rewrite, ANewProfileBeginsWithAnEmptyLine) {
  EXPECT_EQ(WritePrivateProfileString("[s;x", "k", "9", path.c_str()), 0);
  EXPECT_EQ(support::readText(path), "\n[s]\nk=9\n");
}

TEST_F(Rewrite, ANewProfileIsMadeAtThePathAsGiven) {
  const support::TempDir other;
  const support::Environment folder("INIDIR", other.path().c_str());
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
  EXPECT_EQ(support::readText(path), "\n[s]\nk=9\n");
  EXPECT_TRUE(std::filesystem::is_empty(other.path()));
}

TEST_F(Rewrite, AProfileUnderTheFolderIsRewrittenThere) {
  const support::Environment folder("INIDIR", dir.path().c_str());
  support::writeFile(path, "[s]\nk=1\n");
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", "p.ini"), 0);
  EXPECT_EQ(support::readText(path), "[s]\nk=9\n");
  support::writeFile(dir.file("KVL.INI"), "[s]\nk=1\n");
  EXPECT_EQ(WriteProfileString("s", "k", "8"), 0);
  EXPECT_EQ(support::readText(dir.file("KVL.INI")), "[s]\nk=8\n");
}

TEST_F(Rewrite, PathsLongerThanTheClassicRoomAreStillTheirOwn) {
  const std::string deep = dir.file(std::string(200, 'a')) + "/" + std::string(200, 'b');
  std::filesystem::create_directories(deep);
  const support::Environment folder("INIDIR", deep.c_str());
  support::writeFile(deep + "/p.ini", "[s]\nk=1\n");
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", "p.ini"), 0);
  EXPECT_EQ(support::readText(deep + "/p.ini"), "[s]\nk=9\n");
}

TEST_F(Rewrite, RefusedArgumentsDoNothing) {
  support::writeFile(path, "[s]\nk=1\n");
  EXPECT_EQ(WritePrivateProfileString(nullptr, "k", "9", path.c_str()), 0);
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", nullptr), 0);
  EXPECT_EQ(support::readText(path), "[s]\nk=1\n");
}

TEST_F(Rewrite, AnyByteMayBeginTheName) {
  const support::Environment folder("INIDIR", dir.path().c_str());
  support::writeFile(dir.file("\1p.ini"), "[s]\nk=1\n");
  WritePrivateProfileString("s", "k", "9", "\1p.ini");
  EXPECT_EQ(support::readText(dir.file("\1p.ini")), "[s]\nk=9\n");
}

TEST_F(Rewrite, AnEmptyNameNeverRemovesTheFolder) {
  const std::string folder = dir.file("empty");
  ASSERT_EQ(mkdir(folder.c_str(), 0700), 0);
  const support::Environment inidir("INIDIR", folder.c_str());
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", ""), 0);
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", folder.c_str()), 0);
  EXPECT_TRUE(std::filesystem::is_directory(folder));
  EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST_F(Rewrite, PermissionsAreKept) {
  support::writeFile(path, "[s]\nk=1\n");
  for (mode_t mode : {0600u, 0644u, 0664u, 0444u, 0751u}) {
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    EXPECT_EQ(WritePrivateProfileString("s", "k", std::to_string(mode).c_str(), path.c_str()), 0);
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode);
    EXPECT_EQ(support::readText(path), "[s]\nk=" + std::to_string(mode) + "\n");
  }
}

TEST_F(Rewrite, ALinkKeepsLeadingToItsFile) {
  const std::string real = dir.file("real.ini");
  support::writeFile(real, "[s]\nk=1\n");
  ASSERT_EQ(symlink("real.ini", dir.file("middle").c_str()), 0);
  ASSERT_EQ(symlink(dir.file("middle").c_str(), path.c_str()), 0);
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(path));
  EXPECT_TRUE(std::filesystem::is_symlink(dir.file("middle")));
  EXPECT_EQ(support::readText(real), "[s]\nk=9\n");
  EXPECT_EQ(filesBeside(), 3u);
}

TEST_F(Rewrite, ALinkToNothingLeadsToTheNewProfile) {
  ASSERT_EQ(symlink("later.ini", path.c_str()), 0);
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(path));
  EXPECT_EQ(support::readText(dir.file("later.ini")), "\n[s]\nk=9\n");
}

TEST_F(Rewrite, ALinkToItselfEnds) {
  ASSERT_EQ(symlink("p.ini", path.c_str()), 0);
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
  EXPECT_EQ(filesBeside(), 1u);
}

TEST_F(Rewrite, DevicesAreNotReplaced) {
  // A null device of this test's own, in case it is replaced after all.
  const dev_t null = makedev(1, 3);
  if (mknod(path.c_str(), S_IFCHR | 0600, null) != 0) GTEST_SKIP() << "this user makes no devices";
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
  struct stat status;
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_TRUE(S_ISCHR(status.st_mode));
  EXPECT_EQ(filesBeside(), 1u);
}

TEST_F(Rewrite, AnUnreadableProfileIsNotReplaced) {
  support::writeFile(path, "[s]\nk=1\n");
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  ASSERT_EQ(chmod(dir.path().c_str(), 0777), 0);
  const uid_t self = geteuid();
  if (self == 0) {
    ASSERT_EQ(seteuid(65534), 0) << "a superuser reads everything, so be somebody else";
  }
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
  EXPECT_EQ(GetPrivateProfileInt("s", "k", 5, path.c_str()), 5);
  ASSERT_EQ(seteuid(self), 0);
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(support::readText(path), "[s]\nk=1\n");
}

TEST_F(Rewrite, AFailedReplacementLeavesNothingBeside) {
  if (geteuid() != 0) GTEST_SKIP() << "needs a file of another user";
  // In such a folder everybody may create files, and nobody rename over those of others.
  support::writeFile(path, "[s]\nk=1\n");
  ASSERT_EQ(chmod(dir.path().c_str(), 01777), 0);
  ASSERT_EQ(seteuid(65534), 0);
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_EQ(support::readText(path), "[s]\nk=1\n");
  EXPECT_EQ(filesBeside(), 1u);
}

TEST_F(Rewrite, AnUnreadableProfileUnderTheFolderIsNotShadowed) {
  // A folder under the profile's name cannot be read as one, whoever asks.
  std::filesystem::create_directory(dir.file("sub"));
  std::filesystem::create_directory(dir.file("sub/p"));
  const support::Environment folder("INIDIR", dir.file("sub").c_str());
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(dir.path());
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", "p"), 0);
  std::filesystem::current_path(before);
  EXPECT_EQ(filesBeside(), 1u);
}

// ---- The copy beside the profile ----------------------------------------------------------------------

TEST_F(Rewrite, WhatADeadProcessLeftIsSwept) {
  support::writeFile(dir.file(".p.ini.raxel-0"), "half");
  support::writeFile(dir.file(".p.ini.raxel-9"), "half");
  for (const char *other : {".q.ini.raxel-0", ".p.ini.raxel-10", "p.ini.raxel-0", ".p.ini.raxel-x"}) {
    support::writeFile(dir.file(other), "no copy of this profile");
  }
  EXPECT_EQ(after("[s]\nk=1\n", "s", "k", "9"), "[s]\nk=9\n");
  EXPECT_FALSE(std::filesystem::exists(dir.file(".p.ini.raxel-0")));
  EXPECT_FALSE(std::filesystem::exists(dir.file(".p.ini.raxel-9")));
  EXPECT_EQ(filesBeside(), 5u);
}

TEST_F(Rewrite, ALinkIsSweptWhereItLeads) {
  std::filesystem::create_directory(dir.file("real"));
  support::writeFile(dir.file("real/.r.ini.raxel-0"), "half");
  support::writeFile(dir.file("real/r.ini"), "[s]\nk=1\n");
  ASSERT_EQ(symlink("real/r.ini", path.c_str()), 0);
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
  EXPECT_FALSE(std::filesystem::exists(dir.file("real/.r.ini.raxel-0")));
  EXPECT_EQ(support::readText(dir.file("real/r.ini")), "[s]\nk=9\n");
}

TEST_F(Rewrite, WhatALivingOneHoldsStays) {
  const std::string held = dir.file(".p.ini.raxel-0");
  support::writeFile(held, "half");
  const int fd = open(held.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(fd, LOCK_EX), 0);
  EXPECT_EQ(after("[s]\nk=1\n", "s", "k", "9"), "[s]\nk=9\n");
  EXPECT_EQ(support::readText(held), "half");
  EXPECT_EQ(filesBeside(), 2u);
  close(fd);
}

// Descriptor 0 is one like any other where a host has closed its standard input.
TEST_F(Rewrite, AHostWithoutStandardInputIsServedAsWell) {
  const int input = dup(0);
  close(0);
  const size_t descriptors = support::openDescriptors();
  const std::string changed = after("[s]\nk=1\n", "s", "k", "9");
  const size_t left = support::openDescriptors();
  unlink(path.c_str());
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
  const std::string made = support::readText(path);
  const size_t leftThen = support::openDescriptors();
  if (input >= 0) {
    dup2(input, 0);
    close(input);
  }
  EXPECT_EQ(changed, "[s]\nk=9\n");
  EXPECT_EQ(made, "\n[s]\nk=9\n");
  EXPECT_EQ(left, descriptors);
  EXPECT_EQ(leftThen, descriptors);
  EXPECT_EQ(filesBeside(), 1u);
}

TEST_F(Rewrite, PlantedNamesAreNeitherFollowedNorTouched) {
  const std::string victim = dir.file("victim");
  support::writeFile(victim, "mine");
  ASSERT_EQ(symlink("victim", dir.file(".p.ini.raxel-0").c_str()), 0);
  ASSERT_EQ(symlink("nothing", dir.file(".p.ini.raxel-1").c_str()), 0);
  std::filesystem::create_directory(dir.file(".p.ini.raxel-2"));
  ASSERT_EQ(mkfifo(dir.file(".p.ini.raxel-3").c_str(), 0600), 0);
  EXPECT_EQ(after("[s]\nk=1\n", "s", "k", "9"), "[s]\nk=9\n");
  EXPECT_EQ(support::readText(victim), "mine");
  EXPECT_TRUE(std::filesystem::is_symlink(dir.file(".p.ini.raxel-0")));
  EXPECT_TRUE(std::filesystem::is_symlink(dir.file(".p.ini.raxel-1")));
  EXPECT_FALSE(std::filesystem::exists(dir.file("nothing")));
  EXPECT_TRUE(std::filesystem::is_directory(dir.file(".p.ini.raxel-2")));
  EXPECT_TRUE(std::filesystem::is_fifo(dir.file(".p.ini.raxel-3")));
  EXPECT_FALSE(std::filesystem::is_symlink(path));
  EXPECT_EQ(filesBeside(), 6u);
}

TEST_F(Rewrite, TenTakenNamesLeaveOneAtRandom) {
  for (char slot = '0'; slot <= '9'; ++slot) {
    std::filesystem::create_directory(dir.file(std::string(".p.ini.raxel-") + slot));
  }
  EXPECT_EQ(after("[s]\nk=1\n", "s", "k", "9"), "[s]\nk=9\n");
  EXPECT_EQ(filesBeside(), 11u);
}

TEST_F(Rewrite, ALongNameIsCut) {
  const std::string named = dir.file(std::string(255, 'p'));
  const std::string stray = dir.file("." + std::string(200, 'p') + ".raxel-0");
  support::writeFile(named, "[s]\nk=1\n");
  support::writeFile(stray, "half");
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", named.c_str()), 0);
  EXPECT_EQ(support::readText(named), "[s]\nk=9\n");
  EXPECT_FALSE(std::filesystem::exists(stray));
}

TEST_F(Rewrite, TheCopyIsPrivateUntilItIsWhole) {
  support::writeFile(path, "[s]\nk=1\n");
  ASSERT_EQ(chmod(path.c_str(), 0666), 0);
  for (const bool isThere : {true, false}) {
    if (!isThere) unlink(path.c_str());
    const support::Disk disk;
    EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
    size_t copies = 0;
    for (const support::Disk::Opened &opened : disk.opened()) {
      if ((opened.flags & O_CREAT) == 0) continue;
      ++copies;
      EXPECT_NE(opened.flags & O_EXCL, 0) << opened.path;
      // A new profile has no rights to wait for but those of any new file.
      const bool beside = opened.path.find(".raxel-") != std::string::npos;
      EXPECT_EQ(opened.mode, beside && !isThere ? 0666u : 0600u) << opened.path;
    }
    EXPECT_EQ(copies, 2u) << "in /tmp and beside the profile";
  }
}

// In a folder that everybody may write, another user has the first word about names.
TEST_F(Rewrite, ASharedFolderOfAnotherUserIsNoTrap) {
  if (geteuid() != 0) GTEST_SKIP() << "needs to be two users";
  const std::string victim = dir.file("victim");
  support::writeFile(victim, "mine");
  support::writeFile(path, "[s]\nk=1\n");
  ASSERT_EQ(chmod(dir.path().c_str(), 01777), 0);
  ASSERT_EQ(seteuid(65534), 0);
  ASSERT_EQ(symlink("victim", dir.file(".p.ini.raxel-0").c_str()), 0);
  ASSERT_EQ(mkdir(dir.file(".p.ini.raxel-1").c_str(), 0777), 0);
  support::writeFile(dir.file(".p.ini.raxel-2"), "theirs");
  const int fd = open(dir.file(".p.ini.raxel-2").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(flock(fd, LOCK_EX), 0);
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
  struct stat status;
  ASSERT_EQ(lstat(path.c_str(), &status), 0);
  EXPECT_TRUE(S_ISREG(status.st_mode));
  EXPECT_EQ(status.st_uid, 0u);
  EXPECT_EQ(support::readText(path), "[s]\nk=9\n");
  EXPECT_EQ(support::readText(victim), "mine");
  EXPECT_EQ(support::readText(dir.file(".p.ini.raxel-2")), "theirs");
  close(fd);
}

// Whether a temporary file of the library holds a text that only this test writes.
bool isLeftInTmp(const std::string &marker) {
  std::error_code ignored;
  for (const auto &entry : std::filesystem::directory_iterator("/tmp", ignored)) {
    if (entry.path().filename().string().size() != 12 || !entry.is_regular_file(ignored)) continue;
    if (support::readText(entry.path().string()).find(marker) != std::string::npos) return true;
  }
  return false;
}

TEST_F(Rewrite, AFullDiskLeavesTheOldProfile) {
  std::string old = "[s]\n;" + dir.path() + "\nk=1\n[t]\n";
  while (old.size() < 40000) old += "some=line of text\n";
  support::writeFile(path, old);
  for (rlim_t bytes : {0u, 1u, 12288u, 20000u, 39999u}) {
    const support::FileLimit limit(bytes);
    EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
    EXPECT_EQ(support::readText(path), old) << bytes;
    EXPECT_EQ(filesBeside(), 1u) << bytes;
  }
  EXPECT_FALSE(isLeftInTmp(dir.path()));
}

// Writing the same key twice changes nothing more, whatever the profile is made of.
TEST_F(Rewrite, AnyBytesSurviveAndTheValueReadsBack) {
  const std::string pieces[] = {"[s]", "[t]", "[", "k=", "k = ", "=", "\n", "\n", "\r\n", ";", "\"", "x"};
  support::Random random(17);
  for (size_t i = 0; i < support::cases(12); ++i) {
    std::string text;
    for (int64_t n = random.between(0, 120); n > 0; --n) text += pieces[random.next() % std::size(pieces)];
    const std::string once = after(text, "u", "key", "value");
    char buffer[16];
    EXPECT_EQ(GetPrivateProfileString("u", "key", "", buffer, 16, path.c_str()), 5) << once;
    EXPECT_EQ(after(once, "u", "key", "value"), once);
  }
}

// ---- What the profile and its folder have -------------------------------------------------------------

TEST_F(Rewrite, ABareNameIsInTheWorkingFolder) {
  const std::filesystem::path before = std::filesystem::current_path();
  support::writeFile(path, "[s]\nk=1\n");
  std::filesystem::current_path(dir.path());
  WritePrivateProfileString("s", "k", "9", "p.ini");
  WritePrivateProfileString("s", "k", "9", "new.ini");
  std::filesystem::current_path(before);
  EXPECT_EQ(support::readText(path), "[s]\nk=9\n");
  EXPECT_EQ(support::readText(dir.file("new.ini")), "\n[s]\nk=9\n");
  EXPECT_EQ(filesBeside(), 2u);
}

TEST_F(Rewrite, TheOwnerIsKept) {
  if (geteuid() != 0) GTEST_SKIP() << "needs to be more than one user";
  const std::pair<uid_t, gid_t> owners[] = {{1234, getegid()}, {geteuid(), 1234}, {1234, 4321}};
  for (const auto &[user, group] : owners) {
    support::writeFile(path, "[s]\nk=1\n");
    ASSERT_EQ(chown(path.c_str(), user, group), 0);
    WritePrivateProfileString("s", "k", "9", path.c_str());
    EXPECT_EQ(support::readText(path), "[s]\nk=9\n");
    struct stat status;
    ASSERT_EQ(lstat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, user);
    EXPECT_EQ(status.st_gid, group);
    unlink(path.c_str());
  }
}

// Who may not give files away has one of its own then, with the same permissions.
TEST_F(Rewrite, WhatCannotBeGivenAwayBecomesOnesOwn) {
  if (geteuid() != 0) GTEST_SKIP() << "needs to be two users";
  support::writeFile(path, "[s]\nk=1\n");
  ASSERT_EQ(chmod(path.c_str(), 0646), 0);
  ASSERT_EQ(chmod(dir.path().c_str(), 0777), 0);
  ASSERT_EQ(seteuid(65534), 0);
  WritePrivateProfileString("s", "k", "9", path.c_str());
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_EQ(support::readText(path), "[s]\nk=9\n");
  struct stat status;
  ASSERT_EQ(lstat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 65534u);
  EXPECT_EQ(status.st_mode & 07777, 0646u);
}

TEST_F(Rewrite, WithoutChanceThereIsNoPlaceForTheCopy) {
  const support::Chance none(std::nullopt);
  EXPECT_EQ(after("[s]\nk=1\n", "s", "k", "9"), "[s]\nk=1\n");
  EXPECT_EQ(filesBeside(), 1u);
}

}  // namespace
