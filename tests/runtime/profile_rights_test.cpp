// SPDX-License-Identifier: MIT
// Who may do what with a profile once it has been rewritten. This program has its own getxattr, fsetxattr
// and fchmod, which can fail.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "raxel/profile.h"
#include "support/temp_dir.h"

namespace {

constexpr int kEmptyList = -1;
int getxattrError, fsetxattrError, fchmodError;
std::string listToTell;  // in the place of the disk's

}  // namespace

extern "C" ssize_t getxattr(const char *path, const char *name, void *value, size_t size) noexcept {
  if (!listToTell.empty() && listToTell.size() <= size) {
    std::memcpy(value, listToTell.data(), listToTell.size());
    return static_cast<ssize_t>(listToTell.size());
  }
  if (getxattrError == kEmptyList) return 0;
  if (getxattrError == 0) return static_cast<ssize_t>(syscall(SYS_getxattr, path, name, value, size));
  errno = getxattrError;
  return -1;
}

extern "C" int fsetxattr(int fd, const char *name, const void *value, size_t size, int flags) noexcept {
  if (fsetxattrError == 0) return static_cast<int>(syscall(SYS_fsetxattr, fd, name, value, size, flags));
  errno = fsetxattrError;
  return -1;
}

extern "C" int fchmod(int fd, mode_t mode) noexcept {
  if (fchmodError == 0) return static_cast<int>(syscall(SYS_fchmod, fd, mode));
  errno = fchmodError;
  return -1;
}

namespace {

constexpr const char *kList = "system.posix_acl_access";

// Version 2 of a list: the owner 6, as many users as wanted 6, the group 0, the most 6, all others 0.
std::string listOf(uint32_t users) {
  std::string list("\2\0\0\0\1\0\6\0\xff\xff\xff\xff", 12);
  for (uint32_t user = 0; user < users; ++user) {
    list += std::string("\2\0\6\0", 4);
    for (const uint32_t shift : {0u, 8u, 16u, 24u})
      list += static_cast<char>((1234 + user) >> shift & 0xFF);
  }
  list += std::string("\4\0\0\0\xff\xff\xff\xff\x10\0\6\0\xff\xff\xff\xff\x20\0\0\0\xff\xff\xff\xff", 24);
  return list;
}

struct ProfileRights : testing::Test {
  support::TempDir folder;
  std::string path = folder.file("p.ini");

  ~ProfileRights() override {
    getxattrError = fsetxattrError = fchmodError = 0;
    listToTell.clear();
  }

  void putOld(mode_t mode, gid_t group = 0) const {
    unlink(path.c_str());
    support::writeFile(path, "[s]\nk=1\n");
    if (geteuid() == 0) {
      ASSERT_EQ(chown(path.c_str(), 0, group), 0);
    }
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
  }

  void rewrite() const {
    WritePrivateProfileString("s", "k", "9", path.c_str());
    EXPECT_EQ(support::readText(path), "[s]\nk=9\n");
  }

  // As a user to whom the folder is open, and the profile is somebody else's.
  void rewriteAsAnother() const {
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    ASSERT_EQ(seteuid(65534), 0);
    WritePrivateProfileString("s", "k", "9", path.c_str());
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(support::readText(path), "[s]\nk=9\n");
  }

  mode_t mode() const {
    struct stat about = {};
    EXPECT_EQ(lstat(path.c_str(), &about), 0);
    return about.st_mode & 07777;
  }

  std::string listed() const {
    std::string seen(8192, 0);
    const ssize_t size = getxattr(path.c_str(), kList, seen.data(), seen.size());
    return size < 0 ? std::string() : seen.substr(0, static_cast<size_t>(size));
  }
};

// Rights of an owner or a group that the new file does not get are not given to another one.
TEST_F(ProfileRights, NobodyGetsMoreThanTheOldFileGaveHim) {
  if (geteuid() != 0) GTEST_SKIP() << "needs to be two users";
  // The group can be kept by one who is in it.
  putOld(04664);
  rewriteAsAnother();
  EXPECT_EQ(mode(), 0664u);
  // A member of another one was nobody in particular to the old file.
  putOld(02664, 7);
  rewriteAsAnother();
  EXPECT_EQ(mode(), 0644u);
  // And those of the old group are now among all others, who had more.
  putOld(0604, 7);
  rewriteAsAnother();
  EXPECT_EQ(mode(), 0600u);
  // Root keeps everything.
  putOld(0660, 7);
  rewrite();
  EXPECT_EQ(mode(), 0660u);
  struct stat about = {};
  ASSERT_EQ(stat(path.c_str(), &about), 0);
  EXPECT_EQ(about.st_gid, 7u);
}

// Where more than three kinds of users are told apart, the group's bits of the mode are the most that any
// of the others may.
TEST_F(ProfileRights, AListOfUsersIsKept) {
  putOld(0600);
  const std::string list = listOf(1);
  if (setxattr(path.c_str(), kList, list.data(), list.size(), 0) != 0) GTEST_SKIP() << "this disk has none";
  ASSERT_EQ(mode(), 0660u);
  rewrite();
  EXPECT_EQ(listed(), list);
  EXPECT_EQ(mode(), 0660u);
  // The folder's list for new files is none of an old one's that has no list.
  ASSERT_EQ(setxattr(folder.path().c_str(), "system.posix_acl_default", list.data(), list.size(), 0), 0);
  putOld(0640);
  ASSERT_EQ(removexattr(path.c_str(), kList), 0);
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  rewrite();
  EXPECT_EQ(listed(), "");
  EXPECT_EQ(mode(), 0640u);
}

// What a list has for a group would be another group's.
TEST_F(ProfileRights, AListStaysWithItsGroup) {
  if (geteuid() != 0) GTEST_SKIP() << "needs to be two users";
  putOld(0604, 7);
  const std::string list = listOf(1);
  if (setxattr(path.c_str(), kList, list.data(), list.size(), 0) != 0) GTEST_SKIP() << "this disk has none";
  ASSERT_EQ(chmod(path.c_str(), 0664), 0);
  rewriteAsAnother();
  EXPECT_EQ(listed(), "");
  EXPECT_EQ(mode(), 0600u);
}

TEST_F(ProfileRights, AListThatIsTooLongGivesTheGroupNothing) {
  putOld(0600);
  const std::string list = listOf(600);
  if (setxattr(path.c_str(), kList, list.data(), list.size(), 0) != 0)
    GTEST_SKIP() << "this disk has none as long";
  rewrite();
  EXPECT_EQ(listed(), "");
  EXPECT_EQ(mode(), 0600u);
}

// Whom a list had kept out would be let in without it.
TEST_F(ProfileRights, AListThatIsLostLeavesTheOwnerAlone) {
  putOld(0664);
  getxattrError = EIO;
  rewrite();
  EXPECT_EQ(mode(), 0600u);
  putOld(0664);
  listToTell = listOf(1);
  fsetxattrError = EIO;
  rewrite();
  EXPECT_EQ(mode(), 0600u);
}

TEST_F(ProfileRights, DisksWithoutListsOrRightsAreNoObstacle) {
  for (const int error : {ENODATA, EOPNOTSUPP, ENOSYS, kEmptyList}) {
    putOld(0664);
    getxattrError = error;
    rewrite();
    EXPECT_EQ(mode(), 0664u) << error;
  }
  for (const int error : {EPERM, EOPNOTSUPP, ENOSYS}) {
    putOld(0664);
    fchmodError = error;
    rewrite();
    EXPECT_EQ(mode(), 0600u) << error;
  }
  putOld(0664);
  fchmodError = EIO;
  WritePrivateProfileString("s", "k", "9", path.c_str());
  EXPECT_EQ(support::readText(path), "[s]\nk=1\n") << "the old one stays";
}

}  // namespace
