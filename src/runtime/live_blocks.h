// SPDX-License-Identifier: MIT
// Which blocks of handle memory exist at the moment.
//
// A pointer that a host hands over may be the data of such a block, whose size is then known, or any
// other memory. What lies in front of the pointer could tell, but only a block's own may be looked at:
// so the allocator notes every block that it makes, and forgets it when it goes.
#pragma once

#include <cstddef>

#include "raxel/types.h"

namespace runtime {

void noteBlock(Handle handle);
void forgetBlock(Handle handle);

// The block whose data begin at this address; 0 when it is none of ours, or has gone.
Handle blockWithData(const void *data);

// How many there are: what is left over when all is done has leaked.
size_t countBlocks();

}  // namespace runtime
