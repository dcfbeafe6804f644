#include "color/diffuse_colors.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace color {

namespace {

constexpr uint32_t kLag = 2;                              // pixels between a row and the one above it
constexpr uint32_t kPairs = kRowsAtOnce / 2;              // vectors for all rows
constexpr uint32_t kFirstLag = kLag * (kRowsAtOnce - 1);  // of the last row behind the first
// Steps outside the row touch that many pixels more on either side.
constexpr uint32_t kMargin = kFirstLag + kLag;

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
  return unit != 0 ? places.units[unit * kUnitBytes + address % kUnitBytes] : findUnmet(search, address);
}

// One pixel of every row: pixel t of the first, two pixels less of each further one.
//   active  all ones for rows whose pixel spreads its error, else 0
void step(const Places &places, NearestSearch &search, ptrdiff_t t, const Lanes *active, Carried &carried) {
  for (uint32_t k = 0; k < kPairs; ++k) {
    const uint32_t row = 2 * k;
    const ptrdiff_t x = t - ptrdiff_t{kLag} * row;
    const ptrdiff_t x2 = x - ptrdiff_t{kLag};
    const Lanes here = joinPixels(places.rows[row][x], places.rows[row + 1][x2]);
    const Lanes pixel = clampLanes(here + carried.right[k]);
    const uint32_t first = answerOf(places, search, firstPixel(pixel));
    const uint32_t second = answerOf(places, search, secondPixel(pixel));
    places.values[row][x] = places.stored[first];
    places.values[row + 1][x2] = places.stored[second];

    const Lanes error = (pixel - joinPixels(places.entries[first], places.entries[second])) & active[k];
    const Lanes most = sevenSixteenths(error);
    const Lanes eighth = oneEighth(error);
    const Lanes below = most - eighth;
    const Lanes belowLeft = below - eighth;
    const Lanes belowRight = belowLeft - eighth;
    const Lanes complete = clampLanes(carried.below[k] + belowLeft);
    places.rows[row + 1][x - 1] = firstPixel(complete);
    places.rows[row + 2][x2 - 1] = secondPixel(complete);
    const Lanes next = joinPixels(places.rows[row + 1][x + 1], places.rows[row + 2][x2 + 1]);
    carried.below[k] = clampLanes(carried.belowRight[k] + below);
    carried.belowRight[k] = clampLanes(next + belowRight);
    carried.right[k] = most;
  }
}

}  // namespace

bool startDiffusion(ColorDiffusion &diffusion, NearestSearch &search, uint32_t width) {
  diffusion.search = &search;
  diffusion.width = width;
  const uint64_t pixels = uint64_t{width} + 2 * kMargin;
  diffusion.memory = runtime::Block::ofSize(pixels * ((kRowsAtOnce + 1) * sizeof(PixelWord) + kRowsAtOnce));
  if (!diffusion.memory) return false;
  auto *row = static_cast<PixelWord *>(GlobalLock(diffusion.memory.handle())) + kMargin;
  for (PixelWord *&r : diffusion.rows) {
    r = row;
    row += pixels;
  }
  auto *values = reinterpret_cast<uint8_t *>(row - kMargin) + kMargin;
  for (uint8_t *&v : diffusion.values) {
    v = values;
    values += pixels;
  }
  return true;
}

void diffuseRows(ColorDiffusion &diffusion, uint32_t count) {
  NearestSearch &search = *diffusion.search;
  // The last pixel of a row spreads nothing. Two steps more bring what is carried to the row below.
  const auto spreading = static_cast<ptrdiff_t>(diffusion.width) - 1;
  const ptrdiff_t end = spreading + kLag + kFirstLag;
  const auto activeAt = [&](ptrdiff_t t, uint32_t row) {
    const ptrdiff_t x = t - ptrdiff_t{kLag} * row;
    return row < count && x >= 0 && x < spreading ? ~PixelWord{0} : PixelWord{0};
  };
  Places places{search.cells, search.units, diffusion.entries, diffusion.stored, {}, {}};
  std::copy(std::begin(diffusion.rows), std::end(diffusion.rows), places.rows);
  std::copy(std::begin(diffusion.values), std::end(diffusion.values), places.values);
  Carried carried = {};
  Lanes active[kPairs];
  for (ptrdiff_t t = -1; t < end; ++t) {
    if (t <= ptrdiff_t{kFirstLag} || t >= spreading) {
      for (uint32_t k = 0; k < kPairs; ++k)
        active[k] = joinPixels(activeAt(t, 2 * k), activeAt(t, 2 * k + 1));
    }
    step(places, search, t, active, carried);
  }
  // The last pixel is not searched: it repeats the one before it, and a lone one takes entry 0.
  for (uint32_t row = 0; row < count; ++row) {
    uint8_t *values = diffusion.values[row];
    values[spreading] = spreading > 0 ? values[spreading - 1] : diffusion.stored[0];
  }
  std::swap(diffusion.rows[0], diffusion.rows[count]);
}

}  // namespace color
