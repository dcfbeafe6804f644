// SPDX-License-Identifier: MIT
#include "runtime/replace_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "runtime/names.h"

namespace runtime {

namespace {

constexpr int kMaxLinks = 40;  // as many as the system itself follows

// The length of a path's folder, with its last slash; 0 for a bare name.
size_t folderLength(const char *path) {
  const char *slash = std::strrchr(path, '/');
  return slash == nullptr ? 0 : static_cast<size_t>(slash - path) + 1;
}

// Replaces a path by what it leads to, through every link. Returns whether the result fits.
bool followLinks(std::span<char> path) {
  for (int i = 0; i < kMaxLinks; ++i) {
    char link[PATH_MAX];
    const ssize_t length = readlink(path.data(), link, sizeof link - 1);
    if (length < 0) return true;  // no link
    link[length] = 0;
    const size_t keep = link[0] == '/' ? 0 : folderLength(path.data());
    if (!copyText(path.subspan(keep), link)) return false;
  }
  return false;
}

// Creates a file with a name of its own in a path's folder. Returns its descriptor, or -1.
int createBeside(std::span<char> beside, const char *path, mode_t mode) {
  if (!copyText(beside, path)) return -1;
  const size_t folder = folderLength(path);
  for (int attempt = 0; attempt < 16; ++attempt) {
    if (!copyText(beside.subspan(folder), ".raxel-") || !appendRandomName(beside)) return -1;
    const int fd = open(beside.data(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  return -1;
}

bool writeAll(int fd, std::span<const uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t n = write(fd, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    bytes = bytes.subspan(static_cast<size_t>(n));
  }
  return true;
}

bool copyBytes(int to, int from) {
  uint8_t block[4096];
  for (;;) {
    const ssize_t n = read(from, block, sizeof block);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return n == 0;
    if (!writeAll(to, {block, static_cast<size_t>(n)})) return false;
  }
}

bool copyFrom(int to, const char *source) {
  const int from = open(source, O_RDONLY | O_CLOEXEC);
  if (from < 0) return false;
  const bool copied = copyBytes(to, from);
  close(from);
  return copied;
}

// Gives a new file the owner and the permissions of the old one. Only a privileged process can give
// files away, so the owner is kept where that is possible.
bool takeOver(int fd, const struct stat &old) {
  struct stat own;
  if (fstat(fd, &own) != 0) return false;
  const bool differs = own.st_uid != old.st_uid || own.st_gid != old.st_gid;
  [[maybe_unused]] const bool given = differs && fchown(fd, old.st_uid, old.st_gid) == 0;
  return fchmod(fd, old.st_mode & 07777) == 0;
}

// Brings a folder's new entry to the disk. Not every file system can, and the file is in place.
void syncFolder(const char *path) {
  char folder[PATH_MAX];
  const size_t length = folderLength(path);
  if (length >= sizeof folder) return;
  std::memcpy(folder, path, length);
  folder[length] = 0;
  const int fd = open(length == 0 ? "." : folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  fsync(fd);
  close(fd);
}

}  // namespace

bool isAbsent(const char *path) {
  struct stat status;
  return stat(path, &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

bool createPrivate(const char *path) {
  const int fd = open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (fd < 0) return false;
  close(fd);
  return true;
}

bool replaceFile(const char *path, const char *source, const struct stat *old) {
  char target[PATH_MAX];
  char beside[PATH_MAX];
  if (!copyText(target, path) || !followLinks(target)) return false;
  const mode_t mode = old == nullptr ? 0666 : old->st_mode & 0777;
  const int fd = createBeside(beside, target, mode);
  if (fd < 0) return false;
  bool done = copyFrom(fd, source) && (old == nullptr || takeOver(fd, *old)) && fsync(fd) == 0;
  done = close(fd) == 0 && done;
  done = done && rename(beside, target) == 0;
  if (done) {
    syncFolder(target);
  } else {
    unlink(beside);
  }
  return done;
}

}  // namespace runtime
