// SPDX-License-Identifier: MIT
// Palettes: the eight fixed colours, the greys, the host's own, and the way from one to the other.
#include "tiff/colors.h"

#include <algorithm>

#include "raxel/text.h"
#include "runtime/numbers.h"

// The first eight are the palette of the 8-colour mode.
const uint8_t ColorDirect[16][3] = {
    {255, 255, 255},  // white
    {0, 0, 0},        // black
    {0, 0, 255},      // blue
    {0, 255, 0},      // green
    {255, 0, 0},      // red
    {0, 255, 255},    // cyan
    {255, 0, 255},    // magenta
    {255, 255, 0},    // yellow
    {192, 192, 192}, {64, 64, 64},  {0, 0, 128},   {0, 128, 0},
    {128, 0, 0},     {0, 128, 128}, {128, 0, 128}, {128, 128, 0},
};

namespace {

constexpr uint32_t kFixedColors = 8;
constexpr int32_t kGreyTolerance = 4;

// The same tolerance on both sides of a comparison; the colour library's own search differs.
bool isGrey(int32_t red, int32_t green, int32_t blue) {
  return feqi(red, green, kGreyTolerance) != 0 && feqi(green, blue, kGreyTolerance) != 0 &&
         feqi(red, blue, kGreyTolerance) != 0;
}

uint64_t squaredDifference(int32_t a, int32_t b) {
  const int64_t d = int64_t{a} - b;
  const auto magnitude = static_cast<uint64_t>(d < 0 ? -d : d);
  return magnitude * magnitude;
}

int32_t nearestIndex(int32_t red, int32_t green, int32_t blue, const uint8_t *table, int32_t count) {
  const bool wanted = isGrey(red, green, blue);
  uint64_t best = 0x7FFFFFFF;
  int32_t result = 0;
  for (int32_t i = 0; i < count && best != 0; ++i, table += 3) {
    if (isGrey(table[0], table[1], table[2]) != wanted) continue;
    const uint64_t distance = squaredDifference(blue, table[2]) + squaredDifference(green, table[1]) +
                              squaredDifference(red, table[0]);
    if (distance < best) {
      best = distance;
      result = i;
    }
  }
  return result;
}

bool isGreyMode(const TiffWriterState &state) {
  return state.nPhotometric == RAXEL_TIFF_BLACK_IS_ZERO && state.nColors != 2;
}

uint32_t heldColors(const TiffWriterState &state) {
  return std::min<uint32_t>(state.nColors, 256);
}

}  // namespace

// 16 greys come out as luminance modulo 16, not divided by 16: files depend on it.
int32_t MapColors(int32_t red, int32_t green, int32_t blue, const uint8_t *table, int32_t count,
                  int32_t byNearest) {
  if (count <= 0) return 0;
  if (byNearest != 0) return table == nullptr ? 0 : nearestIndex(red, green, blue, table, count);
  return runtime::toI32(0.3 * red + 0.59 * green + 0.11 * blue) % count;
}

namespace tiff {

void settleColorMap(TiffWriterState &state, const Palette &palette) {
  const uint32_t colors = heldColors(state);
  if (!isGreyMode(state)) {
    for (uint32_t i = 0; i < colors; ++i) {
      for (uint32_t c = 0; c < 3; ++c) {
        state.abColorMap[i][c] = colors == kFixedColors ? ColorDirect[i][c] : palette.channel(i, c);
      }
    }
    return;
  }
  if (colors == 0) return;
  const uint32_t step = 256 / colors;
  for (uint32_t i = 0; i < colors; ++i) {
    std::fill_n(state.abColorMap[i], 3, static_cast<uint8_t>(i * step));
  }
  std::fill_n(state.abColorMap[colors - 1], 3, uint8_t{255});
}

void buildRemap(CellFormat &format, const TiffWriterState &state, const Palette &palette) {
  format.bRemap = 0;
  const bool nearest = state.nColors == kFixedColors;
  if (!nearest && !isGreyMode(state)) return;
  const uint32_t colors = heldColors(state);
  const uint32_t indices = nearest ? 16 : colors;
  for (uint32_t i = 0; i < indices; ++i) {
    format.abRemap[i] =
        static_cast<uint8_t>(MapColors(palette.channel(i, 0), palette.channel(i, 1), palette.channel(i, 2),
                                       state.abColorMap[0], static_cast<int32_t>(state.nColors), nearest));
    if (format.abRemap[i] != i) format.bRemap = 1;
  }
}

void remapRows(std::span<uint8_t> rows, uint8_t after, const uint8_t (&table)[256], bool nibbles) {
  if (rows.empty()) return;
  const auto map = [&](uint8_t source) {
    if (!nibbles) return table[source];
    // The sum is cut to a byte: an output index may have more than four bits.
    return static_cast<uint8_t>((table[source >> 4] << 4) + table[source & 15]);
  };
  const size_t last = rows.size() - 1;
  for (size_t k = 0; k < last; ++k) rows[k] = map(rows[k + 1]);
  rows[last] = map(after);
}

}  // namespace tiff
