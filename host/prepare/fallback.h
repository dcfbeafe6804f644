// SPDX-License-Identifier: MIT
// Pictures that a compression cannot carry to every reader.
#pragma once

#include "prepare/block.h"

namespace prepare {

// The compression that the prepared block must go out with, and the note that says why: the planned one
// and 0, or another.
struct Fallback {
  int32_t compression;
  uint32_t note;
};
Fallback fallbackOf(const Block &block);

// True when only the prepared pixels tell whether that is the planned one.
bool mayFallBack(const RaxelPlan &plan);

}  // namespace prepare
