#include "color/dither_palette.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "color/debug_level.h"
#include "color/depth.h"
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

DitherTable reduceWithFixedColors(Handle picture, uint32_t width, uint32_t height, int16_t depth) {
  const auto entries = static_cast<uint16_t>(1u << depth);
  const Handle table = runtime::allocate(uint64_t{entries} * 3);
  auto chosen = static_cast<uint16_t>(entries - 8);
  const runtime::Block reduced(rlReduceColorTable(picture, width, static_cast<int16_t>(height), &chosen));
  const size_t bytes = std::min(size_t{chosen} * 3, reduced.bytes().size());
  uint8_t *to = runtime::lockBytes(table).data();
  if (bytes != 0) std::memcpy(to, reduced.data(), bytes);
  std::memcpy(to + bytes, must_have_colors, sizeof must_have_colors);
  return {table, entries};
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
