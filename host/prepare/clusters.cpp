// SPDX-License-Identifier: MIT
#include "prepare/clusters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "prepare/nearest.h"

namespace prepare {
namespace {

constexpr int kRounds = 6;
constexpr int kLastRounds = 2;  // after trials
constexpr int kTrialRounds = 3;
constexpr uint32_t kSmall = 16;  // entries of a table that is worth trials
constexpr size_t kTrials = 8;    // in a row that may fail

// What has come to an entry.
struct Cluster {
  uint64_t pixels = 0;
  uint64_t sums[3] = {};
  uint64_t squares[3] = {};
  uint64_t error = 0;  // sum of squared distances from the entry

  void add(const ColorCount &c, const Color &entry) {
    pixels += c.count;
    for (size_t i = 0; i < 3; ++i) {
      const uint64_t weighted = uint64_t{c.mean[i]} * c.count;
      const int difference = c.mean[i] - entry[i];
      sums[i] += weighted;
      squares[i] += weighted * c.mean[i];
      error += static_cast<uint64_t>(difference * difference) * c.count;
    }
  }
  double mean(size_t channel) const {
    return static_cast<double>(sums[channel]) / static_cast<double>(pixels);
  }
  double spread(size_t channel) const {
    return static_cast<double>(squares[channel]) - static_cast<double>(sums[channel]) * mean(channel);
  }
};

struct Clusters {
  std::array<Cluster, 256> of;
  uint64_t error = 0;
};

Clusters gather(const std::vector<ColorCount> &colors, std::span<const Color> table) {
  Clusters clusters{};
  const auto addAll = [&](auto find) {
    for (const ColorCount &c : colors) {
      const uint8_t index = find(c.mean);
      clusters.of[index].add(c, table[index]);
    }
  };
  if (table.size() <= kSmall) {
    addAll([&](const Color &color) { return nearestEntry(table, color); });
  } else {
    Candidates candidates(table);
    addAll([&](const Color &color) { return candidates.find(color); });
  }
  for (const Cluster &cluster : clusters.of) clusters.error += cluster.error;
  return clusters;
}

// Moves each entry to the mean of its cluster. One that nothing is nearest to stays where it is.
void toMeans(const Clusters &clusters, std::span<Color> table) {
  for (size_t k = 0; k < table.size(); ++k) {
    const Cluster &cluster = clusters.of[k];
    if (cluster.pixels == 0) continue;
    for (size_t i = 0; i < 3; ++i) {
      table[k][i] = static_cast<uint8_t>((cluster.sums[i] + cluster.pixels / 2) / cluster.pixels);
    }
  }
}

// What the error would grow by, if a cluster went to another entry.
double costOfLosing(const Clusters &clusters, size_t k, size_t entries) {
  const Cluster &lost = clusters.of[k];
  double least = std::numeric_limits<double>::infinity();
  if (lost.pixels == 0) return 0;
  for (size_t other = 0; other < entries; ++other) {
    const Cluster &heir = clusters.of[other];
    if (other == k || heir.pixels == 0) continue;
    double squares = 0;
    for (size_t i = 0; i < 3; ++i) {
      const double d = lost.mean(i) - heir.mean(i);
      squares += d * d;
    }
    const auto a = static_cast<double>(lost.pixels);
    const auto b = static_cast<double>(heir.pixels);
    least = std::min(least, squares * (a * b / (a + b)));
  }
  return least;
}

size_t leastNeeded(const Clusters &clusters, size_t entries) {
  size_t found = 0;
  double least = std::numeric_limits<double>::infinity();
  for (size_t k = 0; k < entries; ++k) {
    const double cost = costOfLosing(clusters, k, entries);
    if (cost < least) {
      least = cost;
      found = k;
    }
  }
  return found;
}

uint8_t toByte(double value) {
  return static_cast<uint8_t>(std::floor(std::clamp(value, 0.0, 255.0) + 0.5));
}

// Two entries at the two sides of a cluster, along the channel in which it spreads most.
void divide(const Cluster &cluster, Color &one, Color &other) {
  size_t widest = 0;
  for (size_t i = 1; i < 3; ++i) {
    if (cluster.spread(i) > cluster.spread(widest)) widest = i;
  }
  // A deviation of whole numbers, rounded up so that the two differ.
  const double variance = cluster.spread(widest) / static_cast<double>(cluster.pixels);
  int deviation = 1;
  while (deviation * deviation < variance) ++deviation;
  for (size_t i = 0; i < 3; ++i) one[i] = other[i] = toByte(cluster.mean(i));
  one[widest] = toByte(cluster.mean(widest) - deviation);
  other[widest] = toByte(cluster.mean(widest) + deviation);
}

// Clusters by their error, the largest first.
std::vector<size_t> byError(const Clusters &clusters, size_t entries) {
  std::vector<size_t> order(entries);
  for (size_t k = 0; k < entries; ++k) order[k] = k;
  std::ranges::stable_sort(order,
                           [&](size_t a, size_t b) { return clusters.of[a].error > clusters.of[b].error; });
  return order;
}

// Puts entries elsewhere as long as that lowers the error.
void tryElsewhere(const std::vector<ColorCount> &colors, std::vector<Color> &table) {
  Clusters best = gather(colors, table);
  for (size_t failed = 0; failed < std::min(kTrials, table.size()) && best.error > 0;) {
    const size_t from = leastNeeded(best, table.size());
    const size_t to = byError(best, table.size())[failed];
    ++failed;
    if (from == to || best.of[to].pixels == 0) continue;  // what nothing is nearest to has no sides
    std::vector<Color> trial = table;
    divide(best.of[to], trial[to], trial[from]);
    Clusters clusters = gather(colors, trial);
    for (int round = 0; round < kTrialRounds; ++round) {
      toMeans(clusters, trial);
      clusters = gather(colors, trial);
    }
    if (clusters.error >= best.error) continue;
    best = clusters;
    table = trial;
    failed = 0;
  }
}

}  // namespace

void improve(const std::vector<ColorCount> &colors, std::vector<Color> &table, int rounds) {
  for (int round = 0; round < rounds; ++round) {
    const std::vector<Color> before = table;
    toMeans(gather(colors, table), table);
    if (table == before) break;
  }
}

std::vector<Color> chooseColors(const std::vector<ColorCount> &histogram, uint32_t most) {
  std::vector<Color> table = cutBoxes(histogram, most);
  if (most <= kSmall) {
    // Trials take many rounds: a coarser look at the colours is enough for them.
    const std::vector<ColorCount> coarse = inLargerCubes(histogram);
    improve(coarse, table, kRounds);
    tryElsewhere(coarse, table);
  }
  improve(histogram, table, most <= kSmall ? kLastRounds : kRounds);
  return table;
}

}  // namespace prepare
