// SPDX-License-Identifier: MIT
// The colours of a picture and how many pixels have them.
#pragma once

#include <cstdint>
#include <vector>

#include "prepare/source.h"

namespace prepare {

// Colours that are close to one another, as their mean.
struct ColorCount {
  Color mean;
  uint32_t count;  // of the pixels that were looked at
};

// Colours in cubes of 4 by 4 by 4, or one by one where they fill few cubes. Of a picture of more than four
// million pixels every second, fourth, ... is looked at, in each row from another column on.
std::vector<ColorCount> histogramOf(const Source &source);

// The same in cubes of 8 by 8 by 8, an eighth of them for noise.
std::vector<ColorCount> inLargerCubes(const std::vector<ColorCount> &histogram);

}  // namespace prepare
