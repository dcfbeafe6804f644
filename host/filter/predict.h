// SPDX-License-Identifier: MIT
// Whether a picture is smaller when its rows are differences.
#pragma once

#include "filter/library.h"
#include "raxel/host.h"

namespace host {

// Has the filter code a part of a prepared block both ways, and answers whether differences save a tenth,
// for which the time that they take is well spent: eight bands of rows spread over the picture, each of 16
// KiB or a little more, or all of a picture that has no more than that. The plan must be one that may be
// predicted.
bool predictionPays(const Library &library, const RaxelPlan &plan, const uint8_t *block);

}  // namespace host
