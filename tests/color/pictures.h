// SPDX-License-Identifier: MIT
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

inline constexpr int16_t kDepths[] = {1, 4, 8, 24, 32};  // of the pictures that there are

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

inline void putIndex(plain::Picture &picture, uint32_t x, uint32_t y, uint32_t index) {
  const auto depth = static_cast<uint32_t>(picture.depth);
  const uint32_t bit = x * depth;
  uint8_t &byte = picture.bits[size_t{y} * plain::lineBytes(picture.width, picture.depth) + bit / 8];
  const uint32_t shift = 8 - depth - bit % 8;
  const uint32_t mask = (1u << depth) - 1;
  byte = static_cast<uint8_t>((byte & ~(mask << shift)) | (index & mask) << shift);
}

// Indexes in place of noise: few of them, a gradient, or one and its neighbour. (They are greys where
// their table has greys only, see below.)
inline void putIndexes(support::Random &random, plain::Picture &picture) {
  const auto kind = static_cast<int>(random.between(0, 3));
  const auto slope = static_cast<uint32_t>(random.between(1, 12));
  const uint32_t base = random.byte();
  for (uint32_t y = 0; y < picture.height; ++y) {
    for (uint32_t x = 0; x < picture.width; ++x) {
      const uint32_t any = random.byte();
      const uint32_t indexes[] = {any % (1 + slope), base + any % (1 + slope), (x + y) * slope / 4,
                                  base + any % 2};
      putIndex(picture, x, y, indexes[kind]);
    }
  }
}

inline void putColors(support::Random &random, plain::Picture &picture) {
  const auto kind = static_cast<int>(random.between(0, 5));
  const auto slope = static_cast<uint32_t>(random.between(1, 12));
  const auto bytes = static_cast<size_t>(picture.depth / 8);
  for (uint32_t y = 0; y < picture.height; ++y) {
    uint8_t *to = picture.bits.data() + size_t{y} * plain::lineBytes(picture.width, picture.depth);
    for (uint32_t x = 0; x < picture.width; ++x, to += bytes) {
      if (kind == 4) {
        to[0] = static_cast<uint8_t>(x * slope);
        to[1] = static_cast<uint8_t>(y * slope);
        to[2] = static_cast<uint8_t>((x + y) * slope / 2);
      } else {
        putColor(random, kind == 5 ? static_cast<int>(random.between(0, 3)) : kind, to);
      }
    }
  }
}

// A picture of any depth: noise, a gradient, few colours, greys and near greys, or a mixture.
inline plain::Picture picture(support::Random &random, uint32_t width, uint32_t height, int depth) {
  plain::Picture out{{}, width, height, depth};
  out.bits = random.bytes(size_t{plain::lineBytes(width, depth)} * height);
  if (random.chance(20)) return out;
  if (depth == 24 || depth == 32) putColors(random, out);
  if (depth == 1 || depth == 4 || depth == 8) putIndexes(random, out);
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
