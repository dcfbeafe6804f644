// Moves the pixels of a row 64 bytes at a time, with the byte permutations of AVX-512.
//
// A group takes its pixels from 64 or 128 neighbouring bytes of the source, and is as long as they allow:
// 64 bytes where a row is widened, and fewer where many pixels are left out. Pixels of less
// than a byte are moved as they are packed, and up to 512 of them are a group.
#pragma once

#include <cstdint>
#include <span>

#include "color/avx512.h"
#include "color/scale/move_plan.h"

namespace color {

#if defined(RAXEL_HAS_AVX512)

// Plans the columns of a run, which never fall, from its first whole byte on. Plans nothing when so
// many pixels are left out that groups would be too short; pixels of less than a byte all or none.
void planPermute(MovePlan &plan, std::span<const uint32_t> columns, int16_t depth);

// What the groups of a plan hold, for the functions that move them.
//   bytes    index[i][k]: which byte of the stretch is byte k of the group
//   nibbles  index[2 * i][k], index[2 * i + 1][k]: which byte of the stretch has the high, the low nibble
//            of byte k; 64 more when that nibble is in its other half
//   fields   the first row takes eight bytes of the stretch for every eight bytes of the group, the next
//            has the place of a field of eight bits in those for each byte, and the others tell which bits
//            of it come from fields one, two and more places further on
//   bits     index[2 * i][8 * j + b]: byte b of the eight that byte j of the group is taken from;
//            index[2 * i + 1][8 * j + b]: which of their bits is bit b of it
// Far pixels are taken from a stretch of 128 bytes. The indexes of nibbles are 128 more then, not 64, where
// they are in the other half; of fields there are two first rows, the second for the last four of every
// eight bytes of the group.
//
// By the width of the store, 16, 32 and 64 bytes; by the number of fields; and by the length of the stretch
// for a group of 64 bits:
using Move = decltype(MovePlan::move);
extern const Move kPermuteBytes[3];
extern const Move kPermuteFarBytes[3];
extern const Move kPermuteNibbles[3];
extern const Move kPermuteFarNibbles[3];
extern const Move kPermuteFields[8];
extern const Move kPermuteFarFields[8];
extern const Move kPermuteBits16;
extern const Move kPermuteBits64;

#endif

}  // namespace color
