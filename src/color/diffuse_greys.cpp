#include "color/diffuse_greys.h"

#include "color/nearest.h"
#include "raxel/color.h"

namespace color {

namespace {

constexpr int32_t kLowestSum = -128;  // 0 and the largest negative error, with room to spare

uint8_t clamp(int32_t sum) {
  return BOUNDARY_CHK[sum - kLowestSum];
}

// The lowest bit of the index that an entry's own colour finds: the whole picture is looked up once
// more when it is packed.
uint8_t storedFor(std::span<const uint8_t> table, int32_t count, int32_t entry) {
  const uint8_t *color = table.data() + ptrdiff_t{entry} * 3;
  return nearest(color[0], color[1], color[2], table, count) & 1;
}

}  // namespace

bool hasGrey(std::span<const uint8_t> table, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const uint8_t *entry = table.data() + ptrdiff_t{i} * 3;
    if (entry[0] == entry[1] && entry[1] == entry[2]) return true;
  }
  return false;
}

void prepareGreys(GreyDiffusion &diffusion, std::span<const uint8_t> table, int32_t count) {
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
}

void diffuseGreyRow(const GreyDiffusion &diffusion, const uint8_t *current, uint8_t *next, uint8_t *values,
                    uint32_t width) {
  int32_t right = 0;
  int32_t below = 0;
  int32_t belowRight = next[0];
  for (ptrdiff_t x = 0; x + 1 < ptrdiff_t{width}; ++x) {
    const GreyStep step = diffusion.steps[current[x] + right - kLowestSum];
    values[x] = step.stored;
    next[x - 1] = clamp(below + step.belowLeft);
    below = clamp(belowRight + step.below);
    belowRight = clamp(next[x + 1] + step.belowRight);
    right = step.right;
  }
  if (width < 2) {
    values[0] = diffusion.storedAlone;
    return;
  }
  // The last pixel is not searched: it repeats the one before it and spreads nothing.
  next[width - 2] = static_cast<uint8_t>(below);
  next[width - 1] = static_cast<uint8_t>(belowRight);
  values[width - 1] = values[width - 2];
}

}  // namespace color
