// SPDX-License-Identifier: MIT
#include "color/scale/move_singly.h"

#include <cstring>

#include "runtime/unaligned.h"

namespace color {

namespace {

uint32_t bitAt(const uint8_t *row, uint32_t x) {
  return static_cast<uint32_t>(row[x >> 3] >> (~x & 7)) & 1u;
}

uint32_t nibbleAt(const uint8_t *row, uint32_t x) {
  return static_cast<uint32_t>(row[x >> 1] >> ((~x & 1) * 4)) & 15u;
}

void moveBits(const uint32_t *columns, uint32_t n, const uint8_t *source, uint8_t *out) {
  for (; n >= 8; n -= 8, columns += 8) {
    uint32_t byte = 0;
    for (int bit = 0; bit < 8; ++bit) byte = byte << 1 | bitAt(source, columns[bit]);
    *out++ = static_cast<uint8_t>(byte);
  }
  uint32_t last = 0;
  for (uint32_t bit = 0; bit < n; ++bit) last |= bitAt(source, columns[bit]) << (7 - bit);
  if (n != 0) *out = static_cast<uint8_t>(last);
}

void moveNibbles(const uint32_t *columns, uint32_t n, const uint8_t *source, uint8_t *out) {
  for (; n >= 2; n -= 2, columns += 2) {
    *out++ = static_cast<uint8_t>(nibbleAt(source, columns[0]) << 4 | nibbleAt(source, columns[1]));
  }
  if (n != 0) *out = static_cast<uint8_t>(nibbleAt(source, columns[0]) << 4);
}

void moveBytes(const uint32_t *columns, uint32_t n, const uint8_t *source, uint8_t *out) {
  for (uint32_t i = 0; i < n; ++i) out[i] = source[columns[i]];
}

void moveTriples(const uint32_t *columns, uint32_t n, std::span<const uint8_t> source, uint8_t *out) {
  // A pixel moves with the byte after it, which the next pixel then overwrites: one load and one
  // store. Near the end of the block, and for the last pixel, only its three bytes move.
  uint32_t i = 0;
  const uint64_t farthest = n != 0 ? uint64_t{columns[n - 1]} * 3 : 0;
  if (farthest + 4 <= source.size()) {
    for (; i + 1 < n; ++i, out += 3) {
      runtime::store(out, runtime::load<uint32_t>(source.data() + size_t{columns[i]} * 3));
    }
  }
  for (; i < n; ++i, out += 3) std::memcpy(out, source.data() + size_t{columns[i]} * 3, 3);
}

void moveWords(const uint32_t *columns, uint32_t n, const uint8_t *source, uint8_t *out) {
  for (uint32_t i = 0; i < n; ++i) std::memcpy(out + size_t{i} * 4, source + size_t{columns[i]} * 4, 4);
}

}  // namespace

void moveSingly(int16_t depth, std::span<const uint32_t> columns, std::span<const uint8_t> source,
                uint8_t *out) {
  const uint32_t *from = columns.data();
  const auto n = static_cast<uint32_t>(columns.size());
  switch (depth) {
    case 1:
      return moveBits(from, n, source.data(), out);
    case 4:
      return moveNibbles(from, n, source.data(), out);
    case 8:
      return moveBytes(from, n, source.data(), out);
    case 24:
      return moveTriples(from, n, source, out);
    default:
      return moveWords(from, n, source.data(), out);
  }
}

}  // namespace color
