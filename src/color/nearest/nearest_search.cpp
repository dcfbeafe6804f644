// SPDX-License-Identifier: MIT
#include "color/nearest/nearest_search.h"

#include <algorithm>
#include <cstring>

#include "color/nearest/nearest.h"

namespace color {

constexpr AddressTable kAddress = [] {
  AddressTable table{};
  for (uint32_t v = 0; v < 256; ++v) {
    table.red[v] = (v >> 2) << 18 | (v & 3) << 4;
    table.green[v] = (v >> 2) << 12 | (v & 3) << 2;
    table.blue[v] = (v >> 2) << 6 | (v & 3);
  }
  return table;
}();

namespace {

constexpr uint32_t kFineCells = 64 * 64 * 64;
constexpr uint32_t kCoarseCells = 16 * 16 * 16;
constexpr uint32_t kGreySums = 3 * 255 + 1;
constexpr uint32_t kFewPixels = 256;    // below this, preparing costs more than it saves
constexpr uint32_t kMostEntries = 256;  // answers are bytes
constexpr uint32_t kMostUnits = 65536;  // unit numbers are 16 bits

void sortTable(NearestSearch &search) {
  for (int32_t i = 0; i < search.count; ++i) {
    const uint8_t *entry = search.table.data() + ptrdiff_t{i} * 3;
    if (entry[0] == entry[1] && entry[1] == entry[2]) continue;
    std::memcpy(search.colors[search.colorCount], entry, 3);
    search.colorIndexes[search.colorCount++] = static_cast<uint8_t>(i);
  }
}

}  // namespace

void startSearch(NearestSearch &search, std::span<const uint8_t> table, uint16_t count, uint64_t pixels) {
  search.table = table;
  search.count = std::min(static_cast<int32_t>(std::max(static_cast<int16_t>(count), int16_t{0})),
                          static_cast<int32_t>(std::min<size_t>(table.size() / 3, 32767)));
  if (pixels < kFewPixels || search.count > static_cast<int32_t>(kMostEntries)) return;
  // Without entries the answer is 0.
  const auto uniform = static_cast<uint32_t>(std::max(search.count, 1));
  const auto units = static_cast<uint32_t>(std::min<uint64_t>(1 + uniform + pixels, kMostUnits));
  constexpr size_t kTables =
      (size_t{kFineCells} + kCoarseCells + kGreySums + 2 + kAlikeSlots) * sizeof(uint16_t);
  search.memory = runtime::Block::ofSize(kTables + size_t{units} * kUnitBytes);
  if (!search.memory) return;
  search.cells = static_cast<uint16_t *>(GlobalLock(search.memory.handle()));
  search.lists = search.cells + kFineCells;
  search.greys = search.lists + kCoarseCells;
  search.alike = search.greys + kGreySums;
  search.units = search.memory.data() + kTables;
  search.unitCount = units;
  // Unit i + 1 answers i everywhere; cells with one answer share it.
  for (uint32_t i = 0; i < uniform; ++i) {
    std::memset(search.units + (i + 1) * kUnitBytes, static_cast<int>(i), kUnitBytes);
  }
  search.unitsUsed = uniform + 1;
  sortTable(search);
}

namespace {

template <int pixelBytes>
void findRemembered(NearestSearch &search, const uint8_t *pixels, uint8_t *indexes, uint32_t n) {
  const uint16_t *cells = search.cells;
  const uint8_t *units = search.units;
  for (uint32_t x = 0; x < n; ++x, pixels += pixelBytes) {
    const uint32_t address = addressOf(pixels[0], pixels[1], pixels[2]);
    const uint32_t unit = cells[address / kUnitBytes];
    indexes[x] =
        unit != 0 ? units[unit * kUnitBytes + address % kUnitBytes] : findInNewCell(search, address);
  }
}

}  // namespace

void findNearest(NearestSearch &search, const uint8_t *pixels, int pixelBytes, uint8_t *indexes,
                 uint32_t n) {
  if (search.cells == nullptr) {
    for (uint32_t x = 0; x < n; ++x, pixels += pixelBytes) {
      indexes[x] =
          static_cast<uint8_t>(nearest(pixels[0], pixels[1], pixels[2], search.table, search.count));
    }
  } else if (pixelBytes == 3) {
    findRemembered<3>(search, pixels, indexes, n);
  } else {
    findRemembered<4>(search, pixels, indexes, n);
  }
}

}  // namespace color
