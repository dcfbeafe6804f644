// SPDX-License-Identifier: MIT
// PackBits (TIFF compression 32773): runs of equal bytes and literals, each behind a control byte.
//
//   control n = 0 .. 126       n + 1 literal bytes follow
//   control n = -1 .. -126     the next byte stands for 1 - n bytes
//
// A row is cut into pieces of at most 127 bytes and every piece is coded by itself, so no run or
// literal is longer than a piece, and the control byte -128 never occurs. Two equal bytes are always
// a run, even between literals: 41 42 42 codes as 00 41 FF 42.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tiff {

inline constexpr size_t kPackBitsPiece = 127;  // bytes

// Codes a whole row, piece after piece.
//   row     borrowed, of any length
//   behind  bytes that may be read behind the row and are not coded: with some a short row is coded faster
//   out     room for at least 2 * (row.size() + behind) + 2 bytes, of which those behind the codes may
//   change
// Returns the bytes written; cannot fail. An empty row gives none.
size_t encodePackBits(std::span<const uint8_t> row, size_t behind, uint8_t *out);
inline size_t encodePackBits(std::span<const uint8_t> row, uint8_t *out) {
  return encodePackBits(row, 0, out);
}

}  // namespace tiff
