// SPDX-License-Identifier: MIT
// Resampling to another size: areas are averaged when a side shrinks, and interpolated when it grows.
#pragma once

#include <cstdint>
#include <vector>

#include "prepare/source.h"

namespace prepare {

// Channels are interleaved bytes: 1 (grey) or 3. Rows come from the top, channels * width bytes each.
struct Raster {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t channels = 0;
  std::vector<uint8_t> bytes;
};

// The source at width by height pixels: grey when it is grey, else in colours.
Raster scale(const Source &source, uint32_t width, uint32_t height);

}  // namespace prepare
