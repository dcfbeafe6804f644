// SPDX-License-Identifier: MIT
// How the pixels of a scaled row are made of the pixels of the row before.
#pragma once

#include <cstdint>
#include <vector>

namespace prepare {

constexpr int kOne = 1 << 14;  // weights are fractions of this and add up to it exactly

// One pixel of the result: weights of the source pixels from `first` on.
struct Taps {
  uint32_t first = 0;
  std::vector<int> weights;
};

// For each of `to` pixels: areas are averaged when a side shrinks, and neighbours interpolated when it
// grows.
std::vector<Taps> areaTaps(uint32_t from, uint32_t to);
// The same with a cubic kernel (Catmull and Rom's) over four pixels of the result when a side shrinks:
// edges stay steep, which a cut into two levels needs.
std::vector<Taps> cubicTaps(uint32_t from, uint32_t to);

}  // namespace prepare
