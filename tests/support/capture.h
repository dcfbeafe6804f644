// SPDX-License-Identifier: MIT
// What the process prints on standard output or standard error while one of these is alive.
//
//   support::Capture out(1);
//   ...
//   EXPECT_EQ(out.text(), "..\n");
#pragma once

#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>

namespace support {

class Capture {
 public:
  // `descriptor` is 1 for standard output or 2 for standard error.
  explicit Capture(int descriptor)
      : descriptor_(descriptor), file_(std::tmpfile()), before_(::dup(descriptor)) {
    std::fflush(nullptr);
    if (file_ != nullptr) ::dup2(::fileno(file_), descriptor_);
  }
  ~Capture() { stop(); }
  Capture(const Capture &) = delete;
  Capture &operator=(const Capture &) = delete;

  // Ends the capture and returns what was printed; the same again when asked again.
  std::string text() {
    stop();
    return text_;
  }

 private:
  void stop() {
    if (before_ < 0) return;
    std::fflush(nullptr);
    ::dup2(before_, descriptor_);
    ::close(before_);
    before_ = -1;
    if (file_ == nullptr) return;
    std::rewind(file_);
    std::array<char, 4096> block;
    while (const size_t n = std::fread(block.data(), 1, block.size(), file_)) text_.append(block.data(), n);
    std::fclose(file_);
  }

  int descriptor_;
  std::FILE *file_;
  int before_;
  std::string text_;
};

}  // namespace support
