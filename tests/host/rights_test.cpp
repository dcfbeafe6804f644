// SPDX-License-Identifier: MIT
// Who may do what with an output, before it is whole and after, and what becomes of a file that cannot be
// looked at: this program has its own stat and fchmod, which can fail.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "failure.h"
#include "output/target.h"
#include "support/temp_dir.h"

namespace {

int statError, fchmodError;

}  // namespace

extern "C" int stat(const char *path, struct stat *about) noexcept {
  if (statError == 0) return fstatat(AT_FDCWD, path, about, 0);
  errno = statError;
  return -1;
}

extern "C" int fchmod(int fd, mode_t mode) noexcept {
  if (fchmodError == 0) return static_cast<int>(syscall(SYS_fchmod, fd, mode));
  errno = fchmodError;
  return -1;
}

namespace {

struct OutputRights : testing::Test {
  support::TempDir folder;
  std::string path = folder.file("a.tif");

  ~OutputRights() override { statError = fchmodError = 0; }

  // The message without the path when the export fails; empty when it is through.
  std::string replace(host::TargetRules rules = {}) const {
    try {
      host::Target target(path, rules);
      const std::string text = "new";
      target.sink().write(reinterpret_cast<const uint8_t *>(text.data()), text.size());
      target.commit();
    } catch (const host::Failure &failure) {
      return std::string(failure.what()).substr(path.size());
    }
    return "";
  }

  mode_t mode() const {
    struct stat about = {};
    EXPECT_EQ(lstat(path.c_str(), &about), 0);
    return about.st_mode & 07777;
  }

  void putOld(mode_t mode, gid_t group = 0) const {
    unlink(path.c_str());
    support::writeFile(path, std::string("II*\0old", 7));
    if (geteuid() == 0) {
      ASSERT_EQ(chown(path.c_str(), 0, group), 0);
    }
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
  }

  // As a user to whom the folder is open, and the file is somebody else's.
  void replaceAsAnother() const {
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    ASSERT_EQ(seteuid(65534), 0);
    const std::string why = replace({.force = true});
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(why, "");
    EXPECT_EQ(support::readText(path), "new");
  }
};

// Some systems let nobody look through a link that another user has put into a folder for all.
TEST_F(OutputRights, AFileThatCannotBeLookedAtStays) {
  support::writeFile(path, "Dear");
  for (const int error : {EACCES, EIO, ESTALE}) {
    statError = error;
    EXPECT_TRUE(replace().starts_with(": cannot be created: ")) << error;
    EXPECT_TRUE(replace({.force = true}).starts_with(": cannot be created: ")) << error;
    statError = 0;
    EXPECT_EQ(support::readText(path), "Dear") << error;
  }
}

TEST_F(OutputRights, LinksInACircleAreToldOf) {
  ASSERT_EQ(symlink("a.tif", path.c_str()), 0);
  EXPECT_EQ(replace(), ": cannot be created: its links lead in a circle");
}

// Whoever opens a file while others may read it goes on reading when they no longer may.
TEST_F(OutputRights, ANewFileIsPrivateFromTheFirstMoment) {
  mode_t seen = 0;
  host::TargetRules rules;
  rules.context = &seen;
  rules.temporary = [](void *context, const char *name) {
    struct stat about = {};
    if (name == nullptr) return;
    EXPECT_EQ(stat(name, &about), 0);
    *static_cast<mode_t *>(context) |= about.st_mode & 07777;
  };
  const mode_t before = umask(0);
  EXPECT_EQ(replace(rules), "");
  umask(before);
  EXPECT_EQ(seen, 0600u);
  EXPECT_EQ(mode(), 0666u);
}

TEST_F(OutputRights, ADiskWithoutRightsIsNoObstacle) {
  for (const int error : {EPERM, EOPNOTSUPP, ENOSYS}) {
    putOld(0644);
    fchmodError = error;
    EXPECT_EQ(replace(), "") << error;
    EXPECT_EQ(support::readText(path), "new") << error;
  }
  putOld(0644);
  fchmodError = EIO;
  EXPECT_EQ(replace(), ": cannot be written: Input/output error; the old file is untouched");
  EXPECT_EQ(support::readText(path).substr(4), "old");
}

// Rights of an owner or a group that the new file does not get are not given to another one.
TEST_F(OutputRights, NobodyGetsMoreThanTheOldFileGaveHim) {
  if (geteuid() != 0) GTEST_SKIP() << "needs to be two users";
  struct stat about = {};
  // The group can be kept by one who is in it.
  putOld(04664);
  replaceAsAnother();
  EXPECT_EQ(mode(), 0664u);
  ASSERT_EQ(stat(path.c_str(), &about), 0);
  EXPECT_EQ(about.st_uid, 65534u);
  EXPECT_EQ(about.st_gid, 0u);
  // A member of another one was nobody in particular to the old file.
  putOld(02660, 7);
  replaceAsAnother();
  EXPECT_EQ(mode(), 0600u);
  putOld(0674, 7);
  replaceAsAnother();
  EXPECT_EQ(mode(), 0644u);
  // And those of the old group are now among all others, who had more.
  putOld(0604, 7);
  replaceAsAnother();
  EXPECT_EQ(mode(), 0600u);
  // Root keeps everything.
  putOld(0660, 7);
  EXPECT_EQ(replace(), "");
  EXPECT_EQ(mode(), 0660u);
  ASSERT_EQ(stat(path.c_str(), &about), 0);
  EXPECT_EQ(about.st_gid, 7u);
}

// Where more than three kinds of users are told apart, the group's bits of the mode are the most that any
// of the others may.
TEST_F(OutputRights, AListOfUsersIsKept) {
  constexpr const char *kName = "system.posix_acl_access";
  // Version 2; the owner 6, the user 1234 6, the group 0, the most 6, all others 0.
  const std::string list(
      "\2\0\0\0"
      "\1\0\6\0\xff\xff\xff\xff"
      "\2\0\6\0\xd2\4\0\0"
      "\4\0\0\0\xff\xff\xff\xff"
      "\x10\0\6\0\xff\xff\xff\xff"
      "\x20\0\0\0\xff\xff\xff\xff",
      44);
  const auto listed = [&] {
    std::string seen(100, 0);
    const ssize_t size = getxattr(path.c_str(), kName, seen.data(), seen.size());
    return size < 0 ? std::string() : seen.substr(0, static_cast<size_t>(size));
  };
  putOld(0600);
  if (setxattr(path.c_str(), kName, list.data(), list.size(), 0) != 0) GTEST_SKIP() << "this disk has none";
  ASSERT_EQ(mode(), 0660u);
  EXPECT_EQ(replace(), "");
  EXPECT_EQ(support::readText(path), "new");
  EXPECT_EQ(listed(), list);
  EXPECT_EQ(mode(), 0660u);
  // The folder's list for new files is none of an old one's that has no list.
  ASSERT_EQ(setxattr(folder.path().c_str(), "system.posix_acl_default", list.data(), list.size(), 0), 0);
  putOld(0640);
  ASSERT_EQ(removexattr(path.c_str(), kName), 0);
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  EXPECT_EQ(replace(), "");
  EXPECT_EQ(listed(), "");
  EXPECT_EQ(mode(), 0640u);
  // What a list has for a group would be another group's.
  if (geteuid() == 0) {
    putOld(0600, 7);
    ASSERT_EQ(setxattr(path.c_str(), kName, list.data(), list.size(), 0), 0);
    ASSERT_EQ(chmod(path.c_str(), 0664), 0);
    replaceAsAnother();
    EXPECT_EQ(listed(), "");
    EXPECT_EQ(mode(), 0600u);
  }
  // A new file has it.
  unlink(path.c_str());
  EXPECT_EQ(replace(), "");
  EXPECT_EQ(listed(), list);
  EXPECT_EQ(mode(), 0660u);
}

}  // namespace
