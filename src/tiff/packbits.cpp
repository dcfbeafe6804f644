// SPDX-License-Identifier: MIT
// The idea: the pairs of equal neighbours are a mask of bits (packbits_masks.h), and so are the places
// where runs and literals begin; a piece is then coded token by token without looking at its bytes.
//
//   bytes    A B B B C D D E
//   pairs    0 1 1 0 0 1 0 0     a byte and the one after it are equal
//   runs     0 1 1 1 0 1 1 0     a pair, or the byte after one
//   begins   1 1 0 0 1 1 0 1     A, BBB, C, DD, E: a pair that follows no pair, or a byte outside
//                                runs that follows none outside
#include "tiff/packbits.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "tiff/packbits_masks.h"

namespace tiff {
namespace {

constexpr size_t kBlock = 32;  // bytes are copied in whole blocks

// What must be readable from the start of a piece: the bytes that its mask looks at, and its last byte
// copied as a block.
constexpr size_t kReads = kPackBitsPiece + kBlock;
static_assert(kReads >= kEqualMaskReads);

// How far past its codes a piece is written to.
constexpr size_t kSpill = kPackBitsPiece + kBlock;

// Writes the run or literal of bytes [from, to) of a piece. `run` is all ones for a run and 0 for a
// literal: the two come in no order that a processor could foresee, so nothing branches on them.
inline uint8_t *writeToken(const uint8_t *piece, size_t from, size_t to, size_t run, uint8_t *out) {
  const size_t control = to - from - 1;
  const size_t more = control & ~run;  // bytes of a literal behind its first
  out[0] = static_cast<uint8_t>((control ^ run) - run);
  std::memcpy(out + 1, piece + from, kBlock);
  for (size_t i = kBlock; i <= more; i += kBlock) std::memcpy(out + 1 + i, piece + from + i, kBlock);
  return out + 2 + more;
}

// Codes the n bytes at `piece`, 1 to 127, of which kReads are readable.
inline uint8_t *encodeMasked(const uint8_t *piece, size_t n, EqualMask pairs, uint8_t *out) {
  // The last byte makes no pair with what lies behind the piece.
  if (n <= 64) {
    pairs.low &= (uint64_t{1} << (n - 1)) - 1;
    pairs.high = 0;
  } else {
    pairs.high &= (uint64_t{1} << (n - 65)) - 1;
  }
  const uint64_t lowLater = pairs.low << 1;
  const uint64_t highLater = pairs.high << 1 | pairs.low >> 63;
  const uint64_t lowLiterals = ~(pairs.low | lowLater);
  const uint64_t highLiterals = ~(pairs.high | highLater);
  uint64_t low = (pairs.low & ~lowLater) | (lowLiterals & ~(lowLiterals << 1));
  uint64_t high = (pairs.high & ~highLater) | (highLiterals & ~(highLiterals << 1 | lowLiterals >> 63));
  if (n < 64) low &= (uint64_t{1} << n) - 1;
  high &= n <= 64 ? 0 : (uint64_t{1} << (n - 64)) - 1;

  size_t from = 0;
  size_t run = 0 - static_cast<size_t>(pairs.low & 1);
  low &= low - 1;  // byte 0 begins something in any case
  for (; low != 0; low &= low - 1) {
    const auto bit = static_cast<size_t>(std::countr_zero(low));
    out = writeToken(piece, from, bit, run, out);
    from = bit;
    run = 0 - static_cast<size_t>(pairs.low >> bit & 1);
  }
  for (; high != 0; high &= high - 1) {
    const auto bit = static_cast<size_t>(std::countr_zero(high));
    out = writeToken(piece, from, 64 + bit, run, out);
    from = 64 + bit;
    run = 0 - static_cast<size_t>(pairs.high >> bit & 1);
  }
  return writeToken(piece, from, n, run, out);
}

// Codes fewer than kReads bytes, in one or two pieces, from and to places of exactly their sizes.
size_t encodeTail(std::span<const uint8_t> bytes, uint8_t *out) {
  uint8_t in[kPackBitsPiece + kReads] = {};
  uint8_t codes[2 * kReads + kSpill];
  std::copy(bytes.begin(), bytes.end(), in);
  uint8_t *to = codes;
  for (size_t at = 0; at < bytes.size(); at += kPackBitsPiece) {
    const size_t n = std::min(bytes.size() - at, kPackBitsPiece);
    to = encodeMasked(in + at, n, equalMask(in + at), to);
  }
  std::copy(codes, to, out);
  return static_cast<size_t>(to - codes);
}

}  // namespace

size_t encodePackBits(std::span<const uint8_t> row, size_t behind, uint8_t *out) {
  uint8_t *to = out;
  const uint8_t *from = row.data();
  size_t left = row.size();
  // Codes take at most two bytes for each byte, so that while kReads bytes are left a piece's spill
  // stays within the room that the caller gives.
  static_assert(2 * kReads >= kSpill);
  while (left != 0 && left + behind >= kReads) {
    const size_t n = std::min(left, kPackBitsPiece);
    to = encodeMasked(from, n, equalMask(from), to);
    from += n;
    left -= n;
  }
  to += encodeTail({from, left}, to);
  return static_cast<size_t>(to - out);
}

}  // namespace tiff
