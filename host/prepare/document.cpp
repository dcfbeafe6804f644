// SPDX-License-Identifier: MIT
#include "prepare/document.h"

#include <algorithm>
#include <vector>

namespace prepare {
namespace {

constexpr uint64_t kLookedAt = uint64_t{4} << 20;  // pixels, or a few more

// Means are in eighths of a level, and pixels are scaled down to this many, so that what Otsu's method
// compares fits in 64 bits.
constexpr int64_t kEighths = 8, kMostPixels = 1 << 20;

constexpr uint8_t kBlankCut = 128;
constexpr int64_t kLeastContrast = 24;  // levels between ink and paper
constexpr int64_t kBlankContrast = 10,
                  kBlankMean = 192;  // the noise of an empty sheet, and how bright it is

// Adds the pairs of neighbours whose levels differ.
void addSteps(const uint8_t *first, const uint8_t *second, size_t pairs, uint64_t weight, Tones &tones) {
  for (size_t i = 0; i < pairs; ++i) {
    const auto [low, high] = std::minmax(first[i], second[i]);
    if (low == high) continue;
    tones.steps[size_t{low} + 1] += weight;
    tones.steps[size_t{high} + 1] -= weight;
  }
}

void addLevels(const std::vector<uint8_t> &row, Tones &tones) {
  for (const uint8_t level : row) ++tones.levels[level];
}

// The two sides of a cut.
struct Sides {
  int64_t inkPixels = 0, paperPixels = 0;
  int64_t ink = 0, paper = 0;  // means, in eighths
  int cut = 0;

  int64_t contrast() const { return paper - ink; }
};

using Counts = std::array<int64_t, 256>;

Counts scaledDown(const std::array<uint64_t, 256> &levels) {
  uint64_t all = 0;
  for (const uint64_t count : levels) all += count;
  const uint64_t parts = std::max<uint64_t>(all, kMostPixels);
  Counts counts{};
  for (size_t i = 0; i < 256; ++i)
    counts[i] = static_cast<int64_t>((levels[i] * kMostPixels + parts / 2) / parts);
  return counts;
}

// The cut with the largest variance between its sides, in the middle of equals; a contrast of 0 for one
// tone.
Sides sidesOf(const Counts &counts) {
  int64_t pixels = 0, sum = 0;
  for (int i = 0; i < 256; ++i) {
    pixels += counts[static_cast<size_t>(i)];
    sum += i * counts[static_cast<size_t>(i)];
  }
  Sides best;
  int64_t most = 0, below = 0, sumBelow = 0;
  int first = 0;
  for (int cut = 1; cut < 256; ++cut) {
    const auto level = static_cast<size_t>(cut - 1);
    below += counts[level];
    sumBelow += (cut - 1) * counts[level];
    const int64_t above = pixels - below;
    if (below == 0 || above == 0) continue;
    const Sides sides{below, above, kEighths * sumBelow / below, kEighths * (sum - sumBelow) / above, cut};
    const int64_t variance = below * above * sides.contrast() * sides.contrast();
    if (variance < most || variance == 0) continue;
    if (variance > most) first = cut;
    most = variance;
    best = sides;
    best.cut = (first + cut) / 2;
  }
  return best;
}

// An empty sheet that was scanned: Otsu's method would cut through its noise.
bool isBlank(const Counts &counts, const Sides &sides) {
  int64_t pixels = 0, sum = 0;
  for (int i = 0; i < 256; ++i) {
    pixels += counts[static_cast<size_t>(i)];
    sum += i * counts[static_cast<size_t>(i)];
  }
  const int64_t contrast = sides.contrast();
  return contrast > 0 && contrast <= kBlankContrast * kEighths && sum >= kBlankMean * pixels;
}

// Pixels in the middle half between ink and paper.
int64_t greyBetween(const Counts &counts, const Sides &sides) {
  const int64_t quarter = sides.contrast() / 4;
  int64_t grey = 0;
  for (int i = 0; i < 256; ++i) {
    const int64_t level = kEighths * i;
    if (level > sides.ink + quarter && level < sides.paper - quarter)
      grey += counts[static_cast<size_t>(i)];
  }
  return grey;
}

// Pairs of neighbours that the cut parts, in the scale of the counts.
int64_t edgesAt(const Tones &tones, int cut) {
  uint64_t edges = 0, all = 0;
  for (size_t i = 0; i <= static_cast<size_t>(cut); ++i) edges += tones.steps[i];
  for (const uint64_t count : tones.levels) all += count;
  return static_cast<int64_t>(edges * kMostPixels / std::max<uint64_t>(all, kMostPixels));
}

}  // namespace

Tones tonesOf(const Source &source) {
  Tones tones;
  const size_t width = source.width();
  const uint64_t pixels = uint64_t{source.width()} * source.height();
  // Two rows of every `apart`.
  const auto apart = static_cast<uint32_t>(2 * std::max<uint64_t>(1, pixels / kLookedAt));
  std::vector<uint8_t> row(width), below(width);
  for (uint32_t y = 0; y < source.height(); y += apart) {
    source.readGrey(y, row.data());
    addLevels(row, tones);
    addSteps(row.data(), row.data() + 1, width - 1, 1, tones);
    if (y + 1 == source.height()) break;
    source.readGrey(y + 1, below.data());
    addLevels(below, tones);
    addSteps(below.data(), below.data() + 1, width - 1, 1, tones);
    // For those between this pair of rows and the next as well.
    addSteps(row.data(), below.data(), width, 2, tones);
  }
  return tones;
}

Kind kindOf(const Tones &tones) {
  const Counts counts = scaledDown(tones.levels);
  const Sides sides = sidesOf(counts);
  if (isBlank(counts, sides)) return {true, kBlankCut};
  if (sides.contrast() < kLeastContrast * kEighths) return {};
  const int64_t pixels = sides.inkPixels + sides.paperPixels;
  const int64_t fewer = std::min(sides.inkPixels, sides.paperPixels);
  const int64_t grey = greyBetween(counts, sides), edges = edgesAt(tones, sides.cut);
  const bool page = 16 * fewer <= 5 * pixels && 4 * grey <= pixels && 2 * grey <= 5 * edges;
  const bool sharp = 8 * grey <= pixels && 3 * grey <= 4 * edges;
  return {page || sharp, static_cast<uint8_t>(sides.cut)};
}

}  // namespace prepare
