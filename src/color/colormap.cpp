// SPDX-License-Identifier: MIT
#include "color/colormap.h"

#include "color/bitmap.h"
#include "color/nearest/nearest.h"
#include "raxel/color.h"
#include "runtime/blocks.h"

namespace color {

void fillColormap(std::span<uint32_t> map, std::span<const uint8_t> sourceTable, int16_t sourceDepth,
                  std::span<const uint8_t> table, int16_t depth, uint16_t count) {
  if (!hasColormap(sourceDepth)) return;
  const uint32_t colors = 1u << sourceDepth;
  if (table.data() == nullptr && sourceDepth <= depth) {
    table = sourceTable;
    count = static_cast<uint16_t>(colors);
  }
  if (sourceTable.data() == nullptr || table.data() == nullptr) return;
  const auto channel = [sourceTable](size_t at) {
    return at < sourceTable.size() ? sourceTable[at] : uint8_t{0};
  };
  for (size_t i = 0; i < colors && i < map.size(); ++i) {
    const uint8_t red = channel(3 * i);
    const uint8_t green = channel(3 * i + 1);
    const uint8_t blue = channel(3 * i + 2);
    // A count is a signed 16-bit number to the search: from 32768 on there are no entries.
    map[i] = depth == 24
                 ? packRgb(red, green, blue)
                 : static_cast<uint32_t>(nearest(red, green, blue, table, static_cast<int16_t>(count)));
  }
}

}  // namespace color

Handle rlBuildColormap(const uint8_t *sourceTable, int16_t sourceDepth, const uint8_t *table, int16_t depth,
                       uint16_t count) {
  if (!color::hasColormap(sourceDepth)) return 0;
  const size_t colors = size_t{1} << sourceDepth;
  std::span<const uint8_t> source;
  if (sourceTable != nullptr) source = {sourceTable, colors * 3};
  std::span<const uint8_t> destination;
  if (table != nullptr) destination = {table, size_t{count} * 3};
  const Handle map = runtime::allocate(colors * sizeof(uint32_t));
  // Blocks are 8-aligned, so their bytes can be used as words.
  const std::span<uint32_t> words(static_cast<uint32_t *>(GlobalLock(map)), colors);
  color::fillColormap(words, source, sourceDepth, destination, depth, count);
  return map;
}

int32_t rlFreeColormap(Handle map) {
  rlFreeNewData(map);
  return 0;
}
