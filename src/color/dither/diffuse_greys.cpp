// SPDX-License-Identifier: MIT
#include "color/dither/diffuse_greys.h"

#include <iterator>
#include <utility>

#include "color/nearest/nearest.h"
#include "raxel/color.h"

namespace color {

namespace {

constexpr int32_t kLowestSum = -128;  // 0 and the largest negative error, with room to spare
constexpr int kRows = kGreyRowsAtOnce;
constexpr ptrdiff_t kLag = 2;                       // pixels between a row and the one above it
constexpr ptrdiff_t kLastLag = kLag * (kRows - 1);  // between the last row and the first
constexpr ptrdiff_t kMargin = kLastLag + kLag;      // pixels on either side of a row that steps touch

uint8_t clamp(int32_t sum) {
  return BOUNDARY_CHK[sum - kLowestSum];
}

// The lowest bit of the index that an entry's own colour finds: the whole picture is looked up once
// more when it is packed.
uint8_t storedFor(std::span<const uint8_t> table, int32_t count, int32_t entry) {
  const uint8_t *color = table.data() + ptrdiff_t{entry} * 3;
  return nearest(color[0], color[1], color[2], table, count) & 1;
}

// A row, and what is carried along it from pixel to pixel.
struct GreyRow {
  const uint8_t *current;
  uint8_t *next;
  uint8_t *values;
  int32_t right;       // to the next pixel of the row
  int32_t below;       // the pixel below the last one, complete but for one addition
  int32_t belowRight;  // the pixel after that, complete but for two
};

void advance(GreyRow &row, ptrdiff_t x, const GreyStep &step) {
  row.values[x] = step.stored;
  row.next[x - 1] = clamp(row.below + step.belowLeft);
  row.below = clamp(row.belowRight + step.below);
  row.belowRight = clamp(row.next[x + 1] + step.belowRight);
  row.right = step.right;
}

}  // namespace

bool hasGrey(std::span<const uint8_t> table, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const uint8_t *entry = table.data() + ptrdiff_t{i} * 3;
    if (entry[0] == entry[1] && entry[1] == entry[2]) return true;
  }
  return false;
}

bool startGreys(GreyDiffusion &diffusion, std::span<const uint8_t> table, int32_t count, uint32_t width) {
  GreyStep levels[256];
  for (int16_t level = 0; level < 256; ++level) {
    const int32_t entry = nearest(level, level, level, table, count);
    const int32_t error = level - table[static_cast<size_t>(entry) * 3];
    const int32_t most = 7 * error / 16;
    const int32_t eighth = error / 8;
    levels[level] = {static_cast<int8_t>(most), static_cast<int8_t>(most - eighth),
                     static_cast<int8_t>(most - 2 * eighth), static_cast<int8_t>(most - 3 * eighth),
                     storedFor(table, count, entry)};
  }
  // The sum is clamped by the same look-up that finds what it spreads.
  for (size_t i = 0; i < 512; ++i) diffusion.steps[i] = levels[BOUNDARY_CHK[i]];
  diffusion.storedAlone = storedFor(table, count, 0);

  diffusion.width = width;
  const uint64_t room = uint64_t{width} + 2 * uint64_t{kMargin};
  diffusion.memory =
      runtime::Block::ofSize(room * (std::size(diffusion.rows) + std::size(diffusion.values)));
  if (!diffusion.memory) return false;
  uint8_t *row = diffusion.memory.data() + kMargin;
  for (uint8_t *&r : diffusion.rows) r = std::exchange(row, row + room);
  for (uint8_t *&v : diffusion.values) v = std::exchange(row, row + room);
  return true;
}

void diffuseGreyRows(GreyDiffusion &diffusion, int count) {
  const GreyStep none = {};
  const GreyStep *steps = diffusion.steps - kLowestSum;
  GreyRow rows[kRows];
  for (int k = 0; k < kRows; ++k) {
    rows[k] = {diffusion.rows[k], diffusion.rows[k + 1], diffusion.values[k], 0, 0, 0};
  }
  // The last pixel of a row spreads nothing. Steps before and after a row bring in its first pixel
  // and take what is carried to the row below.
  const ptrdiff_t spreading = static_cast<ptrdiff_t>(diffusion.width) - 1;
  const ptrdiff_t end = spreading + kLag + kLastLag;
  for (ptrdiff_t t = -1; t < end; ++t) {
    if (count == kRows && t >= kLastLag && t < spreading) {
      for (int k = 0; k < kRows; ++k) {
        const ptrdiff_t x = t - kLag * k;
        advance(rows[k], x, steps[rows[k].current[x] + rows[k].right]);
      }
    } else {
      for (int k = 0; k < kRows; ++k) {
        const ptrdiff_t x = t - kLag * k;
        const bool spreads = k < count && x >= 0 && x < spreading;
        advance(rows[k], x, spreads ? steps[rows[k].current[x] + rows[k].right] : none);
      }
    }
  }
  // The last pixel is not searched: it repeats the one before it, and a lone one takes entry 0.
  for (int k = 0; k < count; ++k) {
    uint8_t *values = diffusion.values[k];
    values[spreading] = spreading > 0 ? values[spreading - 1] : diffusion.storedAlone;
  }
  std::swap(diffusion.rows[0], diffusion.rows[count]);
}

}  // namespace color
