// The palette of a framed picture.
#pragma once

#include <cstdint>

#include "runtime/blocks.h"

namespace raster {

// The colour table as a palette of 2^bits entries, for bits below 24; entries past the 256 of the table
// are black. An empty block when there is no memory.
runtime::Block paletteOf(uint32_t bits);

}  // namespace raster
