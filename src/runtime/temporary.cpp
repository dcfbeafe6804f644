// SPDX-License-Identifier: MIT
#include "runtime/temporary.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <span>

#include "runtime/names.h"

namespace runtime {

namespace {

constexpr int kSlots = 10;
constexpr int kLongestStem = 200;

enum class Lock {
  kOurs,
  kTheirs,  // somebody else holds it, or it no longer has that name
  kNone,    // the disk has no locks, as some of a network, or fails: nobody knows whose it is
};

Lock lockTemporary(int fd, const char *path) {
  if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
    return errno == EWOULDBLOCK || errno == EACCES || errno == EINTR ? Lock::kTheirs : Lock::kNone;
  }
  struct stat open;
  struct stat named;
  if (lstat(path, &named) != 0) return errno == ENOENT ? Lock::kTheirs : Lock::kNone;
  if (fstat(fd, &open) != 0) return Lock::kNone;
  return open.st_ino == named.st_ino && open.st_dev == named.st_dev ? Lock::kOurs : Lock::kTheirs;
}

// The name for a slot. Returns whether it fits.
bool nameSlot(std::span<char> path, const char *target, int slot) {
  const size_t folder = folderLength(target);
  const int length = std::snprintf(path.data(), path.size(), "%.*s.%.*s.raxel-%d", static_cast<int>(folder),
                                   target, kLongestStem, target + folder, slot);
  return static_cast<size_t>(length) < path.size();
}

// A name that nobody foresees. Returns whether it fits.
bool nameAtRandom(std::span<char> path, const char *target) {
  return copyText(path, target) && copyText(path.subspan(folderLength(target)), ".raxel-") &&
         appendRandomName(path);
}

// Removes a file that has such a name and no owner.
void removeUnowned(const char *path) {
  const int fd = open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return;
  struct stat about;
  if (fstat(fd, &about) == 0 && S_ISREG(about.st_mode) && lockTemporary(fd, path) == Lock::kOurs)
    unlink(path);
  close(fd);
}

// A file of this name, made and locked. Returns its descriptor, or -1 with errno.
int create(const char *path, mode_t mode) {
  const int fd = open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (fd < 0 || lockTemporary(fd, path) != Lock::kTheirs) return fd;
  close(fd);  // somebody took it for one without an owner in the moment before it was locked
  errno = EEXIST;
  return -1;
}

}  // namespace

bool makeTemporary(Temporary &made, const char *target, mode_t mode) {
  for (int slot = 0; slot < kSlots; ++slot) {
    if (nameSlot(made.path, target, slot)) removeUnowned(made.path);
  }
  for (int slot = 0; slot < kSlots; ++slot) {
    if (!nameSlot(made.path, target, slot)) break;
    made.fd = create(made.path, mode);
    if (made.fd >= 0) return true;
    if (errno != EEXIST) return false;
  }
  made.fd = nameAtRandom(made.path, target) ? create(made.path, mode) : -1;
  return made.fd >= 0;
}

}  // namespace runtime
