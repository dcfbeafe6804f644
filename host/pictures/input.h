// SPDX-License-Identifier: MIT
// The bytes of an input: a mapped file, or everything that a pipe gives.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "buffer.h"

namespace host {

// Has the system bring a part of a mapped file into memory at once. That is several times faster than
// page by page, and lets signals in between.
void bringIn(std::span<const uint8_t> bytes);

// Who hears the name of a file that is mapped, and "" when it is no more: a program that catches the fault
// which reading it gives when somebody cuts it short. Without one no file is mapped, but read.
using MappedInputWatch = void (*)(const std::string &name);
void watchMappedInputs(MappedInputWatch told);

// What is said of such a file.
inline constexpr const char *kCutShort =
    "was cut short while it was being read; start again when it is whole";

// What an input is to hold, and what is said of one that does not.
struct Wanted {
  const char *one;     // what it is: "does not end...; give one picture in a file"
  const char *inside;  // what to take of a folder: "is a folder; name the pictures in it"
  const char *unlike;  // said of what begins otherwise
  bool (*mayBegin)(std::span<const uint8_t> bytes);
  uint64_t longest;
};

// In a format that is known.
extern const Wanted kPicture;

class Input {
 public:
  // Maps the file, or reads it when it cannot be mapped or nobody watches; "-" is standard input. What must
  // be read may be `longest` bytes long, and is given up early when it begins like nothing that is wanted:
  // pipes and devices need not end. Throws a Failure that names the file.
  explicit Input(const std::string &path, const Wanted &wanted = kPicture);
  ~Input();
  Input(const Input &) = delete;
  Input &operator=(const Input &) = delete;

  std::span<const uint8_t> bytes() const { return bytes_; }
  // The name for messages.
  const std::string &name() const { return name_; }
  // True for a file that is read where it lies, and that somebody may cut short.
  bool isMapped() const { return mapped_ != nullptr; }

 private:
  std::string name_;
  std::span<const uint8_t> bytes_;
  void *mapped_ = nullptr;
  Buffer read_;
};

}  // namespace host
