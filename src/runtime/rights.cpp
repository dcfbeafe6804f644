// SPDX-License-Identifier: MIT
#include "runtime/rights.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

namespace runtime {

namespace {

constexpr const char *kList = "system.posix_acl_access";
constexpr size_t kListRoom = 4096;  // 511 users and groups

// The group gets no more than everybody has.
mode_t withoutGroup(mode_t mode) {
  return mode & ~static_cast<mode_t>(S_ISGID | (S_IRWXG & ~(mode << 3)));
}

// Only a privileged process gives files away; a member of the group keeps at least that.
mode_t giveAway(int fd, const struct stat &old, mode_t mode) {
  if (fchown(fd, old.st_uid, old.st_gid) == 0) return mode;
  constexpr auto kSame = static_cast<uid_t>(-1);
  mode &= ~static_cast<mode_t>(S_ISUID);
  return fchown(fd, kSame, old.st_gid) == 0 ? mode : withoutGroup(mode);
}

// Beside a list, the group's bits are the most that anybody in it may, and not what the group may.
mode_t giveList(int fd, const char *path, mode_t mode) {
  char list[kListRoom];
  const ssize_t size = getxattr(path, kList, list, sizeof list);
  if (size < 0 && errno == ERANGE) return withoutGroup(mode);
  if (size <= 0) {
    fremovexattr(fd, kList);  // the folder's, which every new file gets
    return mode;
  }
  return fsetxattr(fd, kList, list, static_cast<size_t>(size), 0) == 0 ? mode : withoutGroup(mode);
}

}  // namespace

bool takeOver(int fd, const char *path, const struct stat &old) {
  const mode_t mode = giveList(fd, path, giveAway(fd, old, old.st_mode & 07777));
  return fchmod(fd, mode) == 0 || errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS;
}

}  // namespace runtime
