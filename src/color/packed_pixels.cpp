// SPDX-License-Identifier: MIT
#include "color/packed_pixels.h"

#include <array>
#include <cstring>

namespace color {

namespace {

// Written out, since a loop over the bits is vectorised into something four times slower.
uint8_t packEight(const uint8_t *v) {
  return static_cast<uint8_t>((v[0] & 1) << 7 | (v[1] & 1) << 6 | (v[2] & 1) << 5 | (v[3] & 1) << 4 |
                              (v[4] & 1) << 3 | (v[5] & 1) << 2 | (v[6] & 1) << 1 | (v[7] & 1));
}

}  // namespace

void packBits(const uint8_t *values, size_t n, uint8_t *out) {
  size_t x = 0;
  for (; x + 8 <= n; x += 8) *out++ = packEight(values + x);
  uint32_t last = 0;
  for (size_t k = 0; x + k < n; ++k) last |= (values[x + k] & 1u) << (7 - k);
  if (x < n) *out = static_cast<uint8_t>(last);
}

void packNibbles(const uint8_t *values, size_t n, uint8_t *out) {
  for (size_t k = 0; k < n / 2; ++k) {
    out[k] = static_cast<uint8_t>(values[2 * k] << 4 | (values[2 * k + 1] & 15));
  }
  if (n % 2 != 0) out[n / 2] = static_cast<uint8_t>(values[n - 1] << 4);
}

namespace {

// The eight pixels of every byte, so that unpacking moves eight at a time.
using Eight = std::array<uint8_t, 8>;
constexpr std::array<Eight, 256> kBits = [] {
  std::array<Eight, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    for (unsigned k = 0; k < 8; ++k) table[byte][k] = static_cast<uint8_t>(byte >> (7 - k) & 1);
  }
  return table;
}();

}  // namespace

void unpackBits(const uint8_t *bytes, size_t n, uint8_t *values) {
  for (size_t x = 0; x < n; x += 8) std::memcpy(values + x, kBits[*bytes++].data(), 8);
}

void unpackNibbles(const uint8_t *bytes, size_t n, uint8_t *values) {
  for (size_t k = 0; k < n / 2; ++k) {
    values[2 * k] = bytes[k] >> 4;
    values[2 * k + 1] = bytes[k] & 15;
  }
}

}  // namespace color
