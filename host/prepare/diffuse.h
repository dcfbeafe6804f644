// SPDX-License-Identifier: MIT
// Error diffusion to a table of colours.
//
// Each pixel goes to the nearest entry, and what it has lost goes to neighbours that are still to come, in
// the shares of Robert Floyd and Louis Steinberg (An adaptive algorithm for spatial greyscale, 1976), from
// left to right:
//
//            *   7/16
//     3/16 5/16  1/16
//
// All of the loss keeps means exactly, which a table needs that was made for no picture. With colours of
// the picture's own that makes coarser patterns than need be: 13 sixteenths of it come nearer to the
// picture, pixel by pixel and also seen from afar.
#pragma once

#include <cstdint>
#include <span>

#include "prepare/source.h"

namespace prepare {

// How much of a loss goes where, in 128ths. Sums of 255 times all of them still fit in 16 bits.
struct Shares {
  int16_t ahead, below, behind, beyond;
};
constexpr Shares kSharesOfOwnColors{46, 33, 19, 6};
constexpr Shares kSharesOfGivenColors{56, 40, 24, 8};

// Writes one index a pixel, rows from the top.
void diffuse(const Source &source, std::span<const Color> table, uint8_t *indices,
             Shares shares = kSharesOfOwnColors);

}  // namespace prepare
