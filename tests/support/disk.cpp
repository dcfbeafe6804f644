// SPDX-License-Identifier: MIT
#include "support/disk.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <utility>

namespace support {

Disk::Disk() {
  current = this;
}

Disk::Disk(DiskCall call, size_t number, DiskFailure failure, int error)
    : call_(call), number_(number), failure_(failure), error_(error) {
  current = this;
}

Disk::~Disk() {
  current = nullptr;
}

const DiskFailure *Disk::meet(DiskCall call) {
  if (current == nullptr) return nullptr;
  Disk &disk = *current;
  const size_t number = ++disk.counts_[static_cast<size_t>(call)];
  if (call != disk.call_ || number < disk.number_) return nullptr;
  if (number > disk.number_ && disk.failure_ != DiskFailure::kForever) return nullptr;
  disk.failed_ = true;
  return &disk.failure_;
}

void Disk::note(const char *path, int flags, mode_t mode) {
  if (current != nullptr) current->opened_.push_back({path, flags, mode});
}

int Disk::errorOr(int usual) {
  return current != nullptr && current->error_ != 0 ? current->error_ : usual;
}

BeforeLock::BeforeLock(std::function<void()> what) : what_(std::move(what)) {
  current = this;
}

BeforeLock::~BeforeLock() {
  current = nullptr;
}

void BeforeLock::pass() {
  if (current == nullptr || current->passed_) return;
  current->passed_ = true;
  current->what_();
}

Chance::Chance(std::optional<uint32_t> bytes) : bytes_(bytes) {
  current = this;
}

Chance::~Chance() {
  current = nullptr;
}

ssize_t Chance::give(void *to, size_t count) const {
  if (!bytes_) {
    errno = ENOSYS;
    return -1;
  }
  for (size_t i = 0; i < count; ++i)
    static_cast<uint8_t *>(to)[i] = static_cast<uint8_t>(*bytes_ >> i % 4 * 8);
  return static_cast<ssize_t>(count);
}

size_t openDescriptors() {
  size_t count = 0;
  for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
  return count;
}

}  // namespace support

// ---- What stands between the program and the system
// -------------------------------------------------------------

using support::Disk;
using support::DiskCall;
using support::DiskFailure;

namespace {

// A call that moves nothing and fails with the error, or fails with EINTR when it was interrupted.
template <class Result>
Result refuse(const DiskFailure &how, int error, Result result) {
  errno = how == DiskFailure::kInterrupted ? EINTR : Disk::errorOr(error);
  return result;
}

// Half of the bytes, and one at least.
size_t half(size_t count) {
  return count - count / 2;
}

}  // namespace

extern "C" {

int __real_open(const char *path, int flags, ...);
FILE *__real_fopen(const char *path, const char *mode);
int __real_fclose(FILE *stream);
int __real_close(int fd);
ssize_t __real_read(int fd, void *to, size_t count);
ssize_t __real_pread(int fd, void *to, size_t count, off_t at);
ssize_t __real_write(int fd, const void *from, size_t count);
ssize_t __real_pwrite(int fd, const void *from, size_t count, off_t at);
off_t __real_lseek(int fd, off_t offset, int whence);
int __real_fsync(int fd);
int __real_rename(const char *from, const char *to);
int __real_flock(int fd, int operation);
ssize_t __real_getrandom(void *to, size_t count, unsigned flags);

int __wrap_open(const char *path, int flags, ...);
FILE *__wrap_fopen(const char *path, const char *mode);
int __wrap_fclose(FILE *stream);
int __wrap_close(int fd);
ssize_t __wrap_read(int fd, void *to, size_t count);
ssize_t __wrap_pread(int fd, void *to, size_t count, off_t at);
ssize_t __wrap_write(int fd, const void *from, size_t count);
ssize_t __wrap_pwrite(int fd, const void *from, size_t count, off_t at);
off_t __wrap_lseek(int fd, off_t offset, int whence);
int __wrap_fsync(int fd);
int __wrap_rename(const char *from, const char *to);
int __wrap_flock(int fd, int operation);

int __wrap_open(const char *path, int flags, ...) {
  mode_t mode = 0;
  if ((flags & O_CREAT) != 0) {
    va_list more;
    va_start(more, flags);
    mode = static_cast<mode_t>(va_arg(more, unsigned));
    va_end(more);
  }
  Disk::note(path, flags, mode);
  if (const DiskFailure *how = Disk::meet(DiskCall::kOpen)) return refuse(*how, EIO, -1);
  return __real_open(path, flags, mode);
}

FILE *__wrap_fopen(const char *path, const char *mode) {
  if (const DiskFailure *how = Disk::meet(DiskCall::kOpen)) return refuse<FILE *>(*how, EIO, nullptr);
  return __real_fopen(path, mode);
}

// A file is closed also when that fails.
int __wrap_fclose(FILE *stream) {
  const DiskFailure *how = Disk::meet(DiskCall::kClose);
  const int result = __real_fclose(stream);
  return how == nullptr ? result : refuse(*how, EIO, EOF);
}

int __wrap_close(int fd) {
  const DiskFailure *how = Disk::meet(DiskCall::kClose);
  const int result = __real_close(fd);
  return how == nullptr ? result : refuse(*how, EIO, -1);
}

ssize_t __wrap_read(int fd, void *to, size_t count) {
  const DiskFailure *how = Disk::meet(DiskCall::kRead);
  if (how != nullptr && *how != DiskFailure::kShort) return refuse<ssize_t>(*how, EIO, -1);
  return __real_read(fd, to, how == nullptr ? count : half(count));
}

ssize_t __wrap_pread(int fd, void *to, size_t count, off_t at) {
  const DiskFailure *how = Disk::meet(DiskCall::kRead);
  if (how != nullptr && *how != DiskFailure::kShort) return refuse<ssize_t>(*how, EIO, -1);
  return __real_pread(fd, to, how == nullptr ? count : half(count), at);
}

ssize_t __wrap_write(int fd, const void *from, size_t count) {
  const DiskFailure *how = Disk::meet(DiskCall::kWrite);
  if (how != nullptr && *how != DiskFailure::kShort) return refuse<ssize_t>(*how, ENOSPC, -1);
  return __real_write(fd, from, how == nullptr ? count : half(count));
}

ssize_t __wrap_pwrite(int fd, const void *from, size_t count, off_t at) {
  const DiskFailure *how = Disk::meet(DiskCall::kWrite);
  if (how != nullptr && *how != DiskFailure::kShort) return refuse<ssize_t>(*how, ENOSPC, -1);
  return __real_pwrite(fd, from, how == nullptr ? count : half(count), at);
}

off_t __wrap_lseek(int fd, off_t offset, int whence) {
  if (const DiskFailure *how = Disk::meet(DiskCall::kSeek)) return refuse<off_t>(*how, EIO, -1);
  return __real_lseek(fd, offset, whence);
}

int __wrap_fsync(int fd) {
  if (const DiskFailure *how = Disk::meet(DiskCall::kSync)) return refuse(*how, EIO, -1);
  return __real_fsync(fd);
}

int __wrap_rename(const char *from, const char *to) {
  if (const DiskFailure *how = Disk::meet(DiskCall::kRename)) return refuse(*how, EIO, -1);
  return __real_rename(from, to);
}

ssize_t __wrap_getrandom(void *to, size_t count, unsigned flags);
ssize_t __wrap_getrandom(void *to, size_t count, unsigned flags) {
  const support::Chance *chance = support::Chance::present();
  return chance != nullptr ? chance->give(to, count) : __real_getrandom(to, count, flags);
}

int __wrap_flock(int fd, int operation) {
  support::BeforeLock::pass();
  if (const DiskFailure *how = Disk::meet(DiskCall::kLock)) return refuse(*how, EWOULDBLOCK, -1);
  return __real_flock(fd, operation);
}

}  // extern "C"
