// SPDX-License-Identifier: MIT
#include "output/target.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "failure.h"
#include "output/hold.h"
#include "output/rights.h"
#include "output/strays.h"
#include "output/sync.h"

namespace host {
namespace {

// A new locked file with these permissions, less those that the user's mask takes away; -1 with errno set
// when none could be made.
int createTemporary(const std::string &path, mode_t mode, std::string &name) {
  for (int attempt = 0; attempt < 2 * kSlots; ++attempt) {
    name = attempt < kSlots ? slotName(path, attempt) : randomName(path);
    const int fd = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd < 0 && errno == EEXIST) continue;
    if (fd < 0) return -1;
    if (lockTemporary(fd, name) != Lock::kTheirs) return fd;
    close(fd);  // somebody took it for a stray in the moment before it was locked
  }
  errno = EEXIST;
  return -1;
}

// Renames to a name that nobody has, and answers the error: EEXIST when somebody has it by now. Disks that
// cannot do it in one step can link, or the name is looked at just before.
int renameToNew(const std::string &from, const std::string &to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  if (link(from.c_str(), to.c_str()) == 0) return unlink(from.c_str()) == 0 ? 0 : errno;
  if (errno == EEXIST) return errno;
  struct stat about;
  if (lstat(to.c_str(), &about) == 0) return EEXIST;
  return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

std::string reason(int error) {
  switch (error) {
    case ENOENT:
      return "the folder does not exist";
    case ENOTDIR:
      return "a part of its path is no folder";
    case ENAMETOOLONG:
      return "the name is too long";
    case EACCES:
    case EPERM:
      return "you may not write there";
    case EROFS:
      return "the disk is read-only";
    case ENOSPC:
      return "the disk is full";
    case EDQUOT:
      return "your quota is used up";
    case ELOOP:
      return "its links lead in a circle";
    case EFBIG:
      return "the file would become larger than allowed here";
    default:
      return std::strerror(error);
  }
}

// Whether what a file of some bytes holds is a TIFF, of either byte order and size of offsets.
bool isTiff(int fd) {
  std::array<char, 4> front{};
  if (pread(fd, front.data(), front.size(), 0) != static_cast<ssize_t>(front.size())) return false;
  constexpr std::array<std::array<char, 4>, 4> kFronts{
      {{'I', 'I', 42, 0}, {'M', 'M', 0, 42}, {'I', 'I', 43, 0}, {'M', 'M', 0, 43}}};
  return std::ranges::find(kFronts, front) != kFronts.end();
}

// Why a regular file had better stay: somebody's name for an output may be the name of something else.
// Empty when nothing would be lost but a TIFF.
std::string worth(const std::string &path, const struct stat &about) {
  if (about.st_size == 0) return "";
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  if (fd < 0) return "it cannot be read, so it may be something else than a TIFF";
  const bool tiff = isTiff(fd);
  close(fd);
  return tiff ? "" : "it exists and is no TIFF";
}

bool isSame(const struct stat &one, const struct stat &other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Whether nothing else can take a file's place: a descriptor's may have lost the name that the end of its
// links tells, or never have had one, whatever further links to it there are. One that another process
// replaces at this moment has none either, and the next look, at `path`, finds the new one.
bool isNameless(const std::string &path, const std::string &end, const struct stat &file) {
  struct stat named, again;
  if (end == path) return false;
  const bool isNamed = stat(end.c_str(), &named) == 0;
  if (isNamed ? isSame(named, file) : errno != ENOENT && errno != ENOTDIR && errno != ENAMETOOLONG)
    return false;
  return stat(path.c_str(), &again) == 0 && isSame(again, file);
}

[[noreturn]] void failCreate(const std::string &name, int error, const std::string &why) {
  throw Failure(RAXEL_HOST_NO_CREATE, name + ": cannot be created: " + why, error);
}

[[noreturn]] void failCreate(const std::string &name, int error) {
  failCreate(name, error, reason(error));
}

}  // namespace

// What is thrown once there is a target meets its destructor, which takes the temporary away.
Target::Target(const std::string &path, const TargetRules &rules, Empty) : name_(path), rules_(rules) {}

Target::Target(const std::string &path, const TargetRules &rules) : Target(path, rules, Empty()) {
  if (path == "-") {
    name_ = "standard output";
    if (isatty(1) && !rules.force)
      throw Failure(RAXEL_HOST_NO_CREATE, name_ + ": is a terminal; send it to a file or a pipe");
    fd_ = fcntl(1, F_DUPFD_CLOEXEC, 3);
    sink_ = std::make_unique<Sink>(-1);
    return;
  }
  struct stat about;
  const bool exists = stat(path.c_str(), &about) == 0;
  // What cannot be looked at may be anybody's letter.
  if (!exists && errno != ENOENT) failCreate(name_, errno);
  if (exists && S_ISDIR(about.st_mode)) failCreate(name_, EISDIR, "it is a folder");
  if (exists && rules.noClobber) failCreate(name_, EEXIST, "it exists");
  if (exists && !rules.force && access(path.c_str(), W_OK) != 0) {
    const int error = errno;
    failCreate(name_, error, error == EACCES ? "it is write-protected" : reason(error));
  }
  if (exists && !S_ISREG(about.st_mode)) {
    openAsItIs();
    return;
  }
  if (const std::string why = exists && rules.onlyTiff && !rules.force ? worth(path, about) : "";
      !why.empty()) {
    failCreate(name_, EEXIST, why);
  }
  path_ = followLinks(path);
  if (path_.empty()) failCreate(name_, ELOOP);
  if (exists && isNameless(path, path_, about)) {
    path_.clear();
    isNameless_ = true;
    openAsItIs();
    return;
  }
  if (exists) rights_ = rightsOfOldFile(path_, about);
  makeTemporary();
  sink_ = std::make_unique<Sink>(fd_);
}

void Target::openAsItIs() {
  fd_ = open(name_.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
  if (fd_ < 0) failCreate(name_, errno);
  if (isatty(fd_) && !rules_.force)
    throw Failure(RAXEL_HOST_NO_CREATE, name_ + ": is a terminal; send it to a file or a pipe");
  sink_ = std::make_unique<Sink>(-1);
}

void Target::makeTemporary() {
  removeStrays(path_);
  const Hold hold;  // no signal between making the file and knowing of it
  // What a new file gets in this folder is seen at one that never holds anything: whoever opens a file
  // while it is open to him can read it later as well.
  if (!rights_.ofOldFile) {
    createTemporary(0666);
    if (fstat(fd_, &rights_.about) != 0) failCreate(name_, errno);
    unlink(temporary_.c_str());
    close(std::exchange(fd_, -1));
  }
  createTemporary(0600);
  tellTemporary(temporary_.c_str());
}

void Target::createTemporary(mode_t mode) {
  fd_ = host::createTemporary(path_, mode, temporary_);
  if (fd_ >= 0) return;
  const int error = errno;
  temporary_.clear();
  failCreate(name_, error);
}

void Target::tellTemporary(const char *name) const {
  if (rules_.temporary) rules_.temporary(rules_.context, name);
}

Target::~Target() {
  if (mapped_) munmap(mapped_, mappedSize_);
  if (!temporary_.empty()) {
    const Hold hold;
    unlink(temporary_.c_str());
    tellTemporary(nullptr);
  }
  if (fd_ >= 0) close(fd_);
}

void Target::failWrite(int error) const {
  throw Failure(error == ENOMEM ? RAXEL_HOST_NO_MEMORY : RAXEL_HOST_NO_WRITE,
                name_ + ": cannot be written: " + reason(error) +
                    (rights_.ofOldFile ? "; the old file is untouched" : ""),
                error);
}

void Target::checkWritten() const {
  if (sink_->error() != 0) failWrite(sink_->error());
}

std::span<const uint8_t> Target::bytes() {
  if (path_.empty()) return sink_->kept();
  if (!sink_->flush()) failWrite(sink_->error());
  if (mapped_) munmap(mapped_, mappedSize_);
  mapped_ = nullptr;
  mappedSize_ = static_cast<size_t>(sink_->size());
  void *mapped = mmap(nullptr, mappedSize_, PROT_READ, MAP_SHARED, fd_, 0);
  if (mapped == MAP_FAILED) failWrite(errno);
  mapped_ = mapped;
  return {static_cast<const uint8_t *>(mapped), mappedSize_};
}

int Target::sync() const {
  if (rules_.noSync) return troubleWithClosing(fd_);
  return rules_.syncChild ? syncInChild(fd_, sink_->size()) : syncToDisk(fd_);
}

void Target::commit(const std::function<void()> &lastLook) {
  if (path_.empty()) {
    if (lastLook) lastLook();
    if (isNameless_ && ftruncate(fd_, 0) != 0) failWrite(errno);
    const std::span<const uint8_t> kept = sink_->kept();
    for (size_t done = 0; done < kept.size();) {
      const ssize_t put = write(fd_, kept.data() + done, kept.size() - done);
      if (put < 0 && errno == EINTR) continue;
      if (put <= 0) failWrite(put < 0 ? errno : EIO);
      done += static_cast<size_t>(put);
    }
    if (const int error = troubleWithClosing(fd_); error != 0) failWrite(error);
    return;
  }
  if (!sink_->flush()) failWrite(sink_->error());
  if (const int error = giveRights(fd_, rights_); error != 0) failWrite(error);
  if (const int error = sync(); error != 0) failWrite(error);
  if (lastLook) lastLook();
  const Hold hold;  // the name changes hands in one step
  if (rules_.noClobber) {
    if (const int taken = renameToNew(temporary_, path_); taken == EEXIST) {
      failCreate(name_, taken, "it was made during the export");
    } else if (taken != 0) {
      failWrite(taken);
    }
  } else if (rename(temporary_.c_str(), path_.c_str()) != 0) {
    failWrite(errno);
  }
  temporary_.clear();
  tellTemporary(nullptr);
  // A killed export may have left a child in the middle of a sync, which held the lock at the beginning.
  try {
    removeStrays(path_);
  } catch (const std::bad_alloc &) {
    // The file has its name, so the export went well; the next one looks again.
  }
}

}  // namespace host
