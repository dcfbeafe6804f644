// SPDX-License-Identifier: MIT
#include "color/dither/dither_line.h"

#include <algorithm>

#include "color/nearest/nearest.h"
#include "raxel/color.h"

namespace color {

namespace {

// Adds to a channel; any sum from -128 to 383 ends within 0..255.
void addClamped(uint8_t &channel, int32_t amount) {
  channel = BOUNDARY_CHK[128 + channel + amount];
}

}  // namespace

void ditherLine(std::span<uint8_t> current, std::span<uint8_t> next, std::span<const uint8_t> table,
                int32_t count) {
  const uint8_t none[3] = {};
  const auto entry = [&](int32_t i) {
    return count > 0 && table.size() >= 3 ? table.data() + ptrdiff_t{i} * 3 : none;
  };
  const size_t width = current.size() / 3;
  if (width == 0) return;
  const uint8_t *chosen = entry(0);
  for (size_t x = 0; x + 1 < width; ++x) {
    uint8_t *pixel = current.data() + 3 * x;
    chosen = entry(nearest(pixel[0], pixel[1], pixel[2], table, count));
    for (size_t c = 0; c < 3; ++c) {
      const int32_t error = pixel[c] - chosen[c];
      const int32_t eighth = error / 8;
      const int32_t most = 7 * error / 16;
      pixel[c] = chosen[c];
      addClamped(pixel[c + 3], most);
      if (next.empty()) continue;
      uint8_t *below = next.data() + 3 * x + c;
      addClamped(below[0], most - eighth);
      if (x > 0) addClamped(below[-3], most - 2 * eighth);
      addClamped(below[3], most - 3 * eighth);
    }
  }
  // The last pixel repeats the entry before it and spreads nothing.
  for (size_t c = 0; c < 3; ++c) current[3 * (width - 1) + c] = chosen[c];
}

}  // namespace color

void _rlDitherOneLine(uint8_t *current, uint8_t *next, const uint8_t *table, uint32_t width,
                      int16_t count) {
  if (current == nullptr) return;
  const auto bytes = static_cast<size_t>(std::min<uint64_t>(uint64_t{width} * 3, SIZE_MAX / 2));
  std::span<uint8_t> below;
  if (next != nullptr) below = {next, bytes};
  std::span<const uint8_t> entries;
  if (table != nullptr && count > 0) entries = {table, static_cast<size_t>(count) * 3};
  color::ditherLine({current, bytes}, below, entries, count);
}
