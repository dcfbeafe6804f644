// SPDX-License-Identifier: MIT
// The palette of a framed picture.
#pragma once

#include <cstdint>

#include "raxel/driver.h"
#include "runtime/blocks.h"

namespace raster {

// The state's colour table as a palette of 2^bits entries, for bits below 24; entries past the table's 256
// are black. An empty block when there is no memory.
runtime::Block paletteOf(const RasterDriverState &state, uint32_t bits);

}  // namespace raster
