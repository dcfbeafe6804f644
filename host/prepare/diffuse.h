// SPDX-License-Identifier: MIT
// Error diffusion to a table of colours.
//
// Each pixel goes to the nearest entry, and 13 sixteenths of what it has lost go to neighbours that are
// still to come, in the shares of Robert Floyd and Louis Steinberg (An adaptive algorithm for spatial
// greyscale, 1976), from left to right:
//
//            *   7/16
//     3/16 5/16  1/16
//
// All of the loss would keep means exactly, but patterns get coarser than they need to be: 13 sixteenths
// come nearer to the picture, pixel by pixel and also seen from afar.
#pragma once

#include <cstdint>
#include <span>

#include "prepare/source.h"

namespace prepare {

// Writes one index a pixel, rows from the top.
void diffuse(const Source &source, std::span<const Color> table, uint8_t *indices);

}  // namespace prepare
