// SPDX-License-Identifier: MIT
#include "runtime/rights.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

namespace runtime {

namespace {

constexpr const char *kList = "system.posix_acl_access";
constexpr size_t kListRoom = 4096;  // 507 further users and groups

// Where the group is another one: its members get no more than all others had, and the old one's, who are
// now among the others, no more than they had.
mode_t withoutGroup(mode_t mode) {
  const mode_t both = mode & mode >> 3 & S_IRWXO;
  return (mode & ~static_cast<mode_t>(S_ISGID | S_IRWXG | S_IRWXO)) | both << 3 | both;
}

// Where a list of further users is lost, which may have kept some of them out.
mode_t ownersAlone(mode_t mode) {
  return mode & ~static_cast<mode_t>(S_ISGID | S_IRWXG | S_IRWXO);
}

// Only a privileged process gives files away; a member of the group keeps at least that. Returns whether
// the group is the old one's.
bool giveAway(int fd, const struct stat &old, mode_t &mode) {
  if (fchown(fd, old.st_uid, old.st_gid) == 0) return true;
  constexpr auto kSame = static_cast<uid_t>(-1);
  mode &= ~static_cast<mode_t>(S_ISUID);
  return fchown(fd, kSame, old.st_gid) == 0;
}

// A list goes over as it is, but to a file of another group: what it has for the group would be theirs.
mode_t giveList(int fd, const char *path, bool sameGroup, mode_t mode) {
  char list[kListRoom];
  const ssize_t size = getxattr(path, kList, list, sizeof list);
  const bool none = size == 0 || (size < 0 && (errno == ENODATA || errno == EOPNOTSUPP || errno == ENOSYS));
  if (!none && sameGroup && size > 0 && fsetxattr(fd, kList, list, static_cast<size_t>(size), 0) == 0)
    return mode;
  fremovexattr(fd, kList);  // the folder's, which every new file gets
  if (!none) return ownersAlone(mode);
  return sameGroup ? mode : withoutGroup(mode);
}

}  // namespace

bool takeOver(int fd, const char *path, const struct stat &old) {
  mode_t mode = old.st_mode & 07777;
  const bool sameGroup = giveAway(fd, old, mode);
  mode = giveList(fd, path, sameGroup, mode);
  return fchmod(fd, mode) == 0 || errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS;
}

}  // namespace runtime
