// SPDX-License-Identifier: MIT
#include "color/dither/dither_palette.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "color/bitmap.h"
#include "color/debug_level.h"
#include "color/depth/row_converter.h"
#include "color/median_cut/reduce.h"
#include "raxel/color.h"
#include "runtime/blocks.h"

namespace color {

runtime::Block copyMonoTable() {
  runtime::Block copy = runtime::Block::ofSize(sizeof MonoTable);
  std::memcpy(copy.data(), MonoTable, sizeof MonoTable);
  return copy;
}

namespace {

constexpr uint64_t kBandBytes = 1 << 18;  // about as much as stays in a processor's cache

// How many colours of the picture itself a table holds.
uint16_t ownColors(int16_t depth) {
  return static_cast<uint16_t>((1u << depth) - 8);
}

// The obtained colours and the fixed ones after them, in a new table.
runtime::Block withFixedColors(std::span<const uint8_t> obtained, uint16_t count, int16_t depth) {
  runtime::Block table = runtime::Block::ofSize(uint64_t{3} << depth);
  const size_t bytes = std::min(size_t{count} * 3, obtained.size());
  uint8_t *to = table.data();
  if (bytes != 0) std::memcpy(to, obtained.data(), bytes);
  std::memcpy(to + bytes, must_have_colors, sizeof must_have_colors);
  return table;
}

}  // namespace

runtime::Block reduceWithFixedColors(std::span<const uint8_t> rows, uint32_t width, uint32_t height,
                                     int16_t depth) {
  uint16_t count = ownColors(depth);
  const runtime::Block reduced = reducePicture(rows, width, static_cast<int16_t>(height), count);
  return withFixedColors(reduced.bytes(), count, depth);
}

runtime::Block reduceBandsWithFixedColors(const DepthChange &picture) {
  RowConverter rows(widening(picture));
  const uint64_t lineBytes = bytesPerLine(picture.width, 24);
  // Heights are signed 16-bit numbers to the median cut: a higher picture has no colours there.
  const auto height = static_cast<uint32_t>(std::max(static_cast<int16_t>(picture.height), int16_t{0}));
  const auto bandRows =
      static_cast<uint32_t>(std::max<uint64_t>(kBandBytes / std::max<uint64_t>(lineBytes, 1), 1));
  const runtime::Block band = runtime::Block::ofSize(std::min(bandRows, height) * lineBytes);
  const Handle context = InitColorLib();
  uint16_t count = 0;
  for (uint32_t y = 0; y < height; y += bandRows) {
    const uint32_t n = std::min(bandRows, height - y);
    for (uint32_t k = 0; k < n && lineBytes != 0; ++k) rows.convert(y + k, band.data() + k * lineBytes);
    reduce(band.bytes(), picture.width, static_cast<int32_t>(n), &count, kKeepHistogram, {}, context);
  }
  uint8_t reduced[256 * 3] = {};
  count = ownColors(picture.depth);
  reduce(band.bytes(), picture.width, 0, &count, kBuildTable, {reduced, size_t{count} * 3}, context);
  TermColorLib(context);
  return withFixedColors(reduced, count, picture.depth);
}

void printDitherTable(std::span<const uint8_t> table, uint16_t count) {
  if (!printsSummaries()) return;
  std::fputs("Dithering to the following colortable:\n", stdout);
  const uint8_t *entry = table.data();
  for (int i = 0; i < count; ++i, entry += 3) {
    std::printf("color %d: [%d, %d, %d]\n", i, entry[0], entry[1], entry[2]);
  }
}

}  // namespace color
