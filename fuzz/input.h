// SPDX-License-Identifier: MIT
// Takes a fuzzer's bytes apart into the numbers and blocks that a target needs.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <vector>

namespace fuzz {

// What Input::rarely answers: what the input's bytes come to, as fuzzing wants it, or always the same, so
// that an input that is kept goes both ways.
enum class Rare { kByInput, kAlways, kNever };
inline Rare rare = Rare::kByInput;

class Input {
 public:
  Input(const uint8_t *data, size_t size) : data_(data), left_(size), sum_(sumOf({data, size})) {}

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
  uint32_t quad() {
    const uint32_t high = word();
    return high << 16 | word();
  }
  // Now and then: once in so many bytes.
  bool once(unsigned in) { return byte() % in == in - 1; }
  // One input in so many, whatever it says: for what takes long. What a fuzzer makes of a slow input would
  // mostly be slow as well, if a byte of the input said so. Numbers without a common divisor do not go
  // together.
  bool rarely(unsigned in) const { return rare == Rare::kByInput ? sum_ % in == 0 : rare == Rare::kAlways; }
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
  static uint32_t sumOf(std::span<const uint8_t> bytes) {
    uint32_t sum = 0x811C9DC5u;  // FNV-1a, and its high bits among the low ones
    for (const uint8_t byte : bytes) sum = static_cast<uint32_t>((sum ^ byte) * uint64_t{0x01000193});
    return sum ^ sum >> 15;
  }

  const uint8_t *data_;
  size_t left_;
  uint32_t sum_;
};

template <typename T, size_t N>
T oneOf(Input &input, const T (&choices)[N]) {
  return choices[input.byte() % N];
}

// Bytes in a place of exactly their size, so that one byte too far is noticed, at an even address or an odd
// one.
class Exact {
 public:
  explicit Exact(size_t size, bool odd = false) : start_(new uint8_t[size + odd]), at_(start_ + odd) {}
  explicit Exact(const std::vector<uint8_t> &bytes, bool odd = false) : Exact(bytes.size(), odd) {
    std::copy(bytes.begin(), bytes.end(), at_);
  }
  ~Exact() { delete[] start_; }
  Exact(const Exact &) = delete;
  Exact &operator=(const Exact &) = delete;

  uint8_t *data() const { return at_; }

 private:
  uint8_t *start_;
  uint8_t *at_;
};

// A finding of the target's own, beside those of the sanitizers.
inline void require(bool holds, const char *what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

}  // namespace fuzz
