// SPDX-License-Identifier: MIT
// Moves the pixels of a row 16 bytes at a time, with the byte shuffle that most x86 processors have.
//
// Every 16 bytes of the destination are a group of whole pixels (16 of one byte, 5 of three, 4 of
// four), and come from 16 or 32 neighbouring bytes of the source: as long as no more than about every
// second pixel is left out, one or two shuffles make a group.
#pragma once

#include <cstdint>
#include <span>

#include "color/scale/move_plan.h"
#include "runtime/ssse3.h"

namespace color {

#if defined(RAXEL_HAS_SSSE3)

// Plans the leading groups of a run, whose columns never fall. Plans nothing for pixels of less than a
// byte. index[i][k] tells for byte k of group i which byte of the first 16 it is, and
// index[i][16 + k] which of the second 16: the other of the two is 128.
void planMoveSsse3(MovePlan &plan, std::span<const uint32_t> columns, int16_t depth);

#endif

}  // namespace color
