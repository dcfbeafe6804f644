// SPDX-License-Identifier: MIT
// A picture laid on a larger white page.
#pragma once

#include "prepare/block.h"

namespace prepare {

// True when the plan has a page with room around the picture.
bool hasMargins(const RaxelPlan &plan);

// Fills the page's block with white (or with what is nearest to it in the table) and copies the picture's
// block, of the same bits, into its middle. Where several pixels share a byte, the picture begins with one.
void layInMiddle(const Block &picture, const Block &page, const uint8_t *table);

}  // namespace prepare
