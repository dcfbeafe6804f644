// SPDX-License-Identifier: MIT
#include "color/mirror/mirror.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "runtime/unaligned.h"

namespace color {

namespace {

template <size_t bytes>
void mirrorPlain(uint8_t *left, uint8_t *right, size_t n) {
  for (; n != 0; --n, left += bytes) {
    right -= bytes;
    uint8_t kept[bytes];
    std::memcpy(kept, left, bytes);
    std::memcpy(left, right, bytes);
    std::memcpy(right, kept, bytes);
  }
}

uint64_t bigEndian(uint64_t word) {
  return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

// Reverses all pixels of a word.
uint64_t reversed(uint64_t word, int16_t depth) {
  if (depth == 1) {
    word = (word >> 1 & 0x5555555555555555) | (word & 0x5555555555555555) << 1;
    word = (word >> 2 & 0x3333333333333333) | (word & 0x3333333333333333) << 2;
  }
  word = (word >> 4 & 0x0F0F0F0F0F0F0F0F) | (word & 0x0F0F0F0F0F0F0F0F) << 4;
  return __builtin_bswap64(word);
}

// Some bits of the eight bytes at an address: `skip` bits from their top, `count` of them, at most 56.
struct Field {
  uint8_t *at;
  uint32_t skip;
  uint32_t count;
};

// Bits from one place of a row on. Of the eight bytes, the first holds the first bit.
Field fieldFrom(uint8_t *row, uint64_t bit, uint32_t count) {
  return {row + bit / 8, static_cast<uint32_t>(bit % 8), count};
}

// Bits up to one place of a row. Of the eight bytes, the last holds the last bit.
Field fieldBefore(uint8_t *row, uint64_t bit, uint32_t count) {
  const uint64_t last = (bit - 1) / 8;
  return {row + last - 7, static_cast<uint32_t>(bit - count - 8 * (last - 7)), count};
}

// The bits, at the top of a word.
uint64_t load(const Field &field) {
  const uint64_t word = bigEndian(runtime::load<uint64_t>(field.at));
  return word << field.skip >> (64 - field.count) << (64 - field.count);
}

// Stores the low bits of a word.
void store(const Field &field, uint64_t bits) {
  const uint32_t past = 64 - field.skip - field.count;
  const uint64_t mask = ~uint64_t{0} >> (64 - field.count) << past;
  const uint64_t word = bigEndian(runtime::load<uint64_t>(field.at));
  runtime::store(field.at, bigEndian((word & ~mask) | (bits << past & mask)));
}

}  // namespace

void mirrorBytesPlain(uint8_t *left, uint8_t *right, size_t n) {
  mirrorPlain<1>(left, right, n);
}
void mirrorTriplesPlain(uint8_t *left, uint8_t *right, size_t n) {
  mirrorPlain<3>(left, right, n);
}
void mirrorWordsPlain(uint8_t *left, uint8_t *right, size_t n) {
  mirrorPlain<4>(left, right, n);
}

void mirrorPacked(uint8_t *row, int16_t depth, uint64_t left, uint64_t right, uint64_t n) {
  const auto bits = static_cast<uint64_t>(depth);
  uint64_t from = left * bits;
  uint64_t to = right * bits;
  for (uint64_t rest = n * bits; rest != 0;) {
    // With up to seven bits beside them, they lie in eight bytes.
    const auto count = static_cast<uint32_t>(std::min<uint64_t>(rest, 56));
    const Field front = fieldFrom(row, from, count);
    const Field back = fieldBefore(row, to, count);
    const uint64_t first = load(front);
    const uint64_t last = load(back);
    // The two may share a byte: each is stored into what is there by then.
    store(front, reversed(last, depth));
    store(back, reversed(first, depth));
    from += count;
    to -= count;
    rest -= count;
  }
}

}  // namespace color
