// SPDX-License-Identifier: MIT
// Colour modes: exact where the picture's colours are few enough, reduced otherwise.
#pragma once

#include "prepare/block.h"
#include "prepare/row_by_row.h"

namespace prepare {

// Each fills the rows of the block and the table, and may add notes. The source has the block's size.
int toColor8(const Source &source, const RaxelRequest &request, const Block &block, RaxelPlan &plan,
             uint8_t *table);
// 16 and 256 colours of the picture's own, whose depth is above the mode's.
int toOwnColors(const Source &source, const RaxelRequest &request, const RaxelServices *services,
                const Block &block, RaxelPlan &plan, uint8_t *table);
// 16 and 256 colours of the request's palette.
int toPalette(const Source &source, const RaxelRequest &request, const Block &block, RaxelPlan &plan,
              uint8_t *table);

// Rows of RGB, blue first.
MakeRow rgbRows(const Source &source);
// Rows of an indexed picture of no more bits than the mode: indices and table as they are.
MakeRow indexRows(const Source &source, const RaxelPlan &plan, uint8_t *table);

}  // namespace prepare
