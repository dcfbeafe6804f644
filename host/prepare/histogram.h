// The colours of a picture, gathered into small cubes.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "prepare/source.h"

namespace prepare {

// A cube of 4 by 4 by 4 colours that occurs: the mean of its pixels, and how many there are.
struct ColorCount {
  Color mean;
  uint32_t count;
};

std::vector<ColorCount> histogramOf(const Source &source);
// The same in cubes of 8 by 8 by 8, an eighth of them for noise.
std::vector<ColorCount> inLargerCubes(std::span<const ColorCount> histogram);

// Moves each colour of the table to the mean of what it is nearest to, a few times over, so that the sum of
// squares falls. A colour that nothing is nearest to stays where it is.
void refine(std::span<const ColorCount> histogram, std::span<Color> table);

}  // namespace prepare
