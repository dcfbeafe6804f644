// SPDX-License-Identifier: MIT
#include "output/strays.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <memory>
#include <random>
#include <set>
#include <string_view>

namespace host {
namespace {

constexpr size_t kLongestStem = 200;
constexpr std::string_view kMark = ".raxel-";
constexpr size_t kDigits = 12;

void removeUnowned(const std::string &name) {
  const int fd = open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return;
  struct stat about;
  if (fstat(fd, &about) == 0 && S_ISREG(about.st_mode) && lockTemporary(fd, name) == Lock::kOurs) {
    unlink(name.c_str());
  }
  close(fd);
}

// A hidden name that ends in the mark and a number.
bool isTemporary(std::string_view name) {
  const size_t mark = name.rfind(kMark);
  if (mark == std::string_view::npos || mark < 2 || name.front() != '.') return false;
  const std::string_view number = name.substr(mark + kMark.size());
  return (number.size() == 1 || number.size() == kDigits) &&
         number.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string temporaryName(const std::string &path, const std::string &number) {
  const std::string folder = folderOf(path);
  return folder + "." + path.substr(folder.size(), kLongestStem) + std::string(kMark) + number;
}

// An output that gets a temporary: a regular file, or none yet.
bool hasTemporary(const std::string &output) {
  struct stat about;
  return output != "-" && !output.empty() && (stat(output.c_str(), &about) != 0 || S_ISREG(about.st_mode));
}

void sweep(const std::string &folder) {
  const std::unique_ptr<DIR, int (*)(DIR *)> open(opendir(folder.empty() ? "." : folder.c_str()), closedir);
  if (!open) return;
  while (const dirent *entry = readdir(open.get())) {
    if (isTemporary(entry->d_name)) removeUnowned(folder + entry->d_name);
  }
}

}  // namespace

std::string folderOf(const std::string &path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

std::string slotName(const std::string &path, int slot) {
  return temporaryName(path, std::to_string(slot));
}

std::string randomName(const std::string &path) {
  std::random_device bits;
  std::string number;
  while (number.size() < kDigits) number += static_cast<char>('0' + bits() % 10u);
  return temporaryName(path, number);
}

std::string followLinks(std::string path) {
  constexpr int kMostLinks = 40;  // as the system does
  char to[PATH_MAX];
  for (int links = 0; links < kMostLinks; ++links) {
    const ssize_t length = readlink(path.c_str(), to, sizeof to);
    if (length < 0) return path;
    path.resize(*to == '/' ? 0 : folderOf(path).size());
    path.append(to, static_cast<size_t>(length));
  }
  return "";
}

Lock lockTemporary(int fd, const std::string &name) {
  if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
    // Some network disks say EACCES of what is taken.
    return errno == EWOULDBLOCK || errno == EACCES || errno == EINTR ? Lock::kTheirs : Lock::kNone;
  }
  struct stat open, named;
  if (lstat(name.c_str(), &named) != 0) return errno == ENOENT ? Lock::kTheirs : Lock::kNone;
  if (fstat(fd, &open) != 0) return Lock::kNone;
  return open.st_ino == named.st_ino && open.st_dev == named.st_dev ? Lock::kOurs : Lock::kTheirs;
}

void removeStrays(const std::string &path) {
  for (int slot = 0; slot < kSlots; ++slot) removeUnowned(slotName(path, slot));
}

void sweepFolders(const std::vector<std::string> &outputs) {
  std::set<std::string> folders;
  for (const std::string &output : outputs) {
    if (hasTemporary(output)) folders.insert(folderOf(followLinks(output)));
  }
  for (const std::string &folder : folders) sweep(folder);
}

}  // namespace host
