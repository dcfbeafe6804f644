// SPDX-License-Identifier: MIT
#include "prepare/diffuse.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "prepare/nearest.h"

namespace prepare {
namespace {

// Red, green and blue side by side, and nothing. The compiler takes the machine's vectors where it has
// them.
using Lanes = int16_t __attribute__((vector_size(16)));

constexpr int16_t kWholeBits = 7;  // shares are 128ths

// A pixel waits for its left neighbour, and most of that time for memory. But all that falls on a pixel
// from above has come when the pixel above and to the right is done: so several rows advance together, each
// two pixels behind the one above it.
//
//           x:  0 1 2 3 4 5 6 7
//       row 0   . . . . . . A         A, B, C and D are done in one step;
//       row 1   . . . . B             none needs another's result
//       row 2   . . C
//       row 3   D
constexpr ptrdiff_t kTogether = 4;
constexpr ptrdiff_t kLag = 2;

struct Row {
  const Lanes *colors;
  const Lanes *falling;  // from above
  Lanes *below;          // what falls on the next row; there is room for pixel -1
  uint8_t *indices;
  Lanes ahead;    // from the left
  Lanes before;   // what the pixel on the left has lost
  Lanes earlier;  // and the one on its left
};

// Vectors go in and out by reference: not every machine has one way to pass them by value.
void readLanes(const uint8_t *color, Lanes &lanes) {
  lanes = Lanes{color[0], color[1], color[2]};
}

inline void doPixel(Row &row, ptrdiff_t x, NearestColor &nearest, const Lanes *entries, Shares shares) {
  const Lanes none = {};
  const Lanes full = none + 255;
  Lanes wanted = row.colors[x] + ((row.falling[x] + row.ahead + (1 << (kWholeBits - 1))) >> kWholeBits);
  wanted = wanted < none ? none : wanted;
  wanted = wanted > full ? full : wanted;
  const uint8_t index = nearest.find(static_cast<uint8_t>(wanted[0]), static_cast<uint8_t>(wanted[1]),
                                     static_cast<uint8_t>(wanted[2]));
  row.indices[x] = index;
  const Lanes lost = wanted - entries[index];
  row.ahead = lost * shares.ahead;
  row.below[x - 1] = lost * shares.behind + row.before * shares.below + row.earlier * shares.beyond;
  row.earlier = row.before;
  row.before = lost;
}

// What falls on the last pixel of the next row has no pixel on the right to come from.
void endRow(Row &row, ptrdiff_t width, Shares shares) {
  row.below[width - 1] = row.before * shares.below + row.earlier * shares.beyond;
}

// Does all pixels of some rows.
void doRows(std::array<Row, kTogether> rows, ptrdiff_t count, ptrdiff_t width, NearestColor &nearest,
            const Lanes *entries, Shares shares) {
  const auto step = [&](ptrdiff_t at, ptrdiff_t first, ptrdiff_t last) {
    for (ptrdiff_t r = first; r < last; ++r) {
      Row &row = rows[static_cast<size_t>(r)];
      doPixel(row, at - kLag * r, nearest, entries, shares);
      if (at - kLag * r == width - 1) endRow(row, width, shares);
    }
  };
  // Rows begin one after the other and end so; in between all of them are on their way.
  const ptrdiff_t end = width + kLag * (count - 1);
  for (ptrdiff_t at = 0; at < end; ++at) {
    const ptrdiff_t first = at < width ? 0 : (at - width) / kLag + 1;
    const ptrdiff_t last = std::min(count, at / kLag + 1);
    step(at, first, last);
    if (last < kTogether) continue;
    for (; at + 2 < width; ++at) {
      for (ptrdiff_t r = 0; r < kTogether; ++r) {
        doPixel(rows[static_cast<size_t>(r)], at + 1 - kLag * r, nearest, entries, shares);
      }
    }
  }
}

}  // namespace

void diffuse(const Source &source, std::span<const Color> table, uint8_t *indices, Shares shares) {
  const size_t width = source.width();
  NearestColor nearest(table, uint64_t{source.width()} * source.height());
  std::array<Lanes, 256> entries{};
  for (size_t i = 0; i < table.size(); ++i) readLanes(table[i].data(), entries[i]);
  std::vector<uint8_t> bytes(3 * width);
  std::array<std::vector<Lanes>, kTogether> colors;
  for (auto &row : colors) row.resize(width);
  std::array<std::vector<Lanes>, kTogether + 1> falling;
  for (auto &row : falling) row.resize(width + 1);
  for (uint32_t y = 0; y < source.height(); y += kTogether) {
    const auto count = static_cast<ptrdiff_t>(std::min<uint32_t>(kTogether, source.height() - y));
    std::array<Row, kTogether> rows{};
    for (size_t r = 0; r < static_cast<size_t>(count); ++r) {
      const uint8_t *row = source.colorsOf(y + static_cast<uint32_t>(r), bytes.data());
      for (size_t x = 0; x < width; ++x) readLanes(row + 3 * x, colors[r][x]);
      rows[r].colors = colors[r].data();
      rows[r].falling = falling[r].data() + 1;
      rows[r].below = falling[r + 1].data() + 1;
      rows[r].indices = indices + (y + r) * width;
    }
    doRows(rows, count, static_cast<ptrdiff_t>(width), nearest, entries.data(), shares);
    falling.front().swap(falling[static_cast<size_t>(count)]);
  }
}

}  // namespace prepare
