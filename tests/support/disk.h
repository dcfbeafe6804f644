// SPDX-License-Identifier: MIT
// What the library asks of the system about files, call by call, and a disk that fails at one of them.
//
//   support::Disk disk(support::DiskCall::kWrite, 3, support::DiskFailure::kForever);
//   ...                              // the third write fails, and every one behind it
//   EXPECT_TRUE(disk.failed());      // there were three
//
// The linker leads the calls of everything in the test program through here.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace support {

enum class DiskCall { kOpen, kRead, kWrite, kSeek, kClose, kSync, kRename, kLock, kCount };

enum class DiskFailure {
  kOnce,         // the calls that follow work again
  kForever,      // every later call of the kind fails as well
  kShort,        // no failure: half of the bytes are moved
  kInterrupted,  // no failure either: a signal came, and nothing was moved
};

class Disk {
 public:
  struct Opened {
    std::string path;
    int flags = 0;
    mode_t mode = 0;
  };

  // Only counts.
  Disk();
  // The call of this number (1 is the next one) of a kind fails, with this error if one is given.
  Disk(DiskCall call, size_t number, DiskFailure failure, int error = 0);
  ~Disk();
  Disk(const Disk &) = delete;
  Disk &operator=(const Disk &) = delete;

  size_t count(DiskCall call) const { return counts_[static_cast<size_t>(call)]; }
  // Whether there was such a call.
  bool failed() const { return failed_; }
  // By open(), not by fopen().
  const std::vector<Opened> &opened() const { return opened_; }

  // For the calls themselves: counts one. Returns how it is to go, null as ever.
  static const DiskFailure *meet(DiskCall call);
  static void note(const char *path, int flags, mode_t mode);
  // The error that is wanted, or else the usual one.
  static int errorOr(int usual);

 private:
  static inline Disk *current = nullptr;
  std::array<size_t, static_cast<size_t>(DiskCall::kCount)> counts_ = {};
  std::vector<Opened> opened_;
  DiskCall call_ = DiskCall::kCount;
  size_t number_ = 0;
  DiskFailure failure_ = DiskFailure::kOnce;
  int error_ = 0;
  bool failed_ = false;
};

// What another process does in the moment before the next lock is asked for.
class BeforeLock {
 public:
  explicit BeforeLock(std::function<void()> what);
  ~BeforeLock();
  BeforeLock(const BeforeLock &) = delete;
  BeforeLock &operator=(const BeforeLock &) = delete;

  bool passed() const { return passed_; }
  // For the call itself.
  static void pass();

 private:
  static inline BeforeLock *current = nullptr;
  std::function<void()> what_;
  bool passed_ = false;
};

// While it is there the system has always the same random bytes, or none.
class Chance {
 public:
  explicit Chance(std::optional<uint32_t> bytes);
  ~Chance();
  Chance(const Chance &) = delete;
  Chance &operator=(const Chance &) = delete;

  // For the call itself: whether there is one, and what it gives.
  static const Chance *present() { return current; }
  ssize_t give(void *to, size_t count) const;

 private:
  static inline const Chance *current = nullptr;
  std::optional<uint32_t> bytes_;
};

// Descriptors that this process has open.
size_t openDescriptors();

}  // namespace support
