// SPDX-License-Identifier: MIT
#include "output/rights.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

namespace host {
namespace {

constexpr const char *kList = "system.posix_acl_access";

// The group gets no more than everybody has.
mode_t withoutGroup(mode_t mode) {
  return mode & ~(S_ISGID | (S_IRWXG & ~(mode << 3)));
}

// Whether the owner, or at least the group, is the old one now. Only root gives files away.
mode_t giveAway(int fd, const struct stat &old, mode_t mode) {
  if (fchown(fd, old.st_uid, old.st_gid) == 0) return mode;
  mode &= ~static_cast<mode_t>(S_ISUID);
  constexpr auto kSame = static_cast<uid_t>(-1);
  return fchown(fd, kSame, old.st_gid) == 0 ? mode : withoutGroup(mode);
}

// With a list, the group's bits are the most that anybody in it may, and not what the group may.
mode_t giveList(int fd, const std::vector<char> &list, mode_t mode) {
  if (list.empty()) {
    fremovexattr(fd, kList);  // the folder's, which every new file gets
    return mode;
  }
  return fsetxattr(fd, kList, list.data(), list.size(), 0) == 0 ? mode : withoutGroup(mode);
}

}  // namespace

Rights rightsOfOldFile(const std::string &path, const struct stat &about) {
  Rights rights{true, about, {}};
  const ssize_t size = getxattr(path.c_str(), kList, nullptr, 0);
  if (size <= 0) return rights;
  rights.list.resize(static_cast<size_t>(size));
  const ssize_t got = getxattr(path.c_str(), kList, rights.list.data(), rights.list.size());
  rights.list.resize(got < 0 ? 0 : static_cast<size_t>(got));
  return rights;
}

int giveRights(int fd, const Rights &rights) {
  mode_t mode = rights.about.st_mode & 07777;
  if (rights.ofOldFile) mode = giveList(fd, rights.list, giveAway(fd, rights.about, mode));
  if (fchmod(fd, mode) == 0) return 0;
  // Disks without rights say so, and keep what is there.
  return errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS ? 0 : errno;
}

}  // namespace host
