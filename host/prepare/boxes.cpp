// SPDX-License-Identifier: MIT
// The first stage of clusters.h: boxes, cut where their colours spread most.
#include <algorithm>
#include <cmath>

#include "prepare/clusters.h"

namespace prepare {
namespace {

using Direction = std::array<double, 3>;

// The colours of a box stand side by side. Its sums are whole numbers, and do not depend on their order.
struct Box {
  std::span<ColorCount> colors;
  uint64_t pixels = 0;
  uint64_t sums[3] = {};
  uint64_t products[3][3] = {};
  double error = 0;  // the sum of squared distances from the mean

  explicit Box(std::span<ColorCount> held) : colors(held) {
    for (const ColorCount &c : colors) {
      pixels += c.count;
      for (size_t i = 0; i < 3; ++i) {
        const uint64_t weighted = uint64_t{c.mean[i]} * c.count;
        sums[i] += weighted;
        for (size_t k = 0; k < 3; ++k) products[i][k] += weighted * c.mean[k];
      }
    }
    for (size_t i = 0; i < 3; ++i) error += spread(i, i);
    if (colors.size() < 2) error = 0;
  }
  double mean(size_t channel) const {
    return static_cast<double>(sums[channel]) / static_cast<double>(pixels);
  }
  double spread(size_t i, size_t k) const {
    return static_cast<double>(products[i][k]) - static_cast<double>(sums[i]) * mean(k);
  }
  Color color() const {
    Color mean{};
    for (size_t i = 0; i < 3; ++i) mean[i] = static_cast<uint8_t>((sums[i] + pixels / 2) / pixels);
    return mean;
  }
};

// The direction of the longest spread: a few multiplications by the matrix of spreads turn any direction
// into it. They begin with the column of the largest one.
Direction longest(const Box &box) {
  size_t start = 0;
  for (size_t i = 1; i < 3; ++i) {
    if (box.spread(i, i) > box.spread(start, start)) start = i;
  }
  Direction direction{box.spread(0, start), box.spread(1, start), box.spread(2, start)};
  for (int turn = 0; turn < 8; ++turn) {
    Direction next{};
    for (size_t i = 0; i < 3; ++i) {
      for (size_t k = 0; k < 3; ++k) next[i] += box.spread(i, k) * direction[k];
    }
    const double size = std::max({std::fabs(next[0]), std::fabs(next[1]), std::fabs(next[2])});
    if (size <= 0) break;
    for (size_t i = 0; i < 3; ++i) direction[i] = next[i] / size;
  }
  return direction;
}

// Cuts a box in two and returns how many colours the first part has; all or none when they all are at the
// mean.
size_t cut(const Box &box) {
  const Direction direction = longest(box);
  const auto along = [&](double red, double green, double blue) {
    return red * direction[0] + green * direction[1] + blue * direction[2];
  };
  const double middle = along(box.mean(0), box.mean(1), box.mean(2));
  const auto second = std::partition(box.colors.begin(), box.colors.end(), [&](const ColorCount &c) {
    return along(c.mean[0], c.mean[1], c.mean[2]) < middle;
  });
  return static_cast<size_t>(second - box.colors.begin());
}

}  // namespace

std::vector<Color> cutBoxes(std::vector<ColorCount> colors, uint32_t most) {
  std::vector<Box> boxes{Box(colors)};
  while (boxes.size() < most) {
    Box &worst =
        *std::ranges::max_element(boxes, [](const Box &a, const Box &b) { return a.error < b.error; });
    if (worst.error <= 0) break;
    const size_t first = cut(worst);
    if (first == 0 || first == worst.colors.size()) {
      worst.error = 0;
      continue;
    }
    const Box second(worst.colors.subspan(first));
    worst = Box(worst.colors.first(first));
    boxes.push_back(second);
  }
  std::vector<Color> table;
  table.reserve(boxes.size());
  for (const Box &box : boxes) table.push_back(box.color());
  return table;
}

}  // namespace prepare
