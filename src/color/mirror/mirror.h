// SPDX-License-Identifier: MIT
// Pixels of one row exchanged with one another, from the outside to the middle.
#pragma once

#include <cstddef>
#include <cstdint>

#include "runtime/ssse3.h"

namespace color {

// Exchanges the n pixels from `left` on with the n that end before `right`, the first with the last.
// The two stretches do not overlap. Example, of single bytes: 1 2 . . 3 4 -> 4 3 . . 2 1
void mirrorBytesPlain(uint8_t *left, uint8_t *right, size_t n);
void mirrorTriplesPlain(uint8_t *left, uint8_t *right, size_t n);
void mirrorWordsPlain(uint8_t *left, uint8_t *right, size_t n);

#if defined(RAXEL_HAS_SSSE3)
void mirrorBytesSsse3(uint8_t *left, uint8_t *right, size_t n);
void mirrorTriplesSsse3(uint8_t *left, uint8_t *right, size_t n);
void mirrorWordsSsse3(uint8_t *left, uint8_t *right, size_t n);
#endif

// The same for pixels of 1 or 4 bits: the n from pixel `left` of a row on, and the n that end before
// pixel `right`. All of the row's bytes up to there are kMirrorPackedBytes or more.
constexpr size_t kMirrorPackedBytes = 16;
void mirrorPacked(uint8_t *row, int16_t depth, uint64_t left, uint64_t right, uint64_t n);

}  // namespace color
