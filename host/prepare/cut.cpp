// SPDX-License-Identifier: MIT
#include "prepare/cut.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "prepare/leptonica.h"
#include "prepare/services.h"

namespace prepare {
namespace {

constexpr int kMiddle = 128;

// Otsu's method, by way of the histogram. Where cuts are nearly as good as the best, the one with the
// fewest pixels is taken: Leptonica's own default.
int otsuLevel(const Leptonica &lept, const Source &source) {
  constexpr float kNearlyAsGood = 0.1f;
  std::array<uint64_t, 256> levels{};
  std::vector<uint8_t> row(source.width());
  for (uint32_t y = 0; y < source.height(); ++y) {
    source.readGrey(y, row.data());
    for (const uint8_t level : row) ++levels[level];
  }
  NUMA *histogram = lept.numaCreate(256);
  if (!histogram) return -1;
  for (const uint64_t count : levels) lept.numaAddNumber(histogram, static_cast<float>(count));
  l_int32 level = kMiddle;
  float meanBelow = 0, meanAbove = 0, below = 0, above = 0;
  const l_int32 failed = lept.numaSplitDistribution(histogram, kNearlyAsGood, &level, &meanBelow,
                                                    &meanAbove, &below, &above, nullptr);
  lept.numaDestroy(&histogram);
  return failed ? kMiddle : std::clamp<int>(level, 0, 255);
}

// Half the side of a pixel's surroundings: an eighth of an inch, which is more than a line of small print.
l_int32 surroundings(const RaxelPlan &plan) {
  constexpr double kPart = 0.125;
  constexpr uint32_t kLeast = 8, kMost = 200, kBeside = 3;
  const double dots = std::sqrt(plan.dpiX * plan.dpiY) * kPart;
  const auto wanted = static_cast<uint32_t>(std::clamp(dots, double{kLeast}, double{kMost}));
  const uint32_t side = std::min(plan.width, plan.rows);
  const uint32_t room = side > kBeside ? (side - kBeside) / 2 : 0;
  return static_cast<l_int32>(std::min(wanted, room));
}

PIX *greyPix(const Leptonica &lept, const Source &source) {
  PIX *pix = lept.pixCreate(static_cast<l_int32>(source.width()), static_cast<l_int32>(source.height()), 8);
  if (!pix) return nullptr;
  std::vector<uint8_t> row(source.width());
  l_uint32 *words = lept.pixGetData(pix);
  for (uint32_t y = 0; y < source.height(); ++y, words += lept.pixGetWpl(pix)) {
    source.readGrey(y, row.data());
    for (uint32_t x = 0; x < source.width(); ++x)
      words[x / 4] |= static_cast<l_uint32>(row[x]) << (24 - 8 * (x % 4));
  }
  return pix;
}

// Ink is 1 in Leptonica, and white is 1 in the block.
void copyInk(const Leptonica &lept, PIX *ink, const Block &block) {
  const uint64_t bytes = rowBytes(block.plan);
  const uint32_t used = block.plan.width % 8;
  const l_uint32 *words = lept.pixGetData(ink);
  for (uint32_t y = 0; y < block.plan.rows; ++y, words += lept.pixGetWpl(ink)) {
    uint8_t *out = block.row(y);
    for (uint64_t i = 0; i < bytes; ++i)
      out[i] = static_cast<uint8_t>(~(words[i / 4] >> (24 - 8 * (i % 4))));
    if (used != 0) out[bytes - 1] = static_cast<uint8_t>(out[bytes - 1] & (0xFF00u >> used));
  }
}

int cutAdaptively(const Leptonica &lept, const Source &source, const Block &block) {
  constexpr float kFactor = 0.2f;           // how far below the mean ink begins; more loses thin strokes
  constexpr l_int32 kTilePixels = 1 << 20;  // at a time, for the memory's sake
  const l_int32 around = surroundings(block.plan);
  if (around < 2) {  // a picture of few pixels has no surroundings
    cutBelow(source, otsuLevel(lept, source), block);
    return RAXEL_HOST_OK;
  }
  const uint64_t pixels = uint64_t{source.width()} * source.height();
  if (!fits(2 * pixels + 16 * uint64_t{kTilePixels} + kFilterTables)) return RAXEL_HOST_NO_MEMORY;
  PIX *grey = greyPix(lept, source);
  if (!grey) return RAXEL_HOST_NO_MEMORY;
  const auto tiles = static_cast<l_int32>(std::min<uint64_t>(pixels / kTilePixels + 1, source.height()));
  PIX *ink = nullptr;
  const l_int32 failed = lept.pixSauvolaBinarizeTiled(grey, around, kFactor, 1, tiles, nullptr, &ink);
  lept.pixDestroy(&grey);
  if (failed || !ink) return RAXEL_HOST_NO_MEMORY;
  copyInk(lept, ink, block);
  lept.pixDestroy(&ink);
  return RAXEL_HOST_OK;
}

}  // namespace

void cutBelow(const Source &source, int level, const Block &block) {
  std::vector<uint8_t> row(source.width());
  for (uint32_t y = 0; y < source.height(); ++y) {
    source.readGrey(y, row.data());
    for (uint8_t &v : row) v = v < level ? 0 : 1;
    packRow(row, block.plan.bits, block.row(y));
  }
}

int cutGrey(const Source &source, const RaxelRequest &request, const Block &block, RaxelPlan &plan) {
  int level = request.thresholdLevel;
  if (request.threshold != RAXEL_THRESHOLD_LEVEL) {
    const Leptonica *lept = leptonica();
    if (!lept) return RAXEL_HOST_NO_THRESHOLD;
    if (request.threshold == RAXEL_THRESHOLD_ADAPTIVE) return cutAdaptively(*lept, source, block);
    level = otsuLevel(*lept, source);
    if (level < 0) return RAXEL_HOST_NO_MEMORY;
  }
  plan.threshold = level;
  cutBelow(source, level, block);
  return RAXEL_HOST_OK;
}

}  // namespace prepare
