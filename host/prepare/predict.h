// SPDX-License-Identifier: MIT
// The horizontal predictor of TIFF 6.0, section 14: rows as differences from pixel to pixel, which LZW
// codes in fewer bits where neighbours are nearly alike.
#pragma once

#include <cstdint>
#include <span>

#include "raxel/host.h"

namespace prepare {

// True for pixels and a compression that it is for: 8-bit greys and RGB in LZW, in a finished file.
bool mayPredict(const RaxelPlan &plan);

// Makes every sample of a row but the first pixel's the difference from that of the pixel to its left,
// modulo 256. The channels keep to themselves, so it does not matter that the filter exchanges red and blue
// later.
void differenceRow(std::span<uint8_t> row, size_t samples);

// All rows of a prepared block.
void differenceRows(const RaxelPlan &plan, uint8_t *block);

}  // namespace prepare
