// The bytes of an input: a mapped file, or everything that a pipe gives.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "buffer.h"

namespace host {

class Input {
 public:
  // Maps the file, or reads it when it cannot be mapped; "-" is standard input. Throws a Failure that
  // names the file.
  explicit Input(const std::string &path);
  ~Input();
  Input(const Input &) = delete;
  Input &operator=(const Input &) = delete;

  std::span<const uint8_t> bytes() const { return bytes_; }
  // The name for messages.
  const std::string &name() const { return name_; }

 private:
  std::string name_;
  std::span<const uint8_t> bytes_;
  void *mapped_ = nullptr;
  Buffer read_;
};

}  // namespace host
