// SPDX-License-Identifier: MIT
// Choosing colours for a picture that has too many.
#pragma once

#include <array>
#include <vector>

#include "prepare/source.h"

namespace prepare {

// What a quantizer gives: the colours, and the index of each pixel, rows from the top, one byte a pixel.
struct Reduced {
  std::array<Color, 256> table{};
  std::vector<uint8_t> indices;
};

// Each chooses at most `colors` (16 or 256) colours. Returns a RaxelHostCode.
int quantizeBest(const Source &source, uint32_t colors, bool dither, Reduced &out);
int quantizeFast(const Source &source, uint32_t colors, bool dither, Reduced &out);
int quantizeFilter(const Source &source, uint32_t colors, bool dither, const RaxelServices *services,
                   Reduced &out);

}  // namespace prepare
