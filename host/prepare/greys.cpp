// SPDX-License-Identifier: MIT
#include "prepare/greys.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <vector>

#include "prepare/cut.h"
#include "prepare/services.h"

namespace prepare {
namespace {

// What the filter makes of a table entry in a grey mode, term by term in its order.
int filterLevel(const Color &c) {
  return static_cast<int>(0.3 * c[0] + 0.59 * c[1] + 0.11 * c[2]);
}

void greyTable(uint32_t colors, uint8_t *table) {
  for (uint32_t i = 0; i < colors; ++i) {
    const Color c = greyOfLevel(static_cast<uint8_t>(i));
    std::copy(c.begin(), c.end(), table + 3 * i);
  }
}

// Error diffusion by the filter, to a table of evenly spaced greys. The ditherer gives the last pixel of
// a row the colour of the pixel before it, so it gets one column more than the picture has.
int dither(const Source &source, uint32_t levels, const RaxelServices *services, const Block &block) {
  if (!complete(services)) return RAXEL_HOST_NO_SERVICE;
  const uint32_t width = source.width() + 1, height = source.height();
  const int16_t bits = levels == 2 ? 1 : 4;
  const uint64_t stride = (uint64_t{width} + 3) & ~uint64_t{3};
  const HandleMemory pixels(*services, stride * height);
  const HandleMemory ramp(*services, 256 * 3), wanted(*services, uint64_t{levels} * 3);
  if (!pixels.bytes() || !ramp.bytes() || !wanted.bytes()) return RAXEL_HOST_NO_MEMORY;
  const uint64_t resultStride = (uint64_t{width} * static_cast<uint64_t>(bits) + 31) / 32 * 4;
  if (!fits(resultStride * height + kFilterTables)) return RAXEL_HOST_NO_MEMORY;
  for (uint32_t y = 0; y < height; ++y) {
    uint8_t *row = pixels.bytes() + stride * y;
    source.readGrey(y, row);
    row[width - 1] = row[width - 2];
  }
  for (uint32_t i = 0; i < 256; ++i) std::fill_n(ramp.bytes() + 3 * i, 3, static_cast<uint8_t>(i));
  for (uint32_t i = 0; i < levels; ++i) {
    std::fill_n(wanted.bytes() + 3 * i, 3, static_cast<uint8_t>(i * 255 / (levels - 1)));
  }
  const HandleMemory result(*services, HandleMemory::Taken{services->rlDitherGivenCT(
                                           pixels.handle(), width, height, 8, bits, ramp.handle(),
                                           wanted.handle(), static_cast<uint16_t>(levels))});
  if (!result.bytes()) return RAXEL_HOST_NO_MEMORY;
  const uint64_t rowSize = rowBytes(block.plan);
  const uint32_t used = block.plan.width * static_cast<uint32_t>(bits) % 8;
  for (uint32_t y = 0; y < height; ++y) {
    uint8_t *out = block.row(y);
    std::memcpy(out, result.bytes() + resultStride * y, rowSize);
    if (used != 0) out[rowSize - 1] = static_cast<uint8_t>(out[rowSize - 1] & (0xFF00u >> used));
  }
  return RAXEL_HOST_OK;
}

// The levels that occur in the picture.
std::bitset<256> levelsOf(const Source &source) {
  std::bitset<256> seen;
  std::vector<uint8_t> row(source.width());
  for (uint32_t y = 0; y < source.height(); ++y) {
    source.readGrey(y, row.data());
    for (uint8_t level : row) seen.set(level);
  }
  return seen;
}

// True when all levels of the picture are among the evenly spaced ones of the mode.
bool allAmong(const std::bitset<256> &seen, uint32_t levels) {
  const uint32_t step = 255 / (levels - 1);
  for (uint32_t i = 0; i < 256; ++i) {
    if (seen[i] && i % step != 0) return false;
  }
  return true;
}

// Each level to the nearest of the mode.
void toNearest(const Source &source, const std::array<uint8_t, 256> &map, const Block &block) {
  std::vector<uint8_t> row(source.width());
  for (uint32_t y = 0; y < source.height(); ++y) {
    source.readGrey(y, row.data());
    for (uint8_t &v : row) v = map[v];
    packRow(row, block.plan.bits, block.row(y));
  }
}

bool isBlackAndWhite(const Source &source) {
  for (const Color &c : source.table()) {
    if (c != Color{0, 0, 0} && c != Color{255, 255, 255}) return false;
  }
  return true;
}

// Levels of a bilevel or 16-level mode: exact, dithered or nearest.
int reduceLevels(const Source &source, const RaxelRequest &request, uint32_t levels,
                 const RaxelServices *services, const Block &block, RaxelPlan &plan) {
  const bool exact = allAmong(levelsOf(source), levels);
  if (!exact) plan.notes |= RAXEL_NOTE_REDUCED;
  if (!exact && request.dither != RAXEL_DITHER_OFF) {
    plan.notes |= RAXEL_NOTE_DITHERED;
    return dither(source, levels, services, block);
  }
  std::array<uint8_t, 256> map{};
  for (uint32_t i = 0; i < 256; ++i) map[i] = static_cast<uint8_t>((i * (levels - 1) + 127) / 255);
  toNearest(source, map, block);
  return RAXEL_HOST_OK;
}

}  // namespace

Color greyOfLevel(uint8_t level) {
  const uint8_t v = level, more = static_cast<uint8_t>(v == 255 ? v : v + 1);
  for (const Color &c : {Color{v, v, v}, Color{v, v, more}, Color{v, more, v}}) {
    if (filterLevel(c) == v) return c;
  }
  return {v, v, v};
}

std::array<bool, 2> darkIndices(const Source &source) {
  const auto colors = source.table();
  const auto level = [&](size_t i) { return brightness(colors[i][0], colors[i][1], colors[i][2]); };
  const uint8_t first = level(0), second = source.colors() < 2 ? first : level(1);
  if (first == second) return {first < 128, first < 128};
  return {first < second, second < first};
}

void bilevelTable(uint8_t *table) {
  std::fill_n(table, 3, uint8_t{0});
  std::fill_n(table + 3, 3, uint8_t{255});
}

int toBilevel(const Source &source, const RaxelRequest &request, const RaxelServices *services,
              const Block &block, RaxelPlan &plan, uint8_t *table) {
  bilevelTable(table);
  if (request.threshold != RAXEL_THRESHOLD_NONE) {
    if (!allAmong(levelsOf(source), 2)) plan.notes |= RAXEL_NOTE_REDUCED;
    return cutGrey(source, request, block, plan);
  }
  return reduceLevels(source, request, 2, services, block, plan);
}

int toGrey16(const Source &source, const RaxelRequest &request, const RaxelServices *services,
             const Block &block, RaxelPlan &plan, uint8_t *table) {
  greyTable(16, table);
  return reduceLevels(source, request, 16, services, block, plan);
}

bool isTwoColors(uint32_t bits, const RaxelRequest &request) {
  return bits == 1 && request.dither != RAXEL_DITHER_ON && request.threshold == RAXEL_THRESHOLD_NONE;
}

MakeRow twoColorRows(const Source &source, RaxelPlan &plan, uint8_t *table) {
  bilevelTable(table);
  if (!isBlackAndWhite(source)) plan.notes |= RAXEL_NOTE_REDUCED;
  const auto [zeroDark, oneDark] = darkIndices(source);
  // What the bytes of the two go to, wherever the bit is set or clear.
  const auto ofClear = static_cast<uint8_t>(zeroDark ? 0 : 0xFF);
  const auto ofSet = static_cast<uint8_t>(oneDark ? 0 : 0xFF);
  const auto bytes = static_cast<size_t>(rowBytes(plan));
  const uint32_t used = plan.width % 8;
  return [&source, ofClear, ofSet, bytes, used](uint32_t y, uint8_t *out) {
    const uint8_t *in = source.row(y);
    // On the stack, where no byte of the row can lie.
    const uint8_t clear = ofClear, change = ofClear ^ ofSet;
    const size_t count = bytes;
    for (size_t i = 0; i < count; ++i) out[i] = static_cast<uint8_t>((in[i] & change) ^ clear);
    if (used != 0) out[bytes - 1] = static_cast<uint8_t>(out[bytes - 1] & (0xFF00u >> used));
  };
}

MakeRow grey256Rows(const Source &source, RaxelPlan &plan, uint8_t *table) {
  greyTable(256, table);
  if (!source.grey() && !isGreyPicture(source)) plan.notes |= RAXEL_NOTE_REDUCED;
  return [&source](uint32_t y, uint8_t *out) { source.readGrey(y, out); };
}

}  // namespace prepare
