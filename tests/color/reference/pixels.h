// SPDX-License-Identifier: MIT
// A plain form of the pixel access: one pixel at a time, addresses through doubles, searches over the
// whole table. It shares no line with the library and is what the library is compared with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace reference {

using Bytes = std::vector<uint8_t>;
using Words = std::vector<uint32_t>;

uint32_t lineBytes(uint32_t width, int depth);
uint32_t getPixel(const uint8_t *block, uint32_t line, uint32_t x, uint32_t y, int depth);
void setPixel(uint8_t *block, uint32_t line, uint32_t x, uint32_t y, int depth, uint32_t value,
              const uint32_t *map, const uint8_t *table, uint32_t count);
int nearest(int red, int green, int blue, const uint8_t *table, int count);

// The words of a colour map; empty where there is none.
Words colormap(const uint8_t *sourceTable, int sourceDepth, const uint8_t *table, int depth, int count);

}  // namespace reference
