// SPDX-License-Identifier: MIT
#include "color/reference/plain_depth.h"

#include <cstdlib>

namespace plain {

namespace {

// What lies past the end of a block is 0.
uint32_t byteAt(const Bytes &bytes, size_t at) {
  return at < bytes.size() ? bytes[at] : 0;
}

int clamp(int sum) {
  return sum < 0 ? 0 : sum > 255 ? 255 : sum;
}

// From source indexes to what is stored; missing where the source is not indexed.
struct Map {
  bool given = false;
  std::vector<uint32_t> words;
};

Map buildMap(int sourceDepth, const Table &source, int depth, const Table &table) {
  Map map;
  if (sourceDepth < 1 || sourceDepth > 8) return map;
  const uint32_t n = 1u << sourceDepth;
  map.given = true;
  map.words.assign(n, 0);
  Table to = table;
  if (sourceDepth <= depth && !table.given) {
    to = source;
    to.count = n;
  }
  if (!source.given || !to.given) return map;
  for (uint32_t i = 0; i < n; ++i) {
    const uint32_t red = byteAt(source.entries, 3 * i);
    const uint32_t green = byteAt(source.entries, 3 * i + 1);
    const uint32_t blue = byteAt(source.entries, 3 * i + 2);
    map.words[i] = depth == 24 ? red << 24 | green << 16 | blue << 8
                               : static_cast<uint32_t>(nearestIndex(
                                     static_cast<int>(red), static_cast<int>(green), static_cast<int>(blue),
                                     to.entries, static_cast<int16_t>(to.count)));
  }
  return map;
}

void setPixel(Bytes &bits, size_t line, uint32_t x, uint32_t y, int depth, uint32_t value, const Map &map,
              const Table &source, const Table &table) {
  uint32_t v = value;
  if (map.given) {
    v = map.words[value];
  } else if (table.given && depth < 24) {
    v = static_cast<uint32_t>(
        nearestIndex(static_cast<int>(value >> 24), static_cast<int>(value >> 16 & 255),
                     static_cast<int>(value >> 8 & 255), table.entries, static_cast<int16_t>(table.count)));
  }
  const size_t bit = size_t{x} * static_cast<size_t>(depth);
  const size_t at = y * line + bit / 8;
  const size_t offset = bit % 8;
  if (depth == 1) {
    const unsigned place = 0x80u >> offset;
    bits[at] = static_cast<uint8_t>((bits[at] & ~place) | ((v & 1) != 0 ? place : 0u));
  } else if (depth == 4) {
    bits[at] = static_cast<uint8_t>(offset == 0 ? (bits[at] & 0x0F) | (v & 15) << 4
                                                : (bits[at] & 0xF0) | (v & 15));
  } else if (depth == 8) {
    bits[at] = static_cast<uint8_t>(v);
  } else if (depth == 24 || depth == 32) {
    uint32_t rgb = v;
    if (table.given && map.given) {
      rgb = 0;
      if (v < table.count) {
        rgb = byteAt(table.entries, 3 * size_t{v}) << 24 | byteAt(table.entries, 3 * size_t{v} + 1) << 16 |
              byteAt(table.entries, 3 * size_t{v} + 2) << 8;
      }
    } else if (map.given && depth == 32) {
      // The map holds indexes, and the pixel the colour of the picture's own table.
      rgb = 0;
      if (source.given) {
        rgb = byteAt(source.entries, 3 * size_t{value}) << 24 |
              byteAt(source.entries, 3 * size_t{value} + 1) << 16 |
              byteAt(source.entries, 3 * size_t{value} + 2) << 8;
      }
    }
    bits[at] = static_cast<uint8_t>(rgb >> 24);
    bits[at + 1] = static_cast<uint8_t>(rgb >> 16);
    bits[at + 2] = static_cast<uint8_t>(rgb >> 8);
    if (depth == 32) bits[at + 3] = static_cast<uint8_t>(table.given ? 0 : rgb);
  }
}

void greyRow(uint8_t *row, uint32_t width) {
  for (uint32_t x = 0; x < width; ++x, row += 3) {
    const int grey = (3 * row[0] + 6 * row[1] + row[2]) / 10;
    row[0] = row[1] = row[2] = static_cast<uint8_t>(grey);
  }
}

}  // namespace

uint32_t lineBytes(uint32_t width, int depth) {
  const uint32_t bits = width * static_cast<uint32_t>(depth);
  const uint32_t bytes = bits / 8 + (bits % 8 != 0 ? 1 : 0);
  return bytes % 4 == 0 ? bytes : (bytes / 4 + 1) * 4;
}

uint32_t pixelAt(const Picture &picture, uint32_t x, uint32_t y) {
  const size_t bit = size_t{x} * static_cast<size_t>(picture.depth);
  const size_t at = size_t{y} * lineBytes(picture.width, picture.depth) + bit / 8;
  const auto byte = [&](size_t i) { return byteAt(picture.bits, at + i); };
  switch (picture.depth) {
    case 1:
      return byte(0) >> (7 - bit % 8) & 1;
    case 4:
      return bit % 8 == 4 ? byte(0) & 15 : byte(0) >> 4;
    case 8:
      return byte(0);
    case 24:
      return byte(0) << 24 | byte(1) << 16 | byte(2) << 8;
    case 32:
      return byte(0) << 24 | byte(1) << 16 | byte(2) << 8 | byte(3);
    default:
      return 0;
  }
}

int nearestIndex(int red, int green, int blue, const Bytes &table, int count) {
  const bool grey = std::abs(red - green) <= 4 && std::abs(green - blue) <= 4 && std::abs(red - blue) <= 4;
  int best = 0;
  int least = 0x7fffffff;
  for (int i = 0; i < count; ++i) {
    const size_t at = 3 * static_cast<size_t>(i);
    if (at + 2 >= table.size()) break;
    const int r = table[at];
    const int g = table[at + 1];
    const int b = table[at + 2];
    if ((r == g && g == b) != grey) continue;
    const int distance = (red - r) * (red - r) + (green - g) * (green - g) + (blue - b) * (blue - b);
    if (distance < least) {
      least = distance;
      best = i;
    }
  }
  return best;
}

Bytes convert(const Picture &picture, int depth, const Table &source, const Table &table) {
  const size_t line = lineBytes(picture.width, depth);
  Bytes out(line * picture.height, 0);
  const Map map = buildMap(picture.depth, source, depth, table);
  for (uint32_t y = 0; y < picture.height; ++y) {
    for (uint32_t x = 0; x < picture.width; ++x) {
      setPixel(out, line, x, y, depth, pixelAt(picture, x, y), map, source, table);
    }
  }
  return out;
}

void ditherLine(uint8_t *current, uint8_t *next, const Bytes &table, uint32_t width, int count) {
  const auto entry = [&](int i, size_t c) {
    return count > 0 ? static_cast<int>(byteAt(table, 3 * static_cast<size_t>(i) + c)) : 0;
  };
  int i = 0;
  for (size_t x = 0; x + 1 < width; ++x) {
    i = nearestIndex(current[3 * x], current[3 * x + 1], current[3 * x + 2], table, count);
    for (size_t c = 0; c < 3; ++c) {
      const size_t at = 3 * x + c;
      const int e = current[at] - entry(i, c);
      const int e8 = e / 8;
      const int e716 = 7 * e / 16;
      current[at] = static_cast<uint8_t>(entry(i, c));
      current[at + 3] = static_cast<uint8_t>(clamp(current[at + 3] + e716));
      if (next == nullptr) continue;
      next[at] = static_cast<uint8_t>(clamp(next[at] + e716 - e8));
      if (x > 0) next[at - 3] = static_cast<uint8_t>(clamp(next[at - 3] + e716 - 2 * e8));
      next[at + 3] = static_cast<uint8_t>(clamp(next[at + 3] + e716 - 3 * e8));
    }
  }
  for (size_t c = 0; c < 3 && width > 0; ++c) {
    current[3 * (size_t{width} - 1) + c] = static_cast<uint8_t>(entry(i, c));
  }
}

Bytes dither(const Picture &picture, int depth, const Table &source, const Table &table) {
  Picture work{convert(picture, 24, source, {}), picture.width, picture.height, 24};
  const size_t line = lineBytes(picture.width, 24);
  for (uint32_t y = 0; y < picture.height; ++y) {
    uint8_t *current = work.bits.data() + y * line;
    uint8_t *next = y + 1 < picture.height ? current + line : nullptr;
    if (depth == 1 && y == 0) greyRow(current, picture.width);
    if (depth == 1 && next != nullptr) greyRow(next, picture.width);
    const int count = table.given ? static_cast<int16_t>(table.count) : 0;
    ditherLine(current, next, table.given ? table.entries : Bytes{}, picture.width, count);
  }
  return convert(work, depth, {}, table);
}

}  // namespace plain
