// SPDX-License-Identifier: MIT
// The bitmap modes: what the pixels of a file can be. A new mode is a row here.
#pragma once

#include <cstdint>

#include "raxel/settings.h"

namespace runtime {

struct BitmapMode {
  int32_t stored;            // nBitmapMode
  uint32_t photometric;      // tag 262
  uint32_t bitsPerSample;    // tag 258
  uint32_t samplesPerPixel;  // tag 277
  uint32_t colors;           // entries of its palette; 0 for none

  constexpr uint16_t bitsPerPixel() const { return static_cast<uint16_t>(bitsPerSample * samplesPerPixel); }
  // Whether its palette is a ramp of greys.
  constexpr bool isGrey() const { return photometric == RAXEL_TIFF_BLACK_IS_ZERO && colors > 2; }
};

// clang-format off
inline constexpr BitmapMode kBitmapModes[] = {
    {RAXEL_STORED_MODE_BILEVEL,  RAXEL_TIFF_BLACK_IS_ZERO, 1, 1,   2},
    {RAXEL_STORED_MODE_GREY16,   RAXEL_TIFF_BLACK_IS_ZERO, 4, 1,  16},
    {RAXEL_STORED_MODE_GREY256,  RAXEL_TIFF_BLACK_IS_ZERO, 8, 1, 256},
    {RAXEL_STORED_MODE_COLOR8,   RAXEL_TIFF_PALETTE,       4, 1,   8},  // the 8 fixed colours
    {RAXEL_STORED_MODE_COLOR16,  RAXEL_TIFF_PALETTE,       4, 1,  16},
    {RAXEL_STORED_MODE_COLOR256, RAXEL_TIFF_PALETTE,       8, 1, 256},
    {RAXEL_STORED_MODE_RGB,      RAXEL_TIFF_RGB,           8, 3,   0},
};
// clang-format on

// The row of a stored mode; null for a code that is none.
constexpr const BitmapMode *bitmapMode(int32_t stored) {
  for (const BitmapMode &row : kBitmapModes) {
    if (row.stored == stored) return &row;
  }
  return nullptr;
}

}  // namespace runtime
