// SPDX-License-Identifier: MIT
#include "color/nearest/nearest.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "raxel/color.h"

namespace color {

namespace {

// Only entries nearer than this can be found; distances of bytes never come near it.
constexpr uint32_t kFarthest = 0x7FFFFFFF;

bool within(int32_t a, int32_t b, int32_t tolerance) {
  return std::abs(a - b) <= tolerance;
}

uint32_t square(int32_t d) {
  return static_cast<uint32_t>(d) * static_cast<uint32_t>(d);
}

}  // namespace

bool isGreyRequest(int32_t red, int32_t green, int32_t blue) {
  return within(red, green, kGreyTolerance) && within(green, blue, kGreyTolerance) &&
         within(red, blue, kGreyTolerance);
}

int32_t nearest(int16_t red, int16_t green, int16_t blue, std::span<const uint8_t> table, int32_t count) {
  const bool greyRequest = isGreyRequest(red, green, blue);
  const int64_t entries = std::min<int64_t>(count, static_cast<int64_t>(table.size() / 3));
  uint32_t least = kFarthest;
  int32_t kept = 0;
  for (int32_t i = 0; i < entries; ++i) {
    const uint8_t *entry = table.data() + ptrdiff_t{i} * 3;
    const bool greyEntry = entry[0] == entry[1] && entry[1] == entry[2];
    if (greyEntry != greyRequest) continue;
    const uint32_t distance = square(red - entry[0]) + square(green - entry[1]) + square(blue - entry[2]);
    if (distance >= least) continue;
    least = distance;
    kept = i;
    if (distance == 0) break;
  }
  return kept;
}

}  // namespace color

int32_t rlNearestRGBIndex(int16_t red, int16_t green, int16_t blue, const uint8_t *table, int16_t count) {
  if (table == nullptr || count <= 0) return 0;
  return color::nearest(red, green, blue, {table, static_cast<size_t>(count) * 3}, count);
}
