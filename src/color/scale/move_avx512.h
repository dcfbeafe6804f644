// SPDX-License-Identifier: MIT
// Moves pixels of less than a byte as they are packed, 64 bytes of them at a time, with the byte
// permutations of AVX-512. Pixels of whole bytes move as move_ssse3.h says: wider moves shorten a whole
// export by less than a tenth.
//
// A group of pixels comes from 64 or 128 neighbouring bytes of the source, and is as long as they allow, up
// to 512 bits or 128 nibbles.
#pragma once

#include <cstdint>
#include <span>

#include "color/avx512.h"
#include "color/scale/move_plan.h"

namespace color {

#if defined(RAXEL_HAS_AVX512)

// Plans the columns of a run, which never fall, from its first whole byte on: all of them, or none where
// so many pixels are left out that groups would be too short.
void planMoveAvx512(MovePlan &plan, std::span<const uint32_t> columns, int16_t depth);

// What the groups of a plan hold, for the functions that move them.
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
// By the number of fields, and by the length of the stretch for a group of 64 bits:
using Move = decltype(MovePlan::move);
extern const Move kMoveNibbles;
extern const Move kMoveFarNibbles;
extern const Move kMoveFields[8];
extern const Move kMoveFarFields[8];
extern const Move kMoveBits16;
extern const Move kMoveBits64;

#endif

}  // namespace color
