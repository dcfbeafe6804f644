// SPDX-License-Identifier: MIT
// What a depth asks of the groups of a plan; the part of plan_avx512.cpp that is about single bits.
#pragma once

#include <cstdint>
#include <span>

namespace color {

struct GroupShape {
  uint32_t bits;     // of a pixel
  uint32_t whole;    // pixels that fill whole bytes: groups begin at multiples of it
  uint32_t most;     // pixels in a group
  uint32_t least;    // with fewer, single pixels are no slower
  uint32_t indexes;  // rows of `index` for each group
  uint32_t stretch;  // bytes of the source that a group is taken from
  // Bits that are put together from fields of eight:
  uint32_t windows = 0;  // for every eight bytes of a group, 1 or 2
  int32_t highest = 0;   // offset
};

// The shape for the columns of a run.
GroupShape shapeOfBits(std::span<const uint32_t> columns);

// Fills the indexes of one group, which are 0, and whose stretch begins at byte first. False when the eight
// pixels of some byte do not lie as this shape needs them to.
bool fillBits(uint8_t (*index)[64], const GroupShape &shape, std::span<const uint32_t> columns,
              uint32_t first);

}  // namespace color
