// SPDX-License-Identifier: MIT
#include "prepare/histogram.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace prepare {
namespace {

constexpr uint64_t kEnough = 1 << 22;    // pixels
constexpr uint32_t kFewCubes = 1 << 11;  // in which colours are told apart
constexpr size_t kFewKeys = 1 << 14;     // that are sorted sooner than a table of all cubes is cleared

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

uint8_t channelOf(uint32_t cube, uint32_t place) {
  return static_cast<uint8_t>((cube & 63) << 2 | (place & 3));
}

Color colorAt(uint32_t cube, uint32_t place) {
  return {channelOf(cube >> 12, place >> 4), channelOf(cube >> 6, place >> 2), channelOf(cube, place)};
}

// In ascending order, by eight bits of three at a time: keys of 24 bits.
void sortKeys(std::vector<uint32_t> &keys) {
  std::vector<uint32_t> other(keys.size());
  for (unsigned shift = 0; shift < 24; shift += 8) {
    std::array<uint32_t, 256> places{};
    for (const uint32_t key : keys) ++places[key >> shift & 0xFF];
    uint32_t first = 0;
    for (uint32_t &place : places) first += std::exchange(place, first);
    for (const uint32_t key : keys) other[places[key >> shift & 0xFF]++] = key;
    keys.swap(other);
  }
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
      found.push_back({colorAt(i, place), n});
    }
  }
  return found;
}

// Of a small picture: the same from its pixels side by side, first by cube and then by place.
std::vector<ColorCount> fromSorted(const Source &source) {
  std::vector<uint32_t> keys;
  keys.reserve(size_t{source.width()} * source.height());
  forEachSample(source, [&](const uint8_t *color) { keys.push_back(cubeOf(color) << 6 | placeOf(color)); });
  sortKeys(keys);
  // Each colour, and how many of these are the first of a cube.
  std::vector<ColorCount> found;
  uint32_t cubes = 0;
  for (size_t i = 0; i < keys.size(); ++i) {
    if (i == 0 || keys[i] >> 6 != keys[i - 1] >> 6) ++cubes;
    if (i == 0 || keys[i] != keys[i - 1]) found.push_back({colorAt(keys[i] >> 6, keys[i] & 63), 0});
    ++found.back().count;
  }
  if (cubes < kFewCubes) return found;
  found.clear();
  for (size_t i = 0; i < keys.size();) {
    const uint32_t index = keys[i] >> 6;
    Cube cube;
    for (; i < keys.size() && keys[i] >> 6 == index; ++i) cube.add(colorAt(index, keys[i] & 63).data());
    found.push_back(colorOf(index, cube));
  }
  return found;
}

uint32_t largerCubeOf(const Color &color) {
  return static_cast<uint32_t>((color[0] >> 3) << 10 | (color[1] >> 3) << 5 | color[2] >> 3);
}

struct Sums {
  uint64_t channels[3];
  uint32_t count;

  void add(const ColorCount &c) {
    for (size_t k = 0; k < 3; ++k) channels[k] += uint64_t{c.mean[k]} * c.count;
    count += c.count;
  }
  ColorCount mean() const {
    return {{meanOf(0, channels[0], count), meanOf(0, channels[1], count), meanOf(0, channels[2], count)},
            count};
  }
};

// Few colours, side by side by cube. Their numbers must fit beside it into a key.
std::vector<ColorCount> fewInLargerCubes(const std::vector<ColorCount> &histogram) {
  constexpr unsigned kNumberBits = 9;
  std::vector<uint32_t> keys(histogram.size());
  for (uint32_t i = 0; i < keys.size(); ++i) keys[i] = largerCubeOf(histogram[i].mean) << kNumberBits | i;
  sortKeys(keys);
  std::vector<ColorCount> found;
  for (size_t i = 0; i < keys.size();) {
    const uint32_t index = keys[i] >> kNumberBits;
    Sums cube{};
    do {
      cube.add(histogram[keys[i] & ((1u << kNumberBits) - 1)]);
    } while (++i < keys.size() && keys[i] >> kNumberBits == index);
    found.push_back(cube.mean());
  }
  return found;
}

}  // namespace

std::vector<ColorCount> histogramOf(const Source &source) {
  if (uint64_t{source.width()} * source.height() <= kFewKeys) return fromSorted(source);
  std::vector<Cube> cubes(64 * 64 * 64);
  forEachSample(source, [&](const uint8_t *color) { cubes[cubeOf(color)].add(color); });
  std::vector<ColorCount> found;
  for (uint32_t i = 0; i < cubes.size(); ++i) {
    if (cubes[i].count() != 0) found.push_back(colorOf(i, cubes[i]));
  }
  return found.size() < kFewCubes ? eachColor(source, cubes) : found;
}

std::vector<ColorCount> inLargerCubes(const std::vector<ColorCount> &histogram) {
  if (histogram.size() <= 1u << 9) return fewInLargerCubes(histogram);
  std::vector<Sums> cubes(32 * 32 * 32);
  for (const ColorCount &c : histogram) cubes[largerCubeOf(c.mean)].add(c);
  std::vector<ColorCount> found;
  for (const Sums &cube : cubes) {
    if (cube.count != 0) found.push_back(cube.mean());
  }
  return found;
}

}  // namespace prepare
