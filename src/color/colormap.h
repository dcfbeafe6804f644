// SPDX-License-Identifier: MIT
// The map from the indexes of one picture to the indexes or colours of another.
#pragma once

#include <cstdint>
#include <span>

namespace color {

// Whether pictures of this depth have a map at all: those whose indexes fit in a byte.
inline bool hasColormap(int16_t sourceDepth) {
  return sourceDepth >= 1 && sourceDepth <= 8;
}

// Fills a map of 1 << sourceDepth words. For a 24-bit destination word i becomes
// red << 24 | green << 16 | blue << 8 of entry i of the source's table, for every other depth the
// index of the destination entry nearest to it. Without a destination table the source's own serves,
// when the destination is at least as deep. A table is missing when it has no address; then the words
// stay as they are. Entries past the end of the source's table count as black.
void fillColormap(std::span<uint32_t> map, std::span<const uint8_t> sourceTable, int16_t sourceDepth,
                  std::span<const uint8_t> table, int16_t depth, uint16_t count);

}  // namespace color
