// SPDX-License-Identifier: MIT
// Values of one byte a pixel, packed to the depths of 1 and 4 bits and unpacked from them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace color {

// Packs the lowest bit of each value, 8 in a byte, the first in the most significant bit; the bits
// after the last value are 0.  Example: 1 0 0 1 0 0 0 0 | 3 -> 90 80
//   out  (n + 7) / 8 bytes
void packBits(const uint8_t *values, size_t n, uint8_t *out);

// Packs the low four bits of each value, 2 in a byte, the first in the high nibble; a nibble left
// over is 0.  Example: 01 02 13 -> 12 30
//   out  (n + 1) / 2 bytes
void packNibbles(const uint8_t *values, size_t n, uint8_t *out);

// Unpacks pixels, whole bytes of them.
//   n  a multiple of 8 for bits, of 2 for nibbles
void unpackBits(const uint8_t *bytes, size_t n, uint8_t *values);
void unpackNibbles(const uint8_t *bytes, size_t n, uint8_t *values);

}  // namespace color
