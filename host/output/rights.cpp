// SPDX-License-Identifier: MIT
#include "output/rights.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

namespace host {
namespace {

constexpr const char *kList = "system.posix_acl_access";
constexpr size_t kLongestList = 65536;  // of any attribute

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

// Only root gives files away; a member of the group keeps at least that. Whether the group is the old
// one's.
bool giveAway(int fd, const struct stat &old, mode_t &mode) {
  if (fchown(fd, old.st_uid, old.st_gid) == 0) return true;
  constexpr auto kSame = static_cast<uid_t>(-1);
  mode &= ~static_cast<mode_t>(S_ISUID);
  return fchown(fd, kSame, old.st_gid) == 0;
}

// A list goes over as it is, but to a file of another group: what it has for the group would be theirs.
mode_t giveList(int fd, const Rights &rights, bool sameGroup, mode_t mode) {
  const std::vector<char> &list = rights.list;
  if (!list.empty() && sameGroup && fsetxattr(fd, kList, list.data(), list.size(), 0) == 0) return mode;
  fremovexattr(fd, kList);  // the folder's, which every new file gets
  if (!list.empty() || rights.listIsLost) return ownersAlone(mode);
  return sameGroup ? mode : withoutGroup(mode);
}

}  // namespace

Rights rightsOfOldFile(const std::string &path, const struct stat &about) {
  Rights rights{true, about, std::vector<char>(kLongestList), false};
  const ssize_t size = getxattr(path.c_str(), kList, rights.list.data(), rights.list.size());
  rights.listIsLost = size < 0 && errno != ENODATA && errno != EOPNOTSUPP && errno != ENOSYS;
  rights.list.resize(size < 0 ? 0 : static_cast<size_t>(size));
  return rights;
}

int giveRights(int fd, const Rights &rights) {
  mode_t mode = rights.about.st_mode & 07777;
  if (rights.ofOldFile) {
    const bool sameGroup = giveAway(fd, rights.about, mode);
    mode = giveList(fd, rights, sameGroup, mode);
  }
  if (fchmod(fd, mode) == 0) return 0;
  // Disks without rights say so, and keep what is there.
  return errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS ? 0 : errno;
}

}  // namespace host
