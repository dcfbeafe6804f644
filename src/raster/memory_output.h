// SPDX-License-Identifier: MIT
// The block of an output that goes to memory. The driver keeps it to itself: the host never learns
// its handle, and it is freed at the next open or at termination.
#pragma once

#include "raxel/types.h"

namespace raster {

// Opens a growing block as the output stream; 0 when that fails.
Handle openMemoryOutput();
void freeMemoryOutput();

}  // namespace raster
