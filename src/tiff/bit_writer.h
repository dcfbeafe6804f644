// SPDX-License-Identifier: MIT
// Packs codes of any length into memory, the first bit of a code in the highest free bit of a byte.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace tiff {

// Up to 7 bits wait in `pending`, at its top; every put stores 8 bytes and then steps over the whole ones:
//
//   pending  ppppp000 00000000 ...      put(1101, 4)      byte at to  ppppp110
//                                                         pending     10000000 ...
//
// So there must be room for 8 bytes from `to` on, whatever is put.
struct BitWriter {
  uint8_t *to;           // the byte that the next bit goes to
  uint64_t pending = 0;  // its bits below the top `used` are 0
  uint32_t used = 0;     // 0 to 7

  // Places `length` bits, at most 56, right-aligned in `bits`.
  void put(uint64_t bits, uint32_t length) {
    pending |= bits << 1 << (63 - used - length);
    const uint64_t word = std::endian::native == std::endian::little ? __builtin_bswap64(pending) : pending;
    std::memcpy(to, &word, sizeof word);
    used += length;
    to += used / 8;
    pending <<= used & ~7u;
    used &= 7;
  }

  // Where the output ends when a partly filled byte counts as a whole one.
  uint8_t *end() const { return to + (used != 0 ? 1 : 0); }
};

}  // namespace tiff
