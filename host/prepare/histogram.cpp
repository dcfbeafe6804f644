// SPDX-License-Identifier: MIT
#include "prepare/histogram.h"

#include <algorithm>
#include <span>

namespace prepare {
namespace {

constexpr uint64_t kEnough = 1 << 22;    // pixels
constexpr uint32_t kFewCubes = 1 << 11;  // in which colours are told apart

uint32_t cubeOf(const uint8_t *color) {
  return static_cast<uint32_t>((color[0] >> 2) << 12 | (color[1] >> 2) << 6 | color[2] >> 2);
}

// Where a colour lies in its cube.
uint32_t placeOf(const uint8_t *color) {
  return static_cast<uint32_t>((color[0] & 3) << 4 | (color[1] & 3) << 2 | (color[2] & 3));
}

// Counts pixels and sums up how far into their cube they lie, two numbers in a word each.
struct Cube {
  uint64_t countAndRed = 0;
  uint64_t greenAndBlue = 0;

  void add(const uint8_t *color) {
    countAndRed += uint64_t{1} << 32 | (color[0] & 3u);
    greenAndBlue += static_cast<uint64_t>(color[1] & 3u) << 32 | (color[2] & 3u);
  }
  uint32_t count() const { return static_cast<uint32_t>(countAndRed >> 32); }
};

// How many pixels there are for each one that is looked at: a power of two.
uint32_t stepFor(const Source &source) {
  uint32_t step = 1;
  while (uint64_t{source.width()} * source.height() / step > kEnough) step *= 2;
  return step;
}

// Calls count(color) for the pixels that are looked at.
template <class Count>
void forEachSample(const Source &source, Count count) {
  const uint32_t step = stepFor(source);
  std::vector<uint8_t> row(size_t{source.width()} * 3);
  for (uint32_t y = 0; y < source.height(); ++y) {
    const uint8_t *colors = source.colorsOf(y, row.data());
    // From row to row an odd number of columns further, so that every column has its turn.
    const size_t first = size_t{y} * (step / 2 | 1) % step;
    for (size_t x = first; x < source.width(); x += step) count(colors + 3 * x);
  }
}

uint8_t meanOf(uint32_t first, uint64_t sum, uint32_t count) {
  return static_cast<uint8_t>(first + (sum + count / 2) / count);
}

ColorCount colorOf(uint32_t index, const Cube &cube) {
  const uint32_t n = cube.count();
  return {{meanOf(index >> 12 << 2, cube.countAndRed & 0xFFFFFFFF, n),
           meanOf((index >> 6 & 63) << 2, cube.greenAndBlue >> 32, n),
           meanOf((index & 63) << 2, cube.greenAndBlue & 0xFFFFFFFF, n)},
          n};
}

// The colours one by one: 64 counters for each cube that occurs.
std::vector<ColorCount> eachColor(const Source &source, std::span<const Cube> cubes) {
  std::vector<uint16_t> numbers(cubes.size());
  uint32_t used = 0;
  for (size_t i = 0; i < cubes.size(); ++i) {
    if (cubes[i].count() != 0) numbers[i] = static_cast<uint16_t>(used++);
  }
  std::vector<uint32_t> counts(size_t{used} * 64);
  forEachSample(source,
                [&](const uint8_t *color) { ++counts[numbers[cubeOf(color)] * 64u + placeOf(color)]; });
  std::vector<ColorCount> found;
  for (uint32_t i = 0; i < cubes.size(); ++i) {
    if (cubes[i].count() == 0) continue;
    for (uint32_t place = 0; place < 64; ++place) {
      const uint32_t n = counts[numbers[i] * 64u + place];
      if (n == 0) continue;
      found.push_back({{static_cast<uint8_t>(i >> 12 << 2 | place >> 4),
                        static_cast<uint8_t>((i >> 6 & 63) << 2 | (place >> 2 & 3)),
                        static_cast<uint8_t>((i & 63) << 2 | (place & 3))},
                       n});
    }
  }
  return found;
}

}  // namespace

std::vector<ColorCount> histogramOf(const Source &source) {
  std::vector<Cube> cubes(64 * 64 * 64);
  forEachSample(source, [&](const uint8_t *color) { cubes[cubeOf(color)].add(color); });
  std::vector<ColorCount> found;
  for (uint32_t i = 0; i < cubes.size(); ++i) {
    if (cubes[i].count() != 0) found.push_back(colorOf(i, cubes[i]));
  }
  return found.size() < kFewCubes ? eachColor(source, cubes) : found;
}

std::vector<ColorCount> inLargerCubes(const std::vector<ColorCount> &histogram) {
  struct Sums {
    uint64_t channels[3];
    uint32_t count;
  };
  std::vector<Sums> cubes(32 * 32 * 32);
  for (const ColorCount &c : histogram) {
    Sums &cube =
        cubes[static_cast<size_t>((c.mean[0] >> 3) << 10 | (c.mean[1] >> 3) << 5 | c.mean[2] >> 3)];
    for (size_t k = 0; k < 3; ++k) cube.channels[k] += uint64_t{c.mean[k]} * c.count;
    cube.count += c.count;
  }
  std::vector<ColorCount> found;
  for (const Sums &cube : cubes) {
    if (cube.count == 0) continue;
    found.push_back({{meanOf(0, cube.channels[0], cube.count), meanOf(0, cube.channels[1], cube.count),
                      meanOf(0, cube.channels[2], cube.count)},
                     cube.count});
  }
  return found;
}

}  // namespace prepare
