// Pictures and colour tables to try the colour library on, the same for a seed on every machine.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "color/reference/plain_depth.h"
#include "raxel/color.h"
#include "raxel/memory.h"
#include "runtime/blocks.h"
#include "support/random.h"

namespace pictures {

inline runtime::Block block(const plain::Bytes &bytes) {
  runtime::Block out = runtime::Block::ofSize(bytes.size());
  if (!bytes.empty()) std::memcpy(out.data(), bytes.data(), bytes.size());
  return out;
}

inline plain::Bytes bytesOf(Handle handle) {
  const auto bytes = runtime::lockBytes(handle);
  return {bytes.begin(), bytes.end()};
}

// A block for a table, or none when the table is missing.
inline runtime::Block block(const plain::Table &table) {
  return table.given ? block(table.entries) : runtime::Block();
}

inline plain::Table table(const plain::Bytes &entries) {
  return {true, entries, static_cast<uint32_t>(entries.size() / 3)};
}

// One colour of a picture or a table: anything, a grey, nearly a grey, or one of very few.
inline void putColor(support::Random &random, int kind, uint8_t *to) {
  const uint8_t level = random.byte();
  for (int c = 0; c < 3; ++c) {
    switch (kind) {
      case 0:
        to[c] = random.byte();
        break;
      case 1:
        to[c] = level;
        break;
      case 2:
        to[c] = static_cast<uint8_t>(level / 2 + random.between(0, 6));
        break;
      default:
        to[c] = static_cast<uint8_t>(random.between(0, 2) * 100);
        break;
    }
  }
}

// A picture of any depth: noise, a gradient, few colours, greys and near greys, or a mixture.
inline plain::Picture picture(support::Random &random, uint32_t width, uint32_t height, int depth) {
  plain::Picture out{{}, width, height, depth};
  const uint32_t line = plain::lineBytes(width, depth);
  out.bits = random.bytes(size_t{line} * height);
  if ((depth != 8 && depth != 24 && depth != 32) || random.chance(20)) return out;
  const auto kind = static_cast<int>(random.between(0, 5));
  const auto bytes = static_cast<size_t>(depth / 8);
  const auto slope = static_cast<uint32_t>(random.between(1, 12));
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      uint8_t *to = out.bits.data() + size_t{y} * line + x * bytes;
      if (bytes == 1) {
        if (kind < 3) *to = static_cast<uint8_t>(*to % (1 + slope));
      } else if (kind == 4) {
        to[0] = static_cast<uint8_t>(x * slope);
        to[1] = static_cast<uint8_t>(y * slope);
        to[2] = static_cast<uint8_t>((x + y) * slope / 2);
      } else {
        putColor(random, kind == 5 ? static_cast<int>(random.between(0, 3)) : kind, to);
      }
    }
  }
  return out;
}

// A table: any colours, greys only, colours only, few different entries (so that there are ties and
// duplicates), or a mixture.
inline plain::Table table(support::Random &random, uint32_t entries) {
  const auto kind = static_cast<int>(random.between(0, 5));
  plain::Table out{true, plain::Bytes(size_t{entries} * 3), entries};
  for (uint32_t i = 0; i < entries; ++i) {
    uint8_t *to = out.entries.data() + size_t{3} * i;
    do {
      putColor(random, kind < 4 ? kind : static_cast<int>(random.between(0, 3)), to);
    } while (kind == 5 && to[0] == to[1] && to[1] == to[2]);
  }
  return out;
}

// A side of a picture: mostly short, at times up to 70.
inline uint32_t side(support::Random &random) {
  return static_cast<uint32_t>(random.between(1, random.chance(25) ? 70 : 12));
}

}  // namespace pictures
