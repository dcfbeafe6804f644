#include "color/packed_pixels.h"

#include <array>
#include <cstring>

namespace color {

void packBits(const uint8_t *values, size_t n, uint8_t *out) {
  // Eight bytes that hold one bit each are gathered by one multiplication: bit 56 - 8k, the lowest of
  // byte k, arrives at bit 63 - k.
  constexpr uint64_t kGather = 0x0102040810204080;
  constexpr uint64_t kLowestBits = 0x0101010101010101;
  size_t x = 0;
  for (; x + 8 <= n; x += 8) {
    uint64_t eight = 0;
    for (size_t k = 0; k < 8; ++k) eight = eight << 8 | values[x + k];
    *out++ = static_cast<uint8_t>(((eight & kLowestBits) * kGather) >> 56);
  }
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
