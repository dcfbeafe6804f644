// What the stages of the preparation ask about a plan.
#pragma once

#include <cstdint>

#include "raxel/host.h"

namespace prepare {

// Bytes of a row in the file: without the padding of the block.
uint64_t rowBytes(const RaxelPlan &plan);

// True for the three codes made of black and white runs.
bool isFax(int32_t compression);

}  // namespace prepare
