// SPDX-License-Identifier: MIT
// A small host: it makes a setup, sets what it wants through escapes, and exports a picture in one call.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "raxel/setting_codes.h"
#include "raxel/types.h"

namespace library {

// Rows bottom first, each padded to 4 bytes; 24-bit pixels blue, green, red.
struct Picture {
  uint16_t bits = 0;
  uint16_t width = 0;
  uint16_t height = 0;
  std::vector<uint8_t> palette;  // 3 bytes an entry, 2^bits entries; empty when none
  std::vector<uint8_t> rows;
};

// Seeded pixels. Pictures of 8 bits and less get a seeded palette.
Picture noise(uint16_t bits, uint16_t width, uint16_t height, uint64_t seed);

struct Job {
  int32_t mode = RAXEL_ASK_MODE_RGB;
  int32_t compression = RAXEL_ASK_COMPRESS_NONE;
  uint16_t dpi = 100;
  bool tiles = false;
};

struct Written {
  uint32_t result = 0;
  std::vector<uint8_t> file;
  std::vector<int32_t> progress;  // each percentage that was reported
};

// Exports at the picture's own size in pixels and the job's resolution into a file of its own. A setup
// made before can be handed in and stays the caller's; with 0 one is made and destroyed.
Written exportPicture(const Picture &picture, const Job &job, Handle setup = 0);

// The same picture through the raster driver, one device call at a time: as one cell array between begin
// and end raster. `result` is the first code that a call answered other than 0.
Written drivePicture(const Picture &picture, const Job &job);

}  // namespace library
