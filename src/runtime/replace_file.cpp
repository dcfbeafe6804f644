// SPDX-License-Identifier: MIT
#include "runtime/replace_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <span>

#include "runtime/names.h"
#include "runtime/rights.h"
#include "runtime/temporary.h"

namespace runtime {

namespace {

constexpr int kMaxLinks = 40;  // as many as the system itself follows

// Replaces a path by what it leads to, through every link. Returns whether the result fits.
bool followLinks(std::span<char> path) {
  for (int i = 0; i <= kMaxLinks; ++i) {
    char link[PATH_MAX];
    const ssize_t length = readlink(path.data(), link, sizeof link - 1);
    if (length < 0) return true;  // no link
    link[length] = 0;
    const size_t keep = link[0] == '/' ? 0 : folderLength(path.data());
    if (!copyText(path.subspan(keep), link)) return false;
  }
  return false;
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
  for (off_t done = 0;;) {
    const ssize_t n = pread(from, block, sizeof block, done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return n == 0;
    if (!writeAll(to, {block, static_cast<size_t>(n)})) return false;
    done += n;
  }
}

// Brings a folder's new entry to the disk. Not every file system can, and the file is in place.
void syncFolder(const char *folder) {
  const int fd = open(folder[0] == 0 ? "." : folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
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

bool replaceFile(const char *path, int source, const struct stat *old) {
  char target[PATH_MAX];
  if (!copyText(target, path) || !followLinks(target)) return false;
  // What replaces a file is nobody else's to read until it has the old one's owner and permissions.
  Temporary copy;
  if (!makeTemporary(copy, target, old == nullptr ? 0666 : 0600)) return false;
  const bool done = copyBytes(copy.fd, source) && (old == nullptr || takeOver(copy.fd, target, *old)) &&
                    fsync(copy.fd) == 0 && rename(copy.path, target) == 0;
  if (!done) unlink(copy.path);
  close(copy.fd);
  target[folderLength(target)] = 0;
  if (done) syncFolder(target);
  return done;
}

}  // namespace runtime
