#include "prepare/histogram.h"

#include <array>

#include "prepare/nearest.h"

namespace prepare {
namespace {

constexpr int kRounds = 3;  // further ones gain less than a hundredth of the error

struct Sums {
  uint64_t red, green, blue;
  uint32_t count;
};

uint8_t mean(uint64_t sum, uint64_t count) {
  return static_cast<uint8_t>((sum + count / 2) / count);
}

}  // namespace

std::vector<ColorCount> histogramOf(const Source &source) {
  std::vector<Sums> cubes(64 * 64 * 64);
  std::vector<uint8_t> row(size_t{source.width()} * 3);
  for (uint32_t y = 0; y < source.height(); ++y) {
    source.readColors(y, row.data());
    for (size_t i = 0; i < row.size(); i += 3) {
      const unsigned red = row[i], green = row[i + 1], blue = row[i + 2];
      Sums &cube = cubes[(red >> 2) << 12 | (green >> 2) << 6 | blue >> 2];
      cube.red += red;
      cube.green += green;
      cube.blue += blue;
      ++cube.count;
    }
  }
  std::vector<ColorCount> found;
  for (const Sums &cube : cubes) {
    if (cube.count == 0) continue;
    found.push_back(
        {{mean(cube.red, cube.count), mean(cube.green, cube.count), mean(cube.blue, cube.count)},
         cube.count});
  }
  return found;
}

void refine(std::span<const ColorCount> histogram, std::span<Color> table) {
  for (int round = 0; round < kRounds; ++round) {
    const std::vector<Color> before(table.begin(), table.end());
    NearestColor nearest(before);
    std::array<std::array<uint64_t, 4>, 256> sums{};
    for (const ColorCount &c : histogram) {
      auto &sum = sums[nearest.find(c.mean[0], c.mean[1], c.mean[2])];
      for (size_t k = 0; k < 3; ++k) sum[k] += uint64_t{c.mean[k]} * c.count;
      sum[3] += c.count;
    }
    for (size_t i = 0; i < table.size(); ++i) {
      if (sums[i][3] == 0) continue;
      for (size_t k = 0; k < 3; ++k) table[i][k] = mean(sums[i][k], sums[i][3]);
    }
  }
}

}  // namespace prepare
