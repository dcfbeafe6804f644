// SPDX-License-Identifier: MIT
// Takes a fuzzer's bytes apart into the numbers and blocks that a target needs.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace fuzz {

class Input {
 public:
  Input(const uint8_t *data, size_t size) : data_(data), left_(size) {}

  // Past the end of the input everything is 0.
  uint8_t byte() {
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
  }
  uint16_t word() {
    const unsigned high = byte();
    return static_cast<uint16_t>(high << 8 | byte());
  }
  // A number from low to high, both included; spans of up to 65536 numbers.
  uint32_t between(uint32_t low, uint32_t high) { return low + word() % (high - low + 1); }

  // The next n bytes, fewer at the end of the input.
  std::vector<uint8_t> bytes(size_t n) {
    const size_t taken = std::min(n, left_);
    std::vector<uint8_t> out(data_, data_ + taken);
    data_ += taken;
    left_ -= taken;
    return out;
  }
  std::vector<uint8_t> rest() { return bytes(left_); }
  size_t left() const { return left_; }

 private:
  const uint8_t *data_;
  size_t left_;
};

// A finding of the target's own, beside those of the sanitizers.
inline void require(bool holds, const char *what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

}  // namespace fuzz
