#include "color/dither_palette.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "color/bitmap.h"
#include "color/debug_level.h"
#include "color/reduce.h"
#include "color/row_converter.h"
#include "raxel/color.h"
#include "runtime/blocks.h"

namespace color {

DitherTable givenTable(Handle table, uint16_t count) {
  return {table, entriesWithin(runtime::lockBytes(table), count)};
}

DitherTable copyMonoTable() {
  const Handle copy = runtime::allocate(sizeof MonoTable);
  std::memcpy(runtime::lockBytes(copy).data(), MonoTable, sizeof MonoTable);
  return {copy, 8};
}

namespace {

constexpr uint64_t kBandBytes = 1 << 18;  // about as much as stays in a processor's cache

// How many colours of the picture itself a table holds.
uint16_t ownColors(int16_t depth) {
  return static_cast<uint16_t>((1u << depth) - 8);
}

// The obtained colours and the fixed ones after them, in a new table.
DitherTable withFixedColors(std::span<const uint8_t> obtained, uint16_t count, int16_t depth) {
  const auto entries = static_cast<uint16_t>(1u << depth);
  const Handle table = runtime::allocate(uint64_t{entries} * 3);
  const size_t bytes = std::min(size_t{count} * 3, obtained.size());
  uint8_t *to = runtime::lockBytes(table).data();
  if (bytes != 0) std::memcpy(to, obtained.data(), bytes);
  std::memcpy(to + bytes, must_have_colors, sizeof must_have_colors);
  return {table, entries};
}

}  // namespace

DitherTable reduceWithFixedColors(Handle picture, uint32_t width, uint32_t height, int16_t depth) {
  uint16_t count = ownColors(depth);
  const runtime::Block reduced(rlReduceColorTable(picture, width, static_cast<int16_t>(height), &count));
  return withFixedColors(reduced.bytes(), count, depth);
}

DitherTable reduceBandsWithFixedColors(const DepthChange &picture) {
  DepthChange widening = picture;
  widening.depth = 24;
  widening.table = {};
  RowConverter rows(widening);
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

void printDitherTable(const DitherTable &table) {
  if (!printsSummaries()) return;
  std::fputs("Dithering to the following colortable:\n", stdout);
  const uint8_t *entry = runtime::lockBytes(table.handle).data();
  for (int i = 0; i < table.count; ++i, entry += 3) {
    std::printf("color %d: [%d, %d, %d]\n", i, entry[0], entry[1], entry[2]);
  }
}

}  // namespace color
