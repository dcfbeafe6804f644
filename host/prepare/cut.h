// SPDX-License-Identifier: MIT
// Grey cut into black and white, without dots.
#pragma once

#include "prepare/block.h"
#include "prepare/source.h"

namespace prepare {

// Cuts the source into the block, which has its size, as the request's threshold asks (any but
// RAXEL_THRESHOLD_NONE); notes the level in the plan when there is one. Returns a RaxelHostCode.
int cutGrey(const Source &source, const RaxelRequest &request, const Block &block, RaxelPlan &plan);

// What is below the level becomes black.
void cutBelow(const Source &source, int level, const Block &block);

}  // namespace prepare
