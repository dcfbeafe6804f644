// SPDX-License-Identifier: MIT
#include "color/dither/diffuse_colors.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace color {

namespace {

constexpr int kRows = kRowsAtOnce;
constexpr int kPairs = kRows / 2;                   // vectors for all rows
constexpr ptrdiff_t kLag = 2;                       // pixels between a row and the one above it
constexpr ptrdiff_t kLastLag = kLag * (kRows - 1);  // between the last row and the first
constexpr ptrdiff_t kMargin = kLastLag + kLag;      // pixels on either side of a row that steps touch

// What is carried from pixel to pixel: two rows in each vector.
struct Carried {
  Lanes right[kPairs];       // to the next pixel of the row
  Lanes below[kPairs];       // the pixel below the last one, complete but for one addition
  Lanes belowRight[kPairs];  // the pixel after that, complete but for two
};

// Addresses that do not change while rows are worked on. As a local copy they stay in registers,
// whatever is written through them.
struct Places {
  const uint16_t *cells;
  const uint8_t *units;
  const PixelWord *entries;
  const uint8_t *stored;
  PixelWord *rows[kRowsAtOnce + 1];
  uint8_t *values[kRowsAtOnce];
};

uint32_t answerOf(const Places &places, NearestSearch &search, PixelWord pixel) {
  const uint32_t address = addressOf(redOf(pixel), greenOf(pixel), blueOf(pixel));
  const uint32_t unit = places.cells[address / kUnitBytes];
  return unit != 0 ? places.units[unit * kUnitBytes + address % kUnitBytes]
                   : findInNewCell(search, address);
}

// One pixel of every row: pixel t of the first, two pixels less of each further one.
//   active  all ones for rows whose pixel spreads its error, else 0
void step(const Places &places, NearestSearch &search, ptrdiff_t t, const Lanes *active, Carried &carried) {
  for (int k = 0; k < kPairs; ++k) {
    const int row = 2 * k;
    const ptrdiff_t x = t - kLag * row;
    const ptrdiff_t x2 = x - kLag;
    Lanes pixel;
    joinPixels(places.rows[row][x], places.rows[row + 1][x2], pixel);
    pixel += carried.right[k];
    clampLanes(pixel);
    const uint32_t first = answerOf(places, search, pixelOf(pixel, 0));
    const uint32_t second = answerOf(places, search, pixelOf(pixel, 1));
    places.values[row][x] = places.stored[first];
    places.values[row + 1][x2] = places.stored[second];

    Lanes entry;
    joinPixels(places.entries[first], places.entries[second], entry);
    const Lanes error = (pixel - entry) & active[k];
    Lanes most;
    Lanes eighth;
    sevenSixteenths(error, most);
    oneEighth(error, eighth);

    Lanes complete = carried.below[k] + (most - 2 * eighth);
    clampLanes(complete);
    places.rows[row + 1][x - 1] = pixelOf(complete, 0);
    places.rows[row + 2][x2 - 1] = pixelOf(complete, 1);
    carried.below[k] = carried.belowRight[k] + (most - eighth);
    clampLanes(carried.below[k]);
    joinPixels(places.rows[row + 1][x + 1], places.rows[row + 2][x2 + 1], carried.belowRight[k]);
    carried.belowRight[k] += most - 3 * eighth;
    clampLanes(carried.belowRight[k]);
    carried.right[k] = most;
  }
}

}  // namespace

bool startDiffusion(ColorDiffusion &diffusion, NearestSearch &search, uint32_t width) {
  diffusion.search = &search;
  diffusion.width = width;
  const uint64_t room = uint64_t{width} + 2 * uint64_t{kMargin};
  diffusion.memory = runtime::Block::ofSize(room * ((kRowsAtOnce + 1) * sizeof(PixelWord) + kRowsAtOnce));
  if (!diffusion.memory) return false;
  auto *row = static_cast<PixelWord *>(GlobalLock(diffusion.memory.handle())) + kMargin;
  for (PixelWord *&r : diffusion.rows) r = std::exchange(row, row + room);
  auto *values = reinterpret_cast<uint8_t *>(row - kMargin) + kMargin;
  for (uint8_t *&v : diffusion.values) v = std::exchange(values, values + room);
  return true;
}

void diffuseRows(ColorDiffusion &diffusion, int count) {
  NearestSearch &search = *diffusion.search;
  // The last pixel of a row spreads nothing. Steps before and after a row bring in its first pixel
  // and take what is carried to the row below.
  const auto spreading = static_cast<ptrdiff_t>(diffusion.width) - 1;
  const ptrdiff_t end = spreading + kLag + kLastLag;
  const auto activeAt = [&](ptrdiff_t t, int row) {
    const ptrdiff_t x = t - kLag * row;
    return row < count && x >= 0 && x < spreading ? ~PixelWord{0} : PixelWord{0};
  };
  Places places{search.cells, search.units, diffusion.entries, diffusion.stored, {}, {}};
  std::copy(std::begin(diffusion.rows), std::end(diffusion.rows), places.rows);
  std::copy(std::begin(diffusion.values), std::end(diffusion.values), places.values);
  Carried carried = {};
  Lanes active[kPairs];
  for (ptrdiff_t t = -1; t < end; ++t) {
    if (t <= kLastLag || t >= spreading) {
      for (int k = 0; k < kPairs; ++k) joinPixels(activeAt(t, 2 * k), activeAt(t, 2 * k + 1), active[k]);
    }
    step(places, search, t, active, carried);
  }
  // The last pixel is not searched: it repeats the one before it, and a lone one takes entry 0.
  for (int row = 0; row < count; ++row) {
    uint8_t *values = diffusion.values[row];
    values[spreading] = spreading > 0 ? values[spreading - 1] : diffusion.stored[0];
  }
  std::swap(diffusion.rows[0], diffusion.rows[count]);
}

}  // namespace color
