// SPDX-License-Identifier: MIT
// Working out the answers of a cell.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "color/nearest/nearest.h"
#include "color/nearest/nearest_search.h"
#include "runtime/unaligned.h"

namespace color {

namespace {

constexpr int32_t kFineSide = 4;
constexpr int32_t kCoarseSide = 16;

// A cube of colours: its lowest corner and the length of its sides.
struct Cube {
  int32_t low[3];
  int32_t side;
};

// A list of colours by their places in search.colors, ascending.
struct Candidates {
  uint32_t count;
  uint8_t places[256];
};

int32_t square(int32_t d) {
  return d * d;
}

// Four times the squared distance of a colour from the middle of a cube, where four keeps it whole.
int32_t distanceFromMiddle(const uint8_t *color, const Cube &cube) {
  int32_t sum = 0;
  for (int a = 0; a < 3; ++a) sum += square(2 * color[a] - 2 * cube.low[a] - (cube.side - 1));
  return sum;
}

// The least that a colour's squared distance exceeds another's by, over the whole cube. Squared
// distances to two fixed colours differ by a linear function of the request, so that the least
// difference is at a corner and each axis decides for itself.
int32_t leastExcess(const uint8_t *color, const uint8_t *other, const Cube &cube) {
  int32_t least = 0;
  for (int a = 0; a < 3; ++a) {
    const int32_t apart = color[a] - other[a];
    const int32_t corner = apart > 0 ? cube.low[a] + cube.side - 1 : cube.low[a];
    least += apart * (color[a] + other[a] - 2 * corner);
  }
  return least;
}

// Keeps the colours that can be the answer somewhere in a cube: those not beaten throughout by the
// colour nearest to its middle. One that is never nearer than that, only as near, loses the tie when
// it comes later in the table.
void keepPossible(const NearestSearch &search, const Cube &cube, Candidates &candidates) {
  if (candidates.count == 0) return;
  uint32_t winner = 0;
  int32_t least = INT32_MAX;
  for (uint32_t i = 0; i < candidates.count; ++i) {
    const int32_t distance = distanceFromMiddle(search.colors[candidates.places[i]], cube);
    if (distance < least) {
      least = distance;
      winner = i;
    }
  }
  const uint8_t *best = search.colors[candidates.places[winner]];
  uint32_t kept = 0;
  for (uint32_t i = 0; i < candidates.count; ++i) {
    const int32_t excess = leastExcess(search.colors[candidates.places[i]], best, cube);
    if (excess < 0 || (excess == 0 && i <= winner)) candidates.places[kept++] = candidates.places[i];
  }
  candidates.count = kept;
}

// Units for n bytes, or 0 when there is no more room; unit 0 is never given out.
uint32_t takeUnits(NearestSearch &search, uint32_t bytes) {
  const uint32_t wanted = (bytes + kUnitBytes - 1) / kUnitBytes;
  if (wanted > search.unitCount - search.unitsUsed) return 0;
  const uint32_t first = search.unitsUsed;
  search.unitsUsed += wanted;
  return first;
}

// The candidates of the coarse cell around a fine one; false when they are not known and there is no
// more room to keep them. A list is a byte with the count less 1 and the places.
bool coarseCandidates(NearestSearch &search, const Cube &fine, Candidates &out) {
  Cube coarse{{}, kCoarseSide};
  uint32_t cell = 0;
  for (int a = 0; a < 3; ++a) {
    coarse.low[a] = fine.low[a] & ~(kCoarseSide - 1);
    cell = cell << 4 | static_cast<uint32_t>(fine.low[a] / kCoarseSide);
  }
  if (search.lists[cell] != 0) {
    const uint8_t *list = search.units + search.lists[cell] * kUnitBytes;
    out.count = list[0] + 1u;
    std::memcpy(out.places, list + 1, out.count);
    return true;
  }
  out.count = search.colorCount;
  for (uint32_t i = 0; i < out.count; ++i) out.places[i] = static_cast<uint8_t>(i);
  if (out.count == 0) return true;
  if (search.unitsUsed == search.unitCount) return false;
  keepPossible(search, coarse, out);
  const uint32_t unit = takeUnits(search, out.count + 1);
  if (unit == 0) return true;
  uint8_t *list = search.units + unit * kUnitBytes;
  list[0] = static_cast<uint8_t>(out.count - 1);
  std::memcpy(list + 1, out.places, out.count);
  search.lists[cell] = static_cast<uint16_t>(unit);
  return true;
}

// The squared distance of a request from a grey is 3 v v - 2 v sum and a term that is the same for
// all greys: the nearest one depends on the sum of the channels alone.
uint8_t nearestGrey(NearestSearch &search, int32_t sum) {
  uint16_t &known = search.greys[sum];
  if (known == 0) {
    int32_t least = INT32_MAX;
    known = 1;
    for (int32_t i = 0; i < search.count; ++i) {
      const uint8_t *entry = search.table.data() + ptrdiff_t{i} * 3;
      const int32_t v = entry[0];
      if (v != entry[1] || v != entry[2]) continue;
      const int32_t order = 3 * v * v - 2 * v * sum;
      if (order >= least) continue;
      least = order;
      known = static_cast<uint16_t>(i + 1);
    }
  }
  return static_cast<uint8_t>(known - 1);
}

// Numbers for the four blues of a fine cell, worked on together.
using Four = int32_t __attribute__((vector_size(16)));

// The answers for the colours of a fine cell that are not grey.
void answerColors(const NearestSearch &search, const Cube &cube, const Candidates &candidates,
                  uint8_t *out) {
  // The key of an answer is its distance and then its place: the smallest key is the first of the
  // nearest.
  Four least[16];
  for (Four &four : least) four = Four{INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX};
  for (uint32_t n = 0; n < candidates.count; ++n) {
    const uint8_t *color = search.colors[candidates.places[n]];
    const auto key = [&](int axis, int step) { return square(cube.low[axis] + step - color[axis]) * 256; };
    const Four blues = Four{key(2, 0), key(2, 1), key(2, 2), key(2, 3)} + candidates.places[n];
    for (int green = 0; green < 4; ++green) {
      const Four greens = blues + key(1, green);
      for (int red = 0; red < 4; ++red) {
        const Four keys = greens + key(0, red);
        Four &four = least[4 * red + green];
        four = keys < four ? keys : four;
      }
    }
  }
  for (int k = 0; k < 64; ++k) {
    out[k] = candidates.count == 0 ? uint8_t{0} : search.colorIndexes[least[k / 4][k % 4] & 255];
  }
}

// Whether any colour of a fine cell counts as grey.
bool mayBeGrey(const Cube &cube) {
  const auto farApart = [&](int a, int b) {
    return std::abs(cube.low[a] - cube.low[b]) > kGreyTolerance + kFineSide - 1;
  };
  return !farApart(0, 1) && !farApart(1, 2) && !farApart(0, 2);
}

// Puts the answers for greys in their places.
void answerGreys(NearestSearch &search, const Cube &cube, uint8_t *out) {
  for (int k = 0; k < 64; ++k) {
    const int32_t red = cube.low[0] + k / 16;
    const int32_t green = cube.low[1] + k / 4 % 4;
    const int32_t blue = cube.low[2] + k % 4;
    if (isGreyRequest(red, green, blue)) out[k] = nearestGrey(search, red + green + blue);
  }
}

// A unit with these answers: one made before, where the slot of their hash still knows it, or a new
// one; 0 when there is no room. Cells on the border of the same two entries are often alike.
uint32_t unitOf(NearestSearch &search, const uint8_t *answers) {
  uint64_t hash = 0;
  for (size_t i = 0; i < kUnitBytes; i += 8) {
    hash = (hash ^ runtime::load<uint64_t>(answers + i)) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 32;
  }
  uint16_t &alike = search.alike[hash % kAlikeSlots];
  if (std::memcmp(search.units + alike * kUnitBytes, answers, kUnitBytes) == 0) return alike;
  const uint32_t unit = takeUnits(search, kUnitBytes);
  if (unit == 0) return 0;
  std::memcpy(search.units + unit * kUnitBytes, answers, kUnitBytes);
  alike = static_cast<uint16_t>(unit);
  return unit;
}

}  // namespace

uint8_t findInNewCell(NearestSearch &search, uint32_t address) {
  const uint32_t cell = address / kUnitBytes;
  const Cube cube{
      {static_cast<int32_t>(cell >> 12) * kFineSide, static_cast<int32_t>(cell >> 6 & 63) * kFineSide,
       static_cast<int32_t>(cell & 63) * kFineSide},
      kFineSide};
  Candidates candidates;
  if (!coarseCandidates(search, cube, candidates)) {
    const auto channel = [&](int axis, uint32_t step) {
      return static_cast<int16_t>(cube.low[axis] + static_cast<int32_t>(step));
    };
    return static_cast<uint8_t>(nearest(channel(0, address >> 4 & 3), channel(1, address >> 2 & 3),
                                        channel(2, address & 3), search.table, search.count));
  }
  keepPossible(search, cube, candidates);
  const bool greys = mayBeGrey(cube);
  if (candidates.count == 1 && !greys) {
    const uint8_t only = search.colorIndexes[candidates.places[0]];
    search.cells[cell] = static_cast<uint16_t>(only + 1);
    return only;
  }
  uint8_t answers[kUnitBytes];
  answerColors(search, cube, candidates, answers);
  if (greys) answerGreys(search, cube, answers);
  uint32_t unit = answers[0] + 1u;
  if (std::memcmp(answers, search.units + unit * kUnitBytes, kUnitBytes) != 0) {
    unit = unitOf(search, answers);
  }
  search.cells[cell] = static_cast<uint16_t>(unit);
  return answers[address % kUnitBytes];
}

}  // namespace color
