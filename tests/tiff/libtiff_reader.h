// SPDX-License-Identifier: MIT
// libtiff as an independent reader of single strips. Native builds only.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace support {

struct StripFormat {
  uint32_t width;  // pixels
  uint32_t rows;
  uint16_t bitsPerSample;
  uint16_t compression;  // the value of the TIFF tag
};

// What libtiff makes of a file in memory whose only strip is this one: its rows without padding,
// empty when libtiff gives up or warns.
std::vector<uint8_t> readStripWithLibtiff(std::span<const uint8_t> strip, const StripFormat &format);

}  // namespace support
