#include "prepare/histogram.h"

#include <array>

#include "prepare/nearest.h"

namespace prepare {
namespace {

constexpr int kRounds = 3;  // further ones gain less than a hundredth of the error

struct Sums {
  uint64_t red, green, blue;
  uint32_t count;

  void add(const uint8_t *color, uint32_t pixels) {
    red += uint64_t{color[0]} * pixels;
    green += uint64_t{color[1]} * pixels;
    blue += uint64_t{color[2]} * pixels;
    count += pixels;
  }
};

uint8_t mean(uint64_t sum, uint64_t count) {
  return static_cast<uint8_t>((sum + count / 2) / count);
}

// Those that are not empty.
std::vector<ColorCount> means(std::span<const Sums> cubes) {
  std::vector<ColorCount> found;
  for (const Sums &cube : cubes) {
    if (cube.count == 0) continue;
    found.push_back(
        {{mean(cube.red, cube.count), mean(cube.green, cube.count), mean(cube.blue, cube.count)},
         cube.count});
  }
  return found;
}

}  // namespace

std::vector<ColorCount> histogramOf(const Source &source) {
  std::vector<Sums> cubes(64 * 64 * 64);
  std::vector<uint8_t> row(size_t{source.width()} * 3);
  for (uint32_t y = 0; y < source.height(); ++y) {
    source.readColors(y, row.data());
    for (size_t i = 0; i < row.size(); i += 3) {
      cubes[(row[i] >> 2) << 12 | (row[i + 1] >> 2) << 6 | row[i + 2] >> 2].add(&row[i], 1);
    }
  }
  return means(cubes);
}

std::vector<ColorCount> inLargerCubes(std::span<const ColorCount> histogram) {
  std::vector<Sums> cubes(32 * 32 * 32);
  for (const ColorCount &c : histogram) {
    cubes[(c.mean[0] >> 3) << 10 | (c.mean[1] >> 3) << 5 | c.mean[2] >> 3].add(c.mean.data(), c.count);
  }
  return means(cubes);
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
