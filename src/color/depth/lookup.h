// SPDX-License-Identifier: MIT
// Rows of indexes brought to pixels of less than a byte by a table that holds what each index becomes.
//
// n is the number of pixels; what is left of the last byte written becomes 0.
#pragma once

#include <cstddef>
#include <cstdint>

#include "color/avx512.h"

namespace color {

// values: 256 of them, 0 to 15 for nibbles, 0 or 1 for bits.
void bytesToNibblesPlain(const uint8_t *values, const uint8_t *from, uint8_t *to, size_t n);
void bytesToBitsPlain(const uint8_t *values, const uint8_t *from, uint8_t *to, size_t n);

// pairs: what the two pixels of each byte become, the left one in bit 1, the right one in bit 0.
void nibblesToBitsPlain(const uint8_t *pairs, const uint8_t *from, uint8_t *to, size_t n);

// nibbles: what the eight pixels of each byte become.
void bitsToNibblesPlain(const uint8_t (*nibbles)[4], const uint8_t *from, uint8_t *to, size_t n);

#if defined(RAXEL_HAS_AVX512)

// The same, 64 bytes at a time: of the source, or of what it becomes where that is more.
void bytesToNibblesAvx512(const uint8_t *values, const uint8_t *from, uint8_t *to, size_t n);
void bytesToBitsAvx512(const uint8_t *values, const uint8_t *from, uint8_t *to, size_t n);
void nibblesToBitsAvx512(const uint8_t *pairs, const uint8_t *from, uint8_t *to, size_t n);
void bitsToNibblesAvx512(const uint8_t (*nibbles)[4], const uint8_t *from, uint8_t *to, size_t n);

#endif

}  // namespace color
