// SPDX-License-Identifier: MIT
// Bringing a picture to another depth by the road that suits the two depths.
#pragma once

#include "color/depth/depth.h"
#include "runtime/blocks.h"

namespace color {

// The picture at its new depth, and in `table` the one that was chosen for it, if any. Nothing, when the
// picture fits in no block, and for shallower depths that cannot be reached: from 32 bits any, below 8
// bits those other than 1 and 4.
//   change  without a table for the destination
runtime::Block changeResolution(DepthChange change, runtime::Block &table);

}  // namespace color
