// Error diffusion of one channel to black and white.
//
// A bilevel picture is turned to grey before its errors spread, and a grey finds only greys: with at
// least one grey in the table all three channels stay equal, and one is enough. What a grey becomes
// and what it spreads is worked out for every level beforehand.
#pragma once

#include <cstdint>
#include <span>

namespace color {

// What a level does: what is stored for it, and what its error adds to its neighbours.
struct GreyStep {
  int8_t right;
  int8_t below;
  int8_t belowLeft;
  int8_t belowRight;
  uint8_t stored;
};

struct GreyDiffusion {
  GreyStep steps[512];  // for the sum of a level and its left neighbour's error, -128 to 383, at sum + 128
  uint8_t storedAlone;  // what is stored for a row of one pixel: entry 0
};

// Whether a table has a grey among its first entries.
bool hasGrey(std::span<const uint8_t> table, int32_t count);

// For a table that has one.
void prepareGreys(GreyDiffusion &diffusion, std::span<const uint8_t> table, int32_t count);

// Diffuses a row into `values` and the row below.
//   current, next  width levels; next[-1] may be written
void diffuseGreyRow(const GreyDiffusion &diffusion, const uint8_t *current, uint8_t *next, uint8_t *values,
                    uint32_t width);

}  // namespace color
