// SPDX-License-Identifier: MIT
// Lets this process write files of so many bytes at most, like a disk that fills up there.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace support {

class FileLimit {
 public:
  explicit FileLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &old_);
    handler_ = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limited = {bytes, old_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limited);
  }
  ~FileLimit() {
    setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, handler_);
  }
  FileLimit(const FileLimit &) = delete;
  FileLimit &operator=(const FileLimit &) = delete;

 private:
  rlimit old_;
  void (*handler_)(int);
};

}  // namespace support
