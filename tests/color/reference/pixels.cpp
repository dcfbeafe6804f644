// SPDX-License-Identifier: MIT
#include "color/reference/pixels.h"

#include <cstddef>
#include <cstdlib>

namespace reference {

uint32_t lineBytes(uint32_t width, int depth) {
  const uint32_t bits = width * static_cast<uint32_t>(depth);
  uint32_t bytes = bits / 8;
  if (bits % 8 != 0) bytes++;
  if (bytes % 4 == 0) return bytes;
  return (bytes / 4 + 1) * 4;
}

static size_t addressOf(uint32_t line, uint32_t x, uint32_t y, int depth) {
  return size_t{y} * line + static_cast<uint32_t>(x * (depth / 8.0));
}

uint32_t getPixel(const uint8_t *block, uint32_t line, uint32_t x, uint32_t y, int depth) {
  const uint8_t *at = block + addressOf(line, x, y, depth);
  const uint32_t bit = static_cast<uint32_t>(depth) * x % 8;
  switch (depth) {
    case 1:
      return (static_cast<uint32_t>(*at) >> (7 - bit)) & 1u;
    case 4:
      return bit == 4 ? *at & 0x0Fu : (*at & 0xF0u) >> 4;
    case 8:
      return *at;
    case 24:
      return uint32_t{at[0]} << 24 | uint32_t{at[1]} << 16 | uint32_t{at[2]} << 8;
    case 32:
      return uint32_t{at[0]} << 24 | uint32_t{at[1]} << 16 | uint32_t{at[2]} << 8 | at[3];
    default:
      return 0;
  }
}

void setPixel(uint8_t *block, uint32_t line, uint32_t x, uint32_t y, int depth, uint32_t value,
              const uint32_t *map, const uint8_t *table, uint32_t count) {
  uint8_t *at = block + addressOf(line, x, y, depth);
  const uint32_t bit = static_cast<uint32_t>(depth) * x % 8;
  uint32_t v = value;
  if (map != nullptr) {
    v = map[value];
  } else if (table != nullptr && depth < 24) {
    const int index = nearest(static_cast<int>(value >> 24), static_cast<int>(value >> 16 & 255),
                              static_cast<int>(value >> 8 & 255), table, static_cast<int>(count));
    v = static_cast<uint32_t>(static_cast<int8_t>(index));
  }
  if (depth == 1) {
    *at = static_cast<uint8_t>(*at & ~(1u << (7 - bit)));
    *at = static_cast<uint8_t>(*at | (v & 1) << (7 - bit));
  }
  if (depth == 4 && bit == 0) *at = static_cast<uint8_t>((*at & 15u) + (v & 15) * 16);
  if (depth == 4 && bit == 4) *at = static_cast<uint8_t>((*at & 240u) + (v & 15));
  if (depth == 8) *at = static_cast<uint8_t>(v);
  if (depth != 24 && depth != 32) return;
  at[0] = static_cast<uint8_t>(v >> 24);
  at[1] = static_cast<uint8_t>(v >> 16);
  at[2] = static_cast<uint8_t>(v >> 8);
  if (table != nullptr && map != nullptr) {
    for (uint32_t c = 0; c < 3; ++c) at[c] = v < count ? table[v * 3 + c] : uint8_t{0};
  }
  if (depth == 32) at[3] = table != nullptr ? uint8_t{0} : static_cast<uint8_t>(v);
}

int nearest(int red, int green, int blue, const uint8_t *table, int count) {
  const bool greyAsked =
      std::abs(red - green) <= 4 && std::abs(green - blue) <= 4 && std::abs(red - blue) <= 4;
  unsigned best = 0x7fffffff;
  int found = 0;
  for (int i = 0; i < count; i++) {
    const int r = table[i * 3];
    const int g = table[i * 3 + 1];
    const int b = table[i * 3 + 2];
    const bool grey = r == g && g == b;
    if (grey && !greyAsked) continue;
    if (!grey && greyAsked) continue;
    const auto distance =
        static_cast<unsigned>((red - r) * (red - r) + (green - g) * (green - g) + (blue - b) * (blue - b));
    if (distance == 0) return i;
    if (distance < best) {
      best = distance;
      found = i;
    }
  }
  return found;
}

Words colormap(const uint8_t *sourceTable, int sourceDepth, const uint8_t *table, int depth, int count) {
  if (sourceDepth < 1 || sourceDepth > 8) return {};
  if (sourceDepth <= depth && table == nullptr) {
    table = sourceTable;
    count = 1 << sourceDepth;
  }
  Words map(size_t{1} << sourceDepth, 0);
  if (sourceTable == nullptr || table == nullptr) return map;
  for (size_t i = 0; i < map.size(); i++) {
    const uint8_t *entry = sourceTable + i * 3;
    map[i] = static_cast<uint32_t>(nearest(entry[0], entry[1], entry[2], table, count));
    if (depth == 24) map[i] = uint32_t{entry[0]} << 24 | uint32_t{entry[1]} << 16 | uint32_t{entry[2]} << 8;
  }
  return map;
}

}  // namespace reference
