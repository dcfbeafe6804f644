// SPDX-License-Identifier: MIT
// A seeded generator whose numbers are the same on every machine (splitmix64).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace support {

class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}

  uint64_t next() {
    uint64_t z = (state_ += 0x9E3779B97F4A7C15u);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }
  // A number from low to high, both included.
  int64_t between(int64_t low, int64_t high) {
    return low + static_cast<int64_t>(next() % static_cast<uint64_t>(high - low + 1));
  }
  bool chance(unsigned percent) { return next() % 100 < percent; }
  uint8_t byte() { return static_cast<uint8_t>(next()); }
  std::vector<uint8_t> bytes(size_t n) {
    std::vector<uint8_t> out(n);
    for (auto &b : out) b = byte();
    return out;
  }

 private:
  uint64_t state_;
};

}  // namespace support
