// SPDX-License-Identifier: MIT
// What the stages of the preparation ask about a plan.
#pragma once

#include <cstdint>
#include <vector>

#include "raxel/host.h"

namespace prepare {

// Bytes of a row in the file: without the padding of the block.
uint64_t rowBytes(const RaxelPlan &plan);

// Rows of a block, from row `first` of the picture on, from the top down and without padding.
std::vector<uint8_t> packRows(const RaxelPlan &plan, const uint8_t *block, uint32_t first, uint32_t rows);

// True for the three codes made of black and white runs.
bool isFax(int32_t compression);

// True for the three modes of colours in a table.
bool hasColorMap(int32_t mode);

// True when the coder gets black for white and white for black: where the filter's directory stays, which
// calls black 0, while fax codes hold white runs first.
bool codesComplement(const RaxelPlan &plan);

}  // namespace prepare
