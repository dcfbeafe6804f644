// Colour modes: exact where the picture's colours are few enough, reduced otherwise.
#pragma once

#include "prepare/block.h"
#include "prepare/source.h"

namespace prepare {

// Each fills the rows of the block and the table, and may add notes. The source has the block's size.
int toRgb(const Source &source, bool untouched, const Block &block);
int toColor8(const Source &source, const RaxelRequest &request, const Block &block, RaxelPlan &plan,
             uint8_t *table);
// 16 and 256 colours of the picture's own.
int toOwnColors(const Source &source, const RaxelRequest &request, const RaxelServices *services,
                const Block &block, RaxelPlan &plan, uint8_t *table);

}  // namespace prepare
