// SPDX-License-Identifier: MIT
// Bilevel and grey modes.
#pragma once

#include <array>

#include "prepare/block.h"
#include "prepare/row_by_row.h"

namespace prepare {

// Each fills the rows of the block and the table; each may add notes. The source has the block's size.
int toBilevel(const Source &source, const RaxelRequest &request, const RaxelServices *services,
              const Block &block, RaxelPlan &plan, uint8_t *table);
int toGrey16(const Source &source, const RaxelRequest &request, const RaxelServices *services,
             const Block &block, RaxelPlan &plan, uint8_t *table);

// Rows of 256 greys.
MakeRow grey256Rows(const Source &source, RaxelPlan &plan, uint8_t *table);

// A picture of two colours needs no dithering, unless it is asked for: the brighter is white.
bool isTwoColors(uint32_t bits, const RaxelRequest &request);
MakeRow twoColorRows(const Source &source, RaxelPlan &plan, uint8_t *table);

// Of a source of 1 bit: whether each of the two indices goes to black. The darker one does, and of two
// alike both do when they are below the middle.
std::array<bool, 2> darkIndices(const Source &source);

// The table of the bilevel mode: black, white.
void bilevelTable(uint8_t *table);

// The colour that the filter's own grey rule turns into exactly this level: (level, level, level), or
// one more in blue or green where the sum of three doubles falls short of a whole number.
Color greyOfLevel(uint8_t level);

}  // namespace prepare
